#include "Tests/Exploration/Alphabet.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "Host/Play/Scenario/Decimal.h"
#include "Host/Play/Scenario/ScenarioReader.h"

namespace vel::exploration {

namespace {

// The countdown of 0.3 s takes four ticks of 0.1 s, because the `float` 0.3 is slightly more than
// 0.3. An action with the step "inspect" only lets time pass. Add new actions at the end, because
// the seeds of the fuzzer refer to actions by index.
constexpr Action kActions[] = {
    {"request", 0,
     R"({"do":"request","parameters":{"event":"launch_end","max_duration_time":0.3}})"},
    {"request in skip mode", 0,
     R"({"do":"request","parameters":{"mode":"skip","event":"launch_end","max_duration_time":0.3}})"},
    {"content view", 0, R"({"do":"contentView"})"},
    {"present embedded", 0, R"({"do":"present","window":"player","mode":0})"},
    {"present embedded elsewhere", 0, R"({"do":"present","window":"other","mode":0})"},
    {"present as a sheet", 0, R"({"do":"present","window":"player","mode":1})"},
    {"present as a modal window", 0, R"({"do":"present","window":"player","mode":2})"},
    {"key to the player", 0, R"({"do":"makeKey","window":"player"})"},
    {"key to another window", 0, R"({"do":"makeKey","window":"other"})"},
    {"no window is key", 0, R"({"do":"resignKey"})"},
    {"consent window loses key", 0, R"({"do":"makeKey","window":"consent"},{"do":"resignKey"})"},
    {"tick", 1, R"({"do":"inspect"})"},
    {"half a second", 5, R"({"do":"inspect"})"},
    {"dismiss by the manager", 0, R"({"do":"dismiss","by":"manager"})"},
    {"dismiss by the controller", 0, R"({"do":"dismiss","by":"controller"})"},
    {"dismiss by the content", 0, R"({"do":"dismiss","by":"content"})"},
    {"close the player", 0, R"({"do":"closeWindow","window":"player"})"},
    {"deactivate", 0, R"({"do":"deactivate"})"},
};

// The JSON of the windows that every host setup has after the player window, and the closing
// brackets.
#define VEL_EXPLORATION_OTHER_WINDOWS                               \
  R"({"name":"other","className":"OtherWindow","styleMask":7},)"    \
  R"({"name":"consent","className":"ConsentWindow","styleMask":1,)" \
  R"("contentViewController":"GDPRViewController"}]})"

constexpr HostSetup kHostSetups[] = {
    {"bare", R"({"windows":[{"name":"player"},)" VEL_EXPLORATION_OTHER_WINDOWS},
    {"with a content view controller",
     R"({"windows":[{"name":"player","contentViewController":"PlayerViewController"},)" VEL_EXPLORATION_OTHER_WINDOWS},
};

#undef VEL_EXPLORATION_OTHER_WINDOWS

constexpr int kTenthsOfSecondUntilNoWorkIsLeft = 50;

std::string secondsFromTenths(int tenths) { return host::shortestDecimal(tenths / 10.0); }

std::string scenarioOf(const HostSetup& hostSetup, const std::string& steps, int endInTenths) {
  return "{\n  \"host\": " + std::string(hostSetup.host) + ",\n  \"steps\": [" + steps +
         "\n  ],\n  \"until\": " + secondsFromTenths(endInTenths) + "\n}\n";
}

}  // namespace

std::span<const Action> actions() { return kActions; }
std::span<const HostSetup> hostSetups() { return kHostSetups; }

std::uint8_t indexOfAction(std::string_view name) {
  const auto* const action = std::ranges::find(kActions, name, &Action::name);
  if (action == std::end(kActions)) {
    throw std::invalid_argument("no action has the name \"" + std::string(name) + "\"");
  }
  return static_cast<std::uint8_t>(action - std::begin(kActions));
}

std::string scenarioText(const HostSetup& hostSetup, const Script& script) {
  std::string steps;
  int tenths = 0;
  for (const std::uint8_t index : script) {
    const Action& action = kActions[index];
    tenths += action.tenthsOfSecond;
    steps += steps.empty() ? "\n    " : ",\n    ";
    // Sets the time of the first step. A step without a time has the time of the previous step.
    steps += "{\"at\":" + secondsFromTenths(tenths) + ",";
    steps += action.steps.substr(1);  // without the opening brace
  }
  return scenarioOf(hostSetup, steps, tenths + kTenthsOfSecondUntilNoWorkIsLeft);
}

ParsedHostSetup::ParsedHostSetup(const HostSetup& source)
    : hostSetup(source), scenario(host::readScenario(scenarioOf(source, "", 0))) {
  for (const Action& action : kActions) {
    steps.push_back(host::readScenario(scenarioOf(source, std::string(action.steps), 0)).steps);
  }
}

}  // namespace vel::exploration
