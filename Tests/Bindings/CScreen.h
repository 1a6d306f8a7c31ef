// A host in C as the tests play it: a launch screen in virtual time on the headless display, and a
// note of everything that is called back.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "Bindings/C/vel_launch_screen.h"
#include "Platform/WindowSystem/Headless/HeadlessWindowSystem.h"

namespace vel::test {

/// Notes each callback as a line, and then does what the test wants done in it.
struct CHost {
  std::vector<std::string> heard;
  std::vector<std::string> log;
  bool mayDisappear = true;
  /// Run inside each callback, with its name.
  std::function<void(const std::string& callback)> inside;

  /// Callbacks that come here, all of them set.
  [[nodiscard]] VelCallbacks callbacks();
  void hear(const std::string& callback, const std::string& details = {});
};

/// Options for the headless display and virtual time.
VelCreateOptions virtualOptions(const VelCallbacks* callbacks = nullptr);

VelRequest makeRequest(const char* event, double seconds, const char* mode = nullptr);

/// What a user does with the windows of the launch screen that there is now.
HeadlessWindowSystem& user();

/// A launch screen at the start of each test, gone at its end.
class CBindingTest : public testing::Test {
 protected:
  CBindingTest();
  ~CBindingTest() override;

  /// Ends the launch screen and makes another one.
  void createAgain(const VelCreateOptions& options);
  /// Requests and presents; both have to work.
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
