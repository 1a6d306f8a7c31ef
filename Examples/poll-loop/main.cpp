// A host with its own loop around poll. It waits for its own input and for the library's descriptor
// at the same time. The example uses the headless window system, so it needs no display.
#include <VelLaunchScreen/VelLaunchScreen.h>
#include <poll.h>
#include <unistd.h>

#include <array>
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
  vel::NSApplication::start(std::make_unique<vel::HeadlessWindowSystem>());
  bool isEventRecorded = false;
  vel::MetricsCenter::setSink([&isEventRecorded](std::string_view event) {
    std::printf("event %.*s\n", static_cast<int>(event.size()), event.data());
    isEventRecorded = true;
  });

  const auto window = vel::NSWindow::initAs<PlayerWindow>(vel::CGRect{{}, {640, 480}},
                                                          vel::NSWindowStyleMaskTitled);
  window->makeKeyAndOrderFront();
  const auto host = vel::make<Host>();
  const auto manager = vel::LaunchScreenManager::init();
  manager->activate(nullptr);
  const auto request = vel::DictionaryRequest::requestWithEntries(
      {{"event", vel::NSString::stringWithUTF8String("launch_end")},
       {"max_duration_time", vel::NSNumber::numberWithDouble(0.5)}});
  const auto data = manager->contentDataForContentRequest(request);
  const auto view = manager->contentViewForContentData(data);
  view->setDelegate(host);
  vel::as<vel::CVPresentationFullScreen>(view->presentation())
      ->presentForWindowWithPresentationMode(window, 0);

  vel::NSRunLoop& loop = vel::NSRunLoop::mainRunLoop();
  int input = STDIN_FILENO;
  while (!isEventRecorded) {
    loop.pump();
    // The descriptor is readable when the library has work to do, for example when a timer is due.
    std::array<pollfd, 2> sources{
        {{loop.waitHandle().descriptor(), POLLIN, 0}, {input, POLLIN, 0}}};
    poll(sources.data(), sources.size(), -1);
    std::array<char, 256> text{};
    if (sources[1].revents != 0 && read(input, text.data(), text.size()) <= 0) {
      input = -1;  // end of input: poll ignores a negative descriptor
    }
  }

  manager->deactivate();
  vel::NSApplication::stop();
  return 0;
}
