#include "Tests/Exploration/Explorer.h"

#include <unordered_set>
#include <utility>

#include "Tests/Exploration/StateKey.h"

namespace vel::exploration {

namespace {

void performAll(ObservedPlay& play, const Script& script) {
  for (const std::uint8_t action : script) {
    play.perform(action);
  }
}

}  // namespace

std::string violationIn(const ParsedSetting& parsed, std::span<const Invariant> invariants,
                        const Script& script) {
  ObservedPlay play(parsed, invariants);
  performAll(play, script);
  play.end();
  return play.violation();
}

Exploration explore(const Setting& setting, std::span<const Invariant> invariants,
                    std::size_t depth) {
  const ParsedSetting parsed(setting);
  Exploration found;
  // Stores hashes of the keys. Among a million states, two share a hash with a probability of 1 in
  // 10^7.
  std::unordered_set<std::size_t> known;
  std::vector<Script> open;
  // Returns whether all invariants hold.
  const auto visit = [&](const Script& script) {
    ++found.sequences;
    ObservedPlay play(parsed, invariants);
    performAll(play, script);
    if (!play.violation().empty()) {
      found.finding = {.violation = play.violation(), .script = script};
      return false;
    }
    if (known.insert(std::hash<std::string>()(stateKey(play))).second) {
      open.push_back(script);
      play.end();
    }
    if (!play.violation().empty()) {
      found.finding = {.violation = play.violation(), .script = script};
      found.finding->script.push_back(actionNamed("deactivate"));
    }
    return play.violation().empty();
  };

  if (!visit({})) {
    return found;
  }
  while (found.depth < depth && !open.empty()) {
    for (Script script : std::exchange(open, {})) {
      script.push_back(0);
      for (std::size_t action = 0; action < actions().size(); ++action) {
        script.back() = static_cast<std::uint8_t>(action);
        if (!visit(script)) {
          return found;
        }
      }
    }
    ++found.depth;
  }
  found.states = known.size();
  return found;
}

}  // namespace vel::exploration
