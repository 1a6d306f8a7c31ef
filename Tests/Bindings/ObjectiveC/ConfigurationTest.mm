// The Objective-C class LaunchScreenConfiguration. Each object reads and changes a C++ object of
// the library, a vel::LaunchScreenConfiguration.
#include <gmock/gmock.h>

#include "Bindings/ObjectiveC/NativeValues.h"
#include "LaunchScreen/Helpers/LaunchScreenConstants.h"
#include "Tests/Bindings/ObjectiveC/NativeObjects.h"
#include "Tests/Support/VirtualPlatform.h"

namespace {

using testing::ElementsAre;

class ObjectiveCConfiguration : public vel::test::VirtualPlatformTest {
 protected:
  ~ObjectiveCConfiguration() override { [pool release]; }

  NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
};

TEST_F(ObjectiveCConfiguration, TheDefaultConfigurationIsASingleObjectWithInitialValues) {
  LaunchScreenConfiguration* const configuration = [LaunchScreenConfiguration defaultConfiguration];
  EXPECT_FALSE([configuration skipMode]);
  EXPECT_TRUE([configuration nextEventName] == nil);
  EXPECT_EQ([configuration expirationTimeInterval], 0.0);
  EXPECT_TRUE([LaunchScreenConfiguration defaultConfiguration] == configuration);
  EXPECT_TRUE([LaunchScreenConfiguration getDefaultConfiguration] == configuration);
}

TEST_F(ObjectiveCConfiguration, SettersChangeTheObjectOfTheLibrary) {
  LaunchScreenConfiguration* const configuration = [LaunchScreenConfiguration defaultConfiguration];
  [configuration setSkipMode:YES];
  [configuration setNextEventName:@"launch_end"];
  [configuration setExpirationTimeInterval:2.5];
  const auto libraryConfiguration = vel::LaunchScreenConfiguration::defaultConfiguration();
  EXPECT_TRUE(libraryConfiguration->skipMode());
  EXPECT_EQ(libraryConfiguration->nextEventName()->UTF8String(), "launch_end");
  EXPECT_EQ(libraryConfiguration->expirationTimeInterval(), 2.5);
  EXPECT_TRUE([configuration skipMode]);
  EXPECT_TRUE([[configuration nextEventName] isEqualToString:@"launch_end"]);
  EXPECT_EQ([configuration expirationTimeInterval], 2.5);
}

TEST_F(ObjectiveCConfiguration, TheDefaultConfigurationCanBeReplaced) {
  LaunchScreenConfiguration* const replacement =
      [[[LaunchScreenConfiguration alloc] init] autorelease];
  [LaunchScreenConfiguration setDefaultConfiguration:replacement];
  EXPECT_TRUE([LaunchScreenConfiguration defaultConfiguration] == replacement);
  // Setting the current default again must not deallocate it.
  [LaunchScreenConfiguration setDefaultConfiguration:replacement];
  EXPECT_TRUE([LaunchScreenConfiguration defaultConfiguration] == replacement);
}

TEST_F(ObjectiveCConfiguration, NilIsLoggedAndDoesNotReplaceTheDefault) {
  LaunchScreenConfiguration* const configuration = [LaunchScreenConfiguration defaultConfiguration];
  [LaunchScreenConfiguration setDefaultConfiguration:nil];
  EXPECT_TRUE([LaunchScreenConfiguration defaultConfiguration] == configuration);
  EXPECT_THAT(platform.log,
              ElementsAre("LaunchScreenConfiguration (+[LaunchScreenConfiguration "
                          "setDefaultConfiguration:]): Failed to set nil configuration!"));
}

TEST_F(ObjectiveCConfiguration, TheHostGetsAnotherObjectAfterTheLibraryReplacesTheDefault) {
  LaunchScreenConfiguration* const configuration = [LaunchScreenConfiguration defaultConfiguration];
  vel::LaunchScreenConfiguration::setDefaultConfiguration(vel::LaunchScreenConfiguration::init());
  EXPECT_TRUE([LaunchScreenConfiguration defaultConfiguration] != configuration);
}

TEST_F(ObjectiveCConfiguration, TheConstantsEqualTheConstantsOfTheLibrary) {
  using vel_objc::textOf;
  EXPECT_EQ(textOf(kLaunchScreenEngine), vel::kLaunchScreenEngine);
  EXPECT_EQ(textOf(LaunchScreenContentRequest.mode), vel::LaunchScreenContentRequest.mode);
  EXPECT_EQ(textOf(LaunchScreenContentRequest.skip), vel::LaunchScreenContentRequest.skip);
  EXPECT_EQ(textOf(LaunchScreenContentRequest.forced), vel::LaunchScreenContentRequest.forced);
  EXPECT_EQ(textOf(LaunchScreenContentRequest.maxDurationTime),
            vel::LaunchScreenContentRequest.maxDurationTime);
  EXPECT_EQ(textOf(LaunchScreenContentRequest.event), vel::LaunchScreenContentRequest.event);
  EXPECT_EQ(expirationTimeStep, vel::expirationTimeStep);
  EXPECT_EQ(activityIndicatorSide, vel::activityIndicatorSide);
  EXPECT_EQ(textOf(LSUnityPlayerWindowClassName), vel::LSUnityPlayerWindowClassName);
  EXPECT_EQ(textOf(LSGDPRControllerClassName), vel::LSGDPRControllerClassName);
  EXPECT_EQ(VelLaunchScreenVersionNumber, 1.0);
  EXPECT_NE(std::string(VelLaunchScreenVersionString), "");
}

}  // namespace
