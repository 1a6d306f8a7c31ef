#include "Platform/AppKit/NSApplication.h"

#include <algorithm>
#include <utility>

#include "Platform/AppKit/Shutdown.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Platform/Foundation/PlatformObserver.h"

namespace vel {

namespace {

/// A window that somebody else opened; its class name is what that somebody gave it.
class AdoptedHostWindow final : public Class<AdoptedHostWindow, "NSWindow", NSWindow> {
 public:
  explicit AdoptedHostWindow(const AdoptedWindow& found)
      : Class(found.frame, found.styleMask), name_(found.className) {}

  [[nodiscard]] std::string_view className() const override { return name_; }

 private:
  std::string name_;
};

void post(NSNotificationName name, const Strong<NSObject>& object) {
  NSNotificationCenter::defaultCenter().postNotificationNameObject(name, object);
}

}  // namespace

// Never destroyed: windows that outlive everything ask for it when they die.
Strong<NSApplication>& NSApp = *new Strong<NSApplication>();

Strong<NSApplication> NSApplication::start(std::unique_ptr<WindowSystem> windowSystem) {
  stop();
  dispatch_get_main_queue();  // made here, before another thread can be the first to ask for it
  NSApp = make<NSApplication>(std::move(windowSystem));
  return NSApp;
}

void NSApplication::stop() {
  if (NSApp != nullptr) {
    shutDown();
  }
}

NSApplication::NSApplication(std::unique_ptr<WindowSystem> windowSystem)
    : windowSystem_(std::move(windowSystem)) {
  windowSystem_->setDelegate(this);
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  loop.watch(windowSystem_->waitHandle());  // first, since it may throw
  loop.setWindowSystemSource(this);
  modalRunsChanged();
}

void NSApplication::end() {
  while (!open_.empty()) {
    const Strong<NSWindow> window = open_.back();
    window->close();
  }
  for (const auto& [handle, window] : windows_) {
    windowSystem_->releaseWindow(handle);
    window->handle_ = WindowHandle::None;
  }
  windows_.clear();
  // Done here, not in the destructor: a host may keep this object while the next application runs.
  windowSystem_->setDelegate(nullptr);
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  loop.setWindowSystemSource(nullptr);
  loop.watch(WaitHandle());
  loop.setMode(NSDefaultRunLoopMode);
  NSApp = nullptr;
}

Strong<NSWindow> NSApplication::windowFor(WindowHandle handle) const {
  const auto found = windows_.find(handle);
  return found == windows_.end() ? nullptr : found->second->self();
}

Strong<NSWindow> NSApplication::frontWindow() const {
  if (Strong<NSWindow> main = mainWindow()) {
    return main;
  }
  if (keyWindow_ != nullptr) {
    return keyWindow_;
  }
  return ordered_.empty() ? nullptr : ordered_.front();
}

Strong<NSWindow> NSApplication::adoptWindow(std::uint64_t nativeId, std::string& error) {
  const std::optional<AdoptedWindow> found = port()->adoptWindow(nativeId, error);
  if (!found) {
    return nullptr;
  }
  Strong<NSWindow> window = NSWindow::initAs<AdoptedHostWindow>(*found);
  window->title_ = found->title;
  window->handle_ = found->handle;
  windows_[found->handle] = window.get();
  window->open_ = true;
  window->onScreen_ = found->onScreen;
  window->miniaturized_ = !found->onScreen;
  open_.push_back(window);
  if (found->onScreen) {
    enteredScreen(window);
  }
  if (found->hasFocus) {
    focusMoved(found->handle);
  }
  return window;
}

// Key windows

void NSApplication::focusMoved(WindowHandle window) {
  const Strong<NSWindow> next = windowFor(window);
  if (next == keyWindow_) {
    return;
  }
  resignKey();
  // A handler may have made a window key (its wish stands) or closed the one we were to take.
  if (keyWindow_ == nullptr && next != nullptr && next->isOnScreen()) {
    becomeKey(next);
  }
}

void NSApplication::resignKey() {
  const Strong<NSWindow> window = std::exchange(keyWindow_, nullptr);
  if (window == nullptr) {
    return;
  }
  observePlatform(
      [&](PlatformObserver& observer) { observer.keyChanges(*window, KeyChange::Resigns); });
  post(NSWindowDidResignKeyNotification, window);
}

void NSApplication::becomeKey(const Strong<NSWindow>& window) {
  keyWindow_ = window;
  std::erase_if(keyHistory_, [&window](const Weak<NSWindow>& entry) {
    const Strong<NSWindow> former = entry.lock();
    return former == nullptr || former == window;
  });
  keyHistory_.push_back(window);
  if (window->kind_ == WindowKind::Plain) {
    mainWindow_ = window;
  }
  observePlatform(
      [&](PlatformObserver& observer) { observer.keyChanges(*window, KeyChange::Becomes); });
  post(NSWindowDidBecomeKeyNotification, window);
}

void NSApplication::passKeyOn(const Strong<NSWindow>& window) {
  if (keyWindow_ != window) {
    return;
  }
  resignKey();
  if (keyWindow_ != nullptr) {
    return;
  }
  Strong<NSWindow> next = ordered_.empty() ? nullptr : ordered_.front();
  for (const Weak<NSWindow>& entry : keyHistory_) {
    if (const Strong<NSWindow> former = entry.lock(); former != nullptr && former->isOnScreen()) {
      next = former;
    }
  }
  send(next, &NSWindow::makeKeyWindow);
}

void NSApplication::enteredScreen(const Strong<NSWindow>& window) {
  std::erase(ordered_, window);
  ordered_.insert(ordered_.begin(), window);
  modalRunsChanged();
}

void NSApplication::leftScreen(const Strong<NSWindow>& window) {
  std::erase(ordered_, window);
  if (mainWindow_.lock() == window) {
    mainWindow_.reset();
  }
}

void NSApplication::applicationDeactivated() {
  if (!active_) {
    return;
  }
  active_ = false;
  keyAtDeactivation_ = keyWindow_;
  post(NSApplicationWillResignActiveNotification, self());
  resignKey();
}

void NSApplication::applicationActivated(WindowHandle window) {
  if (active_) {
    return;
  }
  active_ = true;
  if (window == WindowHandle::None) {
    send(keyAtDeactivation_.lock(), &NSWindow::makeKeyWindow);
  }
  post(NSApplicationDidBecomeActiveNotification, self());
}

// Modal runs

Strong<NSWindow> NSApplication::modalWindow() const {
  return modalRuns_.empty() ? nullptr : modalRuns_.back().window;
}

std::uint64_t NSApplication::addModalRun(const Strong<NSWindow>& window) {
  modalRuns_.push_back({++modalRunsBegun_, window});
  modalRunsChanged();
  return modalRunsBegun_;
}

void NSApplication::beginModalRun(const Strong<NSWindow>& window) { addModalRun(window); }

void NSApplication::stopModal() {
  if (!modalRuns_.empty()) {
    const ModalRun ended = modalRuns_.back();
    modalRuns_.pop_back();
    modalRunsChanged();
  }
}

void NSApplication::endModalRuns(const NSWindow* window) {
  std::erase_if(modalRuns_, [window](const ModalRun& run) { return run.window.get() == window; });
  modalRunsChanged();
}

void NSApplication::runModalForWindow(const Strong<NSWindow>& window) {
  if (window == nullptr) {
    return;
  }
  const Strong<NSApplication> kept = self();
  const std::uint64_t number = addModalRun(window);
  window->makeKeyAndOrderFront();
  const auto runs = [this, number] {
    return std::ranges::any_of(modalRuns_,
                               [number](const ModalRun& run) { return run.number == number; });
  };
  while (runs()) {
    NSRunLoop::mainRunLoop().runModeBeforeDate(NSModalPanelRunLoopMode, kNever);
  }
}

void NSApplication::setRunLoopMode(NSRunLoopMode mode) {
  mode_ = mode;
  modalRunsChanged();
}

void NSApplication::modalRunsChanged() {
  const bool modal = !modalRuns_.empty() && mode_ == NSDefaultRunLoopMode;
  NSRunLoop::mainRunLoop().setMode(modal ? NSModalPanelRunLoopMode : mode_);
  port()->setModalWindow(send(modalWindow(), &NSWindow::handle));
}

// What the window system reports about windows

void NSApplication::closeRequested(WindowHandle handle) {
  const Strong<NSWindow> window = windowFor(handle);
  if (window == nullptr || (window->styleMask() & NSWindowStyleMaskClosable) == 0) {
    return;
  }
  // A copy is called: the handler may replace itself.
  if (const auto handler = closeRequestedHandler_) {
    handler(*window);
  } else {
    window->close();
  }
}

void NSApplication::windowDestroyed(WindowHandle window) {
  const Strong<NSWindow> gone = windowFor(window);
  windows_.erase(window);
  send(gone, &NSWindow::vanished);
}

void NSApplication::frameChanged(WindowHandle window, CGRect frame) {
  send(windowFor(window), &NSWindow::frameChanged, frame);
}

void NSApplication::miniaturizedChanged(WindowHandle window, bool miniaturized) {
  send(windowFor(window), &NSWindow::miniaturizedChanged, miniaturized);
}

void NSApplication::styleMaskChanged(WindowHandle window, NSWindowStyleMask styleMask) {
  if (const Strong<NSWindow> changed = windowFor(window)) {
    changed->styleMask_ = styleMask;
  }
}

// The windows named take the places that they have among all, in their new order.
void NSApplication::orderChanged(const std::vector<WindowHandle>& windows) {
  NSArray<NSWindow> named;
  for (const WindowHandle handle : windows) {
    const Strong<NSWindow> window = windowFor(handle);
    if (std::ranges::find(ordered_, window) != ordered_.end()) {
      named.push_back(window);
    }
  }
  auto next = named.begin();
  for (Strong<NSWindow>& place : ordered_) {
    if (std::ranges::find(named, place) != named.end()) {
      place = *next++;
    }
  }
}

void NSApplication::controlsKept(WindowHandle window, NSWindowStyleMask controls) {
  const Strong<NSWindow> changed = windowFor(window);
  const auto handler = controlsKeptHandler_;
  if (changed != nullptr && handler) {
    handler(*changed, controls);
  }
}

void NSApplication::displayLost(std::string_view reason) {
  const std::string text(reason);
  const Strong<NSApplication> kept = self();
  for (const auto& [handle, window] : windows_) {
    window->handle_ = WindowHandle::None;
  }
  windows_.clear();
  NSRunLoop::mainRunLoop().watch(WaitHandle());
  while (!open_.empty()) {
    const Strong<NSWindow> window = ordered_.empty() ? open_.back() : ordered_.front();
    window->close();
  }
  if (const auto handler = displayLostHandler_) {
    handler(text);
  }
}

}  // namespace vel
