// The C interface on an X11 display.
#include <gmock/gmock.h>
#include <poll.h>

#include <filesystem>

#include "Bindings/C/vel_launch_screen.h"
#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

using testing::Contains;
using testing::StartsWith;

constexpr PixelRect kGameFrame{200, 150, 640, 400};
constexpr std::uint32_t kGreen = 0x208040;
// The library sets this property to remove controls, such as the close button, from a window.
constexpr std::string_view kMotifHints = "_MOTIF_WM_HINTS";

/// A host that uses the C interface. `records` lists the callbacks that the library has called.
/// For `record_event`, it lists the name of the event.
class X11CBinding : public X11TestWithManager {
 protected:
  X11CBinding() {
    callbacks.user_data = &records;
    callbacks.will_appear = [](void* list) { record(list, "will_appear"); };
    callbacks.did_disappear = [](void* list) { record(list, "did_disappear"); };
    callbacks.record_event = [](void* list, const char* event) { record(list, event); };
    callbacks.log_line = [](void* /*list*/, const char* /*line*/) {};
    callbacks.controls_kept = [](void* list, std::uint32_t controls) {
      record(list, "controls_kept " + std::to_string(controls));
    };
    callbacks.display_lost = [](void* list, const char* /*reason*/) {
      record(list, "display_lost");
    };
  }
  ~X11CBinding() override { vel_destroy(&screen); }

  VelStatus create(std::uint64_t window) {
    VelCreateOptions options = VEL_CREATE_OPTIONS_INIT;
    options.display = "x11";
    options.display_name = server.display().c_str();
    options.window = window;
    options.callbacks = &callbacks;
    return vel_create(&options, &screen);
  }
  void present(double seconds) {
    VelRequest request = VEL_REQUEST_INIT;
    request.event = "launch_end";
    request.seconds = seconds;
    ASSERT_EQ(vel_request(screen, &request), VEL_OK) << vel_last_error();
    ASSERT_EQ(vel_present(screen, VEL_PRESENT_EMBEDDED), VEL_OK) << vel_last_error();
  }
  /// Polls the descriptor and pumps until the condition is true. Returns false after kMaximumPolls
  /// polls.
  bool pumpUntil(const std::function<bool()>& condition) {
    constexpr int kMaximumPolls = 3000;
    int descriptor = -1;
    EXPECT_EQ(vel_poll_descriptor(screen, &descriptor), VEL_OK);
    for (int round = 0; round < kMaximumPolls && !condition(); ++round) {
      pollfd input{.fd = descriptor, .events = POLLIN, .revents = 0};
      poll(&input, 1, 10);
      EXPECT_EQ(vel_pump(screen, nullptr), VEL_OK);
    }
    return condition();
  }
  [[nodiscard]] bool isRecorded(const std::string& line) const {
    return std::ranges::find(records, line) != records.end();
  }

  xcb_window_t game = client.openGameWindow(kGameFrame, kGreen);
  std::vector<std::string> records;
  VelCallbacks callbacks = VEL_CALLBACKS_INIT;
  VelLaunchScreen* screen = nullptr;

 private:
  static void record(void* list, const std::string& line) {
    static_cast<std::vector<std::string>*>(list)->push_back(line);
  }
};

TEST_F(X11CBinding, TheLaunchScreenCoversTheHostsWindowAndRestoresItAtTheEnd) {
  ASSERT_EQ(create(game), VEL_OK) << vel_last_error();
  present(0.5);
  EXPECT_TRUE(pumpUntil([this] { return client.screenPicture(game).isAll(kWhite); }));
  EXPECT_TRUE(client.property(game, kMotifHints).has_value());
  EXPECT_TRUE(pumpUntil([this] { return isRecorded("launch_end"); }));
  EXPECT_TRUE(pumpUntil([this] { return !client.property(game, kMotifHints).has_value(); }));
  EXPECT_TRUE(pumpUntil([this] { return !client.screenPicture(game).isAll(kWhite); }));
  EXPECT_EQ(records.front(), "will_appear");
  EXPECT_THAT(records, Contains(StartsWith("controls_kept ")));
}

// A game may present the launch screen before it maps its window, and then load for a long time
// without calling vel_pump.
TEST_F(X11CBinding, AWindowMappedAfterVelPresentBecomesWhiteWithoutVelPump) {
  const xcb_window_t hiddenWindow = client.makeWindow(kGameFrame, kGreen);
  ASSERT_EQ(create(hiddenWindow), VEL_OK) << vel_last_error();
  present(60);
  client.map(hiddenWindow);
  const auto isWhite = [&] {
    return client.isViewable(hiddenWindow) && client.screenPicture(hiddenWindow).isAll(kWhite);
  };
  EXPECT_TRUE(eventually(isWhite));
  EXPECT_EQ(vel_pump(screen, nullptr), VEL_OK);
  EXPECT_TRUE(eventually(isWhite));
}

TEST_F(X11CBinding, DestroyingTheLaunchScreenRestoresTheWindow) {
  ASSERT_EQ(create(game), VEL_OK) << vel_last_error();
  present(60);
  EXPECT_TRUE(pumpUntil([this] { return client.screenPicture(game).isAll(kWhite); }));
  ASSERT_EQ(vel_destroy(&screen), VEL_OK);
  EXPECT_TRUE(waitFor([this] { return !client.property(game, kMotifHints).has_value(); }));
  EXPECT_TRUE(waitFor([this] { return client.children(game).empty(); }));
  EXPECT_FALSE(isRecorded("did_disappear"));
}

TEST_F(X11CBinding, RefusesAWindowThatDoesNotExist) {
  const xcb_window_t destroyedWindow = client.makeWindow(kGameFrame, kGreen);
  client.destroy(destroyedWindow);
  client.waitForServer();
  // An X11 identifier has 32 bits. The last `id` differs from `game` only in a higher bit.
  for (const std::uint64_t id : {std::uint64_t{destroyedWindow}, std::uint64_t{1},
                                 ~std::uint64_t{0}, (std::uint64_t{1} << 32) + game}) {
    EXPECT_EQ(create(id), VEL_BAD_WINDOW) << id;
    EXPECT_STRNE(vel_last_error(), "");
    EXPECT_EQ(screen, nullptr);
  }
  EXPECT_EQ(create(game), VEL_OK) << vel_last_error();
}

TEST_F(X11CBinding, CreatingAndDestroyingLeavesNoDescriptorOpen) {
  const auto descriptorCount = [] {
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return std::distance(begin(descriptors), end(descriptors));
  };
  const auto createAndDestroy = [this] {
    ASSERT_EQ(create(game), VEL_OK) << vel_last_error();
    present(60);
    ASSERT_EQ(vel_destroy(&screen), VEL_OK);
  };
  createAndDestroy();  // the run loop opens descriptors and keeps them
  const auto countBefore = descriptorCount();
  for (int round = 0; round < 20; ++round) {
    createAndDestroy();
  }
  EXPECT_EQ(descriptorCount(), countBefore);
}

TEST_F(X11CBinding, ALostDisplayIsReported) {
  ASSERT_EQ(create(game), VEL_OK) << vel_last_error();
  present(60);
  server.kill();
  EXPECT_TRUE(pumpUntil([this] { return isRecorded("display_lost"); }));
  EXPECT_EQ(vel_present(screen, VEL_PRESENT_EMBEDDED), VEL_NOTHING_TO_PRESENT);
  EXPECT_EQ(vel_destroy(&screen), VEL_OK);
}

}  // namespace
}  // namespace vel::test
