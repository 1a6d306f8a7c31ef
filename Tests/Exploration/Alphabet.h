// What the explored scripts are made of.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Host/Play/Scenario/Scenario.h"

namespace vel::exploration {

/// One thing that a host, its user or time does.
struct Action {
  std::string_view name;
  /// The time that passes before it.
  int tenthsOfSecond = 0;
  /// A scenario's steps, without times, separated by commas.
  std::string_view steps;
};

/// A host, and the windows that it has.
struct Setting {
  std::string_view name;
  /// A scenario's "host".
  std::string_view host;
};

[[nodiscard]] std::span<const Action> actions();
[[nodiscard]] std::span<const Setting> settings();
/// The place of the action with that name, which there has to be.
[[nodiscard]] std::uint8_t actionNamed(std::string_view name);

/// Actions, by their place in `actions()`.
using Script = std::vector<std::uint8_t>;

/// The script as a scenario that `launchscreen play` takes; it ends when all has come to rest.
[[nodiscard]] std::string scenarioText(const Setting& setting, const Script& script);

/// A setting and the alphabet, read once: what any number of plays are made from.
struct Theatre {
  explicit Theatre(const Setting& chosen);

  const Setting& setting;
  /// Of the host alone.
  host::Scenario scenario;
  /// The steps of each action; their times are for the player to set.
  std::vector<std::vector<host::Step>> steps;
};

}  // namespace vel::exploration
