// The fixture of the conformance tests, which every back end must pass.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <ostream>

#include "Platform/Foundation/NonCopyable.h"
#include "Tests/WindowSystem/Reports.h"

namespace vel::test {

/// A display with the tested back end. The operations whose names begin with `user`,
/// `otherProgram`, `owner` or `server` simulate an action of the user, another program, the owner
/// of a window or the server.
class TestDisplay : public NonCopyable {
 public:
  virtual ~TestDisplay() = default;

  /// The tested back end.
  virtual WindowSystem& system() = 0;

  virtual void userGoesToAnotherApplication() = 0;
  virtual void userComesBackTo(WindowHandle window) = 0;
  virtual void userClosesWindow(WindowHandle window) = 0;
  virtual void otherProgramResizes(WindowHandle window, CGSize size) = 0;
  /// Puts `window` above `sibling`.
  virtual void otherProgramRaises(WindowHandle window, WindowHandle sibling) = 0;
  virtual void ownerDestroysWindow(WindowHandle window) = 0;
  virtual void serverClosesConnection() = 0;
  /// Opens a window as a host or another program does. The window has the class "PlayerWindow", a
  /// size of 200 by 160 points and all controls. Returns no value if `Backend::adoptsWindows` is
  /// false.
  virtual std::optional<NativeWindow> openForeignWindow() = 0;
};

/// Describes a back end: how to open it, and which optional features it has.
struct Backend {
  const char* name;
  std::unique_ptr<TestDisplay> (*open)();
  /// True if the back end can adopt windows that a host or another program has opened.
  bool adoptsWindows;
  /// True if `WindowSystem::picture` returns the pixels of a window on the screen.
  bool capturesWindows;
  /// True if `WindowSystem::requestMiniaturized` has an effect.
  bool miniaturizes;
  /// True if the back end reports the stacking order.
  bool reportsOrder;
  /// True if the back end reports that the host or another program has destroyed a window.
  bool reportsDestruction;
  /// True if each change of the style mask causes a `remainingControlsDetected` report.
  bool reportsRemainingControls;
  /// True if the back end reports that the connection to the display is lost.
  bool reportsLostDisplay;

  friend void PrintTo(const Backend& backend, std::ostream* out) { *out << backend.name; }
};

/// Each back end instantiates the conformance tests with its `Backend`.
class Conformance : public testing::TestWithParam<Backend> {
 protected:
  Conformance() { system().setDelegate(&reports); }
  ~Conformance() override { system().setDelegate(nullptr); }

  WindowSystem& system() { return display->system(); }
  /// Creates a window. The default style mask has a title bar and all controls.
  WindowHandle create(NSWindowStyleMask styleMask = 15);
  /// Creates a window and orders it front.
  WindowHandle open(NSWindowStyleMask styleMask = 15);
  /// Opens a window, waits until it has the focus, and clears the reports.
  WindowHandle openFocused();
  /// Delivers events until `reports` contains `line`. Returns false on a timeout.
  bool waitFor(const std::string& line);
  void deliver() { deliverAll(system()); }
  /// Calls the operations of WindowSystem that take a window handle. `window` must be invalid.
  void callEveryOperation(WindowHandle window);

  std::unique_ptr<TestDisplay> display = GetParam().open();
  ReportListener reports;
};

inline std::string nameOfBackend(const testing::TestParamInfo<Backend>& testInfo) {
  return testInfo.param.name;
}

}  // namespace vel::test
