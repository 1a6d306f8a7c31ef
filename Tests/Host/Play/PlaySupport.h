// Playing scenarios in tests.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "Host/Play/Player/Player.h"

namespace vel::host {

using Lines = std::vector<std::string>;

struct Played {
  PlayOutcome outcome = PlayOutcome::Ended;
  /// The trace.
  Lines lines;
  /// How it stood whenever something had been done.
  std::vector<PlayState> states;
};

/// Plays a scenario given as JSON.
Played playScenario(std::string_view scenario);

/// The trace of some steps, given as the inside of their array, and of the seconds after the last.
Lines play(std::string_view steps, double until = 0, std::string_view host = "{}");

/// The lines after the last start of a step of that name and before the next step's, each from
/// behind its time on: `"tick":4.9}`. The last inspection is left out.
Lines linesAfter(const Lines& trace, std::string_view step);

/// All lines of a kind, named by its first member, each from behind its time on.
Lines linesOfKind(const Lines& trace, std::string_view kind);

/// What the trace's last line tells.
nlohmann::json lastInspection(const Lines& trace);

/// Steps from request to an embedded cover over the window "player", of five seconds.
inline constexpr std::string_view kCovered =
    R"({"do":"request","parameters":{"event":"launch_end","max_duration_time":5}},)"
    R"({"do":"contentView"},{"do":"present","window":"player","mode":0})";

/// The given steps after those.
std::string covered(std::string_view steps);

/// A host whose player window has a content view controller.
inline constexpr std::string_view kHostWithController =
    R"({"windows":[{"name":"player","contentViewController":"PlayerViewController"}]})";

}  // namespace vel::host
