#include "Platform/AppKit/NSViewController.h"

#include <algorithm>
#include <utility>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/Message.h"

namespace vel {

namespace {

constexpr CGSize kDefaultPresentationSize{480, 270};

CGSize presentationSize(NSViewController& controller) {
  const CGSize size = controller.view()->frame().size;
  return size.width > 0 && size.height > 0 ? size : kDefaultPresentationSize;
}

}  // namespace

NSViewController::~NSViewController() = default;

Strong<NSViewController> NSViewController::initWithNibNameBundle(std::string_view /*nibName*/,
                                                                 Strong<NSBundle> bundle) {
  return make<NSViewController>(std::move(bundle));
}

Strong<NSView> NSViewController::view() {
  if (view_ == nullptr) {
    loadView();
    viewDidLoad();
  }
  return view_;
}

void NSViewController::setView(Strong<NSView> view) {
  if (view_ != nullptr) {
    view_->viewController_.reset();
  }
  view_ = std::move(view);
  if (view_ != nullptr) {
    view_->viewController_ = self();
  }
}

void NSViewController::loadView() { setView(NSView::initWithFrame(CGRectZero)); }

void NSViewController::viewWillAppear() { recordCall(LifeCycleMethod::WillAppear); }
void NSViewController::viewDidAppear() { recordCall(LifeCycleMethod::DidAppear); }
void NSViewController::viewWillDisappear() { recordCall(LifeCycleMethod::WillDisappear); }
void NSViewController::viewDidDisappear() { recordCall(LifeCycleMethod::DidDisappear); }

void NSViewController::recordCall(LifeCycleMethod method) {
  calledMethods_.set(static_cast<std::size_t>(method));
  notifyPlatformObserver(
      [&](PlatformObserver& observer) { observer.lifeCycleMethodCalled(*this, method); });
}

std::uint64_t NSViewController::beginAppearance() {
  isShown_ = true;
  calledMethods_.reset();
  return ++currentAppearanceId_;
}

void NSViewController::callMethodOncePerAppearance(LifeCycleMethod method,
                                                   std::uint64_t appearanceId) {
  if (!isShown_ || appearanceId != currentAppearanceId_) {
    return;
  }
  // Set before the call, because `viewDidDisappear` may show the controller again.
  isShown_ = method != LifeCycleMethod::DidDisappear;
  if (calledMethods_.test(static_cast<std::size_t>(method))) {
    return;
  }
  switch (method) {
    case LifeCycleMethod::WillAppear:
      return viewWillAppear();
    case LifeCycleMethod::DidAppear:
      return viewDidAppear();
    case LifeCycleMethod::WillDisappear:
      return viewWillDisappear();
    case LifeCycleMethod::DidDisappear:
      return viewDidDisappear();
  }
}

void NSViewController::addChildViewController(const Strong<NSViewController>& child) {
  if (child == nullptr || child.get() == this || child->parentViewController().get() == this) {
    return;
  }
  child->removeFromParentViewController();
  children_.push_back(child);
  child->parent_ = self();
}

void NSViewController::removeFromParentViewController() {
  const Strong<NSViewController> strongSelf = self();
  if (const Strong<NSViewController> parent = parent_.lock()) {
    parent_.reset();
    std::erase(parent->children_, strongSelf);
  }
}

void NSViewController::presentViewControllerAsModalWindow(
    const Strong<NSViewController>& controller) {
  if (controller == nullptr || !controller->presentationWindow_.expired()) {
    return;
  }
  Strong<NSWindow> owner = isViewLoaded() ? view_->window() : nullptr;
  if (owner == nullptr || !owner->isVisible()) {
    owner = send(NSApp, &NSApplication::dialogOwner);
  }
  const auto window = NSWindow::makePresentationWindow(
      WindowKind::Modal, presentationSize(*controller), owner,
      NSWindowStyleMaskTitled | NSWindowStyleMaskClosable | NSWindowStyleMaskResizable);
  presentIn(window, controller);
  send(NSApp, &NSApplication::beginModalSession, window);
  window->makeKeyAndOrderFront();
}

void NSViewController::presentViewControllerAsSheet(const Strong<NSViewController>& controller) {
  const Strong<NSWindow> owner = view()->window();
  if (controller == nullptr || !controller->presentationWindow_.expired() || owner == nullptr ||
      !owner->isVisible()) {
    return;
  }
  const auto window =
      NSWindow::makePresentationWindow(WindowKind::Sheet, presentationSize(*controller), owner,
                                       NSWindowStyleMaskTitled | NSWindowStyleMaskDocModalWindow);
  presentIn(window, controller);
  window->makeKeyAndOrderFront();
}

void NSViewController::presentIn(const Strong<NSWindow>& window,
                                 const Strong<NSViewController>& presentedController) {
  window->setContentViewController(presentedController);
  presentedController->presentationWindow_ = window;
  presentedController->presentingController_ = self();
  if (presentedController.get() != this) {
    presentedControllers_.push_back(presentedController);
  }
}

void NSViewController::endPresentation() {
  presentationWindow_.reset();
  if (const Strong<NSViewController> presentingController = presentingController_.lock()) {
    presentingController_.reset();
    std::erase(presentingController->presentedControllers_, self());
  }
}

void NSViewController::dismissViewController(const Strong<NSViewController>& controller) {
  if (controller == nullptr) {
    return;
  }
  if (const Strong<NSWindow> window = controller->presentationWindow_.lock()) {
    window->close();
  }
}

}  // namespace vel
