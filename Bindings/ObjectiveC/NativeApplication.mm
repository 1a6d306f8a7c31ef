#include "Bindings/ObjectiveC/NativeApplication.h"

#include <map>
#include <utility>

#include "Bindings/ObjectiveC/LibraryStart.h"
#include "Bindings/ObjectiveC/NativeValues.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSViewController.h"
#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/NSLog.h"
#include "Platform/WindowSystem/Cocoa/NativeException.h"

// The operation of the class MetricsCenter, which a host may have.
@interface NSObject (VelMetricsCenter)
+ (void)logEvent:(NSString*)name;
@end

// The NSWindow of the free AppKit of GNUstep does not have this operation.
@protocol VelContentControllerOwner
- (NSViewController*)contentViewController;
@end

namespace vel_objc {

namespace {

/// Represents the content view controller of a native window. It has only the class name of the
/// native controller, which the library compares.
class ContentController final
    : public vel::Class<ContentController, "NSViewController", vel::NSViewController> {
 public:
  explicit ContentController(std::string className) : className_(std::move(className)) {}

  [[nodiscard]] std::string_view className() const override { return className_; }

 private:
  std::string className_;
};

// Creates the NSApplication if the host has not created it. The host runs the NSApplication.
// Returns false if AppKit has no display. AppKit then throws an exception of Objective-C. AppKit
// has set `NSApp` before it throws. Without the reset, a second call would find an application.
bool createNativeApplication(std::string& error) {
  if (vel::cocoa::tryToRun([] { [NSApplication sharedApplication]; })) {
    return true;
  }
  NSApp = nil;
  error = "AppKit cannot open the display";
  return false;
}

// Returns an empty text if the window has no content view controller.
std::string contentControllerClassOf(NSWindow* native) {
  if (![native respondsToSelector:@selector(contentViewController)]) {
    return {};
  }
  id const window = native;
  id<VelContentControllerOwner> const owner = window;
  NSViewController* const controller = [owner contentViewController];
  return controller != nil ? textOf(NSStringFromClass([controller class])) : std::string();
}

// Sets a controller with the class name of the native one. If the class name has not changed, keeps
// the existing controller, because a cover may be its child.
void updateContentController(vel::NSWindow& window, NSWindow* native) {
  const std::string className = contentControllerClassOf(native);
  const auto controller = window.contentViewController();
  if (className == vel::send(controller, &vel::NSViewController::className)) {
    return;
  }
  window.setContentViewController(className.empty() ? nullptr
                                                    : vel::make<ContentController>(className));
}

}  // namespace

bool startApplication(std::string& error) {
  if (vel::NSApp != nullptr) {
    return true;
  }
  if (![NSThread isMainThread]) {
    error = "the first manager must be created on the main thread";
    return false;
  }
  return createNativeApplication(error) && startLibrary(recordEvent, error);
}

vel::Strong<vel::NSWindow> windowFor(NSWindow* native, std::string& error) {
  // Without this call, a window that has just closed would still be in `windows`.
  if (vel::NSApp != nullptr) {
    vel::NSApp->windowSystem().deliverEvents();
  }
  static auto& windows = *new std::map<NSWindow*, vel::Weak<vel::NSWindow>>();
  std::erase_if(windows, [](const auto& entry) {
    const auto window = entry.second.lock();
    return window == nullptr || !window->isVisible();  // the native window has closed
  });
  if (vel::NSApp == nullptr) {
    error = "the library has been shut down";
    return nullptr;
  }
  auto window = windows.contains(native) ? windows[native].lock() : nullptr;
  if (window == nullptr) {
    window = vel::NSApp->adoptWindow(vel::CocoaWindow{.window = native}, error);
    if (window == nullptr) {
      return nullptr;
    }
    windows[native] = window;
  }
  updateContentController(*window, native);
  return window;
}

void recordEvent(std::string_view event) {
  Class const center = NSClassFromString(@"MetricsCenter");
  if ([center respondsToSelector:@selector(logEvent:)]) {
    [center logEvent:nativeString(event)];
  } else {
    vel::NSLog("%@ (%s): %@", "MetricsCenter", "+[MetricsCenter logEvent:]", event);
  }
}

}  // namespace vel_objc
