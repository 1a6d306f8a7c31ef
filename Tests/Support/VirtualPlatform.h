// What every test runs on: virtual time, the headless window system, a log and an event list.
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
#include "Platform/WindowSystem/Headless/HeadlessWindowSystem.h"

namespace vel::test {

/// A fresh platform in virtual time that starts at 0; at its end nothing of it is left for the
/// next.
class VirtualPlatform {
 public:
  VirtualPlatform();
  VirtualPlatform(const VirtualPlatform&) = delete;
  VirtualPlatform& operator=(const VirtualPlatform&) = delete;
  ~VirtualPlatform();

  /// Runs the loop for so many virtual seconds, and until nothing more is due then.
  void run(double seconds);
  /// Runs what is due now.
  void runDue() { run(0); }
  [[nodiscard]] double now() const;

  /// What a user does with windows.
  [[nodiscard]] HeadlessWindowSystem& user() { return *windowSystem_; }
  /// Log lines, without the logger's own prefix.
  std::vector<std::string> log;
  /// Events that the host's analytics recorded, with the virtual time in seconds.
  struct Event {
    std::string name;
    double time = 0;
    bool operator==(const Event&) const = default;
  };
  std::vector<Event> events;

 private:
  HeadlessWindowSystem* windowSystem_ = nullptr;
};

/// The fixture for it.
class VirtualTest : public testing::Test {
 protected:
  VirtualPlatform platform;
};

/// A window whose class name is given at run time, as hosts have them.
class NamedWindow final : public Class<NamedWindow, "NSWindow", NSWindow> {
 public:
  NamedWindow(std::string_view name, CGRect frame, NSWindowStyleMask styleMask)
      : Class(frame, styleMask), name_(name) {}
  [[nodiscard]] std::string_view className() const override { return name_; }

 private:
  std::string name_;
};

/// The same for a view controller.
class NamedViewController final
    : public Class<NamedViewController, "NSViewController", NSViewController> {
 public:
  explicit NamedViewController(std::string_view name) : name_(name) {}
  [[nodiscard]] std::string_view className() const override { return name_; }

 private:
  std::string name_;
};

inline constexpr NSWindowStyleMask kFullStyle = 15;

/// An open window, in front, not key.
Strong<NSWindow> openWindow(std::string_view className, CGRect frame = CGRectMake(0, 0, 1280, 720),
                            NSWindowStyleMask styleMask = kFullStyle);
/// An open, key window of class "PlayerWindow".
Strong<NSWindow> openPlayerWindow();
/// The same with a content view controller.
Strong<NSWindow> openPlayerWindowWithContentViewController();

/// A request with the given parameters, which may be none.
Strong<ContentRequest> makeRequest(Strong<NSDictionary> parameters);
/// A request for `event` with a duration in seconds, and a mode unless that is empty.
Strong<ContentRequest> makeRequest(std::string_view event, double duration,
                                   std::string_view mode = "");

}  // namespace vel::test
