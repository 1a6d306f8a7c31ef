// The controller of a launch screen: how it is created, and how it stores and notifies its
// delegates.
#include <limits>

#include "Tests/Support/CoverFixture.h"

namespace vel::test {
namespace {

using Limits = std::numeric_limits<double>;

class ControllerCreationTest : public CoverTest {
 protected:
  static Strong<LaunchScreenViewController> createWithExpirationInterval(double seconds) {
    configuration().setExpirationTimeInterval(seconds);
    return LaunchScreenViewController::init();
  }
};

TEST_F(ControllerCreationTest, InitReturnsNullAndLogsNothingIfTheExpirationIntervalIsNotPositive) {
  EXPECT_EQ(createWithExpirationInterval(0), nullptr);
  EXPECT_EQ(createWithExpirationInterval(-0.0), nullptr);
  EXPECT_EQ(createWithExpirationInterval(-1), nullptr);
  EXPECT_EQ(createWithExpirationInterval(-Limits::denorm_min()), nullptr);
  EXPECT_EQ(createWithExpirationInterval(-Limits::infinity()), nullptr);
  EXPECT_TRUE(platform.log.empty());
}

TEST_F(ControllerCreationTest, InitCreatesAControllerForAnyPositiveExpirationInterval) {
  EXPECT_NE(createWithExpirationInterval(0.1), nullptr);
  EXPECT_NE(createWithExpirationInterval(Limits::denorm_min()), nullptr);
  EXPECT_NE(createWithExpirationInterval(Limits::infinity()), nullptr);
}

TEST_F(ControllerCreationTest, InitCreatesAControllerIfTheExpirationIntervalIsNaN) {
  EXPECT_NE(createWithExpirationInterval(Limits::quiet_NaN()), nullptr);
}

TEST_F(ControllerCreationTest, InitReadsTheCurrentDefaultConfiguration) {
  // The expiration interval of a new configuration is 0, so no controller is created.
  LaunchScreenConfiguration::setDefaultConfiguration(LaunchScreenConfiguration::init());
  EXPECT_EQ(LaunchScreenViewController::init(), nullptr);
}

TEST_F(ControllerCreationTest, ANewControllerIsInEmbeddedModeAndItsOtherPropertiesAreUnset) {
  const auto newController = createWithExpirationInterval(0.1);
  EXPECT_EQ(newController->presentationMode(), 0);
  EXPECT_EQ(newController->appWindow(), nullptr);
  EXPECT_EQ(newController->appWindowStyleMask(), 0xFFFFFFFFFFFFFFFF);  // no style mask is saved
  EXPECT_EQ(newController->activityIndicator(), nullptr);
  EXPECT_EQ(newController->delegates(), nullptr);
}

TEST_F(ControllerCreationTest, TheNibBundleIsTheBundleOfTheControllersClass) {
  ASSERT_NE(controller->nibBundle(), nullptr);
  EXPECT_EQ(controller->nibBundle()->principalClass(), "LaunchScreenViewController");
}

TEST_F(ControllerCreationTest, TheControllerCreatesAnEmptyViewOnFirstUse) {
  EXPECT_FALSE(controller->isViewLoaded());
  EXPECT_EQ(controller->view()->className(), "NSView");
  EXPECT_TRUE(controller->view()->subviews().empty());
  EXPECT_FALSE(controller->view()->wantsLayer());
  EXPECT_EQ(controller->view()->viewController(), controller);
}

TEST_F(ControllerCreationTest, TheClassNameIsLaunchScreenViewController) {
  EXPECT_EQ(controller->className(), "LaunchScreenViewController");
}

/// A delegate that is equal to every delegate with the same number.
class NumberedDelegate final : public Class<NumberedDelegate, "NumberedDelegate", NSObject,
                                            LaunchScreenViewControllerDelegate> {
 public:
  explicit NumberedDelegate(int number) : number_(number) {}
  [[nodiscard]] bool isEqual(const NSObjectProtocol* other) const override {
    const auto* const otherDelegate = dynamic_cast<const NumberedDelegate*>(other);
    return otherDelegate != nullptr && otherDelegate->number_ == number_;
  }

 private:
  int number_;
};

using ControllerDelegatesTest = CoverTest;

TEST_F(ControllerDelegatesTest, AddingNullCreatesAnEmptyArray) {
  controller->addDelegate(nullptr);
  ASSERT_NE(controller->delegates(), nullptr);
  EXPECT_EQ(controller->delegates()->count(), 0u);
}

TEST_F(ControllerDelegatesTest, DelegatesAreStoredInTheOrderInWhichTheyWereAdded) {
  const auto firstDelegate = addDelegate("first");
  const auto array = controller->delegates();
  const auto secondDelegate = addDelegate("second");
  EXPECT_EQ(controller->delegates(), array);
  ASSERT_EQ(array->count(), 2u);
  EXPECT_EQ(array->objectAtIndex(0), firstDelegate);
  EXPECT_EQ(array->objectAtIndex(1), secondDelegate);
}

TEST_F(ControllerDelegatesTest, ADelegateAddedTwiceIsStoredOnce) {
  const auto delegate = addDelegate("first");
  controller->addDelegate(delegate);
  EXPECT_EQ(controller->delegates()->count(), 1u);
}

TEST_F(ControllerDelegatesTest, AnEqualDelegateIsNotAdded) {
  const auto firstDelegate = make<NumberedDelegate>(1);
  controller->addDelegate(firstDelegate);
  controller->addDelegate(make<NumberedDelegate>(1));
  controller->addDelegate(make<NumberedDelegate>(2));
  EXPECT_EQ(controller->delegates()->count(), 2u);
  EXPECT_EQ(controller->delegates()->objectAtIndex(0), firstDelegate);
}

TEST_F(ControllerDelegatesTest, RemovingADelegateRemovesAnEqualDelegate) {
  controller->addDelegate(make<NumberedDelegate>(1));
  const auto secondDelegate = make<NumberedDelegate>(2);
  controller->addDelegate(secondDelegate);
  controller->removeDelegate(make<NumberedDelegate>(1));
  ASSERT_EQ(controller->delegates()->count(), 1u);
  EXPECT_EQ(controller->delegates()->objectAtIndex(0), secondDelegate);
}

TEST_F(ControllerDelegatesTest, RemovingADelegateKeepsTheOrderOfTheOtherDelegates) {
  const auto firstDelegate = addDelegate("first");
  const auto secondDelegate = addDelegate("second");
  const auto thirdDelegate = addDelegate("third");
  controller->removeDelegate(secondDelegate);
  ASSERT_EQ(controller->delegates()->count(), 2u);
  EXPECT_EQ(controller->delegates()->objectAtIndex(0), firstDelegate);
  EXPECT_EQ(controller->delegates()->objectAtIndex(1), thirdDelegate);
}

TEST_F(ControllerDelegatesTest, RemovingAnUnknownDelegateChangesNothing) {
  const auto delegate = addDelegate("first");
  controller->removeDelegate(make<CoverDelegate>("second", journal));
  controller->removeDelegate(nullptr);
  ASSERT_EQ(controller->delegates()->count(), 1u);
  EXPECT_EQ(controller->delegates()->objectAtIndex(0), delegate);
}

TEST_F(ControllerDelegatesTest, RemoveDelegateAndDeactivateCreateNoArray) {
  controller->removeDelegate(make<CoverDelegate>("first", journal));
  controller->deactivate();
  EXPECT_EQ(controller->delegates(), nullptr);
}

TEST_F(ControllerDelegatesTest, TheControllerOwnsItsDelegatesUntilTheyAreRemoved) {
  const Weak<CoverDelegate> weakDelegate = addDelegate("first");
  EXPECT_FALSE(weakDelegate.expired());
  controller->deactivate();
  EXPECT_TRUE(weakDelegate.expired());
}

TEST_F(ControllerDelegatesTest, DeactivateRemovesAllDelegatesAndKeepsTheArray) {
  addDelegate("first");
  addDelegate("second");
  const auto array = controller->delegates();
  controller->deactivate();
  controller->deactivate();
  EXPECT_EQ(controller->delegates(), array);
  EXPECT_EQ(array->count(), 0u);
}

TEST_F(ControllerDelegatesTest, TheDestructorRemovesAllDelegates) {
  addDelegate("first");
  const auto array = controller->delegates();
  controller = nullptr;
  EXPECT_EQ(array->count(), 0u);
}

TEST_F(ControllerDelegatesTest, DelegatesAreNotifiedInTheOrderInWhichTheyWereAdded) {
  const auto firstDelegate = addDelegate("first");
  const auto secondDelegate = addDelegate("second");
  controller->viewDidDisappear();
  EXPECT_EQ(takeEvents(), (Lines{"viewDidDisappear", "first: did dismiss", "second: did dismiss"}));
  EXPECT_EQ(firstDelegate->lastController.lock(), controller);
  EXPECT_EQ(secondDelegate->lastController.lock(), controller);
}

TEST_F(ControllerDelegatesTest, ADelegateThatDoesNotRespondToAnOperationIsSkipped) {
  addDelegate("first")->stopRespondingTo(CoverCall::DidDismiss);
  addDelegate("second")->stopRespondingTo(CoverCall::WillPresent);
  controller->viewWillAppear();
  controller->viewDidDisappear();
  EXPECT_EQ(takeEvents(), (Lines{"viewWillAppear", "first: will present",  //
                                 "viewDidDisappear", "second: did dismiss"}));
}

TEST_F(ControllerDelegatesTest, AControllerWithoutADelegatesArrayNotifiesNoDelegate) {
  controller->viewWillAppear();
  controller->viewDidDisappear();
  EXPECT_EQ(takeEvents(), (Lines{"viewWillAppear", "viewDidDisappear"}));
}

TEST_F(ControllerDelegatesTest, AfterDeactivateOnlyNewDelegatesAreNotified) {
  const auto delegate = addDelegate("first");
  controller->deactivate();
  controller->viewDidDisappear();
  EXPECT_EQ(takeEvents(), Lines{"viewDidDisappear"});
  controller->addDelegate(delegate);
  controller->viewDidDisappear();
  EXPECT_EQ(takeEvents(), (Lines{"viewDidDisappear", "first: did dismiss"}));
}

TEST_F(ControllerDelegatesTest, AddingADelegateDuringANotificationRaisesTheMutationError) {
  addDelegate("first")->onNext(CoverCall::DidDismiss, [this] { addDelegate("late"); });
  addDelegate("second");
  EXPECT_THROW(controller->viewDidDisappear(), NSCollectionMutatedError);
  EXPECT_EQ(takeEvents(), (Lines{"viewDidDisappear", "first: did dismiss"}));
}

TEST_F(ControllerDelegatesTest, RemovingADelegateDuringANotificationRaisesTheMutationError) {
  const auto firstDelegate = addDelegate("first");
  addDelegate("second");
  firstDelegate->onNext(CoverCall::WillPresent, [&] { controller->removeDelegate(firstDelegate); });
  EXPECT_THROW(controller->viewWillAppear(), NSCollectionMutatedError);
  EXPECT_EQ(takeEvents(), (Lines{"viewWillAppear", "first: will present"}));
}

TEST_F(ControllerDelegatesTest,
       RemovingTheOnlyDelegateDuringItsNotificationRaisesTheMutationError) {
  const auto onlyDelegate = addDelegate("only");
  onlyDelegate->onNext(CoverCall::DidDismiss, [&] { controller->removeDelegate(onlyDelegate); });
  EXPECT_THROW(controller->viewDidDisappear(), NSCollectionMutatedError);
}

TEST_F(ControllerDelegatesTest, DeactivateDuringANotificationRaisesTheMutationError) {
  addDelegate("first")->onNext(CoverCall::DidDismiss, [this] { controller->deactivate(); });
  EXPECT_THROW(controller->viewDidDisappear(), NSCollectionMutatedError);
}

TEST_F(ControllerDelegatesTest, CallsThatDoNotChangeTheArrayAreAllowedDuringANotification) {
  const auto firstDelegate = addDelegate("first");
  addDelegate("second");
  firstDelegate->onNext(CoverCall::DidDismiss, [&] {
    controller->addDelegate(firstDelegate);
    controller->removeDelegate(make<CoverDelegate>("stranger", journal));
  });
  controller->viewDidDisappear();
  EXPECT_EQ(takeEvents(), (Lines{"viewDidDisappear", "first: did dismiss", "second: did dismiss"}));
}

// Operations that a delegate does not implement

/// A delegate that implements no operation.
class SilentDelegate final
    : public Class<SilentDelegate, "SilentDelegate", NSObject, LaunchScreenViewControllerDelegate,
                   LaunchScreenContentDelegate> {};

TEST_F(ControllerDelegatesTest, AnOperationThatIsNotImplementedDoesNothingAndReturnsFalse) {
  const auto silentDelegate = make<SilentDelegate>();
  controller->addDelegate(silentDelegate);
  silentDelegate->launchScreenControllerWillPresent(controller);
  silentDelegate->launchScreenControllerDidDismiss(controller);
  silentDelegate->contentDataDidChangeState(nullptr);
  EXPECT_FALSE(silentDelegate->canLaunchScreenControllerDismiss(controller));
  EXPECT_EQ(controller->delegates()->count(), 1u);
  EXPECT_TRUE(takeEvents().empty());
}

}  // namespace
}  // namespace vel::test
