// Performs the steps of a scenario.
#include <future>
#include <utility>

#include "Host/Play/Player/Player.h"
#include "HostInterfaces/DictionaryRequest.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Foundation/Message.h"

namespace vel::host {

namespace {

// Runs `work` on `thread` and waits until `work` ends.
void runOn(StepThread thread, const std::function<void()>& work) {
  if (thread == StepThread::Main) {
    work();
  } else {
    std::async(std::launch::async, work).get();
  }
}

}  // namespace

void Player::setViewDelegate(const std::optional<ViewDelegateScript>& newScript) {
  viewDelegate_ = nullptr;
  if (newScript) {
    viewDelegate_ = make<ScriptedViewDelegate>(
        *newScript, [this](const ViewDelegateScript& script, ViewOperation operation) {
          trace::HostCall call{.operation = operation, .returnValue = std::nullopt};
          if (operation == ViewOperation::CanDisappear) {
            call.returnValue = script.canDisappear;
          }
          report(call);
          if (operation == script.deactivateDuring) {
            manager_->deactivate();
          }
        });
  }
  // After the manager has released the main content, `manager_->content()` is null, but the main
  // content can still call its delegate.
  send(mainContent_.lock(), &LaunchScreenContent::setDelegate, viewDelegate_);
}

Strong<LaunchScreenContent> Player::content(ContentName name) const {
  return name == ContentName::Main ? manager_->content() : manager_->tempContent();
}

std::optional<ContentName> Player::contentNameOf(const NSObjectProtocol* content) const {
  if (content == nullptr) {
    return std::nullopt;
  }
  return content == mainContent_.lock().get() ? ContentName::Main : ContentName::Temporary;
}

Strong<LaunchScreenViewController> Player::controller() const {
  return as<LaunchScreenViewController>(
      send(manager_->content(), &LaunchScreenContent::viewController));
}

void Player::perform(const step::Activate& action) {
  const bool result = manager_->activate(action.hasBroker ? broker_ : nullptr);
  report(trace::Activation{result});
}

void Player::perform(const step::Request& action) {
  Strong<ContentRequest> request;
  if (action.parameters) {
    request = DictionaryRequest::requestWithParameters(*action.parameters);
  }
  Strong<ContentData> data;
  runOn(action.thread, [&] { data = manager_->contentDataForContentRequest(request); });
  if (const auto temporaryContent = manager_->tempContent();
      data != nullptr && data == temporaryContent) {
    temporaryContents_.push_back(temporaryContent);
  }
  report(trace::ContentDataResult{contentNameOf(data.get())});
}

void Player::perform(const step::ContentView& action) {
  const Strong<ContentView> view = manager_->contentViewForContentData(content(action.content));
  report(trace::ContentViewResult{contentNameOf(view.get())});
}

void Player::perform(const step::Present& action) {
  const Strong<NSWindow> window = action.window ? windowNames_.window(*action.window) : nullptr;
  send(content(action.content), &LaunchScreenContent::presentForWindowWithPresentationMode, window,
       action.mode);
}

void Player::perform(const step::Dismiss& action) {
  switch (action.path) {
    case DismissalPath::Manager:
      runOn(action.thread, [this] { manager_->dismissLaunchScreen(); });
      break;
    case DismissalPath::Controller:
      send(controller(), &LaunchScreenViewController::dismissViewController, controller());
      break;
    case DismissalPath::Content:
      send(manager_->content(), &LaunchScreenContent::dismissViewController);
      break;
  }
}

void Player::perform(const step::Deactivate& /*action*/) { manager_->deactivate(); }

void Player::perform(const step::Send& action) {
  switch (action.operation) {
    case SentOperation::SendAnalyticsEvent:
      return manager_->sendAnalyticsEvent();
    case SentOperation::SubscribeAppLifecycle:
      return manager_->subscribeAppLifecycle();
    case SentOperation::StartTimer:
      return manager_->startTimer();
    case SentOperation::PauseTimer:
      return manager_->pauseTimer();
    case SentOperation::StopTimer:
      return manager_->stopTimer();
    case SentOperation::CreateActivityIndicator:
      return send(controller(), &LaunchScreenViewController::createActivityIndicator);
    case SentOperation::CreateConstraintsActivityIndicator:
      return send(controller(), &LaunchScreenViewController::createConstraintsActivityIndicator);
  }
}

void Player::perform(const step::Configure& action) {
  const auto configuration = LaunchScreenConfiguration::defaultConfiguration();
  if (action.skipMode) {
    configuration->setSkipMode(*action.skipMode);
  }
  if (const auto& event = action.nextEventName) {
    configuration->setNextEventName(*event ? NSString::stringWithUTF8String(**event) : nullptr);
  }
  if (action.expirationTimeInterval) {
    configuration->setExpirationTimeInterval(*action.expirationTimeInterval);
  }
  if (action.hasViewController.has_value()) {
    configuration->setViewController(*action.hasViewController ? LaunchScreenViewController::init()
                                                               : nullptr);
  }
}

void Player::perform(const step::ReplaceConfiguration& /*action*/) {
  LaunchScreenConfiguration::setDefaultConfiguration(LaunchScreenConfiguration::init());
}

void Player::perform(const step::ViewDelegate& action) { setViewDelegate(action.script); }

void Player::perform(const step::OpenWindow& action) {
  windows_.push_back(openWindow(action.script));
}

void Player::perform(const step::CloseWindow& action) {
  send(windowNames_.window(action.window), &NSWindow::close);
}

void Player::perform(const step::MakeKey& action) {
  send(windowNames_.window(action.window), &NSWindow::makeKeyWindow);
}

void Player::perform(const step::Miniaturize& action) {
  send(windowNames_.window(action.window), &NSWindow::miniaturize);
}

void Player::perform(const step::Deminiaturize& action) {
  send(windowNames_.window(action.window), &NSWindow::deminiaturize);
}

void Player::perform(const step::ResignKey& /*action*/) {
  platform_.windowSystem().userMovesFocusAway();
}

void Player::perform(const step::DeactivateApp& /*action*/) {
  platform_.windowSystem().userDeactivatesApplication();
}

void Player::perform(const step::ActivateApp& /*action*/) {
  platform_.windowSystem().userActivatesApplication();
}

void Player::perform(const step::StopModal& /*action*/) { NSApp->stopModal(); }

void Player::perform(const step::PresentOver& /*action*/) {
  const auto sheetController = make<HostViewController>("NSViewController");
  send(controller(), &NSViewController::presentViewControllerAsSheet, sheetController);
  controllersOverCover_.push_back(sheetController);
}

void Player::perform(const step::DismissOver& /*action*/) {
  // Dismisses the newest sheet that is still presented.
  while (!controllersOverCover_.empty()) {
    const Strong<NSViewController> sheetController = controllersOverCover_.back();
    controllersOverCover_.pop_back();
    if (sheetController->view()->window() != nullptr) {
      // Do not call `controller()->dismissViewController`: the delegates of the launch screen's
      // view controller could refuse the dismissal.
      sheetController->dismissViewController(sheetController);
      return;
    }
  }
}

void Player::perform(const step::RunLoopMode& action) { NSApp->setRunLoopMode(action.mode); }

void Player::perform(const step::Inspect& /*action*/) {
  report(trace::InspectionReport{inspect(*manager_, windowNames_)});
}

}  // namespace vel::host
