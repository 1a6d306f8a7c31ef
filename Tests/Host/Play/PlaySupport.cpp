#include "Tests/Host/Play/PlaySupport.h"

#include "Host/Play/Scenario/Decimal.h"
#include "Host/Play/Scenario/ScenarioReader.h"

namespace vel::host {

namespace {

class Recorder final : public PlayListener {
 public:
  explicit Recorder(PlayResult& result) : result_(result) {}
  void traceLineAdded(const TraceLine& line) override { result_.lines.push_back(traceText(line)); }
  void stateReached(const PlayState& /*state*/) override {}

 private:
  PlayResult& result_;
};

// For example, returns `"do":"inspect"}` for `{"t":0.500000000,"do":"inspect"}`.
std::string withoutTime(const std::string& line) { return line.substr(line.find(',') + 1); }

bool isOfKind(const std::string& line, std::string_view kind) {
  return withoutTime(line).starts_with("\"" + std::string(kind) + "\":");
}

}  // namespace

PlayResult playScenario(std::string_view text) {
  const Scenario scenario = readScenario(text);
  PlayResult result;
  Recorder recorder(result);
  result.outcome = Player(scenario, recorder).play();
  return result;
}

Lines play(std::string_view steps, double until, std::string_view host) {
  return playScenario("{\"host\":" + std::string(host) + ",\"steps\":[" + std::string(steps) +
                      "],\"until\":" + shortestDecimal(until) + "}")
      .lines;
}

Lines linesAfter(const Lines& trace, std::string_view step) {
  const std::string lineOfStep = "\"do\":\"" + std::string(step) + "\"}";
  Lines lines;
  bool isAfterStep = false;
  for (const std::string& line : trace) {
    if (isOfKind(line, "do")) {
      isAfterStep = withoutTime(line) == lineOfStep;
      if (isAfterStep) {
        lines.clear();
      }
    } else if (isAfterStep && &line != &trace.back()) {  // the last line is the final state
      lines.push_back(withoutTime(line));
    }
  }
  return lines;
}

Lines linesOfKind(const Lines& trace, std::string_view kind) {
  Lines lines;
  for (const std::string& line : trace) {
    if (isOfKind(line, kind)) {
      lines.push_back(withoutTime(line));
    }
  }
  return lines;
}

nlohmann::json lastInspection(const Lines& trace) {
  return nlohmann::json::parse(trace.back())["inspect"];
}

std::string coverThen(std::string_view steps) {
  return std::string(kCoverSteps) + "," + std::string(steps);
}

}  // namespace vel::host
