// Frequent operations must not allocate memory. These tests are a separate program, because they
// replace `operator new` to count allocations.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Tests/Support/LaunchScreenHost.h"

namespace {

std::size_t allocationCount = 0;

}  // namespace

// The standard library's other forms of `new` call this function, except the forms for over-aligned
// types.
// `noinline` prevents a false compiler warning that `malloc` and `delete` do not match.
// NOLINTBEGIN(misc-new-delete-overloads)
[[gnu::noinline]] void* operator new(std::size_t size) {
  ++allocationCount;
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
  void receive(const NSNotification& /*notification*/) { ++receivedCount_; }
  [[nodiscard]] int receivedCount() const { return receivedCount_; }

 private:
  int receivedCount_ = 0;
};

/// Returns the number of allocations in 100 calls of `work`. Calls `work` once before it counts,
/// because the first call may fill caches.
template <class Work>
std::size_t countAllocations(Work work) {
  work();
  const std::size_t countBefore = allocationCount;
  for (int round = 0; round < 100; ++round) {
    work();
  }
  return allocationCount - countBefore;
}

class AllocationTest : public LaunchScreenTest {
 protected:
  AllocationTest() {
    load(3600);  // an hour, so that the countdown does not end during a test
    present(openPlayerWindow(), kHostModeEmbedded);
    platform.run(1);
  }
};

TEST_F(AllocationTest, EachUseOfOperatorNewIsCounted) {
  EXPECT_EQ(countAllocations([] { delete new Listener; }), 100u);
}

TEST_F(AllocationTest, ATickOfTheCountdownDoesNotAllocate) {
  const double timeLeftBefore = timeLeft();
  EXPECT_EQ(countAllocations([this] { platform.run(0.1); }), 0u);
  EXPECT_NEAR(timeLeftBefore - timeLeft(), 10.1, 1e-6);  // 101 calls of `run`
}

TEST_F(AllocationTest, AnIdlePumpDoesNotAllocate) {
  EXPECT_EQ(countAllocations([] { NSRunLoop::mainRunLoop().pump(); }), 0u);
}

TEST_F(AllocationTest, PostingANotificationDoesNotAllocate) {
  NSNotificationCenter center;
  const auto listener = make<Listener>();
  center.addObserverSelectorNameObject<&Listener::receive>(listener, "tick", nullptr);
  EXPECT_EQ(countAllocations([&] { center.postNotificationNameObject("tick", listener); }), 0u);
  EXPECT_EQ(listener->receivedCount(), 101);
}

TEST_F(AllocationTest, SendDoesNotAllocate) {
  const auto listener = make<Listener>();
  const Strong<Listener> nullListener;
  EXPECT_EQ(countAllocations([&] {
              send(listener, &Listener::receivedCount);
              send(nullListener, &Listener::receivedCount);
            }),
            0u);
}

}  // namespace
}  // namespace vel::test
