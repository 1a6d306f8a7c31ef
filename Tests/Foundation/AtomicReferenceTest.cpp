// Tests of AtomicReference and Weak.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>
#include <utility>

#include "Platform/Foundation/AtomicReference.h"
#include "Platform/Foundation/NSObject.h"

namespace vel::test {
namespace {

/// An object that calls `onDestruction` in its destructor. `isConsistent` can return false if
/// another thread destroys the object during the call.
class TestObject final : public Class<TestObject, "TestObject"> {
 public:
  explicit TestObject(int number, std::function<void()> onDestruction = nullptr)
      : number_(number), negatedNumber_(-number), onDestruction_(std::move(onDestruction)) {}
  ~TestObject() override {
    if (onDestruction_) {
      onDestruction_();
    }
  }
  [[nodiscard]] bool isConsistent() const { return number_ + negatedNumber_ == 0; }

 private:
  int number_;
  int negatedNumber_;
  std::function<void()> onDestruction_;
};

TEST(AtomicReferenceTest, IsNullAtFirst) {
  EXPECT_EQ(AtomicReference<TestObject>().load(), nullptr);
}

TEST(AtomicReferenceTest, LoadReturnsTheLastStoredObject) {
  AtomicReference<TestObject> property;
  const auto object = make<TestObject>(1);
  property.store(make<TestObject>(0));
  property.store(object);
  EXPECT_EQ(property.load(), object);
}

TEST(AtomicReferenceTest, OwnsItsObject) {
  AtomicReference<TestObject> property;
  auto object = make<TestObject>(1);
  const Weak<TestObject> weakReference = object;
  property.store(std::move(object));
  EXPECT_FALSE(weakReference.expired());
  property.store(nullptr);
  EXPECT_TRUE(weakReference.expired());
}

TEST(AtomicReferenceTest, ALoadedReferenceKeepsItsObjectAliveAfterALaterStore) {
  AtomicReference<TestObject> property;
  property.store(make<TestObject>(1));
  const Strong<TestObject> loadedObject = property.load();
  property.store(nullptr);
  EXPECT_TRUE(loadedObject->isConsistent());
}

TEST(AtomicReferenceTest, DestroysThePreviousObjectWithoutHoldingTheLock) {
  AtomicReference<TestObject> property;
  Strong<TestObject> objectLoadedInDestructor;
  const auto nextObject = make<TestObject>(2);
  // `load` in the destructor would block forever if `store` still held the lock.
  property.store(make<TestObject>(1, [&] { objectLoadedInDestructor = property.load(); }));
  property.store(nextObject);
  EXPECT_EQ(objectLoadedInDestructor, nextObject);
}

TEST(AtomicReferenceTest, SeveralThreadsMayReadAndWrite) {
  AtomicReference<TestObject> property;
  property.store(make<TestObject>(0));
  std::atomic<bool> hasReadInconsistentObject = false;
  const auto work = [&](int start) {
    for (int number = start; number < start + 2000; ++number) {
      property.store(make<TestObject>(number));
      if (!property.load()->isConsistent()) {
        hasReadInconsistentObject = true;
      }
    }
  };
  std::thread firstThread(work, 0);
  std::thread secondThread(work, 10'000);
  firstThread.join();
  secondThread.join();
  EXPECT_FALSE(hasReadInconsistentObject);
}

TEST(WeakTest, ReturnsNullAfterItsObjectIsDestroyed) {
  auto object = make<TestObject>(1);
  const Weak<TestObject> reference = object;
  EXPECT_EQ(reference.lock(), object);
  object.reset();
  EXPECT_EQ(reference.lock(), nullptr);
}

}  // namespace
}  // namespace vel::test
