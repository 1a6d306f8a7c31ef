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
    showings_.push_back({controller, controller->beginShowing()});
  }
}

void AppearanceTransition::sendWillAppear() {
  for (const Showing& showing : showings_) {
    showing.controller->callMethodOnce(LifeCycleMethod::WillAppear, showing.id);
  }
}

void AppearanceTransition::sendDidAppear() {
  for (const Showing& showing : showings_) {
    showing.controller->callMethodOnce(LifeCycleMethod::DidAppear, showing.id);
  }
}

void DisappearanceTransition::sendWillDisappear() {
  std::size_t next = 0;
  for (addNewShowings(); next < showings_.size(); addNewShowings()) {
    for (; next < showings_.size(); ++next) {
      const Showing& showing = showings_[next];
      showing.controller->callMethodOnce(LifeCycleMethod::WillDisappear, showing.id);
    }
  }
}

void DisappearanceTransition::addNewShowings() {
  for (const Strong<NSViewController>& controller : controllersIn(view_, Visibility::Shown)) {
    if (std::ranges::find(showings_, controller, &Showing::controller) == showings_.end()) {
      showings_.push_back({controller, controller->currentShowingId_});
    }
  }
}

void DisappearanceTransition::sendDidDisappear() {
  for (const Showing& showing : showings_) {
    showing.controller->callMethodOnce(LifeCycleMethod::DidDisappear, showing.id);
  }
}

}  // namespace vel
