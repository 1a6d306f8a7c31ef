#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "HostInterfaces/ContentBroker.h"
#include "LaunchScreen/LaunchScreen.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSViewController.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/Headless/HeadlessWindowSystem.h"

namespace vel::test {

/// A platform with a virtual clock that starts at 0, and with a window system that needs no
/// display. The destructor shuts the platform down and resets the library's default configuration.
class VirtualPlatform : private NonCopyable {
 public:
  VirtualPlatform();
  ~VirtualPlatform();

  /// Runs the main run loop for this many virtual seconds. Work that is due exactly at the end also
  /// runs.
  void run(double seconds);
  /// Runs all work that is due now.
  void runDueWork() { run(0); }
  /// The virtual time in seconds.
  [[nodiscard]] double now() const;

  /// The window system, which also simulates users and other programs.
  [[nodiscard]] HeadlessWindowSystem& windowSystem() { return *windowSystem_; }
  /// The lines that NSLog has logged, without the date, process and thread.
  std::vector<std::string> log;

  /// An analytics event and the virtual time of its recording, in seconds.
  struct Event {
    std::string name;
    double time = 0;
    bool operator==(const Event&) const = default;
  };
  /// The recorded analytics events.
  std::vector<Event> events;

 private:
  HeadlessWindowSystem* windowSystem_ = nullptr;
};

class VirtualPlatformTest : public testing::Test {
 protected:
  VirtualPlatform platform;
};

/// A window with a class name that is chosen at run time.
class NamedWindow final : public Class<NamedWindow, "NSWindow", NSWindow> {
 public:
  NamedWindow(std::string_view name, CGRect frame, NSWindowStyleMask styleMask)
      : Class(frame, styleMask), name_(name) {}
  [[nodiscard]] std::string_view className() const override { return name_; }

 private:
  std::string name_;
};

/// A view controller with a class name that is chosen at run time.
class NamedViewController final
    : public Class<NamedViewController, "NSViewController", NSViewController> {
 public:
  explicit NamedViewController(std::string_view name) : name_(name) {}
  [[nodiscard]] std::string_view className() const override { return name_; }

 private:
  std::string name_;
};

/// Titled, closable, miniaturizable and resizable.
inline constexpr NSWindowStyleMask kFullStyle = 15;

/// Opens a window in front of all other windows. The window is not key.
Strong<NSWindow> openWindow(std::string_view className, CGRect frame = CGRectMake(0, 0, 1280, 720),
                            NSWindowStyleMask styleMask = kFullStyle);
/// Opens a window with the class name "PlayerWindow" and makes it key.
Strong<NSWindow> openPlayerWindow();
/// Opens a player window, as `openPlayerWindow` does, with a content view controller.
Strong<NSWindow> openPlayerWindowWithContentViewController();

/// Makes a request with `parameters`, which may be null.
Strong<ContentRequest> makeRequest(Strong<NSDictionary> parameters);
/// Makes a request for `event` with a duration in seconds. If `mode` is empty, the request has no
/// parameter "mode".
Strong<ContentRequest> makeRequest(std::string_view event, double duration,
                                   std::string_view mode = "");

}  // namespace vel::test
