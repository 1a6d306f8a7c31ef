// Records the events of windows, view controllers and the application, for the tests of AppKit.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Tests/Support/VirtualPlatform.h"

namespace vel::test {

/// A list of short texts: events, or the names of windows.
using Events = std::vector<std::string>;

/// Records events. A test can also react to the next occurrence of an event.
class EventRecorder {
 public:
  void record(const std::string& event) {
    events.push_back(event);
    if (auto reaction = reactions_.extract(event)) {
      reaction.mapped()();
    }
  }
  /// Runs `reaction` the next time that `event` is recorded.
  void onNext(const std::string& event, std::function<void()> reaction) {
    reactions_[event] = std::move(reaction);
  }
  /// Returns the events that were recorded since the last call.
  Events takeEvents() { return std::exchange(events, {}); }

  Events events;

 private:
  std::map<std::string, std::function<void()>> reactions_;
};

/// A view controller that records when it appears and disappears. An event begins with the
/// controller's name, as in "host will appear".
class RecordingController final
    : public Class<RecordingController, "RecordingController", NSViewController> {
 public:
  RecordingController(EventRecorder& recorder, std::string name)
      : recorder_(recorder), name_(std::move(name)) {}

  void viewDidLoad() override { ++loadCount_; }
  void viewWillAppear() override {
    NSViewController::viewWillAppear();
    recorder_.record(name_ + " will appear");
  }
  void viewDidAppear() override {
    NSViewController::viewDidAppear();
    recorder_.record(name_ + " did appear");
  }
  void viewWillDisappear() override {
    NSViewController::viewWillDisappear();
    recorder_.record(name_ + " will disappear");
  }
  void viewDidDisappear() override {
    NSViewController::viewDidDisappear();
    recorder_.record(name_ + " did disappear");
  }
  [[nodiscard]] int loadCount() const { return loadCount_; }

 private:
  EventRecorder& recorder_;
  std::string name_;
  int loadCount_ = 0;
};

/// Records the notifications of windows and of the application, such as "A becomes key".
class NotificationRecorder final : public Class<NotificationRecorder, "NotificationRecorder"> {
 public:
  explicit NotificationRecorder(EventRecorder& recorder) : recorder_(recorder) {}
  /// Starts to observe. Must be called again for each new application, because
  /// `NSApplication::stop` removes all notification observers.
  void observe();

  void windowResignedKey(const NSNotification& notification) {
    record(notification, " resigns key");
  }
  void windowBecameKey(const NSNotification& notification) { record(notification, " becomes key"); }
  void windowMiniaturized(const NSNotification& notification) {
    record(notification, " is miniaturised");
  }
  void windowDeminiaturized(const NSNotification& notification) {
    record(notification, " is deminiaturised");
  }
  void applicationWillResignActive(const NSNotification& /*notification*/) {
    recorder_.record("application resigns active");
  }
  void applicationBecameActive(const NSNotification& /*notification*/) {
    recorder_.record("application becomes active");
  }

 private:
  void record(const NSNotification& notification, std::string_view verb) {
    recorder_.record(std::string(send(notification.object(), &NSObject::className)) +
                     std::string(verb));
  }

  EventRecorder& recorder_;
};

/// A fixture with a virtual platform. Records the events of windows, view controllers and the
/// application. An event names a window by its class name. `openWindow`, `openKeyWindow` and
/// `makeClosedWindow` set the class name to `name`.
class EventRecordingTest : public VirtualPlatformTest {
 protected:
  EventRecordingTest() { notificationRecorder_->observe(); }
  ~EventRecordingTest() override;

  /// Opens a window in front of all other windows. The new window is not key.
  static Strong<NSWindow> openWindow(std::string_view name) {
    return test::openWindow(name, CGRectMake(0, 0, 1000, 600));
  }
  /// Opens a window and makes it key.
  static Strong<NSWindow> openKeyWindow(std::string_view name) {
    Strong<NSWindow> window = openWindow(name);
    window->makeKeyWindow();
    return window;
  }
  /// Creates a window but does not open it.
  static Strong<NSWindow> makeClosedWindow(std::string_view name) {
    return NSWindow::initAs<NamedWindow>(name, CGRectMake(0, 0, 1000, 600), kFullStyle);
  }
  Strong<RecordingController> makeController(const std::string& name) {
    return make<RecordingController>(recorder, name);
  }
  /// Makes a controller and adds its view to the window's content view. The fixture holds a strong
  /// reference to the controller, because the view holds only a weak one.
  Strong<RecordingController> addController(const Strong<NSWindow>& window,
                                            const std::string& name) {
    Strong<RecordingController> controller = makeController(name);
    controllers_.push_back(controller);
    window->contentView()->addSubview(controller->view());
    return controller;
  }

  /// The name of a window; "none" for null.
  static std::string nameOf(const Strong<NSWindow>& window) {
    return window == nullptr ? "none" : std::string(window->className());
  }
  static std::string keyWindowName() { return nameOf(NSApp->keyWindow()); }
  static std::string mainWindowName() { return nameOf(NSApp->mainWindow()); }
  /// The names of the windows on screen, front to back.
  static Events windowOrder();

  /// Call this after the test has started another application.
  void observeNotifications() { notificationRecorder_->observe(); }

  EventRecorder recorder;

 private:
  Strong<NotificationRecorder> notificationRecorder_ = make<NotificationRecorder>(recorder);
  NSArray<RecordingController> controllers_;
};

}  // namespace vel::test
