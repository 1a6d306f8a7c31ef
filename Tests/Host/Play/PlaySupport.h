// Plays scenarios in tests.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "Host/Play/Player/Player.h"

namespace vel::host {

using Lines = std::vector<std::string>;

struct PlayResult {
  PlayOutcome outcome = PlayOutcome::PlayedToEnd;
  /// The trace: the lines that `launchscreen play` prints.
  Lines lines;
};

/// Plays a scenario. `text` is the scenario in JSON.
PlayResult playScenario(std::string_view text);

/// Plays `steps`, then runs until the time `until`, in seconds. Returns the trace. `steps` is the
/// content of a JSON array. `host` is the value of the scenario's member "host".
Lines play(std::string_view steps, double until = 0, std::string_view host = "{}");

/// Finds the last step with the name `step`. Returns the lines that follow this step, up to the
/// next step. A returned line has no time: for example `"becomeKey":"player"}`. Leaves out the last
/// line of the trace, which contains the final state.
Lines linesAfter(const Lines& trace, std::string_view step);

/// Returns all lines of one kind, without their times. The kind of a line is the name of the first
/// member after the time.
Lines linesOfKind(const Lines& trace, std::string_view kind);

/// Returns the final state of the library and of the platform, from the last line of the trace.
nlohmann::json lastInspection(const Lines& trace);

/// Steps that request a launch screen of five seconds and cover the window "player" with it.
inline constexpr std::string_view kCoverSteps =
    R"({"do":"request","parameters":{"event":"launch_end","max_duration_time":5}},)"
    R"({"do":"contentView"},{"do":"present","window":"player","mode":0})";

/// Returns `kCoverSteps` followed by `steps`.
std::string coverThen(std::string_view steps);

/// A value for `host`: the window "player" has a content view controller.
inline constexpr std::string_view kHostWithController =
    R"({"windows":[{"name":"player","contentViewController":"PlayerViewController"}]})";

}  // namespace vel::host
