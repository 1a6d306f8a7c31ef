#pragma once

#include <string_view>
#include <utility>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSObject.h"

namespace vel {

/// The name of a notification: a constant that lives as long as the process.
using NSNotificationName = std::string_view;

/// What happened to which object. A plain value: a post makes it on the stack.
class VEL_EXPORT NSNotification {
 public:
  /// `object` may be none.
  static NSNotification initWithNameObject(NSNotificationName name, Strong<NSObject> object) {
    return NSNotification(name, std::move(object));
  }

  [[nodiscard]] NSNotificationName name() const { return name_; }
  [[nodiscard]] const Strong<NSObject>& object() const { return object_; }

 private:
  NSNotification(NSNotificationName name, Strong<NSObject> object)
      : name_(name), object_(std::move(object)) {}

  NSNotificationName name_;
  Strong<NSObject> object_;
};

}  // namespace vel
