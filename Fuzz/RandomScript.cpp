// Fuzzes the library with scripts of the exploration's actions. The first byte of the input selects
// the host setup: the windows that are open at the start. Each further byte selects an action. No
// script may break an invariant.
#include <algorithm>

#include "Fuzz/Fuzz.h"
#include "Tests/Exploration/Explorer.h"
#include "Tests/Exploration/Invariants.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vel::exploration;
  static const ParsedHostSetup parsedHostSetups[] = {ParsedHostSetup(hostSetups()[0]),
                                                     ParsedHostSetup(hostSetups()[1])};
  constexpr std::size_t kMaxScriptLength = 64;
  if (size == 0) {
    return 0;
  }
  const ParsedHostSetup& parsedHostSetup = parsedHostSetups[data[0] % std::size(parsedHostSetups)];
  Script script(data + 1, data + std::min(size, kMaxScriptLength + 1));
  for (std::uint8_t& action : script) {
    action = static_cast<std::uint8_t>(action % actions().size());
  }
  const std::string violation = violationIn(parsedHostSetup, invariants(), script);
  vel::fuzz::require(violation.empty(), violation, "\n",
                     scenarioText(parsedHostSetup.hostSetup, script));
  return 0;
}
