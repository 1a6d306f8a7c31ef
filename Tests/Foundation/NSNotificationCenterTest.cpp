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

/// An observer. It records each notification and may run some work on it.
class Listener final : public Class<Listener, "Listener"> {
 public:
  Listener(std::vector<std::string>& heard, std::string name)
      : heard_(heard), name_(std::move(name)) {}
  ~Listener() override { center().removeObserver(this); }

  void doorMoved(const NSNotification& notification) {
    heard_.push_back(name_);
    last = std::string(notification.name());
    object = notification.object();
    if (reaction) {
      reaction();
    }
  }
  void doorMovedAgain(const NSNotification& /*notification*/) {
    heard_.push_back(name_ + " again");
  }

  std::function<void()> reaction;
  std::string last;
  Strong<NSObject> object;

 private:
  std::vector<std::string>& heard_;
  std::string name_;
};

class NSNotificationCenterTest : public testing::Test {
 protected:
  using Heard = std::vector<std::string>;

  Strong<Listener> listener(const std::string& name) { return make<Listener>(heard, name); }
  static void observe(const Strong<Listener>& who, NSNotificationName name = kDoorOpened,
                      const Strong<NSObject>& object = nullptr) {
    center().addObserverSelectorNameObject<&Listener::doorMoved>(who, name, object);
  }
  static void post(NSNotificationName name = kDoorOpened,
                   const Strong<NSObject>& object = nullptr) {
    center().postNotificationNameObject(name, object);
  }

  Heard heard;
  Strong<Listener> ann = listener("Ann");
  Strong<Listener> bob = listener("Bob");
  Strong<Listener> cid = listener("Cid");
};

TEST_F(NSNotificationCenterTest, APostWithoutObserversDoesNothing) {
  post();
  EXPECT_TRUE(heard.empty());
}

TEST_F(NSNotificationCenterTest, DeliversInsideThePost) {
  observe(ann);
  EXPECT_TRUE(heard.empty());
  post();
  EXPECT_EQ(heard, Heard{"Ann"});
}

TEST_F(NSNotificationCenterTest, DeliversNameAndObject) {
  const auto door = make<Door>();
  observe(ann);
  post(kDoorOpened, door);
  EXPECT_EQ(ann->last, kDoorOpened);
  EXPECT_EQ(ann->object, door);
}

TEST_F(NSNotificationCenterTest, DeliversOnThePostingThread) {
  std::thread::id told;
  ann->reaction = [&told] { told = std::this_thread::get_id(); };
  observe(ann);
  std::thread poster([] { post(); });
  const std::thread::id posting = poster.get_id();
  poster.join();
  EXPECT_EQ(told, posting);
}

TEST_F(NSNotificationCenterTest, DeliversInTheOrderOfRegistration) {
  observe(bob);
  observe(ann);
  observe(cid);
  post();
  EXPECT_EQ(heard, (Heard{"Bob", "Ann", "Cid"}));
}

TEST_F(NSNotificationCenterTest, AnObserverThatIsRegisteredTwiceReceivesTwice) {
  observe(ann);
  observe(bob);
  observe(ann);
  post();
  EXPECT_EQ(heard, (Heard{"Ann", "Bob", "Ann"}));
}

TEST_F(NSNotificationCenterTest, EachRegistrationHasItsOwnSelector) {
  observe(ann);
  center().addObserverSelectorNameObject<&Listener::doorMovedAgain>(ann, kDoorOpened, nullptr);
  post();
  EXPECT_EQ(heard, (Heard{"Ann", "Ann again"}));
}

TEST_F(NSNotificationCenterTest, DeliversOnlyTheRegisteredName) {
  observe(ann, kDoorClosed);
  post(kDoorOpened);
  EXPECT_TRUE(heard.empty());
  post(kDoorClosed);
  EXPECT_EQ(heard, Heard{"Ann"});
}

TEST_F(NSNotificationCenterTest, DeliversOnlyForTheRegisteredObject) {
  const auto front = make<Door>();
  observe(ann, kDoorOpened, front);
  observe(bob);
  post(kDoorOpened, make<Door>());
  post();
  EXPECT_EQ(heard, (Heard{"Bob", "Bob"}));
  post(kDoorOpened, front);
  EXPECT_EQ(heard, (Heard{"Bob", "Bob", "Ann", "Bob"}));
}

TEST_F(NSNotificationCenterTest, AnObserverThatIsAddedDuringAPostReceivesTheNextOne) {
  ann->reaction = [this] {
    observe(cid);
    ann->reaction = nullptr;
  };
  observe(ann);
  observe(bob);
  post();
  EXPECT_EQ(heard, (Heard{"Ann", "Bob"}));
  heard.clear();
  post();
  EXPECT_EQ(heard, (Heard{"Ann", "Bob", "Cid"}));
}

TEST_F(NSNotificationCenterTest, AnObserverThatTheLastObserverAddsReceivesTheNextOne) {
  ann->reaction = [this] { observe(bob); };
  observe(ann);
  post();
  EXPECT_EQ(heard, Heard{"Ann"});
}

TEST_F(NSNotificationCenterTest, AnObserverThatIsRemovedDuringAPostDoesNotReceiveIt) {
  ann->reaction = [this] { center().removeObserver(bob.get()); };
  for (const auto& who : {ann, bob, cid}) {
    observe(who);
  }
  post();
  EXPECT_EQ(heard, (Heard{"Ann", "Cid"}));
}

TEST_F(NSNotificationCenterTest, AnObserverThatRemovesItselfDoesNotAffectOthers) {
  bob->reaction = [this] { center().removeObserver(bob.get()); };
  for (const auto& who : {ann, bob, cid}) {
    observe(who);
  }
  post();
  post();
  EXPECT_EQ(heard, (Heard{"Ann", "Bob", "Cid", "Ann", "Cid"}));
}

TEST_F(NSNotificationCenterTest, AnObserverThatIsRemovedAndAddedDuringAPostReceivesTheNextOne) {
  ann->reaction = [this] {
    ann->reaction = nullptr;
    center().removeObserver(bob.get());
    observe(bob);
  };
  observe(ann);
  observe(bob);
  post();
  EXPECT_EQ(heard, Heard{"Ann"});
  post();
  EXPECT_EQ(heard, (Heard{"Ann", "Ann", "Bob"}));
}

TEST_F(NSNotificationCenterTest, RemoveObserverRemovesAllItsRegistrations) {
  observe(ann);
  observe(ann, kDoorClosed);
  observe(ann, kDoorOpened, make<Door>());
  observe(bob);
  EXPECT_EQ(center().registrationCount(ann.get()), 3u);
  center().removeObserver(ann.get());
  EXPECT_EQ(center().registrationCount(ann.get()), 0u);
  post(kDoorOpened);
  post(kDoorClosed);
  EXPECT_EQ(heard, Heard{"Bob"});
}

TEST_F(NSNotificationCenterTest, RemovingNullOrAnUnregisteredObserverDoesNothing) {
  observe(ann);
  center().removeObserver(nullptr);
  center().removeObserver(bob.get());
  post();
  EXPECT_EQ(heard, Heard{"Ann"});
}

TEST_F(NSNotificationCenterTest, RegisteringNullDoesNothing) {
  observe(nullptr);
  post();
  EXPECT_TRUE(heard.empty());
}

TEST_F(NSNotificationCenterTest, ObserversAreNotKeptAlive) {
  const Weak<Listener> seen = ann;
  observe(ann);
  ann.reset();
  EXPECT_TRUE(seen.expired());
  post();
  EXPECT_TRUE(heard.empty());
}

TEST_F(NSNotificationCenterTest, DeliveryKeepsTheObserverAlive) {
  const Weak<Listener> seen = ann;
  bool alive = false;
  ann->reaction = [&] {
    ann.reset();
    alive = !seen.expired();
  };
  observe(ann);
  observe(bob);
  post();
  EXPECT_TRUE(alive);
  EXPECT_TRUE(seen.expired());
  EXPECT_EQ(heard, (Heard{"Ann", "Bob"}));
}

TEST_F(NSNotificationCenterTest, AnObserverThatDestroysTheNextDoesNotAffectOthers) {
  ann->reaction = [this] { bob.reset(); };
  for (const auto& who : {ann, bob, cid}) {
    observe(who);
  }
  post();
  EXPECT_EQ(heard, (Heard{"Ann", "Cid"}));
}

TEST_F(NSNotificationCenterTest, ANestedPostIsDeliveredAtOnce) {
  ann->reaction = [this] {
    ann->reaction = nullptr;
    post(kDoorClosed);
  };
  observe(ann);
  observe(bob);
  observe(cid, kDoorClosed);
  post();
  EXPECT_EQ(heard, (Heard{"Ann", "Cid", "Bob"}));
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
  EXPECT_EQ(heard, (Heard{"Ann", "Cid"}));
}

TEST_F(NSNotificationCenterTest, AnObserverThatThrowsEndsOnlyThePost) {
  ann->reaction = [] { throw std::runtime_error("stop"); };
  observe(ann);
  observe(bob);
  EXPECT_THROW(post(), std::runtime_error);
  EXPECT_EQ(heard, Heard{"Ann"});
  center().removeObserver(ann.get());
  post();
  EXPECT_EQ(heard, (Heard{"Ann", "Bob"}));
}

TEST_F(NSNotificationCenterTest, SeveralThreadsMayUseItAtOnce) {
  const auto work = [] {
    for (int round = 0; round < 500; ++round) {
      std::vector<std::string> own;
      const auto who = make<Listener>(own, "own");
      const auto door = make<Door>();
      observe(who, kDoorOpened, door);
      post(kDoorOpened, door);
      EXPECT_EQ(own, std::vector<std::string>{"own"});
      center().removeObserver(who.get());
    }
  };
  std::thread first(work);
  std::thread second(work);
  first.join();
  second.join();
  EXPECT_TRUE(heard.empty());
}

}  // namespace
}  // namespace vel::test
