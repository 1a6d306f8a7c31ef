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

/// Runs `onDestruction` in its destructor. Guests with the same name are not equal.
class Guest final : public Class<Guest, "Guest"> {
 public:
  explicit Guest(std::string name, std::function<void()> onDestruction = nullptr)
      : name_(std::move(name)), onDestruction_(std::move(onDestruction)) {}
  ~Guest() override {
    if (onDestruction_) {
      onDestruction_();
    }
  }
  [[nodiscard]] const std::string& name() const { return name_; }

 private:
  std::string name_;
  std::function<void()> onDestruction_;
};

class NSMutableArrayTest : public testing::Test {
 protected:
  using Names = std::vector<std::string>;

  NSMutableArrayTest() {
    for (const char* name : {"Ann", "Bob", "Cid"}) {
      guests->addObject(make<Guest>(name));
    }
  }

  // Appends the name of each guest to `visitedNames`. Runs `work` at the guest called `name`.
  void iterate(const std::string& name = "", const std::function<void()>& work = nullptr) {
    for (const Strong<Guest>& guest : *guests) {
      visitedNames.push_back(guest->name());
      if (guest->name() == name) {
        work();
      }
    }
  }

  Strong<NSMutableArray<Guest>> guests = NSMutableArray<Guest>::array();
  Names visitedNames;
};

TEST_F(NSMutableArrayTest, KeepsTheOrderInWhichObjectsWereAdded) {
  EXPECT_EQ(guests->count(), 3u);
  EXPECT_EQ(guests->objectAtIndex(0)->name(), "Ann");
  EXPECT_EQ(guests->objectAtIndex(2)->name(), "Cid");
}

TEST_F(NSMutableArrayTest, KeepsItsObjectsAlive) {
  auto guest = make<Guest>("Dan");
  const Weak<Guest> weakReference = guest;
  guests->addObject(std::move(guest));
  EXPECT_FALSE(weakReference.expired());
  guests->removeObjectAtIndex(3);
  EXPECT_TRUE(weakReference.expired());
}

TEST_F(NSMutableArrayTest, FindsTheFirstEqualObject) {
  const auto strings = NSMutableArray<NSString>::array();
  strings->addObject(NSString::stringWithUTF8String("a"));
  strings->addObject(NSString::stringWithUTF8String("b"));
  strings->addObject(NSString::stringWithUTF8String("b"));
  EXPECT_EQ(strings->indexOfObject(NSString::stringWithUTF8String("b").get()), 1u);
  EXPECT_TRUE(strings->containsObject(NSString::stringWithUTF8String("a").get()));
}

TEST_F(NSMutableArrayTest, DoesNotFindANewObjectOrNull) {
  EXPECT_EQ(guests->indexOfObject(make<Guest>("Ann").get()), std::nullopt);
  EXPECT_FALSE(guests->containsObject(nullptr));
}

TEST_F(NSMutableArrayTest, RemovingAnObjectDecrementsTheIndicesOfLaterObjects) {
  guests->removeObjectAtIndex(1);
  EXPECT_EQ(guests->count(), 2u);
  EXPECT_EQ(guests->objectAtIndex(1)->name(), "Cid");
}

TEST_F(NSMutableArrayTest, TheDestructorOfARemovedObjectReadsTheNewCount) {
  std::size_t countInDestructor = 99;
  guests->addObject(make<Guest>("Dan", [&] { countInDestructor = guests->count(); }));
  guests->removeObjectAtIndex(3);
  EXPECT_EQ(countInDestructor, 3u);
  guests->addObject(make<Guest>("Eve", [&] { countInDestructor = guests->count(); }));
  guests->removeAllObjects();
  EXPECT_EQ(countInDestructor, 0u);
}

TEST_F(NSMutableArrayTest, ALoopVisitsTheObjectsInOrder) {
  iterate();
  EXPECT_EQ(visitedNames, (Names{"Ann", "Bob", "Cid"}));
}

TEST_F(NSMutableArrayTest, ALoopOverAnEmptyArrayVisitsNothing) {
  guests->removeAllObjects();
  iterate();
  EXPECT_TRUE(visitedNames.empty());
}

TEST_F(NSMutableArrayTest, AddingDuringALoopThrows) {
  EXPECT_THROW(iterate("Ann", [this] { guests->addObject(make<Guest>("Dan")); }),
               NSCollectionMutatedError);
  EXPECT_EQ(visitedNames, Names{"Ann"});
}

TEST_F(NSMutableArrayTest, RemovingDuringALoopThrows) {
  EXPECT_THROW(iterate("Bob", [this] { guests->removeObjectAtIndex(0); }),
               NSCollectionMutatedError);
  EXPECT_EQ(visitedNames, (Names{"Ann", "Bob"}));
}

TEST_F(NSMutableArrayTest, RemovingAllDuringALoopThrows) {
  EXPECT_THROW(iterate("Ann", [this] { guests->removeAllObjects(); }), NSCollectionMutatedError);
}

TEST_F(NSMutableArrayTest, AddingDuringTheVisitOfTheLastObjectThrows) {
  EXPECT_THROW(iterate("Cid", [this] { guests->addObject(make<Guest>("Dan")); }),
               NSCollectionMutatedError);
  EXPECT_EQ(visitedNames, (Names{"Ann", "Bob", "Cid"}));
}

TEST_F(NSMutableArrayTest, RemovingTheLastObjectDuringItsVisitThrows) {
  EXPECT_THROW(iterate("Cid", [this] { guests->removeObjectAtIndex(2); }),
               NSCollectionMutatedError);
}

TEST_F(NSMutableArrayTest, RemovingAllDuringTheVisitOfTheLastObjectThrows) {
  EXPECT_THROW(iterate("Cid", [this] { guests->removeAllObjects(); }), NSCollectionMutatedError);
}

TEST_F(NSMutableArrayTest, AChangeThatIsUndoneDuringTheLoopThrows) {
  EXPECT_THROW(iterate("Ann",
                       [this] {
                         guests->addObject(make<Guest>("Dan"));
                         guests->removeObjectAtIndex(3);
                       }),
               NSCollectionMutatedError);
}

TEST_F(NSMutableArrayTest, ReadingDuringALoopDoesNotThrow) {
  iterate("Ann", [this] {
    EXPECT_FALSE(guests->containsObject(make<Guest>("Ann").get()));
    EXPECT_EQ(guests->count(), 3u);
  });
  EXPECT_EQ(visitedNames.size(), 3u);
}

TEST_F(NSMutableArrayTest, RemovingAllFromAnEmptyArrayDuringALoopDoesNotThrow) {
  const auto emptyArray = NSMutableArray<Guest>::array();
  // The body of a loop over an empty array never runs, so this test increments an iterator itself.
  auto iterator = emptyArray->begin();
  emptyArray->removeAllObjects();
  EXPECT_NO_THROW(++iterator);
}

TEST_F(NSMutableArrayTest, ANestedLoopDoesNotThrow) {
  iterate("Bob", [this] { iterate(); });
  EXPECT_EQ(visitedNames, (Names{"Ann", "Bob", "Ann", "Bob", "Cid", "Cid"}));
}

TEST_F(NSMutableArrayTest, AChangeBeforeABreakDoesNotThrow) {
  for (const Strong<Guest>& guest : *guests) {
    visitedNames.push_back(guest->name());
    guests->removeAllObjects();
    break;
  }
  EXPECT_EQ(visitedNames, Names{"Ann"});
}

TEST_F(NSMutableArrayTest, ALoopKeepsTheVisitedObjectAlive) {
  const Weak<Guest> firstGuest = guests->objectAtIndex(0);
  bool isAlive = false;
  EXPECT_THROW(iterate("Ann",
                       [&] {
                         guests->removeAllObjects();
                         isAlive = !firstGuest.expired();
                       }),
               NSCollectionMutatedError);
  EXPECT_TRUE(isAlive);
  EXPECT_TRUE(firstGuest.expired());
}

TEST_F(NSMutableArrayTest, TheErrorHasAMessage) {
  try {
    iterate("Ann", [this] { guests->removeAllObjects(); });
    FAIL() << "nothing was thrown";
  } catch (const NSCollectionMutatedError& error) {
    EXPECT_STREQ(error.what(), "collection mutated while being enumerated");
  }
}

}  // namespace
}  // namespace vel::test
