#include "Tests/Support/Cocoa/AppKitDisplay.h"

#import <GNUstepGUI/GSDisplayServer.h>

#include <array>
#include <cstdlib>
#include <cstring>

namespace vel::test {

AppKitDisplay& AppKitDisplay::shared() {
  static AppKitDisplay display;
  return display;
}

AppKitDisplay::AppKitDisplay()
    : client(server.display()), managerProcess(startManager(Manager::Metacity, server, client)) {
  setenv("DISPLAY", server.display().c_str(), 1);
}

xcb_window_t AppKitDisplay::idOf(NSWindow* window) {
  void* const device = [GSCurrentServer() windowDevice:static_cast<int>([window windowNumber])];
  return static_cast<xcb_window_t>(reinterpret_cast<std::uintptr_t>(device));
}

bool AppKitDisplay::giveFocus(NSWindow* window) {
  if (window == nil) {
    return false;
  }
  const xcb_window_t xWindow = idOf(window);
  if ([window isKeyWindow] && client.focusedWindow() == xWindow) {
    return true;
  }
  if (const Nanoseconds now = steadyNow(); now >= nextActivationTime_) {
    nextActivationTime_ = now + kNanosecondsPerSecond / 2;
    client.requestActivation(xWindow);
  }
  return false;
}

bool AppKitDisplay::giveFocusToOtherProgram(xcb_window_t window) {
  if ([NSApp keyWindow] == nil && client.focusedWindow() == window) {
    return true;
  }
  if (const Nanoseconds now = steadyNow(); now >= nextActivationTime_) {
    nextActivationTime_ = now + kNanosecondsPerSecond / 2;
    client.focus(window);
  }
  return false;
}

// Sends one more request and waits for its result. The window manager executes requests in order,
// so the result shows that it has executed all earlier requests.
void AppKitDisplay::waitForManager() {
  const xcb_window_t probe = client.makeWindow({0, 0, 1, 1}, 0);
  xcb_client_message_event_t request{};
  request.response_type = XCB_CLIENT_MESSAGE;
  request.format = 32;
  request.window = probe;
  request.type = client.atom("_NET_REQUEST_FRAME_EXTENTS");
  std::array<char, 32> bytes{};
  std::memcpy(bytes.data(), &request, bytes.size());
  xcb_send_event(client.connection(), 0, client.root(),
                 XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                 bytes.data());
  EXPECT_TRUE(eventually([&] { return client.property(probe, "_NET_FRAME_EXTENTS").has_value(); }));
  client.destroy(probe);
}

xcb_window_t AppKitDisplay::openGame(PixelRect frame) {
  const xcb_window_t game = client.openGameWindow(frame, 0);
  eventually([=, this] { return client.isViewable(game); });
  return game;
}

}  // namespace vel::test
