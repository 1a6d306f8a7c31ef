#include "Platform/AppKit/NSApplication.h"

#include <algorithm>
#include <utility>

#include "Platform/AppKit/PlatformObserver.h"
#include "Platform/AppKit/Shutdown.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/NSNotificationCenter.h"

namespace vel {

namespace {

/// An adopted window. Its class name is the one that its owner gave it.
class AdoptedHostWindow final : public Class<AdoptedHostWindow, "NSWindow", NSWindow> {
 public:
  explicit AdoptedHostWindow(const AdoptedWindow& adopted)
      : Class(adopted.frame, adopted.styleMask), name_(adopted.className) {}

  [[nodiscard]] std::string_view className() const override { return name_; }

 private:
  std::string name_;
};

void post(NSNotificationName name, const Strong<NSObject>& object) {
  NSNotificationCenter::defaultCenter().postNotificationNameObject(name, object);
}

}  // namespace

// Never destroyed: the destructors of static windows read it.
Strong<NSApplication>& NSApp = *new Strong<NSApplication>();

Strong<NSApplication> NSApplication::start(std::unique_ptr<WindowSystem> windowSystem) {
  stop();
  dispatch_get_main_queue();  // must be created on the main thread
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
  applyModalRuns();
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
  const std::optional<AdoptedWindow> adopted = port()->adoptWindow(nativeId, error);
  if (!adopted) {
    return nullptr;
  }
  Strong<NSWindow> window = NSWindow::initAs<AdoptedHostWindow>(*adopted);
  window->title_ = adopted->title;
  window->handle_ = adopted->handle;
  windows_[adopted->handle] = window.get();
  window->open_ = true;
  window->onScreen_ = adopted->onScreen;
  window->miniaturized_ = !adopted->onScreen;
  open_.push_back(window);
  if (adopted->onScreen) {
    addToScreen(window);
  }
  if (adopted->hasFocus) {
    focusMoved(adopted->handle);
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
  // An observer may have made another window key, which has priority, or closed `next`.
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
    const Strong<NSWindow> earlier = entry.lock();
    return earlier == nullptr || earlier == window;
  });
  keyHistory_.push_back(window);
  if (window->kind_ == WindowKind::Plain) {
    mainWindow_ = window;
  }
  observePlatform(
      [&](PlatformObserver& observer) { observer.keyChanges(*window, KeyChange::Becomes); });
  post(NSWindowDidBecomeKeyNotification, window);
}

void NSApplication::passOnKey(const Strong<NSWindow>& window) {
  if (keyWindow_ != window) {
    return;
  }
  resignKey();
  if (keyWindow_ != nullptr) {
    return;
  }
  Strong<NSWindow> next = ordered_.empty() ? nullptr : ordered_.front();
  for (const Weak<NSWindow>& entry : keyHistory_) {
    if (const Strong<NSWindow> earlier = entry.lock();
        earlier != nullptr && earlier->isOnScreen()) {
      next = earlier;
    }
  }
  send(next, &NSWindow::makeKeyWindow);
}

void NSApplication::addToScreen(const Strong<NSWindow>& window) {
  std::erase(ordered_, window);
  ordered_.insert(ordered_.begin(), window);
  applyModalRuns();
}

void NSApplication::removeFromScreen(const Strong<NSWindow>& window) {
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
  applyModalRuns();
  return modalRunsBegun_;
}

void NSApplication::beginModalRun(const Strong<NSWindow>& window) { addModalRun(window); }

void NSApplication::stopModal() {
  if (!modalRuns_.empty()) {
    const ModalRun kept = modalRuns_.back();  // its window outlives the removal
    modalRuns_.pop_back();
    applyModalRuns();
  }
}

void NSApplication::endModalRuns(const NSWindow* window) {
  std::erase_if(modalRuns_, [window](const ModalRun& run) { return run.window.get() == window; });
  applyModalRuns();
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
  applyModalRuns();
}

void NSApplication::applyModalRuns() {
  const bool modal = !modalRuns_.empty() && mode_ == NSDefaultRunLoopMode;
  NSRunLoop::mainRunLoop().setMode(modal ? NSModalPanelRunLoopMode : mode_);
  port()->setModalWindow(send(modalWindow(), &NSWindow::handle));
}

// Reports of the window system about windows

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
  const Strong<NSWindow> destroyed = windowFor(window);
  windows_.erase(window);
  send(destroyed, &NSWindow::windowDestroyed);
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

// The named windows exchange their places. All other windows keep theirs.
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
