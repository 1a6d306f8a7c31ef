// Tests VelHostWindow, the structure that identifies the host's window.
#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <vector>

#include "Tests/Bindings/CScreen.h"

namespace vel::test {
namespace {

using testing::HasSubstr;

// These pointers are invalid. The headless display does not dereference them.
// NOLINTBEGIN(performance-no-int-to-ptr)
auto* const kDisplay = reinterpret_cast<wl_display*>(0x10);
auto* const kSurface = reinterpret_cast<wl_surface*>(0x20);
auto* const kToplevel = reinterpret_cast<xdg_toplevel*>(0x30);
auto* const kNSWindow = reinterpret_cast<void*>(0x40);
// NOLINTEND(performance-no-int-to-ptr)

VelHostWindow waylandWindow() {
  VelHostWindow window = VEL_HOST_WINDOW_INIT;
  window.wl_display = kDisplay;
  window.wl_surface = kSurface;
  window.xdg_toplevel = kToplevel;
  window.width = 640;
  window.height = 400;
  return window;
}

class HostWindowTest : public testing::Test {
 protected:
  ~HostWindowTest() override { vel_destroy(&screen); }

  VelStatus create(const VelHostWindow& window) {
    VelCreateOptions options = virtualTimeOptions();
    options.host_window = &window;
    return vel_create(&options, &screen);
  }
  /// Calls `change` with a valid Wayland window, and then `create` with the changed window.
  VelStatus createWithChangedWaylandWindow(const std::function<void(VelHostWindow&)>& change) {
    VelHostWindow window = waylandWindow();
    change(window);
    return create(window);
  }

  VelLaunchScreen* screen = nullptr;
};

TEST_F(HostWindowTest, TheHeadlessDisplayRefusesEachKindOfHostWindow) {
  VelHostWindow x11 = VEL_HOST_WINDOW_INIT;
  x11.x11_window = 4711;
  VelHostWindow cocoa = VEL_HOST_WINDOW_INIT;
  cocoa.ns_window = kNSWindow;
  VelHostWindow cocoaByNumber = VEL_HOST_WINDOW_INIT;
  cocoaByNumber.ns_window_number = 7;
  for (const VelHostWindow& window : {x11, cocoa, cocoaByNumber, waylandWindow()}) {
    EXPECT_EQ(create(window), VEL_BAD_WINDOW);
    EXPECT_THAT(vel_last_error(), HasSubstr("headless"));
    EXPECT_EQ(screen, nullptr);
  }
}

TEST_F(HostWindowTest, AHostWindowMustBelongToExactlyOneWindowSystem) {
  EXPECT_EQ(create(VEL_HOST_WINDOW_INIT), VEL_INVALID_ARGUMENT);
  EXPECT_EQ(createWithChangedWaylandWindow([](VelHostWindow& window) { window.x11_window = 1; }),
            VEL_INVALID_ARGUMENT);
  EXPECT_EQ(
      createWithChangedWaylandWindow([](VelHostWindow& window) { window.ns_window = kNSWindow; }),
      VEL_INVALID_ARGUMENT);
}

TEST_F(HostWindowTest, AWaylandWindowNeedsADisplayASurfaceAndAValidSize) {
  const std::vector<std::function<void(VelHostWindow&)>> changes{
      [](VelHostWindow& window) { window.wl_display = nullptr; },
      [](VelHostWindow& window) { window.wl_surface = nullptr; },
      [](VelHostWindow& window) { window.width = 0; },
      [](VelHostWindow& window) { window.height = 0.5; },
      [](VelHostWindow& window) { window.height = 32768; }};
  for (const auto& change : changes) {
    EXPECT_EQ(createWithChangedWaylandWindow(change), VEL_INVALID_ARGUMENT);
    EXPECT_STRNE(vel_last_error(), "");
  }
  // The headless display refuses a valid host window with VEL_BAD_WINDOW. So this result shows that
  // `xdg_toplevel` is optional.
  EXPECT_EQ(
      createWithChangedWaylandWindow([](VelHostWindow& window) { window.xdg_toplevel = nullptr; }),
      VEL_BAD_WINDOW);
}

TEST_F(HostWindowTest, OptionsMustNotSetBothWindowMembers) {
  const VelHostWindow window = waylandWindow();
  VelCreateOptions options = virtualTimeOptions();
  options.window = 4711;
  options.host_window = &window;
  EXPECT_EQ(vel_create(&options, &screen), VEL_INVALID_ARGUMENT);
}

TEST_F(HostWindowTest, ATooSmallSizeAndANonzeroUnknownMemberAreRefused) {
  EXPECT_EQ(createWithChangedWaylandWindow([](VelHostWindow& window) { --window.size; }),
            VEL_INVALID_ARGUMENT);
  struct LaterVersionHostWindow {
    VelHostWindow known;
    std::uint64_t unknown;
  } later{waylandWindow(), 1};
  later.known.size = sizeof later;
  EXPECT_EQ(create(later.known), VEL_INVALID_ARGUMENT);
  later.unknown = 0;
  // The headless display refuses a valid host window with VEL_BAD_WINDOW.
  EXPECT_EQ(create(later.known), VEL_BAD_WINDOW);
}

}  // namespace
}  // namespace vel::test
