#include "Tests/Support/LaunchScreenHost.h"

#include <thread>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Platform/Foundation/NSThread.h"

namespace vel::test {

void ResolverListener::contentResolverDidChangeStateForContentData(
    const Strong<ContentResolver>& resolver, const Strong<ContentData>& data) {
  changes.push_back({resolver, data, data->state(), NSThread::isMainThread()});
  if (whenNotified) {
    whenNotified();
  }
}

void HostController::record(std::string_view operation) {
  calls.emplace_back(operation);
  if (const auto work = std::exchange(work_, nullptr)) {
    work();
  }
}

void HostController::addDelegate(const Strong<LaunchScreenViewControllerDelegate>& newDelegate) {
  delegate = newDelegate;
  record("addDelegate");
}

void HostController::removeDelegate(const Strong<LaunchScreenViewControllerDelegate>& /*removed*/) {
  record("removeDelegate");
}

void HostController::deactivate() {
  delegate = nullptr;
  record("deactivate");
}

void HostController::presentForWindowWithPresentationMode(const Strong<NSWindow>& newWindow,
                                                          LaunchScreenPresentationMode newMode) {
  window = newWindow;
  mode = newMode;
  record("present");
}

void HostController::dismiss() { record("dismiss"); }

void HostController::dismissViewController(const Strong<NSViewController>& controller) {
  dismissedController = controller;
  record("dismissViewController");
}

void runOnAnotherThread(const std::function<void()>& work) { std::thread(work).join(); }

LaunchScreenTest::~LaunchScreenTest() { send(manager, &LaunchScreenManager::deactivate); }

void LaunchScreenTest::load(double duration, std::string_view mode) {
  const auto data =
      manager->contentDataForContentRequest(makeRequest("launch_end", duration, mode));
  ASSERT_EQ(data, manager->content());
  // Makes the manager a delegate of the content's view controller.
  manager->contentViewForContentData(data);
}

Strong<HostController> LaunchScreenTest::loadHostController(double duration,
                                                            std::string_view mode) {
  const auto hostController = make<HostController>();
  configuration().setViewController(hostController);
  load(duration, mode);
  return hostController;
}

void LaunchScreenTest::present(const Strong<NSWindow>& window, std::int32_t hostMode) {
  manager->content()->presentForWindowWithPresentationMode(window, hostMode);
}

Strong<LaunchScreenViewController> LaunchScreenTest::controller() const {
  return as<LaunchScreenViewController>(manager->content()->viewController());
}

Strong<CoverDelegate> LaunchScreenTest::addHostDelegate() {
  auto delegate = make<CoverDelegate>("host", journal);
  controller()->addDelegate(delegate);
  return delegate;
}

std::size_t LaunchScreenTest::registrationCount() const {
  return NSNotificationCenter::defaultCenter().registrationCount(manager.get());
}

std::size_t LaunchScreenTest::pendingTaskCount() {
  return dispatch_get_main_queue().pendingWorkCount();
}

void ShownLaunchScreenTest::show(double duration, std::string_view mode) {
  hostController = loadHostController(duration, mode);
  hostController->calls.clear();
  window = openWindow("NSWindow");
  window->contentView()->addSubview(hostController->view());
  manager->startTimer();
}

void ShownLaunchScreenTest::notifyDidResignKey(const Strong<NSObject>& object) {
  manager->windowDidResignKey(
      NSNotification::initWithNameObject(NSWindowDidResignKeyNotification, object));
}

void ShownLaunchScreenTest::notifyDidBecomeKey(const Strong<NSObject>& object) {
  manager->windowDidBecomeKey(
      NSNotification::initWithNameObject(NSWindowDidBecomeKeyNotification, object));
}

}  // namespace vel::test
