#include "LaunchScreen/View/macOS/LaunchScreenViewControllerMac.h"

#include "LaunchScreen/Helpers/LaunchScreenConfiguration.h"
#include "LaunchScreen/Helpers/LaunchScreenConstants.h"
#include "LaunchScreen/View/macOS/EmbeddedCover.h"
#include "Platform/AppKit/NSColor.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/NSProcessInfo.h"

namespace vel {

namespace {

constexpr NSWindowStyleMask kNothingSaved = ~NSWindowStyleMask{0};
constexpr NSOperatingSystemVersion kFirstVersionWithDarkAppearance{10, 14, 0};

using Delegate = LaunchScreenViewControllerDelegate;

}  // namespace

namespace embedded_cover {

Strong<NSView> superView;
Strong<NSView> selfView;
Strong<LaunchScreenViewController> selfController;

void release() {
  selfView = nullptr;
  superView = nullptr;
  selfController = nullptr;
}

}  // namespace embedded_cover

using embedded_cover::selfController;
using embedded_cover::selfView;
using embedded_cover::superView;

// Creation

Strong<LaunchScreenViewController> LaunchScreenViewController::init() {
  const double interval =
      LaunchScreenConfiguration::defaultConfiguration()->expirationTimeInterval();
  if (0.0 >= interval) {  // written so that what is not a number passes
    return nullptr;
  }
  auto controller =
      make<LaunchScreenViewController>(NSBundle::bundleForClass<LaunchScreenViewController>());
  controller->setPresentationMode(LaunchScreenPresentationEmbedded);
  controller->setAppWindow(nullptr);
  controller->setAppWindowStyleMask(kNothingSaved);
  return controller;
}

LaunchScreenViewController::~LaunchScreenViewController() { deactivate(); }

// Delegates

void LaunchScreenViewController::addDelegate(const Strong<Delegate>& delegate) {
  if (delegates() == nullptr) {
    setDelegates(Delegates::array());
  }
  if (delegate != nullptr && !delegates()->containsObject(delegate.get())) {
    delegates()->addObject(delegate);
  }
}

void LaunchScreenViewController::removeDelegate(const Strong<Delegate>& delegate) {
  if (const auto index = send(delegates(), &Delegates::indexOfObject, delegate.get())) {
    delegates()->removeObjectAtIndex(*index);
  }
}

void LaunchScreenViewController::deactivate() { send(delegates(), &Delegates::removeAllObjects); }

template <auto Operation>
void LaunchScreenViewController::tellDelegates() {
  const Strong<Delegates> told = delegates();
  if (told == nullptr) {
    return;
  }
  for (const Strong<Delegate>& delegate : *told) {
    if (respondsTo<Operation>(delegate)) {
      ((*delegate).*Operation)(self());
    }
  }
}

// Life on screen

void LaunchScreenViewController::viewDidLoad() { NSViewController::viewDidLoad(); }

void LaunchScreenViewController::viewWillAppear() {
  NSViewController::viewWillAppear();
  view()->setWantsLayer(true);
  send(view()->layer(), &CALayer::setBackgroundColor, NSColor::whiteColor()->CGColor());
  if (NSProcessInfo::isOperatingSystemAtLeastVersion(kFirstVersionWithDarkAppearance)) {
    send(activityIndicator(), &NSProgressIndicator::setAppearance,
         NSAppearance::appearanceNamed(NSAppearanceNameAqua));
  }
  tellDelegates<&Delegate::launchScreenControllerWillPresent>();
  if (presentationMode() == LaunchScreenPresentationModalWindow) {
    setupPresentation();
  }
}

void LaunchScreenViewController::viewDidAppear() {
  NSViewController::viewDidAppear();
  send(activityIndicator(), &NSProgressIndicator::startAnimation, nullptr);
  if (presentationMode() == LaunchScreenPresentationEmbedded) {
    setupPresentation();
  }
}

void LaunchScreenViewController::viewWillDisappear() {
  NSViewController::viewWillDisappear();
  restorePresentation();
}

void LaunchScreenViewController::viewDidDisappear() {
  NSViewController::viewDidDisappear();
  tellDelegates<&Delegate::launchScreenControllerDidDismiss>();
}

// Presentation

void LaunchScreenViewController::presentForWindowWithPresentationMode(
    const Strong<NSWindow>& window, LaunchScreenPresentationMode mode) {
  setPresentationMode(mode);
  const Strong<NSViewController> host = send(window, &NSWindow::contentViewController);
  switch (presentationMode()) {
    case LaunchScreenPresentationSheet:
      // A window without a content view controller leaves nobody else to ask.
      (host ? host : self())->presentViewControllerAsSheet(self());
      break;
    case LaunchScreenPresentationModalWindow:
      (host ? host : self())->presentViewControllerAsModalWindow(self());
      break;
    case LaunchScreenPresentationEmbedded:
      setAppWindow(window);
      view()->setFrame(CGRectMake(0, 0, send(window, &NSWindow::frame).size.width,
                                  send(window, &NSWindow::frame).size.height));
      if (host != nullptr) {
        host->addChildViewController(self());
        send(host->view(), &NSView::addSubview, view());
      } else {
        superView = send(window, &NSWindow::contentView);
        selfView = view();
        selfController = self();
        send(send(window, &NSWindow::contentView), &NSView::addSubview, view());
      }
      send(view()->superview(), &NSView::setWantsLayer, true);
      view()->setAutoresizingMask(NSViewWidthSizable | NSViewHeightSizable);
      view()->setFrame(send(view()->superview(), &NSView::frame));
      break;
    default:
      break;
  }
}

void LaunchScreenViewController::setupPresentation() {
  if (presentationMode() == LaunchScreenPresentationEmbedded && appWindow() != nullptr) {
    // Saved once per controller: a later presentation gives back what the first one found.
    if (appWindowStyleMask() == kNothingSaved) {
      setAppWindowStyleMask(appWindow()->styleMask());
    }
    appWindow()->setStyleMask(appWindow()->styleMask() & ~NSWindowStyleMaskResizable);
    appWindow()->setStyleMask(appWindow()->styleMask() & ~NSWindowStyleMaskMiniaturizable);
    appWindow()->setStyleMask(appWindow()->styleMask() & ~NSWindowStyleMaskClosable);
  } else if (presentationMode() == LaunchScreenPresentationModalWindow) {
    send(view()->window(), &NSWindow::setMovableByWindowBackground, true);
    send(view()->window(), &NSWindow::setStyleMask, NSWindowStyleMaskBorderless);
    send(view()->window(), &NSWindow::setCanHide, false);
  }
}

void LaunchScreenViewController::restorePresentation() {
  if (presentationMode() != LaunchScreenPresentationEmbedded) {
    return;
  }
  if (appWindow() != nullptr) {
    if (appWindowStyleMask() != kNothingSaved) {
      appWindow()->setStyleMask(appWindowStyleMask());
    }
    setAppWindow(nullptr);
  } else if (send(selfController, &LaunchScreenViewController::appWindow) != nullptr) {
    // The tracked cover's window, and its saved style as it stands, saved or not.
    selfController->appWindow()->setStyleMask(selfController->appWindowStyleMask());
    selfController->setAppWindow(nullptr);
  }
}

void LaunchScreenViewController::dismiss() {
  if (static_cast<std::uint32_t>(presentationMode()) - 1 < 2) {  // modal window or sheet
    send(view()->window(), &NSWindow::close);
    return;
  }
  if (presentationMode() != LaunchScreenPresentationEmbedded) {
    return;
  }
  if (superView != nullptr && selfView != nullptr && selfController != nullptr) {
    // Kept alive meanwhile: a delegate may put another cover in its place.
    send(selfController, &NSViewController::viewDidDisappear);
    // It works on what is tracked by then, whoever put it there.
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, NSEC_PER_SEC), dispatch_get_main_queue(), [] {
      send(selfView, &NSView::removeFromSuperview);
      send(selfController, &NSViewController::removeFromParentViewController);
      embedded_cover::release();
    });
    return;
  }
  // Asked before the view is removed: afterwards it has no window.
  const bool hasParent = send(view()->window(), &NSWindow::contentViewController) != nullptr;
  view()->removeFromSuperview();
  if (hasParent) {
    removeFromParentViewController();
  } else {
    tellDelegates<&Delegate::launchScreenControllerDidDismiss>();
  }
}

void LaunchScreenViewController::dismissViewController(const Strong<NSViewController>& controller) {
  bool agreed = true;
  if (const Strong<Delegates> asked = delegates()) {
    for (const Strong<Delegate>& delegate : *asked) {
      if (respondsTo<&Delegate::canLaunchScreenControllerDismiss>(delegate) &&
          !delegate->canLaunchScreenControllerDismiss(self())) {
        agreed = false;  // and the others are asked all the same
      }
    }
  }
  if (!agreed) {
    return;
  }
  const LaunchScreenPresentationMode mode = presentationMode();
  restorePresentation();
  if (mode != LaunchScreenPresentationEmbedded) {
    NSViewController::dismissViewController(controller);
  } else {
    dismiss();
  }
}

// The indicator

void LaunchScreenViewController::createActivityIndicator() {
  setActivityIndicator(NSProgressIndicator::initWithFrame(CGRectZero));
  send(activityIndicator(), &NSProgressIndicator::setStyle, NSProgressIndicatorStyleSpinning);
  if (NSProcessInfo::isOperatingSystemAtLeastVersion(kFirstVersionWithDarkAppearance)) {
    send(activityIndicator(), &NSProgressIndicator::setAppearance,
         NSAppearance::appearanceNamed(NSAppearanceNameAqua));
  }
  send(activityIndicator(), &NSView::setTranslatesAutoresizingMaskIntoConstraints, false);
  // Relative to the view itself, which is no sibling: above all that is there.
  view()->addSubviewPositionedRelativeTo(activityIndicator(), NSWindowAbove, view());
}

void LaunchScreenViewController::createConstraintsActivityIndicator() {
  const Strong<NSProgressIndicator> indicator = activityIndicator();
  if (indicator == nullptr) {
    return;
  }
  NSLayoutConstraint::activateConstraints({
      indicator->centerXAnchor().constraintEqualToAnchor(view()->centerXAnchor()),
      indicator->centerYAnchor().constraintEqualToAnchor(view()->centerYAnchor()),
      indicator->widthAnchor().constraintGreaterThanOrEqualToConstant(activityIndicatorSide),
      indicator->heightAnchor().constraintEqualToConstant(activityIndicatorSide),
  });
}

}  // namespace vel
