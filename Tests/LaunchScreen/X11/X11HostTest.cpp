#include "Tests/LaunchScreen/X11/X11HostTest.h"

#include "Platform/AppKit/Shutdown.h"
#include "Platform/Foundation/Message.h"
#include "Tests/Support/VirtualPlatform.h"

namespace vel::test {

void X11HostTest::SetUp() {
  otherWindow = client.openGameWindow({900, 600, 200, 200}, 0);
  ASSERT_TRUE(eventually([this] { return client.isViewable(otherWindow); }));
  game = client.openGameWindow({200, 150, 640, 400}, 0x208040);
  ASSERT_TRUE(eventually([this] { return client.isViewable(game); }));
  system();  // opens the X11 back end
  NSApplication::start(takeSystem());
  MetricsCenter::setSink([this](std::string_view event) { events.emplace_back(event); });
  std::string error;
  player = NSApp->adoptWindow(X11WindowId{game}, error);
  ASSERT_NE(player, nullptr) << error;
  player->setContentViewController(make<NSViewController>());
  player->makeKeyWindow();
  ASSERT_TRUE(runUntil([this] { return player->isKeyWindow(); }));
}

X11HostTest::~X11HostTest() {
  send(launchScreen, &LaunchScreenManager::deactivate);
  player = nullptr;
  shutDown();
  MetricsCenter::setSink(nullptr);
  sDefaultConfiguration = nullptr;  // the settings of the test's launch screens
}

void X11HostTest::present(double duration, std::int32_t hostMode) {
  launchScreen = LaunchScreenManager::init();
  const auto data = launchScreen->contentDataForContentRequest(makeRequest("launch_end", duration));
  const auto view = launchScreen->contentViewForContentData(data);
  const auto presentation = as<CVPresentationFullScreen>(view->presentation());
  if (hasIndicator) {
    const auto controller = as<LaunchScreenViewController>(presentation->viewController());
    controller->createActivityIndicator();
    controller->createConstraintsActivityIndicator();
  }
  presentation->presentForWindowWithPresentationMode(player, hostMode);
}

bool X11HostTest::runUntil(const std::function<bool()>& condition) {
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  return eventually([&] {
    loop.runModeBeforeDate(loop.mode(), loop.now() + kNanosecondsPerSecond / 100);
    return condition();
  });
}

}  // namespace vel::test
