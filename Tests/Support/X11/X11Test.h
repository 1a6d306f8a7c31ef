// The fixture of tests on an X11 display.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Platform/WindowSystem/X11/X11WindowSystem.h"
#include "Tests/Support/X11/XClient.h"
#include "Tests/Support/X11/XServer.h"
#include "Tests/WindowSystem/Reports.h"

namespace vel::test {

class Compositor;

/// The window manager of a test. XwaylandSway and XwaylandWeston are Wayland compositors. They
/// manage the windows of their Xwayland server.
enum class Manager : std::uint8_t {
  None,
  Metacity,
  Openbox,
  Xfwm4,
  IceWM,
  Marco,
  Fluxbox,
  XwaylandSway,
  XwaylandWeston
};

/// Returns a part of a test name: "WithoutAManager" for `None`, otherwise the enumerator's name.
std::string nameOf(Manager manager);
inline void PrintTo(Manager manager, std::ostream* out) { *out << nameOf(manager); }
inline std::string nameOfManager(const testing::TestParamInfo<Manager>& testInfo) {
  return nameOf(testInfo.param);
}

/// The features of a window manager.
struct ManagerFeatures {
  /// True if a program can move its window.
  bool movesWindows = true;
  /// True if a program is notified when the user moves its window.
  bool reportsMoves = true;
  /// True if a program can maximise its window.
  bool maximizes = true;
  /// True if windows can be miniaturised, and their programs are notified.
  bool miniaturizes = true;
  /// True if each managed window becomes the child of a frame window.
  bool addsFrames = true;
  /// True if the window manager sets `_NET_WM_ALLOWED_ACTIONS` of a window.
  bool publishesAllowedActions = true;
};
ManagerFeatures featuresOf(Manager manager);

/// Returns `managers` followed by XwaylandSway and XwaylandWeston. In a build without the Wayland
/// back end, returns `managers` unchanged.
std::vector<Manager> withXwayland(std::vector<Manager> managers);

/// Starts a window manager and waits until it manages a test window of `client`. Does nothing for
/// `None`. `manager` must not be a compositor.
Process startManager(Manager manager, const XServer& server, XClient& client);

/// A fixture with an X server, the X11 back end and `client`. `client` acts as another program, and
/// also as the user. If the window manager is a compositor, the X server is Xwayland.
class X11Test : public testing::Test {
 protected:
  explicit X11Test(Manager manager = Manager::None,
                   const std::vector<std::string>& serverArguments = {});
  ~X11Test() override;

  /// Returns the back end. Opens it at the first call.
  X11WindowSystem& system();
  /// Transfers the ownership of the back end to the caller.
  std::unique_ptr<X11WindowSystem> takeSystem() { return std::move(system_); }
  /// Starts a window manager. `manager` must not be a compositor.
  void startManager(Manager manager) {
    managerProcess = test::startManager(manager, server, client);
  }
  /// Delivers events until the condition is true. Returns false after `kTimeout`.
  bool waitFor(const std::function<bool()>& condition) { return deliverUntil(system(), condition); }
  /// Waits until the server has executed all requests of `client`, and then delivers all events.
  void deliver();
  /// Delivers events for this many seconds. Call it to check that something does not happen, or
  /// to give a window manager time to react.
  void deliverFor(double seconds);

  /// Returns true if the screen shows only `color` in the window's area. A compositor updates the
  /// screen with a delay. So under a compositor, this function waits for the colour, and then
  /// checks for a short time that the colour stays.
  bool showsOnly(std::uint32_t color, xcb_window_t window) const;
  /// Gives the focus to the window, as a user does, and waits until the window has the focus.
  /// `title` is the title of the window: a compositor finds the window by its title.
  void giveFocus(xcb_window_t window, const std::string& title);

  /// Creates a window of the back end and waits until it is viewable.
  WindowHandle openOwnWindow(const WindowDescription& description);
  /// Calls `adoptWindow` of the back end. Throws if the call fails.
  AdoptedWindow adopt(xcb_window_t window);
  /// A white scene. The size is in points.
  static Scene whiteScene(CGSize size);
  /// A white scene with an animated spinner in the middle. The size is in points.
  static Scene whiteSceneWithSpinner(CGSize size);

  static xcb_window_t idOf(WindowHandle window) { return static_cast<xcb_window_t>(window); }
  /// Returns "EVENT WINDOW", such as "focus 0x200001". `reports` contains such lines.
  static std::string reportLine(std::string_view event, WindowHandle window);

  std::unique_ptr<Compositor> compositor;  // null unless the window manager is a compositor
  XServer server;
  XClient client;
  Process managerProcess;
  ReportListener reports;
  /// The lines that the back end has logged.
  std::vector<std::string> log;

 private:
  std::unique_ptr<X11WindowSystem> system_;
};

/// An X11Test under Metacity.
class X11TestWithManager : public X11Test {
 protected:
  X11TestWithManager() : X11Test(Manager::Metacity) {}
};

}  // namespace vel::test
