// The exploration is a test that plays many scripts and checks invariants. A script is a sequence
// of actions. A host setup is a host with its windows. A play (ObservedPlay.h) runs one script in
// one host setup. This file declares the actions and the host setups.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Host/Play/Scenario/Scenario.h"

namespace vel::exploration {

/// Something that the host or the user does, or a wait.
struct Action {
  std::string_view name;
  /// The time that passes before the first of `steps`.
  int tenthsOfSecond = 0;
  /// Steps of a scenario, as JSON objects separated by commas. The steps have no times.
  std::string_view steps;
};

/// A host with its windows.
struct HostSetup {
  std::string_view name;
  /// The value of "host" in a scenario, as JSON.
  std::string_view host;
};

[[nodiscard]] std::span<const Action> actions();
[[nodiscard]] std::span<const HostSetup> hostSetups();
/// Returns the index of an action in `actions()`. Throws `std::invalid_argument` if no action has
/// the name.
[[nodiscard]] std::uint8_t indexOfAction(std::string_view name);

/// The actions of a script, as indices into `actions()`.
using Script = std::vector<std::uint8_t>;

/// Returns a scenario for `launchscreen play`, as JSON. After the last action, the scenario lasts
/// until no delayed work is left.
[[nodiscard]] std::string scenarioText(const HostSetup& hostSetup, const Script& script);

/// A host setup and the steps of every action, parsed from JSON.
struct ParsedHostSetup {
  explicit ParsedHostSetup(const HostSetup& source);

  const HostSetup& hostSetup;
  /// A scenario with the host of the host setup and without steps.
  host::Scenario scenario;
  /// The steps of each action, in the order of `actions()`. Every step has the time 0.
  std::vector<std::vector<host::Step>> steps;
};

}  // namespace vel::exploration
