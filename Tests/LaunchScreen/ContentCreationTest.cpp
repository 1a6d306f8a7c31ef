// A host requests content from a LaunchScreenManager and then asks the manager for the content
// view. The manager loads an accepted request into its main content. While a launch screen is
// shown, the manager loads an accepted request into a new temporary content instead. The content
// view is the main content itself.
#include <functional>
#include <limits>
#include <utility>

#include "Tests/Support/LaunchScreenHost.h"

namespace vel::test {
namespace {

class Broker final : public Class<Broker, "Broker", NSObject, ContentBroker> {
 public:
  bool registerContentResolver(const Strong<ContentResolver>& resolver) override {
    resolvers.push_back(resolver);
    return false;
  }
  std::vector<Strong<ContentResolver>> resolvers;
};

class ContentCreationTest : public LaunchScreenTest {
 protected:
  Strong<ContentData> request(double duration, std::string_view mode = "") {
    return manager->contentDataForContentRequest(makeRequest("launch_end", duration, mode));
  }
  // Opens a window with another launch screen. The next request then gets a temporary content. The
  // manager recognizes a launch screen by the class name of its controller.
  static Strong<NSWindow> showAnotherLaunchScreen() {
    const auto window = openPlayerWindowWithContentViewController();
    window->contentViewController()->addChildViewController(
        make<NamedViewController>("LaunchScreenViewController"));
    return window;
  }
  // Loads a temporary content with a controller that only records the calls it receives.
  Strong<HostController> loadTemporaryHostController() {
    const auto hostController = make<HostController>();
    configuration().setViewController(hostController);
    request(3.0);
    EXPECT_EQ(send(manager->tempContent(), &LaunchScreenContent::viewController), hostController);
    return hostController;
  }

  Strong<ResolverListener> listener = make<ResolverListener>();
};

// Construction

TEST_F(ContentCreationTest, ANewManagerIsTheDelegateOfItsMainContent) {
  ASSERT_NE(manager->content(), nullptr);
  EXPECT_EQ(manager->content()->contentDelegate(), manager);
  EXPECT_EQ(manager->content()->state(), 0u);
  EXPECT_EQ(manager->content()->contentRequest(), nullptr);
}

TEST_F(ContentCreationTest, AllOtherPropertiesOfANewManagerAreNullZeroOrFalse) {
  EXPECT_EQ(manager->tempContent(), nullptr);
  EXPECT_FALSE(manager->appIsUnfocused());
  EXPECT_FALSE(manager->eventWasSended());
  EXPECT_EQ(manager->launchScreenExpirationTimer(), nullptr);
  EXPECT_EQ(manager->launchScreenExpirationTimeLeft(), 0.0);
  EXPECT_FALSE(manager->launchScreenExpired());
  EXPECT_FALSE(manager->launchShouldBeClosed());
  EXPECT_EQ(manager->delegate(), nullptr);
}

TEST_F(ContentCreationTest, TheClassNameIsLaunchScreenManager) {
  EXPECT_EQ(manager->className(), "LaunchScreenManager");
}

TEST_F(ContentCreationTest, TheManagerDoesNotRespondToTheNameOperation) {
  const Strong<ContentResolver> resolver = manager;
  EXPECT_FALSE(respondsTo<&ContentResolver::name>(resolver));
}

TEST_F(ContentCreationTest, TheManagerDoesNotOwnItsDelegate) {
  manager->setDelegate(listener);
  EXPECT_EQ(manager->delegate(), listener);
  const Weak<ResolverListener> weakListener = listener;
  listener = nullptr;
  EXPECT_TRUE(weakListener.expired());
  EXPECT_EQ(manager->delegate(), nullptr);
}

// Registration

TEST_F(ContentCreationTest, TheOnlySupportedEngineIsLaunchScreen) {
  const auto engines = manager->supportedEngines();
  ASSERT_EQ(engines.size(), 1u);
  EXPECT_EQ(engines[0]->UTF8String(), "launch_screen");
}

TEST_F(ContentCreationTest, ActivateRegistersWithTheBrokerAndIgnoresTheBrokersResult) {
  const auto broker = make<Broker>();
  EXPECT_TRUE(manager->activate(broker));
  EXPECT_EQ(broker->resolvers, std::vector<Strong<ContentResolver>>{manager});
}

TEST_F(ContentCreationTest, ActivateWithoutABrokerReturnsTrue) {
  EXPECT_TRUE(manager->activate(nullptr));
}

// Content for a request

TEST_F(ContentCreationTest, AnAcceptedRequestGoesToTheMainContentAndSetsTheTimeLeft) {
  const auto sentRequest = makeRequest("e", 5);
  EXPECT_EQ(manager->contentDataForContentRequest(sentRequest), manager->content());
  EXPECT_EQ(manager->content()->contentRequest(), sentRequest);
  EXPECT_EQ(manager->content()->state(), ContentDataStateLoaded);
  EXPECT_NE(controller(), nullptr);
  EXPECT_EQ(manager->tempContent(), nullptr);
  EXPECT_FALSE(configuration().skipMode());
  EXPECT_EQ(configuration().nextEventName()->UTF8String(), "e");
  EXPECT_EQ(configuration().expirationTimeInterval(), 5.0);
  EXPECT_EQ(manager->launchScreenExpirationTimeLeft(), 5.0);
  EXPECT_TRUE(platform.log.empty());
}

TEST_F(ContentCreationTest, AnAcceptedRequestDoesNotStartTheCountdown) {
  request(5.0);
  EXPECT_EQ(manager->launchScreenExpirationTimer(), nullptr);
}

TEST_F(ContentCreationTest, TheTimeLeftIsTheDurationInSinglePrecision) {
  request(0.1);
  EXPECT_EQ(manager->launchScreenExpirationTimeLeft(), 0.10000000149011612);
}

TEST_F(ContentCreationTest, ARequestWithANegativeDurationIsAcceptedButTheContentFails) {
  EXPECT_EQ(request(-3), manager->content());
  EXPECT_EQ(configuration().expirationTimeInterval(), -3.0);
  EXPECT_EQ(manager->launchScreenExpirationTimeLeft(), -3.0);
  EXPECT_EQ(manager->content()->state(), ContentDataStateFailed);
  EXPECT_EQ(manager->content()->viewController(), nullptr);
}

TEST_F(ContentCreationTest, ARequestWithADurationOfNaNIsAcceptedAndTheContentLoads) {
  EXPECT_EQ(request(std::numeric_limits<double>::quiet_NaN()), manager->content());
  EXPECT_EQ(manager->content()->state(), ContentDataStateLoaded);
}

TEST_F(ContentCreationTest, TheDelegateIsNotifiedOfTheStateOfTheMainContent) {
  manager->setDelegate(listener);
  request(5.0);
  ASSERT_EQ(listener->changes.size(), 1u);
  EXPECT_EQ(listener->changes[0].resolver, manager);
  EXPECT_EQ(listener->changes[0].data, manager->content());
  EXPECT_EQ(listener->changes[0].state, ContentDataStateLoaded);
}

TEST_F(ContentCreationTest, ARequestWithoutParametersReturnsNull) {
  EXPECT_EQ(manager->contentDataForContentRequest(makeRequest(nullptr)), nullptr);
  EXPECT_EQ(platform.log.size(), 1u);
}

TEST_F(ContentCreationTest, ANullRequestIsLikeARequestWithoutParameters) {
  EXPECT_EQ(manager->contentDataForContentRequest(nullptr), nullptr);
  EXPECT_EQ(platform.log, std::vector<std::string>{
                              "LaunchScreenManager (-[LaunchScreenManager parseParameters:]): "
                              "Content request parameters is nil or empty!"});
}

TEST_F(ContentCreationTest, ARefusedRequestChangesNeitherTheMainContentNorTheTimeLeft) {
  load(5.0);
  const auto sentRequest = manager->content()->contentRequest();
  const auto mainController = controller();
  manager->setDelegate(listener);
  EXPECT_EQ(manager->contentDataForContentRequest(makeRequest("", 7)), nullptr);
  EXPECT_EQ(manager->contentDataForContentRequest(makeRequest("e", 0)), nullptr);
  EXPECT_EQ(manager->contentDataForContentRequest(makeRequest(nullptr)), nullptr);
  EXPECT_EQ(manager->content()->contentRequest(), sentRequest);
  EXPECT_EQ(controller(), mainController);
  EXPECT_EQ(manager->launchScreenExpirationTimeLeft(), 5.0);
  EXPECT_TRUE(listener->changes.empty());
}

TEST_F(ContentCreationTest, ARefusedRequestCreatesNoTemporaryContent) {
  showAnotherLaunchScreen();
  EXPECT_EQ(request(0), nullptr);
  EXPECT_EQ(manager->tempContent(), nullptr);
}

TEST_F(ContentCreationTest, EachAcceptedRequestSetsTheTimeLeftAndCreatesAController) {
  load(5.0);
  const auto previousController = controller();
  EXPECT_EQ(request(2.0), manager->content());
  EXPECT_EQ(manager->launchScreenExpirationTimeLeft(), 2.0);
  EXPECT_NE(controller(), previousController);
}

TEST_F(ContentCreationTest, AMainContentThatTheHostSetsDuringARequestIsReturned) {
  const auto replacement = LaunchScreenContent::init();
  const auto previousContent = manager->content();
  listener->whenNotified = [&] { manager->setContent(replacement); };
  manager->setDelegate(listener);
  EXPECT_EQ(request(5.0), replacement);
  EXPECT_EQ(previousContent->state(), ContentDataStateLoaded);
  previousContent->deactivate();  // breaks the reference cycle of content and controller
}

TEST_F(ContentCreationTest, ATemporaryContentThatIsSetDuringARequestIsReturned) {
  showAnotherLaunchScreen();
  const auto replacement = LaunchScreenContent::init();
  class CallbackRequest final
      : public Class<CallbackRequest, "CallbackRequest", NSObject, ContentRequest> {
   public:
    explicit CallbackRequest(std::function<void()> whenRead) : whenRead_(std::move(whenRead)) {}
    [[nodiscard]] Strong<NSDictionary> parameters() const override {
      whenRead_();
      return makeRequest("launch_end", 5)->parameters();
    }

   private:
    std::function<void()> whenRead_;
  };
  int readCount = 0;
  Strong<LaunchScreenContent> loadedContent;
  const auto callbackRequest = make<CallbackRequest>([&] {
    // The manager reads the parameters first, then the temporary content reads them.
    if (++readCount == 2) {
      loadedContent = manager->tempContent();
      manager->setTempContent(replacement);
    }
  });
  EXPECT_EQ(manager->contentDataForContentRequest(callbackRequest), replacement);
  EXPECT_EQ(readCount, 2);
  loadedContent->deactivate();  // breaks the reference cycle of content and controller
}

TEST_F(ContentCreationTest, ANewRequestKeepsTheFlagsOfTheManager) {
  manager->setAppIsUnfocused(true);
  manager->setEventWasSended(true);
  manager->setLaunchScreenExpired(true);
  manager->setLaunchShouldBeClosed(true);
  request(5.0);
  EXPECT_TRUE(manager->appIsUnfocused());
  EXPECT_TRUE(manager->eventWasSended());
  EXPECT_TRUE(manager->launchScreenExpired());
  EXPECT_TRUE(manager->launchShouldBeClosed());
}

// The temporary content

TEST_F(ContentCreationTest, ARequestDuringAnotherLaunchScreenGetsATemporaryContent) {
  load(5.0);
  const auto sentRequest = manager->content()->contentRequest();
  const auto mainController = controller();
  showAnotherLaunchScreen();
  const auto otherRequest = makeRequest("other", 3.0, "skip");
  const auto data = manager->contentDataForContentRequest(otherRequest);
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(data, manager->tempContent());
  EXPECT_NE(data, manager->content());
  EXPECT_EQ(data->request(), otherRequest);
  EXPECT_EQ(data->state(), ContentDataStateLoaded);
  EXPECT_EQ(manager->content()->contentRequest(), sentRequest);
  EXPECT_EQ(controller(), mainController);
  EXPECT_EQ(manager->launchScreenExpirationTimeLeft(), 5.0);
}

TEST_F(ContentCreationTest, ARequestForATemporaryContentChangesTheConfiguration) {
  load(5.0);
  showAnotherLaunchScreen();
  request(3.0, "skip");
  EXPECT_EQ(configuration().expirationTimeInterval(), 3.0);
  EXPECT_TRUE(configuration().skipMode());
}

TEST_F(ContentCreationTest, TheDelegateIsNotNotifiedOfATemporaryContent) {
  showAnotherLaunchScreen();
  manager->setDelegate(listener);
  request(3.0);
  ASSERT_NE(manager->tempContent(), nullptr);
  EXPECT_EQ(manager->tempContent()->contentDelegate(), nullptr);
  EXPECT_TRUE(listener->changes.empty());
}

TEST_F(ContentCreationTest, ASecondTemporaryContentReplacesTheFirst) {
  showAnotherLaunchScreen();
  const auto hostController = loadTemporaryHostController();
  const Weak<LaunchScreenContent> firstContent = manager->tempContent();
  request(4.0);
  EXPECT_TRUE(firstContent.expired());
  EXPECT_NE(manager->tempContent(), nullptr);
  EXPECT_TRUE(hostController->calls.empty());
}

// The content view

TEST_F(ContentCreationTest, TheContentViewIsTheMainContentForEveryArgument) {
  load(5.0);
  showAnotherLaunchScreen();
  EXPECT_EQ(manager->contentViewForContentData(manager->content()), manager->content());
  EXPECT_EQ(manager->contentViewForContentData(nullptr), manager->content());
  EXPECT_EQ(manager->contentViewForContentData(LaunchScreenContent::init()), manager->content());
}

TEST_F(ContentCreationTest, AskingForTheContentViewReleasesTheTemporaryContent) {
  load(5.0);
  showAnotherLaunchScreen();
  const auto hostController = loadTemporaryHostController();
  const Weak<LaunchScreenContent> temporaryContent = manager->tempContent();
  EXPECT_EQ(manager->contentViewForContentData(manager->tempContent()), manager->content());
  EXPECT_EQ(manager->tempContent(), nullptr);
  EXPECT_TRUE(temporaryContent.expired());
  EXPECT_TRUE(hostController->calls.empty()) << "it is released, not deactivated";
}

TEST_F(ContentCreationTest, AskingForTheContentViewKeepsTheTimeLeft) {
  load(5.0);
  manager->setLaunchScreenExpirationTimeLeft(3.25);
  manager->contentViewForContentData(manager->content());
  EXPECT_EQ(manager->launchScreenExpirationTimeLeft(), 3.25);
}

TEST_F(ContentCreationTest, AskingForTheContentViewAppendsTheManagerToTheControllersDelegates) {
  const auto data = request(5.0);
  ASSERT_EQ(controller()->delegates()->count(), 1u);
  manager->contentViewForContentData(data);
  ASSERT_EQ(controller()->delegates()->count(), 2u);
  EXPECT_EQ(controller()->delegates()->objectAtIndex(0), manager->content());
  EXPECT_EQ(controller()->delegates()->objectAtIndex(1), manager);
}

TEST_F(ContentCreationTest, AskingForTheContentViewTwiceAddsTheManagerToTheDelegatesOnce) {
  load(5.0);  // asks for the content view the first time
  manager->contentViewForContentData(manager->content());
  EXPECT_EQ(controller()->delegates()->count(), 2u);
}

TEST_F(ContentCreationTest, AskingForTheContentViewTwiceCallsAddDelegateTwice) {
  const auto hostController = loadHostController(5.0);  // asks for the content view the first time
  EXPECT_EQ(hostController->delegate, manager);
  manager->contentViewForContentData(nullptr);
  EXPECT_EQ(hostController->calls, (std::vector<std::string>{"addDelegate", "addDelegate"}));
}

TEST_F(ContentCreationTest, WithoutAViewControllerTheContentViewIsTheMainContent) {
  EXPECT_EQ(manager->contentViewForContentData(nullptr), manager->content());
  EXPECT_EQ(manager->content()->viewController(), nullptr);
}

// Deactivation

TEST_F(ContentCreationTest, DeactivateReleasesBothContentsAndRemovesAllDelegates) {
  load(5.0);
  const auto mainController = controller();
  showAnotherLaunchScreen();
  request(3.0);
  const auto temporaryController =
      as<LaunchScreenViewController>(manager->tempContent()->viewController());
  manager->deactivate();
  EXPECT_EQ(manager->content(), nullptr);
  EXPECT_EQ(manager->tempContent(), nullptr);
  EXPECT_EQ(mainController->delegates()->count(), 0u);
  EXPECT_EQ(temporaryController->delegates()->count(), 0u);
}

TEST_F(ContentCreationTest, TheMainContentIsDeactivatedBeforeTheTemporaryContent) {
  const auto mainController = loadHostController(5.0);
  showAnotherLaunchScreen();
  const auto temporaryController = loadTemporaryHostController();
  temporaryController->onNextCall([&] {
    EXPECT_EQ(mainController->calls.back(), "deactivate");
    EXPECT_EQ(manager->content(), nullptr);
    EXPECT_NE(manager->tempContent(), nullptr);
  });
  manager->deactivate();
  EXPECT_EQ(temporaryController->calls, std::vector<std::string>{"deactivate"});
}

TEST_F(ContentCreationTest, DeactivateWithoutContentsDoesNothing) {
  manager->deactivate();
  manager->deactivate();
  EXPECT_EQ(manager->content(), nullptr);
  EXPECT_EQ(manager->contentViewForContentData(nullptr), nullptr);
}

TEST_F(ContentCreationTest, ARequestAfterDeactivationIsParsedAndReturnsNull) {
  manager->deactivate();
  EXPECT_EQ(request(5.0, "skip"), nullptr);
  EXPECT_EQ(configuration().expirationTimeInterval(), 5.0);
  EXPECT_TRUE(configuration().skipMode());
  EXPECT_EQ(manager->launchScreenExpirationTimeLeft(), 5.0);
  EXPECT_TRUE(platform.log.empty());
}

TEST_F(ContentCreationTest, ARequestAfterDeactivationCanGetATemporaryContent) {
  manager->deactivate();
  showAnotherLaunchScreen();
  EXPECT_NE(request(5.0), nullptr);
  EXPECT_NE(manager->tempContent(), nullptr);
}

// Requests on another thread

TEST_F(ContentCreationTest, ARequestOnAnotherThreadReturnsTheContentBeforeItsControllerExists) {
  manager->setDelegate(listener);
  Strong<ContentData> data;
  runOnAnotherThread([&] { data = request(5.0); });
  EXPECT_EQ(data, manager->content());
  EXPECT_EQ(configuration().expirationTimeInterval(), 5.0);
  EXPECT_EQ(manager->launchScreenExpirationTimeLeft(), 5.0);
  EXPECT_EQ(data->state(), 0u);
  EXPECT_EQ(manager->content()->viewController(), nullptr);
  EXPECT_TRUE(listener->changes.empty());

  platform.runDueWork();
  EXPECT_NE(manager->content()->viewController(), nullptr);
  ASSERT_EQ(listener->changes.size(), 1u);
  EXPECT_EQ(listener->changes[0].state, ContentDataStateLoaded);
  EXPECT_TRUE(listener->changes[0].isOnMainThread);
}

TEST_F(ContentCreationTest, ARefusedRequestOnAnotherThreadReturnsNull) {
  Strong<ContentData> data = manager->content();
  runOnAnotherThread([&] { data = request(0.0); });
  EXPECT_EQ(data, nullptr);
  EXPECT_EQ(platform.log.size(), 1u);
  platform.runDueWork();
  EXPECT_EQ(manager->content()->state(), 0u);
}

}  // namespace
}  // namespace vel::test
