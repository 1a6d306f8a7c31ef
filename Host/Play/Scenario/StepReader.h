// Reads the windows, view delegates and steps of a scenario.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>

#include "Host/Play/Scenario/JsonValue.h"
#include "Host/Play/Scenario/Scenario.h"

namespace vel::host {

/// The window names that a step may use: the names of the host's windows, and the names of the
/// modal windows and sheets that earlier steps open, for example "sheet-1". The reader does not
/// play the steps, so a name is known even if a step fails to open the window or closes it.
class KnownWindowNames {
 public:
  /// Reads and adds the name of a host window. Throws a ScenarioError if the name is already known
  /// or is reserved for modal windows and sheets.
  std::string add(const JsonValue& name);
  /// Adds the name of the window that the host opens if the scenario has no list of windows.
  void addDefaultWindow(const std::string& name) { hostWindows_.insert(name); }
  /// Adds the name of the modal window or sheet that a `step::Present` opens. `mode` is the
  /// presentation mode of the step. Adds nothing for mode 0, which opens no window.
  void addPresentation(std::int32_t mode);
  /// Adds the name of the sheet that a `step::PresentOver` opens.
  void addSheet() { ++sheetCount_; }

  [[nodiscard]] bool isKnown(std::string_view name) const;
  /// Reads a window name. Throws a ScenarioError if the value is not a known name. The error
  /// message contains `expectedValue`, a description of a valid value.
  [[nodiscard]] std::string readKnownName(const JsonValue& name,
                                          std::string_view expectedValue) const;

 private:
  std::set<std::string, std::less<>> hostWindows_;
  std::uint64_t modalWindowCount_ = 0;
  std::uint64_t sheetCount_ = 0;
};

/// Reads a time in seconds, from `earliest` to 1,000,000.
[[nodiscard]] double readSeconds(const JsonValue& value, double earliest);

[[nodiscard]] WindowScript readWindow(const JsonValue& value, KnownWindowNames& names);

[[nodiscard]] ViewDelegateScript readViewDelegate(const JsonValue& value);

/// Reads a step. On entry, `time` is the time of the previous step in seconds. On return, `time` is
/// the time of this step.
[[nodiscard]] Step readStep(const JsonValue& object, double& time, KnownWindowNames& names);

}  // namespace vel::host
