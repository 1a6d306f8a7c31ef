#include "Host/Play/Scenario/StepReader.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <utility>

#include "Bindings/Json/JsonParameters.h"
#include "Host/Play/Trace/JsonWriter.h"

namespace vel::host {

namespace {

constexpr double kLatestTime = 1'000'000;

// The number in the name of a presentation's window; 0 for any other name.
std::uint64_t presentationNumber(std::string_view name, std::string_view prefix) {
  if (!name.starts_with(prefix)) {
    return 0;
  }
  name.remove_prefix(prefix.size());
  if (name.empty() || name.front() == '0' || !std::ranges::all_of(name, [](char character) {
        return character >= '0' && character <= '9';
      })) {
    return 0;
  }
  std::uint64_t number = std::numeric_limits<std::uint64_t>::max();  // stays, where it is greater
  std::from_chars(name.data(), name.data() + name.size(), number);
  return number;
}

OperationSet readOperations(const JsonValue& value) {
  OperationSet operations;
  for (const JsonValue& name : value.elements("an array of operations")) {
    operations.set(static_cast<std::size_t>(name.oneOf(kViewOperations)));
  }
  return operations;
}

// The members of a view delegate but for "operations".
void readViewDelegateMembers(JsonMembers& members, ViewDelegateScript& script) {
  members.take("canDisappear", script.canDisappear, &JsonValue::boolean);
  if (const JsonValue during = members["deactivateDuring"]; during.isGiven()) {
    script.deactivateDuring = during.oneOf(kViewOperations);
    if (!script.operations.test(static_cast<std::size_t>(*script.deactivateDuring))) {
      during.refuse("one of the delegate's operations");
    }
  }
}

CGRect readFrame(const JsonValue& value) {
  constexpr std::string_view kExpected = "four numbers: x, y, width and height";
  const std::vector<JsonValue> parts = value.elements(kExpected);
  if (parts.size() != 4) {
    value.refuse(kExpected);
  }
  return CGRectMake(parts[0].number(), parts[1].number(), parts[2].number(), parts[3].number());
}

/// What reading a step's own members takes.
struct StepContext {
  JsonMembers& members;
  KnownWindowNames& names;

  [[nodiscard]] std::string window() const {
    return names.known(members["window"], "the name of an earlier window");
  }
};

StepAction readActivate(const StepContext& context) {
  step::Activate action;
  context.members.take("broker", action.broker, &JsonValue::boolean);
  return action;
}

// A request's parameters; null for a JSON null.
Strong<NSDictionary> readParameters(const JsonValue& value) {
  if (value.isNull()) {
    return nullptr;
  }
  if (!value.json().is_object()) {
    value.refuse("an object with the request's parameters, or null");
  }
  return parametersFromJson(value.json());
}

StepAction readRequest(const StepContext& context) {
  step::Request action;
  if (const JsonValue parameters = context.members["parameters"]; parameters.isGiven()) {
    action.object = step::Request::Object::Given;
    action.parameters = readParameters(parameters);
  }
  context.members.takeOneOf("thread", action.thread, kStepThreads);
  return action;
}

StepAction readContentView(const StepContext& context) {
  step::ContentView action;
  context.members.takeOneOf("content", action.content, kContents);
  return action;
}

StepAction readPresent(const StepContext& context) {
  step::Present action;
  const JsonValue window = context.members["window"];
  if (!window.isNull()) {
    action.window = context.names.known(window, "the name of an earlier window, or null");
  }
  action.mode = static_cast<std::int32_t>(context.members["mode"].integer(
      std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
  context.members.takeOneOf("content", action.content, kContents);
  context.names.presented(action.mode);
  return action;
}

StepAction readDismiss(const StepContext& context) {
  step::Dismiss action;
  action.by = context.members["by"].oneOf(kDismissalRoads);
  if (action.by == DismissalRoad::Manager) {
    context.members.takeOneOf("thread", action.thread, kStepThreads);
  }
  return action;
}

StepAction readSend(const StepContext& context) {
  return step::Send{context.members["operation"].oneOf(kSentOperations)};
}

StepAction readConfigure(const StepContext& context) {
  step::Configure action;
  JsonMembers& members = context.members;
  members.take("skipMode", action.skipMode, &JsonValue::boolean);
  members.take("nextEventName", action.nextEventName,
               [](const JsonValue& value) { return value.textOrNull(); });
  members.take("expirationTimeInterval", action.expirationTimeInterval, &JsonValue::numberOrWord);
  members.take("viewController", action.viewController, &JsonValue::boolean);
  return action;
}

StepAction readViewDelegateStep(const StepContext& context) {
  ViewDelegateScript script;
  const JsonValue operations = context.members["operations"];
  if (operations.isNull()) {
    script.operations.reset();
  } else if (operations.isGiven()) {
    script.operations = readOperations(operations);
  }
  readViewDelegateMembers(context.members, script);
  return operations.isNull() ? step::ViewDelegate{} : step::ViewDelegate{script};
}

WindowScript readWindowMembers(JsonMembers& members, KnownWindowNames& names) {
  WindowScript window;
  const JsonValue name = members["name"];
  members.take("className", window.className, [](const JsonValue& value) { return value.text(); });
  members.take("styleMask", window.styleMask, &JsonValue::unsigned64);
  members.take("frame", window.frame, &readFrame);
  members.take("contentViewController", window.contentViewController,
               [](const JsonValue& value) { return value.textOrNull(); });
  if (const JsonValue parent = members["parent"]; parent.isGiven() && !parent.isNull()) {
    window.parent = names.known(parent, "the name of an earlier window, or null");
  }
  window.name = names.give(name);
  return window;
}

StepAction readOpenWindow(const StepContext& context) {
  return step::OpenWindow{readWindowMembers(context.members, context.names)};
}

template <class Action>
StepAction readOnWindow(const StepContext& context) {
  return Action{context.window()};
}

template <class Action>
StepAction readPlain(const StepContext& /*context*/) {
  return Action{};
}

StepAction readPresentOver(const StepContext& context) {
  context.names.sheetPresented();
  return step::PresentOver{};
}

StepAction readRunLoopMode(const StepContext& context) {
  return step::RunLoopMode{context.members["mode"].oneOf(kRunLoopModes)};
}

using StepReading = StepAction (*)(const StepContext&);

constexpr NamedValue<StepReading> kSteps[] = {
    {"activate", &readActivate},
    {"request", &readRequest},
    {"contentView", &readContentView},
    {"present", &readPresent},
    {"dismiss", &readDismiss},
    {"deactivate", &readPlain<step::Deactivate>},
    {"send", &readSend},
    {"configure", &readConfigure},
    {"replaceConfiguration", &readPlain<step::ReplaceConfiguration>},
    {"viewDelegate", &readViewDelegateStep},
    {"openWindow", &readOpenWindow},
    {"closeWindow", &readOnWindow<step::CloseWindow>},
    {"makeKey", &readOnWindow<step::MakeKey>},
    {"miniaturize", &readOnWindow<step::Miniaturize>},
    {"deminiaturize", &readOnWindow<step::Deminiaturize>},
    {"resignKey", &readPlain<step::ResignKey>},
    {"deactivateApp", &readPlain<step::DeactivateApp>},
    {"activateApp", &readPlain<step::ActivateApp>},
    {"stopModal", &readPlain<step::StopModal>},
    {"presentOver", &readPresentOver},
    {"dismissOver", &readPlain<step::DismissOver>},
    {"runLoopMode", &readRunLoopMode},
    {"inspect", &readPlain<step::Inspect>},
};

}  // namespace

std::string KnownWindowNames::give(const JsonValue& name) {
  std::string given = name.text("the window's name");
  if (presentationNumber(given, kModalWindowName) > 0 ||
      presentationNumber(given, kSheetName) > 0) {
    name.refuse("a name that no presentation gives to its window");
  }
  if (!host_.insert(given).second) {
    name.refuse("a name that no earlier window has");
  }
  return given;
}

void KnownWindowNames::presented(std::int32_t mode) {
  if (mode == 2) {
    ++modalWindows_;
  } else if (mode != 0) {
    ++sheets_;
  }
}

bool KnownWindowNames::isGiven(std::string_view name) const {
  if (const std::uint64_t number = presentationNumber(name, kModalWindowName); number > 0) {
    return number <= modalWindows_;
  }
  if (const std::uint64_t number = presentationNumber(name, kSheetName); number > 0) {
    return number <= sheets_;
  }
  return host_.contains(name);
}

std::string KnownWindowNames::known(const JsonValue& name, std::string_view expected) const {
  std::string text = name.text(expected);
  if (!isGiven(text)) {
    name.refuse(expected);
  }
  return text;
}

double readSeconds(const JsonValue& value, double earliest) {
  const double seconds = value.number();
  if (seconds < earliest || seconds > kLatestTime) {
    value.refuse("a number of seconds from " + shortestDecimal(earliest) + " to 1000000");
  }
  return seconds;
}

WindowScript readWindow(const JsonValue& value, KnownWindowNames& names) {
  JsonMembers members(value, "a window");
  WindowScript window = readWindowMembers(members, names);
  members.refuseOthers();
  return window;
}

ViewDelegateScript readViewDelegate(const JsonValue& value) {
  JsonMembers members(value, "a view delegate, or null");
  ViewDelegateScript script;
  members.take("operations", script.operations, &readOperations);
  readViewDelegateMembers(members, script);
  members.refuseOthers();
  return script;
}

Step readStep(const JsonValue& value, double& at, KnownWindowNames& names) {
  JsonMembers members(value, "a step");
  if (const JsonValue time = members["at"]; time.isGiven()) {
    at = readSeconds(time, at);
  }
  const auto& [name, reading] = members["do"].entryOf(kSteps);
  Step read{.at = nanosecondsFromSeconds(at), .name = name, .action = reading({members, names})};
  members.refuseOthers();
  return read;
}

}  // namespace vel::host
