// What the port promises of every back end.
#include <gmock/gmock.h>
#include <poll.h>

#include <algorithm>

#include "Tests/WindowSystem/Conformance.h"

namespace vel::test {

using testing::Contains;
using testing::IsEmpty;
using testing::StartsWith;

constexpr CGRect kFrame{{200, 300}, {320, 200}};

WindowHandle Conformance::create(NSWindowStyleMask styleMask) {
  return system().createWindow(
      {.className = "Tested", .title = "Tested", .frame = kFrame, .styleMask = styleMask});
}

WindowHandle Conformance::open(NSWindowStyleMask styleMask) {
  const WindowHandle window = create(styleMask);
  system().orderFront(window);
  return window;
}

WindowHandle Conformance::openFocused() {
  const WindowHandle window = open();
  system().requestFocus(window);
  EXPECT_TRUE(waitFor("focus " + nameOf(window)));
  deliver();
  reports.lines.clear();
  return window;
}

bool Conformance::waitFor(const std::string& line) {
  return deliverUntil(system(), [&] { return reports.heard(line); });
}

void Conformance::askForEverything(WindowHandle window) {
  system().orderFront(window);
  system().requestFocus(window);
  system().requestMiniaturized(window, true);
  system().requestMiniaturized(window, false);
  system().setFrame(window, kFrame);
  system().setTitle(window, "nobody");
  system().setStyleMask(window, 1);
  system().setMovableByBackground(window, true);
  system().setScene(window, {{.kind = SceneItem::Kind::Fill, .frame = kFrame, .color = {}}});
  system().orderOut(window);
  system().releaseWindow(window);
  EXPECT_FALSE(system().picture(window).has_value());
}

namespace {

// Windows

TEST_P(Conformance, EachWindowHasAHandleOfItsOwn) {
  const WindowHandle first = create();
  const WindowHandle second = create();
  EXPECT_NE(first, WindowHandle::None);
  EXPECT_NE(second, WindowHandle::None);
  EXPECT_NE(first, second);
}

TEST_P(Conformance, NothingIsToldOfAWindowThatIsNotOnTheScreenYet) {
  system().requestFocus(create());
  deliver();
  EXPECT_THAT(reports.lines, IsEmpty());
}

TEST_P(Conformance, WhatIsAskedOfNoWindowDoesNothing) {
  askForEverything(WindowHandle::None);
  deliver();
  EXPECT_THAT(reports.lines, IsEmpty());
}

TEST_P(Conformance, WhatIsAskedOfAReleasedWindowDoesNothing) {
  const WindowHandle window = openFocused();
  system().releaseWindow(window);
  askForEverything(window);
  deliver();
  EXPECT_THAT(reports.lines, Not(Contains(testing::HasSubstr(nameOf(window)))));
}

TEST_P(Conformance, TheEndOfAWindowIsToldOnceAndItsHandleIsVoid) {
  const WindowHandle window = openFocused();
  display->somebodyEnds(window);
  ASSERT_TRUE(waitFor("gone " + nameOf(window)));
  reports.lines.clear();
  askForEverything(window);
  deliver();
  EXPECT_THAT(reports.lines, Not(Contains(testing::HasSubstr(nameOf(window)))));
}

TEST_P(Conformance, AWindowThatWasTakenOffTheScreenComesBack) {
  const WindowHandle window = openFocused();
  system().orderOut(window);
  deliver();
  reports.lines.clear();
  system().orderFront(window);
  system().requestFocus(window);
  EXPECT_TRUE(waitFor("focus " + nameOf(window)));
}

// The focus

TEST_P(Conformance, TheFocusThatIsAskedForIsTold) {
  const WindowHandle window = open();
  system().requestFocus(window);
  EXPECT_TRUE(waitFor("focus " + nameOf(window)));
}

TEST_P(Conformance, TheFocusPassesFromWindowToWindowInsideTheApplication) {
  openFocused();
  const WindowHandle second = open();
  system().requestFocus(second);
  EXPECT_TRUE(waitFor("focus " + nameOf(second)));
  deliver();
  EXPECT_FALSE(reports.heard("deactivated"));
}

TEST_P(Conformance, TheFocusThatIsThereIsToldAgainWhenItIsAskedForAgain) {
  const WindowHandle window = openFocused();
  system().requestFocus(window);
  EXPECT_TRUE(waitFor("focus " + nameOf(window)));
}

TEST_P(Conformance, LeavingForAnotherApplicationAndComingBackIsToldOnceEach) {
  const WindowHandle window = openFocused();
  display->userGoesToAnotherApplication();
  ASSERT_TRUE(waitFor("deactivated"));
  deliver();
  display->userComesBackTo(window);
  ASSERT_TRUE(deliverUntil(system(), [this] { return reports.count("activated") > 0; }));
  deliver();
  EXPECT_EQ(reports.count("deactivated"), 1);
  EXPECT_EQ(reports.count("activated"), 1);
}

// Order, frames, controls, miniaturising

TEST_P(Conformance, AnOrderThatSomebodyElseGivesIsTold) {
  const WindowHandle first = openFocused();
  const WindowHandle second = openFocused();
  display->somebodyRaises(first, second);
  const std::vector wanted{first, second};
  EXPECT_TRUE(deliverUntil(
      system(), [&] { return !reports.orders.empty() && reports.orders.back() == wanted; }));
}

TEST_P(Conformance, AFrameThatSomebodyElseGivesIsTold) {
  const WindowHandle window = open();
  deliver();
  display->somebodyResizes(window, {400, 260});
  EXPECT_TRUE(deliverUntil(system(), [this] { return reports.frame.size == CGSize{400, 260}; }));
}

TEST_P(Conformance, AskingToCloseIsLeftToTheListener) {
  const WindowHandle window = openFocused();
  display->userAsksToClose(window);
  EXPECT_TRUE(waitFor("close asked " + nameOf(window)));
  deliver();
  EXPECT_EQ(reports.count("gone"), 0);
}

TEST_P(Conformance, NobodyIsAskedToCloseAWindowWithoutThatControl) {
  const WindowHandle window = openFocused();
  system().setStyleMask(window, NSWindowStyleMaskTitled);
  deliver();
  display->userAsksToClose(window);
  deliver();
  EXPECT_EQ(reports.count("close asked"), 0);
}

TEST_P(Conformance, ControlsThatAreKeptAreToldWhereAnybodyKeepsThem) {
  const WindowHandle window = openFocused();
  system().setStyleMask(window, NSWindowStyleMaskTitled);
  if (GetParam().tellsControlsKept) {
    EXPECT_TRUE(deliverUntil(system(), [this] { return reports.count("controls kept") > 0; }));
    EXPECT_THAT(reports.lines, Contains(StartsWith("controls kept " + nameOf(window))));
  } else {
    deliver();
    EXPECT_EQ(reports.count("controls kept"), 0);
  }
}

TEST_P(Conformance, AMiniaturizedWindowIsToldWhereThatIsDone) {
  const WindowHandle window = openFocused();
  system().requestMiniaturized(window, true);
  if (!GetParam().miniaturizes) {
    deliver();
    EXPECT_EQ(reports.count("miniaturized"), 0);
    return;
  }
  ASSERT_TRUE(waitFor("miniaturized " + nameOf(window)));
  deliver();
  EXPECT_FALSE(system().picture(window).has_value());
  system().requestMiniaturized(window, false);
  EXPECT_TRUE(waitFor("deminiaturized " + nameOf(window)));
  deliver();
  EXPECT_EQ(reports.count("miniaturized"), 1);
  EXPECT_EQ(reports.count("deminiaturized"), 1);
}

// What is shown

TEST_P(Conformance, AWindowShowsItsSceneWhereThereIsAScreen) {
  const WindowHandle window = open();
  const Scene red{
      {.kind = SceneItem::Kind::Fill, .frame = CGRectMake(0, 0, 320, 200), .color = {1, 0, 0, 1}}};
  system().setScene(window, red);
  deliver();
  EXPECT_EQ(system().picture(window).has_value(), GetParam().hasScreen);
  if (GetParam().hasScreen) {
    EXPECT_TRUE(deliverUntil(system(), [&] {
      const auto picture = system().picture(window);
      std::vector<std::uint8_t> wanted;
      for (int i = 0; i < 320 * 200; ++i) {
        wanted.insert(wanted.end(), {255, 0, 0});
      }
      return picture && picture->width == 320 && picture->height == 200 &&
             picture->pixels == wanted;
    }));
  }
}

TEST_P(Conformance, ModalityIsNotToldOf) {
  const WindowHandle window = openFocused();
  open();
  deliver();
  reports.lines.clear();
  system().setModalWindow(window);
  deliver();
  system().setModalWindow(WindowHandle::None);
  deliver();
  EXPECT_EQ(reports.count("gone"), 0);
  EXPECT_EQ(reports.count("close asked"), 0);
}

// Windows of other programs

TEST_P(Conformance, AWindowThatDoesNotExistIsRefusedWithAReason) {
  for (const std::uint64_t id : {std::uint64_t{0}, std::uint64_t{0x12345}, ~std::uint64_t{0}}) {
    std::string error;
    EXPECT_FALSE(system().adoptWindow(id, error).has_value());
    EXPECT_NE(error, "");
  }
}

TEST_P(Conformance, AWindowOfAnotherProgramIsAdoptedWhereThereAreAny) {
  const std::uint64_t id = display->openForeignWindow();
  EXPECT_EQ(id != 0, GetParam().adoptsWindows);
  if (id == 0) {
    return;
  }
  std::string error;
  auto found = system().adoptWindow(id, error);
  ASSERT_TRUE(found.has_value()) << error;
  EXPECT_EQ(found->className, "PlayerWindow");
  EXPECT_EQ(found->frame.size, (CGSize{200, 160}));
  EXPECT_EQ(found->styleMask, 15U);
  EXPECT_TRUE(found->onScreen);
  // It stays as it was when it is let go.
  system().setStyleMask(found->handle, NSWindowStyleMaskTitled);
  system().releaseWindow(found->handle);
  deliver();
  found = system().adoptWindow(id, error);
  ASSERT_TRUE(found.has_value()) << error;
  EXPECT_TRUE(found->onScreen);
  EXPECT_EQ(found->styleMask, 15U);
  system().requestFocus(found->handle);
  EXPECT_TRUE(waitFor("focus " + nameOf(found->handle)));
  display->somebodyEnds(found->handle);
  EXPECT_TRUE(waitFor("gone " + nameOf(found->handle)));
}

// Events and the connection

TEST_P(Conformance, WithoutEventsThereIsNothingToDeliver) {
  openFocused();
  // A window manager is at work for a while after it has given the focus.
  EXPECT_TRUE(deliverUntil(
      system(), [this] { return !system().deliverEvents() && system().nextDeadline() > 0; }));
}

TEST_P(Conformance, WhatHasHappenedIsToldOrCanBeWaitedFor) {
  const WindowHandle window = openFocused();
  display->somebodyResizes(window, {400, 260});
  if (reports.count("frame") == 0) {  // not told at once
    ASSERT_TRUE(system().waitHandle().isValid());
    waitForInput(system().waitHandle().descriptor(),
                 std::min(system().nextDeadline(), steadyNow() + kPatience));
    EXPECT_TRUE(system().deliverEvents());
  }
  EXPECT_TRUE(deliverUntil(system(), [this] { return reports.count("frame") > 0; }));
}

TEST_P(Conformance, WithoutAListenerNothingIsTold) {
  const WindowHandle window = openFocused();
  system().setDelegate(nullptr);
  display->userAsksToClose(window);
  display->userGoesToAnotherApplication();
  display->somebodyEnds(window);
  deliver();
  EXPECT_THAT(reports.lines, IsEmpty());
  // Nor does a later listener hear what happened before him.
  ReportListener later;
  system().setDelegate(&later);
  deliver();
  EXPECT_THAT(later.lines, IsEmpty());
  system().setDelegate(nullptr);
}

TEST_P(Conformance, ALostConnectionIsToldOnceAndEveryHandleIsVoid) {
  const WindowHandle window = openFocused();
  display->connectionBreaks();
  ASSERT_TRUE(waitFor("lost"));
  askForEverything(window);
  deliver();
  EXPECT_THAT(reports.lines, testing::ElementsAre("lost"));
  EXPECT_EQ(system().nextDeadline(), kNever);
}

}  // namespace
}  // namespace vel::test
