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

/// Stands for a window that another program or the host has opened. `className` returns the class
/// that the window system reports. On X11, this is the class in WM_CLASS.
class AdoptedNSWindow final : public Class<AdoptedNSWindow, "NSWindow", NSWindow> {
 public:
  explicit AdoptedNSWindow(const AdoptedWindow& description)
      : Class(description.frame, description.styleMask), className_(description.className) {}

  [[nodiscard]] std::string_view className() const override { return className_; }

 private:
  std::string className_;
};

void post(NSNotificationName name, const Strong<NSObject>& object) {
  NSNotificationCenter::defaultCenter().postNotificationNameObject(name, object);
}

}  // namespace

// Never destroyed, because the destructors of windows in static variables read NSApp.
Strong<NSApplication>& NSApp = *new Strong<NSApplication>();

Strong<NSApplication> NSApplication::start(std::unique_ptr<WindowSystem> windowSystem) {
  stop();
  dispatch_get_main_queue();  // the main thread must create this queue
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
  // `watch` comes first because it may throw. If it throws, the loop must not have a pointer to
  // this object.
  loop.watch(windowSystem_->waitHandle());
  loop.setWindowSystemSource(this);
  updateModality();
}

void NSApplication::disconnect() {
  while (!openWindows_.empty()) {
    const Strong<NSWindow> window = openWindows_.back();
    window->close();
  }
  // A closed window still has its handle, because the window can be opened again.
  for (const auto& [handle, window] : windowsByHandle_) {
    windowSystem_->releaseWindow(handle);
    window->handle_ = WindowHandle::None;
  }
  windowsByHandle_.clear();
  // Disconnect here, not in the destructor: a host may keep this object while the next application
  // runs.
  windowSystem_->setDelegate(nullptr);
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  loop.setWindowSystemSource(nullptr);
  loop.watch(WaitHandle());
  loop.setMode(NSDefaultRunLoopMode);
  NSApp = nullptr;
}

Strong<NSWindow> NSApplication::windowFor(WindowHandle handle) const {
  const auto entry = windowsByHandle_.find(handle);
  return entry == windowsByHandle_.end() ? nullptr : entry->second->self();
}

Strong<NSWindow> NSApplication::dialogOwner() const {
  if (Strong<NSWindow> main = mainWindow()) {
    return main;
  }
  if (keyWindow_ != nullptr) {
    return keyWindow_;
  }
  return orderedWindows_.empty() ? nullptr : orderedWindows_.front();
}

Strong<NSWindow> NSApplication::adoptWindow(const NativeWindow& native, std::string& error) {
  const std::optional<AdoptedWindow> description =
      guardedWindowSystem()->adoptWindow(native, error);
  if (!description) {
    return nullptr;
  }
  Strong<NSWindow> window = NSWindow::initAs<AdoptedNSWindow>(*description);
  window->title_ = description->title;
  window->handle_ = description->handle;
  windowsByHandle_[description->handle] = window.get();
  window->isOpen_ = true;
  window->isOnScreen_ = description->isOnScreen;
  window->isMiniaturized_ = !description->isOnScreen;
  openWindows_.push_back(window);
  if (description->isOnScreen) {
    addToOrderedWindows(window);
  }
  if (description->hasFocus) {
    focusMoved(description->handle);
  }
  return window;
}

// Key windows

void NSApplication::focusMoved(WindowHandle handle) {
  const Strong<NSWindow> focusedWindow = windowFor(handle);
  if (focusedWindow == keyWindow_) {
    return;
  }
  resignKey();
  // `resignKey` has called observers. If an observer has made another window key, that window stays
  // key. An observer may also have closed `focusedWindow`.
  if (keyWindow_ == nullptr && focusedWindow != nullptr && focusedWindow->isOnScreen()) {
    becomeKey(focusedWindow);
  }
}

void NSApplication::resignKey() {
  const Strong<NSWindow> window = std::exchange(keyWindow_, nullptr);
  if (window == nullptr) {
    return;
  }
  notifyPlatformObserver([&](PlatformObserver& observer) {
    observer.keyStatusChanged(*window, KeyStatusChange::ResignsKey);
  });
  post(NSWindowDidResignKeyNotification, window);
}

void NSApplication::becomeKey(const Strong<NSWindow>& window) {
  keyWindow_ = window;
  std::erase_if(keyHistory_, [&window](const Weak<NSWindow>& entry) {
    const Strong<NSWindow> earlierKeyWindow = entry.lock();
    return earlierKeyWindow == nullptr || earlierKeyWindow == window;
  });
  keyHistory_.push_back(window);
  if (window->kind_ == WindowKind::Plain) {
    mainWindow_ = window;
  }
  notifyPlatformObserver([&](PlatformObserver& observer) {
    observer.keyStatusChanged(*window, KeyStatusChange::BecomesKey);
  });
  post(NSWindowDidBecomeKeyNotification, window);
}

void NSApplication::makeNextWindowKey(const Strong<NSWindow>& removedWindow) {
  if (keyWindow_ != removedWindow) {
    return;
  }
  resignKey();
  if (keyWindow_ != nullptr) {
    return;  // an observer has made another window key
  }
  Strong<NSWindow> next = orderedWindows_.empty() ? nullptr : orderedWindows_.front();
  // The most recent key window is last in `keyHistory_`. Take the last window that
  // is on screen.
  for (const Weak<NSWindow>& entry : keyHistory_) {
    if (const Strong<NSWindow> earlierKeyWindow = entry.lock();
        earlierKeyWindow != nullptr && earlierKeyWindow->isOnScreen()) {
      next = earlierKeyWindow;
    }
  }
  send(next, &NSWindow::makeKeyWindow);
}

void NSApplication::addToOrderedWindows(const Strong<NSWindow>& window) {
  std::erase(orderedWindows_, window);
  orderedWindows_.insert(orderedWindows_.begin(), window);
  // `window` may be a modal window whose session began before it had a handle. `updateModality`
  // passes its handle to the window system.
  updateModality();
}

void NSApplication::removeFromOrderedWindows(const Strong<NSWindow>& window) {
  std::erase(orderedWindows_, window);
  if (mainWindow_.lock() == window) {
    mainWindow_.reset();
  }
}

void NSApplication::applicationDeactivated() {
  if (!isActive_) {
    return;
  }
  isActive_ = false;
  keyWindowAtDeactivation_ = keyWindow_;
  post(NSApplicationWillResignActiveNotification, self());
  resignKey();
}

void NSApplication::applicationActivated(WindowHandle handle) {
  if (isActive_) {
    return;
  }
  isActive_ = true;
  if (handle == WindowHandle::None) {  // no window of the application has the focus yet
    send(keyWindowAtDeactivation_.lock(), &NSWindow::makeKeyWindow);
  }
  post(NSApplicationDidBecomeActiveNotification, self());
}

// Modal sessions

Strong<NSWindow> NSApplication::modalWindow() const {
  return modalSessions_.empty() ? nullptr : modalSessions_.back().window;
}

std::uint64_t NSApplication::addModalSession(const Strong<NSWindow>& window) {
  modalSessions_.push_back({++lastModalSessionId_, window});
  updateModality();
  return lastModalSessionId_;
}

void NSApplication::beginModalSession(const Strong<NSWindow>& window) { addModalSession(window); }

void NSApplication::stopModal() {
  if (!modalSessions_.empty()) {
    // Without this copy, the window could be destroyed inside `pop_back`, while `modalSessions_`
    // changes.
    const ModalSession endedSession = modalSessions_.back();
    modalSessions_.pop_back();
    updateModality();
  }
}

void NSApplication::endModalSessions(const NSWindow* window) {
  std::erase_if(modalSessions_,
                [window](const ModalSession& session) { return session.window.get() == window; });
  updateModality();
}

void NSApplication::runModalForWindow(const Strong<NSWindow>& window) {
  if (window == nullptr) {
    return;
  }
  const Strong<NSApplication> strongSelf = self();
  const std::uint64_t id = addModalSession(window);
  window->makeKeyAndOrderFront();
  const auto isRunning = [this, id] {
    return std::ranges::any_of(modalSessions_,
                               [id](const ModalSession& session) { return session.id == id; });
  };
  while (isRunning()) {
    NSRunLoop::mainRunLoop().runModeBeforeDate(NSModalPanelRunLoopMode, kNever);
  }
}

void NSApplication::setRunLoopMode(NSRunLoopMode mode) {
  mode_ = mode;
  updateModality();
}

void NSApplication::updateModality() {
  const bool isModal = !modalSessions_.empty() && mode_ == NSDefaultRunLoopMode;
  NSRunLoop::mainRunLoop().setMode(isModal ? NSModalPanelRunLoopMode : mode_);
  guardedWindowSystem()->setModalWindow(send(modalWindow(), &NSWindow::handle));
}

// Other reports from the window system

void NSApplication::closeRequested(WindowHandle handle) {
  const Strong<NSWindow> window = windowFor(handle);
  if (window == nullptr || (window->styleMask() & NSWindowStyleMaskClosable) == 0) {
    return;
  }
  // Call a copy, because the handler may replace itself.
  if (const auto handler = closeRequestedHandler_) {
    handler(*window);
  } else {
    window->close();
  }
}

void NSApplication::windowDestroyed(WindowHandle handle) {
  const Strong<NSWindow> window = windowFor(handle);
  windowsByHandle_.erase(handle);
  send(window, &NSWindow::windowDestroyed);
}

void NSApplication::frameChanged(WindowHandle handle, CGRect frame) {
  send(windowFor(handle), &NSWindow::frameChanged, frame);
}

void NSApplication::miniaturizedChanged(WindowHandle handle, bool isMiniaturized) {
  send(windowFor(handle), &NSWindow::miniaturizedChanged, isMiniaturized);
}

void NSApplication::styleMaskChanged(WindowHandle handle, NSWindowStyleMask styleMask) {
  if (const Strong<NSWindow> window = windowFor(handle)) {
    window->styleMask_ = styleMask;
  }
}

// `handles` lists windows in their new order, front to back. Example: `orderedWindows_` is A, B, C
// and `handles` lists C and A. The result is C, B, A, because B is not listed and keeps its
// position.
void NSApplication::orderChanged(const std::vector<WindowHandle>& handles) {
  NSArray<NSWindow> reorderedWindows;
  for (const WindowHandle handle : handles) {
    const Strong<NSWindow> window = windowFor(handle);
    if (std::ranges::find(orderedWindows_, window) != orderedWindows_.end()) {
      reorderedWindows.push_back(window);
    }
  }
  auto next = reorderedWindows.begin();
  for (Strong<NSWindow>& orderedWindow : orderedWindows_) {
    if (std::ranges::find(reorderedWindows, orderedWindow) != reorderedWindows.end()) {
      orderedWindow = *next++;
    }
  }
}

// `remainingControls` are the controls that the window manager still offers although the style mask
// excludes them.
void NSApplication::remainingControlsDetected(WindowHandle handle,
                                              NSWindowStyleMask remainingControls) {
  const Strong<NSWindow> window = windowFor(handle);
  const auto handler = remainingControlsHandler_;
  if (window != nullptr && handler) {
    handler(*window, remainingControls);
  }
}

void NSApplication::displayLost(std::string_view reason) {
  const std::string reasonCopy(reason);
  const Strong<NSApplication> strongSelf = self();
  for (const auto& [handle, window] : windowsByHandle_) {
    window->handle_ = WindowHandle::None;
  }
  windowsByHandle_.clear();
  NSRunLoop::mainRunLoop().watch(WaitHandle());
  // Closes the windows on screen, front to back, then the miniaturised windows.
  while (!openWindows_.empty()) {
    const Strong<NSWindow> window =
        orderedWindows_.empty() ? openWindows_.back() : orderedWindows_.front();
    window->close();
  }
  if (const auto handler = displayLostHandler_) {
    handler(reasonCopy);
  }
}

}  // namespace vel
