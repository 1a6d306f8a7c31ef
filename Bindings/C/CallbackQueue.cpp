#include "Bindings/C/CallbackQueue.h"

#include <utility>

namespace vel {

namespace {

/// Sets a variable to a value, and restores the previous value at the end of the scope.
class TemporaryValue : NonCopyable {
 public:
  TemporaryValue(std::size_t& variable, std::size_t value)
      : variable_(variable), previousValue_(std::exchange(variable, value)) {}
  ~TemporaryValue() { variable_ = previousValue_; }

 private:
  std::size_t& variable_;
  std::size_t previousValue_;
};

}  // namespace

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
