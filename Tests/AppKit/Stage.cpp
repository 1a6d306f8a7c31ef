#include "Tests/AppKit/Stage.h"

#include "Platform/AppKit/PlatformObserver.h"

namespace vel::test {

void Listener::listen() {
  NSNotificationCenter& center = NSNotificationCenter::defaultCenter();
  const auto me = self();
  center.addObserverSelectorNameObject<&Listener::windowResigned>(
      me, NSWindowDidResignKeyNotification, nullptr);
  center.addObserverSelectorNameObject<&Listener::windowBecameKey>(
      me, NSWindowDidBecomeKeyNotification, nullptr);
  center.addObserverSelectorNameObject<&Listener::windowMiniaturized>(
      me, NSWindowDidMiniaturizeNotification, nullptr);
  center.addObserverSelectorNameObject<&Listener::windowDeminiaturized>(
      me, NSWindowDidDeminiaturizeNotification, nullptr);
  center.addObserverSelectorNameObject<&Listener::applicationResigns>(
      me, NSApplicationWillResignActiveNotification, nullptr);
  center.addObserverSelectorNameObject<&Listener::applicationIsActive>(
      me, NSApplicationDidBecomeActiveNotification, nullptr);
}

StageTest::~StageTest() {
  NSNotificationCenter::defaultCenter().removeObserver(listener_.get());
  setPlatformObserver(nullptr);
  NSApplication::stop();  // the actors leave while there is a stage to tell
}

Story StageTest::order() {
  Story names;
  for (const Strong<NSWindow>& window : NSApp->orderedWindows()) {
    names.push_back(nameOf(window));
  }
  return names;
}

}  // namespace vel::test
