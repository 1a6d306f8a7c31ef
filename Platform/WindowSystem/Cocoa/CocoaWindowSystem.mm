#include "Platform/WindowSystem/Cocoa/CocoaWindowSystem.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "Platform/Foundation/NSRunLoop.h"
#include "Platform/WindowSystem/Cocoa/AutoreleasePool.h"
#include "Platform/WindowSystem/Cocoa/NativeException.h"

// Receives the notifications of all windows, and is the delegate of the windows that the back end
// creates. The back end clears `windowSystem` before it releases the observer.
@interface VelWindowObserver : NSObject {
 @public
  vel::CocoaWindowSystem* windowSystem;
}
- (void)notificationPosted:(NSNotification*)notification;
@end

@implementation VelWindowObserver

- (void)notificationPosted:(NSNotification*)notification {
  if (windowSystem != nullptr) {
    windowSystem->notificationPosted(notification);
  }
}

// AppKit must not close the window, because the platform layer decides whether the window closes.
- (BOOL)windowShouldClose:(id)sender {
  if (windowSystem != nullptr) {
    windowSystem->userClosesWindow(sender);
  }
  return NO;
}

@end

// The delegate of the application while it finishes launching. AppKit treats the arguments of the
// program as names of documents, and shows an alert for each document that it cannot open.
@interface VelLaunchDelegate : NSObject
@end

@implementation VelLaunchDelegate
- (BOOL)application:(NSApplication*)application openFile:(NSString*)name {
  return YES;
}
@end

// The free AppKit of GNUstep does not declare this operation.
@protocol VelActivationPolicySetter
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;
@end

// A window that the back end creates. A borderless NSWindow refuses to become key, so this class
// allows it.
@interface VelWindow : NSWindow
@end

@implementation VelWindow
- (BOOL)canBecomeKeyWindow {
  return YES;
}
- (BOOL)canBecomeMainWindow {
  return YES;
}
@end

namespace vel {

using cocoa::AutoreleasePool;

namespace {

// The time between two calls of `dispatchNativeEvents`.
constexpr Nanoseconds kDispatchInterval = kNanosecondsPerSecond / 60;
// AppKit posts no notification when the stacking order changes, so the back end compares the order.
constexpr Nanoseconds kOrderCheckInterval = kNanosecondsPerSecond / 10;

constexpr NSWindowStyleMask kControls =
    NSWindowStyleMaskClosable | NSWindowStyleMaskMiniaturizable | NSWindowStyleMaskResizable;

Nanoseconds steadyTime() {
  return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

NSString* stringOf(std::string_view text) {
  NSString* const string = [[[NSString alloc] initWithBytes:text.data()
                                                     length:text.size()
                                                   encoding:NSUTF8StringEncoding] autorelease];
  return string != nil ? string : @"";
}

std::string textOf(NSString* string) {
  const char* const text = [string UTF8String];
  return text != nullptr ? text : "";
}

NSRect nativeRect(CGRect rect) {
  return NSMakeRect(rect.origin.x, rect.origin.y, rect.size.width, rect.size.height);
}

CGRect contentFrameOf(NSWindow* native) {
  const NSRect rect = [native contentRectForFrameRect:[native frame]];
  return {{rect.origin.x, rect.origin.y}, {rect.size.width, rect.size.height}};
}

bool isOnScreen(NSWindow* native) { return [native isVisible] && ![native isMiniaturized]; }

std::vector<NSWindow*> windowsIn(NSArray* array) {
  std::vector<NSWindow*> windows;
  for (NSUInteger i = 0; i < [array count]; ++i) {
    windows.push_back([array objectAtIndex:i]);
  }
  return windows;
}

// Returns nil if the process has no such window. Compares the pointer but never uses it, because
// the host may have passed a pointer that is not a window.
NSWindow* windowOfProcess(const CocoaWindow& description) {
  for (NSWindow* const window : windowsIn([NSApp windows])) {
    if (description.window != nullptr
            ? window == description.window
            : description.number > 0 && [window windowNumber] == description.number) {
      return window;
    }
  }
  return nil;
}

// On macOS, a program without a bundle cannot become active until it sets this policy.
void makeRegularApplication() {
  if ([NSApp respondsToSelector:@selector(setActivationPolicy:)]) {
    id const application = NSApp;
    id<VelActivationPolicySetter> const setter = application;
    [setter setActivationPolicy:NSApplicationActivationPolicyRegular];
  }
}

// Creates the application of a process that has none. Returns false if AppKit has no display.
// AppKit then throws an exception of Objective-C. AppKit has set `NSApp` before it throws. Without
// the reset, a second call would find an application.
bool createApplication(std::string& error) {
  const bool hasDisplay = cocoa::tryToRun([] {
    [NSApplication sharedApplication];
    makeRegularApplication();
    id const delegate = [[[VelLaunchDelegate alloc] init] autorelease];
    [NSApp setDelegate:delegate];
    [NSApp finishLaunching];
    [NSApp setDelegate:nil];
  });
  if (!hasDisplay) {
    NSApp = nil;
    error = "AppKit cannot open the display";
  }
  return hasDisplay;
}

}  // namespace

// Opening and closing

std::unique_ptr<CocoaWindowSystem> CocoaWindowSystem::open(std::string& error) {
  const AutoreleasePool pool;
  static bool hasCreatedApplication = false;
  if (NSApp == nil) {
    if (!createApplication(error)) {
      return nullptr;
    }
    hasCreatedApplication = true;
  }
  return std::unique_ptr<CocoaWindowSystem>(new CocoaWindowSystem(hasCreatedApplication));
}

CocoaWindowSystem::CocoaWindowSystem(bool dispatchesEvents)
    : observer_([[VelWindowObserver alloc] init]), dispatchesEvents_(dispatchesEvents) {
  observer_->windowSystem = this;
  NSString* const names[] = {NSWindowDidBecomeKeyNotification,
                             NSWindowDidResignKeyNotification,
                             NSWindowDidMoveNotification,
                             NSWindowDidResizeNotification,
                             NSWindowDidMiniaturizeNotification,
                             NSWindowDidDeminiaturizeNotification,
                             NSWindowWillCloseNotification,
                             NSApplicationWillResignActiveNotification,
                             NSApplicationDidBecomeActiveNotification};
  for (NSString* const name : names) {
    [[NSNotificationCenter defaultCenter] addObserver:observer_
                                             selector:@selector(notificationPosted:)
                                                 name:name
                                               object:nil];
  }
}

CocoaWindowSystem::~CocoaWindowSystem() {
  const AutoreleasePool pool;
  while (!windows_.empty()) {
    releaseWindow(windows_.begin()->first);
  }
  [[NSNotificationCenter defaultCenter] removeObserver:observer_];
  observer_->windowSystem = nullptr;
  [observer_ release];
}

CocoaWindowSystem::Window::Window(NSWindow* retainedWindow, Origin windowOrigin)
    : native(retainedWindow),
      origin(windowOrigin),
      style(retainedWindow),
      cover(retainedWindow),
      isOrderedIn(windowOrigin == Origin::Adopted),
      isOnScreen(vel::isOnScreen(retainedWindow)),
      frame(contentFrameOf(retainedWindow)) {}

CocoaWindowSystem::Window::~Window() {
  const AutoreleasePool pool;
  cover.remove();
  [native release];
}

CocoaWindowSystem::Window* CocoaWindowSystem::find(WindowHandle handle) {
  const auto entry = windows_.find(handle);
  return entry == windows_.end() ? nullptr : entry->second.get();
}

CocoaWindowSystem::Window* CocoaWindowSystem::find(NSWindow* native) {
  return find(handleOf(native));
}

WindowHandle CocoaWindowSystem::handleOf(NSWindow* native) {
  return static_cast<WindowHandle>(reinterpret_cast<std::uintptr_t>(native));
}

CocoaWindowSystem::Window& CocoaWindowSystem::add(NSWindow* retainedWindow, Origin origin) {
  auto window = std::make_unique<Window>(retainedWindow, origin);
  window->cover.setShielded(modalWindow_ != WindowHandle::None);
  return *(windows_[handleOf(retainedWindow)] = std::move(window));
}

// If the library has created the application, no native loop runs. The host then runs the passes
// with `pump`.
void CocoaWindowSystem::runPassesInHostLoop(std::function<void()> runPass) {
  const AutoreleasePool pool;
  hostLoop_ = nullptr;
  const int descriptor = NSRunLoop::mainRunLoop().waitHandle().descriptor();
  if (runPass && descriptor >= 0 && !dispatchesEvents_) {
    hostLoop_ = std::make_unique<cocoa::HostLoop>(descriptor, std::move(runPass));
  }
}

// Creating and adopting windows

WindowHandle CocoaWindowSystem::createWindow(const WindowDescription& description) {
  const AutoreleasePool pool;
  VelWindow* const native = [[VelWindow alloc]
      initWithContentRect:nativeRect(description.frame)
                styleMask:static_cast<NSUInteger>(description.styleMask &
                                                  (NSWindowStyleMaskTitled | kControls))
                  backing:NSBackingStoreBuffered
                    defer:NO];
  [native setReleasedWhenClosed:NO];
  [native setDelegate:static_cast<id>(observer_)];
  [native setTitle:stringOf(description.title)];
  Window& window = add(native, Origin::Created);
  window.cover.setMovableByBackground(description.isMovableByBackground);
  if (const Window* const owner = find(description.ownerWindow)) {
    window.owner = owner->native;
  }
  return handleOf(native);
}

std::optional<AdoptedWindow> CocoaWindowSystem::adoptWindow(const NativeWindow& native,
                                                            std::string& error) {
  const AutoreleasePool pool;
  const auto* const description = std::get_if<CocoaWindow>(&native);
  if (description == nullptr) {
    error = "the window is not an AppKit window";
    return std::nullopt;
  }
  NSWindow* const window = windowOfProcess(*description);
  if (const char* const reason = reasonToRefuse(window)) {
    error = std::string("the AppKit window: ") + reason;
    return std::nullopt;
  }
  const Window& adopted = add([window retain], Origin::Adopted);
  return AdoptedWindow{.handle = handleOf(window),
                       .className = textOf(NSStringFromClass([window class])),
                       .title = textOf([window title]),
                       .frame = adopted.frame,
                       .styleMask = adopted.style.mask(),
                       .isOnScreen = adopted.isOnScreen,
                       .hasFocus = [window isKeyWindow] == YES};
}

const char* CocoaWindowSystem::reasonToRefuse(NSWindow* native) {
  if (native == nil) {
    return "the process has no such window";
  }
  if (const Window* const window = find(native)) {
    return window->origin == Origin::Adopted ? "it is already adopted"
                                             : "it belongs to the launch screen";
  }
  return [native contentView] == nil ? "it has no content view" : nullptr;
}

void CocoaWindowSystem::releaseWindow(WindowHandle handle) {
  const AutoreleasePool pool;
  const auto entry = windows_.find(handle);
  if (entry == windows_.end()) {
    return;
  }
  orderOut(handle);
  // `close` posts notifications. The window is removed first, so that the back end ignores them.
  const std::unique_ptr<Window> window = std::move(entry->second);
  windows_.erase(entry);
  reports_.removeReports(handle);
  if (window->origin == Origin::Adopted) {
    window->style.restore();
  } else {
    [window->native setDelegate:nil];
    [window->native close];
  }
}

// Putting windows on screen

void CocoaWindowSystem::orderFront(WindowHandle handle) {
  const AutoreleasePool pool;
  Window* const window = find(handle);
  if (window == nullptr) {
    return;
  }
  if (dispatchesEvents_ && ![NSApp isActive]) {
    [NSApp activateIgnoringOtherApps:YES];
  }
  window->isOrderedIn = true;
  [window->native orderFront:nil];
  if (window->origin == Origin::Created) {
    window->isOnScreen = true;
    if (find(window->owner) != nullptr) {
      [window->owner addChildWindow:window->native ordered:NSWindowAbove];
    }
    [window->native display];
    [window->native flushWindow];
  }
  nextOrderCheckTime_ = 0;
}

void CocoaWindowSystem::orderOut(WindowHandle handle) {
  const AutoreleasePool pool;
  Window* const window = find(handle);
  if (window == nullptr) {
    return;
  }
  window->cover.show({}, window->frame.size);
  if (window->origin == Origin::Created && window->isOrderedIn) {
    window->isOrderedIn = false;
    window->isOnScreen = false;
    if (find(window->owner) != nullptr) {
      [window->owner removeChildWindow:window->native];
    }
    [window->native orderOut:nil];
  }
}

void CocoaWindowSystem::requestFocus(WindowHandle handle) {
  const AutoreleasePool pool;
  const Window* const window = find(handle);
  if (window == nullptr || !window->isOrderedIn) {
    return;
  }
  if ([window->native isKeyWindow]) {
    report(handle, [handle](WindowSystemDelegate& delegate) { delegate.focusMoved(handle); });
  } else {
    [window->native makeKeyWindow];
  }
}

void CocoaWindowSystem::requestMiniaturized(WindowHandle handle, bool isMiniaturized) {
  const AutoreleasePool pool;
  const Window* const window = find(handle);
  if (window == nullptr || !window->isOrderedIn) {
    return;
  }
  if (isMiniaturized) {
    [window->native miniaturize:nil];
  } else {
    [window->native deminiaturize:nil];
  }
}

// Properties of windows

void CocoaWindowSystem::setFrame(WindowHandle handle, CGRect frame) {
  const AutoreleasePool pool;
  if (const Window* const window = find(handle)) {
    [window->native setFrame:[window->native frameRectForContentRect:nativeRect(frame)]
                     display:YES];
  }
}

void CocoaWindowSystem::setTitle(WindowHandle handle, std::string_view title) {
  const AutoreleasePool pool;
  if (const Window* const window = find(handle)) {
    [window->native setTitle:stringOf(title)];
  }
}

void CocoaWindowSystem::setStyleMask(WindowHandle handle, NSWindowStyleMask styleMask) {
  const AutoreleasePool pool;
  if (Window* const window = find(handle)) {
    const NSWindowStyleMask remainingControls = window->style.setMask(styleMask);
    report(handle, [=](WindowSystemDelegate& delegate) {
      delegate.remainingControlsDetected(handle, remainingControls);
    });
  }
}

void CocoaWindowSystem::setMovableByBackground(WindowHandle handle, bool isMovable) {
  Window* const window = find(handle);
  if (window != nullptr && window->origin == Origin::Created) {
    window->cover.setMovableByBackground(isMovable);
  }
}

void CocoaWindowSystem::setScene(WindowHandle handle, const Scene& scene) {
  const AutoreleasePool pool;
  if (Window* const window = find(handle)) {
    window->cover.show(scene, window->frame.size);
  }
}

bool CocoaWindowSystem::isSceneOnScreen(WindowHandle handle) {
  const Window* const window = find(handle);
  return window != nullptr && window->cover.hasScene() && vel::isOnScreen(window->native);
}

void CocoaWindowSystem::setModalWindow(WindowHandle handle) {
  const AutoreleasePool pool;
  if (handle != WindowHandle::None && find(handle) == nullptr) {
    return;
  }
  if (std::exchange(modalWindow_, handle) == handle) {
    return;
  }
  for (const auto& [otherHandle, window] : windows_) {
    window->cover.setShielded(handle != WindowHandle::None && otherHandle != handle);
  }
}

// Events

void CocoaWindowSystem::report(WindowHandle handle, ReportQueue::Report report) {
  reports_.add(handle, std::move(report));
  // AppKit can post a notification while the run loop waits. Without this call, the report would
  // wait too.
  NSRunLoop::mainRunLoop().wake();
}

void CocoaWindowSystem::notificationPosted(NSNotification* notification) {
  const AutoreleasePool pool;
  NSString* const name = [notification name];
  if ([name isEqualToString:NSApplicationWillResignActiveNotification]) {
    report(WindowHandle::None,
           [](WindowSystemDelegate& delegate) { delegate.applicationDeactivated(); });
    return;
  }
  if ([name isEqualToString:NSApplicationDidBecomeActiveNotification]) {
    // Without a key window, the platform layer makes its last key window key. So this report also
    // names a key window that is not in `windows_`.
    const WindowHandle key = handleOf([NSApp keyWindow]);
    report(WindowHandle::None,
           [key](WindowSystemDelegate& delegate) { delegate.applicationActivated(key); });
    return;
  }
  NSWindow* const native = [notification object];
  Window* const window = find(native);
  if (window == nullptr || !window->isOrderedIn) {
    return;
  }
  const WindowHandle handle = handleOf(native);
  nextOrderCheckTime_ = 0;
  if ([name isEqualToString:NSWindowWillCloseNotification]) {
    windowWillClose(native);
    return;
  }
  // The platform layer ignores the focus of a window that is not on the screen, so the focus comes
  // last.
  reportFrame(*window);
  reportVisibility(*window);
  if ([name isEqualToString:NSWindowDidResignKeyNotification]) {
    report(handle, [](WindowSystemDelegate& delegate) { delegate.focusMoved(WindowHandle::None); });
  } else if ([name isEqualToString:NSWindowDidBecomeKeyNotification]) {
    report(handle, [handle](WindowSystemDelegate& delegate) { delegate.focusMoved(handle); });
  }
}

void CocoaWindowSystem::reportFrame(Window& window) {
  const CGRect frame = contentFrameOf(window.native);
  if (frame == window.frame) {
    return;
  }
  if (frame.size != window.frame.size) {
    window.style.sizeChanged();
    window.cover.repair();
  }
  window.frame = frame;
  const WindowHandle handle = handleOf(window.native);
  report(handle, [=](WindowSystemDelegate& delegate) { delegate.frameChanged(handle, frame); });
}

// AppKit posts no notification when an owner orders its window out, so `deliverEvents` also calls
// this function.
void CocoaWindowSystem::reportVisibility(Window& window) {
  const bool isNowOnScreen = vel::isOnScreen(window.native);
  if (!window.isOrderedIn || isNowOnScreen == window.isOnScreen) {
    return;
  }
  window.isOnScreen = isNowOnScreen;
  const WindowHandle handle = handleOf(window.native);
  report(handle, [=](WindowSystemDelegate& delegate) {
    delegate.miniaturizedChanged(handle, !isNowOnScreen);
  });
  // AppKit can keep the key status of a window that is not on the screen, but the platform layer
  // does not.
  if (isNowOnScreen && [window.native isKeyWindow]) {
    report(handle, [handle](WindowSystemDelegate& delegate) { delegate.focusMoved(handle); });
  }
}

// AppKit posts no notification when an owner changes the style mask of its window.
void CocoaWindowSystem::reportStyleMask(Window& window) {
  if (window.origin != Origin::Adopted || !window.style.updateOwnersMask()) {
    return;
  }
  const WindowHandle handle = handleOf(window.native);
  const NSWindowStyleMask mask = window.style.mask();
  report(handle, [=](WindowSystemDelegate& delegate) { delegate.styleMaskChanged(handle, mask); });
}

bool CocoaWindowSystem::hasOrder() const {
  return std::ranges::count_if(windows_,
                               [](const auto& entry) { return entry.second->isOnScreen; }) > 1;
}

void CocoaWindowSystem::reportOrder() {
  std::vector<WindowHandle> order;
  for (NSWindow* const native : windowsIn([NSApp orderedWindows])) {
    const Window* const window = find(native);
    if (window != nullptr && window->isOnScreen) {
      order.push_back(handleOf(native));
    }
  }
  if (order.size() > 1 && order != order_) {
    report(WindowHandle::None,
           [order](WindowSystemDelegate& delegate) { delegate.orderChanged(order); });
  }
  order_ = std::move(order);
}

void CocoaWindowSystem::windowWillClose(NSWindow* native) {
  const WindowHandle handle = handleOf(native);
  const auto entry = windows_.find(handle);
  const std::shared_ptr<Window> window = std::move(entry->second);
  windows_.erase(entry);
  reports_.removeReports(handle);
  window->style.restore();
  window->cover.remove();
  // The report retains the native window, because the address of a deallocated window could become
  // the handle of a new window before the report is delivered.
  report(handle, [window](WindowSystemDelegate& delegate) {
    delegate.windowDestroyed(handleOf(window->native));
  });
}

void CocoaWindowSystem::userClosesWindow(NSWindow* native) {
  const Window* const window = find(native);
  if (window != nullptr && (window->style.mask() & NSWindowStyleMaskClosable) != 0) {
    const WindowHandle handle = handleOf(native);
    report(handle, [handle](WindowSystemDelegate& delegate) { delegate.closeRequested(handle); });
  }
}

bool CocoaWindowSystem::dispatchNativeEvents() {
  bool hasEvents = false;
  while (NSEvent* const event = [NSApp nextEventMatchingMask:NSUIntegerMax
                                                   untilDate:[NSDate distantPast]
                                                      inMode: ::NSDefaultRunLoopMode
                                                     dequeue:YES]) {
    [NSApp sendEvent:event];
    hasEvents = true;
  }
  [NSApp updateWindows];
  return hasEvents;
}

// Games call this function in each frame, so it compares the stacking order only at intervals.
bool CocoaWindowSystem::deliverEvents() {
  bool hasEvents = false;
  {
    const AutoreleasePool pool;
    const Nanoseconds now = steadyTime();
    if (dispatchesEvents_ && ![NSApp isRunning]) {
      nextDispatchTime_ = now + kDispatchInterval;
      hasEvents = dispatchNativeEvents();
    }
    for (const auto& [handle, window] : windows_) {
      reportVisibility(*window);
      reportStyleMask(*window);
      window->cover.repair();
      window->cover.advance(now);
    }
    if (now >= nextOrderCheckTime_ && hasOrder()) {
      nextOrderCheckTime_ = now + kOrderCheckInterval;
      reportOrder();
    }
  }
  return reports_.deliver() || hasEvents;  // the delegate may destroy this object
}

Nanoseconds CocoaWindowSystem::nextDeadline() const {
  if (!reports_.isEmpty()) {
    return 0;
  }
  Nanoseconds deadline = dispatchesEvents_ ? nextDispatchTime_ : kNever;
  if (hasOrder()) {
    deadline = std::min(deadline, nextOrderCheckTime_);
  }
  for (const auto& [handle, window] : windows_) {
    deadline = std::min(deadline, window->cover.deadline());
  }
  return deadline;
}

}  // namespace vel
