#pragma once

#include <string_view>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSObject.h"

namespace vel {

/// Represents the program or library that contains a class. Stores only the name of the class.
class VEL_EXPORT NSBundle final : public Class<NSBundle, "NSBundle"> {
 public:
  explicit NSBundle(std::string_view principalClass) : principalClass_(principalClass) {}

  template <class T>
  static Strong<NSBundle> bundleForClass() {
    return make<NSBundle>(T::staticClassName());
  }

  [[nodiscard]] std::string_view principalClass() const { return principalClass_; }

 private:
  std::string_view principalClass_;
};

}  // namespace vel
