// The host presents and dismisses the launch screen through a `LaunchScreenContent` ("the
// content"). The launch screen's controller notifies the content. The content then notifies its
// delegate, which belongs to the host ("the host delegate"). The fixture records events as lines.
// The line "style 15" means that the window gets a title and all controls again.
#include <limits>

#include "Tests/Support/CoverFixture.h"
#include "Tests/Support/LaunchScreenHost.h"

namespace vel::test {
namespace {

class ContentPresentationTest : public CoverTest {
 protected:
  ~ContentPresentationTest() override { content->deactivate(); }

  static std::string logLineWithMode(std::string_view mode) {
    return "LaunchScreenContent (-[LaunchScreenContent presentForWindow:withPresentationMode:]) "
           "mode: " +
           std::string(mode);
  }
  // Gives the content a controller that only records its calls.
  Strong<HostController> setHostController() {
    auto hostController = make<HostController>();
    content->setInternalViewController(hostController);
    return hostController;
  }

  Strong<LaunchScreenContent> content = LaunchScreenContent::init();
};

// The properties of a content

TEST_F(ContentPresentationTest, TheContentIsItsOwnDataAndPresentationAndContentView) {
  EXPECT_EQ(content->data(), content);
  EXPECT_EQ(content->presentation(), content);
  EXPECT_EQ(content->getContentView(), content);
}

TEST_F(ContentPresentationTest, ViewControllerReturnsTheInternalViewController) {
  EXPECT_EQ(content->viewController(), nullptr);
  content->setInternalViewController(controller);
  EXPECT_EQ(content->viewController(), controller);
}

TEST_F(ContentPresentationTest, TheClassNameIsLaunchScreenContent) {
  EXPECT_EQ(content->className(), "LaunchScreenContent");
}

TEST_F(ContentPresentationTest, TheContentImplementsNeitherRewardedNorCompletedView) {
  const Strong<CVPresentation> presentation = content->presentation();
  EXPECT_FALSE(respondsTo<&CVPresentation::rewarded>(presentation));
  EXPECT_FALSE(respondsTo<&CVPresentation::completedView>(presentation));
}

TEST_F(ContentPresentationTest, TheContentImplementsAllOperationsOfAControllerDelegate) {
  using Delegate = LaunchScreenViewControllerDelegate;
  const Strong<Delegate> delegate = content;
  EXPECT_TRUE(respondsTo<&Delegate::launchScreenControllerWillPresent>(delegate));
  EXPECT_TRUE(respondsTo<&Delegate::canLaunchScreenControllerDismiss>(delegate));
  EXPECT_TRUE(respondsTo<&Delegate::launchScreenControllerDidDismiss>(delegate));
}

// Presenting

TEST_F(ContentPresentationTest, HostModes1And2AreSwappedAndUnknownHostModesMeanSheet) {
  constexpr auto kMaximum = std::numeric_limits<std::int32_t>::max();
  constexpr auto kMinimum = std::numeric_limits<std::int32_t>::min();
  // Each host mode with the mode that the controller gets: 0 embedded, 1 modal window, 2 sheet.
  const std::vector<std::pair<std::int32_t, LaunchScreenPresentationMode>> table{
      {0, 0}, {1, 2}, {2, 1}, {3, 2}, {-1, 2}, {-2, 2}, {kMaximum, 2}, {kMinimum, 2}};
  const auto hostController = setHostController();
  const auto window = openPlayerWindow();
  for (const auto& [hostMode, mode] : table) {
    hostController->mode = -1;
    content->presentForWindowWithPresentationMode(window, hostMode);
    EXPECT_EQ(hostController->mode, mode) << "host mode " << hostMode;
    EXPECT_EQ(hostController->window, window);
  }
  EXPECT_EQ(hostController->calls, Lines(table.size(), "present"));
}

TEST_F(ContentPresentationTest, TheLogLineShowsTheHostModeAsAnUnsignedNumber) {
  const auto hostController = setHostController();
  for (const std::int32_t hostMode : {0, 1, 2, 3, -1}) {
    content->presentForWindowWithPresentationMode(nullptr, hostMode);
  }
  EXPECT_EQ(platform.log, (Lines{logLineWithMode("0"), logLineWithMode("1"), logLineWithMode("2"),
                                 logLineWithMode("3"), logLineWithMode("4294967295")}));
}

TEST_F(ContentPresentationTest, TheLogLineComesBeforeThePresentation) {
  content->setInternalViewController(controller);
  bool wasPresented = false;
  addDelegate("first")->onNext(CoverCall::WillPresent, [&] {
    wasPresented = true;
    EXPECT_EQ(platform.log, Lines{logLineWithMode("0")});
  });
  content->presentForWindowWithPresentationMode(openPlayerWindow(), 0);
  EXPECT_TRUE(wasPresented);
}

TEST_F(ContentPresentationTest, PresentWithoutAControllerOnlyLogs) {
  const auto window = openPlayerWindow();
  content->presentForWindowWithPresentationMode(window, 0);
  EXPECT_EQ(platform.log, Lines{logLineWithMode("0")});
  EXPECT_TRUE(window->contentView()->subviews().empty());
}

TEST_F(ContentPresentationTest, TheWindowCanBeNull) {
  const auto hostController = setHostController();
  hostController->window = openPlayerWindow();
  content->presentForWindowWithPresentationMode(nullptr, 2);
  EXPECT_EQ(hostController->window, nullptr);
  EXPECT_EQ(hostController->mode, 1);
}

TEST_F(ContentPresentationTest, TheContentDoesNotOwnTheWindow) {
  const auto hostController = setHostController();
  Strong<NSWindow> window = openPlayerWindow();
  content->presentForWindowWithPresentationMode(window, 0);
  hostController->window = nullptr;
  window->close();
  const Weak<NSWindow> weakWindow = std::exchange(window, nullptr);
  EXPECT_TRUE(weakWindow.expired());
}

// Dismissing

TEST_F(ContentPresentationTest, DismissRemovesTheCoverWithoutAskingTheDelegates) {
  content->setInternalViewController(controller);
  const auto delegate = addDelegate("first");
  delegate->agrees = false;
  content->presentForWindowWithPresentationMode(openPlayerWindowWithContentViewController(), 0);
  takeEvents();
  content->dismissViewController();
  EXPECT_EQ(takeEvents(), (Lines{"viewWillDisappear", "style 15",  //
                                 "viewDidDisappear", "first: did dismiss"}));
}

TEST_F(ContentPresentationTest, DismissCallsTheControllerOnceAndLogsNothing) {
  const auto hostController = setHostController();
  content->dismissViewController();
  EXPECT_EQ(hostController->calls, Lines{"dismiss"});
  EXPECT_TRUE(platform.log.empty());
}

TEST_F(ContentPresentationTest, DismissWithoutAControllerDoesNothing) {
  content->dismissViewController();
  EXPECT_TRUE(platform.log.empty());
}

// The content forwards the controller's calls to the host delegate

class ContentForwardingTest : public ContentPresentationTest {
 protected:
  ContentForwardingTest() { content->setDelegate(hostDelegate); }

  Strong<HostViewDelegate> hostDelegate = make<HostViewDelegate>("host", journal);
};

TEST_F(ContentForwardingTest, WillPresentCallsWillAppear) {
  content->launchScreenControllerWillPresent(controller);
  EXPECT_EQ(takeEvents(), Lines{"host: will appear"});
  EXPECT_EQ(hostDelegate->view.lock(), content);
}

TEST_F(ContentForwardingTest, CanDismissReturnsTheResultOfTheHostDelegate) {
  EXPECT_TRUE(content->canLaunchScreenControllerDismiss(controller));
  hostDelegate->agrees = false;
  EXPECT_FALSE(content->canLaunchScreenControllerDismiss(controller));
  EXPECT_EQ(takeEvents(), (Lines{"host: can disappear", "host: can disappear"}));
  EXPECT_EQ(hostDelegate->view.lock(), content);
}

TEST_F(ContentForwardingTest, DidDismissCallsDidDisappear) {
  content->launchScreenControllerDidDismiss(controller);
  EXPECT_EQ(takeEvents(), Lines{"host: did disappear"});
  EXPECT_EQ(hostDelegate->view.lock(), content);
}

TEST_F(ContentForwardingTest, TheContentSkipsOperationsToWhichTheHostDelegateDoesNotRespond) {
  hostDelegate->agrees = false;
  for (const ContentViewCall call : {ContentViewCall::WillAppear, ContentViewCall::CanDisappear,  //
                                     ContentViewCall::DidDisappear}) {
    hostDelegate->stopRespondingTo(call);
  }
  content->launchScreenControllerWillPresent(controller);
  EXPECT_TRUE(content->canLaunchScreenControllerDismiss(controller));
  content->launchScreenControllerDidDismiss(controller);
  EXPECT_EQ(takeEvents(), Lines{});
}

TEST_F(ContentForwardingTest, TheContentSkipsOnlyTheOperationToWhichTheHostDelegateDoesNotRespond) {
  hostDelegate->stopRespondingTo(ContentViewCall::CanDisappear);
  content->launchScreenControllerWillPresent(controller);
  EXPECT_TRUE(content->canLaunchScreenControllerDismiss(controller));
  content->launchScreenControllerDidDismiss(controller);
  EXPECT_EQ(takeEvents(), (Lines{"host: will appear", "host: did disappear"}));
}

TEST_F(ContentForwardingTest, CanDismissReturnsTrueWithoutAHostDelegate) {
  content->setDelegate(nullptr);
  content->launchScreenControllerWillPresent(controller);
  EXPECT_TRUE(content->canLaunchScreenControllerDismiss(controller));
  content->launchScreenControllerDidDismiss(controller);
  EXPECT_EQ(takeEvents(), Lines{});
}

TEST_F(ContentForwardingTest, TheContentDoesNotOwnTheHostDelegate) {
  const Weak<HostViewDelegate> weakHostDelegate = std::exchange(hostDelegate, nullptr);
  EXPECT_TRUE(weakHostDelegate.expired());
  EXPECT_EQ(content->delegate(), nullptr);
  EXPECT_TRUE(content->canLaunchScreenControllerDismiss(controller));
}

TEST_F(ContentForwardingTest,
       DidDisappearIsNotCalledWhileTheDismissedControllerPresentsAnotherController) {
  controller->presentViewControllerAsModalWindow(make<NamedViewController>("OnTop"));
  takeEvents();
  content->launchScreenControllerDidDismiss(controller);
  EXPECT_EQ(takeEvents(), Lines{});
  controller->dismissViewController(controller->presentedViewControllers().front());
}

TEST_F(ContentForwardingTest,
       DidDisappearIsCalledEvenIfTheInternalViewControllerPresentsAnotherController) {
  const auto otherController = LaunchScreenViewController::init();
  content->setInternalViewController(otherController);
  otherController->presentViewControllerAsModalWindow(make<NamedViewController>("OnTop"));
  takeEvents();
  // The content checks only the dismissed controller, which is the argument.
  content->launchScreenControllerDidDismiss(controller);
  content->launchScreenControllerDidDismiss(nullptr);
  EXPECT_EQ(takeEvents(), (Lines{"host: did disappear", "host: did disappear"}));
}

TEST_F(ContentForwardingTest, APresentationAndADismissalCallTheHostDelegate) {
  content->setContentRequest(makeRequest(NSDictionary::dictionary()));
  const auto window = openPlayerWindowWithContentViewController();
  content->presentForWindowWithPresentationMode(window, kHostModeSheet);
  EXPECT_EQ(takeEvents(), (Lines{"window opened",  // the player's window
                                 "viewWillAppear", "host: will appear",
                                 "window opened",  // the sheet
                                 "viewDidAppear"}));
  const auto contentController = content->viewController();
  hostDelegate->agrees = false;
  contentController->dismissViewController(contentController);
  EXPECT_EQ(takeEvents(), Lines{"host: can disappear"});
  hostDelegate->agrees = true;
  contentController->dismissViewController(contentController);
  EXPECT_EQ(takeEvents(), (Lines{"host: can disappear", "viewWillDisappear", "window closed",
                                 "viewDidDisappear", "host: did disappear"}));
}

}  // namespace
}  // namespace vel::test
