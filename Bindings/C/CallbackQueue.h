#pragma once

#include <cstddef>
#include <deque>
#include <functional>

#include "Platform/Foundation/NonCopyable.h"

namespace vel {

/// Delays callbacks until the library has finished the operation that caused them. A delayed
/// callback can therefore call every function of the C interface. Only the owning thread may use
/// this class.
class CallbackQueue : NonCopyable {
 public:
  using Callback = std::function<void()>;

  /// Records that a function of the C interface has started.
  void enterFunction() { ++runningFunctionCount_; }
  /// Records that a function of the C interface returns.
  void leaveFunction() { --runningFunctionCount_; }
  /// True if a callback that is not delayed has called the running function. The library is then in
  /// the middle of another operation.
  [[nodiscard]] bool isInsideOperation() const { return runningFunctionCount_ > 1; }

  /// Calls `callback` in the next `deliver`, or immediately if no function of the C interface is
  /// running.
  void add(Callback callback);
  /// Calls all waiting callbacks, in the order in which they were added.
  void deliver();
  /// Discards all waiting callbacks.
  void clear() { waitingCallbacks_.clear(); }

 private:
  std::deque<Callback> waitingCallbacks_;
  // The number of functions of the C interface that are running. The function that delivers a
  // callback does not count while the callback runs.
  std::size_t runningFunctionCount_ = 0;
};

}  // namespace vel
