// What the tests of every back end are run on.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <ostream>

#include "Tests/WindowSystem/Reports.h"

namespace vel::test {

/// A back end on a display of its own, and what others do there: users and other programs.
class TestDisplay {
 public:
  TestDisplay() = default;
  TestDisplay(const TestDisplay&) = delete;
  TestDisplay& operator=(const TestDisplay&) = delete;
  TestDisplay(TestDisplay&&) = delete;
  TestDisplay& operator=(TestDisplay&&) = delete;
  virtual ~TestDisplay() = default;

  virtual WindowSystem& system() = 0;

  virtual void userGoesToAnotherApplication() = 0;
  virtual void userComesBackTo(WindowHandle window) = 0;
  virtual void userAsksToClose(WindowHandle window) = 0;
  virtual void somebodyResizes(WindowHandle window, CGSize size) = 0;
  /// Puts the first window above the second.
  virtual void somebodyRaises(WindowHandle window, WindowHandle other) = 0;
  virtual void somebodyEnds(WindowHandle window) = 0;
  virtual void connectionBreaks() = 0;
  /// Opens a window of another program's, of class "PlayerWindow", 200 by 160 points large, with
  /// every control, and answers its id; 0 where there are no other programs.
  virtual std::uint64_t openForeignWindow() = 0;
};

/// A back end, and what it promises beyond what all do.
struct Backend {
  const char* name;
  std::unique_ptr<TestDisplay> (*open)();
  /// There are other programs, whose windows can be taken part in.
  bool adoptsWindows;
  /// What windows show can be looked at.
  bool hasScreen;
  /// Windows are miniaturised when that is asked for.
  bool miniaturizes;
  /// It tells of the controls that are kept, also where none is.
  bool tellsControlsKept;

  friend void PrintTo(const Backend& backend, std::ostream* out) { *out << backend.name; }
};

/// Instantiated once for each back end.
class Conformance : public testing::TestWithParam<Backend> {
 protected:
  Conformance() { system().setDelegate(&reports); }
  ~Conformance() override { system().setDelegate(nullptr); }

  WindowSystem& system() { return display->system(); }
  WindowHandle create(NSWindowStyleMask styleMask = 15);
  /// One that is on the screen.
  WindowHandle open(NSWindowStyleMask styleMask = 15);
  /// One that has the focus, and nothing else has been heard.
  WindowHandle openFocused();
  bool waitFor(const std::string& line);
  void deliver() { deliverAll(system()); }
  /// Everything that can be asked of a window.
  void askForEverything(WindowHandle window);

  std::unique_ptr<TestDisplay> display = GetParam().open();
  ReportListener reports;
};

inline std::string nameOfBackend(const testing::TestParamInfo<Backend>& tested) {
  return tested.param.name;
}

}  // namespace vel::test
