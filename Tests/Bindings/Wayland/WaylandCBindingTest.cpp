// Tests of the C interface with a Wayland window of the host.
#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

#include "Bindings/C/vel_launch_screen.h"
#include "Tests/Support/Wayland/SurfaceHost.h"
#include "Tests/Support/Wayland/Sway.h"
#include "Tests/WindowSystem/Reports.h"

namespace vel::test {
namespace {

using testing::Contains;
using testing::ElementsAre;

constexpr std::uint32_t kGreen = 0x208040;
constexpr PixelRect kWindowArea{262, 224, 500, 320};  // sway centres the window of the host

/// A launch screen over the window of `host`. Records its callbacks in `calls`.
class WaylandCBinding : public testing::Test {
 protected:
  WaylandCBinding() {
    callbacks.user_data = &calls;
    callbacks.will_appear = [](void* list) { record(list, "will_appear"); };
    callbacks.did_disappear = [](void* list) { record(list, "did_disappear"); };
    callbacks.record_event = [](void* list, const char* event) { record(list, event); };
    callbacks.log_line = [](void* /*list*/, const char* /*line*/) {};
    callbacks.controls_kept = [](void* list, std::uint32_t controls) {
      record(list, "controls_kept " + std::to_string(controls));
    };
    callbacks.take_controls = [](void* list, std::uint32_t controls) {
      record(list, "take_controls " + std::to_string(controls));
    };
    callbacks.display_lost = [](void* list, const char* /*reason*/) {
      record(list, "display_lost");
    };
    callbacks.ended = [](void* list, VelEndReason reason) {
      record(list, "ended " + std::to_string(reason));
    };
  }
  ~WaylandCBinding() override { vel_destroy(&screen); }

  void create(const char* display = "auto", bool passesToplevel = true) {
    const WaylandSurface surface = host.window();
    VelHostWindow window = VEL_HOST_WINDOW_INIT;
    window.wl_display = surface.display;
    window.wl_surface = surface.surface;
    window.xdg_toplevel = passesToplevel ? surface.toplevel : nullptr;
    window.width = surface.size.width;
    window.height = surface.size.height;
    VelCreateOptions options = VEL_CREATE_OPTIONS_INIT;
    options.display = display;
    options.callbacks = &callbacks;
    options.host_window = &window;
    ASSERT_EQ(vel_create(&options, &screen), VEL_OK) << vel_last_error();
  }
  void present(double seconds) {
    VelRequest request = VEL_REQUEST_INIT;
    request.event = "launch_end";
    request.seconds = seconds;
    ASSERT_EQ(vel_request(screen, &request), VEL_OK) << vel_last_error();
    ASSERT_EQ(vel_present(screen, VEL_PRESENT_EMBEDDED), VEL_OK) << vel_last_error();
  }
  /// Pumps the library and the host until the condition is true.
  bool pumpUntil(const std::function<bool()>& condition) {
    return eventually([&] {
      host.pump();
      EXPECT_EQ(vel_pump(screen, nullptr), VEL_OK);
      return condition();
    });
  }
  bool windowBecomes(std::uint32_t color) {
    return pumpUntil([this, color] { return sway.picture(kWindowArea).isAll(color); });
  }
  [[nodiscard]] VelPause pauseReason() const {
    VelPause reason = VEL_PAUSE_NONE;
    EXPECT_EQ(vel_pause_reason(screen, &reason), VEL_OK);
    return reason;
  }
  [[nodiscard]] bool hasCall(const std::string& call) const {
    return std::ranges::find(calls, call) != calls.end();
  }

  std::vector<std::string> calls;
  VelCallbacks callbacks = VEL_CALLBACKS_INIT;
  VelLaunchScreen* screen = nullptr;
  Sway sway;
  SurfaceHost host{sway.display(), "game", {500, 320}, kGreen};

 private:
  static void record(void* list, const std::string& call) {
    static_cast<std::vector<std::string>*>(list)->push_back(call);
  }
};

TEST_F(WaylandCBinding, TheLibraryCallsTheCallbacksInOrder) {
  create();
  present(1.5);
  ASSERT_TRUE(windowBecomes(kWhite));
  // "ended 1": VEL_END_TIME_USED_UP.
  ASSERT_TRUE(pumpUntil([this] { return hasCall("ended 1") && hasCall("take_controls 0"); }));
  EXPECT_TRUE(windowBecomes(kGreen));
  std::vector<std::string> controlCalls;
  std::erase_if(calls, [&controlCalls](const std::string& call) {
    const bool isControlCall = call.find("controls") != std::string::npos;
    if (isControlCall) {
      controlCalls.push_back(call);
    }
    return isControlCall;
  });
  EXPECT_THAT(calls, ElementsAre("will_appear", "did_disappear", "launch_end", "ended 1"));
  // 6: the close and miniaturise controls. The library disables resizing itself, because the host
  // passes its xdg_toplevel.
  EXPECT_THAT(controlCalls, ElementsAre("controls_kept 6", "take_controls 6", "controls_kept 0",
                                        "take_controls 0"));
}

TEST_F(WaylandCBinding, AsksTheHostToRemoveTheResizeControlIfItPassesNoToplevel) {
  create("wayland", false);
  present(60);
  // 14: the close, miniaturise and resize controls.
  EXPECT_TRUE(pumpUntil([this] { return hasCall("take_controls 14"); }));
}

TEST_F(WaylandCBinding, DestroyingTheLaunchScreenAsksTheHostToRestoreItsControls) {
  create("wayland", false);
  present(60);
  ASSERT_TRUE(pumpUntil([this] { return hasCall("take_controls 14"); }));
  calls.clear();
  ASSERT_EQ(vel_destroy(&screen), VEL_OK);
  // "ended 5": VEL_END_DESTROYED.
  EXPECT_THAT(calls, ElementsAre("take_controls 0", "ended 5"));
}

TEST_F(WaylandCBinding, TheTakeControlsCallbackCanDestroyTheLaunchScreen) {
  struct CallbackData {
    VelLaunchScreen** screen;
    std::vector<std::uint32_t> receivedControls;
  } callbackData{&screen, {}};
  callbacks = VEL_CALLBACKS_INIT;
  callbacks.user_data = &callbackData;
  callbacks.take_controls = [](void* userData, std::uint32_t controls) {
    auto& data = *static_cast<CallbackData*>(userData);
    data.receivedControls.push_back(controls);
    vel_destroy(data.screen);
  };
  create("wayland", false);
  present(60);
  ASSERT_TRUE(eventually([&] {
    host.pump();
    return vel_pump(screen, nullptr) != VEL_OK || screen == nullptr;
  }));
  EXPECT_THAT(callbackData.receivedControls, ElementsAre(14U, 0U));
}

TEST_F(WaylandCBinding, DestroyingAnEndedLaunchScreenDoesNotRestoreTheControlsAgain) {
  create("wayland", false);
  present(0.5);
  ASSERT_TRUE(pumpUntil([this] { return hasCall("take_controls 0"); }));
  calls.clear();
  ASSERT_EQ(vel_destroy(&screen), VEL_OK);
  EXPECT_THAT(calls, testing::Not(Contains("take_controls 0")));
}

TEST_F(WaylandCBinding, TheCountdownPausesWhileAnotherApplicationHasTheFocus) {
  create();
  present(60);
  ASSERT_TRUE(windowBecomes(kWhite));
  ASSERT_TRUE(pumpUntil([this] { return pauseReason() == VEL_PAUSE_NONE; }));
  const SurfaceHost other(sway.display(), "other", {100, 100}, 0x804020);
  EXPECT_TRUE(pumpUntil([this] { return pauseReason() == VEL_PAUSE_NOT_IN_FRONT; }));
  sway.focusWindow("game");
  EXPECT_TRUE(pumpUntil([this] { return pauseReason() == VEL_PAUSE_NONE; }));
}

TEST_F(WaylandCBinding, VelResizedResizesTheCoverAndRefusesInvalidSizes) {
  create();
  present(60);
  ASSERT_TRUE(windowBecomes(kWhite));
  sway.resizeWindow("game", 700, 450);
  ASSERT_TRUE(pumpUntil([this] { return host.size() == CGSize{700, 450}; }));
  ASSERT_EQ(vel_resized(screen, 700, 450), VEL_OK) << vel_last_error();
  // The cover needs no vel_pump() to get its new size.
  EXPECT_TRUE(eventually([this] {
    host.pump();
    const Picture picture = sway.picture({0, 0, 1024, 768});
    // A point in the previous area of the window, and a point to the right of this area.
    return picture.at(262, 224) == kWhite && picture.at(261 + 500 + 90, 224) == kWhite &&
           !picture.colors().contains(kGreen);
  }));
  EXPECT_EQ(vel_resized(screen, 0, 450), VEL_INVALID_ARGUMENT);
  EXPECT_EQ(vel_resized(screen, 700, 32768), VEL_INVALID_ARGUMENT);
}

TEST_F(WaylandCBinding, VelResizedFailsWithoutASurfaceOfTheHost) {
  VelCreateOptions options = VEL_CREATE_OPTIONS_INIT;
  options.display = "headless";
  ASSERT_EQ(vel_create(&options, &screen), VEL_OK) << vel_last_error();
  EXPECT_EQ(vel_resized(screen, 700, 450), VEL_BAD_WINDOW);
}

TEST_F(WaylandCBinding, AWaylandSurfaceIsABadWindowOnTheHeadlessDisplay) {
  const WaylandSurface surface = host.window();
  VelHostWindow window = VEL_HOST_WINDOW_INIT;
  window.wl_display = surface.display;
  window.wl_surface = surface.surface;
  window.width = 500;
  window.height = 320;
  VelCreateOptions options = VEL_CREATE_OPTIONS_INIT;
  options.display = "headless";
  options.host_window = &window;
  EXPECT_EQ(vel_create(&options, &screen), VEL_BAD_WINDOW);
}

TEST_F(WaylandCBinding, DestroyingTheLaunchScreenRemovesTheCover) {
  create();
  present(60);
  ASSERT_TRUE(windowBecomes(kWhite));
  ASSERT_EQ(vel_destroy(&screen), VEL_OK);
  EXPECT_TRUE(eventually([this] {
    host.pump();
    return sway.picture(kWindowArea).isAll(kGreen);
  }));
}

TEST_F(WaylandCBinding, AKilledCompositorIsReported) {
  create();
  present(60);
  ASSERT_TRUE(windowBecomes(kWhite));
  sway.kill();
  // "ended 4": VEL_END_DISPLAY_LOST.
  EXPECT_TRUE(eventually([this] {
    EXPECT_EQ(vel_pump(screen, nullptr), VEL_OK);
    return hasCall("ended 4");
  }));
  EXPECT_THAT(calls, Contains("display_lost"));
}

}  // namespace
}  // namespace vel::test
