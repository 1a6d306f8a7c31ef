#include "Tests/Support/Cocoa/AppKitDisplay.h"

#import <GNUstepGUI/GSDisplayServer.h>

#include <cstdlib>

namespace vel::test {

AppKitDisplay& AppKitDisplay::shared() {
  static AppKitDisplay display;
  return display;
}

AppKitDisplay::AppKitDisplay()
    : client(server.display()), manager(startManager(Manager::Metacity, server, client)) {
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

xcb_window_t AppKitDisplay::openGame(PixelRect frame) {
  const xcb_window_t game = client.openGameWindow(frame, 0);
  eventually([=, this] { return client.isViewable(game); });
  return game;
}

}  // namespace vel::test
