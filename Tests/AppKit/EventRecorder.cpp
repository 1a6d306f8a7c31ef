#include "Tests/AppKit/EventRecorder.h"

#include "Platform/AppKit/PlatformObserver.h"

namespace vel::test {

void NotificationRecorder::observe() {
  NSNotificationCenter& center = NSNotificationCenter::defaultCenter();
  const auto me = self();
  center.addObserverSelectorNameObject<&NotificationRecorder::windowResigned>(
      me, NSWindowDidResignKeyNotification, nullptr);
  center.addObserverSelectorNameObject<&NotificationRecorder::windowBecameKey>(
      me, NSWindowDidBecomeKeyNotification, nullptr);
  center.addObserverSelectorNameObject<&NotificationRecorder::windowMiniaturized>(
      me, NSWindowDidMiniaturizeNotification, nullptr);
  center.addObserverSelectorNameObject<&NotificationRecorder::windowDeminiaturized>(
      me, NSWindowDidDeminiaturizeNotification, nullptr);
  center.addObserverSelectorNameObject<&NotificationRecorder::applicationResigns>(
      me, NSApplicationWillResignActiveNotification, nullptr);
  center.addObserverSelectorNameObject<&NotificationRecorder::applicationIsActive>(
      me, NSApplicationDidBecomeActiveNotification, nullptr);
}

RecordedTest::~RecordedTest() {
  NSNotificationCenter::defaultCenter().removeObserver(notificationRecorder_.get());
  setPlatformObserver(nullptr);
  NSApplication::stop();  // the controllers record their last steps while the recorder exists
}

Events RecordedTest::order() {
  Events names;
  for (const Strong<NSWindow>& window : NSApp->orderedWindows()) {
    names.push_back(nameOf(window));
  }
  return names;
}

}  // namespace vel::test
