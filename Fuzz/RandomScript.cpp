// Any bytes as a script of the exploration's actions: what always holds, holds.
#include <algorithm>

#include "Fuzz/Fuzz.h"
#include "Tests/Exploration/Explorer.h"
#include "Tests/Exploration/Invariants.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vel::exploration;
  static const Theatre theatres[] = {Theatre(settings()[0]), Theatre(settings()[1])};
  constexpr std::size_t kLongestScript = 64;
  if (size == 0) {
    return 0;
  }
  const Theatre& theatre = theatres[data[0] % std::size(theatres)];
  Script script(data + 1, data + std::min(size, kLongestScript + 1));
  for (std::uint8_t& action : script) {
    action = static_cast<std::uint8_t>(action % actions().size());
  }
  const std::string violation = violationIn(theatre, invariants(), script);
  vel::fuzz::require(violation.empty(), violation, "\n", scenarioText(theatre.setting, script));
  return 0;
}
