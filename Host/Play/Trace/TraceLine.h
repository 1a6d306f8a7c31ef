// What happened in a play, line by line.
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

/// The kinds of lines, a struct each.
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
  /// What the host answers, where it is asked.
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
/// The end of a play that cannot go on.
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

/// The line as JSON, without an end of line.
[[nodiscard]] std::string traceText(const TraceLine& line);

}  // namespace vel::host
