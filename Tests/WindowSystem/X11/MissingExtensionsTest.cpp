// Covers on X servers without optional extensions. Xvfb can start without Render, but not without
// Shape. So this file replaces a function of XCB to hide Shape and other extensions.
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <xcb/damage.h>
#include <xcb/randr.h>
#include <xcb/render.h>
#include <xcb/shape.h>
#include <xcb/xcbext.h>

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <utility>

#include "Tests/Support/X11/X11Test.h"

namespace {

// The names of the extensions that `xcb_get_extension_data` reports as absent.
std::set<std::string>& hiddenExtensions() {
  static std::set<std::string> names;
  return names;
}

}  // namespace

// The linker prefers this function to the function of the same name in the shared library.
const xcb_query_extension_reply_t* xcb_get_extension_data(xcb_connection_t* connection,
                                                          xcb_extension_t* extension) {
  static const xcb_query_extension_reply_t kAbsent{};
  static auto* const original = reinterpret_cast<decltype(&xcb_get_extension_data)>(
      dlsym(RTLD_NEXT, "xcb_get_extension_data"));
  return hiddenExtensions().contains(extension->name) ? &kAbsent : original(connection, extension);
}

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr PixelRect kGameFrame{200, 150, 640, 400};
constexpr CGSize kSize{640, 400};
constexpr std::uint32_t kGreen = 0x208040;
constexpr std::uint32_t kRed = 0xC02020;
constexpr const char* kNoSpinnersLogLine =
    "X11: the display cannot draw indicators: it has no Render extension";

class X11MissingExtension : public X11Test {
 protected:
  explicit X11MissingExtension(const std::vector<std::string>& serverArguments)
      : X11Test(Manager::None, serverArguments) {}
  explicit X11MissingExtension(std::set<std::string> extensionsToHide) {
    hiddenExtensions() = std::move(extensionsToHide);
  }
  ~X11MissingExtension() override { hiddenExtensions().clear(); }

  bool isPresent(xcb_extension_t& extension) {
    return xcb_get_extension_data(client.connection(), &extension)->present != 0;
  }
  bool gameReceivesClick() {
    client.takeEventTypes();
    client.click(kGameFrame.x + 50, kGameFrame.y + 50);
    return std::ranges::count(client.takeEventTypes(), XCB_BUTTON_PRESS) > 0;
  }

  xcb_window_t game = client.openGameWindow(kGameFrame, kGreen);
};

class X11NoRender : public X11MissingExtension {
 protected:
  X11NoRender() : X11MissingExtension(std::vector<std::string>{"-extension", "RENDER"}) {}
};

TEST_F(X11NoRender, TheCoverHasNoSpinnerAndTheReasonIsLoggedOnce) {
  ASSERT_FALSE(isPresent(xcb_render_id));
  const WindowHandle handle = adopt(game).handle;
  for (int i = 0; i < 2; ++i) {
    system().setScene(handle, whiteSceneWithSpinner(kSize));
    deliver();
    EXPECT_TRUE(client.screenPicture(game).isAll(kWhite));
    EXPECT_EQ(system().nextDeadline(), kNever);  // there is no animation
    system().setScene(handle, {});
    deliver();
    EXPECT_TRUE(client.screenPicture(game).isAll(kGreen));
  }
  EXPECT_THAT(log, ElementsAre(kNoSpinnersLogLine));
}

// A cover has two parts: child windows of the game's window, and an overlay. The overlay is a
// window above the game's window. It hides what the game draws over the child windows. Without the
// Shape extension, a cover has no overlay.

class X11NoShape : public X11MissingExtension {
 protected:
  X11NoShape() : X11MissingExtension(std::set<std::string>{"SHAPE"}) {}

  void SetUp() override {
    ASSERT_FALSE(isPresent(xcb_shape_id));
    client.selectEvents(game, XCB_EVENT_MASK_BUTTON_PRESS);
    handle = adopt(game).handle;
    EXPECT_TRUE(gameReceivesClick());
    system().setScene(handle, whiteScene(kSize));
    deliver();
  }
  void TearDown() override { EXPECT_THAT(log, IsEmpty()); }

  WindowHandle handle = WindowHandle::None;
};

TEST_F(X11NoShape, TheCoverIsWhiteUntilItIsRemoved) {
  EXPECT_TRUE(system().isSceneOnScreen(handle));
  EXPECT_TRUE(client.screenPicture(game).isAll(kWhite));
  client.fill(game, kRed);
  EXPECT_TRUE(client.screenPicture(game).isAll(kWhite));
  client.configure(game, {100, 50, 1000, 800});
  EXPECT_TRUE(client.screenPicture(game).isAll(kWhite));
  deliver();
  EXPECT_TRUE(client.screenPicture(game).isAll(kWhite));
  system().setScene(handle, {});
  deliver();
  EXPECT_TRUE(client.screenPicture(game).isAll(kRed));
  EXPECT_TRUE(client.children(game).empty());
}

TEST_F(X11NoShape, TheCoverTakesThePointerInput) {
  EXPECT_FALSE(gameReceivesClick());
  system().setScene(handle, {});
  deliver();
  EXPECT_TRUE(gameReceivesClick());
}

TEST_F(X11NoShape, TheCoverReturnsAfterTheGameUnmapsOrDestroysTheCoversWindows) {
  for (const bool destroys : {false, true}) {
    for (const xcb_window_t child : client.children(game)) {
      destroys ? client.destroy(child) : client.unmap(child);
    }
    EXPECT_TRUE(waitFor([this] { return client.screenPicture(game).isAll(kWhite); }));
    EXPECT_FALSE(gameReceivesClick());
  }
}

// This is a documented limit.
TEST_F(X11NoShape, WhatTheGameDrawsOverItsChildWindowsIsVisible) {
  const xcb_gcontext_t context = xcb_generate_id(client.connection());
  const std::array<std::uint32_t, 2> values{kRed, XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS};
  xcb_create_gc(client.connection(), context, game, XCB_GC_FOREGROUND | XCB_GC_SUBWINDOW_MODE,
                values.data());
  constexpr xcb_rectangle_t kArea{10, 10, 20, 20};
  xcb_poly_fill_rectangle(client.connection(), game, context, 1, &kArea);
  EXPECT_EQ(client.screenPicture(game).at(20, 20), kRed);
}

class X11NoExtensions : public X11MissingExtension {
 protected:
  X11NoExtensions()
      : X11MissingExtension(std::set<std::string>{"RENDER", "SHAPE", "DAMAGE", "RANDR"}) {}
};

TEST_F(X11NoExtensions, TheCoverIsWhiteAndTakesThePointerInput) {
  for (xcb_extension_t* const extension :
       {&xcb_render_id, &xcb_shape_id, &xcb_damage_id, &xcb_randr_id}) {
    ASSERT_FALSE(isPresent(*extension));
  }
  client.selectEvents(game, XCB_EVENT_MASK_BUTTON_PRESS);
  const AdoptedWindow adoptedWindow = adopt(game);
  // y is measured from the bottom of the screen.
  EXPECT_EQ(adoptedWindow.frame, CGRectMake(200, 410, 640, 400));
  system().setScene(adoptedWindow.handle, whiteSceneWithSpinner(kSize));
  system().setStyleMask(adoptedWindow.handle, NSWindowStyleMaskTitled);
  deliver();
  EXPECT_TRUE(client.screenPicture(game).isAll(kWhite));
  EXPECT_FALSE(gameReceivesClick());
  const auto picture = system().picture(adoptedWindow.handle);
  ASSERT_TRUE(picture.has_value());
  EXPECT_EQ(picture->width, 640);
  system().releaseWindow(adoptedWindow.handle);
  deliver();
  EXPECT_TRUE(client.screenPicture(game).isAll(kGreen));
  EXPECT_THAT(log, ElementsAre(kNoSpinnersLogLine));
}

}  // namespace
}  // namespace vel::test
