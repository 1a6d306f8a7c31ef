// The frame (title bar and borders) that libdecor draws around the windows of the back end. weston
// draws no frames itself.
#include <gmock/gmock.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Foundation/NSLog.h"
#include "Platform/WindowSystem/Wayland/WaylandWindowSystem.h"
#include "Tests/Support/Wayland/SurfaceHost.h"
#include "Tests/Support/Wayland/Weston.h"
#include "Tests/WindowSystem/Reports.h"
#include "Tests/WindowSystem/Wayland/HiddenLibrary.h"

namespace vel::test {
namespace {

constexpr const char* kLibdecor = "libdecor-0.so.0";
constexpr std::uint32_t kDesktopColor = 0x203020;
constexpr CGSize kSize{400, 260};
constexpr NSWindowStyleMask kAllControls = NSWindowStyleMaskTitled | NSWindowStyleMaskClosable |
                                           NSWindowStyleMaskMiniaturizable |
                                           NSWindowStyleMaskResizable;

// Sizes of libdecor's frame.
constexpr int kTitleHeight = 24;
constexpr int kButtonWidth = 32;

/// The part of the screen in which the tests look for white pixels. `hidePointer` moves the pointer
/// to a corner outside this part.
constexpr PixelRect kSearchedArea{0, 0, 1000, 740};
/// The content of a new window. New windows are in the middle of the screen.
constexpr PixelRect kContent{312, 254, 400, 260};
constexpr PixelRect kMiddle{512, 384, 1, 1};

struct Point {
  int x = 0;
  int y = 0;
};

/// A point on the title bar.
Point titleOf(PixelRect content) {
  return {content.x + content.width / 4, content.y - kTitleHeight / 2};
}
Point closeButtonOf(PixelRect content) {
  return {content.x + content.width - kButtonWidth / 2, content.y - kTitleHeight / 2};
}
/// The lower right corner of the frame, where the user can resize the window.
Point cornerOf(PixelRect content) {
  return {content.x + content.width + 3, content.y + content.height + 3};
}
PixelRect titleBarOf(PixelRect content) {
  return {content.x, content.y - kTitleHeight, content.width, kTitleHeight};
}

/// The back end as a client of weston.
class WaylandFrame : public testing::Test {
 protected:
  void connect() {
    std::string error;
    system = WaylandWindowSystem::open(weston.display(), error);
    ASSERT_NE(system, nullptr) << error;
    system->setDelegate(&reports);
  }
  /// Opens a white window. With an owner, the window is a sheet.
  WindowHandle makeWindow(NSWindowStyleMask styleMask, CGSize size = kSize,
                          WindowHandle owner = WindowHandle::None) {
    const WindowHandle handle = system->createWindow(
        {.className = "Tested",
         .title = owner == WindowHandle::None ? "Tested" : "Sheet",
         .frame = {{}, size},
         .styleMask = styleMask,
         .kind = owner == WindowHandle::None ? WindowKind::Plain : WindowKind::Sheet,
         .ownerWindow = owner});
    system->setScene(
        handle,
        {{.kind = SceneItem::Kind::Fill, .frame = {{}, {1024, 768}}, .color = {1, 1, 1, 1}}});
    system->orderFront(handle);
    return handle;
  }
  /// Connects, opens `window` and waits until it is on the screen and has the focus.
  void open(NSWindowStyleMask styleMask = kAllControls) {
    ASSERT_NO_FATAL_FAILURE(connect());
    window = makeWindow(styleMask);
    ASSERT_TRUE(waitForContent(kContent));
    ASSERT_TRUE(waitFor([this] { return reports.contains("focus " + nameOf(window)); }));
  }

  bool waitFor(const std::function<bool()>& condition) { return deliverUntil(*system, condition); }
  /// The rectangle around all white pixels in `kSearchedArea`.
  [[nodiscard]] PixelRect whiteArea() const {
    Picture picture = weston.picture(kSearchedArea);
    for (std::uint32_t& pixel : picture.pixels) {
      pixel = pixel == kWhite ? 1 : 0;
    }
    return picture.boundsOfPixelsExcept(0);
  }
  /// Waits until all pixels of `area` are white and no other pixel is white.
  bool waitForContent(PixelRect area) {
    return waitFor([&] { return whiteArea() == area && weston.picture(area).isAll(kWhite); });
  }
  [[nodiscard]] bool hasTitleBar(PixelRect content) const {
    return !weston.picture(titleBarOf(content)).colors().contains(kDesktopColor);
  }

  void click(Point point) { weston.click(point.x, point.y); }
  /// Presses the button at `start`, moves the pointer to `end`, and releases the button when the
  /// condition is true. Until then, moves the pointer back and forth by one pixel. Returns false if
  /// the condition does not become true in time.
  bool drag(Point start, Point end, const std::function<bool()>& condition) {
    weston.movePointer(start.x, start.y);
    weston.pressButton();
    int step = 0;
    const bool isConditionTrue = waitFor([&] {
      weston.movePointer(end.x + step, end.y);
      step = 1 - step;
      return condition();
    });
    weston.movePointer(end.x, end.y);
    weston.releaseButton();
    weston.hidePointer();
    return isConditionTrue;
  }
  /// Drags the window by its title bar, `distance` pixels to the right and down, and updates
  /// `content`. When this function returns, weston has handled all earlier input.
  void moveWindow(PixelRect& content, int distance) {
    const PixelRect previous = content;
    const Point start = titleOf(content);
    EXPECT_TRUE(drag(start, {start.x + distance, start.y + distance},
                     [&] { return whiteArea().x != previous.x; }));
    content.x += distance;
    content.y += distance;
    EXPECT_TRUE(waitForContent(content));
  }

  Weston weston;
  ReportListener reports;
  std::unique_ptr<WaylandWindowSystem> system;
  WindowHandle window = WindowHandle::None;
};

TEST_F(WaylandFrame, SetFrameSetsTheSizeOfTheContent) {
  ASSERT_NO_FATAL_FAILURE(open());
  EXPECT_TRUE(hasTitleBar(kContent));
  weston.picture().save("wayland-frame");
  system->setFrame(window, {{}, {500, 320}});
  constexpr PixelRect kLargeContent{262, 224, 500, 320};
  EXPECT_TRUE(waitForContent(kLargeContent));
  EXPECT_TRUE(hasTitleBar(kLargeContent));
  EXPECT_EQ(reports.count("frame"), 0);  // setFrame causes no report
}

TEST_F(WaylandFrame, ShowsTheTitle) {
  ASSERT_NO_FATAL_FAILURE(open());
  const Picture titleBar = weston.picture(titleBarOf(kContent));
  system->setTitle(window, "Another title");
  EXPECT_TRUE(waitFor([&] { return weston.picture(titleBarOf(kContent)) != titleBar; }));
  system->setTitle(window, "Tested");
  EXPECT_TRUE(waitFor([&] { return weston.picture(titleBarOf(kContent)) == titleBar; }));
}

TEST_F(WaylandFrame, ShowsTheControlsOfTheStyleMask) {
  ASSERT_NO_FATAL_FAILURE(open());
  const Picture titleBar = weston.picture(titleBarOf(kContent));
  system->setStyleMask(window, NSWindowStyleMaskTitled);
  EXPECT_TRUE(waitFor([&] { return weston.picture(titleBarOf(kContent)) != titleBar; }));
  EXPECT_TRUE(waitFor([this] { return reports.count("remaining controls") > 0; }));
  // 0 means that the frame offers no control that the style mask excludes.
  EXPECT_TRUE(reports.contains("remaining controls " + nameOf(window) + " 0"));
  weston.picture().save("wayland-frame-without-controls");
  system->setStyleMask(window, kAllControls);
  EXPECT_TRUE(waitFor([&] { return weston.picture(titleBarOf(kContent)) == titleBar; }));
}

TEST_F(WaylandFrame, AClickOnTheCloseButtonIsReportedOnlyIfTheWindowIsClosable) {
  ASSERT_NO_FATAL_FAILURE(open());
  PixelRect content = kContent;
  system->setStyleMask(window, kAllControls & ~NSWindowStyleMaskClosable);
  click(closeButtonOf(content));
  moveWindow(content, 60);  // weston handles the click before the drag
  EXPECT_EQ(reports.count("close requested"), 0);
  system->setStyleMask(window, kAllControls);
  click(closeButtonOf(content));
  EXPECT_TRUE(waitFor([this] { return reports.contains("close requested " + nameOf(window)); }));
  EXPECT_EQ(reports.count("close requested"), 1);
}

// Like the launch screen, the test removes the controls one by one and restores them together.
TEST_F(WaylandFrame, TheUserCanResizeTheWindowOnlyIfItIsResizable) {
  ASSERT_NO_FATAL_FAILURE(open());
  PixelRect content = kContent;
  NSWindowStyleMask styleMask = kAllControls;
  for (const NSWindowStyleMask control :
       {NSWindowStyleMaskResizable, NSWindowStyleMaskMiniaturizable, NSWindowStyleMaskClosable}) {
    styleMask &= ~control;
    system->setStyleMask(window, styleMask);
  }
  Point corner = cornerOf(content);
  weston.drag(corner.x, corner.y, corner.x + 60, corner.y + 60);
  moveWindow(content, 60);
  EXPECT_EQ(reports.count("frame"), 0);
  system->setStyleMask(window, kAllControls);
  corner = cornerOf(content);
  EXPECT_TRUE(drag(corner, {corner.x + 60, corner.y + 40}, [this] {
    return reports.lastFrame.size == CGSize{460, 300};
  }));
  EXPECT_TRUE(waitFor([this] {
    const PixelRect area = whiteArea();
    return area.width == 460 && area.height == 300 && hasTitleBar(area);
  }));
  weston.picture().save("wayland-frame-resized");
}

TEST_F(WaylandFrame, AWindowKeepsTheFocusWhileTheUserMovesIt) {
  ASSERT_NO_FATAL_FAILURE(open());
  PixelRect content = kContent;
  moveWindow(content, 60);
  deliverAll(*system);
  EXPECT_FALSE(reports.contains("deactivated"));
  EXPECT_EQ(reports.count("focus"), 1);
}

TEST_F(WaylandFrame, AClickOnTheTitleBarActivatesTheWindow) {
  ASSERT_NO_FATAL_FAILURE(open());
  SurfaceHost other(weston.display(), "other", {100, 100}, 0x804020);
  weston.focusWindow("other");
  ASSERT_TRUE(waitFor([this] { return reports.contains("deactivated"); }));
  reports.lines.clear();
  click(titleOf(kContent));
  EXPECT_TRUE(waitFor([this] { return reports.contains("focus " + nameOf(window)); }));
  EXPECT_TRUE(reports.contains("activated " + nameOf(window)));
}

TEST_F(WaylandFrame, UnmaximisingAWindowRestoresItsSize) {
  ASSERT_NO_FATAL_FAILURE(open());
  const Point maximiseButton{kContent.x + kContent.width - kButtonWidth * 3 / 2,
                             kContent.y - kTitleHeight / 2};
  click(maximiseButton);
  ASSERT_TRUE(waitFor([this] { return reports.lastFrame.size.width == 1024; }));
  EXPECT_EQ(reports.lastFrame.size, (CGSize{1024, 768 - kTitleHeight}));
  ASSERT_TRUE(waitFor([this] { return whiteArea().width == kSearchedArea.width; }));
  weston.picture().save("wayland-frame-maximised");
  // weston's module weston-control.c centres the content on the screen even if the window is
  // maximised. So only the lower half of the title bar is on the screen.
  click({1024 - kButtonWidth * 3 / 2, kTitleHeight / 4});
  EXPECT_TRUE(waitFor([this] { return reports.lastFrame.size == kSize; }));
  EXPECT_TRUE(waitFor([this] { return whiteArea().width == kContent.width; }));
}

// weston ends the connection if a maximised window commits a size other than the configured size.
TEST_F(WaylandFrame, SetFrameDoesNotResizeAMaximisedWindow) {
  ASSERT_NO_FATAL_FAILURE(open());
  click({kContent.x + kContent.width - kButtonWidth * 3 / 2, kContent.y - kTitleHeight / 2});
  ASSERT_TRUE(waitFor([this] { return reports.lastFrame.size.width == 1024; }));
  reports.lines.clear();
  system->setFrame(window, {{}, {500, 320}});
  EXPECT_TRUE(waitFor([this] { return reports.contains("frame " + nameOf(window)); }));
  deliverAll(*system);
  EXPECT_EQ(reports.lastFrame.size, (CGSize{1024, 768 - kTitleHeight}));
  EXPECT_FALSE(reports.contains("display lost"));
}

TEST_F(WaylandFrame, AWindowNarrowerThanTheButtonsHasAFrame) {
  ASSERT_NO_FATAL_FAILURE(connect());
  constexpr PixelRect kNarrowContent{492, 369, 40, 30};
  window = makeWindow(NSWindowStyleMaskTitled, {40, 30});
  ASSERT_TRUE(waitForContent(kNarrowContent));
  for (const NSWindowStyleMask styleMask : {kAllControls, NSWindowStyleMaskTitled, kAllControls}) {
    system->setStyleMask(window, styleMask);
    EXPECT_TRUE(waitForContent(kNarrowContent));
    EXPECT_TRUE(hasTitleBar(kNarrowContent));
  }
  click(titleOf(kNarrowContent));
  deliverAll(*system);
  EXPECT_FALSE(reports.contains("display lost"));
}

TEST_F(WaylandFrame, ABorderlessWindowHasNoFrameUntilItGetsATitleBar) {
  ASSERT_NO_FATAL_FAILURE(open(NSWindowStyleMaskBorderless));
  EXPECT_TRUE(weston.picture(titleBarOf(kContent)).isAll(kDesktopColor));
  system->setStyleMask(window, NSWindowStyleMaskTitled);
  EXPECT_TRUE(waitFor([this] { return hasTitleBar(kContent); }));
  EXPECT_TRUE(waitForContent(kContent));
  system->setStyleMask(window, NSWindowStyleMaskBorderless);
  EXPECT_TRUE(
      waitFor([this] { return weston.picture(titleBarOf(kContent)).isAll(kDesktopColor); }));
  EXPECT_TRUE(waitForContent(kContent));
}

TEST_F(WaylandFrame, AHiddenWindowIgnoresClicksAndCanBeShownAgain) {
  ASSERT_NO_FATAL_FAILURE(open());
  const Point closeButton = closeButtonOf(kContent);
  weston.movePointer(closeButton.x, closeButton.y);
  weston.pressButton();
  weston.releaseButton();
  ASSERT_TRUE(waitFor([this] { return reports.contains("close requested " + nameOf(window)); }));
  system->orderOut(window);
  ASSERT_TRUE(waitFor([this] { return weston.picture(kMiddle).isAll(kDesktopColor); }));
  weston.movePointer(closeButton.x + 1, closeButton.y);
  weston.pressButton();
  weston.releaseButton();
  weston.hidePointer();
  deliverAll(*system);
  system->setScene(
      window, {{.kind = SceneItem::Kind::Fill, .frame = {{}, {1024, 768}}, .color = {1, 1, 1, 1}}});
  system->orderFront(window);
  EXPECT_TRUE(waitForContent(kContent));
  EXPECT_TRUE(hasTitleBar(kContent));
  EXPECT_EQ(reports.count("close requested"), 1);
}

TEST_F(WaylandFrame, ASheetIsInFrontOfItsOwner) {
  ASSERT_NO_FATAL_FAILURE(open());
  constexpr PixelRect kSheetContent{412, 334, 200, 100};
  // If the sheet is behind its owner, the owner's white content covers the sheet's title bar.
  const auto isSheetInFront = [&] {
    return !weston.picture(titleBarOf(kSheetContent)).colors().contains(kWhite);
  };
  const WindowHandle sheet =
      makeWindow(NSWindowStyleMaskTitled | NSWindowStyleMaskDocModalWindow, {200, 100}, window);
  ASSERT_TRUE(waitFor([&] { return reports.contains("focus " + nameOf(sheet)); }));
  EXPECT_TRUE(waitFor(isSheetInFront));
  weston.picture().save("wayland-frame-sheet");
  // When the user moves a window, weston raises the window and then its sheet.
  const Point title = titleOf(kContent);
  EXPECT_TRUE(
      drag(title, {title.x + 60, title.y + 60}, [this] { return whiteArea().x != kContent.x; }));
  EXPECT_TRUE(waitFor([this] { return whiteArea().x == kContent.x + 60; }));
  EXPECT_TRUE(isSheetInFront());
  weston.picture().save("wayland-frame-sheet-moved");
}

TEST_F(WaylandFrame, ALostCompositorIsReportedOnce) {
  ASSERT_NO_FATAL_FAILURE(open());
  weston.kill();
  EXPECT_TRUE(waitFor([this] { return reports.contains("display lost"); }));
  system->deliverEvents();
  EXPECT_EQ(reports.count("display lost"), 1);
}

TEST_F(WaylandFrame, OpeningAWindowAfterTheCompositorHasEndedReportsALostDisplay) {
  ASSERT_NO_FATAL_FAILURE(connect());
  weston.kill();
  makeWindow(kAllControls);
  EXPECT_TRUE(waitFor([this] { return reports.contains("display lost"); }));
}

TEST_F(WaylandFrame, AWindowHasNoFrameWithoutLibdecor) {
  std::vector<std::string> logLines;
  const NSLogSink previousSink =
      setNSLogSink([&logLines](std::string_view line) { logLines.emplace_back(line); });
  const HiddenLibrary hidden(kLibdecor);
  ASSERT_NO_FATAL_FAILURE(open());
  const WindowHandle second = makeWindow(kAllControls);
  EXPECT_TRUE(waitFor([&] { return reports.contains("focus " + nameOf(second)); }));
  setNSLogSink(previousSink);
  EXPECT_TRUE(weston.picture(titleBarOf(kContent)).isAll(kDesktopColor));
  EXPECT_THAT(logLines,
              testing::ElementsAre(testing::StartsWith("Wayland: windows have no frame: ")));
  // The back end has opened two windows but tried to load libdecor only once.
  EXPECT_EQ(HiddenLibrary::loadAttemptCount(), 1);
}

TEST_F(WaylandFrame, AWindowHasNoFrameWithoutAPluginOfLibdecor) {
  setenv("LIBDECOR_PLUGIN_DIR", "/nonexistent", 1);
  ASSERT_NO_FATAL_FAILURE(open());
  unsetenv("LIBDECOR_PLUGIN_DIR");
  EXPECT_TRUE(weston.picture(titleBarOf(kContent)).isAll(kDesktopColor));
  weston.closeWindow("Tested");
  EXPECT_TRUE(waitFor([this] { return reports.contains("close requested " + nameOf(window)); }));
}

// libdecor dispatches the default event queue of its connection. On the connection of a host, only
// the host may dispatch this queue.
TEST_F(WaylandFrame, LibdecorIsNotLoadedOnAHostsConnection) {
  const HiddenLibrary hidden(kLibdecor);
  SurfaceHost host(weston.display(), "game", {300, 200}, 0x208040);
  std::string error;
  system = WaylandWindowSystem::share(host.display(), error);
  ASSERT_NE(system, nullptr) << error;
  system->setDelegate(&reports);
  ASSERT_TRUE(system->adoptWindow(host.window(), error).has_value()) << error;
  makeWindow(kAllControls);
  EXPECT_TRUE(waitForContent(kContent));
  EXPECT_EQ(HiddenLibrary::loadAttemptCount(), 0);
  system = nullptr;
}

}  // namespace
}  // namespace vel::test
