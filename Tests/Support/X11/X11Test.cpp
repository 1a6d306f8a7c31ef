#include "Tests/Support/X11/X11Test.h"

#include <algorithm>
#include <stdexcept>

#include "Platform/Foundation/NSLog.h"

namespace vel::test {

namespace {

std::vector<std::string> commandOf(Manager manager) {
  switch (manager) {
    case Manager::Openbox:
      return {"openbox", "--sm-disable"};
    case Manager::Xfwm4:
      return {"xfwm4", "--compositor=off"};
    case Manager::IceWM:
      return {"icewm"};
    case Manager::Marco:
      return {"marco", "--sm-disable", "--no-composite"};
    case Manager::Fluxbox:
      return {"fluxbox"};
    default:
      return {"metacity", "--sm-disable"};
  }
}

}  // namespace

Process startManager(Manager kind, const XServer& server, XClient& client) {
  if (kind == Manager::None) {
    return {};
  }
  const std::vector<std::string> program = commandOf(kind);
  Process manager = server.start(program);
  // The manager sets WM_STATE of the probe window when it manages the window. A manager that is
  // still starting may ignore a new window, so the loop maps the probe repeatedly.
  const Nanoseconds limit = steadyNow() + kTimeout;
  const xcb_window_t probe = client.makeWindow({0, 0, 10, 10}, 0);
  client.selectEvents(probe, XCB_EVENT_MASK_PROPERTY_CHANGE);
  while (client.numbers(probe, "WM_STATE").empty()) {
    if (steadyNow() >= limit) {
      throw std::runtime_error(program.front() + " does not start");
    }
    client.unmap(probe);
    if (!client.numbers(client.root(), "_NET_SUPPORTING_WM_CHECK").empty()) {
      client.map(probe);
    }
    waitForInput(xcb_get_file_descriptor(client.connection()),
                 steadyNow() + kNanosecondsPerSecond / 20);
    client.takeEventTypes();
  }
  client.destroy(probe);
  return manager;
}

// X11Test

X11Test::X11Test(Manager kind, const std::vector<std::string>& serverArguments)
    : server(serverArguments), client(server.display()) {
  setNSLogSink([this](std::string_view line) { log.emplace_back(line); });
  startManager(kind);
}

X11Test::~X11Test() {
  system_ = nullptr;
  setNSLogSink(nullptr);
}

X11WindowSystem& X11Test::system() {
  if (system_ == nullptr) {
    std::string error;
    system_ = X11WindowSystem::open(server.display(), error);
    if (system_ == nullptr) {
      throw std::runtime_error(error);
    }
    system_->setDelegate(&reports);
  }
  return *system_;
}

void X11Test::deliver() {
  client.waitForServer();
  deliverAll(system());
}

void X11Test::deliverFor(double seconds) {
  const Nanoseconds limit = steadyNow() + nanosecondsFromSeconds(seconds);
  while (steadyNow() < limit) {
    system().deliverEvents();
    waitForInput(system().waitHandle().descriptor(), std::min(system().nextDeadline(), limit));
  }
}

WindowHandle X11Test::openOwnWindow(const WindowDescription& description) {
  const WindowHandle window = system().createWindow(description);
  system().orderFront(window);
  EXPECT_TRUE(waitFor([&] { return client.isViewable(idOf(window)); }));
  return window;
}

AdoptedWindow X11Test::adopt(xcb_window_t window) {
  std::string error;
  const auto adopted = system().adoptWindow(X11WindowId{window}, error);
  if (!adopted) {
    throw std::runtime_error(error);
  }
  return *adopted;
}

Scene X11Test::whiteScene(CGSize size) {
  return {{.kind = SceneItem::Kind::Fill, .frame = {{}, size}, .color = {1, 1, 1, 1}}};
}

Scene X11Test::whiteSceneWithIndicator(CGSize size) {
  Scene scene = whiteScene(size);
  scene.push_back({.kind = SceneItem::Kind::Spinner,
                   .frame = CGRectMake(size.width / 2 - 16, size.height / 2 - 16, 32, 32),
                   .color = {},
                   .isAnimated = true});
  return scene;
}

std::string X11Test::reportLine(std::string_view what, WindowHandle window) {
  return std::string(what) + " " + nameOf(window);
}

}  // namespace vel::test
