#include "Platform/AppKit/ViewLifeCycle.h"

#include <algorithm>

#include "Platform/AppKit/NSView.h"

namespace vel {

namespace {

enum class Visibility : std::uint8_t { Hidden, Shown };

void collectControllers(const Strong<NSView>& view, Visibility visibility,
                        NSArray<NSViewController>& controllers) {
  if (view == nullptr) {
    return;
  }
  if (const Strong<NSViewController> controller = view->viewController();
      controller != nullptr && controller->isShown() == (visibility == Visibility::Shown)) {
    controllers.push_back(controller);
  }
  for (const Strong<NSView>& subview : view->subviews()) {
    collectControllers(subview, visibility, controllers);
  }
}

NSArray<NSViewController> controllersIn(const Strong<NSView>& view, Visibility visibility) {
  NSArray<NSViewController> controllers;
  collectControllers(view, visibility, controllers);
  return controllers;
}

}  // namespace

AppearanceTransition::AppearanceTransition(const Strong<NSView>& view) {
  for (const Strong<NSViewController>& controller : controllersIn(view, Visibility::Hidden)) {
    appearances_.push_back({controller, controller->beginAppearance()});
  }
}

void AppearanceTransition::sendWillAppear() {
  for (const Appearance& appearance : appearances_) {
    appearance.controller->callMethodOncePerAppearance(LifeCycleMethod::WillAppear, appearance.id);
  }
}

void AppearanceTransition::sendDidAppear() {
  for (const Appearance& appearance : appearances_) {
    appearance.controller->callMethodOncePerAppearance(LifeCycleMethod::DidAppear, appearance.id);
  }
}

void DisappearanceTransition::sendWillDisappear() {
  std::size_t next = 0;
  // `viewWillDisappear` may show more controllers in `view_`. Those controllers must also
  // disappear.
  for (addShownControllers(); next < appearances_.size(); addShownControllers()) {
    for (; next < appearances_.size(); ++next) {
      const Appearance& appearance = appearances_[next];
      appearance.controller->callMethodOncePerAppearance(LifeCycleMethod::WillDisappear,
                                                         appearance.id);
    }
  }
}

void DisappearanceTransition::addShownControllers() {
  for (const Strong<NSViewController>& controller : controllersIn(view_, Visibility::Shown)) {
    if (std::ranges::find(appearances_, controller, &Appearance::controller) ==
        appearances_.end()) {
      appearances_.push_back({controller, controller->currentAppearanceId_});
    }
  }
}

void DisappearanceTransition::sendDidDisappear() {
  for (const Appearance& appearance : appearances_) {
    appearance.controller->callMethodOncePerAppearance(LifeCycleMethod::DidDisappear,
                                                       appearance.id);
  }
}

}  // namespace vel
