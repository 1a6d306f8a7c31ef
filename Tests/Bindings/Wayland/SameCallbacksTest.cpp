// The same actions of a user and of a host cause the same callbacks of the C interface on the
// headless display, on X11 and on Wayland. docs/internals.md lists the allowed differences.
#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Bindings/C/vel_launch_screen.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/WindowSystem/Headless/HeadlessWindowSystem.h"
#include "Tests/Support/Wayland/SurfaceHost.h"
#include "Tests/Support/Wayland/Sway.h"
#include "Tests/Support/X11/X11Test.h"
#include "Tests/WindowSystem/Reports.h"

namespace vel::test {
namespace {

using testing::Contains;
using testing::IsEmpty;

using Lines = std::vector<std::string>;

constexpr const char* kTitle = "game";
constexpr CGSize kSize{500, 320};
constexpr CGSize kLargeSize{600, 400};

/// Which window the launch screen covers.
enum class CoveredWindow : std::uint8_t { LibrarysWindow, HostsWindow };

/// A window system with a host program and a user. In the comments below, "the window" is the
/// window that the launch screen covers.
class TestedSystem : NonCopyable {
 public:
  virtual ~TestedSystem() = default;

  /// Sets the display in `options`, and the host's window if the launch screen covers it.
  virtual void setOptions(VelCreateOptions& options) = 0;
  /// Processes the events of the host. `screen` may be null.
  virtual void pumpHost(VelLaunchScreen* /*screen*/) {}
  /// True if the launch screen covers the window.
  [[nodiscard]] virtual bool isWhite() = 0;
  /// The user activates another application.
  virtual void userLeaves() = 0;
  /// The user activates the host's application again.
  virtual void userReturns() = 0;
  virtual void resize(CGSize size) = 0;
  virtual void userCloses() = 0;
  /// True if the window has this size.
  [[nodiscard]] virtual bool hasSize(CGSize size) = 0;
  /// True if the window is not on the screen.
  [[nodiscard]] virtual bool isClosed() = 0;
};

/// The headless display. It has no windows of other programs, so the library always opens its own
/// window.
class HeadlessSystem final : public TestedSystem {
 public:
  void setOptions(VelCreateOptions& options) override { options.display = "headless"; }
  bool isWhite() override { return !state().scene.empty(); }
  void userLeaves() override { display().userDeactivatesApplication(); }
  void userReturns() override { display().userActivatesApplication(); }
  void resize(CGSize size) override { display().userResizesWindow(handle(), {{}, size}); }
  void userCloses() override { display().userClosesWindow(handle()); }
  bool hasSize(CGSize size) override { return state().description.frame.size == size; }
  bool isClosed() override { return !state().isOnScreen; }

 private:
  static HeadlessWindowSystem& display() {
    return dynamic_cast<HeadlessWindowSystem&>(NSApp->windowSystem());
  }
  // The library opens only one window, and the headless display assigns handle 1 to it.
  static WindowHandle handle() { return static_cast<WindowHandle>(1); }
  static HeadlessWindowSystem::Window state() {
    const HeadlessWindowSystem::Window* const window = display().window(handle());
    return window != nullptr ? *window : HeadlessWindowSystem::Window();
  }
};

/// X11 with metacity.
class X11System final : public TestedSystem {
 public:
  explicit X11System(CoveredWindow coveredWindow) : display_(server_.display()) {
    if (coveredWindow == CoveredWindow::HostsWindow) {
      window_ = client_.openGameWindow(
          {200, 150, static_cast<int>(kSize.width), static_cast<int>(kSize.height)}, 0x208040);
      hostWindow_.x11_window = window_;
      EXPECT_TRUE(eventually([this] { return client_.focusedWindow() == window_; }));
    }
  }

  void setOptions(VelCreateOptions& options) override {
    options.display = "x11";
    options.display_name = display_.c_str();
    options.host_window = window_ != 0 ? &hostWindow_ : nullptr;
  }
  void pumpHost(VelLaunchScreen* /*screen*/) override {
    if (window_ == 0) {
      // The library opens the window, so the test knows only its title.
      window_ = client_.findWindow(kTitle);
    }
  }
  bool isWhite() override { return !isClosed() && client_.screenPicture(window_).isAll(kWhite); }
  void userLeaves() override {
    otherWindow_ = client_.openGameWindow({1020, 100, 200, 150}, 0);
    EXPECT_TRUE(eventually([this] { return client_.isViewable(otherWindow_); }));
    client_.focus(otherWindow_);
  }
  void userReturns() override {
    client_.destroy(otherWindow_);
    client_.focus(window_);
  }
  void resize(CGSize size) override {
    PixelRect area = client_.areaOnScreen(window_);
    area.width = static_cast<int>(size.width);
    area.height = static_cast<int>(size.height);
    client_.configure(window_, area);
  }
  void userCloses() override { client_.sendProtocolMessage(window_, "WM_DELETE_WINDOW"); }
  bool hasSize(CGSize size) override {
    const PixelRect area = client_.areaOnScreen(window_);
    return area.width == static_cast<int>(size.width) &&
           area.height == static_cast<int>(size.height);
  }
  bool isClosed() override { return window_ == 0 || !client_.isViewable(window_); }

 private:
  XServer server_;
  XClient client_{server_.display()};
  Process manager_ = startManager(Manager::Metacity, server_, client_);
  std::string display_;
  VelHostWindow hostWindow_ = VEL_HOST_WINDOW_INIT;
  xcb_window_t window_ = 0;
  xcb_window_t otherWindow_ = 0;
};

/// Wayland under sway.
class WaylandSystem final : public TestedSystem {
 public:
  explicit WaylandSystem(CoveredWindow coveredWindow) : display_(sway_.display()) {
    if (coveredWindow == CoveredWindow::HostsWindow) {
      host_ = std::make_unique<SurfaceHost>(display_, kTitle, kSize, 0x208040);
      const WaylandSurface surface = host_->window();
      hostWindow_.wl_display = surface.display;
      hostWindow_.wl_surface = surface.surface;
      hostWindow_.xdg_toplevel = surface.toplevel;
      hostWindow_.width = kSize.width;
      hostWindow_.height = kSize.height;
    }
  }

  void setOptions(VelCreateOptions& options) override {
    options.display = "wayland";
    options.display_name = display_.c_str();
    options.host_window = host_ != nullptr ? &hostWindow_ : nullptr;
  }
  void pumpHost(VelLaunchScreen* screen) override {
    if (host_ == nullptr) {
      return;
    }
    host_->pump();
    if (host_->size() != reportedSize_) {
      reportedSize_ = host_->size();
      EXPECT_EQ(vel_resized(screen, reportedSize_.width, reportedSize_.height), VEL_OK);
    }
  }
  bool isWhite() override { return picture().colors() == colorsWithWhiteWindow(bounds()); }
  void userLeaves() override {
    otherHost_ = std::make_unique<SurfaceHost>(display_, "other", CGSize{100, 100}, 0x804020);
  }
  void userReturns() override {
    otherHost_ = nullptr;
    sway_.focusWindow(kTitle);
  }
  void resize(CGSize size) override {
    sway_.resizeWindow(kTitle, static_cast<int>(size.width), static_cast<int>(size.height));
  }
  void userCloses() override { sway_.closeWindow(kTitle); }
  bool hasSize(CGSize size) override {
    const PixelRect area = bounds();
    return area.width == static_cast<int>(size.width) &&
           area.height == static_cast<int>(size.height);
  }
  bool isClosed() override { return picture().isAll(kDesktopColor); }

 private:
  static constexpr std::uint32_t kDesktopColor = 0x203020;

  [[nodiscard]] Picture picture() const { return sway_.picture({0, 0, 1024, 768}); }
  // The rectangle around all windows.
  [[nodiscard]] PixelRect bounds() const { return picture().boundsOfPixelsExcept(kDesktopColor); }
  // The number of pixels of each colour on a screen with one white window in `area`.
  static std::map<std::uint32_t, int> colorsWithWhiteWindow(PixelRect area) {
    const int count = area.width * area.height;
    return {{kDesktopColor, 1024 * 768 - count}, {kWhite, count}};
  }

  Sway sway_;
  std::string display_;
  std::unique_ptr<SurfaceHost> host_;
  std::unique_ptr<SurfaceHost> otherHost_;
  VelHostWindow hostWindow_ = VEL_HOST_WINDOW_INIT;
  CGSize reportedSize_ = kSize;
};

/// What a `Script` records.
struct Recording {
  /// Each action, followed by the callbacks and the pause reasons after it.
  Lines lines;
  /// The calls of `controls_kept`: "none" if `controls` is 0, otherwise "some". `lines` does not
  /// contain them, because their place among the other callbacks varies.
  Lines controlsKeptCalls;
  /// The calls of `take_controls`, in the format of `controlsKeptCalls`.
  Lines takeControlsCalls;
};

/// A fixed sequence of actions of the host and the user. Records the callbacks.
class Script : NonCopyable {
 public:
  Script(TestedSystem& system, CoveredWindow coveredWindow)
      : system_(system), coveredWindow_(coveredWindow) {}
  ~Script() { vel_destroy(&screen_); }

  void play();
  [[nodiscard]] const Recording& recording() const { return recording_; }

 private:
  void create();
  void present(const char* mode, VelStatus expectedStatus = VEL_OK);
  void recordAction(const std::string& action) { recording_.lines.push_back("-- " + action); }
  // Waits until the library returns this pause reason, and records the reason.
  void waitForPauseReason(VelPause expected);
  void resize();
  void waitUntil(std::string_view what, const std::function<bool()>& condition);
  [[nodiscard]] bool hasLine(std::string_view line) const {
    return std::ranges::find(recording_.lines, line) != recording_.lines.end();
  }
  static Recording& recordingOf(void* userData) {
    return static_cast<Script*>(userData)->recording_;
  }
  static Lines& linesOf(void* userData) { return recordingOf(userData).lines; }
  // Omits a line that repeats the previous line, because a window manager may reply twice.
  static void recordControls(Lines& lines, std::uint32_t controls) {
    const std::string line = controls != 0 ? "some" : "none";
    if (lines.empty() || lines.back() != line) {
      lines.push_back(line);
    }
  }

  TestedSystem& system_;
  CoveredWindow coveredWindow_;
  VelCallbacks callbacks_ = VEL_CALLBACKS_INIT;
  VelLaunchScreen* screen_ = nullptr;
  Recording recording_;
};

void Script::create() {
  callbacks_.user_data = this;
  callbacks_.state_changed = [](void* data, VelState state, const char* /*error*/) {
    linesOf(data).push_back("state_changed " + std::to_string(state));
  };
  callbacks_.will_appear = [](void* data) { linesOf(data).emplace_back("will_appear"); };
  callbacks_.may_disappear = [](void* data) {
    linesOf(data).emplace_back("may_disappear");
    return 1;
  };
  callbacks_.did_disappear = [](void* data) { linesOf(data).emplace_back("did_disappear"); };
  callbacks_.record_event = [](void* data, const char* event) {
    linesOf(data).push_back(std::string("record_event ") + event);
  };
  callbacks_.log_line = [](void* data, const char* line) {
    linesOf(data).push_back(std::string("log_line ") + line);
  };
  callbacks_.display_lost = [](void* data, const char* /*reason*/) {
    linesOf(data).emplace_back("display_lost");
  };
  callbacks_.ended = [](void* data, VelEndReason reason) {
    linesOf(data).push_back("ended " + std::to_string(reason));
  };
  callbacks_.controls_kept = [](void* data, std::uint32_t controls) {
    recordControls(recordingOf(data).controlsKeptCalls, controls);
  };
  callbacks_.take_controls = [](void* data, std::uint32_t controls) {
    recordControls(recordingOf(data).takeControlsCalls, controls);
  };
  VelCreateOptions options = VEL_CREATE_OPTIONS_INIT;
  options.title = kTitle;
  options.width = kSize.width;
  options.height = kSize.height;
  options.callbacks = &callbacks_;
  system_.setOptions(options);
  ASSERT_EQ(vel_create(&options, &screen_), VEL_OK) << vel_last_error();
}

void Script::present(const char* mode, VelStatus expectedStatus) {
  VelRequest request = VEL_REQUEST_INIT;
  request.mode = mode;
  request.event = "launch_end";
  request.seconds = 4;
  EXPECT_EQ(vel_request(screen_, &request), VEL_OK) << vel_last_error();
  EXPECT_EQ(vel_present(screen_, VEL_PRESENT_EMBEDDED), expectedStatus) << vel_last_error();
}

void Script::waitUntil(std::string_view what, const std::function<bool()>& condition) {
  EXPECT_TRUE(eventually([&] {
    system_.pumpHost(screen_);
    vel_pump(screen_, nullptr);
    return condition();
  })) << what;
}

void Script::waitForPauseReason(VelPause expected) {
  waitUntil("pause reason", [&] {
    VelPause reason = VEL_PAUSE_NOT_UP;
    vel_pause_reason(screen_, &reason);
    return reason == expected;
  });
  recording_.lines.push_back("pause reason " + std::to_string(expected));
}

void Script::resize() {
  recordAction("resize the window");
  system_.resize(kLargeSize);
  waitUntil("resized", [this] { return system_.hasSize(kLargeSize); });
}

void Script::play() {
  create();
  waitUntil("open", [this] { return system_.hasSize(kSize); });
  // A covered window of the library cannot be resized, so the script resizes it before covering it.
  if (coveredWindow_ == CoveredWindow::LibrarysWindow) {
    resize();
  }

  recordAction("the host presents the launch screen");
  present("forced");
  waitUntil("white", [this] { return system_.isWhite(); });
  waitForPauseReason(VEL_PAUSE_NONE);
  recordAction("the user leaves");
  system_.userLeaves();
  waitForPauseReason(VEL_PAUSE_NOT_IN_FRONT);
  recordAction("the user returns");
  system_.userReturns();
  waitForPauseReason(VEL_PAUSE_NONE);
  if (coveredWindow_ == CoveredWindow::HostsWindow) {
    resize();
  }
  recordAction("the user closes the covered window");
  system_.userCloses();
  // The window stays open: the library does not close its own covered window, and the host of this
  // test ignores the request. 1 is VEL_END_TIME_USED_UP.
  waitUntil("the end", [this] { return hasLine("ended 1") && !system_.isWhite(); });

  recordAction("the host presents and dismisses a second launch screen");
  present("skip");
  waitUntil("white again", [this] { return system_.isWhite(); });
  waitForPauseReason(VEL_PAUSE_NONE);
  EXPECT_EQ(vel_dismiss(screen_), VEL_OK) << vel_last_error();
  // 2 is VEL_END_DISMISSED.
  waitUntil("the second end", [this] { return hasLine("ended 2") && !system_.isWhite(); });

  if (coveredWindow_ == CoveredWindow::LibrarysWindow) {
    recordAction("the user closes the window");
    system_.userCloses();
    waitUntil("closed", [this] { return system_.isClosed(); });
    present("forced", VEL_NOTHING_TO_PRESENT);
  } else {
    recordAction("the host destroys a third launch screen");
    present("forced");
    waitUntil("white the third time", [this] { return system_.isWhite(); });
    vel_destroy(&screen_);
  }
}

template <class System, class... Arguments>
Recording record(CoveredWindow coveredWindow, Arguments... systemArguments) {
  System system(systemArguments...);
  Script script(system, coveredWindow);
  script.play();
  return script.recording();
}

class SameCallbacks : public testing::TestWithParam<CoveredWindow> {};

TEST_P(SameCallbacks, OnX11WaylandAndTheHeadlessDisplay) {
  const CoveredWindow coveredWindow = GetParam();
  const Recording headless = record<HeadlessSystem>(coveredWindow);
  const Recording x11 = record<X11System>(coveredWindow, coveredWindow);
  const Recording wayland = record<WaylandSystem>(coveredWindow, coveredWindow);
  EXPECT_THAT(headless.lines, Contains("record_event launch_end").Times(1));
  EXPECT_EQ(x11.lines, headless.lines);
  EXPECT_EQ(wayland.lines, headless.lines);
  EXPECT_EQ(wayland.lines, x11.lines);

  // The library never calls controls_kept on the headless display, which has no window manager. On
  // X11 and Wayland, the library calls controls_kept with 0 after it has restored the controls.
  EXPECT_THAT(headless.controlsKeptCalls, IsEmpty());
  EXPECT_THAT(x11.controlsKeptCalls, Contains("none"));
  EXPECT_THAT(wayland.controlsKeptCalls, Contains("none"));
  // The library calls take_controls only for a Wayland surface of the host.
  EXPECT_THAT(headless.takeControlsCalls, IsEmpty());
  EXPECT_THAT(x11.takeControlsCalls, IsEmpty());
  Lines expectedCalls;
  if (coveredWindow == CoveredWindow::HostsWindow) {
    expectedCalls = wayland.controlsKeptCalls;
    expectedCalls.emplace_back("none");  // vel_destroy() calls take_controls, not controls_kept
  }
  EXPECT_EQ(wayland.takeControlsCalls, expectedCalls);
}

INSTANTIATE_TEST_SUITE_P(Windows, SameCallbacks,
                         testing::Values(CoveredWindow::LibrarysWindow, CoveredWindow::HostsWindow),
                         [](const testing::TestParamInfo<CoveredWindow>& testInfo) {
                           return testInfo.param == CoveredWindow::LibrarysWindow ? "OfTheLibrary"
                                                                                  : "OfTheHost";
                         });

}  // namespace
}  // namespace vel::test
