// Atomic properties and weak references.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>
#include <utility>

#include "Platform/Foundation/AtomicReference.h"
#include "Platform/Foundation/NSObject.h"

namespace vel::test {
namespace {

class Mortal final : public Class<Mortal, "Mortal"> {
 public:
  explicit Mortal(int number, std::function<void()> dying = nullptr)
      : number_(number), complement_(-number), dying_(std::move(dying)) {}
  ~Mortal() override {
    if (dying_) {
      dying_();
    }
  }
  [[nodiscard]] bool isWhole() const { return number_ + complement_ == 0; }

 private:
  int number_;
  int complement_;
  std::function<void()> dying_;
};

TEST(AtomicReferenceTest, IsNullAtFirst) { EXPECT_EQ(AtomicReference<Mortal>().load(), nullptr); }

TEST(AtomicReferenceTest, LoadReturnsTheLastStoredObject) {
  AtomicReference<Mortal> property;
  const auto object = make<Mortal>(1);
  property.store(make<Mortal>(0));
  property.store(object);
  EXPECT_EQ(property.load(), object);
}

TEST(AtomicReferenceTest, OwnsItsObject) {
  AtomicReference<Mortal> property;
  auto object = make<Mortal>(1);
  const Weak<Mortal> seen = object;
  property.store(std::move(object));
  EXPECT_FALSE(seen.expired());
  property.store(nullptr);
  EXPECT_TRUE(seen.expired());
}

TEST(AtomicReferenceTest, ALoadedReferenceOutlivesALaterStore) {
  AtomicReference<Mortal> property;
  property.store(make<Mortal>(1));
  const Strong<Mortal> read = property.load();
  property.store(nullptr);
  EXPECT_TRUE(read->isWhole());
}

TEST(AtomicReferenceTest, DestroysTheOldObjectOutsideTheLock) {
  AtomicReference<Mortal> property;
  Strong<Mortal> seenByTheDying;
  const auto next = make<Mortal>(2);
  // If the lock were held, the read in the destructor would block for ever.
  property.store(make<Mortal>(1, [&] { seenByTheDying = property.load(); }));
  property.store(next);
  EXPECT_EQ(seenByTheDying, next);
}

TEST(AtomicReferenceTest, SeveralThreadsMayReadAndWrite) {
  AtomicReference<Mortal> property;
  property.store(make<Mortal>(0));
  std::atomic<bool> broken = false;
  const auto work = [&](int start) {
    for (int number = start; number < start + 2000; ++number) {
      property.store(make<Mortal>(number));
      if (!property.load()->isWhole()) {
        broken = true;
      }
    }
  };
  std::thread first(work, 0);
  std::thread second(work, 10'000);
  first.join();
  second.join();
  EXPECT_FALSE(broken);
}

TEST(WeakTest, DoesNotKeepItsObjectAliveAndReturnsNullAfterwards) {
  auto object = make<Mortal>(1);
  const Weak<Mortal> reference = object;
  EXPECT_EQ(reference.lock(), object);
  object.reset();
  EXPECT_EQ(reference.lock(), nullptr);
}

}  // namespace
}  // namespace vel::test
