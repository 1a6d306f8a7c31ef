// The creation of the cover's controller, and its delegates.
#include <limits>

#include "Tests/Support/CoverFixture.h"

namespace vel::test {
namespace {

using Limits = std::numeric_limits<double>;

class ControllerCreationTest : public CoverTest {
 protected:
  static Strong<LaunchScreenViewController> madeWithInterval(double seconds) {
    configuration().setExpirationTimeInterval(seconds);
    return LaunchScreenViewController::init();
  }
};

TEST_F(ControllerCreationTest, IsNotCreatedAndLogsNothingIfTheIntervalIsNotPositive) {
  EXPECT_EQ(madeWithInterval(0), nullptr);
  EXPECT_EQ(madeWithInterval(-0.0), nullptr);
  EXPECT_EQ(madeWithInterval(-1), nullptr);
  EXPECT_EQ(madeWithInterval(-Limits::denorm_min()), nullptr);
  EXPECT_EQ(madeWithInterval(-Limits::infinity()), nullptr);
  EXPECT_TRUE(platform.log.empty());
}

TEST_F(ControllerCreationTest, IsCreatedForAnyPositiveInterval) {
  EXPECT_NE(madeWithInterval(0.1), nullptr);
  EXPECT_NE(madeWithInterval(Limits::denorm_min()), nullptr);
  EXPECT_NE(madeWithInterval(Limits::infinity()), nullptr);
}

TEST_F(ControllerCreationTest, IsCreatedForAnIntervalOfNaN) {
  EXPECT_NE(madeWithInterval(Limits::quiet_NaN()), nullptr);
}

TEST_F(ControllerCreationTest, ReadsTheCurrentDefaultConfiguration) {
  LaunchScreenConfiguration::setDefaultConfiguration(LaunchScreenConfiguration::init());
  EXPECT_EQ(LaunchScreenViewController::init(), nullptr);
}

TEST_F(ControllerCreationTest, StartsEmbeddedWithoutWindowSavedStyleIndicatorOrDelegatesArray) {
  const auto controller = madeWithInterval(0.1);
  EXPECT_EQ(controller->presentationMode(), 0);
  EXPECT_EQ(controller->appWindow(), nullptr);
  EXPECT_EQ(controller->appWindowStyleMask(), 0xFFFFFFFFFFFFFFFF);
  EXPECT_EQ(controller->activityIndicator(), nullptr);
  EXPECT_EQ(controller->delegates(), nullptr);
}

TEST_F(ControllerCreationTest, BelongsToTheBundleOfItsClass) {
  ASSERT_NE(cover->nibBundle(), nullptr);
  EXPECT_EQ(cover->nibBundle()->principalClass(), "LaunchScreenViewController");
}

TEST_F(ControllerCreationTest, CreatesAnEmptyViewOnFirstUse) {
  EXPECT_FALSE(cover->isViewLoaded());
  EXPECT_EQ(cover->view()->className(), "NSView");
  EXPECT_TRUE(cover->view()->subviews().empty());
  EXPECT_FALSE(cover->view()->wantsLayer());
  EXPECT_EQ(cover->view()->viewController(), cover);
}

TEST_F(ControllerCreationTest, HasTheClassNameLaunchScreenViewController) {
  EXPECT_EQ(cover->className(), "LaunchScreenViewController");
}

/// A delegate that equals every other delegate with the same name.
class DelegateByName final
    : public Class<DelegateByName, "DelegateByName", NSObject, LaunchScreenViewControllerDelegate> {
 public:
  explicit DelegateByName(int name) : name_(name) {}
  [[nodiscard]] bool isEqual(const NSObjectProtocol* other) const override {
    const auto* const same = dynamic_cast<const DelegateByName*>(other);
    return same != nullptr && same->name_ == name_;
  }

 private:
  int name_;
};

using ControllerDelegatesTest = CoverTest;

TEST_F(ControllerDelegatesTest, AddingNullCreatesAnEmptyArray) {
  cover->addDelegate(nullptr);
  ASSERT_NE(cover->delegates(), nullptr);
  EXPECT_EQ(cover->delegates()->count(), 0u);
}

TEST_F(ControllerDelegatesTest, AreHeldInTheOrderInWhichTheyWereAdded) {
  const auto first = addDelegate("first");
  const auto array = cover->delegates();
  const auto second = addDelegate("second");
  EXPECT_EQ(cover->delegates(), array);
  ASSERT_EQ(array->count(), 2u);
  EXPECT_EQ(array->objectAtIndex(0), first);
  EXPECT_EQ(array->objectAtIndex(1), second);
}

TEST_F(ControllerDelegatesTest, ADelegateAddedTwiceIsStoredOnce) {
  const auto delegate = addDelegate("first");
  cover->addDelegate(delegate);
  EXPECT_EQ(cover->delegates()->count(), 1u);
}

TEST_F(ControllerDelegatesTest, AnEqualDelegateIsNotAdded) {
  const auto first = make<DelegateByName>(1);
  cover->addDelegate(first);
  cover->addDelegate(make<DelegateByName>(1));
  cover->addDelegate(make<DelegateByName>(2));
  EXPECT_EQ(cover->delegates()->count(), 2u);
  EXPECT_EQ(cover->delegates()->objectAtIndex(0), first);
}

TEST_F(ControllerDelegatesTest, RemovingAnEqualDelegateRemovesTheFirst) {
  cover->addDelegate(make<DelegateByName>(1));
  const auto second = make<DelegateByName>(2);
  cover->addDelegate(second);
  cover->removeDelegate(make<DelegateByName>(1));
  ASSERT_EQ(cover->delegates()->count(), 1u);
  EXPECT_EQ(cover->delegates()->objectAtIndex(0), second);
}

TEST_F(ControllerDelegatesTest, RemovingOneKeepsTheOrderOfTheOthers) {
  const auto first = addDelegate("first");
  const auto second = addDelegate("second");
  const auto third = addDelegate("third");
  cover->removeDelegate(second);
  ASSERT_EQ(cover->delegates()->count(), 2u);
  EXPECT_EQ(cover->delegates()->objectAtIndex(0), first);
  EXPECT_EQ(cover->delegates()->objectAtIndex(1), third);
}

TEST_F(ControllerDelegatesTest, RemovingAnUnknownDelegateChangesNothing) {
  const auto delegate = addDelegate("first");
  cover->removeDelegate(make<CoverDelegate>("second", journal));
  cover->removeDelegate(nullptr);
  ASSERT_EQ(cover->delegates()->count(), 1u);
  EXPECT_EQ(cover->delegates()->objectAtIndex(0), delegate);
}

TEST_F(ControllerDelegatesTest, RemoveAndDeactivateCreateNoArray) {
  cover->removeDelegate(make<CoverDelegate>("first", journal));
  cover->deactivate();
  EXPECT_EQ(cover->delegates(), nullptr);
}

TEST_F(ControllerDelegatesTest, AreOwnedUntilTheyAreRemoved) {
  const Weak<CoverDelegate> delegate = addDelegate("first");
  EXPECT_FALSE(delegate.expired());
  cover->deactivate();
  EXPECT_TRUE(delegate.expired());
}

TEST_F(ControllerDelegatesTest, DeactivateRemovesAllAndKeepsTheArray) {
  addDelegate("first");
  addDelegate("second");
  const auto array = cover->delegates();
  cover->deactivate();
  cover->deactivate();
  EXPECT_EQ(cover->delegates(), array);
  EXPECT_EQ(array->count(), 0u);
}

TEST_F(ControllerDelegatesTest, DestructionDeactivates) {
  addDelegate("first");
  const auto array = cover->delegates();
  cover = nullptr;
  EXPECT_EQ(array->count(), 0u);
}

TEST_F(ControllerDelegatesTest, AreNotifiedInTheOrderInWhichTheyWereAdded) {
  const auto first = addDelegate("first");
  const auto second = addDelegate("second");
  cover->viewDidDisappear();
  EXPECT_EQ(takeEvents(), (Lines{"viewDidDisappear", "first: did dismiss", "second: did dismiss"}));
  EXPECT_EQ(first->lastController.lock(), cover);
  EXPECT_EQ(second->lastController.lock(), cover);
}

TEST_F(ControllerDelegatesTest, ADelegateThatLacksTheOperationIsSkipped) {
  addDelegate("first")->stopRespondingTo(CoverCall::DidDismiss);
  addDelegate("second")->stopRespondingTo(CoverCall::WillPresent);
  cover->viewWillAppear();
  cover->viewDidDisappear();
  EXPECT_EQ(takeEvents(), (Lines{"viewWillAppear", "first: will present",  //
                                 "viewDidDisappear", "second: did dismiss"}));
}

TEST_F(ControllerDelegatesTest, WithoutAnArrayNoDelegateIsNotified) {
  cover->viewWillAppear();
  cover->viewDidDisappear();
  EXPECT_EQ(takeEvents(), (Lines{"viewWillAppear", "viewDidDisappear"}));
}

TEST_F(ControllerDelegatesTest, AfterDeactivateOnlyNewDelegatesAreNotified) {
  const auto delegate = addDelegate("first");
  cover->deactivate();
  cover->viewDidDisappear();
  EXPECT_EQ(takeEvents(), Lines{"viewDidDisappear"});
  cover->addDelegate(delegate);
  cover->viewDidDisappear();
  EXPECT_EQ(takeEvents(), (Lines{"viewDidDisappear", "first: did dismiss"}));
}

TEST_F(ControllerDelegatesTest, AddingOneDuringANotificationRaisesTheMutationError) {
  addDelegate("first")->onNext(CoverCall::DidDismiss, [this] { addDelegate("late"); });
  addDelegate("second");
  EXPECT_THROW(cover->viewDidDisappear(), NSCollectionMutatedError);
  EXPECT_EQ(takeEvents(), (Lines{"viewDidDisappear", "first: did dismiss"}));
}

TEST_F(ControllerDelegatesTest, RemovingOneDuringANotificationRaisesTheMutationError) {
  const auto first = addDelegate("first");
  addDelegate("second");
  first->onNext(CoverCall::WillPresent, [&] { cover->removeDelegate(first); });
  EXPECT_THROW(cover->viewWillAppear(), NSCollectionMutatedError);
  EXPECT_EQ(takeEvents(), (Lines{"viewWillAppear", "first: will present"}));
}

TEST_F(ControllerDelegatesTest, AChangeDuringTheLastNotificationAlsoRaisesTheMutationError) {
  const auto only = addDelegate("only");
  only->onNext(CoverCall::DidDismiss, [&] { cover->removeDelegate(only); });
  EXPECT_THROW(cover->viewDidDisappear(), NSCollectionMutatedError);
}

TEST_F(ControllerDelegatesTest, DeactivateDuringANotificationRaisesTheMutationError) {
  addDelegate("first")->onNext(CoverCall::DidDismiss, [this] { cover->deactivate(); });
  EXPECT_THROW(cover->viewDidDisappear(), NSCollectionMutatedError);
}

TEST_F(ControllerDelegatesTest, CallsThatDoNotChangeTheListAreAllowedDuringANotification) {
  const auto first = addDelegate("first");
  addDelegate("second");
  first->onNext(CoverCall::DidDismiss, [&] {
    cover->addDelegate(first);
    cover->removeDelegate(make<CoverDelegate>("stranger", journal));
  });
  cover->viewDidDisappear();
  EXPECT_EQ(takeEvents(), (Lines{"viewDidDisappear", "first: did dismiss", "second: did dismiss"}));
}

// Operations that a delegate does not implement

/// A delegate that implements no operation.
class SilentDelegate final
    : public Class<SilentDelegate, "SilentDelegate", NSObject, LaunchScreenViewControllerDelegate,
                   LaunchScreenContentDelegate> {};

TEST_F(ControllerDelegatesTest, AnOperationThatIsNotImplementedDoesNothingAndReturnsFalse) {
  const auto silent = make<SilentDelegate>();
  cover->addDelegate(silent);
  silent->launchScreenControllerWillPresent(cover);
  silent->launchScreenControllerDidDismiss(cover);
  silent->contentDataDidChangeState(nullptr);
  EXPECT_FALSE(silent->canLaunchScreenControllerDismiss(cover));
  EXPECT_EQ(cover->delegates()->count(), 1u);
  EXPECT_TRUE(takeEvents().empty());
}

}  // namespace
}  // namespace vel::test
