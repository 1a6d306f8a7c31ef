#include "Tests/Host/Play/PlaySupport.h"

#include "Host/Play/Scenario/ScenarioReader.h"
#include "Host/Play/Scenario/Decimal.h"

namespace vel::host {

namespace {

class Recorder final : public PlayListener {
 public:
  explicit Recorder(Played& played) : played_(played) {}
  void traceLineAdded(const TraceLine& line) override { played_.lines.push_back(traceText(line)); }
  void stateReached(const PlayState& state) override { played_.states.push_back(state); }

 private:
  Played& played_;
};

std::string withoutTime(const std::string& line) {
  return line.substr(line.find(',') + 1);  // times have no comma
}

bool isOfKind(const std::string& line, std::string_view kind) {
  return withoutTime(line).starts_with("\"" + std::string(kind) + "\":");
}

}  // namespace

Played playScenario(std::string_view scenario) {
  const Scenario script = readScenario(scenario);
  Played played;
  Recorder recorder(played);
  played.outcome = Player(script, recorder).play();
  return played;
}

Lines play(std::string_view steps, double until, std::string_view host) {
  return playScenario("{\"host\":" + std::string(host) + ",\"steps\":[" + std::string(steps) +
                      "],\"until\":" + shortestDecimal(until) + "}")
      .lines;
}

Lines linesAfter(const Lines& trace, std::string_view step) {
  const std::string start = "\"do\":\"" + std::string(step) + "\"}";
  Lines found;
  bool inside = false;
  for (const std::string& line : trace) {
    if (isOfKind(line, "do")) {
      inside = withoutTime(line) == start;
      if (inside) {
        found.clear();
      }
    } else if (inside && &line != &trace.back()) {
      found.push_back(withoutTime(line));
    }
  }
  return found;
}

Lines linesOfKind(const Lines& trace, std::string_view kind) {
  Lines found;
  for (const std::string& line : trace) {
    if (isOfKind(line, kind)) {
      found.push_back(withoutTime(line));
    }
  }
  return found;
}

nlohmann::json lastInspection(const Lines& trace) {
  return nlohmann::json::parse(trace.back())["inspect"];
}

std::string covered(std::string_view steps) {
  return std::string(kCovered) + "," + std::string(steps);
}

}  // namespace vel::host
