#include "Bindings/C/CallbackQueue.h"

#include <utility>

#include "Bindings/C/TemporaryValue.h"

namespace vel {

void CallbackQueue::add(Callback callback) {
  waitingCallbacks_.push_back(std::move(callback));
  if (runningFunctionCount_ == 0) {
    deliver();
  }
}

void CallbackQueue::deliver() {
  while (!waitingCallbacks_.empty()) {
    const Callback callback = std::move(waitingCallbacks_.front());
    waitingCallbacks_.pop_front();
    const TemporaryValue countDuringCallback(runningFunctionCount_,
                                             isInsideOperation() ? runningFunctionCount_ : 0);
    callback();
  }
}

}  // namespace vel
