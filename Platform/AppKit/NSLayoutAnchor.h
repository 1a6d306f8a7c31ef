// Layout constraints for views, and the anchors that create these constraints.
#pragma once

#include <cstdint>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSArray.h"
#include "Platform/Foundation/NSObject.h"

namespace vel {

class NSView;

enum class NSLayoutAttribute : std::uint8_t { None, CenterX, CenterY, Width, Height };
enum class NSLayoutRelation : std::uint8_t { Equal, GreaterThanOrEqual };

/// A condition for the frame of one view, called the first view. A constraint that
/// NSLayoutAnchor creates gives the first view the same centre as a second view, on one axis. A
/// constraint that NSLayoutDimension creates gives the first view an exact or a minimum width or
/// height. The superview of the first view owns the constraint while the constraint is active.
class VEL_EXPORT NSLayoutConstraint final : public Class<NSLayoutConstraint, "NSLayoutConstraint"> {
 public:
  NSLayoutConstraint(const Strong<NSView>& firstView, NSLayoutAttribute attribute,
                     NSLayoutRelation relation, const Strong<NSView>& secondView, double constant)
      : firstItem_(firstView),
        attribute_(attribute),
        relation_(relation),
        secondItem_(secondView),
        constant_(constant) {}

  /// Activates the constraints in the order of the list. Ignores a constraint whose first view has
  /// no superview. Then lays out each superview that has a new constraint.
  static void activateConstraints(const NSArray<NSLayoutConstraint>& constraints);

  [[nodiscard]] Strong<NSView> firstItem() const { return firstItem_.lock(); }
  [[nodiscard]] NSLayoutAttribute attribute() const { return attribute_; }
  [[nodiscard]] NSLayoutRelation relation() const { return relation_; }
  /// The second view. Null if the constraint has a constant.
  [[nodiscard]] Strong<NSView> secondItem() const { return secondItem_.lock(); }
  /// The constant in points. 0 if the constraint has a second view.
  [[nodiscard]] double constant() const { return constant_; }

 private:
  Weak<NSView> firstItem_;
  NSLayoutAttribute attribute_;
  NSLayoutRelation relation_;
  Weak<NSView> secondItem_;
  double constant_;
};

/// A view's centre on one axis.
template <NSLayoutAttribute Attribute>
class NSLayoutAnchor {
 public:
  explicit NSLayoutAnchor(Strong<NSView> view) : view_(std::move(view)) {}

  [[nodiscard]] Strong<NSLayoutConstraint> constraintEqualToAnchor(
      const NSLayoutAnchor& other) const {
    return make<NSLayoutConstraint>(view_, Attribute, NSLayoutRelation::Equal, other.view_, 0.0);
  }

 private:
  Strong<NSView> view_;
};

// Some Objective-C++ sources include this header and the headers of the system's AppKit. Without
// `vel::`, GCC would take NSLayoutAnchor for the system's Objective-C class.
using NSLayoutXAxisAnchor = vel::NSLayoutAnchor<NSLayoutAttribute::CenterX>;
using NSLayoutYAxisAnchor = vel::NSLayoutAnchor<NSLayoutAttribute::CenterY>;

/// A view's width or height. Constants are in points.
class VEL_EXPORT NSLayoutDimension {
 public:
  NSLayoutDimension(Strong<NSView> view, NSLayoutAttribute attribute)
      : view_(std::move(view)), attribute_(attribute) {}

  [[nodiscard]] Strong<NSLayoutConstraint> constraintEqualToConstant(double constant) const {
    return make<NSLayoutConstraint>(view_, attribute_, NSLayoutRelation::Equal, nullptr, constant);
  }
  [[nodiscard]] Strong<NSLayoutConstraint> constraintGreaterThanOrEqualToConstant(
      double constant) const {
    return make<NSLayoutConstraint>(view_, attribute_, NSLayoutRelation::GreaterThanOrEqual,
                                    nullptr, constant);
  }

 private:
  Strong<NSView> view_;
  NSLayoutAttribute attribute_;
};

}  // namespace vel
