// A `LaunchScreenContent` ("the content") stores a request and creates the launch screen's
// controller. The content reports its own state to its content delegate.
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/NSThread.h"
#include "Tests/Support/CoverFixture.h"
#include "Tests/Support/LaunchScreenHost.h"

namespace vel::test {
namespace {

/// A content delegate that records each reported state with the error and the thread.
class ContentListener final
    : public Class<ContentListener, "ContentListener", NSObject, LaunchScreenContentDelegate> {
 public:
  struct Change {
    ContentDataState state = 0;
    std::string error;  // empty if there is no error
    bool isOnMainThread = false;
    bool operator==(const Change&) const = default;
  };

  void contentDataDidChangeState(const Strong<ContentData>& data) override {
    const Strong<NSError> error = data->error();
    changes.push_back(
        {data->state(), std::string(send(error, &NSError::domain)), NSThread::isMainThread()});
    lastData = data;
    if (keepsError) {
      ownedError = error;
    }
    if (onNextChange) {
      std::exchange(onNextChange, nullptr)();
    }
  }

  std::vector<Change> changes;
  Weak<ContentData> lastData;
  bool keepsError = false;
  Strong<NSError> ownedError;
  std::function<void()> onNextChange;
};

/// A content delegate that responds to no operation. `callCount` counts the calls that it receives
/// nevertheless.
class SilentListener final
    : public Class<SilentListener, "SilentListener", NSObject, LaunchScreenContentDelegate> {
 public:
  void contentDataDidChangeState(const Strong<ContentData>& /*data*/) override { ++callCount; }
  [[nodiscard]] OperationSet respondingOperations() const override { return {}; }
  int callCount = 0;
};

using Changes = std::vector<ContentListener::Change>;

constexpr auto kNoParameters = "ContentRequest parameters is NIL";
constexpr auto kNoController = "LaunchScreen view controller is NIL";

class ContentStateTest : public CoverTest {
 protected:
  ContentStateTest() { content->setContentDelegate(listener); }
  ~ContentStateTest() override { content->deactivate(); }

  static Strong<ContentRequest> request() { return makeRequest(NSDictionary::dictionary()); }
  static Strong<ContentRequest> requestWithoutParameters() {
    return makeRequest(Strong<NSDictionary>());
  }

  Strong<ContentListener> listener = make<ContentListener>();
  Strong<LaunchScreenContent> content = LaunchScreenContent::init();
};

TEST_F(ContentStateTest, ANewContentHasStateZeroAndNullReferences) {
  const auto newContent = LaunchScreenContent::init();
  EXPECT_EQ(newContent->state(), 0u);
  EXPECT_EQ(newContent->request(), nullptr);
  EXPECT_EQ(newContent->error(), nullptr);
  EXPECT_EQ(newContent->internalViewController(), nullptr);
  EXPECT_EQ(newContent->delegate(), nullptr);
  EXPECT_EQ(newContent->contentDelegate(), nullptr);
}

TEST_F(ContentStateTest, LoadedIsState3AndFailedIsState4) {
  EXPECT_EQ(ContentDataStateLoaded, 3u);
  EXPECT_EQ(ContentDataStateFailed, 4u);
}

// `setContentRequest` on the main thread

TEST_F(ContentStateTest, ARequestCreatesAControllerWithTheContentAsDelegate) {
  content->setContentRequest(request());
  const auto contentController = as<LaunchScreenViewController>(content->internalViewController());
  ASSERT_NE(contentController, nullptr);
  ASSERT_EQ(contentController->delegates()->count(), 1u);
  EXPECT_EQ(contentController->delegates()->objectAtIndex(0), content);
  EXPECT_EQ(content->state(), ContentDataStateLoaded);
  EXPECT_EQ(content->error(), nullptr);
  EXPECT_EQ(listener->changes, (Changes{{3, "", true}}));
  EXPECT_EQ(listener->lastData.lock(), content);
}

TEST_F(ContentStateTest, TheContentOwnsAndReturnsItsRequest) {
  Strong<ContentRequest> sentRequest = request();
  content->setContentRequest(sentRequest);
  EXPECT_EQ(content->request(), sentRequest);
  EXPECT_EQ(content->contentRequest(), sentRequest);
  const Weak<ContentRequest> weakRequest = std::exchange(sentRequest, nullptr);
  EXPECT_FALSE(weakRequest.expired());
}

TEST_F(ContentStateTest, ARequestWithoutParametersFailsWithAnErrorAndCreatesNoController) {
  content->setContentRequest(requestWithoutParameters());
  EXPECT_EQ(content->state(), ContentDataStateFailed);
  EXPECT_EQ(content->internalViewController(), nullptr);
  ASSERT_NE(content->error(), nullptr);
  EXPECT_EQ(content->error()->domain(), kNoParameters);
  EXPECT_EQ(content->error()->code(), 404);
  EXPECT_EQ(content->error()->userInfo(), nullptr);
  EXPECT_EQ(listener->changes, (Changes{{4, kNoParameters, true}}));
}

TEST_F(ContentStateTest, ANullRequestFailsLikeARequestWithoutParameters) {
  content->setContentRequest(nullptr);
  EXPECT_EQ(content->request(), nullptr);
  EXPECT_EQ(listener->changes, (Changes{{4, kNoParameters, true}}));
}

TEST_F(ContentStateTest, TheContentFailsWithAnErrorIfNoControllerIsCreated) {
  // An interval of 0 prevents the creation of a controller.
  configuration().setExpirationTimeInterval(0);
  content->setContentRequest(request());
  EXPECT_EQ(content->state(), ContentDataStateFailed);
  EXPECT_EQ(content->internalViewController(), nullptr);
  ASSERT_NE(content->error(), nullptr);
  EXPECT_EQ(content->error()->domain(), kNoController);
  EXPECT_EQ(content->error()->code(), 404);
  EXPECT_EQ(content->error()->userInfo(), nullptr);
  EXPECT_EQ(listener->changes, (Changes{{4, kNoController, true}}));
}

TEST_F(ContentStateTest, FailuresAreNotLogged) {
  content->setContentRequest(requestWithoutParameters());
  configuration().setExpirationTimeInterval(0);
  content->setContentRequest(request());
  EXPECT_TRUE(platform.log.empty());
}

TEST_F(ContentStateTest, EachRequestGetsANewController) {
  content->setContentRequest(request());
  const auto firstController = content->internalViewController();
  content->setContentRequest(request());
  EXPECT_NE(content->internalViewController(), nullptr);
  EXPECT_NE(content->internalViewController(), firstController);
  EXPECT_EQ(listener->changes, (Changes{{3, "", true}, {3, "", true}}));
}

TEST_F(ContentStateTest, RequestsCanChangeTheStateFromLoadedToFailedAndBack) {
  content->setContentRequest(request());
  content->setContentRequest(requestWithoutParameters());
  EXPECT_EQ(content->internalViewController(), nullptr);
  content->setContentRequest(request());
  EXPECT_EQ(content->error(), nullptr);
  EXPECT_EQ(listener->changes, (Changes{{3, "", true}, {4, kNoParameters, true}, {3, "", true}}));
}

// A controller that the host supplies through the configuration

TEST_F(ContentStateTest, ARequestUsesAHostsControllerAndDoesNotChangeTheState) {
  const auto hostController = make<HostController>();
  configuration().setViewController(hostController);
  content->setContentRequest(request());
  EXPECT_EQ(content->internalViewController(), hostController);
  EXPECT_EQ(content->viewController(), hostController);
  EXPECT_EQ(hostController->calls, Lines{});
  EXPECT_EQ(content->state(), 0u);
  EXPECT_TRUE(listener->changes.empty());
}

TEST_F(ContentStateTest, ARequestThatUsesAHostsControllerClearsTheErrorButDoesNotChangeTheState) {
  content->setContentRequest(requestWithoutParameters());
  configuration().setViewController(make<HostController>());
  content->setContentRequest(request());
  EXPECT_EQ(content->state(), ContentDataStateFailed);
  EXPECT_EQ(content->error(), nullptr);
  EXPECT_EQ(listener->changes.size(), 1u);
}

TEST_F(ContentStateTest, ARequestWithoutParametersIgnoresAHostsController) {
  configuration().setViewController(make<HostController>());
  content->setContentRequest(requestWithoutParameters());
  EXPECT_EQ(content->internalViewController(), nullptr);
  EXPECT_EQ(content->state(), ContentDataStateFailed);
}

TEST_F(ContentStateTest, AHostsControllerIsUsedAtOnceOnAnyThread) {
  const auto hostController = make<HostController>();
  configuration().setViewController(hostController);
  runOnAnotherThread([this] { content->setContentRequest(request()); });
  EXPECT_EQ(content->internalViewController(), hostController);
  platform.runDueWork();
  EXPECT_EQ(content->internalViewController(), hostController);
  EXPECT_TRUE(listener->changes.empty());
}

// `setContentRequest` on another thread

TEST_F(ContentStateTest, SetContentRequestOnAnotherThreadReturnsBeforeTheControllerIsCreated) {
  runOnAnotherThread([this] { content->setContentRequest(request()); });
  EXPECT_EQ(content->state(), 0u);
  EXPECT_EQ(content->internalViewController(), nullptr);
  EXPECT_TRUE(listener->changes.empty());
  platform.runDueWork();
  EXPECT_NE(content->internalViewController(), nullptr);
  EXPECT_EQ(listener->changes, (Changes{{3, "", true}}));
}

TEST_F(ContentStateTest, ARequestWithoutParametersOnAnotherThreadFailsOnThatThread) {
  listener->keepsError = true;
  runOnAnotherThread([this] { content->setContentRequest(requestWithoutParameters()); });
  EXPECT_EQ(listener->changes, (Changes{{4, kNoParameters, false}}));
  EXPECT_EQ(content->error(), listener->ownedError);
  EXPECT_EQ(dispatch_get_main_queue().pendingWorkCount(), 0u);
}

TEST_F(ContentStateTest, TheContentLivesUntilTheQueuedRequestIsProcessed) {
  runOnAnotherThread([this] { content->setContentRequest(request()); });
  const Weak<LaunchScreenContent> weakContent = std::exchange(content, LaunchScreenContent::init());
  EXPECT_FALSE(weakContent.expired());
  // Prevents the creation of a controller, which would own the content.
  configuration().setExpirationTimeInterval(0);
  platform.runDueWork();
  EXPECT_TRUE(weakContent.expired());
  EXPECT_EQ(listener->changes, (Changes{{4, kNoController, true}}));
}

TEST_F(ContentStateTest, TheExpirationTimeIntervalIsReadWhenTheControllerIsCreated) {
  configuration().setExpirationTimeInterval(0);
  runOnAnotherThread([this] { content->setContentRequest(request()); });
  configuration().setExpirationTimeInterval(1);
  platform.runDueWork();
  EXPECT_EQ(content->state(), ContentDataStateLoaded);
}

TEST_F(ContentStateTest, TheContentKeepsItsControllerIfASecondQueuedRequestCreatesNone) {
  runOnAnotherThread([this] {
    content->setContentRequest(request());
    content->setContentRequest(request());
  });
  Strong<LaunchScreenViewControllerProtocol> firstController;
  listener->onNextChange = [&] {
    firstController = content->internalViewController();
    configuration().setExpirationTimeInterval(0);  // the second request creates no controller
  };
  platform.runDueWork();
  EXPECT_NE(firstController, nullptr);
  EXPECT_EQ(content->internalViewController(), firstController);
  EXPECT_EQ(as<LaunchScreenViewController>(firstController)->delegates()->count(), 1u);
  EXPECT_EQ(content->error(), nullptr);
  EXPECT_EQ(listener->changes, (Changes{{3, "", true}, {3, "", true}}));
}

// `setState`

TEST_F(ContentStateTest, SettingTheSameStateTwiceNotifiesTwice) {
  content->setState(7);
  content->setState(7);
  EXPECT_EQ(content->state(), 7u);
  EXPECT_EQ(listener->changes, (Changes{{7, "", true}, {7, "", true}}));
}

TEST_F(ContentStateTest, AContentDelegateThatRespondsToNoOperationIsNotNotified) {
  const auto silentListener = make<SilentListener>();
  content->setContentDelegate(silentListener);
  content->setState(7);
  EXPECT_EQ(content->state(), 7u);
  EXPECT_EQ(silentListener->callCount, 0);
}

TEST_F(ContentStateTest, TheContentDoesNotOwnItsContentDelegate) {
  const Weak<ContentListener> weakListener = std::exchange(listener, nullptr);
  EXPECT_TRUE(weakListener.expired());
  EXPECT_EQ(content->contentDelegate(), nullptr);
  content->setState(7);
  EXPECT_EQ(content->state(), 7u);
}

// The lifetime of the error

TEST_F(ContentStateTest, AnErrorWithoutAnOwnerIsDestroyedAtTheEndOfTheRunLoopPass) {
  content->setContentRequest(requestWithoutParameters());
  EXPECT_NE(content->error(), nullptr);
  platform.run(0.1);
  EXPECT_EQ(content->error(), nullptr);
  EXPECT_EQ(content->state(), ContentDataStateFailed);
}

TEST_F(ContentStateTest, AnErrorIsStillReadableByLaterWorkOfTheSameRunLoopPass) {
  configuration().setExpirationTimeInterval(0);
  runOnAnotherThread([this] { content->setContentRequest(request()); });
  std::string errorDomain;
  dispatch_async(dispatch_get_main_queue(),
                 [&] { errorDomain = send(content->error(), &NSError::domain); });
  platform.runDueWork();
  EXPECT_EQ(errorDomain, kNoController);
  EXPECT_EQ(content->error(), nullptr);
}

TEST_F(ContentStateTest, AnErrorThatADelegateOwnsIsNotDestroyed) {
  listener->keepsError = true;
  content->setContentRequest(requestWithoutParameters());
  platform.run(0.1);
  ASSERT_NE(content->error(), nullptr);
  EXPECT_EQ(content->error(), listener->ownedError);
}

TEST_F(ContentStateTest, TheContentDoesNotOwnTheErrorPassedToSetInternalError) {
  auto error = NSError::errorWithDomainCodeUserInfo("mine", 1, nullptr);
  content->setInternalError(error);
  EXPECT_EQ(content->error(), error);
  EXPECT_EQ(error.use_count(), 1);
  error = nullptr;
  EXPECT_EQ(content->error(), nullptr);
}

// Deactivation

TEST_F(ContentStateTest, DeactivateResetsOnlyTheControllerAndTheError) {
  const auto sentRequest = request();
  const auto hostDelegate = make<HostViewDelegate>("host", journal);
  const auto error = NSError::errorWithDomainCodeUserInfo("mine", 1, nullptr);
  content->setContentRequest(sentRequest);
  content->setDelegate(hostDelegate);
  content->setInternalError(error);
  listener->changes.clear();
  content->deactivate();
  EXPECT_EQ(content->viewController(), nullptr);
  EXPECT_EQ(content->internalViewController(), nullptr);
  EXPECT_EQ(content->error(), nullptr);
  EXPECT_EQ(content->state(), ContentDataStateLoaded);
  EXPECT_EQ(content->request(), sentRequest);
  EXPECT_EQ(content->delegate(), hostDelegate);
  EXPECT_EQ(content->contentDelegate(), listener);
  EXPECT_TRUE(listener->changes.empty());
}

TEST_F(ContentStateTest, DeactivateRemovesTheDelegatesOfTheController) {
  content->setContentRequest(request());
  const auto contentController = as<LaunchScreenViewController>(content->internalViewController());
  contentController->addDelegate(make<CoverDelegate>("other", journal));
  content->deactivate();
  EXPECT_EQ(contentController->delegates()->count(), 0u);
}

TEST_F(ContentStateTest, DeactivateAlsoDeactivatesAHostsController) {
  const auto hostController = make<HostController>();
  configuration().setViewController(hostController);
  content->setContentRequest(request());
  content->deactivate();
  EXPECT_EQ(hostController->calls, Lines{"deactivate"});
}

TEST_F(ContentStateTest, DeactivateWithoutAControllerDoesNothing) {
  content->deactivate();
  content->deactivate();
  EXPECT_EQ(content->state(), 0u);
  EXPECT_TRUE(listener->changes.empty());
}

}  // namespace
}  // namespace vel::test
