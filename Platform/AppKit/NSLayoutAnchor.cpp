#include "Platform/AppKit/NSLayoutAnchor.h"

#include "Platform/AppKit/NSView.h"

namespace vel {

void NSLayoutConstraint::activateConstraints(const NSArray<NSLayoutConstraint>& constraints) {
  NSArray<NSView> containers;
  for (const Strong<NSLayoutConstraint>& constraint : constraints) {
    const Strong<NSView> view = constraint->firstItem();
    const Strong<NSView> container = view ? view->superview() : nullptr;
    if (container != nullptr) {
      container->constraints_.push_back(constraint);
      containers.push_back(container);
    }
  }
  for (const Strong<NSView>& container : containers) {
    container->layOutSubviews();
  }
}

}  // namespace vel
