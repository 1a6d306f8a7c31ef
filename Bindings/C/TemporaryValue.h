#pragma once

#include <utility>

#include "Platform/Foundation/NonCopyable.h"

namespace vel {

/// Sets a variable to a value. Restores the previous value at the end of the scope, even if an
/// exception ends the scope.
template <class Value>
class TemporaryValue : NonCopyable {
 public:
  TemporaryValue(Value& variable, Value value)
      : variable_(variable), previousValue_(std::exchange(variable, value)) {}
  ~TemporaryValue() { variable_ = previousValue_; }

 private:
  Value& variable_;
  Value previousValue_;
};

}  // namespace vel
