#include "LaunchScreen/View/macOS/LaunchScreenViewControllerMac.h"

#include "LaunchScreen/Helpers/LaunchScreenConfiguration.h"
#include "LaunchScreen/Helpers/LaunchScreenConstants.h"
#include "LaunchScreen/View/macOS/EmbeddedCover.h"
#include "Platform/AppKit/NSColor.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/Shutdown.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/NSProcessInfo.h"

namespace vel {

namespace {

constexpr NSWindowStyleMask kNoSavedStyle = ~NSWindowStyleMask{0};
constexpr NSOperatingSystemVersion kFirstVersionWithDarkAppearance{10, 14, 0};

using Delegate = LaunchScreenViewControllerDelegate;

// Clears bits of the window's style mask. Does nothing if the window is null.
void clearStyle(const Strong<NSWindow>& window, NSWindowStyleMask bits) {
  send(window, &NSWindow::setStyleMask, send(window, &NSWindow::styleMask) & ~bits);
}

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

namespace {

// The controller of the tracked cover (see EmbeddedCover.h) and its delegate, the content, own each
// other until one of them is deactivated. Without this step, a cover that is shown when `shutDown`
// is called would never be destroyed.
const ShutdownStep coverShutdownStep([] {
  send(selfController, &LaunchScreenViewController::deactivate);
  release();
});

}  // namespace

}  // namespace embedded_cover

using embedded_cover::selfController;
using embedded_cover::selfView;
using embedded_cover::superView;

// Creation

Strong<LaunchScreenViewController> LaunchScreenViewController::init() {
  const double interval =
      LaunchScreenConfiguration::defaultConfiguration()->expirationTimeInterval();
  if (0.0 >= interval) {  // false for NaN, which is accepted
    return nullptr;
  }
  auto controller =
      make<LaunchScreenViewController>(NSBundle::bundleForClass<LaunchScreenViewController>());
  controller->setPresentationMode(LaunchScreenPresentationEmbedded);
  controller->setAppWindow(nullptr);
  controller->setAppWindowStyleMask(kNoSavedStyle);
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
void LaunchScreenViewController::notifyDelegates() {
  const Strong<Delegates> notifiedDelegates = delegates();
  if (notifiedDelegates == nullptr) {
    return;
  }
  for (const Strong<Delegate>& delegate : *notifiedDelegates) {
    if (respondsTo<Operation>(delegate)) {
      ((*delegate).*Operation)(self());
    }
  }
}

// View life cycle

void LaunchScreenViewController::viewDidLoad() { NSViewController::viewDidLoad(); }

void LaunchScreenViewController::viewWillAppear() {
  NSViewController::viewWillAppear();
  view()->setWantsLayer(true);
  send(view()->layer(), &CALayer::setBackgroundColor, NSColor::whiteColor()->CGColor());
  if (NSProcessInfo::isOperatingSystemAtLeastVersion(kFirstVersionWithDarkAppearance)) {
    send(activityIndicator(), &NSProgressIndicator::setAppearance,
         NSAppearance::appearanceNamed(NSAppearanceNameAqua));
  }
  notifyDelegates<&Delegate::launchScreenControllerWillPresent>();
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
  notifyDelegates<&Delegate::launchScreenControllerDidDismiss>();
}

// Presentation

void LaunchScreenViewController::presentForWindowWithPresentationMode(
    const Strong<NSWindow>& window, LaunchScreenPresentationMode mode) {
  setPresentationMode(mode);
  const Strong<NSViewController> host = send(window, &NSWindow::contentViewController);
  switch (presentationMode()) {
    case LaunchScreenPresentationSheet:
      // The controller presents itself if the window has no content view controller.
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

// `appWindow` may become null at any time, because an observer or another thread can set it. So the
// functions below call an operation only on a reference that they hold.

void LaunchScreenViewController::setupPresentation() {
  const Strong<NSWindow> window = appWindow();
  if (presentationMode() == LaunchScreenPresentationEmbedded && window != nullptr) {
    // Save the style once per controller: a later presentation restores the style that the first
    // presentation saved.
    if (appWindowStyleMask() == kNoSavedStyle) {
      setAppWindowStyleMask(window->styleMask());
    }
    clearStyle(appWindow(), NSWindowStyleMaskResizable);
    clearStyle(appWindow(), NSWindowStyleMaskMiniaturizable);
    clearStyle(appWindow(), NSWindowStyleMaskClosable);
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
  if (const Strong<NSWindow> window = appWindow()) {
    if (appWindowStyleMask() != kNoSavedStyle) {
      window->setStyleMask(appWindowStyleMask());
    }
    setAppWindow(nullptr);
  } else if (const Strong<NSWindow> trackedWindow =
                 send(selfController, &LaunchScreenViewController::appWindow)) {
    // Restore the style of the tracked cover's window even if that cover has saved no style. The
    // window's style then becomes `kNoSavedStyle`.
    trackedWindow->setStyleMask(selfController->appWindowStyleMask());
    send(selfController, &LaunchScreenViewController::setAppWindow, nullptr);
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
    // `send` keeps the controller alive: a delegate may replace the tracked cover.
    send(selfController, &NSViewController::viewDidDisappear);
    // The work removes the cover that is tracked when the work runs. A later cover may have
    // replaced the dismissed cover by then.
    dispatch_after(dispatch_time(kDispatchTimeNow, kNanosecondsPerSecond),
                   dispatch_get_main_queue(), embedded_cover::kRemovalLabel, [] {
                     send(selfView, &NSView::removeFromSuperview);
                     send(selfController, &NSViewController::removeFromParentViewController);
                     embedded_cover::release();
                   });
    return;
  }
  // Check for a parent before the view is removed. Afterwards the view has no window.
  const bool hasParent = send(view()->window(), &NSWindow::contentViewController) != nullptr;
  view()->removeFromSuperview();
  if (hasParent) {
    removeFromParentViewController();
  } else {
    notifyDelegates<&Delegate::launchScreenControllerDidDismiss>();
  }
}

void LaunchScreenViewController::dismissViewController(const Strong<NSViewController>& controller) {
  bool canDismiss = true;
  if (const Strong<Delegates> askedDelegates = delegates()) {
    for (const Strong<Delegate>& delegate : *askedDelegates) {
      if (respondsTo<&Delegate::canLaunchScreenControllerDismiss>(delegate) &&
          !delegate->canLaunchScreenControllerDismiss(self())) {
        canDismiss = false;  // the loop still asks the remaining delegates
      }
    }
  }
  if (!canDismiss) {
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

// Activity indicator

void LaunchScreenViewController::createActivityIndicator() {
  setActivityIndicator(NSProgressIndicator::initWithFrame(CGRectZero));
  send(activityIndicator(), &NSProgressIndicator::setStyle, NSProgressIndicatorStyleSpinning);
  if (NSProcessInfo::isOperatingSystemAtLeastVersion(kFirstVersionWithDarkAppearance)) {
    send(activityIndicator(), &NSProgressIndicator::setAppearance,
         NSAppearance::appearanceNamed(NSAppearanceNameAqua));
  }
  send(activityIndicator(), &NSView::setTranslatesAutoresizingMaskIntoConstraints, false);
  // The view is not a subview of itself, so this call adds the indicator above all subviews.
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
