#include "Host/Play/Player/Player.h"

#include <algorithm>
#include <utility>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/NSLog.h"

namespace vel::host {

Player::Player(const Scenario& scenario, PlayListener& listener)
    : scenario_(scenario), listener_(listener), platform_(scenario.host.osVersion) {
  for (const WindowScript& script : scenario.host.windows) {
    windows_.push_back(openWindow(script));
  }
  if (!windows_.empty()) {
    windows_.front()->makeKeyWindow();
  }
  manager_ = LaunchScreenManager::init();
  mainContent_ = manager_->content();
  broker_ = make<HostBroker>([this](const Strong<ContentResolver>& resolver) {
    trace::Registration registration;
    for (const Strong<NSString>& engine : resolver->supportedEngines()) {
      registration.engines.emplace_back(engine->UTF8String());
    }
    report(std::move(registration));
  });
  const auto reportStateChange = [this](const Strong<ContentData>& data) {
    // `contentNameOf` returns `std::nullopt` only for null, and `data` is never null.
    report(trace::StateChange{.state = data->state(),
                              .content = contentNameOf(data.get()).value_or(ContentName::Main)});
  };
  switch (scenario.host.resolverDelegate) {
    case ResolverDelegateKind::None:
      break;
    case ResolverDelegateKind::Conforming:
      resolverDelegate_ = make<ConformingResolverDelegate>(reportStateChange);
      break;
    case ResolverDelegateKind::Undeclared:
      resolverDelegate_ = make<UndeclaredResolverDelegate>(reportStateChange);
      break;
  }
  manager_->setDelegate(resolverDelegate_);
  setViewDelegate(scenario.host.viewDelegate);

  setPlatformObserver(this);
  setNSLogSink([this](std::string_view text) { report(trace::LogLine{std::string(text)}); });
  MetricsCenter::setSink(
      [this](std::string_view event) { report(trace::RecordedEvent{std::string(event)}); });
}

Player::~Player() {
  setPlatformObserver(nullptr);
  setNSLogSink(nullptr);
  MetricsCenter::setSink(nullptr);
  // The calls below can call the view delegate, which would report trace lines.
  viewDelegate_ = nullptr;
  // A LaunchScreenContent and its view controller own each other until one of them is deactivated.
  for (const Weak<LaunchScreenContent>& content : temporaryContents_) {
    send(content.lock(), &LaunchScreenContent::deactivate);
  }
  send(mainContent_.lock(), &LaunchScreenContent::deactivate);
  send(LaunchScreenConfiguration::defaultConfiguration()->viewController(),
       &LaunchScreenViewControllerProtocol::deactivate);
  for (const Strong<NSWindow>& window : windows_) {
    // Removes the window's cover (a LaunchScreenViewController). The cover would keep the window
    // alive.
    window->setContentViewController(nullptr);
  }
}

PlayOutcome Player::play() {
  try {
    reportState();
    for (const Step& step : scenario_.steps) {
      play(step);
    }
    runUntil(scenario_.end);
    report(trace::InspectionReport{inspect(*manager_, windowNames_)});
    return PlayOutcome::PlayedToEnd;
  } catch (const NSCollectionMutatedError& error) {
    report(trace::FatalError{error.what()});
    return PlayOutcome::CollectionMutated;
  }
}

void Player::play(const Step& step) {
  runUntil(step.time);
  report(trace::StepStart{step.name});
  std::visit([this](const auto& action) { perform(action); }, step.action);
  reportState();
}

void Player::runUntil(Nanoseconds time) {
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  do {
    loop.runUntilDate(std::clamp(loop.nextDeadline(), loop.now(), time));
    reportState();
  } while (loop.now() < time);
}

void Player::reportState() {
  listener_.stateReached(
      {.time = NSRunLoop::mainRunLoop().now(),
       .timeLeft = manager_->launchScreenExpirationTimeLeft(),
       .isCountingDown = send(manager_->launchScreenExpirationTimer(), &NSTimer::isValid),
       .isCovered = isCovered(),
       .keyWindow = windowNames_.nameOf(NSApp->keyWindow())});
}

void Player::report(TraceEvent event) {
  listener_.traceLineAdded({.time = NSRunLoop::mainRunLoop().now(), .event = std::move(event)});
}

bool Player::isCovered() {
  std::erase_if(covers_, [](const Weak<LaunchScreenViewController>& cover) {
    return !send(cover.lock(), &NSViewController::isShown);
  });
  return !covers_.empty();
}

Strong<NSWindow> Player::openWindow(const WindowScript& script) {
  Strong<NSWindow> window =
      NSWindow::initAs<HostWindow>(script.className, script.frame, script.styleMask);
  windowNames_.add(window, script.name);
  if (script.contentViewController) {
    window->setContentViewController(make<HostViewController>(*script.contentViewController));
  }
  if (script.parent) {
    send(windowNames_.window(*script.parent), &NSWindow::addChildWindow, window);
  }
  window->orderFront();
  return window;
}

// PlatformObserver

void Player::timerFired(NSTimer& /*timer*/, const Strong<NSObject>& target) {
  if (target == manager_) {
    report(trace::Tick{manager_->launchScreenExpirationTimeLeft()});
  }
}

void Player::lifeCycleMethodCalled(NSViewController& controller, LifeCycleMethod method) {
  if (const auto cover = as<LaunchScreenViewController>(controller.self())) {
    if (method == LifeCycleMethod::WillAppear) {
      covers_.push_back(cover);
    }
    report(trace::LifeCycleCall{method});
  }
}

void Player::styleMaskWasSet(NSWindow& window, std::uint64_t styleMask) {
  report(trace::StyleMaskAssignment{.styleMask = styleMask, .window = windowNames_.nameOf(window)});
}

void Player::keyStatusChanged(NSWindow& window, KeyStatusChange change) {
  report(trace::KeyWindowChange{.change = change, .window = windowNames_.nameOf(window)});
}

void Player::windowOpened(NSWindow& window) {
  if (window.kind() != WindowKind::Plain) {
    report(
        trace::PresentationWindowChange{.window = windowNames_.nameOf(window),
                                        .change = trace::PresentationWindowChange::Change::Opened});
  }
}

void Player::windowClosed(NSWindow& window) {
  if (window.kind() != WindowKind::Plain) {
    report(
        trace::PresentationWindowChange{.window = windowNames_.nameOf(window),
                                        .change = trace::PresentationWindowChange::Change::Closed});
  }
}

}  // namespace vel::host
