// A stage for the tests of AppKit: whatever happens on it becomes a line of the story, and the test
// may have something done at any line.
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

using Story = std::vector<std::string>;

class Stage {
 public:
  void tell(const std::string& line) {
    story.push_back(line);
    if (auto reaction = reactions_.extract(line)) {
      reaction.mapped()();
    }
  }
  /// Does `reaction` the next time that line is told.
  void at(const std::string& line, std::function<void()> reaction) {
    reactions_[line] = std::move(reaction);
  }
  /// What has happened since it was last asked.
  Story take() { return std::exchange(story, {}); }

  Story story;

 private:
  std::map<std::string, std::function<void()>> reactions_;
};

/// A view controller that tells of its steps: "main will appear".
class Actor final : public Class<Actor, "Actor", NSViewController> {
 public:
  Actor(Stage& stage, std::string name) : stage_(stage), name_(std::move(name)) {}

  void viewDidLoad() override { ++loaded_; }
  void viewWillAppear() override {
    NSViewController::viewWillAppear();
    stage_.tell(name_ + " will appear");
  }
  void viewDidAppear() override {
    NSViewController::viewDidAppear();
    stage_.tell(name_ + " did appear");
  }
  void viewWillDisappear() override {
    NSViewController::viewWillDisappear();
    stage_.tell(name_ + " will disappear");
  }
  void viewDidDisappear() override {
    NSViewController::viewDidDisappear();
    stage_.tell(name_ + " did disappear");
  }
  [[nodiscard]] int timesLoaded() const { return loaded_; }

 private:
  Stage& stage_;
  std::string name_;
  int loaded_ = 0;
};

/// Tells of the notifications of windows and of the application: "A resigns", "A becomes key".
class Listener final : public Class<Listener, "Listener"> {
 public:
  explicit Listener(Stage& stage) : stage_(stage) {}
  void listen();

  void windowResigned(const NSNotification& notification) { tell(notification, " resigns"); }
  void windowBecameKey(const NSNotification& notification) { tell(notification, " becomes key"); }
  void windowMiniaturized(const NSNotification& notification) {
    tell(notification, " is miniaturised");
  }
  void windowDeminiaturized(const NSNotification& notification) { tell(notification, " is back"); }
  void applicationResigns(const NSNotification& /*notification*/) {
    stage_.tell("application resigns");
  }
  void applicationIsActive(const NSNotification& /*notification*/) {
    stage_.tell("application is active");
  }

 private:
  void tell(const NSNotification& notification, std::string_view what) {
    stage_.tell(std::string(send(notification.object(), &NSObject::className)) + std::string(what));
  }

  Stage& stage_;
};

/// A fresh platform with a stage. Windows are named by their classes.
class StageTest : public VirtualTest {
 protected:
  StageTest() { listener_->listen(); }
  ~StageTest() override;

  /// An open window in front of the others, not key.
  static Strong<NSWindow> open(std::string_view name) {
    return openWindow(name, CGRectMake(0, 0, 1000, 600));
  }
  /// An open, key window.
  static Strong<NSWindow> openKey(std::string_view name) {
    Strong<NSWindow> window = open(name);
    window->makeKeyWindow();
    return window;
  }
  /// A window that has not been opened.
  static Strong<NSWindow> closedWindow(std::string_view name) {
    return NSWindow::initAs<NamedWindow>(name, CGRectMake(0, 0, 1000, 600), kFullStyle);
  }
  Strong<Actor> actor(const std::string& name) { return make<Actor>(stage, name); }
  /// An actor whose view is in the window's content; a view does not keep its controller alive, so
  /// the stage does.
  Strong<Actor> actorIn(const Strong<NSWindow>& window, const std::string& name) {
    Strong<Actor> added = actor(name);
    cast_.push_back(added);
    window->contentView()->addSubview(added->view());
    return added;
  }

  /// The name of a window; "none" for none.
  static std::string nameOf(const Strong<NSWindow>& window) {
    return window == nullptr ? "none" : std::string(window->className());
  }
  static std::string key() { return nameOf(NSApp->keyWindow()); }
  static std::string main() { return nameOf(NSApp->mainWindow()); }
  /// The windows on screen, front to back.
  static Story order();

  /// Observes the notifications of an application that the test has started itself.
  void listenAgain() { listener_->listen(); }

  Stage stage;

 private:
  Strong<Listener> listener_ = make<Listener>(stage);
  NSArray<Actor> cast_;
};

}  // namespace vel::test
