#pragma once

#include <utility>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/NSObject.h"

namespace vel {

class NSView;

/// The background of a view. The view owns the layer.
class VEL_EXPORT CALayer final : public Class<CALayer, "CALayer"> {
 public:
  explicit CALayer(Weak<NSView> view) : view_(std::move(view)) {}

  /// Transparent by default.
  [[nodiscard]] CGColor backgroundColor() const { return backgroundColor_; }
  void setBackgroundColor(CGColor color);

 private:
  Weak<NSView> view_;
  CGColor backgroundColor_;
};

}  // namespace vel
