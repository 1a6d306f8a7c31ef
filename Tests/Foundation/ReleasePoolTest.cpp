// The deferred-release pool: when it releases its objects.
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

class Mortal final : public Class<Mortal, "Mortal"> {
 public:
  explicit Mortal(std::function<void()> dying = nullptr) : dying_(std::move(dying)) {}
  ~Mortal() override {
    if (dying_) {
      dying_();
    }
  }

 private:
  std::function<void()> dying_;
};

class ReleasePoolTest : public VirtualTest {
 protected:
  // An object that is added to the pool now and records its destruction.
  Weak<Mortal> handOver(const std::string& name) {
    return releaseLater(make<Mortal>([this, name] { died.push_back(name); }));
  }
  static void later(DispatchQueue::Work work) {
    dispatch_async(dispatch_get_main_queue(), std::move(work));
  }

  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  std::vector<std::string> died;
};

TEST_F(ReleasePoolTest, ReleaseLaterReturnsItsObject) {
  const auto object = make<Mortal>();
  EXPECT_EQ(releaseLater(object), object);
}

TEST_F(ReleasePoolTest, AnObjectAddedInAPassLivesUntilItsEnd) {
  Weak<Mortal> object;
  bool aliveLater = false;
  later([&] { object = handOver("first"); });
  later([&] { aliveLater = !object.expired(); });
  loop.pump();
  EXPECT_TRUE(aliveLater);
  EXPECT_TRUE(object.expired());
}

TEST_F(ReleasePoolTest, AnObjectAddedBetweenPassesLivesUntilTheEndOfTheNext) {
  const Weak<Mortal> object = handOver("first");
  bool aliveInThePass = false;
  later([&] { aliveInThePass = !object.expired(); });
  EXPECT_FALSE(object.expired());
  loop.pump();
  EXPECT_TRUE(aliveInThePass);
  EXPECT_TRUE(object.expired());
}

TEST_F(ReleasePoolTest, APassThatDoesNothingDrainsThePool) {
  const Weak<Mortal> object = handOver("first");
  EXPECT_FALSE(loop.pump());
  EXPECT_TRUE(object.expired());
}

TEST_F(ReleasePoolTest, ANestedPassReleasesOnlyTheObjectsThatWereAddedInIt) {
  Weak<Mortal> outer;
  Weak<Mortal> inner;
  later([&] {
    outer = handOver("outer");
    later([&] { inner = handOver("inner"); });
    loop.pump();
    EXPECT_TRUE(inner.expired());
    EXPECT_FALSE(outer.expired());
  });
  loop.pump();
  EXPECT_EQ(died, (std::vector<std::string>{"inner", "outer"}));
}

TEST_F(ReleasePoolTest, AnObjectAddedBetweenPassesOutlivesANestedPass) {
  const Weak<Mortal> object = handOver("between");
  later([&] {
    loop.pump();
    EXPECT_FALSE(object.expired());
  });
  loop.pump();
  EXPECT_TRUE(object.expired());
}

TEST_F(ReleasePoolTest, ReleasesInTheOrderOfAdding) {
  handOver("first");
  handOver("second");
  loop.pump();
  EXPECT_EQ(died, (std::vector<std::string>{"first", "second"}));
}

TEST_F(ReleasePoolTest, AnObjectThatADestructorAddsIsReleasedInTheSameDrain) {
  releaseLater(make<Mortal>([this] { handOver("heir"); }));
  loop.pump();
  EXPECT_EQ(died, std::vector<std::string>{"heir"});
  EXPECT_EQ(ReleasePool::current().size(), 0u);
}

TEST_F(ReleasePoolTest, APassThatThrowsDrainsThePool) {
  Weak<Mortal> object;
  later([&] {
    object = handOver("first");
    throw std::runtime_error("stop");
  });
  EXPECT_THROW(loop.pump(), std::runtime_error);
  EXPECT_TRUE(object.expired());
}

TEST_F(ReleasePoolTest, AnObjectThatIsAddedTwiceIsDestroyedOnce) {
  const Weak<Mortal> object = handOver("first");
  releaseLater(object.lock());
  loop.pump();
  EXPECT_EQ(died.size(), 1u);
}

TEST_F(ReleasePoolTest, OnAnotherThreadReleasesWhenTheThreadEnds) {
  Weak<Mortal> object;
  bool aliveAtTheEnd = false;
  std::thread([&] {
    object = handOver("first");
    aliveAtTheEnd = !object.expired();
  }).join();
  EXPECT_TRUE(aliveAtTheEnd);
  EXPECT_TRUE(object.expired());
}

TEST_F(ReleasePoolTest, ADestructorAtTheEndOfAThreadMayAddObjects) {
  std::thread([this] { releaseLater(make<Mortal>([this] { handOver("heir"); })); }).join();
  EXPECT_EQ(died, std::vector<std::string>{"heir"});
}

}  // namespace
}  // namespace vel::test
