// The actions and settings of the exploration. The exploration plays many scripts and checks
// invariants. A script is a sequence of actions. A setting is a host with its windows. A play
// (ObservedPlay.h) runs one script in one setting.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Host/Play/Scenario/Scenario.h"

namespace vel::exploration {

/// An action of the host or the user, or a span of time.
struct Action {
  std::string_view name;
  /// The time that passes before the first step.
  int tenthsOfSecond = 0;
  /// A scenario's steps, without times, separated by commas.
  std::string_view steps;
};

/// A host with its windows.
struct Setting {
  std::string_view name;
  /// The value of "host" in a scenario.
  std::string_view host;
};

[[nodiscard]] std::span<const Action> actions();
[[nodiscard]] std::span<const Setting> settings();
/// Returns the index of the action with this name. Throws `std::invalid_argument` if no action has
/// the name.
[[nodiscard]] std::uint8_t indexOfAction(std::string_view name);

/// The actions of a script, as indices into `actions()`.
using Script = std::vector<std::uint8_t>;

/// Returns the script as a scenario for `launchscreen play`. The scenario ends when no delayed work
/// is left.
[[nodiscard]] std::string scenarioText(const Setting& setting, const Script& script);

/// A setting and the steps of every action, parsed once for any number of plays.
struct ParsedSetting {
  explicit ParsedSetting(const Setting& source);

  const Setting& setting;
  /// A scenario with this host and without steps.
  host::Scenario scenario;
  /// The steps of each action, without times.
  std::vector<std::vector<host::Step>> steps;
};

}  // namespace vel::exploration
