// The requests that the back end sends for its windows, and its reactions to events.
#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Platform/WindowSystem/Wayland/WaylandWindowSystem.h"
#include "Tests/Support/Wayland/RecordingCompositor.h"
#include "Tests/WindowSystem/Reports.h"

namespace vel::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Key;
using testing::Not;

constexpr CGSize kSize{300, 200};
constexpr double kSpinnerSide = 32;

Scene whiteWithSpinner(CGSize size) {
  return {{.kind = SceneItem::Kind::Fill, .frame = {{}, size}, .color = {1, 1, 1, 1}},
          {.kind = SceneItem::Kind::Spinner,
           .frame = CGRectMake(0, 0, kSpinnerSide, kSpinnerSide),
           .color = {},
           .isAnimated = true}};
}

/// The back end as the client of a compositor that records its requests.
class WaylandWindowRequests : public testing::Test {
 protected:
  void start() {
    std::string error;
    system = WaylandWindowSystem::open(compositor.display(), error);
    ASSERT_NE(system, nullptr) << error;
    system->setDelegate(&reports);
  }
  /// Creates a closable window that is not open yet.
  WindowHandle createWindow(WindowKind kind = WindowKind::Plain,
                            WindowHandle owner = WindowHandle::None) {
    WindowDescription description;
    description.frame.size = kSize;
    description.styleMask = NSWindowStyleMaskClosable;
    description.kind = kind;
    description.ownerWindow = owner;
    return system->createWindow(description);
  }
  WindowHandle openWindow(WindowKind kind = WindowKind::Plain,
                          WindowHandle owner = WindowHandle::None) {
    const WindowHandle window = createWindow(kind, owner);
    system->setScene(window, whiteWithSpinner(kSize));
    system->orderFront(window);
    exchange();
    return window;
  }
  /// Opens a window and then a modal window in front of it. Returns the modal window.
  WindowHandle openModalWindow() {
    const WindowHandle owner = openWindow();
    return openWindow(WindowKind::Modal, owner);
  }
  /// Exchanges requests and events with the compositor until all have been handled.
  void exchange() {
    do {
      compositor.handleRequests();
    } while (system->deliverEvents());
  }
  /// Returns the reports since the previous call.
  std::vector<std::string> takeReports() {
    exchange();
    return std::exchange(reports.lines, {});
  }
  /// Deletes the requests that the compositor has recorded so far.
  void discardRequests() { compositor.takeRequests(""); }
  /// The surfaces of the open windows. Only these surfaces have no parent.
  std::vector<SurfaceRecord> windows() { return compositor.children(0); }
  SurfaceRecord firstWindow() { return windows().at(0); }
  SurfaceRecord spinner() { return compositor.children(firstWindow().id).at(0); }
  /// The surface of the window that opened last.
  SurfaceRecord lastWindow() { return windows().back(); }

  RecordingCompositor compositor;
  int xdgWmBase = compositor.addGlobal("xdg_wm_base");
  ReportListener reports;
  std::unique_ptr<WaylandWindowSystem> system;
};

// Events of the window and of the pointer

TEST_F(WaylandWindowRequests, AConfigureEventOfSizeZeroKeepsTheSize) {
  start();
  const WindowHandle window = openWindow();
  EXPECT_EQ(firstWindow().size(), kSize);
  compositor.configure(firstWindow().id, {400, 260});
  EXPECT_THAT(takeReports(), ElementsAre("frame " + nameOf(window)));
  EXPECT_EQ(reports.lastFrame.size, (CGSize{400, 260}));
  EXPECT_EQ(firstWindow().size(), (CGSize{400, 260}));
  compositor.configure(firstWindow().id, {0, 0});
  EXPECT_THAT(takeReports(), ElementsAre());
  EXPECT_EQ(firstWindow().size(), (CGSize{400, 260}));
}

TEST_F(WaylandWindowRequests, AConfigureEventMaySetOnlyTheWidthOrTheHeight) {
  start();
  openWindow();
  compositor.configure(firstWindow().id, {400, 0});
  exchange();
  EXPECT_EQ(firstWindow().size(), (CGSize{400, 200}));
  compositor.configure(firstWindow().id, {0, 260});
  exchange();
  EXPECT_EQ(firstWindow().size(), (CGSize{400, 260}));
}

TEST_F(WaylandWindowRequests, ACloseRequestIsReportedIfTheWindowIsClosable) {
  start();
  const WindowHandle window = openWindow();
  compositor.requestClose(firstWindow().id);
  EXPECT_THAT(takeReports(), ElementsAre("close requested " + nameOf(window)));
  system->setStyleMask(window, NSWindowStyleMaskMiniaturizable);
  takeReports();
  compositor.requestClose(firstWindow().id);
  EXPECT_THAT(takeReports(), ElementsAre());
  EXPECT_EQ(windows().size(), 1U);
}

TEST_F(WaylandWindowRequests, TheUserMovesAWindowByItsBackgroundUnlessAnotherWindowIsModal) {
  const int seat = compositor.addSeat();
  start();
  const WindowHandle window = openWindow();
  const auto requestsAfterPress = [&] {
    discardRequests();
    compositor.pressButton(seat, firstWindow().id);
    exchange();
    return compositor.takeRequests("xdg_toplevel");
  };
  EXPECT_THAT(requestsAfterPress(), ElementsAre());
  system->setMovableByBackground(window, true);
  EXPECT_THAT(requestsAfterPress(), ElementsAre("xdg_toplevel.move"));
  system->setModalWindow(createWindow());
  EXPECT_THAT(requestsAfterPress(), ElementsAre());
}

// Outputs

/// The parameter is true if the compositor has wp_viewporter.
class WaylandWindowScale : public WaylandWindowRequests, public testing::WithParamInterface<bool> {
 protected:
  WaylandWindowScale() {
    if (GetParam()) {
      compositor.addGlobal("wp_viewporter");
    }
  }
  /// Expects that the spinner has the same size on the screen and `scale` times as many pixels.
  void expectScale(int scale) {
    exchange();
    EXPECT_EQ(firstWindow().size(), kSize);
    EXPECT_EQ(spinner().bufferSize, (CGSize{scale * kSpinnerSide, scale * kSpinnerSide}));
    EXPECT_EQ(spinner().bufferScale, GetParam() ? 1 : scale);
    EXPECT_EQ(spinner().size(), (CGSize{kSpinnerSide, kSpinnerSide}));
  }
};

TEST_P(WaylandWindowScale, TheSpinnerHasTheMaximumScaleOfTheOutputsThatShowTheWindow) {
  const int first = compositor.addOutput(3);
  const int second = compositor.addOutput(1);
  start();
  openWindow();
  expectScale(1);
  compositor.enterOutput(firstWindow().id, first);
  expectScale(3);
  compositor.enterOutput(firstWindow().id, second);
  expectScale(3);
  compositor.leaveOutput(firstWindow().id, first);
  expectScale(1);
  compositor.setOutputScale(second, 2);
  expectScale(2);
  compositor.setOutputScale(first, 4);
  expectScale(2);
}

TEST_P(WaylandWindowScale, TheScaleOfARemovedOutputNoLongerCounts) {
  const int first = compositor.addOutput(3);
  const int second = compositor.addOutput(2);
  start();
  openWindow();
  compositor.enterOutput(firstWindow().id, first);
  compositor.enterOutput(firstWindow().id, second);
  expectScale(3);
  compositor.removeGlobal(second);
  expectScale(3);
  // The new wl_output may get the memory address of the removed one. The back end must not assume
  // that the new output shows the window.
  compositor.addOutput(4);
  expectScale(3);
  compositor.removeGlobal(first);
  expectScale(1);
}

INSTANTIATE_TEST_SUITE_P(Wayland, WaylandWindowScale, testing::Bool(), [](const auto& testInfo) {
  return testInfo.param ? "WithViewporter" : "WithoutViewporter";
});

// The size of a maximised window

/// The height of the title bar that libdecor draws for a titled window. The size in a configure
/// event includes the title bar unless the window is fullscreen.
constexpr double kTitleHeight = 24;

TEST_F(WaylandWindowRequests, SetFrameDoesNotResizeAMaximisedWindow) {
  start();
  const WindowHandle window = openWindow();
  compositor.configureMaximised(firstWindow().id, {800, 600});
  EXPECT_THAT(takeReports(), ElementsAre("frame " + nameOf(window)));
  system->setFrame(window, {{}, {500, 320}});
  EXPECT_THAT(takeReports(), ElementsAre("frame " + nameOf(window)));
  EXPECT_EQ(reports.lastFrame.size, (CGSize{800, 600}));
  EXPECT_EQ(firstWindow().size(), (CGSize{800, 600}));
  compositor.configure(firstWindow().id, {400, 260});
  exchange();
  system->setFrame(window, {{}, {500, 320}});
  exchange();
  EXPECT_EQ(firstWindow().size(), (CGSize{500, 320}));
}

TEST_F(WaylandWindowRequests, ANonResizableWindowTakesTheConfiguredSizeWhenItIsUnmaximised) {
  start();
  const WindowHandle window = openWindow();
  system->setStyleMask(window, NSWindowStyleMaskTitled | NSWindowStyleMaskResizable);
  exchange();
  EXPECT_EQ(firstWindow().size(), kSize);
  compositor.configureMaximised(firstWindow().id, {800, 600});
  exchange();
  EXPECT_EQ(firstWindow().size(), (CGSize{800, 600 - kTitleHeight}));
  system->setStyleMask(window, NSWindowStyleMaskTitled);
  exchange();
  compositor.configure(firstWindow().id, {kSize.width, kSize.height + kTitleHeight});
  exchange();
  EXPECT_EQ(firstWindow().size(), kSize);
}

TEST_F(WaylandWindowRequests, AMaximisedWindowThatWasFullscreenHasRoomForItsTitleBar) {
  start();
  const WindowHandle window = openWindow();
  system->setStyleMask(window, NSWindowStyleMaskTitled);
  exchange();
  compositor.configureFullscreen(firstWindow().id, {800, 600});
  exchange();
  EXPECT_EQ(firstWindow().size(), (CGSize{800, 600}));
  compositor.configureMaximised(firstWindow().id, {800, 600});
  exchange();
  EXPECT_EQ(firstWindow().size(), (CGSize{800, 600 - kTitleHeight}));
}

// The title

TEST_F(WaylandWindowRequests, ATitleThatDoesNotFitIntoARequestIsCutBetweenTwoCharacters) {
  start();
  const WindowHandle window = openWindow();
  std::string title = "a";
  for (int i = 0; i < 3000; ++i) {
    title += "\u00e4";  // two bytes
  }
  system->setTitle(window, title);
  exchange();
  EXPECT_FALSE(reports.contains("display lost"));
  EXPECT_EQ(firstWindow().titleLength, 3999);  // the limit is 4000 bytes
}

// xdg_wm_base

TEST_F(WaylandWindowRequests, AWindowStaysOpenIfItLosesItsTitleBarWithoutXdgWmBase) {
  start();
  const WindowHandle window = openWindow();
  system->setStyleMask(window, NSWindowStyleMaskTitled);
  exchange();
  compositor.removeGlobal(xdgWmBase);
  exchange();
  system->setStyleMask(window, NSWindowStyleMaskBorderless);
  exchange();
  EXPECT_EQ(windows().size(), 1U);
  EXPECT_FALSE(reports.contains("display lost"));
}

TEST_F(WaylandWindowRequests, AWindowStaysOpenWhenASecondXdgWmBaseAppears) {
  start();
  openWindow();
  compositor.addGlobal("xdg_wm_base");
  exchange();
  openWindow();
  EXPECT_EQ(windows().size(), 2U);
  EXPECT_FALSE(reports.contains("display lost"));
}

TEST_F(WaylandWindowRequests, NoWindowOpensWhileTheCompositorHasNoXdgWmBase) {
  start();
  const WindowHandle unopenedWindow = createWindow();
  const WindowHandle window = openWindow();
  compositor.removeGlobal(xdgWmBase);
  exchange();
  EXPECT_EQ(createWindow(), WindowHandle::None);
  system->orderFront(unopenedWindow);
  exchange();
  EXPECT_EQ(windows().size(), 1U);
  compositor.configure(firstWindow().id, {400, 260});
  EXPECT_THAT(takeReports(), ElementsAre("frame " + nameOf(window)));
  compositor.addGlobal("xdg_wm_base");
  exchange();
  system->orderFront(unopenedWindow);
  openWindow();
  EXPECT_EQ(windows().size(), 3U);
  EXPECT_FALSE(reports.contains("display lost"));
}

// xdg_wm_dialog_v1

TEST_F(WaylandWindowRequests, TheCompositorTreatsAWindowAsModalDuringItsModalSession) {
  compositor.addGlobal("xdg_wm_dialog_v1");
  start();
  const WindowHandle modal = openModalWindow();
  EXPECT_FALSE(lastWindow().isModal);
  system->setModalWindow(modal);
  exchange();
  EXPECT_TRUE(lastWindow().isModal);
  EXPECT_FALSE(firstWindow().isModal);
  system->setModalWindow(WindowHandle::None);
  exchange();
  EXPECT_FALSE(lastWindow().isModal);
  system->setModalWindow(modal);
  exchange();
  EXPECT_TRUE(lastWindow().isModal);
  EXPECT_FALSE(reports.contains("display lost"));
}

TEST_F(WaylandWindowRequests, AWindowThatOpensDuringItsModalSessionIsModal) {
  compositor.addGlobal("xdg_wm_dialog_v1");
  start();
  const WindowHandle owner = openWindow();
  const WindowHandle modal = createWindow(WindowKind::Modal, owner);
  system->setModalWindow(modal);
  system->orderFront(modal);
  exchange();
  EXPECT_TRUE(lastWindow().isModal);
  const WindowHandle innerModal = openWindow(WindowKind::Modal, modal);
  system->setModalWindow(innerModal);
  exchange();
  EXPECT_FALSE(windows().at(1).isModal);
  EXPECT_TRUE(lastWindow().isModal);
}

TEST_F(WaylandWindowRequests, TheXdgDialogIsDestroyedBeforeItsToplevel) {
  compositor.addGlobal("xdg_wm_dialog_v1");
  start();
  const WindowHandle modal = openModalWindow();
  system->setModalWindow(modal);
  exchange();
  discardRequests();
  system->releaseWindow(modal);
  EXPECT_THAT(compositor.takeRequests("xdg_"),
              ElementsAre("xdg_dialog_v1.destroy", "xdg_toplevel.destroy", "xdg_surface.destroy"));
}

TEST_F(WaylandWindowRequests, AModalWindowHasNoXdgDialogBeforeItsModalSession) {
  compositor.addGlobal("xdg_wm_dialog_v1");
  start();
  openModalWindow();
  EXPECT_THAT(compositor.objects(), Contains(Key("xdg_wm_dialog_v1")));
  EXPECT_THAT(compositor.objects(), Not(Contains(Key("xdg_dialog_v1"))));
}

TEST_F(WaylandWindowRequests, AModalSessionSendsNoRequestsWithoutXdgWmDialog) {
  start();
  const WindowHandle modal = openModalWindow();
  discardRequests();
  system->setModalWindow(modal);
  system->setModalWindow(WindowHandle::None);
  EXPECT_THAT(compositor.takeRequests("xdg_"), ElementsAre());
  EXPECT_EQ(windows().size(), 2U);
}

}  // namespace
}  // namespace vel::test
