// The lines of the trace that `launchscreen play` prints.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Host/Play/Scenario/Scenario.h"
#include "Host/Play/Trace/Inspection.h"
#include "Platform/AppKit/PlatformObserver.h"
#include "Platform/Foundation/Time.h"

namespace vel::host {

/// The events of a trace, one struct for each kind.
namespace trace {

struct StepStart {
  std::string_view name;
};
/// The return value of the launch screen manager's `activate:`.
struct Activation {
  bool result = false;
};
/// The content that `contentDataForContentRequest:` returned. No value if the operation returned
/// null.
struct ContentDataResult {
  std::optional<ContentName> content;
};
/// The content whose view `contentViewForContentData:` returned. No value if the operation returned
/// null.
struct ContentViewResult {
  std::optional<ContentName> content;
};
/// The library registered its `ContentResolver` with the host's `ContentBroker`.
struct Registration {
  std::vector<std::string> engines;  // the engines that the resolver supports
};
struct LogLine {
  std::string text;
};
/// The state of the main or the temporary content changed.
struct StateChange {
  std::uint64_t state = 0;
  ContentName content = ContentName::Main;
};
/// The library called an operation of the host's view delegate.
struct HostCall {
  ViewOperation operation = ViewOperation::WillAppear;
  /// The return value of the operation, if it has one.
  std::optional<bool> returnValue;
};
/// The library recorded an analytics event.
struct RecordedEvent {
  std::string name;
};
/// A tick of the countdown.
struct Tick {
  double timeLeft = 0;  // in seconds, after the tick
};
struct KeyWindowChange {
  KeyStatusChange change = KeyStatusChange::BecomesKey;
  std::string window;
};
struct StyleMaskAssignment {
  NSWindowStyleMask styleMask = 0;
  std::string window;
};
/// A life-cycle method of a launch screen's view controller was called.
struct LifeCycleCall {
  LifeCycleMethod method = LifeCycleMethod::WillAppear;
};
/// A modal window or a sheet was opened or closed.
struct PresentationWindowChange {
  enum class Change : std::uint8_t { Opened, Closed };
  std::string window;
  Change change = Change::Opened;
};
struct InspectionReport {
  Inspection inspection;
};
/// An error after which the scenario cannot continue.
struct FatalError {
  std::string reason;
};

}  // namespace trace

using TraceEvent =
    std::variant<trace::StepStart, trace::Activation, trace::ContentDataResult,
                 trace::ContentViewResult, trace::Registration, trace::LogLine, trace::StateChange,
                 trace::HostCall, trace::RecordedEvent, trace::Tick, trace::KeyWindowChange,
                 trace::StyleMaskAssignment, trace::LifeCycleCall, trace::PresentationWindowChange,
                 trace::InspectionReport, trace::FatalError>;

struct TraceLine {
  Nanoseconds time = 0;  // since the start of the scenario
  TraceEvent event;
};

/// Returns the line as JSON, without a line feed.
[[nodiscard]] std::string traceText(const TraceLine& line);

}  // namespace vel::host
