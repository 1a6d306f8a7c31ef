#include "Bindings/C/CallbackDelegate.h"

#include "Platform/Foundation/NSLog.h"

namespace vel {

OperationSet CallbackDelegate::respondingOperations() const {
  // In the order in which ContentViewDelegate lists them.
  OperationSet operations;
  operations.set(0, callbacks_.will_appear != nullptr);
  operations.set(1, callbacks_.may_disappear != nullptr);
  operations.set(2, callbacks_.did_disappear != nullptr);
  return operations;
}

void CallbackDelegate::contentResolverDidChangeStateForContentData(
    const Strong<ContentResolver>& /*resolver*/, const Strong<ContentData>& data) {
  if (callbacks_.state_changed == nullptr) {
    return;
  }
  const Strong<NSError> error = data->error();
  const std::string text(send(error, &NSError::domain));
  callbacks_.state_changed(callbacks_.user_data, static_cast<VelState>(data->state()),
                           error != nullptr ? text.c_str() : nullptr);
}

void CallbackDelegate::contentViewWillAppear(const Strong<ContentView>& /*view*/) {
  callbacks_.will_appear(callbacks_.user_data);
}

bool CallbackDelegate::canContentViewDisappear(const Strong<ContentView>& /*view*/) {
  return callbacks_.may_disappear(callbacks_.user_data) != 0;
}

void CallbackDelegate::contentViewDidDisappear(const Strong<ContentView>& /*view*/) {
  callbacks_.did_disappear(callbacks_.user_data);
}

void CallbackDelegate::logLine(std::string_view line) {
  lastLogLine_ = line;
  if (callbacks_.log_line != nullptr) {
    callbacks_.log_line(callbacks_.user_data, std::string(line).c_str());
  } else {
    writeLogLine(line);
  }
}

void CallbackDelegate::recordEvent(std::string_view event) const {
  if (callbacks_.record_event != nullptr) {
    callbacks_.record_event(callbacks_.user_data, std::string(event).c_str());
  }
}

void CallbackDelegate::controlsKept(std::uint32_t controls) const {
  if (callbacks_.controls_kept != nullptr) {
    callbacks_.controls_kept(callbacks_.user_data, controls);
  }
}

void CallbackDelegate::displayLost(std::string_view reason) const {
  if (callbacks_.display_lost != nullptr) {
    callbacks_.display_lost(callbacks_.user_data, std::string(reason).c_str());
  }
}

}  // namespace vel
