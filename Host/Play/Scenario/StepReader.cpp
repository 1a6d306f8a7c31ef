#include "Host/Play/Scenario/StepReader.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <utility>

#include "Bindings/Json/JsonParameters.h"
#include "Host/Play/Scenario/Decimal.h"

namespace vel::host {

namespace {

constexpr double kMaximumSeconds = 1'000'000;

// Returns the number after the prefix, for example 2 for the name "sheet-2" and the prefix
// "sheet-". Returns 0 if the name does not consist of the prefix and a positive number without
// leading zeros.
std::uint64_t numberAfterPrefix(std::string_view name, std::string_view prefix) {
  if (!name.starts_with(prefix)) {
    return 0;
  }
  name.remove_prefix(prefix.size());
  if (name.empty() || name.front() == '0' || !std::ranges::all_of(name, [](char character) {
        return character >= '0' && character <= '9';
      })) {
    return 0;
  }
  // If the value does not fit in 64 bits, `from_chars` leaves `number` at the maximum.
  std::uint64_t number = std::numeric_limits<std::uint64_t>::max();
  std::from_chars(name.data(), name.data() + name.size(), number);
  return number;
}

OperationSet readOperations(const JsonValue& value) {
  OperationSet operations;
  for (const JsonValue& name : value.elements("an array of operations")) {
    operations.set(static_cast<std::size_t>(name.valueIn(kViewOperations)));
  }
  return operations;
}

// Reads the members of a view delegate, except "operations".
void readViewDelegateMembers(JsonMembers& members, ViewDelegateScript& script) {
  members.readInto(script.canDisappear, "canDisappear", &JsonValue::boolean);
  if (const JsonValue operation = members["deactivateDuring"]; operation.isPresent()) {
    script.deactivateDuring = operation.valueIn(kViewOperations);
    if (!script.operations.test(static_cast<std::size_t>(*script.deactivateDuring))) {
      operation.throwInvalid("one of the delegate's operations");
    }
  }
}

CGRect readFrame(const JsonValue& value) {
  constexpr std::string_view kExpected = "four numbers: x, y, width and height";
  const std::vector<JsonValue> parts = value.elements(kExpected);
  if (parts.size() != 4) {
    value.throwInvalid(kExpected);
  }
  return CGRectMake(parts[0].number(), parts[1].number(), parts[2].number(), parts[3].number());
}

/// The arguments of the functions that read the members of a step.
struct StepContext {
  JsonMembers& members;
  KnownWindowNames& names;

  [[nodiscard]] std::string readWindowName() const {
    return names.readKnownName(members["window"], "the name of an earlier window");
  }
};

StepAction readActivate(const StepContext& context) {
  step::Activate action;
  context.members.readInto(action.hasBroker, "broker", &JsonValue::boolean);
  return action;
}

// Reads the parameters of a request. Returns null for the JSON value `null`.
Strong<NSDictionary> readParameters(const JsonValue& value) {
  if (value.isNull()) {
    return nullptr;
  }
  if (!value.json().is_object()) {
    value.throwInvalid("an object with the request's parameters, or null");
  }
  return parametersFromJson(value.json());
}

StepAction readRequest(const StepContext& context) {
  step::Request action;
  if (const JsonValue parameters = context.members["parameters"]; parameters.isPresent()) {
    action.parameters = readParameters(parameters);
  }
  context.members.readInto(action.thread, "thread", kStepThreads);
  return action;
}

StepAction readContentView(const StepContext& context) {
  step::ContentView action;
  context.members.readInto(action.content, "content", kContentNames);
  return action;
}

StepAction readPresent(const StepContext& context) {
  step::Present action;
  const JsonValue window = context.members["window"];
  if (!window.isNull()) {
    action.window = context.names.readKnownName(window, "the name of an earlier window, or null");
  }
  action.mode = static_cast<std::int32_t>(context.members["mode"].integer(
      std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
  context.members.readInto(action.content, "content", kContentNames);
  context.names.addPresentation(action.mode);
  return action;
}

StepAction readDismiss(const StepContext& context) {
  step::Dismiss action;
  action.path = context.members["by"].valueIn(kDismissalPaths);
  if (action.path == DismissalPath::Manager) {
    context.members.readInto(action.thread, "thread", kStepThreads);
  }
  return action;
}

StepAction readSend(const StepContext& context) {
  return step::Send{context.members["operation"].valueIn(kSentOperations)};
}

StepAction readConfigure(const StepContext& context) {
  step::Configure action;
  JsonMembers& members = context.members;
  members.readInto(action.skipMode, "skipMode", &JsonValue::boolean);
  members.readInto(action.nextEventName, "nextEventName",
                   [](const JsonValue& value) { return value.stringOrNull(); });
  members.readInto(action.expirationTimeInterval, "expirationTimeInterval",
                   &JsonValue::numberOrNonFinite);
  members.readInto(action.hasViewController, "viewController", &JsonValue::boolean);
  return action;
}

StepAction readViewDelegateStep(const StepContext& context) {
  ViewDelegateScript script;
  const JsonValue operations = context.members["operations"];
  if (operations.isNull()) {
    // `null` removes the delegate. `readViewDelegateMembers` must then reject "deactivateDuring",
    // so `script` must have no operations.
    script.operations.reset();
  } else if (operations.isPresent()) {
    script.operations = readOperations(operations);
  }
  readViewDelegateMembers(context.members, script);
  return operations.isNull() ? step::ViewDelegate{} : step::ViewDelegate{script};
}

WindowScript readWindowMembers(JsonMembers& members, KnownWindowNames& names) {
  WindowScript window;
  const JsonValue name = members["name"];
  members.readInto(window.className, "className",
                   [](const JsonValue& value) { return value.string(); });
  members.readInto(window.styleMask, "styleMask", &JsonValue::unsigned64);
  members.readInto(window.frame, "frame", &readFrame);
  members.readInto(window.contentViewController, "contentViewController",
                   [](const JsonValue& value) { return value.stringOrNull(); });
  if (const JsonValue parent = members["parent"]; parent.isPresent() && !parent.isNull()) {
    window.parent = names.readKnownName(parent, "the name of an earlier window, or null");
  }
  // A window cannot be its own parent, so its name is added after the parent is read.
  window.name = names.add(name);
  return window;
}

StepAction readOpenWindow(const StepContext& context) {
  return step::OpenWindow{readWindowMembers(context.members, context.names)};
}

template <class Action>
StepAction readWindowStep(const StepContext& context) {
  return Action{context.readWindowName()};
}

template <class Action>
StepAction readStepWithoutMembers(const StepContext& /*context*/) {
  return Action{};
}

StepAction readPresentOver(const StepContext& context) {
  context.names.addSheet();  // the step opens a sheet
  return step::PresentOver{};
}

StepAction readRunLoopMode(const StepContext& context) {
  return step::RunLoopMode{context.members["mode"].valueIn(kRunLoopModes)};
}

using StepReader = StepAction (*)(const StepContext&);

constexpr NamedValue<StepReader> kStepReaders[] = {
    {"activate", &readActivate},
    {"request", &readRequest},
    {"contentView", &readContentView},
    {"present", &readPresent},
    {"dismiss", &readDismiss},
    {"deactivate", &readStepWithoutMembers<step::Deactivate>},
    {"send", &readSend},
    {"configure", &readConfigure},
    {"replaceConfiguration", &readStepWithoutMembers<step::ReplaceConfiguration>},
    {"viewDelegate", &readViewDelegateStep},
    {"openWindow", &readOpenWindow},
    {"closeWindow", &readWindowStep<step::CloseWindow>},
    {"makeKey", &readWindowStep<step::MakeKey>},
    {"miniaturize", &readWindowStep<step::Miniaturize>},
    {"deminiaturize", &readWindowStep<step::Deminiaturize>},
    {"resignKey", &readStepWithoutMembers<step::ResignKey>},
    {"deactivateApp", &readStepWithoutMembers<step::DeactivateApp>},
    {"activateApp", &readStepWithoutMembers<step::ActivateApp>},
    {"stopModal", &readStepWithoutMembers<step::StopModal>},
    {"presentOver", &readPresentOver},
    {"dismissOver", &readStepWithoutMembers<step::DismissOver>},
    {"runLoopMode", &readRunLoopMode},
    {"inspect", &readStepWithoutMembers<step::Inspect>},
};

}  // namespace

std::string KnownWindowNames::add(const JsonValue& name) {
  std::string text = name.string("the window's name");
  if (numberAfterPrefix(text, kModalWindowPrefix) > 0 ||
      numberAfterPrefix(text, kSheetPrefix) > 0) {
    name.throwInvalid("a name that is not reserved for presentations");
  }
  if (!hostWindows_.insert(text).second) {
    name.throwInvalid("a name that no earlier window has");
  }
  return text;
}

void KnownWindowNames::addPresentation(std::int32_t mode) {
  if (mode == 2) {  // modal window
    ++modalWindowCount_;
  } else if (mode != 0) {  // sheet; 0 is embedded and opens no window
    ++sheetCount_;
  }
}

bool KnownWindowNames::isKnown(std::string_view name) const {
  if (const std::uint64_t number = numberAfterPrefix(name, kModalWindowPrefix); number > 0) {
    return number <= modalWindowCount_;
  }
  if (const std::uint64_t number = numberAfterPrefix(name, kSheetPrefix); number > 0) {
    return number <= sheetCount_;
  }
  return hostWindows_.contains(name);
}

std::string KnownWindowNames::readKnownName(const JsonValue& name,
                                            std::string_view expectedValue) const {
  std::string text = name.string(expectedValue);
  if (!isKnown(text)) {
    name.throwInvalid(expectedValue);
  }
  return text;
}

double readSeconds(const JsonValue& value, double earliest) {
  const double seconds = value.number();
  if (seconds < earliest || seconds > kMaximumSeconds) {
    value.throwInvalid("a number of seconds from " + shortestDecimal(earliest) + " to 1000000");
  }
  return seconds;
}

WindowScript readWindow(const JsonValue& value, KnownWindowNames& names) {
  JsonMembers members(value, "a window");
  WindowScript window = readWindowMembers(members, names);
  members.rejectUnknownMembers();
  return window;
}

ViewDelegateScript readViewDelegate(const JsonValue& value) {
  JsonMembers members(value, "a view delegate, or null");
  ViewDelegateScript script;
  members.readInto(script.operations, "operations", &readOperations);
  readViewDelegateMembers(members, script);
  members.rejectUnknownMembers();
  return script;
}

Step readStep(const JsonValue& object, double& time, KnownWindowNames& names) {
  JsonMembers members(object, "a step");
  // A step without "at" has the time of the previous step.
  if (const JsonValue value = members["at"]; value.isPresent()) {
    time = readSeconds(value, time);
  }
  const auto& [name, readAction] = members["do"].entryIn(kStepReaders);
  Step step{
      .time = nanosecondsFromSeconds(time), .name = name, .action = readAction({members, names})};
  members.rejectUnknownMembers();
  return step;
}

}  // namespace vel::host
