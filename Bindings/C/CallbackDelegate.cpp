#include "Bindings/C/CallbackDelegate.h"

#include "Platform/Foundation/NSLog.h"

namespace vel {

void CallbackDelegate::silence() {
  callbacks_ = {};
  disappearanceHandler_ = nullptr;
  queue_.clear();
}

void CallbackDelegate::contentResolverDidChangeStateForContentData(
    const Strong<ContentResolver>& /*resolver*/, const Strong<ContentData>& data) {
  const auto state = static_cast<VelState>(data->state());
  const Strong<NSError> error = data->error();
  queue_.add([this, state, hasError = error != nullptr,
              text = std::string(send(error, &NSError::domain))] {
    if (callbacks_.state_changed != nullptr) {
      callbacks_.state_changed(callbacks_.user_data, state, hasError ? text.c_str() : nullptr);
    }
  });
}

void CallbackDelegate::contentViewWillAppear(const Strong<ContentView>& /*view*/) {
  if (callbacks_.will_appear != nullptr) {
    callbacks_.will_appear(callbacks_.user_data);
  }
}

bool CallbackDelegate::canContentViewDisappear(const Strong<ContentView>& /*view*/) {
  hasAgreedToDismissal_ =
      callbacks_.may_disappear == nullptr || callbacks_.may_disappear(callbacks_.user_data) != 0;
  return hasAgreedToDismissal_;
}

void CallbackDelegate::contentViewDidDisappear(const Strong<ContentView>& /*view*/) {
  if (disappearanceHandler_ && !disappearanceHandler_()) {
    return;
  }
  queue_.add([this] {
    if (callbacks_.did_disappear != nullptr) {
      callbacks_.did_disappear(callbacks_.user_data);
    }
  });
}

void CallbackDelegate::logLine(std::string_view line) {
  lastLogLine_ = line;
  if (callbacks_.log_line != nullptr) {
    callbacks_.log_line(callbacks_.user_data, std::string(line).c_str());
  } else {
    writeToStandardSink(line);
  }
}

void CallbackDelegate::recordEvent(std::string_view event) {
  queue_.add([this, event = std::string(event)] {
    if (callbacks_.record_event != nullptr) {
      callbacks_.record_event(callbacks_.user_data, event.c_str());
    }
  });
}

void CallbackDelegate::reportRemainingControls(std::uint32_t controls) {
  queue_.add([this, controls] {
    if (callbacks_.controls_kept != nullptr) {
      callbacks_.controls_kept(callbacks_.user_data, controls);
    }
  });
}

void CallbackDelegate::requestControlsRemoval(std::uint32_t controls) {
  queue_.add([this, controls] {
    if (callbacks_.take_controls != nullptr) {
      hasTakenControls_ = controls != 0;
      callbacks_.take_controls(callbacks_.user_data, controls);
    }
  });
}

void CallbackDelegate::reportLostDisplay(std::string_view reason) {
  queue_.add([this, reason = std::string(reason)] {
    if (callbacks_.display_lost != nullptr) {
      callbacks_.display_lost(callbacks_.user_data, reason.c_str());
    }
  });
}

void CallbackDelegate::reportEnd(VelEndReason reason) {
  waitingEndReason_ = reason;
  queue_.add([this, reason] {
    waitingEndReason_.reset();
    if (callbacks_.ended != nullptr) {
      callbacks_.ended(callbacks_.user_data, reason);
    }
  });
}

}  // namespace vel
