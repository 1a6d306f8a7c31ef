// Memory and file descriptors do not grow with the number of launch screens.
#include <malloc.h>

#include <filesystem>
#include <fstream>

#include "Tests/Bindings/CScreen.h"

namespace vel::test {
namespace {

struct ResourceUse {
  std::size_t bytes;        // allocated heap memory
  std::size_t pages;        // resident pages
  std::size_t descriptors;  // open file descriptors
};

ResourceUse currentResourceUse() {
  std::size_t totalPages = 0;
  std::size_t residentPages = 0;
  std::ifstream("/proc/self/statm") >> totalPages >> residentPages;
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return {mallinfo2().uordblks, residentPages,
          static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)))};
}

// Shows the launch screen in different ways, depending on `round`. Some rounds only request it.
void createAndDestroy(int round) {
  CHost host;
  const VelCallbacks callbacks = host.callbacks();
  VelCreateOptions options = virtualTimeOptions(&callbacks);
  options.time = round % 2 == 0 ? VEL_TIME_REAL : VEL_TIME_VIRTUAL;
  options.content_controller = round % 3 == 0 ? 1 : 0;
  VelLaunchScreen* screen = nullptr;
  ASSERT_EQ(vel_create(&options, &screen), VEL_OK) << vel_last_error();
  const VelRequest request = makeRequest("launch_end", 1);
  ASSERT_EQ(vel_request(screen, &request), VEL_OK);
  if (round % 5 != 0) {
    ASSERT_EQ(vel_present(screen, round % 5 < 3 ? VEL_PRESENT_EMBEDDED : VEL_PRESENT_MODAL),
              VEL_OK);
  }
  ASSERT_EQ(vel_pump(screen, nullptr), VEL_OK);
  if (options.time == VEL_TIME_VIRTUAL) {
    // Seven different times, so that launch screens are destroyed during and after the countdown.
    ASSERT_EQ(vel_run(screen, 0.3 * (round % 7)), VEL_OK);
  }
  ASSERT_EQ(vel_destroy(&screen), VEL_OK);
}

TEST(GrowthTest, MemoryAndDescriptorsDoNotGrow) {
  constexpr int kRounds = 10'000;
  constexpr int kWarmUpRounds = 500;  // until all caches are filled
  for (int round = 0; round < kWarmUpRounds; ++round) {
    createAndDestroy(round);
  }
  const ResourceUse before = currentResourceUse();
  for (int round = 0; round < kRounds; ++round) {
    createAndDestroy(round);
  }
  const ResourceUse after = currentResourceUse();
  // A leak of one byte per round fails the test.
  EXPECT_LT(after.bytes, before.bytes + kRounds);
  EXPECT_EQ(after.descriptors, before.descriptors);
  // A sanitizer allocates pages of its own. Under a sanitizer, mallinfo2 reports 0 bytes.
  if (before.bytes > 0) {
    EXPECT_LE(after.pages, before.pages + 64);  // 256 KiB
  }
}

}  // namespace
}  // namespace vel::test
