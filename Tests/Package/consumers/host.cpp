// A C++ program that uses the installed library. It runs a launch screen in virtual time and prints
// the callbacks.
#include <VelLaunchScreen/VelLaunchScreen.h>

#include <cstdio>

namespace {

class PlayerWindow final : public vel::Class<PlayerWindow, "PlayerWindow", vel::NSWindow> {
 public:
  using Class::Class;
};

class Host final : public vel::Class<Host, "Host", vel::NSObject, vel::ContentViewDelegate> {
 public:
  void contentViewWillAppear(const vel::Strong<vel::ContentView>& /*view*/) override {
    std::puts("will appear");
  }
  void contentViewDidDisappear(const vel::Strong<vel::ContentView>& /*view*/) override {
    std::puts("did disappear");
  }
};

}  // namespace

int main() {
  vel::NSRunLoop& loop = vel::NSRunLoop::mainRunLoop();
  loop.setClock(std::make_unique<vel::VirtualClock>());
  vel::NSApplication::start(std::make_unique<vel::HeadlessWindowSystem>());
  bool isEventRecorded = false;
  vel::MetricsCenter::setSink([&isEventRecorded](std::string_view event) {
    std::printf("event %s\n", std::string(event).c_str());
    isEventRecorded = true;
  });
  {
    const auto window = vel::NSWindow::initAs<PlayerWindow>(vel::CGRect{{}, {640, 480}},
                                                            vel::NSWindowStyleMaskTitled);
    window->makeKeyAndOrderFront();
    const auto host = vel::make<Host>();
    const auto manager = vel::LaunchScreenManager::init();
    manager->activate(nullptr);
    const auto request = vel::DictionaryRequest::requestWithEntries(
        {{"event", vel::NSString::stringWithUTF8String("launch_end")},
         {"max_duration_time", vel::NSNumber::numberWithDouble(2)}});
    const auto data = manager->contentDataForContentRequest(request);
    const auto view = manager->contentViewForContentData(data);
    view->setDelegate(host);
    vel::as<vel::CVPresentationFullScreen>(view->presentation())
        ->presentForWindowWithPresentationMode(window, 0);
    const vel::Nanoseconds limit = vel::nanosecondsFromSeconds(60);
    while (!isEventRecorded && loop.now() < limit) {
      loop.runModeBeforeDate(loop.mode(), limit);
    }
    manager->deactivate();
  }
  vel::NSApplication::stop();
  return isEventRecorded ? 0 : 1;
}
