#pragma once

#include <string_view>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSObject.h"

namespace vel {

/// The name of an appearance. The string must live as long as the process.
using NSAppearanceName = std::string_view;

/// The light appearance.
inline constexpr NSAppearanceName NSAppearanceNameAqua = "NSAppearanceNameAqua";

/// A named look of controls.
class VEL_EXPORT NSAppearance final : public Class<NSAppearance, "NSAppearance"> {
 public:
  explicit NSAppearance(NSAppearanceName name) : name_(name) {}

  static Strong<NSAppearance> appearanceNamed(NSAppearanceName name) {
    return make<NSAppearance>(name);
  }

  [[nodiscard]] NSAppearanceName name() const { return name_; }

 private:
  NSAppearanceName name_;
};

}  // namespace vel
