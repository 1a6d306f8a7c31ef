#include "Tests/Exploration/Explorer.h"

#include <unordered_set>
#include <utility>

#include "Tests/Exploration/StateKey.h"

namespace vel::exploration {

namespace {

void performAll(Stage& stage, const Script& script) {
  for (const std::uint8_t action : script) {
    stage.perform(action);
  }
}

}  // namespace

std::string violationIn(const Theatre& theatre, std::span<const Invariant> invariants,
                        const Script& script) {
  Stage stage(theatre, invariants);
  performAll(stage, script);
  stage.end();
  return stage.violation();
}

Exploration explore(const Setting& setting, std::span<const Invariant> invariants,
                    std::size_t depth) {
  const Theatre theatre(setting);
  Exploration found;
  // Hashes stand for the keys: two of a million states share one with a chance of 1 in 10^7.
  std::unordered_set<std::size_t> known;
  std::vector<Script> open;
  // Answers whether all invariants hold.
  const auto visit = [&](const Script& script) {
    ++found.sequences;
    Stage stage(theatre, invariants);
    performAll(stage, script);
    if (!stage.violation().empty()) {
      found.finding = {.violation = stage.violation(), .script = script};
      return false;
    }
    if (known.insert(std::hash<std::string>()(stateKey(stage))).second) {
      open.push_back(script);
      stage.end();
    }
    if (!stage.violation().empty()) {
      found.finding = {.violation = stage.violation(), .script = script};
      found.finding->script.push_back(actionNamed("deactivate"));
    }
    return stage.violation().empty();
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
