// Each thread has a release pool, which keeps objects alive. Draining the pool releases the
// objects. A thread's pool is drained at the end of each pass of the thread's run loop and when the
// thread ends.
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/ReleasePool.h"
#include "Tests/Support/VirtualPlatform.h"

namespace vel::test {
namespace {

class TestObject final : public Class<TestObject, "TestObject"> {
 public:
  explicit TestObject(std::function<void()> onDestruction = nullptr)
      : onDestruction_(std::move(onDestruction)) {}
  ~TestObject() override {
    if (onDestruction_) {
      onDestruction_();
    }
  }

 private:
  std::function<void()> onDestruction_;
};

class ReleasePoolTest : public VirtualPlatformTest {
 protected:
  // Adds an object to the pool. The object records its name when it is destroyed.
  Weak<TestObject> addObject(const std::string& name) {
    return releaseLater(make<TestObject>([this, name] { destroyedNames.push_back(name); }));
  }
  static void submit(DispatchQueue::Work work) {
    dispatch_async(dispatch_get_main_queue(), std::move(work));
  }

  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  std::vector<std::string> destroyedNames;
};

TEST_F(ReleasePoolTest, ReleaseLaterReturnsItsArgument) {
  const auto object = make<TestObject>();
  EXPECT_EQ(releaseLater(object), object);
}

TEST_F(ReleasePoolTest, AnObjectAddedInAPassLivesUntilTheEndOfThePass) {
  Weak<TestObject> object;
  bool isAliveLaterInThePass = false;
  submit([&] { object = addObject("first"); });
  submit([&] { isAliveLaterInThePass = !object.expired(); });
  loop.pump();
  EXPECT_TRUE(isAliveLaterInThePass);
  EXPECT_TRUE(object.expired());
}

TEST_F(ReleasePoolTest, AnObjectAddedBetweenPassesLivesUntilTheEndOfTheNextPass) {
  const Weak<TestObject> object = addObject("first");
  bool isAliveInThePass = false;
  submit([&] { isAliveInThePass = !object.expired(); });
  EXPECT_FALSE(object.expired());
  loop.pump();
  EXPECT_TRUE(isAliveInThePass);
  EXPECT_TRUE(object.expired());
}

TEST_F(ReleasePoolTest, APassWithoutWorkDrainsThePool) {
  const Weak<TestObject> object = addObject("first");
  EXPECT_FALSE(loop.pump());
  EXPECT_TRUE(object.expired());
}

TEST_F(ReleasePoolTest, ANestedPassReleasesOnlyItsOwnObjects) {
  Weak<TestObject> outerObject;
  Weak<TestObject> innerObject;
  submit([&] {
    outerObject = addObject("outer");
    submit([&] { innerObject = addObject("inner"); });
    loop.pump();
    EXPECT_TRUE(innerObject.expired());
    EXPECT_FALSE(outerObject.expired());
  });
  loop.pump();
  EXPECT_EQ(destroyedNames, (std::vector<std::string>{"inner", "outer"}));
}

TEST_F(ReleasePoolTest, AnObjectAddedBetweenPassesOutlivesANestedPass) {
  const Weak<TestObject> object = addObject("between");
  submit([&] {
    loop.pump();
    EXPECT_FALSE(object.expired());
  });
  loop.pump();
  EXPECT_TRUE(object.expired());
}

TEST_F(ReleasePoolTest, ReleasesTheOldestObjectFirst) {
  addObject("first");
  addObject("second");
  loop.pump();
  EXPECT_EQ(destroyedNames, (std::vector<std::string>{"first", "second"}));
}

TEST_F(ReleasePoolTest, ADrainAlsoReleasesTheObjectsThatDestructorsAdd) {
  releaseLater(make<TestObject>([this] { addObject("late object"); }));
  loop.pump();
  EXPECT_EQ(destroyedNames, std::vector<std::string>{"late object"});
  EXPECT_EQ(ReleasePool::currentPool().size(), 0u);
}

TEST_F(ReleasePoolTest, ThePoolIsDrainedWhenAPassThrows) {
  Weak<TestObject> object;
  submit([&] {
    object = addObject("first");
    throw std::runtime_error("stop");
  });
  EXPECT_THROW(loop.pump(), std::runtime_error);
  EXPECT_TRUE(object.expired());
}

TEST_F(ReleasePoolTest, AnObjectThatIsAddedTwiceIsDestroyedOnce) {
  const Weak<TestObject> object = addObject("first");
  releaseLater(object.lock());
  loop.pump();
  EXPECT_EQ(destroyedNames.size(), 1u);
}

TEST_F(ReleasePoolTest, ThePoolOfAnotherThreadReleasesItsObjectsWhenTheThreadEnds) {
  Weak<TestObject> object;
  bool isAliveInTheThread = false;
  std::thread([&] {
    object = addObject("first");
    isAliveInTheThread = !object.expired();
  }).join();
  EXPECT_TRUE(isAliveInTheThread);
  EXPECT_TRUE(object.expired());
}

TEST_F(ReleasePoolTest, ADestructorThatRunsWhenAThreadEndsMayAddObjects) {
  std::thread([this] {
    releaseLater(make<TestObject>([this] { addObject("late object"); }));
  }).join();
  EXPECT_EQ(destroyedNames, std::vector<std::string>{"late object"});
}

}  // namespace
}  // namespace vel::test
