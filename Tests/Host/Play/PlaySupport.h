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

/// Plays steps until the time `until`, in seconds, and returns the trace. `steps` is the content of
/// a JSON array. `host` is the value of the scenario's member "host".
Lines play(std::string_view steps, double until = 0, std::string_view host = "{}");

/// Returns the lines between the last step with the name `step` and the next step, without their
/// times: for example `"becomeKey":"player"}`. Leaves out the last line of the trace, which
/// contains the final state.
Lines linesAfter(const Lines& trace, std::string_view step);

/// Returns all lines in which the first member after the time has the name `kind`, without their
/// times.
Lines linesOfKind(const Lines& trace, std::string_view kind);

/// Returns the inspection in the last line of the trace: the final state of the library and of the
/// platform.
nlohmann::json lastInspection(const Lines& trace);

/// Steps that request a launch screen of five seconds and cover the window "player" with it.
inline constexpr std::string_view kCoverSteps =
    R"({"do":"request","parameters":{"event":"launch_end","max_duration_time":5}},)"
    R"({"do":"contentView"},{"do":"present","window":"player","mode":0})";

/// Returns `kCoverSteps` followed by `steps`.
std::string coverThen(std::string_view steps);

/// A host whose player window has a content view controller.
inline constexpr std::string_view kHostWithController =
    R"({"windows":[{"name":"player","contentViewController":"PlayerViewController"}]})";

}  // namespace vel::host
