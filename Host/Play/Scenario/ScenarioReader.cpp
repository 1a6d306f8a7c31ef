#include "Host/Play/Scenario/ScenarioReader.h"

#include <algorithm>
#include <limits>

#include "Host/Play/Scenario/JsonValue.h"
#include "Host/Play/Scenario/StepReader.h"
#include "Host/Play/Scenario/StrictJson.h"

namespace vel::host {

namespace {

ResolverDelegateKind readResolverDelegate(const JsonValue& value) {
  return value.isNull() ? ResolverDelegateKind::None : value.valueIn(kResolverDelegates);
}

NSOperatingSystemVersion readVersion(const JsonValue& value) {
  constexpr std::string_view kExpected = "three integers: major, minor and patch version";
  const std::vector<JsonValue> parts = value.elements(kExpected);
  if (parts.size() != 3) {
    value.throwInvalid(kExpected);
  }
  constexpr std::int64_t kMaximum = std::numeric_limits<std::int64_t>::max();
  return {parts[0].integer(0, kMaximum), parts[1].integer(0, kMaximum),
          parts[2].integer(0, kMaximum)};
}

HostScript readHost(const JsonValue& value, KnownWindowNames& names) {
  JsonMembers members(value, "an object that describes the host");
  HostScript host;
  if (const JsonValue windows = members["windows"]; windows.isPresent()) {
    host.windows.clear();
    for (const JsonValue& window : windows.elements("an array of windows")) {
      host.windows.push_back(readWindow(window, names));
    }
  } else {
    names.addDefaultWindow(host.windows.front().name);
  }
  members.readInto(host.resolverDelegate, "resolverDelegate", &readResolverDelegate);
  if (const JsonValue delegate = members["viewDelegate"]; delegate.isNull()) {
    host.viewDelegate.reset();
  } else if (delegate.isPresent()) {
    host.viewDelegate = readViewDelegate(delegate);
  }
  members.readInto(host.osVersion, "osVersion", &readVersion);
  members.rejectUnknownMembers();
  return host;
}

}  // namespace

Scenario readScenario(std::string_view text) {
  const nlohmann::json document = parseStrictJson(text);
  JsonMembers members(JsonValue(&document, JsonPointer()), "an object");
  Scenario scenario;
  KnownWindowNames names;
  // Call `readHost` even if the member "host" is missing, because `readHost` adds the default
  // window's name to `names`.
  const nlohmann::json emptyHost = nlohmann::json::object();
  const JsonValue host = members["host"];
  scenario.host = readHost(host.isPresent() ? host : JsonValue(&emptyHost, host.pointer()), names);
  double latestStepTime = 0;  // in seconds; `readStep` updates it
  if (const JsonValue steps = members["steps"]; steps.isPresent()) {
    for (const JsonValue& step : steps.elements("an array of steps")) {
      scenario.steps.push_back(readStep(step, latestStepTime, names));
    }
  }
  members.readInto(scenario.end, "until", [](const JsonValue& value) {
    return nanosecondsFromSeconds(readSeconds(value, 0));
  });
  scenario.end = std::max(scenario.end, nanosecondsFromSeconds(latestStepTime));
  members.rejectUnknownMembers();
  return scenario;
}

}  // namespace vel::host
