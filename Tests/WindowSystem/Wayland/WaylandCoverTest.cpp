// Tests the covers that the back end shows over the surface of a host in the same process.
#include <gmock/gmock.h>

#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>

#include "Platform/WindowSystem/Wayland/WaylandWindowSystem.h"
#include "Tests/Support/Wayland/Compositor.h"
#include "Tests/Support/Wayland/SurfaceHost.h"
#include "Tests/WindowSystem/Reports.h"

namespace vel::test {
namespace {

using testing::Contains;
using testing::IsEmpty;

constexpr std::uint32_t kGreen = 0x208040;
constexpr CGSize kSize{500, 320};
constexpr NSWindowStyleMask kControls =
    NSWindowStyleMaskClosable | NSWindowStyleMaskMiniaturizable | NSWindowStyleMaskResizable;

Scene white(CGSize size) {
  return {{.kind = SceneItem::Kind::Fill, .frame = {{}, size}, .color = {1, 1, 1, 1}}};
}

Scene whiteWithSpinner(CGSize size) {
  Scene scene = white(size);
  scene.push_back({.kind = SceneItem::Kind::Spinner,
                   .frame = CGRectMake(size.width / 2 - 16, size.height / 2 - 16, 32, 32),
                   .color = {},
                   .isAnimated = true});
  return scene;
}

std::ptrdiff_t openDescriptorCount() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                       std::filesystem::directory_iterator());
}

/// A host with a window in the middle of the screen. The back end uses the connection of the host.
class WaylandCover : public testing::TestWithParam<CompositorKind> {
 protected:
  WaylandCover() {
    std::string error;
    system = WaylandWindowSystem::share(host->display(), error);
    EXPECT_NE(system, nullptr) << error;
    system->setDelegate(&reports);
  }
  ~WaylandCover() override {
    system = nullptr;
    host = nullptr;
  }

  /// Adopts the window of the host.
  AdoptedWindow adopt(bool passesToplevel = true) {
    WaylandSurface window = host->window();
    if (!passesToplevel) {
      window.toplevel = nullptr;
    }
    std::string error;
    const auto adopted = system->adoptWindow(window, error);
    EXPECT_TRUE(adopted.has_value()) << error;
    return adopted.value_or(AdoptedWindow());
  }
  /// Delivers the events of the back end, but not those of the host, until the condition is true.
  bool waitFor(const std::function<bool()>& condition) { return deliverUntil(*system, condition); }
  /// Delivers the events of the back end and of the host until the condition is true.
  bool waitWithHost(const std::function<bool()>& condition) {
    return deliverUntil(*system, [&] {
      host->pump();
      return condition();
    });
  }
  /// The area of the screen that a window of this size covers. The compositor centres windows.
  static PixelRect areaOf(CGSize size) {
    return {(1024 - static_cast<int>(size.width)) / 2, (768 - static_cast<int>(size.height)) / 2,
            static_cast<int>(size.width), static_cast<int>(size.height)};
  }
  /// Expects that the first deadline other than 0 is at most 50 milliseconds away. A deadline of 0
  /// means that work is due now.
  void expectDeadlineWithin50Milliseconds() {
    Nanoseconds deadline = 0;
    ASSERT_TRUE(waitFor([&] {
      deadline = system->nextDeadline();
      return deadline != 0;
    }));
    EXPECT_LE(deadline, steadyNow() + kNanosecondsPerSecond / 20);
  }
  [[nodiscard]] Picture picture() const { return compositor->picture(areaOf(host->size())); }
  /// Waits until the area of the host's window shows only this colour.
  bool becomes(std::uint32_t color) {
    return waitWithHost([this, color] { return picture().isAll(color); });
  }

  std::unique_ptr<Compositor> compositor = startCompositor(GetParam());
  std::unique_ptr<SurfaceHost> host =
      std::make_unique<SurfaceHost>(compositor->display(), "game", kSize, kGreen);
  std::unique_ptr<WaylandWindowSystem> system;
  ReportListener reports;
};

TEST_P(WaylandCover, AnAdoptedSurfaceIsAPlayerWindowWithTheHostsSizeAndFocus) {
  ASSERT_TRUE(becomes(kGreen));
  const AdoptedWindow window = adopt();
  EXPECT_EQ(window.className, "PlayerWindow");
  EXPECT_EQ(window.frame, (CGRect{{}, kSize}));
  EXPECT_EQ(window.styleMask, NSWindowStyleMaskTitled | kControls);
  EXPECT_TRUE(window.isOnScreen);
  EXPECT_TRUE(window.hasFocus);
}

TEST_P(WaylandCover, TheCoverHasTheSizeOfTheHostAndNeedsNoCommitOfTheHost) {
  ASSERT_TRUE(becomes(kGreen));
  const AdoptedWindow window = adopt();
  system->setScene(window.handle, white(kSize));
  EXPECT_TRUE(waitFor([this] { return picture().isAll(kWhite); }));
  const PixelRect area = areaOf(kSize);
  const Picture surroundings =
      compositor->picture({area.x - 1, area.y - 1, area.width + 2, area.height + 2});
  EXPECT_EQ(surroundings.boundsOfPixelsExcept(surroundings.at(0, 0)),
            (PixelRect{1, 1, area.width, area.height}));
  system->setScene(window.handle, {});
  EXPECT_TRUE(waitFor([this] { return picture().isAll(kGreen); }));
}

TEST_P(WaylandCover, TheSpinnerTurnsInTheMiddle) {
  ASSERT_TRUE(becomes(kGreen));
  const AdoptedWindow window = adopt();
  system->setScene(window.handle, whiteWithSpinner(kSize));
  Picture first;
  ASSERT_TRUE(waitFor([&] {
    first = picture();
    const PixelRect bounds = first.boundsOfPixelsExcept(kWhite);
    return first.at(0, 0) == kWhite && bounds.x >= 234 && bounds.y >= 144 && bounds.width > 24 &&
           bounds.height > 24 && bounds.x + bounds.width <= 266 && bounds.y + bounds.height <= 176;
  }));
  first.save("wayland-cover-with-indicator");
  EXPECT_TRUE(waitFor([&] { return picture() != first; }));
  EXPECT_NE(system->nextDeadline(), kNever);
}

TEST_P(WaylandCover, SetFrameResizesTheCover) {
  ASSERT_TRUE(becomes(kGreen));
  const AdoptedWindow window = adopt();
  system->setScene(window.handle, white(kSize));
  ASSERT_TRUE(becomes(kWhite));
  compositor->resizeWindow("game", 700, 450);
  constexpr CGSize kLargeSize{700, 450};
  ASSERT_TRUE(waitWithHost([&] { return host->size() == kLargeSize; }));
  system->setFrame(window.handle, {{}, kLargeSize});
  system->setScene(window.handle, white(kLargeSize));
  EXPECT_TRUE(waitWithHost([&] { return picture().isAll(kWhite); }));
  system->releaseWindow(window.handle);
  EXPECT_TRUE(becomes(kGreen));
}

TEST_P(WaylandCover, TheCoverTakesThePointerFromTheHost) {
  ASSERT_TRUE(becomes(kGreen));
  const AdoptedWindow window = adopt();
  compositor->click(512, 384);
  ASSERT_TRUE(waitWithHost([this] { return host->presses() == 1; }));
  system->setScene(window.handle, whiteWithSpinner(kSize));
  ASSERT_TRUE(waitWithHost([this] { return picture().at(0, 0) == kWhite; }));
  compositor->click(512, 384);  // on the spinner
  compositor->click(400, 300);
  ASSERT_TRUE(waitWithHost([this] { return host->pressesElsewhere() == 2; }));
  system->setScene(window.handle, {});
  ASSERT_TRUE(becomes(kGreen));
  compositor->click(512, 384);
  ASSERT_TRUE(waitWithHost([this] { return host->presses() >= 2; }));
  EXPECT_EQ(host->presses(), 2);
  // The wl_surface of a cover must have no user data. A toolkit in the host would mistake the data
  // for its own.
  EXPECT_FALSE(host->hasEnteredForeignSurfaceWithData());
  EXPECT_THAT(reports.lines, IsEmpty());  // the clicks do not move the focus away
}

TEST_P(WaylandCover, LosingAndRegainingTheFocusIsReported) {
  ASSERT_TRUE(becomes(kGreen));
  const AdoptedWindow window = adopt();
  system->setScene(window.handle, white(kSize));
  ASSERT_TRUE(becomes(kWhite));
  ASSERT_THAT(reports.lines, IsEmpty());
  const SurfaceHost other(compositor->display(), "other", {100, 100}, 0x804020);
  const std::string focusReport = "focus " + nameOf(window.handle);
  ASSERT_TRUE(waitFor([this] { return reports.contains("focus 0x0"); }));
  compositor->focusWindow("game");
  ASSERT_TRUE(waitFor([&] { return reports.count("activated") > 0; }));
  EXPECT_EQ(reports.lines, (std::vector<std::string>{"deactivated", "focus 0x0", focusReport,
                                                     "activated " + nameOf(window.handle)}));
}

TEST_P(WaylandCover, ALostFocusIsReportedEvenIfTheHostHasReadTheEvents) {
  ASSERT_TRUE(becomes(kGreen));
  const AdoptedWindow window = adopt();
  system->setScene(window.handle, white(kSize));
  ASSERT_TRUE(becomes(kWhite));
  const SurfaceHost other(compositor->display(), "other", {100, 100}, 0x804020);
  // The host has read all events, so the descriptor of the connection is no longer readable.
  ASSERT_TRUE(eventually([this] {
    host->pump();
    return system->nextDeadline() == 0;
  }));
  EXPECT_TRUE(waitFor([this] { return reports.contains("deactivated"); }));
}

TEST_P(WaylandCover, TheHostReceivesNoEventsForOutputsThatItHasNotBound) {
  ASSERT_TRUE(becomes(kGreen));
  const AdoptedWindow window = adopt();
  system->setScene(window.handle, whiteWithSpinner(kSize));
  ASSERT_TRUE(waitWithHost([this] { return picture().at(0, 0) == kWhite; }));
  compositor->resizeWindow("game", 700, 450);
  ASSERT_TRUE(waitWithHost([this] { return host->size() == CGSize{700, 450}; }));
  wl_display_roundtrip(host->display());
  EXPECT_EQ(host->outputEntries(), 0);
  system = nullptr;
  wl_display_roundtrip(host->display());
  EXPECT_EQ(host->outputEntries(), 0);
}

TEST_P(WaylandCover, TheNextDeadlineIsWithin50MillisecondsWhileACoverIsShown) {
  ASSERT_TRUE(becomes(kGreen));
  const AdoptedWindow window = adopt();
  system->setScene(window.handle, white(kSize));
  expectDeadlineWithin50Milliseconds();
  system->setScene(window.handle, {});
  EXPECT_TRUE(waitFor([this] { return system->nextDeadline() == kNever; }));
}

TEST_P(WaylandCover, TheNextDeadlineIsWithin50MillisecondsWhileAWindowOfTheLibraryIsShown) {
  ASSERT_TRUE(becomes(kGreen));
  adopt();
  const WindowHandle sheet = system->createWindow(
      {.className = "Sheet", .title = "sheet", .frame = CGRectMake(0, 0, 100, 100)});
  system->orderFront(sheet);
  ASSERT_TRUE(waitFor([&] { return reports.contains("focus " + nameOf(sheet)); }));
  expectDeadlineWithin50Milliseconds();
  system->orderOut(sheet);
  EXPECT_TRUE(waitFor([this] { return system->nextDeadline() == kNever; }));
}

TEST_P(WaylandCover, TheBackEndDispatchesNoEventsOfTheHost) {
  ASSERT_TRUE(becomes(kGreen));
  const AdoptedWindow window = adopt();
  system->setScene(window.handle, white(kSize));
  ASSERT_TRUE(becomes(kWhite));
  const int count = host->eventCount();
  compositor->resizeWindow("game", 700, 450);
  const SurfaceHost other(compositor->display(), "other", {100, 100}, 0x804020);
  ASSERT_TRUE(waitFor([this] { return reports.contains("focus 0x0"); }));
  EXPECT_EQ(host->eventCount(), count);
  EXPECT_TRUE(waitWithHost([this] { return host->size() == CGSize{700, 450}; }));
}

// A "remaining controls" report names the controls that the window still offers although the style
// mask excludes them.
TEST_P(WaylandCover, ResizingCanBeDisabledOnlyIfTheHostPassesItsToplevel) {
  ASSERT_TRUE(becomes(kGreen));
  AdoptedWindow window = adopt();
  system->setStyleMask(window.handle, NSWindowStyleMaskTitled);
  EXPECT_TRUE(waitFor([&] {
    return reports.contains("remaining controls " + nameOf(window.handle) + " " +
                            std::to_string(kControls & ~NSWindowStyleMaskResizable));
  }));
  system->setStyleMask(window.handle, window.styleMask);
  EXPECT_TRUE(waitFor(
      [&] { return reports.contains("remaining controls " + nameOf(window.handle) + " 0"); }));
  system->releaseWindow(window.handle);
  window = adopt(false);
  system->setStyleMask(window.handle, NSWindowStyleMaskTitled);
  EXPECT_TRUE(waitFor([&] {
    return reports.contains("remaining controls " + nameOf(window.handle) + " " +
                            std::to_string(kControls));
  }));
}

TEST_P(WaylandCover, AnInvalidHandleMakesNoWindowModal) {
  ASSERT_TRUE(becomes(kGreen));
  adopt();
  const WindowHandle closed = system->createWindow(
      {.className = "Any", .title = "closed", .frame = CGRectMake(0, 0, 100, 100)});
  system->releaseWindow(closed);
  system->setModalWindow(closed);
  wl_display_roundtrip(host->display());
  compositor->click(310, 310);
  EXPECT_TRUE(waitWithHost([this] { return host->presses() == 1; }));
}

TEST_P(WaylandCover, AModalWindowShieldsTheHostFromThePointer) {
  ASSERT_TRUE(becomes(kGreen));
  adopt();
  const WindowHandle modal = system->createWindow(
      {.className = "Modal", .title = "modal", .frame = CGRectMake(0, 0, 100, 100)});
  system->setModalWindow(modal);
  system->orderFront(modal);
  ASSERT_TRUE(waitWithHost([&] {
    return reports.contains("focus " + nameOf(modal)) && picture().at(250, 160) != kGreen;
  }));
  compositor->click(300, 300);
  ASSERT_TRUE(waitWithHost([this] { return host->pressesElsewhere() == 1; }));
  system->setModalWindow(WindowHandle::None);
  system->releaseWindow(modal);
  // A transparent surface was over the host while a window was modal. After this round trip, the
  // compositor has removed the transparent surface.
  wl_display_roundtrip(host->display());
  ASSERT_TRUE(becomes(kGreen));
  compositor->click(310, 310);
  ASSERT_TRUE(waitWithHost([this] { return host->presses() > 0; }));
  EXPECT_EQ(host->presses(), 1);
}

TEST_P(WaylandCover, AThousandCoversLeaveNoProtocolObjectsAndNoDescriptors) {
  ASSERT_TRUE(becomes(kGreen));
  const auto nextId = [this] {
    wl_display_roundtrip(host->display());  // frees the ids of destroyed objects
    system->deliverEvents();
    wl_surface* const surface = wl_compositor_create_surface(host->compositor());
    const std::uint32_t id = wl_proxy_get_id(reinterpret_cast<wl_proxy*>(surface));
    wl_surface_destroy(surface);
    return id;
  };
  const auto cover = [this] {
    const AdoptedWindow window = adopt();
    system->setScene(window.handle, whiteWithSpinner(kSize));
    deliverAll(*system);
    system->releaseWindow(window.handle);
    deliverAll(*system);
  };
  cover();
  const std::uint32_t id = nextId();
  const std::ptrdiff_t descriptorCount = openDescriptorCount();
  for (int i = 0; i < 1000; ++i) {
    cover();
  }
  EXPECT_LT(nextId(), id + 100);
  EXPECT_EQ(openDescriptorCount(), descriptorCount);
  EXPECT_TRUE(becomes(kGreen));
}

TEST_P(WaylandCover, ALostCompositorIsReportedWhileACoverIsShown) {
  ASSERT_TRUE(becomes(kGreen));
  const AdoptedWindow window = adopt();
  system->setScene(window.handle, whiteWithSpinner(kSize));
  ASSERT_TRUE(waitWithHost([this] { return picture().at(0, 0) == kWhite; }));
  compositor->kill();
  EXPECT_TRUE(waitFor([this] { return reports.contains("display lost"); }));
  EXPECT_EQ(system->nextDeadline(), kNever);
  std::string error;
  EXPECT_FALSE(system->adoptWindow(host->window(), error).has_value());
}

// A host may destroy an adopted surface only if `adoptWindow` has not received the xdg_toplevel of
// the surface.
TEST_P(WaylandCover, DestroyingAnAdoptedSurfaceDoesNotBreakTheConnection) {
  ASSERT_TRUE(becomes(kGreen));
  const AdoptedWindow window = adopt(false);
  system->setScene(window.handle, white(kSize));
  ASSERT_TRUE(becomes(kWhite));
  host->destroyWindow();
  deliverAll(*system);
  system->setScene(window.handle, {});
  system->releaseWindow(window.handle);
  deliverAll(*system);
  EXPECT_EQ(wl_display_get_error(host->display()), 0);
  EXPECT_THAT(reports.lines, testing::Not(Contains("display lost")));
}

TEST_P(WaylandCover, ASurfaceIsRefusedIfItIsAlreadyAdoptedOrBelongsToAnotherConnection) {
  const SurfaceHost other(compositor->display(), "other", {100, 100}, 0x804020);
  std::string error;
  EXPECT_FALSE(system->adoptWindow(other.window(), error).has_value());
  EXPECT_EQ(error, "the surface belongs to another connection");
  adopt();
  EXPECT_FALSE(system->adoptWindow(host->window(), error).has_value());
  EXPECT_EQ(error, "the surface is already adopted");
}

INSTANTIATE_TEST_SUITE_P(Under, WaylandCover,
                         testing::Values(CompositorKind::Sway, CompositorKind::Weston),
                         [](const auto& testInfo) { return nameOf(testInfo.param); });

}  // namespace
}  // namespace vel::test
