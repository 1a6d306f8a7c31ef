#pragma once

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/NSObject.h"

namespace vel {

class VEL_EXPORT NSColor final : public Class<NSColor, "NSColor"> {
 public:
  explicit NSColor(vel::CGColor color) : color_(color) {}

  static Strong<NSColor> whiteColor() {
    return make<NSColor>(vel::CGColor{.red = 1, .green = 1, .blue = 1, .alpha = 1});
  }

  /// The value that `CALayer::setBackgroundColor` takes.
  [[nodiscard]] vel::CGColor CGColor() const { return color_; }

 private:
  vel::CGColor color_;
};

}  // namespace vel
