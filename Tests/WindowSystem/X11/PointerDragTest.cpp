// The frame of a window that the user drags by its background. These tests need no display.
#include <gtest/gtest.h>

#include "Platform/WindowSystem/X11/PointerDrag.h"

namespace vel::test {
namespace {

using x11::PixelRect;
using x11::PointerDrag;

constexpr xcb_window_t kWindow = 7;
constexpr PixelRect kFrame{100, 200, 320, 240};

TEST(PointerDragTest, TheWindowKeepsItsOffsetFromThePointer) {
  PointerDrag drag;
  drag.begin(kWindow, kFrame, 110, 230);
  drag.movePointer(150, 225);
  EXPECT_EQ(drag.takeMovedFrame(kFrame), (PixelRect{140, 195, 320, 240}));
}

TEST(PointerDragTest, NoFrameIsReturnedWhileThePointerDoesNotMove) {
  PointerDrag drag;
  drag.begin(kWindow, kFrame, 110, 230);
  EXPECT_EQ(drag.takeMovedFrame(kFrame), std::nullopt);
}

TEST(PointerDragTest, TheFrameOfEachMoveIsReturnedOnce) {
  PointerDrag drag;
  drag.begin(kWindow, kFrame, 110, 230);
  drag.movePointer(150, 225);
  drag.takeMovedFrame(kFrame);
  EXPECT_EQ(drag.takeMovedFrame(kFrame), std::nullopt);
}

TEST(PointerDragTest, PointerMovesBeforeTheDragAreIgnored) {
  PointerDrag drag;
  drag.movePointer(500, 500);
  drag.begin(kWindow, kFrame, 110, 230);
  EXPECT_EQ(drag.takeMovedFrame(kFrame), std::nullopt);
}

TEST(PointerDragTest, PointerMovesAfterTheDragAreIgnored) {
  PointerDrag drag;
  drag.begin(kWindow, kFrame, 110, 230);
  drag.end();
  drag.movePointer(150, 225);
  EXPECT_EQ(drag.window(), xcb_window_t{XCB_WINDOW_NONE});
  EXPECT_EQ(drag.takeMovedFrame(kFrame), std::nullopt);
}

}  // namespace
}  // namespace vel::test
