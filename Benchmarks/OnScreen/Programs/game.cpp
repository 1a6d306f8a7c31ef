// A game that draws 240 frames a second. It covers its own window with nothing, with a cover made
// with XCB only, or with the library's launch screen and its indicator.
//
//     game none|bare|library SECONDS
//
// Prints one line of JSON, with times in nanoseconds:
//   "show"             how long the calls that show the cover took
//   "pumps"            how long the cover's call in each frame took, while the cover was shown and
//                      for one second after its end
//   "missed_coming"    the frames missed in the first quarter of a second of the cover
//   "missed_going"     the frames missed from a quarter of a second before the end of the cover
//                      to one second after it
//   "missed"           the frames missed in the whole run
// A frame is missed if the game still works on the previous frame when the frame should start.
#include <VelLaunchScreen/VelLaunchScreen.h>
#include <VelLaunchScreen/vel_launch_screen.h>

#include <string>
#include <vector>

#include "Benchmarks/OnScreen/MonotonicClock.h"
#include "Benchmarks/OnScreen/OwnedReply.h"
#include "Benchmarks/OnScreen/Programs/GameWindow.h"

namespace {

using namespace vel::bench;

constexpr std::int64_t kFramesPerSecond = 240;
constexpr std::int64_t kFrameTime = 1'000'000'000 / kFramesPerSecond;
constexpr std::int64_t kFramesBeforeCover = kFramesPerSecond;
constexpr std::int64_t kFramesAfterCover = kFramesPerSecond * 3 / 2;
constexpr std::int64_t kFramesPerQuarterSecond = kFramesPerSecond / 4;

[[noreturn]] void fail(const std::string& reason) {
  std::fprintf(stderr, "game: %s\n", reason.c_str());
  std::exit(1);
}

class Cover {
 public:
  Cover() = default;
  Cover(const Cover&) = delete;
  Cover& operator=(const Cover&) = delete;
  virtual ~Cover() = default;

  virtual void show(const GameWindow& window, double seconds) = 0;
  /// The game calls this function in each frame.
  virtual void pump() = 0;
  [[nodiscard]] virtual bool isUp() const = 0;
};

// Shows nothing, to count the frames that the game misses without a cover.
class NoCover final : public Cover {
 public:
  void show(const GameWindow& /*window*/, double seconds) override {
    endTime_ = readClock() + static_cast<std::int64_t>(seconds * 1e9);
  }
  void pump() override {}
  [[nodiscard]] bool isUp() const override { return readClock() < endTime_; }

 private:
  std::int64_t endTime_ = 0;
};

// A white child window and a small square whose shade changes as often as the library's indicator.
class BareCover final : public Cover {
 public:
  void show(const GameWindow& window, double seconds) override {
    connection_ = xcb_connect(nullptr, nullptr);
    const std::uint32_t white =
        xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->white_pixel;
    cover_ = createChild(window.id(), 0, 0, GameWindow::kWidth, GameWindow::kHeight, white);
    indicator_ = createChild(cover_, GameWindow::kWidth / 2 - 16, GameWindow::kHeight / 2 - 16, 32,
                             32, 0x808080);
    xcb_map_window(connection_, indicator_);
    xcb_map_window(connection_, cover_);
    xcb_flush(connection_);
    const std::int64_t now = readClock();
    endTime_ = now + static_cast<std::int64_t>(seconds * 1e9);
    nextShadeTime_ = now + kShadeInterval;
  }

  void pump() override {
    if (connection_ == nullptr) {
      return;
    }
    while (const OwnedReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
    }
    const std::int64_t now = readClock();
    if (now >= endTime_) {
      xcb_destroy_window(connection_, cover_);
      xcb_flush(connection_);
      xcb_disconnect(connection_);
      connection_ = nullptr;
    } else if (now >= nextShadeTime_) {
      nextShadeTime_ += kShadeInterval;
      drawIndicator();
    }
  }

  [[nodiscard]] bool isUp() const override { return connection_ != nullptr; }

 private:
  static constexpr std::int64_t kShadeInterval = 1'000'000'000 / 12;

  xcb_window_t createChild(xcb_window_t parent, int x, int y, std::uint16_t width,
                           std::uint16_t height, std::uint32_t color) {
    const xcb_window_t window = xcb_generate_id(connection_);
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, parent,
                      static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), width, height, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL,
                      &color);
    return window;
  }

  void drawIndicator() {
    shade_ = (shade_ + 1) % 12;
    const std::uint32_t color = (0x40 + shade_ * 8) * 0x010101;
    xcb_change_window_attributes(connection_, indicator_, XCB_CW_BACK_PIXEL, &color);
    xcb_clear_area(connection_, 0, indicator_, 0, 0, 0, 0);
    xcb_flush(connection_);
  }

  xcb_connection_t* connection_ = nullptr;
  xcb_window_t cover_ = XCB_WINDOW_NONE;
  xcb_window_t indicator_ = XCB_WINDOW_NONE;
  std::int64_t endTime_ = 0;
  std::int64_t nextShadeTime_ = 0;
  std::uint32_t shade_ = 0;
};

class LibraryCover final : public Cover {
 public:
  ~LibraryCover() override { vel_destroy(&screen_); }

  void show(const GameWindow& window, double seconds) override {
    VelCallbacks callbacks = VEL_CALLBACKS_INIT;
    callbacks.record_event = [](void* /*userData*/, const char* /*event*/) {};
    VelCreateOptions options = VEL_CREATE_OPTIONS_INIT;
    options.display = "x11";
    options.window = window.id();
    options.content_controller = 1;
    options.callbacks = &callbacks;
    VelRequest request = VEL_REQUEST_INIT;
    request.event = "launch_end";
    request.seconds = seconds;
    if (vel_create(&options, &screen_) != VEL_OK || vel_request(screen_, &request) != VEL_OK ||
        vel_present(screen_, VEL_PRESENT_EMBEDDED) != VEL_OK) {
      fail(vel_last_error());
    }
    addIndicator();
  }

  void pump() override {
    if (vel_pump(screen_, nullptr) != VEL_OK) {
      fail(vel_last_error());
    }
  }

  [[nodiscard]] bool isUp() const override {
    int isUp = 0;
    vel_is_up(screen_, &isUp);
    return isUp != 0;
  }

 private:
  // The C interface has no indicator. Only the view controller of the launch screen can add it.
  static void addIndicator() {
    const auto windows = vel::NSApp->orderedWindows();
    const auto children = windows.front()->contentViewController()->childViewControllers();
    if (children.empty()) {
      fail("the window has no launch screen");
    }
    const auto controller = vel::as<vel::LaunchScreenViewController>(children.back());
    controller->createActivityIndicator();
    controller->createConstraintsActivityIndicator();
    controller->activityIndicator()->startAnimation(nullptr);
  }

  VelLaunchScreen* screen_ = nullptr;
};

std::unique_ptr<Cover> createCover(const std::string& name) {
  if (name == "none") {
    return std::make_unique<NoCover>();
  }
  if (name == "bare") {
    return std::make_unique<BareCover>();
  }
  if (name == "library") {
    return std::make_unique<LibraryCover>();
  }
  fail("no cover has the name " + name);
}

class Game {
 public:
  Game(std::unique_ptr<Cover> cover, bool isCoverVisible, double seconds)
      : cover_(std::move(cover)), isCoverVisible_(isCoverVisible), seconds_(seconds) {}

  void run() {
    const std::int64_t start = readClock() + kFrameTime;
    const std::int64_t checkFrame =
        kFramesBeforeCover + static_cast<std::int64_t>(seconds_ * kFramesPerSecond / 2);
    std::int64_t lastFrame =
        kFramesBeforeCover + kFramesPerSecond * 60;  // if the cover does not end
    bool isScreenChecked = false;
    while (frame_ < lastFrame) {
      sleepUntil(start + frame_ * kFrameTime);
      runFrame();
      if (!isScreenChecked && frame_ >= checkFrame) {
        isScreenChecked = true;
        checkScreen(isCoverVisible_);
      }
      if (isCoverShown_ && endFrame_ == 0 && !cover_->isUp()) {
        endFrame_ = frame_;
        lastFrame = frame_ + kFramesAfterCover;
      }
      const std::int64_t missedCount = (readClock() - start) / kFrameTime - frame_;
      missedFrames_.push_back({frame_, missedCount});
      frame_ += 1 + missedCount;
    }
    if (endFrame_ == 0) {
      fail("the cover has not ended");
    }
    checkScreen(false);
  }

  void print() const {
    std::printf(R"({"show": %lld, "missed_coming": %lld, "missed_going": %lld, "missed": %lld, )",
                static_cast<long long>(showTime_),
                static_cast<long long>(
                    countMissed(kFramesBeforeCover, kFramesBeforeCover + kFramesPerQuarterSecond)),
                static_cast<long long>(
                    countMissed(endFrame_ - kFramesPerQuarterSecond, endFrame_ + kFramesPerSecond)),
                static_cast<long long>(countMissed(0, frame_)));
    std::printf(R"("pumps": [)");
    const char* separator = "";
    for (const std::int64_t time : pumpTimes_) {
      std::printf("%s%lld", separator, static_cast<long long>(time));
      separator = ", ";
    }
    std::printf("]}\n");
  }

 private:
  struct MissedFrames {
    std::int64_t frame;  // the frame before the missed frames
    std::int64_t count;
  };

  void runFrame() {
    window_.handleEvents();
    window_.draw(frame_);
    if (!isCoverShown_ && frame_ >= kFramesBeforeCover) {
      isCoverShown_ = true;
      const std::int64_t start = readClock();
      cover_->show(window_, seconds_);
      showTime_ = readClock() - start;
    }
    if (isCoverShown_ && (endFrame_ == 0 || frame_ < endFrame_ + kFramesPerSecond)) {
      const std::int64_t start = readClock();
      cover_->pump();
      pumpTimes_.push_back(readClock() - start);
    }
  }

  void checkScreen(bool isWhite) {
    if (window_.isCornerWhite() != isWhite) {
      fail(isWhite ? "the cover is not visible" : "the cover is still visible");
    }
  }

  [[nodiscard]] std::int64_t countMissed(std::int64_t begin, std::int64_t end) const {
    std::int64_t count = 0;
    for (const MissedFrames& missed : missedFrames_) {
      count += missed.frame >= begin && missed.frame < end ? missed.count : 0;
    }
    return count;
  }

  GameWindow window_;
  std::unique_ptr<Cover> cover_;
  bool isCoverVisible_;
  double seconds_;
  std::int64_t frame_ = 0;
  bool isCoverShown_ = false;
  std::int64_t endFrame_ = 0;
  std::int64_t showTime_ = 0;
  std::vector<std::int64_t> pumpTimes_;
  std::vector<MissedFrames> missedFrames_;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: game none|bare|library SECONDS\n");
    return 2;
  }
  const std::string cover = argv[1];
  Game game(createCover(cover), cover != "none", std::atof(argv[2]));
  game.run();
  game.print();
  return 0;
}
