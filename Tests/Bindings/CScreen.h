// Test support for the C interface. The launch screen is on the headless display and uses virtual
// time. Virtual time advances only in vel_run.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "Bindings/C/vel_launch_screen.h"
#include "Platform/WindowSystem/Headless/HeadlessWindowSystem.h"

namespace vel::test {

/// Acts as a host: a program that uses the C interface. Each callback records its call and then
/// calls `onCallback`.
struct CHost {
  /// One line for each call: the callback's name and its arguments. Calls of log_line are not
  /// included.
  std::vector<std::string> callbackLines;
  /// The lines that log_line has received.
  std::vector<std::string> log;
  /// The value that may_disappear returns.
  bool mayDisappear = true;
  /// Called with the callback's name. May be empty.
  std::function<void(const std::string& callback)> onCallback;

  /// Returns callbacks that record their calls in this object. Every function pointer is set.
  [[nodiscard]] VelCallbacks callbacks();
  void recordCallback(const std::string& callback, const std::string& details = {});
};

/// Options for the headless display and virtual time.
VelCreateOptions virtualTimeOptions(const VelCallbacks* callbacks = nullptr);

/// `mode` is "skip" or "forced"; null means "forced". In mode "skip", the host may dismiss the
/// launch screen at any time.
VelRequest makeRequest(const char* event, double seconds, const char* mode = nullptr);

/// The window system of the launch screen. It also simulates a user and a window manager.
HeadlessWindowSystem& windowSystem();

/// Creates `screen` before each test and destroys it afterwards.
class CBindingTest : public testing::Test {
 protected:
  CBindingTest();
  ~CBindingTest() override;

  /// Destroys `screen` and creates it again with `options`.
  void createAgain(const VelCreateOptions& options);
  /// Calls vel_request and vel_present. Fails the test if either call fails.
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
