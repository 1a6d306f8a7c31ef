// The back end restores the controls (close, miniaturise, resize) of a window while the window
// manager is busy. SIGSTOP simulates the busy window manager.
#include <gmock/gmock.h>

#include <csignal>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

constexpr PixelRect kGame{200, 150, 640, 400};
constexpr std::uint32_t kGreen = 0x208040;
constexpr NSWindowStyleMask kAllControls = 15;
constexpr std::uint32_t kIconicState = 3;

class X11BusyManager : public X11Test {
 protected:
  X11BusyManager() : X11Test(Manager::Xfwm4) {}
};

// To restore the controls, the back end writes hints that allow all controls. Later it deletes the
// hints. xfwm4 ignores the deletion, so it must have read the hints before the deletion.
TEST_F(X11BusyManager, TheControlsAreRestoredEvenIfTheManagerReadsTheHintsLate) {
  const xcb_window_t game = client.openGameWindow(kGame, kGreen);
  ASSERT_TRUE(waitFor([&] { return client.isViewable(game); }));
  deliverFor(0.2);  // xfwm4 adds its frame
  const WindowHandle handle = adopt(game).handle;
  system().setScene(handle, whiteScene({640, 400}));
  system().setStyleMask(handle, NSWindowStyleMaskTitled);
  ASSERT_TRUE(waitFor([&] { return reports.count("remaining controls") > 0; }));

  managerProcess.signal(SIGSTOP);
  system().setScene(handle, {});
  system().setStyleMask(handle, kAllControls);
  deliverFor(0.5);
  managerProcess.signal(SIGCONT);

  EXPECT_TRUE(waitFor([&] { return client.property(game, "_MOTIF_WM_HINTS") == std::nullopt; }));
  deliverFor(0.2);  // xfwm4 draws the buttons
  const PixelRect area = client.areaOnScreen(game);
  client.click(area.x + area.width - 57, area.y - 14);  // the button that miniaturises
  EXPECT_TRUE(waitFor([&] { return client.numbers(game, "WM_STATE").front() == kIconicState; }));
}

}  // namespace
}  // namespace vel::test
