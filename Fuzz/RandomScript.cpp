// Fuzzes the library with scripts of the exploration's actions. The first byte of the input selects
// the setting: the windows that are open at the start. Each further byte selects an action. No
// script may break an invariant.
#include <algorithm>

#include "Fuzz/Fuzz.h"
#include "Tests/Exploration/Explorer.h"
#include "Tests/Exploration/Invariants.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vel::exploration;
  static const ParsedSetting parsedSettings[] = {ParsedSetting(settings()[0]),
                                                 ParsedSetting(settings()[1])};
  constexpr std::size_t kMaxScriptLength = 64;
  if (size == 0) {
    return 0;
  }
  const ParsedSetting& parsedSetting = parsedSettings[data[0] % std::size(parsedSettings)];
  Script script(data + 1, data + std::min(size, kMaxScriptLength + 1));
  for (std::uint8_t& action : script) {
    action = static_cast<std::uint8_t>(action % actions().size());
  }
  const std::string violation = violationIn(parsedSetting, invariants(), script);
  vel::fuzz::require(violation.empty(), violation, "\n",
                     scenarioText(parsedSetting.setting, script));
  return 0;
}
