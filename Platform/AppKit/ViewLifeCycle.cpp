#include "Platform/AppKit/ViewLifeCycle.h"

#include <algorithm>

#include "Platform/AppKit/NSView.h"

namespace vel {

namespace {

void collect(const Strong<NSView>& view, bool isShown, NSArray<NSViewController>& controllers) {
  if (view == nullptr) {
    return;
  }
  if (const Strong<NSViewController> controller = view->viewController();
      controller != nullptr && controller->isShown() == isShown) {
    controllers.push_back(controller);
  }
  for (const Strong<NSView>& inner : view->subviews()) {
    collect(inner, isShown, controllers);
  }
}

NSArray<NSViewController> controllersIn(const Strong<NSView>& view, bool isShown) {
  NSArray<NSViewController> controllers;
  collect(view, isShown, controllers);
  return controllers;
}

}  // namespace

AppearanceTransition::AppearanceTransition(const Strong<NSView>& view) {
  for (const Strong<NSViewController>& controller : controllersIn(view, false)) {
    showings_.push_back({controller, controller->beginShowing()});
  }
}

void AppearanceTransition::sendWillAppear() {
  for (const Showing& showing : showings_) {
    showing.controller->sendStep(LifeCycleStep::WillAppear, showing.number);
  }
}

void AppearanceTransition::sendDidAppear() {
  for (const Showing& showing : showings_) {
    showing.controller->sendStep(LifeCycleStep::DidAppear, showing.number);
  }
}

void DisappearanceTransition::sendWillDisappear() {
  std::size_t next = 0;
  for (addNewShowings(); next < showings_.size(); addNewShowings()) {
    for (; next < showings_.size(); ++next) {
      const Showing& showing = showings_[next];
      showing.controller->sendStep(LifeCycleStep::WillDisappear, showing.number);
    }
  }
}

void DisappearanceTransition::addNewShowings() {
  for (const Strong<NSViewController>& controller : controllersIn(view_, true)) {
    if (std::ranges::find(showings_, controller, &Showing::controller) == showings_.end()) {
      showings_.push_back({controller, controller->showingNumber_});
    }
  }
}

void DisappearanceTransition::sendDidDisappear() {
  for (const Showing& showing : showings_) {
    showing.controller->sendStep(LifeCycleStep::DidDisappear, showing.number);
  }
}

}  // namespace vel
