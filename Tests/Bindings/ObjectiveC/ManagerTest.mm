// LaunchScreenManager on the headless window system, in virtual time.
#include <gmock/gmock.h>

#include <cstdlib>

#include "Bindings/ObjectiveC/NativeValues.h"
#include "Tests/Bindings/ObjectiveC/NativeObjects.h"
#include "Tests/Support/LaunchScreenHost.h"

namespace {

using testing::ElementsAre;

// The parameters of a request. A valid `duration` is a number or a string.
NSDictionary* parametersWith(id duration) {
  return [NSDictionary
      dictionaryWithObjectsAndKeys:@"launch_end", @"event", duration, @"max_duration_time", nil];
}

NSDictionary* parametersWithMode(id mode) {
  return [NSDictionary dictionaryWithObjectsAndKeys:@"launch_end", @"event", @"5",
                                                    @"max_duration_time", mode, @"mode", nil];
}

class ObjectiveCManager : public vel::test::VirtualPlatformTest {
 protected:
  ~ObjectiveCManager() override {
    [manager deactivate];
    [manager release];
    [pool release];
  }

  LaunchScreenContent* request(NSDictionary* parameters) {
    id const content =
        [manager contentDataForContentRequest:[NativeRequest requestWithParameters:parameters]];
    return content;
  }
  double secondsReadFrom(id duration) {
    EXPECT_TRUE(request(parametersWith(duration)) != nil);
    return [[LaunchScreenConfiguration defaultConfiguration] expirationTimeInterval];
  }
  bool selectsSkipMode(id mode) {
    EXPECT_TRUE(request(parametersWithMode(mode)) != nil);
    return [[LaunchScreenConfiguration defaultConfiguration] skipMode] == YES;
  }

  NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
  LaunchScreenManager* manager = [[LaunchScreenManager alloc] init];
};

TEST_F(ObjectiveCManager, SupportsTheEngineOfTheLibrary) {
  EXPECT_TRUE([[manager supportedEngines] isEqual:[NSArray arrayWithObject:kLaunchScreenEngine]]);
}

TEST_F(ObjectiveCManager, ActivateRegistersTheManagerAndReturnsYesIfTheBrokerReturnsNo) {
  NativeBroker* const broker = [[[NativeBroker alloc] init] autorelease];
  EXPECT_TRUE([manager activate:broker]);
  EXPECT_TRUE(broker->resolver == manager);
}

TEST_F(ObjectiveCManager, CanBeActivatedWithoutABroker) { EXPECT_TRUE([manager activate:nil]); }

TEST_F(ObjectiveCManager, ReadsADurationOfEachNumberType) {
  // The library rounds each duration to the type float.
  EXPECT_EQ(secondsReadFrom([NSNumber numberWithInt:5]), 5.0);
  EXPECT_EQ(secondsReadFrom([NSNumber numberWithDouble:0.3]), 0.30000001192092896);
  EXPECT_EQ(secondsReadFrom([NSNumber numberWithFloat:0.1F]), 0.10000000149011612);
  EXPECT_EQ(secondsReadFrom([NSNumber numberWithShort:-3]), -3.0);
  EXPECT_EQ(secondsReadFrom([NSNumber numberWithUnsignedLongLong:18446744073709551615ULL]),
            18446744073709551616.0);
  EXPECT_EQ(secondsReadFrom([NSDecimalNumber decimalNumberWithString:@"2.5"]), 2.5);
  EXPECT_EQ(secondsReadFrom([NSNumber numberWithBool:YES]), 1.0);
}

TEST_F(ObjectiveCManager, ReadsADurationFromTheBeginningOfAString) {
  EXPECT_EQ(secondsReadFrom(@" 2.5 seconds"), 2.5);
}

TEST_F(ObjectiveCManager, RefusesADurationThatIsZeroOrAnArray) {
  EXPECT_TRUE(request(parametersWith([NSNumber numberWithBool:NO])) == nil);
  EXPECT_TRUE(request(parametersWith(@"abc")) == nil);  // read as 0
  EXPECT_TRUE(request(parametersWith([NSArray array])) == nil);
  const std::string line = "LaunchScreenManager (-[LaunchScreenManager parseParameters:]): "
                           "Max duration time is nil or empty!";
  EXPECT_THAT(platform.log, ElementsAre(line, line, line));
}

TEST_F(ObjectiveCManager, SkipModeIsSetOnlyIfTheModeIsSkip) {
  EXPECT_TRUE(selectsSkipMode(@"skip"));
  EXPECT_FALSE(selectsSkipMode(@"Skip"));
  EXPECT_FALSE(selectsSkipMode([NSNumber numberWithBool:YES]));
  EXPECT_FALSE(selectsSkipMode([NSNull null]));
}

TEST_F(ObjectiveCManager, ReadsANonAsciiEventName) {
  NSString* const event = vel_objc::nativeString("d\xC3\xA9marrage \xF0\x9F\x8E\xAE");
  request(
      [NSDictionary dictionaryWithObjectsAndKeys:event, @"event", @"5", @"max_duration_time", nil]);
  EXPECT_TRUE(
      [[[LaunchScreenConfiguration defaultConfiguration] nextEventName] isEqualToString:event]);
}

TEST_F(ObjectiveCManager, RefusesARequestWithoutParameters) {
  EXPECT_TRUE(request(nil) == nil);
  EXPECT_TRUE([manager contentDataForContentRequest:nil] == nil);
  const std::string line = "LaunchScreenManager (-[LaunchScreenManager parseParameters:]): "
                           "Content request parameters is nil or empty!";
  EXPECT_THAT(platform.log, ElementsAre(line, line));
}

TEST_F(ObjectiveCManager, OneObjectIsTheDataTheViewAndThePresentation) {
  LaunchScreenContent* const content = request(parametersWith(@"5"));
  ASSERT_TRUE(content != nil);
  EXPECT_TRUE([manager contentViewForContentData:content] == content);
  EXPECT_TRUE([manager contentViewForContentData:nil] == content);
  EXPECT_TRUE([content data] == content);
  EXPECT_TRUE([content presentation] == content);
  EXPECT_TRUE([content isKindOfClass:[LaunchScreenContent class]]);
}

TEST_F(ObjectiveCManager, TheContentHasTheRequestOfTheHost) {
  NativeRequest* const request = [NativeRequest requestWithParameters:parametersWith(@"5")];
  EXPECT_TRUE([[manager contentDataForContentRequest:request] request] == request);
}

TEST_F(ObjectiveCManager, NotifiesTheCurrentDelegateEachTimeTheStateIsSet) {
  NativeResolverDelegate* const delegate = [[[NativeResolverDelegate alloc] init] autorelease];
  [manager setDelegate:delegate];
  EXPECT_TRUE([manager delegate] == delegate);
  LaunchScreenContent* const content = request(parametersWith(@"5"));
  EXPECT_EQ(delegate->changes, 1);
  EXPECT_TRUE(delegate->resolver == manager);
  EXPECT_TRUE(delegate->data == content);
  EXPECT_EQ([content state], ContentDataStateLoaded);
  EXPECT_TRUE([content error] == nil);
  [content setState:ContentDataStateLoaded];
  EXPECT_EQ(delegate->changes, 2);
  [manager setDelegate:nil];
  [content setState:ContentDataStateLoaded];
  EXPECT_EQ(delegate->changes, 2);
}

TEST_F(ObjectiveCManager, DoesNotNotifyADelegateThatDoesNotAdoptTheProtocol) {
  DelegateWithoutProtocol* const delegate = [[[DelegateWithoutProtocol alloc] init] autorelease];
  [manager setDelegate:static_cast<id>(delegate)];
  EXPECT_TRUE(request(parametersWith(@"5")) != nil);
  EXPECT_EQ(delegate->changes, 0);
}

TEST_F(ObjectiveCManager, ANegativeDurationMakesTheContentFailWithAnError) {
  LaunchScreenContent* const content = request(parametersWith([NSNumber numberWithInt:-1]));
  EXPECT_EQ([content state], ContentDataStateFailed);
  EXPECT_TRUE([[[content error] domain] isEqualToString:@"LaunchScreen view controller is NIL"]);
  EXPECT_EQ([[content error] code], 404);
}

TEST_F(ObjectiveCManager, ARequestFromAnotherThreadIsLoadedOnTheMainThread) {
  NativeResolverDelegate* const delegate = [[[NativeResolverDelegate alloc] init] autorelease];
  [manager setDelegate:delegate];
  LaunchScreenContent* content = nil;
  vel::test::runOnAnotherThread([&] {
    NSAutoreleasePool* const threadPool = [[NSAutoreleasePool alloc] init];
    content = [request(parametersWith(@"5")) retain];
    [threadPool release];
  });
  EXPECT_EQ([content state], 0U);  // not loaded yet
  platform.runDueWork();
  EXPECT_EQ([content state], ContentDataStateLoaded);
  EXPECT_TRUE(delegate->isOnMainThread);
  [content release];
}

TEST_F(ObjectiveCManager, ARequestGetsItsOwnContentWhileALaunchScreenIsShown) {
  LaunchScreenContent* const content = request(parametersWith(@"5"));
  const auto window = vel::test::openPlayerWindowWithContentViewController();
  // A window with this child controller shows a launch screen.
  window->contentViewController()->addChildViewController(vel::LaunchScreenViewController::init());
  LaunchScreenContent* const otherContent = request(parametersWith(@"7"));
  EXPECT_TRUE(otherContent != nil);
  EXPECT_TRUE(otherContent != content);
}

TEST_F(ObjectiveCManager, ReturnsNoContentAfterDeactivate) {
  LaunchScreenContent* const content = request(parametersWith(@"5"));
  [manager deactivate];
  EXPECT_TRUE(request(parametersWith(@"5")) == nil);
  EXPECT_TRUE([manager contentViewForContentData:content] == nil);
  EXPECT_EQ([content state], ContentDataStateLoaded);
}

TEST_F(ObjectiveCManager, PresentLogsThePresentationMode) {
  LaunchScreenContent* const content = request(parametersWith(@"5"));
  [content presentForWindow:nil withPresentationMode:7];
  EXPECT_THAT(platform.log, ElementsAre("LaunchScreenContent (-[LaunchScreenContent "
                                        "presentForWindow:withPresentationMode:]) mode: 7"));
}

TEST_F(ObjectiveCManager, HasOnlyTheDocumentedOperations) {
  EXPECT_TRUE([manager conformsToProtocol:NSProtocolFromString(@"ContentResolver")]);
  EXPECT_FALSE([manager respondsToSelector:@selector(name)]);
  LaunchScreenContent* const content = request(parametersWith(@"5"));
  EXPECT_TRUE([content conformsToProtocol:NSProtocolFromString(@"ContentData")]);
  EXPECT_TRUE([content conformsToProtocol:NSProtocolFromString(@"ContentView")]);
  EXPECT_TRUE([content conformsToProtocol:NSProtocolFromString(@"CVPresentationFullScreen")]);
  EXPECT_FALSE([content respondsToSelector:@selector(viewController)]);
  EXPECT_FALSE([content respondsToSelector:@selector(rewarded)]);
  EXPECT_FALSE([content respondsToSelector:@selector(completedView)]);
}

TEST(ObjectiveCManagerDeathTest, EachInitWithoutADisplayLogsTheReasonAndReturnsNil) {
  EXPECT_EXIT(
      {
        unsetenv("DISPLAY");
        NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
        LaunchScreenManager* const first = [[LaunchScreenManager alloc] init];
        LaunchScreenManager* const second = [[LaunchScreenManager alloc] init];
        [pool release];
        std::_Exit(first == nil && second == nil ? 0 : 1);
      },
      testing::ExitedWithCode(0),
      "AppKit cannot open the display(.|\n)*AppKit cannot open the display");
}

}  // namespace
