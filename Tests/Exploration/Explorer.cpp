#include "Tests/Exploration/Explorer.h"

#include <unordered_set>
#include <utility>

#include "Tests/Exploration/StateFingerprint.h"

namespace vel::exploration {

namespace {

void performAll(ObservedPlay& play, const Script& script) {
  for (const std::uint8_t action : script) {
    play.perform(action);
  }
}

}  // namespace

std::string violationIn(const ParsedHostSetup& parsedHostSetup,
                        std::span<const Invariant> invariants, const Script& script) {
  ObservedPlay play(parsedHostSetup, invariants);
  performAll(play, script);
  play.end();
  return play.violation();
}

Exploration explore(const HostSetup& hostSetup, std::span<const Invariant> invariants,
                    std::size_t depth) {
  const ParsedHostSetup parsedHostSetup(hostSetup);
  Exploration exploration;
  // If two states had the same hash, the exploration would skip one of them. For a million states,
  // the probability of this is below 1 in 10^7.
  std::unordered_set<std::size_t> knownStateHashes;
  std::vector<Script> scriptsToExtend;
  // Plays the script. Returns true if all invariants hold.
  const auto playScript = [&](const Script& script) {
    ++exploration.scriptCount;
    ObservedPlay play(parsedHostSetup, invariants);
    performAll(play, script);
    if (!play.violation().empty()) {
      exploration.finding = {.violation = play.violation(), .script = script};
      return false;
    }
    // From the same state, `end` always has the same result. So call `end` once for each state.
    if (knownStateHashes.insert(std::hash<std::string>()(stateFingerprint(play))).second) {
      scriptsToExtend.push_back(script);
      play.end();
    }
    // A violation here comes from `end`, which deactivates the manager. So the script of the
    // finding also deactivates the manager.
    if (!play.violation().empty()) {
      exploration.finding = {.violation = play.violation(), .script = script};
      exploration.finding->script.push_back(indexOfAction("deactivate"));
    }
    return play.violation().empty();
  };

  if (!playScript({})) {
    return exploration;
  }
  while (exploration.depth < depth && !scriptsToExtend.empty()) {
    for (Script script : std::exchange(scriptsToExtend, {})) {
      script.push_back(0);
      for (std::size_t action = 0; action < actions().size(); ++action) {
        script.back() = static_cast<std::uint8_t>(action);
        if (!playScript(script)) {
          return exploration;
        }
      }
    }
    ++exploration.depth;
  }
  exploration.stateCount = knownStateHashes.size();
  return exploration;
}

}  // namespace vel::exploration
