#include "Bindings/C/Session.h"

#include <utility>

#include "Bindings/C/CallbackDelegate.h"
#include "HostInterfaces/DictionaryRequest.h"
#include "HostInterfaces/MetricsCenter.h"
#include "LaunchScreen/Helpers/LaunchScreenConfiguration.h"
#include "LaunchScreen/Helpers/LaunchScreenConstants.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/Shutdown.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/NSLog.h"
#include "Platform/Foundation/NSThread.h"
#include "Platform/WindowSystem/Backends/Backends.h"

namespace vel {

namespace {

/// The window that we open where the host has none.
class PlayerWindow final : public Class<PlayerWindow, "PlayerWindow", NSWindow> {
 public:
  using Class::Class;
};

constexpr NSWindowStyleMask kPlayerStyle = NSWindowStyleMaskTitled | NSWindowStyleMaskClosable |
                                           NSWindowStyleMaskMiniaturizable |
                                           NSWindowStyleMaskResizable;
constexpr CGSize kDefaultSize{1280, 720};

std::string textOrEmpty(const char* text) { return text != nullptr ? text : ""; }

}  // namespace

VelStatus Session::create(const VelCreateOptions& options, std::unique_ptr<Session>& session,
                          std::string& error) {
  NSThread::becomeMainThread();
  const std::string display = options.display != nullptr ? options.display : "auto";
  std::unique_ptr<WindowSystem> windowSystem =
      makeWindowSystem(display, textOrEmpty(options.display_name), error);
  if (windowSystem == nullptr) {
    return VEL_NO_DISPLAY;
  }
  if (options.time == VEL_TIME_VIRTUAL) {
    NSRunLoop::mainRunLoop().setClock(std::make_unique<VirtualClock>());
  } else {
    NSRunLoop::mainRunLoop().useRealTime();
  }
  NSApplication::start(std::move(windowSystem));
  std::unique_ptr<Session> made(new Session());
  const VelStatus status = made->openWindow(options, error);
  if (status != VEL_OK) {
    return status;
  }
  const VelCallbacks callbacks = options.callbacks != nullptr ? *options.callbacks : VelCallbacks{};
  made->manager_ = LaunchScreenManager::init();
  made->delegate_ = make<CallbackDelegate>(callbacks);
  made->manager_->setDelegate(made->delegate_);
  made->manager_->content()->setDelegate(made->delegate_);
  made->manager_->activate(nullptr);
  made->connectSinks(callbacks.record_event != nullptr);
  session = std::move(made);
  return VEL_OK;
}

VelStatus Session::openWindow(const VelCreateOptions& options, std::string& error) {
  if (options.window != 0) {
    window_ = NSApp->adoptWindow(options.window, error);
    if (window_ == nullptr) {
      return VEL_BAD_WINDOW;
    }
  } else {
    const CGSize size{options.width > 0 ? options.width : kDefaultSize.width,
                      options.height > 0 ? options.height : kDefaultSize.height};
    window_ = NSWindow::initAs<PlayerWindow>(CGRect{{}, size}, kPlayerStyle);
    window_->setTitle(textOrEmpty(options.title));
    window_->makeKeyAndOrderFront();
  }
  if (options.content_controller != 0) {
    window_->setContentViewController(NSViewController::initWithNibNameBundle({}, nullptr));
  }
  return VEL_OK;
}

void Session::connectSinks(bool recordsEvents) {
  const Strong<CallbackDelegate> host = delegate_;
  setNSLogSink([host](std::string_view line) { host->logLine(line); });
  if (recordsEvents) {
    MetricsCenter::setSink([host](std::string_view event) { host->recordEvent(event); });
  }
  NSApp->setControlsKeptHandler([host](NSWindow& /*window*/, NSWindowStyleMask controls) {
    host->controlsKept(static_cast<std::uint32_t>(controls));
  });
  NSApp->setDisplayLostHandler([host](std::string_view reason) { host->displayLost(reason); });
}

Session::~Session() {
  silence();
  send(manager_, &LaunchScreenManager::deactivate);
  shutDown();
  sDefaultConfiguration = nullptr;
  MetricsCenter::setSink(nullptr);
  setNSLogSink(nullptr);
}

void Session::silence() {
  silent_ = true;
  send(delegate_, &CallbackDelegate::silence);
}

VelStatus Session::request(const Strong<NSDictionary>& parameters, std::string& error) {
  // Over a window without a content controller the manager would not notice the cover that is up,
  // and leave it without a countdown.
  if (isUp()) {
    error = "a launch screen is shown";
    return VEL_STILL_UP;
  }
  const Strong<ContentData> data =
      manager_->contentDataForContentRequest(DictionaryRequest::requestWithParameters(parameters));
  if (data == nullptr) {
    error = delegate_->lastLogLine();
    return VEL_REFUSED;
  }
  if (data->state() == ContentDataStateFailed) {
    error = send(data->error(), &NSError::domain);
    return VEL_REFUSED;
  }
  return VEL_OK;
}

VelStatus Session::present(VelPresentation presentation, std::string& error) {
  if (controller() == nullptr) {
    error = "no request has been loaded";
    return VEL_NOTHING_TO_PRESENT;
  }
  if (controller() == presented_.lock()) {
    error = "the request has been presented";
    return VEL_NOTHING_TO_PRESENT;
  }
  if (presentation != VEL_PRESENT_MODAL && !window_->isVisible()) {
    error = "the window has been closed";
    return VEL_NOTHING_TO_PRESENT;
  }
  if (presentation == VEL_PRESENT_SHEET && window_->contentViewController() == nullptr) {
    error = "a sheet needs a window with a content controller";
    return VEL_NOTHING_TO_PRESENT;
  }
  presented_ = controller();
  const Strong<ContentView> view = manager_->contentViewForContentData(manager_->content());
  // These are the content framework's own modes.
  send(as<CVPresentationFullScreen>(view->presentation()),
       &CVPresentationFullScreen::presentForWindowWithPresentationMode, window_,
       static_cast<std::int32_t>(presentation));
  return VEL_OK;
}

void Session::dismiss() {
  if (isOwnedByThisThread()) {
    manager_->dismissLaunchScreen();
    return;
  }
  // Work that waits is dropped with the session.
  dispatch_async(dispatch_get_main_queue(), "dismiss the launch screen", [this] {
    if (isUp()) {
      manager_->dismissLaunchScreen();
    }
  });
}

void Session::run(double seconds) const {
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  const Nanoseconds limit = loop.now() + nanosecondsFromSeconds(seconds);
  while (!isSilent() && (loop.now() < limit || loop.nextDeadline() <= limit)) {
    loop.runModeBeforeDate(loop.mode(), limit);
  }
}

Strong<NSViewController> Session::controller() const {
  return send(manager_->content(), &LaunchScreenContent::viewController);
}

bool Session::isUp() const { return send(controller(), &NSViewController::isShown); }

VelPause Session::pauseReason() const {
  if (!isUp()) {
    return VEL_PAUSE_NOT_UP;
  }
  if (send(manager_->launchScreenExpirationTimer(), &NSTimer::isValid)) {
    return VEL_PAUSE_NONE;
  }
  return secondsLeft() > 0 ? VEL_PAUSE_NOT_IN_FRONT : VEL_PAUSE_NO_TIME_LEFT;
}

VelState Session::state() const {
  return static_cast<VelState>(send(manager_->content(), &LaunchScreenContent::state));
}

}  // namespace vel
