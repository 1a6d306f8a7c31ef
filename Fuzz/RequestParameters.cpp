// Fuzzes request parameters. A separate implementation in this file computes the expected outcome
// of each request. The library must accept the same requests. The resulting configuration and log
// must also be the same.
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "Bindings/Json/JsonParameters.h"
#include "Fuzz/Fuzz.h"
#include "Fuzz/SlowNumber.h"
#include "Host/Play/Player/HeadlessPlatform.h"
#include "LaunchScreen/LaunchScreen.h"
#include "Platform/Foundation/NSLog.h"

namespace vel::fuzz {

namespace {

// The values in the configuration before each request.
constexpr const char* kPreviousEvent = "previous";
constexpr double kPreviousInterval = 7;

/// The result of a request.
struct Outcome {
  bool isAccepted = false;
  bool skipMode = false;
  std::string event = kPreviousEvent;
  double interval = kPreviousInterval;
  std::string logText;
  bool operator==(const Outcome&) const = default;
};

float numberOf(const nlohmann::json& value) {
  if (value.is_string()) {
    return slowFloatValue(value.get_ref<const std::string&>());
  }
  if (value.is_number_unsigned()) {
    return static_cast<float>(value.get<std::uint64_t>());
  }
  if (value.is_number_integer()) {
    return static_cast<float>(value.get<std::int64_t>());
  }
  if (value.is_boolean()) {
    return value.get<bool>() ? 1 : 0;
  }
  return value.is_number_float() ? static_cast<float>(value.get<double>()) : 0;
}

std::string logLine(std::string_view missingValue) {
  return "LaunchScreenManager (-[LaunchScreenManager parseParameters:]): " +
         std::string(missingValue) + " is nil or empty!";
}

Outcome expectedOutcome(const nlohmann::json& parameters) {
  Outcome outcome;
  outcome.skipMode = parameters.contains("mode") && parameters["mode"] == "skip";
  if (!parameters.contains("event") || !parameters["event"].is_string() ||
      parameters["event"].get<std::string>().empty()) {
    outcome.logText = logLine("Next event name");
    return outcome;
  }
  outcome.event = parameters["event"];
  const float duration =
      parameters.contains("max_duration_time") ? numberOf(parameters["max_duration_time"]) : 0;
  if (duration == 0) {
    outcome.logText = logLine("Max duration time");
    return outcome;
  }
  outcome.isAccepted = true;
  outcome.interval = duration;
  return outcome;
}

// Makes the request. Also checks that the manager and its content match the configuration.
Outcome outcomeOf(const Strong<NSDictionary>& parameters) {
  const host::HeadlessPlatform platform({10, 14, 0});
  Outcome outcome;
  setNSLogSink([&outcome](std::string_view line) { outcome.logText += line; });
  const auto configuration = LaunchScreenConfiguration::defaultConfiguration();
  configuration->setSkipMode(true);
  configuration->setNextEventName(NSString::stringWithUTF8String(kPreviousEvent));
  configuration->setExpirationTimeInterval(kPreviousInterval);
  const auto manager = LaunchScreenManager::init();
  const auto contentData =
      manager->contentDataForContentRequest(DictionaryRequest::requestWithParameters(parameters));
  outcome.isAccepted = contentData != nullptr;
  outcome.skipMode = configuration->skipMode();
  outcome.event = configuration->nextEventName()->UTF8String();
  outcome.interval = configuration->expirationTimeInterval();

  if (outcome.isAccepted) {
    const bool isShown = outcome.interval > 0;
    require(manager->launchScreenExpirationTimeLeft() == outcome.interval,
            "the time left differs from the interval");
    require(contentData->state() == (isShown ? ContentDataStateLoaded : ContentDataStateFailed),
            "state ", contentData->state(), " with ", outcome.interval, " s");
    require((contentData->error() == nullptr) == isShown, "an error with ", outcome.interval, " s");
  } else {
    require(manager->content()->state() == 0, "a refused request reached the content");
  }
  manager->deactivate();
  setNSLogSink(nullptr);
  return outcome;
}

}  // namespace

}  // namespace vel::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vel::fuzz;
  const std::string_view text = textOf(data, size);
  const auto expectedJson = nlohmann::json::parse(text, nullptr, false);
  std::string error;
  const vel::Strong<vel::NSDictionary> parameters = vel::parametersFromJsonText(text, error);
  require((parameters != nullptr) == expectedJson.is_object(),
          "the reader must accept exactly the JSON objects");
  require((parameters != nullptr) == error.empty(),
          "an error text must exist exactly if the text is refused: ", error);
  if (parameters != nullptr) {
    require(outcomeOf(parameters) == expectedOutcome(expectedJson),
            "the outcome differs from the expected one");
  }
  return 0;
}
