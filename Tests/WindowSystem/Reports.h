// What the tests of every back end do: hear what it reports, and wait for it.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/WindowSystem/WindowSystem.h"

namespace vel::test {

/// "0x200001"
std::string nameOf(WindowHandle window);

/// Notes each report as a line: "focus 0x200001", "deactivated", "gone 0x200001"...
class ReportListener final : public WindowSystemDelegate {
 public:
  void focusMoved(WindowHandle window) override;
  void applicationActivated(WindowHandle window) override;
  void applicationDeactivated() override;
  void closeRequested(WindowHandle window) override;
  void windowDestroyed(WindowHandle window) override;
  void frameChanged(WindowHandle window, CGRect frame) override;
  void miniaturizedChanged(WindowHandle window, bool miniaturized) override;
  void styleMaskChanged(WindowHandle window, NSWindowStyleMask styleMask) override;
  void orderChanged(const std::vector<WindowHandle>& windows) override;
  void controlsKept(WindowHandle window, NSWindowStyleMask controls) override;
  void displayLost(std::string_view reason) override;

  [[nodiscard]] bool heard(std::string_view line) const;
  /// How often a line was heard that begins so.
  [[nodiscard]] int count(std::string_view beginning) const;

  std::vector<std::string> lines;
  CGRect frame;                                   // of the last change
  std::vector<std::vector<WindowHandle>> orders;  // each that was told
};

/// The steady clock, in nanoseconds.
Nanoseconds steadyNow();
/// Waits until there is something to read, the moment comes or a little earlier; -1 for nothing to
/// read.
void waitForInput(int descriptor, Nanoseconds until);

/// Far longer than anything takes on a machine that is busy otherwise.
inline constexpr Nanoseconds kPatience = 15 * kNanosecondsPerSecond;

/// Looks again and again until the condition holds; false where that takes too long.
bool eventually(const std::function<bool()>& condition);
/// The same, delivering the window system's events meanwhile.
bool deliverUntil(WindowSystem& system, const std::function<bool()>& condition);
/// Delivers what has happened by now, and waits until what was asked for by now is done.
void deliverAll(WindowSystem& system);

}  // namespace vel::test
