// A game that has no background and draws itself, as most do.
#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "Platform/Foundation/NonCopyable.h"
#include "Tests/Support/X11/FrameWatch.h"
#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

constexpr PixelRect kGame{200, 150, 640, 400};
constexpr std::uint32_t kGreen = 0x208040;

/// A program of its own thread, with one window, which it draws whenever the server asks for it.
class DrawingGame : NonCopyable {
 public:
  explicit DrawingGame(const std::string& display) : client_(display) {
    window = client_.makeWindow(kGame, 0);
    constexpr std::uint32_t kNoBackground = XCB_BACK_PIXMAP_NONE;
    xcb_change_window_attributes(client_.get(), window, XCB_CW_BACK_PIXMAP, &kNoBackground);
    client_.selectEvents(window, XCB_EVENT_MASK_EXPOSURE);
    ink_ = xcb_generate_id(client_.get());
    xcb_create_gc(client_.get(), ink_, window, XCB_GC_FOREGROUND, &kGreen);
    client_.map(window);
    thread_ = std::thread([this] { play(); });
  }
  ~DrawingGame() {
    ended_ = true;
    thread_.join();
  }

  xcb_window_t window = 0;

 private:
  void play() {
    constexpr xcb_rectangle_t kEverything{0, 0, 2000, 2000};
    while (!ended_) {
      while (const x11::Event event{xcb_poll_for_event(client_.get())}) {
        if (x11::typeOf(*event) == XCB_EXPOSE) {
          xcb_poly_fill_rectangle(client_.get(), window, ink_, 1, &kEverything);
        }
      }
      xcb_flush(client_.get());
      waitForInput(xcb_get_file_descriptor(client_.get()),
                   steadyNow() + kNanosecondsPerSecond / 20);
    }
  }

  XClient client_;
  xcb_gcontext_t ink_ = 0;
  std::atomic<bool> ended_ = false;
  std::thread thread_;
};

class X11DrawingGame : public X11Test {
 protected:
  // The game's picture, white, or anything else.
  static char kindOf(const Picture& picture) {
    return picture.isAll(kGreen) ? 'G' : picture.isAll(kWhite) ? 'W' : '?';
  }

  DrawingGame game{server.display()};
};

TEST_F(X11DrawingGame, IsSeenThenWhiteThenSeenAndNothingBetween) {
  ASSERT_TRUE(eventually([this] { return user.picture(game.window).isAll(kGreen); }));
  const AdoptedWindow found = adopt(game.window);
  FrameWatch watch(server.display(), kGame, kindOf);
  system().setScene(found.handle, white(found.frame.size));
  EXPECT_TRUE(watch.watchUntil([&] { return watch.kinds().ends_with('W'); }));
  system().setScene(found.handle, {});
  EXPECT_TRUE(watch.watchUntil([&] { return watch.kinds().ends_with('G'); }));
  EXPECT_EQ(watch.kinds(), "GWG");
}

TEST_F(X11DrawingGame, IsWhiteAtOnceWhenItGrowsUnderItsCover) {
  const AdoptedWindow found = adopt(game.window);
  system().setScene(found.handle, white(found.frame.size));
  deliver();
  user.configure(game.window, {100, 50, 1000, 800});
  EXPECT_TRUE(user.picture(game.window).isAll(kWhite));
}

}  // namespace
}  // namespace vel::test
