// What window managers do to a covered window: they move it, one replaces the other, and not all of
// them say what they allow.
#include <gmock/gmock.h>

#include <array>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

using testing::IsEmpty;

constexpr PixelRect kGame{200, 150, 640, 400};
constexpr std::uint32_t kGreen = 0x208040;

std::string nameOf(const testing::TestParamInfo<Manager>& tested) {
  return tested.param == Manager::Metacity ? "Metacity" : "Openbox";
}

class X11Managers : public X11Test, public testing::WithParamInterface<Manager> {
 protected:
  void openCovered() {
    game = user.openGame(kGame, kGreen);
    ASSERT_TRUE(waitFor([&] { return user.isViewable(game); }));
    const AdoptedWindow found = adopt(game);
    handle = found.handle;
    system().setScene(handle, white(found.frame.size));
    system().setStyleMask(handle, NSWindowStyleMaskTitled);
    deliver();
  }
  [[nodiscard]] std::array<std::optional<Property>, 2> hints() const {
    return {user.property(game, "_MOTIF_WM_HINTS"), user.property(game, "WM_NORMAL_HINTS")};
  }
  [[nodiscard]] xcb_window_t mark() const {
    const auto marks = user.numbers(user.root(), "_NET_SUPPORTING_WM_CHECK");
    return marks.empty() ? xcb_window_t{XCB_WINDOW_NONE} : marks.front();
  }

  xcb_window_t game = 0;
  WindowHandle handle = WindowHandle::None;
};

TEST_P(X11Managers, MoveAWindowWithItsCoverAndLeaveItsSize) {
  startManager(GetParam());
  openCovered();
  const auto hintsBefore = hints();
  PixelRect place = user.frameOf(game);
  place.x += 130;
  place.y += 90;
  reports.lines.clear();
  user.configure(game, place);
  ASSERT_TRUE(waitFor([&] { return reports.count("frame") > 0; }));
  // Where it is now, whatever the manager has made of the wish.
  EXPECT_TRUE(waitFor([&] {
    const PixelRect now = user.frameOf(game);
    return reports.frame == CGRectMake(now.x, 960 - now.y - 400, 640, 400);
  }));
  EXPECT_GT(user.frameOf(game).x, kGame.x + 100);
  EXPECT_TRUE(waitFor([&] { return user.picture(game).isAll(kWhite); }));
  EXPECT_EQ(hints(), hintsBefore);
  EXPECT_THAT(log, IsEmpty());
}

TEST_P(X11Managers, AreReplacedOverACoveredWindow) {
  const bool fromMetacity = GetParam() == Manager::Metacity;
  const auto kept = [](bool byMetacity) { return byMetacity ? " 0" : " 6"; };
  startManager(GetParam());
  openCovered();
  const auto hintsCovered = hints();
  ASSERT_TRUE(waitFor(
      [&] { return reports.contains(line("controls kept", handle) + kept(fromMetacity)); }));
  reports.lines.clear();
  const xcb_window_t markBefore = mark();
  const Process next =
      server.start({fromMetacity ? "openbox" : "metacity", "--sm-disable", "--replace"});
  // The other one judges otherwise, and has been asked.
  EXPECT_TRUE(waitFor(
      [&] { return reports.contains(line("controls kept", handle) + kept(!fromMetacity)); }));
  EXPECT_NE(mark(), markBefore);
  EXPECT_EQ(hints(), hintsCovered);
  EXPECT_TRUE(waitFor([&] { return user.isViewable(game) && user.picture(game).isAll(kWhite); }));
  EXPECT_EQ(reports.count("destroyed"), 0);
  system().setScene(handle, {});
  system().setStyleMask(handle, 15);
  deliver();
  EXPECT_EQ(user.property(game, "_MOTIF_WM_HINTS"), std::nullopt);
  const std::array<std::uint32_t, 18> sizes{1 | 4};
  EXPECT_EQ(user.property(game, "WM_NORMAL_HINTS"),
            Property::ofNumbers(XCB_ATOM_WM_SIZE_HINTS, sizes));
  EXPECT_TRUE(waitFor([&] { return user.picture(game).isAll(kGreen); }));
  EXPECT_THAT(log, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(X11, X11Managers, testing::Values(Manager::Metacity, Manager::Openbox),
                         nameOf);

/// The test itself says that it manages windows, and that it can nothing but give the focus.
class X11PlainManager : public X11Managers {
 protected:
  X11PlainManager() {
    const xcb_window_t itsMark = user.makeWindow({-10, -10, 1, 1}, 0);
    const std::array mark{itsMark};
    const std::array supported{user.atom("_NET_ACTIVE_WINDOW")};
    for (const xcb_window_t window : {itsMark, user.root()}) {
      user.setProperty(window, "_NET_SUPPORTING_WM_CHECK",
                       Property::ofNumbers(XCB_ATOM_WINDOW, mark));
    }
    user.setProperty(user.root(), "_NET_SUPPORTED", Property::ofNumbers(XCB_ATOM_ATOM, supported));
  }
};

TEST_F(X11PlainManager, WithoutAllowedActionsSaysNothingOfControls) {
  openCovered();
  EXPECT_LT(system().nextDeadline(), kNever);  // it has its time
  EXPECT_TRUE(waitFor([&] { return system().nextDeadline() == kNever; }));
  EXPECT_EQ(reports.count("controls kept"), 0);
  EXPECT_NE(user.property(game, "_MOTIF_WM_HINTS"), std::nullopt);
}

TEST_F(X11PlainManager, IsAskedForTheFocusAndNobodyElseGivesIt) {
  openCovered();
  user.selectEvents(user.root(), XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
  user.events();
  system().requestFocus(handle);
  deliver();
  EXPECT_THAT(user.events(), testing::Contains(XCB_CLIENT_MESSAGE));
  EXPECT_NE(user.focused(), game);
}

TEST_F(X11PlainManager, WithoutAnOrderOfItsOwnLeavesThatToTheServer) {
  openCovered();
  const WindowHandle second = adopt(user.openGame(kGame, 0)).handle;
  user.raise(game);
  EXPECT_TRUE(waitFor([&] {
    return !reports.orders.empty() && reports.orders.back() == std::vector{handle, second};
  }));
}

}  // namespace
}  // namespace vel::test
