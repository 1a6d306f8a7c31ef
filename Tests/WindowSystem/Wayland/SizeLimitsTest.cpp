// The minimum and maximum size of an adopted window while the user cannot resize it.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Platform/WindowSystem/Wayland/WaylandWindowSystem.h"
#include "Tests/Support/Wayland/SurfaceHost.h"
#include "Tests/Support/Wayland/Sway.h"
#include "Tests/WindowSystem/Reports.h"

namespace vel::test {
namespace {

constexpr std::uint32_t kGreen = 0x208040;
constexpr CGSize kSize{300, 200};
constexpr CGSize kLargeSize{400, 260};
constexpr int kBorder = 20;
constexpr int kDragDistance = 60;

/// The back end adopts the window of `host`. The compositor draws a border around the window. The
/// user can drag the border to resize the window.
class WaylandSizeLimits : public testing::Test {
 protected:
  WaylandSizeLimits() {
    std::string error;
    system = WaylandWindowSystem::share(host.display(), error);
    EXPECT_NE(system, nullptr) << error;
    const auto adopted = system->adoptWindow(host.window(), error);
    EXPECT_TRUE(adopted.has_value()) << error;
    window = adopted.value();
    sway.run("[title=game] border pixel " + std::to_string(kBorder));
  }

  bool waitFor(const std::function<bool()>& condition) {
    return deliverUntil(*system, [&] {
      host.pump();
      return condition();
    });
  }
  /// The area of the green pixels on the screen: the host's window without its border.
  [[nodiscard]] PixelRect hostArea() const {
    Picture picture = sway.picture();
    for (std::uint32_t& pixel : picture.pixels) {
      pixel = pixel == kGreen ? 1 : 0;
    }
    return picture.boundsOfPixelsExcept(0);
  }
  bool waitForSizeOnScreen(CGSize size) {
    return waitFor([&] {
      const PixelRect area = hostArea();
      return area.width == static_cast<int>(size.width) &&
             area.height == static_cast<int>(size.height);
    });
  }
  /// Drags the lower right corner of the border away from the window. Then clicks the window and
  /// waits until the host receives the click. The compositor has then handled the drag.
  void dragCorner() {
    const PixelRect area = hostArea();
    const int x = area.x + area.width + kBorder / 2;
    const int y = area.y + area.height + kBorder / 2;
    sway.drag(x, y, x + kDragDistance, y + kDragDistance);
    const int pressesBefore = host.presses();
    sway.click(area.x + area.width / 2, area.y + area.height / 2);
    ASSERT_TRUE(waitFor([&] { return host.presses() > pressesBefore; }));
    wl_display_roundtrip(host.display());
  }

  Sway sway;
  SurfaceHost host{sway.display(), "game", kSize, kGreen};
  std::unique_ptr<WaylandWindowSystem> system;
  AdoptedWindow window;
};

TEST_F(WaylandSizeLimits, TheUserCannotResizeTheWindowWhileResizingIsDisabled) {
  ASSERT_TRUE(waitForSizeOnScreen(kSize));
  system->setStyleMask(window.handle, NSWindowStyleMaskTitled);  // disables resizing
  dragCorner();
  EXPECT_EQ(host.size(), kSize);
  system->setStyleMask(window.handle, window.styleMask);
  dragCorner();
  EXPECT_TRUE(waitFor([this] { return host.size().width > kSize.width; }));
}

TEST_F(WaylandSizeLimits, SetFrameSetsTheLimitsToTheNewSize) {
  ASSERT_TRUE(waitForSizeOnScreen(kSize));
  system->setStyleMask(window.handle, NSWindowStyleMaskTitled);  // disables resizing
  // The size that sway sets includes the border.
  sway.resizeWindow("game", static_cast<int>(kLargeSize.width) + 2 * kBorder,
                    static_cast<int>(kLargeSize.height) + 2 * kBorder);
  ASSERT_TRUE(waitForSizeOnScreen(kLargeSize));
  system->setFrame(window.handle, {{}, kLargeSize});
  host.draw();  // commits the surface, which applies the new limits
  dragCorner();
  EXPECT_EQ(host.size(), kLargeSize);
}

}  // namespace
}  // namespace vel::test
