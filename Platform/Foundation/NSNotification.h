#pragma once

#include <string_view>
#include <utility>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSObject.h"

namespace vel {

/// The name of a notification. The string must live as long as the process.
using NSNotificationName = std::string_view;

/// A notification: the name of an event, and the object, if any, to which the event happened.
class VEL_EXPORT NSNotification {
 public:
  /// `object` may be null.
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
