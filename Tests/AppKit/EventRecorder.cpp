#include "Tests/AppKit/EventRecorder.h"

#include "Platform/AppKit/PlatformObserver.h"

namespace vel::test {

void NotificationRecorder::observe() {
  NSNotificationCenter& center = NSNotificationCenter::defaultCenter();
  const auto observer = self();
  center.addObserverSelectorNameObject<&NotificationRecorder::windowResignedKey>(
      observer, NSWindowDidResignKeyNotification, nullptr);
  center.addObserverSelectorNameObject<&NotificationRecorder::windowBecameKey>(
      observer, NSWindowDidBecomeKeyNotification, nullptr);
  center.addObserverSelectorNameObject<&NotificationRecorder::windowMiniaturized>(
      observer, NSWindowDidMiniaturizeNotification, nullptr);
  center.addObserverSelectorNameObject<&NotificationRecorder::windowDeminiaturized>(
      observer, NSWindowDidDeminiaturizeNotification, nullptr);
  center.addObserverSelectorNameObject<&NotificationRecorder::applicationWillResignActive>(
      observer, NSApplicationWillResignActiveNotification, nullptr);
  center.addObserverSelectorNameObject<&NotificationRecorder::applicationBecameActive>(
      observer, NSApplicationDidBecomeActiveNotification, nullptr);
}

EventRecordingTest::~EventRecordingTest() {
  NSNotificationCenter::defaultCenter().removeObserver(notificationRecorder_.get());
  setPlatformObserver(nullptr);
  // `stop` closes the windows, and the view controllers record events. `recorder` must still exist.
  NSApplication::stop();
}

Events EventRecordingTest::windowOrder() {
  Events names;
  for (const Strong<NSWindow>& window : NSApp->orderedWindows()) {
    names.push_back(nameOf(window));
  }
  return names;
}

}  // namespace vel::test
