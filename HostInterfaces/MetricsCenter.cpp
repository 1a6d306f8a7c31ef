#include "HostInterfaces/MetricsCenter.h"

#include <utility>

#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/NSLog.h"

namespace vel {

namespace {

MetricsCenter::Sink& currentSink() {
  static auto& sink = *new MetricsCenter::Sink();
  return sink;
}

}  // namespace

MetricsCenter::Sink MetricsCenter::setSink(Sink sink) {
  return std::exchange(currentSink(), std::move(sink));
}

void MetricsCenter::logEvent(const Strong<NSString>& name) {
  const std::string_view event = send(name, &NSString::UTF8String);
  if (const Sink sink = currentSink()) {
    sink(event);
  } else {
    NSLog("%@ (%s): %@", "MetricsCenter", "+[MetricsCenter logEvent:]", event);
  }
}

}  // namespace vel
