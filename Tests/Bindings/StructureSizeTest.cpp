// A program that was built with an earlier version of the library may pass smaller structures.
#include <array>
#include <cstddef>
#include <cstring>

#include "Tests/Bindings/CScreen.h"

namespace vel::test {
namespace {

// Structure sizes in version 1.0, on systems with 64-bit pointers. Do not change these constants.
constexpr std::size_t kFirstVersionCallbacksSize = 80;
constexpr std::size_t kFirstVersionCreateOptionsSize = 72;
constexpr std::size_t kFirstVersionRequestSize = 32;

/// A structure with its size in version 1.0. Other data follows the structure, so the library must
/// not read more than `Size` bytes.
template <class Structure, std::size_t Size>
struct FirstVersionStructure {
  explicit FirstVersionStructure(Structure structure) {
    structure.size = Size;
    memory.fill(0xa5);
    std::memcpy(memory.data(), &structure, Size);
  }
  [[nodiscard]] const Structure* get() const {
    return reinterpret_cast<const Structure*>(memory.data());
  }
  alignas(Structure) std::array<unsigned char, sizeof(Structure) + 64> memory;
};

class StructureSizeTest : public testing::Test {
 protected:
  ~StructureSizeTest() override { vel_destroy(&screen); }
  VelLaunchScreen* screen = nullptr;
};

TEST_F(StructureSizeTest, AProgramBuiltForTheFirstVersionCanShowALaunchScreen) {
  CHost host;
  const FirstVersionStructure<VelCallbacks, kFirstVersionCallbacksSize> callbacks(host.callbacks());
  const FirstVersionStructure<VelCreateOptions, kFirstVersionCreateOptionsSize> options(
      virtualTimeOptions(callbacks.get()));
  const FirstVersionStructure<VelRequest, kFirstVersionRequestSize> request(
      makeRequest("launch_end", 1));
  ASSERT_EQ(vel_create(options.get(), &screen), VEL_OK) << vel_last_error();
  ASSERT_EQ(vel_request(screen, request.get()), VEL_OK) << vel_last_error();
  ASSERT_EQ(vel_present(screen, VEL_PRESENT_EMBEDDED), VEL_OK) << vel_last_error();
  ASSERT_EQ(vel_run(screen, 10), VEL_OK);
  EXPECT_EQ(host.callbackLines,
            (std::vector<std::string>{"state_changed 3", "will_appear", "may_disappear",
                                      "did_disappear", "record_event launch_end"}));
}

TEST_F(StructureSizeTest, VelCreateReadsTheWindowFromOptionsOfTheFirstVersion) {
  VelCreateOptions currentOptions = virtualTimeOptions();
  currentOptions.window = 4711;
  const FirstVersionStructure<VelCreateOptions, kFirstVersionCreateOptionsSize> options(
      currentOptions);
  // The headless display refuses every window of a host, so VEL_BAD_WINDOW shows that the library
  // has read `window`.
  EXPECT_EQ(vel_create(options.get(), &screen), VEL_BAD_WINDOW);
}

TEST_F(StructureSizeTest, AnUnknownSizeOfVelCallbacksIsRefused) {
  for (const std::size_t size : {std::size_t{0}, sizeof(std::size_t),
                                 kFirstVersionCallbacksSize - 8, kFirstVersionCallbacksSize - 1,
                                 kFirstVersionCallbacksSize + 1, kFirstVersionCallbacksSize + 4}) {
    VelCallbacks callbacks = VEL_CALLBACKS_INIT;
    callbacks.size = size;
    const VelCreateOptions options = virtualTimeOptions(&callbacks);
    EXPECT_EQ(vel_create(&options, &screen), VEL_INVALID_ARGUMENT) << size;
  }
}

}  // namespace
}  // namespace vel::test
