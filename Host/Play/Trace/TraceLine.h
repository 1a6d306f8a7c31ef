// The lines of a trace: what happened in a play.
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

struct StepStarted {
  std::string_view name;
};
struct Activated {
  bool answer = false;
};
struct ContentDataAnswered {
  std::optional<ContentName> answer;
};
struct ContentViewAnswered {
  std::optional<ContentName> answer;
};
struct Registered {
  std::vector<std::string> engines;
};
struct Logged {
  std::string text;
};
struct StateChanged {
  std::uint64_t state = 0;
  ContentName content = ContentName::Main;
};
struct HostCalled {
  ViewOperation operation = ViewOperation::WillAppear;
  /// The return value of the host, if the operation has one.
  std::optional<bool> answer;
};
struct EventRecorded {
  std::string name;
};
struct Ticked {
  double timeLeft = 0;
};
struct KeyChanged {
  KeyChange change = KeyChange::Becomes;
  std::string window;
};
struct StyleMaskSet {
  NSWindowStyleMask styleMask = 0;
  std::string window;
};
struct CoverStep {
  LifeCycleStep step = LifeCycleStep::WillAppear;
};
struct PresentationWindow {
  enum class Change : std::uint8_t { Opened, Closed };
  std::string window;
  Change change = Change::Opened;
};
struct Inspected {
  Inspection inspection;
};
/// The play cannot continue.
struct Fatal {
  std::string reason;
};

}  // namespace trace

using TraceEvent =
    std::variant<trace::StepStarted, trace::Activated, trace::ContentDataAnswered,
                 trace::ContentViewAnswered, trace::Registered, trace::Logged, trace::StateChanged,
                 trace::HostCalled, trace::EventRecorded, trace::Ticked, trace::KeyChanged,
                 trace::StyleMaskSet, trace::CoverStep, trace::PresentationWindow, trace::Inspected,
                 trace::Fatal>;

struct TraceLine {
  Nanoseconds time = 0;
  TraceEvent event;
};

/// Returns the line as JSON, without a line feed.
[[nodiscard]] std::string traceText(const TraceLine& line);

}  // namespace vel::host
