// What the tests of the X11 back end run on: a server of their own, another program on it, and the
// back end with somebody who listens.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Platform/WindowSystem/X11/X11WindowSystem.h"
#include "Tests/WindowSystem/Reports.h"
#include "Tests/Support/X11/XClient.h"
#include "Tests/Support/X11/XServer.h"

namespace vel::test {

/// Which window manager runs: the one that knows every hint, another one, or none.
enum class Manager : std::uint8_t { None, Metacity, Openbox };

/// Starts a window manager on the server and waits until it manages; `user` looks on.
Process startManager(Manager manager, const XServer& server, XClient& user);

/// The X server, another program with windows on it (`user`), and the back end. Waiting is for
/// events, and fails where what was waited for does not come.
class X11Test : public testing::Test {
 protected:
  explicit X11Test(Manager manager = Manager::None,
                   const std::vector<std::string>& serverArguments = {});
  ~X11Test() override;

  /// Opens the back end, if that has not happened.
  X11WindowSystem& system();
  /// Gives it away.
  std::unique_ptr<X11WindowSystem> takeSystem() { return std::move(system_); }
  void startManager(Manager started) { manager = test::startManager(started, server, user); }
  /// Delivers events until the condition holds; false where it does not come to hold.
  bool waitFor(const std::function<bool()>& condition) { return deliverUntil(system(), condition); }
  /// Delivers what the server has for us by now, and waits until it has done what we asked.
  void deliver();
  /// The same for a while, to see that something does not happen.
  void deliverFor(double seconds);

  /// A window of ours, on screen.
  WindowHandle open(const WindowDescription& description);
  AdoptedWindow adopt(xcb_window_t window);
  /// A scene that covers a window of that size, in points, with or without an indicator.
  static Scene white(CGSize size);
  static Scene whiteWithIndicator(CGSize size);

  static xcb_window_t idOf(WindowHandle window) { return static_cast<xcb_window_t>(window); }
  static std::string line(std::string_view what, WindowHandle window);

  XServer server;
  XClient user;
  Process manager;
  ReportListener reports;
  /// Lines that the back end has logged: errors of the server, attributed.
  std::vector<std::string> log;

 private:
  std::unique_ptr<X11WindowSystem> system_;
};

class X11TestWithManager : public X11Test {
 protected:
  X11TestWithManager() : X11Test(Manager::Metacity) {}
};

}  // namespace vel::test
