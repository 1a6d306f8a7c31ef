// The tests that every back end must pass.
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
  return deliverUntil(system(), [&] { return reports.contains(line); });
}

void Conformance::callEveryOperation(WindowHandle window) {
  system().orderFront(window);
  system().requestFocus(window);
  system().requestMiniaturized(window, true);
  system().requestMiniaturized(window, false);
  system().setFrame(window, kFrame);
  system().setTitle(window, "Other");
  system().setStyleMask(window, 1);
  system().setMovableByBackground(window, true);
  system().setScene(window, {{.kind = SceneItem::Kind::Fill, .frame = kFrame, .color = {}}});
  system().setModalWindow(window);
  system().setModalWindow(WindowHandle::None);
  system().orderOut(window);
  system().releaseWindow(window);
  EXPECT_FALSE(system().picture(window).has_value());
  system().isSceneOnScreen(window);
}

namespace {

// Windows

TEST_P(Conformance, EachWindowHasItsOwnHandle) {
  const WindowHandle firstWindow = create();
  const WindowHandle secondWindow = create();
  EXPECT_NE(firstWindow, WindowHandle::None);
  EXPECT_NE(secondWindow, WindowHandle::None);
  EXPECT_NE(firstWindow, secondWindow);
}

TEST_P(Conformance, AFocusRequestForAWindowThatIsNotShownCausesNoReport) {
  system().requestFocus(create());
  deliver();
  EXPECT_THAT(reports.lines, IsEmpty());
}

TEST_P(Conformance, OperationsOnTheNoneHandleDoNothing) {
  callEveryOperation(WindowHandle::None);
  deliver();
  EXPECT_THAT(reports.lines, IsEmpty());
}

TEST_P(Conformance, OperationsOnAReleasedWindowDoNothing) {
  const WindowHandle window = openFocused();
  system().releaseWindow(window);
  callEveryOperation(window);
  deliver();
  EXPECT_THAT(reports.lines, Not(Contains(testing::HasSubstr(nameOf(window)))));
}

TEST_P(Conformance, OperationsOnADestroyedWindowDoNothing) {
  const WindowHandle window = openFocused();
  display->ownerDestroysWindow(window);
  if (!GetParam().reportsDestruction) {
    deliver();
    EXPECT_EQ(reports.count("destroyed"), 0);
    return;
  }
  ASSERT_TRUE(waitFor("destroyed " + nameOf(window)));
  reports.lines.clear();
  callEveryOperation(window);
  deliver();
  EXPECT_THAT(reports.lines, Not(Contains(testing::HasSubstr(nameOf(window)))));
}

TEST_P(Conformance, AHiddenWindowCanBeShownAndFocusedAgain) {
  const WindowHandle window = openFocused();
  system().orderOut(window);
  deliver();
  reports.lines.clear();
  system().orderFront(window);
  system().requestFocus(window);
  EXPECT_TRUE(waitFor("focus " + nameOf(window)));
}

// Focus

TEST_P(Conformance, ARequestedFocusIsReported) {
  const WindowHandle window = open();
  system().requestFocus(window);
  EXPECT_TRUE(waitFor("focus " + nameOf(window)));
}

TEST_P(Conformance, AFocusChangeBetweenTwoWindowsDoesNotDeactivateTheApplication) {
  openFocused();
  const WindowHandle secondWindow = open();
  system().requestFocus(secondWindow);
  EXPECT_TRUE(waitFor("focus " + nameOf(secondWindow)));
  deliver();
  EXPECT_FALSE(reports.contains("deactivated"));
}

TEST_P(Conformance, ASecondFocusRequestReportsTheFocusAgain) {
  const WindowHandle window = openFocused();
  system().requestFocus(window);
  EXPECT_TRUE(waitFor("focus " + nameOf(window)));
}

TEST_P(Conformance, DeactivationAndActivationAreEachReportedOnce) {
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

// Stacking order, frames, controls, miniaturising

TEST_P(Conformance, AStackingOrderSetByAnotherProgramIsReportedIfTheBackEndCanReportIt) {
  const WindowHandle firstWindow = openFocused();
  const WindowHandle secondWindow = openFocused();
  display->otherProgramRaises(firstWindow, secondWindow);
  if (!GetParam().reportsOrder) {
    deliver();
    EXPECT_TRUE(reports.orders.empty());
    return;
  }
  const std::vector expected{firstWindow, secondWindow};
  EXPECT_TRUE(deliverUntil(
      system(), [&] { return !reports.orders.empty() && reports.orders.back() == expected; }));
}

TEST_P(Conformance, AFrameSetByAnotherProgramIsReported) {
  const WindowHandle window = open();
  deliver();
  display->otherProgramResizes(window, {400, 260});
  EXPECT_TRUE(deliverUntil(system(), [this] {
    return reports.lastFrame.size == CGSize{400, 260};
  }));
}

TEST_P(Conformance, ACloseRequestIsReportedAndDoesNotDestroyTheWindow) {
  const WindowHandle window = openFocused();
  display->userClosesWindow(window);
  EXPECT_TRUE(waitFor("close requested " + nameOf(window)));
  deliver();
  EXPECT_EQ(reports.count("destroyed"), 0);
}

TEST_P(Conformance, AWindowWithoutACloseControlReportsNoCloseRequest) {
  const WindowHandle window = openFocused();
  system().setStyleMask(window, NSWindowStyleMaskTitled);
  deliver();
  display->userClosesWindow(window);
  deliver();
  EXPECT_EQ(reports.count("close requested"), 0);
}

// Remaining controls are controls that the window manager still offers although the style mask
// excludes them.
TEST_P(Conformance, RemainingControlsAreReportedIfTheBackEndCanReportThem) {
  const WindowHandle window = openFocused();
  system().setStyleMask(window, NSWindowStyleMaskTitled);
  if (GetParam().reportsRemainingControls) {
    EXPECT_TRUE(deliverUntil(system(), [this] { return reports.count("remaining controls") > 0; }));
    EXPECT_THAT(reports.lines, Contains(StartsWith("remaining controls " + nameOf(window))));
  } else {
    deliver();
    EXPECT_EQ(reports.count("remaining controls"), 0);
  }
}

TEST_P(Conformance, MiniaturizingAndDeminiaturizingAreEachReportedOnceIfTheBackEndMiniaturizes) {
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

// Drawing

TEST_P(Conformance, PictureReturnsTheSceneIfTheBackEndCapturesWindows) {
  const WindowHandle window = open();
  const Scene redScene{
      {.kind = SceneItem::Kind::Fill, .frame = CGRectMake(0, 0, 320, 200), .color = {1, 0, 0, 1}}};
  system().setScene(window, redScene);
  deliver();
  EXPECT_EQ(system().picture(window).has_value(), GetParam().capturesWindows);
  if (GetParam().capturesWindows) {
    EXPECT_TRUE(deliverUntil(system(), [&] {
      const auto picture = system().picture(window);
      std::vector<std::uint8_t> expected;
      for (int i = 0; i < 320 * 200; ++i) {
        expected.insert(expected.end(), {255, 0, 0});
      }
      return picture && picture->width == 320 && picture->height == 200 &&
             picture->pixels == expected;
    }));
  }
}

TEST_P(Conformance, IsSceneOnScreenBecomesTrueForAnOpenWindow) {
  const WindowHandle window = openFocused();
  system().setScene(window, {{.kind = SceneItem::Kind::Fill, .frame = kFrame, .color = {}}});
  EXPECT_TRUE(deliverUntil(system(), [&] { return system().isSceneOnScreen(window); }));
}

// The modal window

TEST_P(Conformance, SettingTheModalWindowCausesNoCloseRequest) {
  const WindowHandle window = openFocused();
  open();
  deliver();
  reports.lines.clear();
  system().setModalWindow(window);
  deliver();
  system().setModalWindow(WindowHandle::None);
  deliver();
  EXPECT_EQ(reports.count("destroyed"), 0);
  EXPECT_EQ(reports.count("close requested"), 0);
}

// Adopting windows

TEST_P(Conformance, AdoptingAnUnknownWindowFailsWithAReason) {
  const std::vector<NativeWindow> unknownWindows{X11WindowId{0}, X11WindowId{0x12345},
                                                 X11WindowId{~std::uint64_t{0}}, CocoaWindow{},
                                                 WaylandSurface{}};
  for (const NativeWindow& window : unknownWindows) {
    std::string error;
    EXPECT_FALSE(system().adoptWindow(window, error).has_value());
    EXPECT_NE(error, "");
  }
}

TEST_P(Conformance, AForeignWindowIsAdoptedIfTheBackEndAdoptsWindows) {
  const std::optional<NativeWindow> foreign = display->openForeignWindow();
  EXPECT_EQ(foreign.has_value(), GetParam().adoptsWindows);
  if (!foreign) {
    return;
  }
  std::string error;
  auto adoptedWindow = system().adoptWindow(*foreign, error);
  ASSERT_TRUE(adoptedWindow.has_value()) << error;
  EXPECT_EQ(adoptedWindow->className, "PlayerWindow");
  EXPECT_EQ(adoptedWindow->frame.size, (CGSize{200, 160}));
  EXPECT_EQ(adoptedWindow->styleMask, 15U);
  EXPECT_TRUE(adoptedWindow->isOnScreen);
  // Releasing the window restores its style mask.
  system().setStyleMask(adoptedWindow->handle, NSWindowStyleMaskTitled);
  system().releaseWindow(adoptedWindow->handle);
  deliver();
  adoptedWindow = system().adoptWindow(*foreign, error);
  ASSERT_TRUE(adoptedWindow.has_value()) << error;
  EXPECT_TRUE(adoptedWindow->isOnScreen);
  EXPECT_EQ(adoptedWindow->styleMask, 15U);
  system().requestFocus(adoptedWindow->handle);
  EXPECT_TRUE(waitFor("focus " + nameOf(adoptedWindow->handle)));
  if (GetParam().reportsDestruction) {
    display->ownerDestroysWindow(adoptedWindow->handle);
    EXPECT_TRUE(waitFor("destroyed " + nameOf(adoptedWindow->handle)));
  }
}

// Events and the connection

TEST_P(Conformance, DeliverEventsReturnsFalseWithoutEvents) {
  openFocused();
  // A window manager may send more events for a while after it has set the focus. So the test
  // delivers events until no more arrive. A deadline of 0 means that `deliverEvents` must run
  // again.
  EXPECT_TRUE(deliverUntil(
      system(), [this] { return !system().deliverEvents() && system().nextDeadline() > 0; }));
}

TEST_P(Conformance, AResizeByAnotherProgramIsReportedAtOnceOrEndsTheWaitForInput) {
  const WindowHandle window = openFocused();
  display->otherProgramResizes(window, {400, 260});
  const bool isReportedAtOnce = reports.count("frame") > 0;
  if (!isReportedAtOnce) {
    ASSERT_TRUE(system().waitHandle().isValid() || system().nextDeadline() != kNever);
    // The deadline may pass before the event arrives. `deliverEvents` then returns false.
    const Nanoseconds timeLimit = steadyNow() + kTimeout;
    do {
      waitForInput(system().waitHandle().descriptor(),
                   std::min(system().nextDeadline(), timeLimit));
    } while (!system().deliverEvents() && steadyNow() < timeLimit);
    EXPECT_LT(steadyNow(), timeLimit);
  }
  EXPECT_TRUE(deliverUntil(system(), [this] { return reports.count("frame") > 0; }));
}

TEST_P(Conformance, ReportsAreDiscardedWhileNoDelegateIsSet) {
  const WindowHandle window = openFocused();
  system().setDelegate(nullptr);
  display->userClosesWindow(window);
  display->userGoesToAnotherApplication();
  display->ownerDestroysWindow(window);
  deliver();
  deliver();  // a back end may need a second round trip to notice the lost focus
  EXPECT_THAT(reports.lines, IsEmpty());
  ReportListener laterDelegate;
  system().setDelegate(&laterDelegate);
  deliver();
  EXPECT_THAT(laterDelegate.lines, IsEmpty());
  system().setDelegate(nullptr);
}

TEST_P(Conformance, ALostConnectionIsReportedOnceIfTheBackEndCanReportIt) {
  if (!GetParam().reportsLostDisplay) {
    return;
  }
  const WindowHandle window = openFocused();
  display->serverClosesConnection();
  ASSERT_TRUE(waitFor("display lost"));
  callEveryOperation(window);
  deliver();
  EXPECT_THAT(reports.lines, testing::ElementsAre("display lost"));
  EXPECT_EQ(system().nextDeadline(), kNever);
}

}  // namespace
}  // namespace vel::test
