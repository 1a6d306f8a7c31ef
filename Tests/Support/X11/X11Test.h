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

/// The window manager of a test. Window managers differ in the controls that they still offer for a
/// covered window.
enum class Manager : std::uint8_t { None, Metacity, Openbox, Xfwm4, IceWM, Marco, Fluxbox };

/// Starts a window manager and waits until it manages windows. `client` opens a window to check
/// this.
Process startManager(Manager manager, const XServer& server, XClient& client);

/// A fixture with an X server, the back end and another client (`client`). `client` opens the
/// windows of other programs and simulates the input of a user.
class X11Test : public testing::Test {
 protected:
  explicit X11Test(Manager kind = Manager::None,
                   const std::vector<std::string>& serverArguments = {});
  ~X11Test() override;

  /// Returns the back end. Opens it at the first call.
  X11WindowSystem& system();
  /// Transfers the ownership of the back end to the caller.
  std::unique_ptr<X11WindowSystem> takeSystem() { return std::move(system_); }
  void startManager(Manager kind) { manager = test::startManager(kind, server, client); }
  /// Delivers events until the condition is true. Returns false after `kTimeout`.
  bool waitFor(const std::function<bool()>& condition) { return deliverUntil(system(), condition); }
  /// Waits until the server has executed all requests of `client`, and then delivers all events.
  void deliver();
  /// Delivers events for this many seconds. Shows that something does not happen, or gives a window
  /// manager time to react.
  void deliverFor(double seconds);

  /// Creates a window of the back end and waits until it is viewable.
  WindowHandle openOwnWindow(const WindowDescription& description);
  AdoptedWindow adopt(xcb_window_t window);
  /// A white scene. The size is in points.
  static Scene whiteScene(CGSize size);
  /// A white scene with an indicator in the middle. The size is in points.
  static Scene whiteSceneWithIndicator(CGSize size);

  static xcb_window_t idOf(WindowHandle window) { return static_cast<xcb_window_t>(window); }
  /// A line of `reports`: `what` and the window's handle.
  static std::string reportLine(std::string_view what, WindowHandle window);

  XServer server;
  XClient client;
  Process manager;
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
