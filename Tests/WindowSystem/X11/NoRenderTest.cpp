// An X server without the Render extension. The back end cannot draw the indicator without Render.
#include <gmock/gmock.h>
#include <xcb/render.h>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

class X11NoRender : public X11Test {
 protected:
  X11NoRender() : X11Test(Manager::None, {"-extension", "RENDER"}) {}
};

TEST_F(X11NoRender, TheCoverHasNoIndicatorAndTheReasonIsLoggedOnce) {
  const auto* const render = xcb_get_extension_data(client.connection(), &xcb_render_id);
  ASSERT_EQ(render->present, 0);
  const xcb_window_t game = client.openGameWindow({200, 150, 640, 400}, 0x208040);
  const AdoptedWindow adoptedWindow = adopt(game);
  for (int i = 0; i < 2; ++i) {
    system().setScene(adoptedWindow.handle, whiteSceneWithIndicator(adoptedWindow.frame.size));
    deliver();
    EXPECT_TRUE(client.screenPicture(game).isAll(kWhite));
    EXPECT_EQ(system().nextDeadline(), kNever);
    system().setScene(adoptedWindow.handle, {});
    deliver();
    EXPECT_TRUE(client.screenPicture(game).isAll(0x208040));
  }
  EXPECT_THAT(log, testing::ElementsAre(
                       "X11: the display cannot draw indicators: it has no Render extension"));
}

}  // namespace
}  // namespace vel::test
