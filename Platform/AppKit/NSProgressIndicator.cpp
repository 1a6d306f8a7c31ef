#include "Platform/AppKit/NSProgressIndicator.h"

namespace vel {

void NSProgressIndicator::setStyle(NSProgressIndicatorStyle style) {
  style_ = style;
  setNeedsDisplay();
}

void NSProgressIndicator::startAnimation(const Strong<NSObject>& /*sender*/) { setAnimating(true); }

void NSProgressIndicator::stopAnimation(const Strong<NSObject>& /*sender*/) { setAnimating(false); }

void NSProgressIndicator::setAnimating(bool isAnimating) {
  isAnimating_ = isAnimating;
  setNeedsDisplay();
}

void NSProgressIndicator::addOwnContents(Scene& scene, CGRect rectangle) const {
  if (style_ == NSProgressIndicatorStyleSpinning && rectangle.size.width > 0 &&
      rectangle.size.height > 0) {
    scene.push_back({.kind = SceneItem::Kind::Spinner,
                     .frame = rectangle,
                     .color = {},
                     .isAnimated = isAnimating_});
  }
}

}  // namespace vel
