// The parts of a scenario that its steps are made of.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>

#include "Host/Play/Scenario/JsonValue.h"
#include "Host/Play/Scenario/Scenario.h"

namespace vel::host {

/// The names of windows that a script has given so far: the host's own, and as many of those that
/// presentations give as the steps read can have made.
class KnownWindowNames {
 public:
  /// Gives the name of one of the host's windows; one that is given already, or that presentations
  /// give, is refused.
  std::string give(const JsonValue& name);
  /// Gives a name that no script has spelt out.
  void giveDefault(const std::string& name) { host_.insert(name); }
  /// A presentation in one of the host's modes.
  void presented(std::int32_t mode);
  /// A controller is presented as a sheet.
  void sheetPresented() { ++sheets_; }

  [[nodiscard]] bool isGiven(std::string_view name) const;
  /// The name of a window that was given earlier.
  [[nodiscard]] std::string known(const JsonValue& name, std::string_view expected) const;

 private:
  std::set<std::string, std::less<>> host_;
  std::uint64_t modalWindows_ = 0;
  std::uint64_t sheets_ = 0;
};

/// A time in seconds, not before `earliest` and at most 1,000,000.
[[nodiscard]] double readSeconds(const JsonValue& value, double earliest);

[[nodiscard]] WindowScript readWindow(const JsonValue& value, KnownWindowNames& names);

[[nodiscard]] ViewDelegateScript readViewDelegate(const JsonValue& value);

/// Reads a step; `at` is the time in seconds of the step before, and then of this one.
[[nodiscard]] Step readStep(const JsonValue& value, double& at, KnownWindowNames& names);

}  // namespace vel::host
