#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Foundation/NSMutableArray.h"
#include "Platform/Foundation/NSString.h"

namespace vel::test {
namespace {

class Guest final : public Class<Guest, "Guest"> {
 public:
  explicit Guest(std::string name, std::function<void()> leaving = nullptr)
      : name_(std::move(name)), leaving_(std::move(leaving)) {}
  ~Guest() override {
    if (leaving_) {
      leaving_();
    }
  }
  [[nodiscard]] const std::string& name() const { return name_; }

 private:
  std::string name_;
  std::function<void()> leaving_;
};

class NSMutableArrayTest : public testing::Test {
 protected:
  using Told = std::vector<std::string>;

  NSMutableArrayTest() {
    for (const char* name : {"Ann", "Bob", "Cid"}) {
      guests->addObject(make<Guest>(name));
    }
  }

  // Loops over the guests and runs `work` at the guest of that name.
  void walk(const std::string& name, const std::function<void()>& work) {
    for (const Strong<Guest>& guest : *guests) {
      told.push_back(guest->name());
      if (guest->name() == name) {
        work();
      }
    }
  }

  Strong<NSMutableArray<Guest>> guests = NSMutableArray<Guest>::array();
  Told told;
};

TEST_F(NSMutableArrayTest, KeepsTheOrderInWhichObjectsWereAdded) {
  EXPECT_EQ(guests->count(), 3u);
  EXPECT_EQ(guests->objectAtIndex(0)->name(), "Ann");
  EXPECT_EQ(guests->objectAtIndex(2)->name(), "Cid");
}

TEST_F(NSMutableArrayTest, KeepsItsObjectsAlive) {
  auto guest = make<Guest>("Dan");
  const Weak<Guest> seen = guest;
  guests->addObject(std::move(guest));
  EXPECT_FALSE(seen.expired());
  guests->removeObjectAtIndex(3);
  EXPECT_TRUE(seen.expired());
}

TEST_F(NSMutableArrayTest, FindsTheFirstEqualObject) {
  const auto strings = NSMutableArray<NSString>::array();
  strings->addObject(NSString::stringWithUTF8String("a"));
  strings->addObject(NSString::stringWithUTF8String("b"));
  strings->addObject(NSString::stringWithUTF8String("b"));
  EXPECT_EQ(strings->indexOfObject(NSString::stringWithUTF8String("b").get()), 1u);
  EXPECT_TRUE(strings->containsObject(NSString::stringWithUTF8String("a").get()));
}

TEST_F(NSMutableArrayTest, DoesNotFindAnObjectThatItDoesNotContain) {
  EXPECT_EQ(guests->indexOfObject(make<Guest>("Ann").get()), std::nullopt);
  EXPECT_FALSE(guests->containsObject(nullptr));
}

TEST_F(NSMutableArrayTest, RemovingAnObjectMovesTheLaterOnesForward) {
  guests->removeObjectAtIndex(1);
  EXPECT_EQ(guests->count(), 2u);
  EXPECT_EQ(guests->objectAtIndex(1)->name(), "Cid");
}

TEST_F(NSMutableArrayTest, IsConsistentWhenARemovedObjectIsDestroyed) {
  std::size_t countedByTheDying = 99;
  guests->addObject(make<Guest>("Dan", [&] { countedByTheDying = guests->count(); }));
  guests->removeObjectAtIndex(3);
  EXPECT_EQ(countedByTheDying, 3u);
  guests->addObject(make<Guest>("Eve", [&] { countedByTheDying = guests->count(); }));
  guests->removeAllObjects();
  EXPECT_EQ(countedByTheDying, 0u);
}

TEST_F(NSMutableArrayTest, ALoopVisitsTheObjectsInOrder) {
  walk("", [] {});
  EXPECT_EQ(told, (Told{"Ann", "Bob", "Cid"}));
}

TEST_F(NSMutableArrayTest, ALoopOverAnEmptyArrayVisitsNothing) {
  guests->removeAllObjects();
  walk("", [] {});
  EXPECT_TRUE(told.empty());
}

TEST_F(NSMutableArrayTest, AddingDuringALoopThrows) {
  EXPECT_THROW(walk("Ann", [this] { guests->addObject(make<Guest>("Dan")); }),
               NSCollectionMutatedError);
  EXPECT_EQ(told, Told{"Ann"});
}

TEST_F(NSMutableArrayTest, RemovingDuringALoopThrows) {
  EXPECT_THROW(walk("Bob", [this] { guests->removeObjectAtIndex(0); }), NSCollectionMutatedError);
  EXPECT_EQ(told, (Told{"Ann", "Bob"}));
}

TEST_F(NSMutableArrayTest, RemovingAllDuringALoopThrows) {
  EXPECT_THROW(walk("Ann", [this] { guests->removeAllObjects(); }), NSCollectionMutatedError);
}

TEST_F(NSMutableArrayTest, AddingAtTheLastObjectThrows) {
  EXPECT_THROW(walk("Cid", [this] { guests->addObject(make<Guest>("Dan")); }),
               NSCollectionMutatedError);
  EXPECT_EQ(told, (Told{"Ann", "Bob", "Cid"}));
}

TEST_F(NSMutableArrayTest, RemovingTheLastObjectDuringItsVisitThrows) {
  EXPECT_THROW(walk("Cid", [this] { guests->removeObjectAtIndex(2); }), NSCollectionMutatedError);
}

TEST_F(NSMutableArrayTest, RemovingAllAtTheLastObjectThrows) {
  EXPECT_THROW(walk("Cid", [this] { guests->removeAllObjects(); }), NSCollectionMutatedError);
}

TEST_F(NSMutableArrayTest, AChangeThatIsUndoneDuringTheLoopThrows) {
  EXPECT_THROW(walk("Ann",
                    [this] {
                      guests->addObject(make<Guest>("Dan"));
                      guests->removeObjectAtIndex(3);
                    }),
               NSCollectionMutatedError);
}

TEST_F(NSMutableArrayTest, ReadingDuringALoopIsNoChange) {
  walk("Ann", [this] {
    EXPECT_FALSE(guests->containsObject(make<Guest>("Ann").get()));
    EXPECT_EQ(guests->count(), 3u);
  });
  EXPECT_EQ(told.size(), 3u);
}

TEST_F(NSMutableArrayTest, RemovingAllFromAnEmptyArrayIsNoChange) {
  const auto empty = NSMutableArray<Guest>::array();
  auto position = empty->begin();
  empty->removeAllObjects();
  EXPECT_NO_THROW(++position);
}

TEST_F(NSMutableArrayTest, ANestedLoopIsNoChange) {
  walk("Bob", [this] { walk("", [] {}); });
  EXPECT_EQ(told, (Told{"Ann", "Bob", "Ann", "Bob", "Cid", "Cid"}));
}

TEST_F(NSMutableArrayTest, AChangeAfterABreakIsNoError) {
  for (const Strong<Guest>& guest : *guests) {
    told.push_back(guest->name());
    guests->removeAllObjects();
    break;
  }
  EXPECT_EQ(told, Told{"Ann"});
}

TEST_F(NSMutableArrayTest, ALoopKeepsTheVisitedObjectAlive) {
  const Weak<Guest> first = guests->objectAtIndex(0);
  bool alive = false;
  EXPECT_THROW(walk("Ann",
                    [&] {
                      guests->removeAllObjects();
                      alive = !first.expired();
                    }),
               NSCollectionMutatedError);
  EXPECT_TRUE(alive);
  EXPECT_TRUE(first.expired());
}

TEST_F(NSMutableArrayTest, TheErrorHasAMessage) {
  try {
    walk("Ann", [this] { guests->removeAllObjects(); });
    FAIL() << "nothing was raised";
  } catch (const NSCollectionMutatedError& error) {
    EXPECT_STREQ(error.what(), "collection mutated while being enumerated");
  }
}

}  // namespace
}  // namespace vel::test
