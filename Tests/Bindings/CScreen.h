// Simulates a host, which is a program that uses the C interface. The launch screen is on the
// headless display. It uses virtual time, which advances only in vel_run.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "Bindings/C/vel_launch_screen.h"
#include "Platform/WindowSystem/Headless/HeadlessWindowSystem.h"

namespace vel::test {

/// Records each callback, and then calls `onCallback`.
struct CHost {
  /// One line for each callback except log_line: the callback's name and its arguments.
  std::vector<std::string> callbackLines;
  /// The lines that log_line has received.
  std::vector<std::string> log;
  /// The result of may_disappear.
  bool mayDisappear = true;
  /// Called inside each callback with the callback's name. May be empty.
  std::function<void(const std::string& callback)> onCallback;

  /// Callbacks that call this host. No member is null.
  [[nodiscard]] VelCallbacks callbacks();
  void recordCallback(const std::string& callback, const std::string& details = {});
};

/// Options for the headless display and virtual time.
VelCreateOptions virtualTimeOptions(const VelCallbacks* callbacks = nullptr);

/// In mode "skip", the host may dismiss the launch screen at any time. Null means mode "forced".
VelRequest makeRequest(const char* event, double seconds, const char* mode = nullptr);

/// The window system of the launch screen. It also simulates a user and a window manager.
HeadlessWindowSystem& windowSystem();

/// Creates a launch screen before each test and destroys it afterwards.
class CBindingTest : public testing::Test {
 protected:
  CBindingTest();
  ~CBindingTest() override;

  /// Destroys the launch screen and creates another launch screen with `options`.
  void createAgain(const VelCreateOptions& options);
  /// Requests and presents a launch screen. Fails the test if either call fails.
  void present(VelPresentation presentation, double seconds, const char* mode = nullptr);
  [[nodiscard]] double secondsLeft() const;
  [[nodiscard]] bool isUp() const;
  [[nodiscard]] VelPause pauseReason() const;
  [[nodiscard]] VelState state() const;

  CHost host;
  VelCallbacks callbacks = host.callbacks();
  VelLaunchScreen* screen = nullptr;
};

}  // namespace vel::test
