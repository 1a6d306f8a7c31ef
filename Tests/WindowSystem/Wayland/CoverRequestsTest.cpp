// Covers on a compositor that records the requests of its clients. A host is a program that uses
// the library. The host shares its Wayland connection with the back end. A cover is a subsurface
// that the back end opens over the host's surface.
#include <gmock/gmock.h>
#include <sys/resource.h>

#include <memory>
#include <string>
#include <vector>

#include "Platform/Foundation/NSLog.h"
#include "Platform/WindowSystem/Wayland/WaylandWindowSystem.h"
#include "Tests/Support/Wayland/RecordingCompositor.h"
#include "Tests/Support/Wayland/SurfaceHost.h"
#include "Tests/WindowSystem/Reports.h"

namespace vel::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::StartsWith;

constexpr std::uint32_t kGreen = 0x208040;
constexpr CGSize kSize{301, 201};
constexpr CGSize kLargeSize{400, 260};
// The spinner is in the middle of the cover.
constexpr double kSpinnerSide = 32;
constexpr double kSmallSpinnerSide = 2;  // is fast to draw

Scene whiteScene(CGSize size) {
  return {{.kind = SceneItem::Kind::Fill, .frame = {{}, size}, .color = {1, 1, 1, 1}}};
}

Scene whiteSceneWithSpinner(CGSize size, double side = kSpinnerSide) {
  Scene scene = whiteScene(size);
  scene.push_back(
      {.kind = SceneItem::Kind::Spinner,
       .frame = CGRectMake((size.width - side) / 2, (size.height - side) / 2, side, side),
       .color = {},
       .isAnimated = true});
  return scene;
}

CGSize squareOf(double side) { return {side, side}; }

/// While this object exists, the process cannot open files, so it cannot allocate shared memory.
class NoNewFiles {
 public:
  NoNewFiles() {
    getrlimit(RLIMIT_NOFILE, &previous_);
    const rlimit limit{.rlim_cur = 0, .rlim_max = previous_.rlim_max};
    setrlimit(RLIMIT_NOFILE, &limit);
  }
  ~NoNewFiles() { setrlimit(RLIMIT_NOFILE, &previous_); }
  NoNewFiles(const NoNewFiles&) = delete;
  NoNewFiles& operator=(const NoNewFiles&) = delete;

 private:
  rlimit previous_{};
};

/// A compositor, a host, and the back end on the host's connection.
class WaylandCoverRequests : public testing::Test {
 protected:
  /// Opens the host's window and the back end, and adopts the window.
  void start() {
    host = std::make_unique<SurfaceHost>(compositor.display(), "game", kSize, kGreen);
    hostSurface = wl_proxy_get_id(reinterpret_cast<wl_proxy*>(host->window().surface));
    std::string error;
    system = WaylandWindowSystem::share(host->display(), error);
    ASSERT_NE(system, nullptr) << error;
    system->setDelegate(&reports);
    window = adopt();
    exchange();
  }
  WindowHandle adopt() {
    std::string error;
    return system->adoptWindow(host->window(), error).value().handle;
  }
  /// Exchanges requests and events with the compositor until all have been handled.
  void exchange() {
    do {
      compositor.handleRequests();
      host->pump();
    } while (system->deliverEvents());
  }
  /// Sets the size of the window and shows the scene in it.
  void show(const Scene& scene, CGSize size) {
    system->setFrame(window, {{}, size});
    system->setScene(window, scene);
    exchange();
  }
  /// Returns the reports since the previous call.
  std::vector<std::string> takeReports() {
    exchange();
    return std::exchange(reports.lines, {});
  }
  SurfaceRecord cover() { return compositor.children(hostSurface).at(0); }
  SurfaceRecord spinner() { return compositor.children(cover().id).at(0); }

  RecordingCompositor compositor;
  int xdgWmBase = compositor.addGlobal("xdg_wm_base");
  std::unique_ptr<SurfaceHost> host;
  std::uint32_t hostSurface = 0;
  ReportListener reports;
  std::unique_ptr<WaylandWindowSystem> system;
  WindowHandle window = WindowHandle::None;
};

TEST_F(WaylandCoverRequests, TheBackEndCommitsTheHostsSurfaceOnlyWhenACoverOpens) {
  start();
  const int commitCount = compositor.surface(hostSurface).commitCount;
  show(whiteScene(kSize), kSize);
  EXPECT_EQ(compositor.children(hostSurface).size(), 1U);
  show(whiteSceneWithSpinner(kLargeSize), kLargeSize);
  show({}, kLargeSize);
  EXPECT_EQ(compositor.children(hostSurface).size(), 0U);
  EXPECT_EQ(compositor.surface(hostSurface).commitCount, commitCount + 1);
}

// Scales

TEST_F(WaylandCoverRequests, TheSpinnerFollowsTheFractionalScale) {
  compositor.addGlobal("wp_viewporter");
  compositor.addGlobal("wp_fractional_scale_manager_v1");
  start();
  show(whiteSceneWithSpinner(kSize), kSize);
  for (const double scale : {1.25, 1.5, 2.0, 1.0, 3.0, 1.25}) {
    SCOPED_TRACE(scale);
    compositor.setScale(cover().id, scale);
    exchange();
    EXPECT_EQ(cover().size(), kSize);
    EXPECT_EQ(spinner().bufferSize, squareOf(scale * kSpinnerSide));
    EXPECT_EQ(spinner().bufferScale, 1);
    EXPECT_EQ(spinner().size(), squareOf(kSpinnerSide));
  }
}

TEST_F(WaylandCoverRequests, TheFractionalScaleStaysWhenTheSizeChanges) {
  compositor.addGlobal("wp_viewporter");
  compositor.addGlobal("wp_fractional_scale_manager_v1");
  start();
  show(whiteSceneWithSpinner(kSize), kSize);
  compositor.setScale(cover().id, 1.5);
  exchange();
  show(whiteSceneWithSpinner(kLargeSize), kLargeSize);
  EXPECT_EQ(cover().size(), kLargeSize);
  EXPECT_EQ(spinner().bufferSize, squareOf(1.5 * kSpinnerSide));
  EXPECT_EQ(spinner().size(), squareOf(kSpinnerSide));
}

// Without viewporter, the back end does not use the fractional scale. On the connection of a host,
// it then always draws spinners for the scale 2.
TEST_F(WaylandCoverRequests, TheSpinnerHasScaleTwoWithoutViewporter) {
  compositor.addGlobal("wp_fractional_scale_manager_v1");
  start();
  show(whiteSceneWithSpinner(kSize), kSize);
  EXPECT_EQ(cover().bufferSize, kSize);
  EXPECT_EQ(cover().bufferScale, 1);
  EXPECT_EQ(spinner().bufferSize, squareOf(2 * kSpinnerSide));
  EXPECT_EQ(spinner().bufferScale, 2);
}

TEST_F(WaylandCoverRequests, ANewViewporterIsUsedForTheNextCover) {
  start();
  show(whiteSceneWithSpinner(kSize), kSize);
  compositor.addGlobal("wp_viewporter");
  exchange();
  show(whiteSceneWithSpinner(kLargeSize), kLargeSize);
  EXPECT_EQ(cover().size(), kLargeSize);
  EXPECT_EQ(spinner().size(), squareOf(kSpinnerSide));
  show({}, kLargeSize);
  show(whiteScene(kLargeSize), kLargeSize);
  EXPECT_EQ(cover().destination, kLargeSize);
}

TEST_F(WaylandCoverRequests, TheBackEndBindsNoOutputOnTheConnectionOfAHost) {
  compositor.addOutput(2);
  start();
  compositor.addOutput(3);
  exchange();
  EXPECT_THAT(compositor.objects(), Not(Contains(testing::Key("wl_output"))));
}

// Seats

TEST_F(WaylandCoverRequests, TheFocusEndsWhenTheSeatThatGaveItIsRemoved) {
  const int seat = compositor.addSeat();
  start();
  takeReports();
  compositor.enterKeyboard(seat, hostSurface);
  EXPECT_THAT(takeReports(), ElementsAre("focus " + nameOf(window), "activated " + nameOf(window)));
  compositor.removeGlobal(seat);
  EXPECT_THAT(takeReports(), ElementsAre("deactivated", "focus 0x0"));
}

TEST_F(WaylandCoverRequests, TheFocusStaysWhenAnotherSeatIsRemoved) {
  const int seat = compositor.addSeat();
  const int otherSeat = compositor.addSeat();
  start();
  compositor.enterKeyboard(seat, hostSurface);
  takeReports();
  compositor.removeGlobal(otherSeat);
  EXPECT_THAT(takeReports(), ElementsAre());
  compositor.leaveKeyboard(seat, hostSurface);
  EXPECT_THAT(takeReports(), ElementsAre("deactivated", "focus 0x0"));
}

TEST_F(WaylandCoverRequests, ANewSeatCanFocusTheWindow) {
  start();
  show(whiteScene(kSize), kSize);
  // Without a seat, no window has the focus.
  EXPECT_THAT(takeReports(), ElementsAre("deactivated"));
  const int seat = compositor.addSeat();
  exchange();
  compositor.enterKeyboard(seat, cover().id);
  EXPECT_THAT(takeReports(), ElementsAre("focus " + nameOf(window), "activated " + nameOf(window)));
}

TEST_F(WaylandCoverRequests, TheFocusStaysWhenTheKeyboardMovesToTheCover) {
  const int seat = compositor.addSeat();
  start();
  show(whiteScene(kSize), kSize);
  compositor.enterKeyboard(seat, hostSurface);
  takeReports();
  compositor.leaveKeyboard(seat, hostSurface);
  system->deliverEvents();
  compositor.enterKeyboard(seat, cover().id);
  EXPECT_THAT(takeReports(), ElementsAre());
}

// Objects

TEST_F(WaylandCoverRequests, AThousandCoversLeaveNoAdditionalObjectsInTheCompositor) {
  compositor.addGlobal("wp_viewporter");
  compositor.addGlobal("wp_fractional_scale_manager_v1");
  const int seat = compositor.addSeat();
  start();
  compositor.enterKeyboard(seat, hostSurface);
  exchange();
  const std::map<std::string, int> objectsBefore = compositor.objects();
  for (int i = 0; i < 500; ++i) {  // each iteration opens two covers
    system->setScene(window, whiteSceneWithSpinner(kSize, kSmallSpinnerSide));
    exchange();
    system->setScene(window, {});
    system->setScene(window, whiteSceneWithSpinner(kSize, kSmallSpinnerSide));
    exchange();
    system->releaseWindow(window);
    window = adopt();
  }
  exchange();
  EXPECT_EQ(compositor.objects(), objectsBefore);
}

// Buffers

TEST_F(WaylandCoverRequests, AFailedAllocationOfABufferIsLoggedAndTheNextSceneIsShown) {
  compositor.addGlobal("wp_viewporter");
  start();
  show(whiteScene(kSize), kSize);
  std::vector<std::string> logLines;
  const NSLogSink previousSink =
      setNSLogSink([&logLines](std::string_view line) { logLines.emplace_back(line); });
  {
    const NoNewFiles noNewFiles;
    system->setFrame(window, {{}, kLargeSize});
    system->setScene(window, whiteSceneWithSpinner(kLargeSize));
  }
  setNSLogSink(previousSink);
  EXPECT_THAT(logLines, Contains(StartsWith("Wayland: shared memory of 1024 bytes cannot be")));
  exchange();
  EXPECT_EQ(cover().size(), kSize);
  show(whiteSceneWithSpinner(kLargeSize), kLargeSize);
  EXPECT_EQ(cover().size(), kLargeSize);
  EXPECT_EQ(spinner().size(), squareOf(kSpinnerSide));
}

TEST_F(WaylandCoverRequests, AProtocolErrorIsReportedAsALostDisplay) {
  start();
  compositor.refusePools();
  system->setScene(window, whiteScene(kSize));
  compositor.handleRequests();
  while (system->deliverEvents()) {
  }
  EXPECT_TRUE(reports.contains("display lost"));
  EXPECT_EQ(system->nextDeadline(), kNever);
  std::string error;
  EXPECT_FALSE(system->adoptWindow(host->window(), error).has_value());
  EXPECT_EQ(error, "the Wayland display is lost");
}

}  // namespace
}  // namespace vel::test
