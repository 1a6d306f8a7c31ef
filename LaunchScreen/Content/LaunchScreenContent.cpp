#include "LaunchScreen/Content/LaunchScreenContent.h"

#include "LaunchScreen/Helpers/LaunchScreenConfiguration.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/NSLog.h"
#include "Platform/Foundation/NSThread.h"
#include "Platform/Foundation/ReleasePool.h"

namespace vel {

namespace {

constexpr std::int64_t kErrorCode = 404;

// The message is the error's domain. Only the release pool owns the error. A caller that needs the
// error after the pool is drained must keep a strong reference.
Strong<NSError> errorWithMessage(std::string_view message) {
  return releaseLater(NSError::errorWithDomainCodeUserInfo(message, kErrorCode, nullptr));
}

// The host numbers the modes differently: its mode 2 is a modal window, and its mode 1 is a sheet.
LaunchScreenPresentationMode translatedMode(std::int32_t hostMode) {
  switch (hostMode) {
    case 2:
      return LaunchScreenPresentationModalWindow;
    case 0:
      return LaunchScreenPresentationEmbedded;
    default:
      return LaunchScreenPresentationSheet;
  }
}

}  // namespace

Strong<LaunchScreenContent> LaunchScreenContent::init() { return make<LaunchScreenContent>(); }

void LaunchScreenContent::setContentRequest(Strong<ContentRequest> request) {
  contentRequest_ = std::move(request);
  configureViewController();
}

void LaunchScreenContent::configureViewController() {
  setInternalViewController(nullptr);
  setInternalError(nullptr);
  if (send(contentRequest(), &ContentRequest::parameters) == nullptr) {
    setInternalError(errorWithMessage("ContentRequest parameters is NIL"));
    setState(ContentDataStateFailed);
    return;
  }
  const Strong<LaunchScreenViewControllerProtocol> configuredController =
      LaunchScreenConfiguration::defaultConfiguration()->viewController();
  if (configuredController != nullptr) {
    // A host that supplies its own controller also adds the delegates and sets the content's state.
    setInternalViewController(configuredController);
    return;
  }
  if (NSThread::isMainThread()) {
    buildViewController();
  } else {
    dispatch_async(dispatch_get_main_queue(), "build the view controller",
                   [content = self()] { content->buildViewController(); });
  }
}

void LaunchScreenContent::buildViewController() {
  if (const Strong<LaunchScreenViewController> controller = LaunchScreenViewController::init()) {
    setInternalViewController(controller);
  }
  if (internalViewController() != nullptr) {
    internalViewController()->addDelegate(self());
  } else {
    setInternalError(errorWithMessage("LaunchScreen view controller is NIL"));
  }
  setState(internalViewController() != nullptr ? ContentDataStateLoaded : ContentDataStateFailed);
}

void LaunchScreenContent::setState(ContentDataState state) {
  state_ = state;
  if (respondsTo<&LaunchScreenContentDelegate::contentDataDidChangeState>(contentDelegate())) {
    send(contentDelegate(), &LaunchScreenContentDelegate::contentDataDidChangeState, self());
  }
}

Strong<NSViewController> LaunchScreenContent::viewController() const {
  return as<NSViewController>(internalViewController());
}

void LaunchScreenContent::presentForWindowWithPresentationMode(const Strong<NSWindow>& window,
                                                               std::int32_t mode) {
  NSLog("%@ (%s) mode: %u", className(),
        "-[LaunchScreenContent presentForWindow:withPresentationMode:]",
        static_cast<std::uint32_t>(mode));
  send(as<LaunchScreenPresenter>(internalViewController()),
       &LaunchScreenPresenter::presentForWindowWithPresentationMode, window, translatedMode(mode));
}

void LaunchScreenContent::dismissViewController() {
  send(as<LaunchScreenPresenter>(internalViewController()), &LaunchScreenPresenter::dismiss);
}

void LaunchScreenContent::deactivate() {
  send(internalViewController(), &LaunchScreenViewControllerProtocol::deactivate);
  internalViewController_ = nullptr;
  internalError_.reset();
}

void LaunchScreenContent::launchScreenControllerWillPresent(
    const Strong<LaunchScreenViewController>& /*controller*/) {
  if (respondsTo<&ContentViewDelegate::contentViewWillAppear>(delegate())) {
    send(delegate(), &ContentViewDelegate::contentViewWillAppear, self());
  }
}

bool LaunchScreenContent::canLaunchScreenControllerDismiss(
    const Strong<LaunchScreenViewController>& /*controller*/) {
  if (!respondsTo<&ContentViewDelegate::canContentViewDisappear>(delegate())) {
    return true;
  }
  return send(delegate(), &ContentViewDelegate::canContentViewDisappear, self());
}

void LaunchScreenContent::launchScreenControllerDidDismiss(
    const Strong<LaunchScreenViewController>& controller) {
  if (!send(controller, &NSViewController::presentedViewControllers).empty()) {
    return;  // the controller still presents another controller
  }
  if (respondsTo<&ContentViewDelegate::contentViewDidDisappear>(delegate())) {
    send(delegate(), &ContentViewDelegate::contentViewDidDisappear, self());
  }
}

}  // namespace vel
