// What happens in every frame, or ten times a second, takes nothing from the heap. A program of its
// own, since it counts every allocation there is.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Tests/Support/LaunchScreenHost.h"

namespace {

std::size_t allocations = 0;

}  // namespace

// Every other form of `new` ends in this one. Not to be seen through by the compiler, which would
// take the two for strangers. NOLINTBEGIN(misc-new-delete-overloads)
[[gnu::noinline]] void* operator new(std::size_t size) {
  ++allocations;
  if (void* const memory = std::malloc(size == 0 ? 1 : size)) {
    return memory;
  }
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}
// NOLINTEND(misc-new-delete-overloads)

namespace vel::test {
namespace {

class Listener final : public Class<Listener, "Listener"> {
 public:
  void hear(const NSNotification& /*notification*/) { ++heard_; }
  [[nodiscard]] int heard() const { return heard_; }

 private:
  int heard_ = 0;
};

/// How many allocations `work` makes, once everything has been done that is done only once.
template <class Work>
std::size_t allocationsOf(Work work) {
  work();
  const std::size_t before = allocations;
  for (int round = 0; round < 100; ++round) {
    work();
  }
  return allocations - before;
}

class AllocationTest : public LaunchScreenTest {
 protected:
  AllocationTest() {
    load(3600);
    present(openPlayerWindow(), kHostModeEmbedded);
    platform.run(1);
  }
};

TEST_F(AllocationTest, IsCountedAtAll) {
  EXPECT_EQ(allocationsOf([] { delete new Listener; }), 100u);
}

TEST_F(AllocationTest, ATickOfTheCountdownMakesNone) {
  const double before = timeLeft();
  EXPECT_EQ(allocationsOf([this] { platform.run(0.1); }), 0u);
  EXPECT_NEAR(before - timeLeft(), 10.1, 1e-6);
}

TEST_F(AllocationTest, AnIdlePumpMakesNone) {
  EXPECT_EQ(allocationsOf([] { NSRunLoop::mainRunLoop().pump(); }), 0u);
}

TEST_F(AllocationTest, PostingANotificationMakesNone) {
  NSNotificationCenter center;
  const auto listener = make<Listener>();
  center.addObserverSelectorNameObject<&Listener::hear>(listener, "tick", nullptr);
  EXPECT_EQ(allocationsOf([&] { center.postNotificationNameObject("tick", listener); }), 0u);
  EXPECT_EQ(listener->heard(), 101);
}

TEST_F(AllocationTest, AMessageMakesNone) {
  const auto listener = make<Listener>();
  const Strong<Listener> none;
  EXPECT_EQ(allocationsOf([&] {
              send(listener, &Listener::heard);
              send(none, &Listener::heard);
            }),
            0u);
}

}  // namespace
}  // namespace vel::test
