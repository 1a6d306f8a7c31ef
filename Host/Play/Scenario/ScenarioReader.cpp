#include "Host/Play/Scenario/ScenarioReader.h"

#include <algorithm>
#include <limits>

#include "Host/Play/Scenario/JsonValue.h"
#include "Host/Play/Scenario/StepReader.h"
#include "Host/Play/Scenario/StrictJson.h"

namespace vel::host {

namespace {

ResolverDelegateKind readResolverDelegate(const JsonValue& value) {
  return value.isNull() ? ResolverDelegateKind::None : value.oneOf(kResolverDelegates);
}

NSOperatingSystemVersion readVersion(const JsonValue& value) {
  constexpr std::string_view kExpected = "three integers: major, minor and patch version";
  const std::vector<JsonValue> parts = value.elements(kExpected);
  if (parts.size() != 3) {
    value.refuse(kExpected);
  }
  constexpr std::int64_t kGreatest = std::numeric_limits<std::int64_t>::max();
  return {parts[0].integer(0, kGreatest), parts[1].integer(0, kGreatest),
          parts[2].integer(0, kGreatest)};
}

HostScript readHost(const JsonValue& value, KnownWindowNames& names) {
  JsonMembers members(value, "an object with what the host has");
  HostScript host;
  if (const JsonValue windows = members["windows"]; windows.isGiven()) {
    host.windows.clear();
    for (const JsonValue& window : windows.elements("an array of windows")) {
      host.windows.push_back(readWindow(window, names));
    }
  } else {
    names.giveDefault(host.windows.front().name);
  }
  members.take("resolverDelegate", host.resolverDelegate, &readResolverDelegate);
  if (const JsonValue delegate = members["viewDelegate"]; delegate.isNull()) {
    host.viewDelegate.reset();
  } else if (delegate.isGiven()) {
    host.viewDelegate = readViewDelegate(delegate);
  }
  members.take("osVersion", host.osVersion, &readVersion);
  members.refuseOthers();
  return host;
}

}  // namespace

Scenario readScenario(std::string_view text) {
  const nlohmann::json document = parseStrictJson(text);
  JsonMembers members({&document, {}}, "an object");
  Scenario scenario;
  KnownWindowNames names;
  const nlohmann::json defaults = nlohmann::json::object();
  const JsonValue host = members["host"];
  scenario.host = readHost(host.isGiven() ? host : JsonValue(&defaults, host.place()), names);
  double at = 0;
  if (const JsonValue steps = members["steps"]; steps.isGiven()) {
    for (const JsonValue& step : steps.elements("an array of steps")) {
      scenario.steps.push_back(readStep(step, at, names));
    }
  }
  members.take("until", scenario.end, [](const JsonValue& value) {
    return nanosecondsFromSeconds(readSeconds(value, 0));
  });
  scenario.end = std::max(scenario.end, nanosecondsFromSeconds(at));
  members.refuseOthers();
  return scenario;
}

}  // namespace vel::host
