// A LaunchScreenManager dismisses the launch screen, sends the analytics event, and reports state
// changes to its delegate.
#include <atomic>
#include <thread>

#include "Platform/Foundation/NSThread.h"
#include "Tests/Support/LaunchScreenHost.h"

namespace vel::test {
namespace {

using Events = std::vector<VirtualPlatform::Event>;
using Calls = std::vector<std::string>;

class DismissalTest : public LaunchScreenTest {};

TEST_F(DismissalTest, DismissOnTheMainThreadCallsTheControllerImmediately) {
  const auto hostController = loadHostController(5.0);
  hostController->calls.clear();
  manager->dismissLaunchScreen();
  EXPECT_EQ(hostController->calls, Calls{"dismissViewController"});
  EXPECT_EQ(hostController->dismissedController.lock(), hostController)
      << "the argument must be the controller itself";
}

TEST_F(DismissalTest, DismissOnAnotherThreadCallsTheControllerFromTheMainQueue) {
  const auto hostController = loadHostController(5.0);
  hostController->calls.clear();
  bool wasCalledOnMainThread = false;
  hostController->onNextCall([&] { wasCalledOnMainThread = NSThread::isMainThread(); });
  runOnAnotherThread([this] { manager->dismissLaunchScreen(); });
  EXPECT_TRUE(hostController->calls.empty());
  platform.runDueWork();
  EXPECT_EQ(hostController->calls, Calls{"dismissViewController"});
  EXPECT_EQ(hostController->dismissedController.lock(), hostController);
  EXPECT_TRUE(wasCalledOnMainThread);
}

TEST_F(DismissalTest, DismissSetsTheExpiredFlagBeforeItCallsTheController) {
  const auto hostController = loadHostController(5.0);
  bool isExpired = false;
  hostController->onNextCall([&] { isExpired = manager->launchScreenExpired(); });
  manager->dismissLaunchScreen();
  EXPECT_TRUE(isExpired);
  EXPECT_TRUE(manager->launchScreenExpired());
}

TEST_F(DismissalTest, DismissOnAnotherThreadSetsTheExpiredFlagImmediately) {
  loadHostController(5.0);
  bool isExpired = false;
  runOnAnotherThread([&] {
    manager->dismissLaunchScreen();
    isExpired = manager->launchScreenExpired();
  });
  EXPECT_TRUE(isExpired);
}

TEST_F(DismissalTest, AnotherThreadMayCallDismissWhileTheMainThreadWorks) {
  load(5.0);
  const auto window = openPlayerWindowWithContentViewController();
  present(window, kHostModeEmbedded);
  addHostDelegate();
  // Relaxed accesses do not synchronise the threads. A thread sanitizer can therefore detect a data
  // race in the manager.
  std::atomic<bool> mainThreadIsWorking = false;
  std::thread otherThread([&] {
    while (!mainThreadIsWorking.load(std::memory_order_relaxed)) {
      std::this_thread::yield();
    }
    manager->dismissLaunchScreen();
  });
  while (journal->empty()) {
    window->makeKeyWindow();
    platform.windowSystem().userMovesFocusAway();  // the manager reads `launchScreenExpired`
    mainThreadIsWorking.store(true, std::memory_order_relaxed);
    platform.runDueWork();
  }
  otherThread.join();
  EXPECT_EQ(*journal, Lines{"host: can dismiss"});
}

TEST_F(DismissalTest, APendingDismissCallsTheNewController) {
  const auto firstController = loadHostController(5.0);
  runOnAnotherThread([this] { manager->dismissLaunchScreen(); });
  const auto secondController = loadHostController(5.0);
  platform.runDueWork();
  EXPECT_EQ(firstController->calls, Calls{"addDelegate"});
  EXPECT_EQ(secondController->calls, (Calls{"addDelegate", "dismissViewController"}));
}

TEST_F(DismissalTest, DismissWithoutAControllerOnlySetsTheExpiredFlag) {
  manager->dismissLaunchScreen();
  EXPECT_TRUE(manager->launchScreenExpired());
  EXPECT_TRUE(platform.log.empty());
}

TEST_F(DismissalTest, DismissAfterDeactivateOnlySetsTheExpiredFlag) {
  manager->deactivate();
  runOnAnotherThread([this] { manager->dismissLaunchScreen(); });
  platform.runDueWork();
  EXPECT_TRUE(manager->launchScreenExpired());
  EXPECT_TRUE(platform.log.empty());
}

TEST_F(DismissalTest, ADelegateCanRefuseTheDismissal) {
  load(5.0, "skip");
  present(openPlayerWindowWithContentViewController(), kHostModeEmbedded);
  const auto hostDelegate = addHostDelegate();
  hostDelegate->agrees = false;
  manager->dismissLaunchScreen();
  EXPECT_EQ(*journal, Lines{"host: can dismiss"});
  EXPECT_NE(controller()->view()->window(), nullptr);
  hostDelegate->agrees = true;
  manager->dismissLaunchScreen();
  EXPECT_EQ(controller()->view()->window(), nullptr);
}

// The analytics event

class EventTest : public LaunchScreenTest {
 protected:
  EventTest() { setEventName("launch_end"); }

  static void setEventName(std::string_view name) {
    configuration().setNextEventName(NSString::stringWithUTF8String(name));
  }
};

TEST_F(EventTest, SendAnalyticsEventRecordsTheEventAfterHalfASecond) {
  platform.run(0.25);
  manager->sendAnalyticsEvent();
  platform.run(0.499999999);
  EXPECT_TRUE(platform.events.empty());
  platform.run(0.000000001);
  EXPECT_EQ(platform.events, (Events{{"launch_end", 0.75}}));
}

TEST_F(EventTest, TwoCallsRecordOneEvent) {
  manager->sendAnalyticsEvent();
  platform.run(0.1);
  manager->sendAnalyticsEvent();
  platform.run(5.0);
  EXPECT_EQ(platform.events, (Events{{"launch_end", 0.5}}));
}

TEST_F(EventTest, EventWasSendedIsTrueAsSoonAsTheEventIsScheduled) {
  manager->sendAnalyticsEvent();
  EXPECT_TRUE(manager->eventWasSended());
  EXPECT_TRUE(platform.events.empty());
}

TEST_F(EventTest, SendAnalyticsEventChangesNothingAfterTheEventIsScheduled) {
  manager->sendAnalyticsEvent();
  manager->setAppIsUnfocused(true);
  manager->setLaunchScreenExpired(true);
  manager->sendAnalyticsEvent();
  EXPECT_TRUE(manager->launchScreenExpired());
  EXPECT_FALSE(manager->launchShouldBeClosed());
}

TEST_F(EventTest, ALaterContentRequestRecordsNoSecondEvent) {
  manager->sendAnalyticsEvent();
  platform.run(1.0);
  manager->contentDataForContentRequest(makeRequest("another", 5));
  manager->sendAnalyticsEvent();
  platform.run(1.0);
  EXPECT_EQ(platform.events, (Events{{"launch_end", 0.5}}));
}

TEST_F(EventTest, TheEventIsPostponedWhileTheApplicationIsUnfocused) {
  manager->setAppIsUnfocused(true);
  for (const bool isExpired : {false, true}) {
    manager->setLaunchShouldBeClosed(false);
    manager->setLaunchScreenExpired(isExpired);
    manager->sendAnalyticsEvent();
    EXPECT_TRUE(manager->launchShouldBeClosed());
    EXPECT_EQ(manager->launchScreenExpired(), isExpired);
    EXPECT_FALSE(manager->eventWasSended());
  }
  platform.run(5.0);
  EXPECT_TRUE(platform.events.empty());
}

TEST_F(EventTest, TheEventIsNotPostponedWhileTheApplicationIsFocused) {
  manager->sendAnalyticsEvent();
  EXPECT_FALSE(manager->launchShouldBeClosed());
}

TEST_F(EventTest, SchedulingTheEventClearsTheExpiredFlag) {
  manager->setLaunchScreenExpired(true);
  manager->sendAnalyticsEvent();
  EXPECT_FALSE(manager->launchScreenExpired());
}

TEST_F(EventTest, SendAnalyticsEventOnlyClearsTheExpiredFlagIfTheNameIsEmpty) {
  for (const auto& emptyName : {Strong<NSString>(), NSString::stringWithUTF8String("")}) {
    configuration().setNextEventName(emptyName);
    manager->setLaunchScreenExpired(true);
    manager->sendAnalyticsEvent();
    platform.run(1.0);
    EXPECT_FALSE(manager->launchScreenExpired());
    EXPECT_FALSE(manager->eventWasSended());
    EXPECT_TRUE(platform.events.empty());
  }
  setEventName("late");
  manager->sendAnalyticsEvent();
  platform.run(1.0);
  EXPECT_EQ(platform.events, (Events{{"late", 2.5}}));
}

TEST_F(EventTest, TheNameIsReadWhenTheEventIsRecorded) {
  manager->sendAnalyticsEvent();
  platform.run(0.2);
  setEventName("changed");
  platform.run(1.0);
  EXPECT_EQ(platform.events, (Events{{"changed", 0.5}}));
}

TEST_F(EventTest, ANullNameIsRecordedAsAnEmptyName) {
  manager->sendAnalyticsEvent();
  configuration().setNextEventName(nullptr);
  platform.run(1.0);
  EXPECT_EQ(platform.events, (Events{{"", 0.5}}));
}

TEST_F(EventTest, ANewDefaultConfigurationDoesNotChangeAScheduledEvent) {
  const auto oldConfiguration = LaunchScreenConfiguration::defaultConfiguration();
  manager->sendAnalyticsEvent();
  LaunchScreenConfiguration::setDefaultConfiguration(LaunchScreenConfiguration::init());
  setEventName("name of the new configuration");
  oldConfiguration->setNextEventName(
      NSString::stringWithUTF8String("name of the old configuration"));
  platform.run(1.0);
  EXPECT_EQ(platform.events, (Events{{"name of the old configuration", 0.5}}));
}

TEST_F(EventTest, SendAnalyticsEventRecordsTheEventEvenInSkipMode) {
  configuration().setSkipMode(true);
  manager->sendAnalyticsEvent();
  platform.run(1.0);
  EXPECT_EQ(platform.events, (Events{{"launch_end", 0.5}}));
}

TEST_F(EventTest, SendAnalyticsEventLogsNothing) {
  manager->sendAnalyticsEvent();
  platform.run(1.0);
  EXPECT_TRUE(platform.log.empty());
}

// State changes that the manager reports to its delegate

/// Implements the method of ContentResolverDelegate but does not adopt this protocol.
class UndeclaredListener final : public Class<UndeclaredListener, "UndeclaredListener"> {
 public:
  void contentResolverDidChangeStateForContentData(const Strong<ContentResolver>& /*resolver*/,
                                                   const Strong<ContentData>& /*data*/) {
    ++callCount;
  }
  int callCount = 0;
};

class StateChangeTest : public LaunchScreenTest {
 protected:
  Strong<ResolverListener> listener = make<ResolverListener>();
};

TEST_F(StateChangeTest, TheDelegateReceivesTheManagerAndTheData) {
  manager->setDelegate(listener);
  const auto data = LaunchScreenContent::init();
  manager->contentDataDidChangeState(data);
  ASSERT_EQ(listener->changes.size(), 1u);
  EXPECT_EQ(listener->changes[0].resolver, manager);
  EXPECT_EQ(listener->changes[0].data, data);
}

TEST_F(StateChangeTest, SettingTheCurrentStateAgainIsReported) {
  manager->setDelegate(listener);
  manager->content()->setState(7);
  manager->content()->setState(7);
  ASSERT_EQ(listener->changes.size(), 2u);
  EXPECT_EQ(listener->changes[1].data, manager->content());
  EXPECT_EQ(listener->changes[1].state, 7u);
}

TEST_F(StateChangeTest, ADelegateThatDoesNotAdoptTheProtocolIsNotNotified) {
  const auto undeclaredListener = make<UndeclaredListener>();
  manager->setDelegate(undeclaredListener);
  manager->content()->setState(ContentDataStateLoaded);
  EXPECT_EQ(undeclaredListener->callCount, 0);
  EXPECT_EQ(manager->delegate(), undeclaredListener);
}

TEST_F(StateChangeTest, TheStateIsSetWithoutADelegate) {
  manager->content()->setState(ContentDataStateLoaded);
  EXPECT_EQ(manager->content()->state(), ContentDataStateLoaded);
}

TEST_F(StateChangeTest, ADestroyedDelegateIsNotNotified) {
  manager->setDelegate(listener);
  listener = nullptr;
  manager->content()->setState(ContentDataStateLoaded);
  EXPECT_EQ(manager->content()->state(), ContentDataStateLoaded);
}

TEST_F(StateChangeTest, AReplacedDelegateIsNotNotified) {
  const auto previousListener = make<ResolverListener>();
  manager->setDelegate(previousListener);
  manager->setDelegate(listener);
  manager->content()->setState(ContentDataStateLoaded);
  EXPECT_TRUE(previousListener->changes.empty());
  EXPECT_EQ(listener->changes.size(), 1u);
}

TEST_F(StateChangeTest, AFailedRequestOnAnotherThreadIsReportedOnThatThread) {
  manager->setDelegate(listener);
  runOnAnotherThread([this] { manager->content()->setContentRequest(makeRequest(nullptr)); });
  ASSERT_EQ(listener->changes.size(), 1u);
  EXPECT_EQ(listener->changes[0].state, ContentDataStateFailed);
  EXPECT_FALSE(listener->changes[0].isOnMainThread);
}

}  // namespace
}  // namespace vel::test
