// The window of the game has no background. The game draws on each Expose event.
#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "Platform/Foundation/NonCopyable.h"
#include "Tests/Support/X11/FrameRecorder.h"
#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

constexpr PixelRect kGameFrame{200, 150, 640, 400};
constexpr std::uint32_t kGreen = 0x208040;

/// A client with one window. A thread fills the window with green on each Expose event.
class DrawingGame : NonCopyable {
 public:
  explicit DrawingGame(const std::string& display) : client_(display) {
    window = client_.makeWindow(kGameFrame, 0);
    constexpr std::uint32_t kNoBackground = XCB_BACK_PIXMAP_NONE;
    xcb_change_window_attributes(client_.connection(), window, XCB_CW_BACK_PIXMAP, &kNoBackground);
    client_.selectEvents(window, XCB_EVENT_MASK_EXPOSURE);
    context_ = xcb_generate_id(client_.connection());
    xcb_create_gc(client_.connection(), context_, window, XCB_GC_FOREGROUND, &kGreen);
    client_.map(window);
    thread_ = std::thread([this] { drawUntilEnd(); });
  }
  ~DrawingGame() {
    isEnding_ = true;
    thread_.join();
  }

  xcb_window_t window = 0;

 private:
  void drawUntilEnd() {
    constexpr xcb_rectangle_t kWholeWindow{0, 0, 2000, 2000};  // larger than the window
    while (!isEnding_) {
      while (const x11::Event event{xcb_poll_for_event(client_.connection())}) {
        if (x11::typeOf(*event) == XCB_EXPOSE) {
          xcb_poly_fill_rectangle(client_.connection(), window, context_, 1, &kWholeWindow);
        }
      }
      xcb_flush(client_.connection());
      waitForInput(xcb_get_file_descriptor(client_.connection()),
                   steadyNow() + kNanosecondsPerSecond / 20);
    }
  }

  XClient client_;
  xcb_gcontext_t context_ = 0;
  std::atomic<bool> isEnding_ = false;
  std::thread thread_;
};

class X11DrawingGame : public X11Test {
 protected:
  // G for the game, W for white, ? for anything else.
  static char letterOf(const Picture& picture) {
    return picture.isAll(kGreen) ? 'G' : picture.isAll(kWhite) ? 'W' : '?';
  }

  DrawingGame game{server.display()};
};

TEST_F(X11DrawingGame, TheScreenShowsTheGameThenWhiteThenTheGame) {
  ASSERT_TRUE(eventually([this] { return client.screenPicture(game.window).isAll(kGreen); }));
  const AdoptedWindow adoptedWindow = adopt(game.window);
  FrameRecorder recorder(server.display(), kGameFrame, letterOf);
  system().setScene(adoptedWindow.handle, whiteScene(adoptedWindow.frame.size));
  EXPECT_TRUE(recorder.recordUntil([&] { return recorder.letters().ends_with('W'); }));
  system().setScene(adoptedWindow.handle, {});
  EXPECT_TRUE(recorder.recordUntil([&] { return recorder.letters().ends_with('G'); }));
  EXPECT_EQ(recorder.letters(), "GWG");
}

TEST_F(X11DrawingGame, TheCoverIsWhiteImmediatelyAfterTheGameGrows) {
  const AdoptedWindow adoptedWindow = adopt(game.window);
  system().setScene(adoptedWindow.handle, whiteScene(adoptedWindow.frame.size));
  deliver();
  client.configure(game.window, {100, 50, 1000, 800});
  EXPECT_TRUE(client.screenPicture(game.window).isAll(kWhite));
}

}  // namespace
}  // namespace vel::test
