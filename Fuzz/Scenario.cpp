// Fuzzes scenarios. If the reader refuses the input, the error must be one line. Otherwise the
// scenario must play to its end. Two plays must give the same trace, and each line of the trace
// must be JSON.
#include <nlohmann/json.hpp>
#include <string>

#include "Fuzz/Fuzz.h"
#include "Host/Play/Player/Player.h"
#include "Host/Play/Scenario/ScenarioReader.h"

namespace vel::fuzz {

namespace {

// Longer plays take too long and find nothing new.
constexpr Nanoseconds kMaxPlayTime = 60 * kNanosecondsPerSecond;

class TraceRecorder final : public host::PlayListener {
 public:
  void traceLineAdded(const host::TraceLine& line) override { text += traceText(line) + "\n"; }
  void stateReached(const host::PlayState& /*state*/) override {}
  std::string text;
};

std::string traceOf(const host::Scenario& scenario) {
  TraceRecorder recorder;
  static_cast<void>(host::Player(scenario, recorder).play());
  return recorder.text;
}

void requireLinesOfJson(std::string_view trace) {
  while (!trace.empty()) {
    const std::size_t end = trace.find('\n');
    const std::string_view line = trace.substr(0, end);
    require(nlohmann::json::accept(line), "a line that is not JSON: ", line);
    trace.remove_prefix(end + 1);
  }
}

}  // namespace

}  // namespace vel::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vel;
  host::Scenario scenario;
  try {
    scenario = host::readScenario(fuzz::textOf(data, size));
  } catch (const host::ScenarioError& error) {
    const std::string_view message = error.what();
    fuzz::require(!message.empty() && message.find('\n') == std::string_view::npos,
                  "the error is not one line: ", message);
    return 0;
  }
  if (scenario.end <= fuzz::kMaxPlayTime) {
    const std::string trace = fuzz::traceOf(scenario);
    fuzz::requireLinesOfJson(trace);
    fuzz::require(trace == fuzz::traceOf(scenario), "the second play gives another trace");
  }
  return 0;
}
