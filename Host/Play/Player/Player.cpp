#include "Host/Play/Player/Player.h"

#include <algorithm>
#include <utility>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/NSLog.h"

namespace vel::host {

Player::Player(const Scenario& scenario, PlayListener& listener)
    : scenario_(scenario), listener_(listener), stage_(scenario.host.osVersion) {
  for (const WindowScript& script : scenario.host.windows) {
    windows_.push_back(open(script));
  }
  if (!windows_.empty()) {
    windows_.front()->makeKeyWindow();
  }
  manager_ = LaunchScreenManager::init();
  mainContent_ = manager_->content();
  broker_ = make<HostBroker>([this](const Strong<ContentResolver>& resolver) {
    trace::Registered registered;
    for (const Strong<NSString>& engine : resolver->supportedEngines()) {
      registered.engines.emplace_back(engine->UTF8String());
    }
    tell(std::move(registered));
  });
  const auto stateChanged = [this](const Strong<ContentData>& data) {
    tell(trace::StateChanged{.state = data->state(),
                             .content = contentNameOf(data.get()).value_or(ContentName::Main)});
  };
  switch (scenario.host.resolverDelegate) {
    case ResolverDelegateKind::None:
      break;
    case ResolverDelegateKind::Conforming:
      resolverDelegate_ = make<ConformingResolverDelegate>(stateChanged);
      break;
    case ResolverDelegateKind::Undeclared:
      resolverDelegate_ = make<UndeclaredResolverDelegate>(stateChanged);
      break;
  }
  manager_->setDelegate(resolverDelegate_);
  setViewDelegate(scenario.host.viewDelegate);

  setPlatformObserver(this);
  setNSLogSink([this](std::string_view text) { tell(trace::Logged{std::string(text)}); });
  MetricsCenter::setSink(
      [this](std::string_view event) { tell(trace::EventRecorded{std::string(event)}); });
}

Player::~Player() {
  setPlatformObserver(nullptr);
  setNSLogSink(nullptr);
  MetricsCenter::setSink(nullptr);
  // From here on the library calls nobody, and what holds itself in a circle lets go.
  viewDelegate_ = nullptr;
  temporaryContents_.push_back(mainContent_);
  for (const Weak<LaunchScreenContent>& content : temporaryContents_) {
    send(content.lock(), &LaunchScreenContent::deactivate);
  }
  send(LaunchScreenConfiguration::defaultConfiguration()->viewController(),
       &LaunchScreenViewControllerProtocol::deactivate);
  for (const Strong<NSWindow>& window : windows_) {
    window->setContentViewController(nullptr);  // a cover in it may keep the window
  }
}

PlayOutcome Player::play() {
  try {
    settled();
    for (const Step& step : scenario_.steps) {
      play(step);
    }
    runUntil(scenario_.end);
    tell(trace::Inspected{inspect(*manager_, names_)});
    return PlayOutcome::Ended;
  } catch (const NSCollectionMutatedError& error) {
    tell(trace::Fatal{error.what()});
    return PlayOutcome::CollectionMutated;
  }
}

void Player::play(const Step& step) {
  runUntil(step.at);
  tell(trace::StepStarted{step.name});
  std::visit([this](const auto& action) { perform(action); }, step.action);
  settled();
}

void Player::runUntil(Nanoseconds time) {
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  do {
    loop.runUntilDate(std::clamp(loop.nextDeadline(), loop.now(), time));
    settled();
  } while (loop.now() < time);
}

void Player::settled() {
  listener_.stateReached(
      {.time = NSRunLoop::mainRunLoop().now(),
       .timeLeft = manager_->launchScreenExpirationTimeLeft(),
       .countsDown = send(manager_->launchScreenExpirationTimer(), &NSTimer::isValid),
       .isCovered = isCovered(),
       .keyWindow = names_.nameOf(NSApp->keyWindow())});
}

void Player::tell(TraceEvent event) {
  listener_.traceLineAdded({.time = NSRunLoop::mainRunLoop().now(), .event = std::move(event)});
}

bool Player::isCovered() {
  std::erase_if(covers_, [](const Weak<LaunchScreenViewController>& cover) {
    return !send(cover.lock(), &NSViewController::isShown);
  });
  return !covers_.empty();
}

Strong<NSWindow> Player::open(const WindowScript& script) {
  Strong<NSWindow> window =
      NSWindow::initAs<HostWindow>(script.className, script.frame, script.styleMask);
  names_.give(window, script.name);
  if (script.contentViewController) {
    window->setContentViewController(make<HostViewController>(*script.contentViewController));
  }
  if (script.parent) {
    send(names_.window(*script.parent), &NSWindow::addChildWindow, window);
  }
  window->orderFront();
  return window;
}

// What the platform does

void Player::timerFired(NSTimer& /*timer*/, const Strong<NSObject>& target) {
  if (target == manager_) {
    tell(trace::Ticked{manager_->launchScreenExpirationTimeLeft()});
  }
}

void Player::lifeCycleStepBegan(NSViewController& controller, LifeCycleStep step) {
  if (const auto cover = as<LaunchScreenViewController>(controller.self())) {
    if (step == LifeCycleStep::WillAppear) {
      covers_.push_back(cover);
    }
    tell(trace::CoverStep{step});
  }
}

void Player::styleMaskSet(NSWindow& window, std::uint64_t styleMask) {
  tell(trace::StyleMaskSet{.styleMask = styleMask, .window = names_.nameOf(window)});
}

void Player::keyChanges(NSWindow& window, KeyChange change) {
  tell(trace::KeyChanged{.change = change, .window = names_.nameOf(window)});
}

void Player::windowOpened(NSWindow& window) {
  if (window.kind() != WindowKind::Plain) {
    tell(trace::PresentationWindow{.window = names_.nameOf(window),
                                   .change = trace::PresentationWindow::Change::Opened});
  }
}

void Player::windowClosed(NSWindow& window) {
  if (window.kind() != WindowKind::Plain) {
    tell(trace::PresentationWindow{.window = names_.nameOf(window),
                                   .change = trace::PresentationWindow::Change::Closed});
  }
}

}  // namespace vel::host
