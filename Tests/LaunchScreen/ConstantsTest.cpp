// The values of the constants that hosts use.
#include <gtest/gtest.h>

#include <cstddef>
#include <string_view>
#include <type_traits>

#include "LaunchScreen/Helpers/LaunchScreenConstants.h"

namespace vel::test {
namespace {

TEST(ConstantsTest, TheEngineNameIsLaunchScreen) {
  EXPECT_EQ(kLaunchScreenEngine, "launch_screen");
}

TEST(ConstantsTest, TheKeysAndTheModesOfARequestHaveTheExpectedText) {
  EXPECT_EQ(LaunchScreenContentRequest.mode, "mode");
  EXPECT_EQ(LaunchScreenContentRequest.skip, "skip");
  EXPECT_EQ(LaunchScreenContentRequest.forced, "forced");
  EXPECT_EQ(LaunchScreenContentRequest.maxDurationTime, "max_duration_time");
  EXPECT_EQ(LaunchScreenContentRequest.event, "event");
}

TEST(ConstantsTest, TheKeysStructureHasTheExpectedLayout) {
  using Keys = LaunchScreenContentRequestKeys;
  static_assert(std::is_standard_layout_v<Keys>);
  constexpr std::size_t kTextSize = sizeof(std::string_view);
  EXPECT_EQ(sizeof(Keys), 5 * kTextSize);
  EXPECT_EQ(offsetof(Keys, mode), 0 * kTextSize);
  EXPECT_EQ(offsetof(Keys, skip), 1 * kTextSize);
  EXPECT_EQ(offsetof(Keys, forced), 2 * kTextSize);
  EXPECT_EQ(offsetof(Keys, maxDurationTime), 3 * kTextSize);
  EXPECT_EQ(offsetof(Keys, event), 4 * kTextSize);
}

TEST(ConstantsTest, TheStepOfTheCountdownIsTheDoubleNearestToATenth) {
  EXPECT_EQ(expirationTimeStep, 0x1.999999999999ap-4);
}

TEST(ConstantsTest, TheSideOfTheActivityIndicatorIs32Points) {
  EXPECT_EQ(activityIndicatorSide, 32.0);
}

TEST(ConstantsTest, HostClassNamesHaveTheExpectedText) {
  EXPECT_EQ(LSUnityPlayerWindowClassName, "PlayerWindow");
  EXPECT_EQ(LSGDPRControllerClassName, "GDPRViewController");
}

TEST(ConstantsTest, TheConstantsAreConst) {
  static_assert(std::is_const_v<decltype(kLaunchScreenEngine)>);
  static_assert(std::is_const_v<decltype(LaunchScreenContentRequest)>);
  static_assert(std::is_const_v<decltype(expirationTimeStep)>);
  static_assert(std::is_const_v<decltype(activityIndicatorSide)>);
  static_assert(std::is_const_v<decltype(LSUnityPlayerWindowClassName)>);
  static_assert(std::is_const_v<decltype(LSGDPRControllerClassName)>);
  static_assert(std::is_const_v<decltype(VelLaunchScreenVersionNumber)>);
}

TEST(ConstantsTest, TheVersionNumberIsOneAndTheVersionStringNamesTheLibrary) {
  EXPECT_EQ(VelLaunchScreenVersionNumber, 1.0);
  EXPECT_STREQ(VelLaunchScreenVersionString, "VelLaunchScreen 1.0");
}

}  // namespace
}  // namespace vel::test
