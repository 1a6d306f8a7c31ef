#include "Bindings/C/CallbackQueue.h"

#include <utility>

namespace vel {

namespace {

/// Sets a variable to a value, and restores the previous value at the end of the scope.
class TemporaryValue : NonCopyable {
 public:
  TemporaryValue(std::size_t& variable, std::size_t value)
      : variable_(variable), previous_(std::exchange(variable, value)) {}
  ~TemporaryValue() { variable_ = previous_; }

 private:
  std::size_t& variable_;
  std::size_t previous_;
};

}  // namespace

void CallbackQueue::add(Callback callback) {
  waiting_.push_back(std::move(callback));
  if (runningFunctions_ == 0) {
    deliver();
  }
}

void CallbackQueue::deliver() {
  while (!waiting_.empty()) {
    const Callback callback = std::move(waiting_.front());
    waiting_.pop_front();
    const TemporaryValue functions(runningFunctions_, isInsideOperation() ? runningFunctions_ : 0);
    callback();
  }
}

}  // namespace vel
