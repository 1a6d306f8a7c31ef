// Records the reports of a back end, and waits for them. A report is a call of a
// WindowSystemDelegate operation.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/WindowSystem/WindowSystem.h"

namespace vel::test {

/// The handle as text, such as "0x200001".
std::string nameOf(WindowHandle window);

/// Records each report as a line, such as "focus 0x200001" or "deactivated".
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
  void remainingControlsDetected(WindowHandle window, NSWindowStyleMask controls) override;
  void displayLost(std::string_view reason) override;

  [[nodiscard]] bool contains(std::string_view line) const;
  /// The number of lines that start with `beginning`.
  [[nodiscard]] int count(std::string_view beginning) const;

  std::vector<std::string> lines;
  /// The frame of the last `frameChanged`.
  CGRect lastFrame;
  /// The size of each `frameChanged`.
  std::vector<CGSize> sizes;
  /// The windows of each `orderChanged`.
  std::vector<std::vector<WindowHandle>> orders;
};

/// The time of the steady clock, in nanoseconds.
Nanoseconds steadyNow();
/// Waits until the descriptor is readable or the deadline passes. Descriptor -1 is never readable.
void waitForInput(int descriptor, Nanoseconds deadline);

/// The time limit of functions that wait for a condition. It is long enough for a busy machine.
inline constexpr Nanoseconds kTimeout = 15 * kNanosecondsPerSecond;

/// Polls `condition` until it is true. Returns false after `kTimeout`.
bool eventually(const std::function<bool()>& condition);
/// Delivers events until `condition` is true. Returns false after `kTimeout`.
bool deliverUntil(WindowSystem& system, const std::function<bool()>& condition);
/// Waits until the window system has processed all earlier requests, and then delivers all events
/// that these requests have caused.
void deliverAll(WindowSystem& system);

}  // namespace vel::test
