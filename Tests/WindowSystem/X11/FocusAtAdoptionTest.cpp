#include <gmock/gmock.h>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

constexpr PixelRect kGame{200, 150, 640, 400};
constexpr PixelRect kOther{900, 150, 200, 200};

class X11FocusAtAdoption : public X11TestWithManager {
 protected:
  xcb_window_t openFocused(PixelRect frame) {
    const xcb_window_t window = user.openGame(frame, 0);
    EXPECT_TRUE(waitFor([&] { return user.focused() == window; }));
    return window;
  }
  /// As the user does it: with a click, some time after what went before.
  void userGoesTo(xcb_window_t window) {
    const xcb_timestamp_t before = user.time(window);
    ASSERT_TRUE(waitFor([&] { return user.time(window) > before; }));
    const PixelRect place = user.frameOf(window);
    user.click(place.x + place.width / 2, place.y + place.height / 2);
    user.noteUserTime(window);
    ASSERT_TRUE(waitFor([&] { return user.focused() == window; }));
  }
};

TEST_F(X11FocusAtAdoption, IsNotTakenBackFromAProgramThatTheUserWentTo) {
  const xcb_window_t third = openFocused({10, 600, 100, 100});
  const xcb_window_t other = openFocused(kOther);
  const AdoptedWindow found = adopt(openFocused(kGame));
  ASSERT_TRUE(found.hasFocus);
  userGoesTo(other);
  ASSERT_TRUE(waitFor([&] { return reports.contains("deactivated"); }));
  system().requestFocus(found.handle);
  deliver();
  // What the manager is asked for later, it does later.
  user.iconify(third);
  ASSERT_TRUE(waitFor([&] { return !user.isViewable(third); }));
  EXPECT_EQ(user.focused(), other);
}

}  // namespace
}  // namespace vel::test
