#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/Foundation/NSNotificationCenter.h"

namespace vel::test {
namespace {

constexpr NSNotificationName kDoorOpened = "DoorOpened";
constexpr NSNotificationName kDoorClosed = "DoorClosed";

NSNotificationCenter& center() { return NSNotificationCenter::defaultCenter(); }

class Door final : public Class<Door, "Door"> {};

/// Appends its name to `receivers` for each notification. `doorMoved` also calls `reaction`.
class Observer final : public Class<Observer, "Observer"> {
 public:
  Observer(std::vector<std::string>& receivers, std::string name)
      : receivers_(receivers), name_(std::move(name)) {}
  ~Observer() override { center().removeObserver(this); }

  void doorMoved(const NSNotification& notification) {
    receivers_.push_back(name_);
    lastNotificationName = std::string(notification.name());
    lastNotificationObject = notification.object();
    if (const auto currentReaction = reaction) {  // the call may replace `reaction`
      currentReaction();
    }
  }
  void secondSelector(const NSNotification& /*notification*/) {
    receivers_.push_back(name_ + " again");
  }

  std::function<void()> reaction;
  std::string lastNotificationName;
  Strong<NSObject> lastNotificationObject;

 private:
  std::vector<std::string>& receivers_;
  std::string name_;
};

class NSNotificationCenterTest : public testing::Test {
 protected:
  using Names = std::vector<std::string>;

  Strong<Observer> makeObserver(const std::string& name) { return make<Observer>(receivers, name); }
  static void observe(const Strong<Observer>& observer, NSNotificationName name = kDoorOpened,
                      const Strong<NSObject>& object = nullptr) {
    center().addObserverSelectorNameObject<&Observer::doorMoved>(observer, name, object);
  }
  static void post(NSNotificationName name = kDoorOpened,
                   const Strong<NSObject>& object = nullptr) {
    center().postNotificationNameObject(name, object);
  }

  Names receivers;
  Strong<Observer> ann = makeObserver("Ann");
  Strong<Observer> bob = makeObserver("Bob");
  Strong<Observer> cid = makeObserver("Cid");
};

TEST_F(NSNotificationCenterTest, APostWithoutObserversDoesNothing) {
  post();
  EXPECT_TRUE(receivers.empty());
}

TEST_F(NSNotificationCenterTest, DeliversBeforeThePostReturns) {
  observe(ann);
  EXPECT_TRUE(receivers.empty());
  post();
  EXPECT_EQ(receivers, Names{"Ann"});
}

TEST_F(NSNotificationCenterTest, DeliversNameAndObject) {
  const auto door = make<Door>();
  observe(ann);
  post(kDoorOpened, door);
  EXPECT_EQ(ann->lastNotificationName, kDoorOpened);
  EXPECT_EQ(ann->lastNotificationObject, door);
}

TEST_F(NSNotificationCenterTest, DeliversOnThePostingThread) {
  std::thread::id deliveryThread;
  ann->reaction = [&deliveryThread] { deliveryThread = std::this_thread::get_id(); };
  observe(ann);
  std::thread poster([] { post(); });
  const std::thread::id postingThread = poster.get_id();
  poster.join();
  EXPECT_EQ(deliveryThread, postingThread);
}

TEST_F(NSNotificationCenterTest, DeliversInTheOrderOfRegistration) {
  observe(bob);
  observe(ann);
  observe(cid);
  post();
  EXPECT_EQ(receivers, (Names{"Bob", "Ann", "Cid"}));
}

TEST_F(NSNotificationCenterTest, AnObserverThatIsRegisteredTwiceReceivesANotificationTwice) {
  observe(ann);
  observe(bob);
  observe(ann);
  post();
  EXPECT_EQ(receivers, (Names{"Ann", "Bob", "Ann"}));
}

TEST_F(NSNotificationCenterTest, EachRegistrationHasItsOwnSelector) {
  observe(ann);
  center().addObserverSelectorNameObject<&Observer::secondSelector>(ann, kDoorOpened, nullptr);
  post();
  EXPECT_EQ(receivers, (Names{"Ann", "Ann again"}));
}

TEST_F(NSNotificationCenterTest, DeliversOnlyTheRegisteredName) {
  observe(ann, kDoorClosed);
  post(kDoorOpened);
  EXPECT_TRUE(receivers.empty());
  post(kDoorClosed);
  EXPECT_EQ(receivers, Names{"Ann"});
}

TEST_F(NSNotificationCenterTest, AnObserverOfOneObjectDoesNotReceiveOtherPosts) {
  const auto observedDoor = make<Door>();
  observe(ann, kDoorOpened, observedDoor);
  observe(bob);
  post(kDoorOpened, make<Door>());
  post();
  EXPECT_EQ(receivers, (Names{"Bob", "Bob"}));
  post(kDoorOpened, observedDoor);
  EXPECT_EQ(receivers, (Names{"Bob", "Bob", "Ann", "Bob"}));
}

TEST_F(NSNotificationCenterTest, AnObserverThatIsAddedDuringAPostReceivesOnlyLaterPosts) {
  ann->reaction = [this] {
    observe(cid);
    ann->reaction = nullptr;
  };
  observe(ann);
  observe(bob);
  post();
  EXPECT_EQ(receivers, (Names{"Ann", "Bob"}));
  receivers.clear();
  post();
  EXPECT_EQ(receivers, (Names{"Ann", "Bob", "Cid"}));
}

TEST_F(NSNotificationCenterTest, AnObserverAddedByTheLastObserverDoesNotReceiveTheCurrentPost) {
  ann->reaction = [this] { observe(bob); };
  observe(ann);
  post();
  EXPECT_EQ(receivers, Names{"Ann"});
}

TEST_F(NSNotificationCenterTest, AnObserverThatIsRemovedDuringAPostDoesNotReceiveThisPost) {
  ann->reaction = [this] { center().removeObserver(bob.get()); };
  for (const auto& observer : {ann, bob, cid}) {
    observe(observer);
  }
  post();
  EXPECT_EQ(receivers, (Names{"Ann", "Cid"}));
}

TEST_F(NSNotificationCenterTest, AnObserverThatRemovesItselfDoesNotAffectOtherObservers) {
  bob->reaction = [this] { center().removeObserver(bob.get()); };
  for (const auto& observer : {ann, bob, cid}) {
    observe(observer);
  }
  post();
  post();
  EXPECT_EQ(receivers, (Names{"Ann", "Bob", "Cid", "Ann", "Cid"}));
}

TEST_F(NSNotificationCenterTest, AnObserverThatIsRemovedAndAddedDuringAPostReceivesOnlyLaterPosts) {
  ann->reaction = [this] {
    ann->reaction = nullptr;
    center().removeObserver(bob.get());
    observe(bob);
  };
  observe(ann);
  observe(bob);
  post();
  EXPECT_EQ(receivers, Names{"Ann"});
  post();
  EXPECT_EQ(receivers, (Names{"Ann", "Ann", "Bob"}));
}

TEST_F(NSNotificationCenterTest, RemoveObserverRemovesAllRegistrationsOfTheObserver) {
  observe(ann);
  observe(ann, kDoorClosed);
  observe(ann, kDoorOpened, make<Door>());
  observe(bob);
  EXPECT_EQ(center().registrationCount(ann.get()), 3u);
  center().removeObserver(ann.get());
  EXPECT_EQ(center().registrationCount(ann.get()), 0u);
  post(kDoorOpened);
  post(kDoorClosed);
  EXPECT_EQ(receivers, Names{"Bob"});
}

TEST_F(NSNotificationCenterTest, RemovingNullOrAnUnregisteredObserverDoesNothing) {
  observe(ann);
  center().removeObserver(nullptr);
  center().removeObserver(bob.get());
  post();
  EXPECT_EQ(receivers, Names{"Ann"});
}

TEST_F(NSNotificationCenterTest, RegisteringANullObserverDoesNothing) {
  observe(nullptr);
  post();
  EXPECT_TRUE(receivers.empty());
}

TEST_F(NSNotificationCenterTest, RegistrationDoesNotKeepTheObserverAlive) {
  const Weak<Observer> weakReference = ann;
  observe(ann);
  ann.reset();
  EXPECT_TRUE(weakReference.expired());
  post();
  EXPECT_TRUE(receivers.empty());
}

TEST_F(NSNotificationCenterTest, DeliveryKeepsTheObserverAlive) {
  const Weak<Observer> weakReference = ann;
  bool isAliveDuringDelivery = false;
  ann->reaction = [&] {
    ann.reset();
    isAliveDuringDelivery = !weakReference.expired();
  };
  observe(ann);
  observe(bob);
  post();
  EXPECT_TRUE(isAliveDuringDelivery);
  EXPECT_TRUE(weakReference.expired());
  EXPECT_EQ(receivers, (Names{"Ann", "Bob"}));
}

TEST_F(NSNotificationCenterTest, AnObserverThatDestroysTheNextObserverDoesNotAffectOtherObservers) {
  ann->reaction = [this] { bob.reset(); };
  for (const auto& observer : {ann, bob, cid}) {
    observe(observer);
  }
  post();
  EXPECT_EQ(receivers, (Names{"Ann", "Cid"}));
}

TEST_F(NSNotificationCenterTest, ANestedPostIsDeliveredBeforeTheOuterPostContinues) {
  ann->reaction = [this] {
    ann->reaction = nullptr;
    post(kDoorClosed);
  };
  observe(ann);
  observe(bob);
  observe(cid, kDoorClosed);
  post();
  EXPECT_EQ(receivers, (Names{"Ann", "Cid", "Bob"}));
}

TEST_F(NSNotificationCenterTest, RemovalInANestedPostAlsoAffectsTheOuterPost) {
  ann->reaction = [this] {
    ann->reaction = nullptr;
    cid->reaction = [this] { center().removeObserver(bob.get()); };
    post(kDoorClosed);
  };
  observe(ann);
  observe(bob);
  observe(cid, kDoorClosed);
  post();
  EXPECT_EQ(receivers, (Names{"Ann", "Cid"}));
}

TEST_F(NSNotificationCenterTest, AnExceptionFromAnObserverEndsOnlyTheCurrentPost) {
  ann->reaction = [] { throw std::runtime_error("stop"); };
  observe(ann);
  observe(bob);
  EXPECT_THROW(post(), std::runtime_error);
  EXPECT_EQ(receivers, Names{"Ann"});
  center().removeObserver(ann.get());
  post();
  EXPECT_EQ(receivers, (Names{"Ann", "Bob"}));
}

TEST_F(NSNotificationCenterTest, SeveralThreadsMayUseTheCenterConcurrently) {
  const auto work = [] {
    for (int round = 0; round < 500; ++round) {
      std::vector<std::string> receiversInThisThread;
      const auto observer = make<Observer>(receiversInThisThread, "Dan");
      const auto door = make<Door>();
      observe(observer, kDoorOpened, door);
      post(kDoorOpened, door);
      EXPECT_EQ(receiversInThisThread, std::vector<std::string>{"Dan"});
      center().removeObserver(observer.get());
    }
  };
  std::thread firstThread(work);
  std::thread secondThread(work);
  firstThread.join();
  secondThread.join();
  EXPECT_TRUE(receivers.empty());
}

}  // namespace
}  // namespace vel::test
