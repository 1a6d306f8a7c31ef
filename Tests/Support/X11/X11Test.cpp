#include "Tests/Support/X11/X11Test.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "Platform/Foundation/NSLog.h"
#include "Tests/Support/Wayland/Compositor.h"
#include "Tests/Support/X11/Xwayland.h"

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

bool isCompositor(Manager manager) {
  return manager == Manager::XwaylandSway || manager == Manager::XwaylandWeston;
}

void waitForManager(const std::string& name, XClient& client) {
  // A window manager sets WM_STATE of each window that it manages. A window manager that is still
  // starting may ignore a mapped window, so the loop maps `probe` until it has WM_STATE.
  const Nanoseconds limit = steadyNow() + kTimeout;
  const xcb_window_t probe = client.makeWindow({0, 0, 10, 10}, 0);
  client.selectEvents(probe, XCB_EVENT_MASK_PROPERTY_CHANGE);
  while (client.numbers(probe, "WM_STATE").empty()) {
    if (steadyNow() >= limit) {
      throw std::runtime_error(name + " does not start");
    }
    client.unmap(probe);
    const bool hasSupportingWmCheck =
        !client.numbers(client.root(), "_NET_SUPPORTING_WM_CHECK").empty();
    if (hasSupportingWmCheck) {
      client.map(probe);
    }
    waitForInput(xcb_get_file_descriptor(client.connection()),
                 steadyNow() + kNanosecondsPerSecond / 20);
    client.takeEventTypes();  // discards the events
  }
  client.destroy(probe);
}

}  // namespace

std::string nameOf(Manager manager) {
  constexpr std::array<const char*, 9> kNames{"WithoutAManager", "Metacity",     "Openbox",
                                              "Xfwm4",           "IceWM",        "Marco",
                                              "Fluxbox",         "XwaylandSway", "XwaylandWeston"};
  return kNames.at(static_cast<std::size_t>(manager));
}

ManagerFeatures featuresOf(Manager manager) {
  switch (manager) {
    case Manager::XwaylandSway:
      return {.movesWindows = false,
              .maximizes = false,
              .miniaturizes = false,
              .addsFrames = false,
              .publishesAllowedActions = false};
    case Manager::XwaylandWeston:
      return {.movesWindows = false,
              .reportsMoves = false,
              .miniaturizes = false,
              .publishesAllowedActions = false};
    default:
      return {};
  }
}

std::vector<Manager> withXwayland(std::vector<Manager> managers) {
  if (canStartXwayland()) {
    managers.insert(managers.end(), {Manager::XwaylandSway, Manager::XwaylandWeston});
  }
  return managers;
}

Process startManager(Manager manager, const XServer& server, XClient& client) {
  if (manager == Manager::None) {
    return {};
  }
  const std::vector<std::string> program = commandOf(manager);
  Process process = server.start(program);
  waitForManager(program.front(), client);
  return process;
}

// X11Test

X11Test::X11Test(Manager manager, const std::vector<std::string>& serverArguments)
    : compositor(isCompositor(manager) ? startXwayland(manager) : nullptr),
      server(compositor == nullptr ? XServer(serverArguments)
                                   : XServer::ofDisplay(compositor->xwaylandDisplay())),
      client(server.display()) {
  setNSLogSink([this](std::string_view line) { log.emplace_back(line); });
  if (compositor == nullptr) {
    startManager(manager);
  } else {
    client.setOuterClient(compositor->user());
    waitForManager(nameOf(manager), client);
  }
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

bool X11Test::showsOnly(std::uint32_t color, xcb_window_t window) const {
  const auto screenHasColor = [=, this] { return client.screenPicture(window).isAll(color); };
  if (compositor == nullptr) {
    return screenHasColor();
  }
  // The screen may still change after it first shows the colour.
  constexpr Nanoseconds kCheckDuration = kNanosecondsPerSecond / 10;
  bool hasColor = eventually(screenHasColor);
  for (const Nanoseconds limit = steadyNow() + kCheckDuration; hasColor && steadyNow() < limit;) {
    waitForInput(-1, steadyNow() + kNanosecondsPerSecond / 100);  // sleeps
    hasColor = screenHasColor();
  }
  return hasColor;
}

void X11Test::giveFocus(xcb_window_t window, const std::string& title) {
  if (compositor != nullptr) {
    compositor->focusWindow(title);
  } else {
    client.requestActivation(window);
  }
  ASSERT_TRUE(eventually([=, this] { return client.focusedWindow() == window; }));
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

Scene X11Test::whiteSceneWithSpinner(CGSize size) {
  Scene scene = whiteScene(size);
  scene.push_back({.kind = SceneItem::Kind::Spinner,
                   .frame = CGRectMake(size.width / 2 - 16, size.height / 2 - 16, 32, 32),
                   .color = {},
                   .isAnimated = true});
  return scene;
}

std::string X11Test::reportLine(std::string_view event, WindowHandle window) {
  return std::string(event) + " " + nameOf(window);
}

}  // namespace vel::test
