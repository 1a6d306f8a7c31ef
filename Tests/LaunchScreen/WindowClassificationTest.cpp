// Which windows are required, and when a request needs a temporary content.
#include <utility>

#include "Tests/Support/LaunchScreenHost.h"

namespace vel::test {
namespace {

/// A view controller that counts the calls of `className`.
class CountedController final
    : public Class<CountedController, "CountedController", NSViewController> {
 public:
  explicit CountedController(std::string_view name) : name_(name) {}
  [[nodiscard]] std::string_view className() const override {
    ++calls;
    return name_;
  }
  mutable int calls = 0;

 private:
  std::string_view name_;
};

/// A launch screen controller with an empty class name.
class UnnamedController final : public Class<UnnamedController, "UnnamedController",
                                             NSViewController, LaunchScreenViewControllerProtocol> {
 public:
  [[nodiscard]] std::string_view className() const override { return {}; }
  void addDelegate(const Strong<LaunchScreenViewControllerDelegate>& /*delegate*/) override {}
  void removeDelegate(const Strong<LaunchScreenViewControllerDelegate>& /*delegate*/) override {}
  void deactivate() override {}
};

// Opens a window whose content view controller has these children.
Strong<NSWindow> openWindowWithChildren(std::initializer_list<Strong<NSViewController>> children,
                                        std::string_view className = "NSWindow") {
  const auto window = openWindow(className);
  const auto host = make<NamedViewController>("HostViewController");
  for (const auto& child : children) {
    host->addChildViewController(child);
  }
  window->setContentViewController(host);
  return window;
}

Strong<NSViewController> named(std::string_view name) { return make<NamedViewController>(name); }

// Required windows

class RequiredWindowTest : public LaunchScreenTest {};

TEST_F(RequiredWindowTest, ANullWindowIsNotRequired) {
  EXPECT_FALSE(manager->isRequiredWindow(nullptr));
  load(5.0);
  EXPECT_FALSE(manager->isRequiredWindow(nullptr)) << "while nothing is presented";
  present(openPlayerWindow(), kHostModeModalWindow);
  EXPECT_FALSE(manager->isRequiredWindow(nullptr)) << "during a modal run";
}

TEST_F(RequiredWindowTest, TheLaunchScreensOwnWindowIsRequiredInEveryMode) {
  for (const std::int32_t mode : {kHostModeEmbedded, kHostModeSheet, kHostModeModalWindow}) {
    load(5.0);
    present(openPlayerWindowWithContentViewController(), mode);
    const auto window = controller()->view()->window();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(manager->isRequiredWindow(window)) << "host mode " << mode;
    controller()->deactivate();
    controller()->dismissViewController(controller());
  }
}

TEST_F(RequiredWindowTest, TheWindowOfAnEmbeddedCoverIsRequiredWithoutAChildController) {
  load(5.0);
  const auto window = openPlayerWindow();
  present(window, kHostModeEmbedded);
  EXPECT_TRUE(manager->isRequiredWindow(window));
}

TEST_F(RequiredWindowTest, WhileNothingIsPresentedNoWindowIsRequired) {
  const auto window = openPlayerWindowWithContentViewController();
  EXPECT_FALSE(manager->isRequiredWindow(window));
  load(5.0);
  EXPECT_FALSE(manager->isRequiredWindow(window));
  manager->deactivate();
  EXPECT_FALSE(manager->isRequiredWindow(window));
}

TEST_F(RequiredWindowTest, AnotherWindowIsNotRequired) {
  load(5.0);
  present(openPlayerWindow(), kHostModeEmbedded);
  EXPECT_FALSE(manager->isRequiredWindow(openWindow("NSWindow")));
  EXPECT_FALSE(manager->isRequiredWindow(openWindowWithChildren({})));
}

TEST_F(RequiredWindowTest, WithoutAModalRunThePlayerWindowIsNotRequired) {
  load(5.0);
  const auto player = openPlayerWindowWithContentViewController();
  present(player, kHostModeSheet);
  ASSERT_NE(controller()->view()->window(), player);
  EXPECT_FALSE(manager->isRequiredWindow(player));
}

TEST_F(RequiredWindowTest, WithoutAModalRunAChildOfThePlayerWindowIsNotRequired) {
  load(5.0);
  const auto player = openPlayerWindow();
  const auto child = openWindow("NSWindow");
  player->addChildWindow(child);
  present(player, kHostModeEmbedded);
  EXPECT_FALSE(manager->isRequiredWindow(child));
}

TEST_F(RequiredWindowTest, DuringAModalRunOfAnotherWindowThePlayerWindowIsNotRequired) {
  load(5.0);
  const auto player = openPlayerWindow();
  present(openWindow("NSWindow"), kHostModeEmbedded);
  NSApp->beginModalRun(openWindow("NSWindow"));
  EXPECT_FALSE(manager->isRequiredWindow(player));
}

TEST_F(RequiredWindowTest, DuringItsModalRunThePlayerWindowIsRequired) {
  load(5.0);
  const auto player = openPlayerWindow();
  present(player, kHostModeModalWindow);
  ASSERT_TRUE(controller()->view()->window()->isModalPanel());
  EXPECT_TRUE(manager->isRequiredWindow(player));
}

TEST_F(RequiredWindowTest, DuringItsModalRunAChildOfThePlayerWindowIsRequired) {
  load(5.0);
  const auto player = openPlayerWindow();
  const auto child = openWindow("NSWindow");
  const auto grandchild = openWindow("NSWindow");
  player->addChildWindow(child);
  child->addChildWindow(grandchild);
  present(player, kHostModeModalWindow);
  EXPECT_TRUE(manager->isRequiredWindow(child));
  EXPECT_FALSE(manager->isRequiredWindow(grandchild));
}

TEST_F(RequiredWindowTest, DuringItsModalRunASheetOfThePlayerWindowIsNotRequired) {
  load(5.0);
  const auto player = openPlayerWindowWithContentViewController();
  const auto sheet = named("NSViewController");
  player->contentViewController()->presentViewControllerAsSheet(sheet);
  present(player, kHostModeModalWindow);
  ASSERT_EQ(sheet->view()->window()->sheetParent(), player);
  EXPECT_FALSE(manager->isRequiredWindow(sheet->view()->window()));
}

TEST_F(RequiredWindowTest, DuringItsModalRunAWindowOfAnotherClassIsNotRequired) {
  load(5.0);
  present(openPlayerWindow(), kHostModeModalWindow);
  for (const std::string_view name : {"PlayerWindowSubclass", "playerwindow", "Player", ""}) {
    const auto window = openWindow(name);
    const auto child = openWindow("NSWindow");
    window->addChildWindow(child);
    EXPECT_FALSE(manager->isRequiredWindow(window)) << name;
    EXPECT_FALSE(manager->isRequiredWindow(child)) << name;
  }
}

TEST_F(RequiredWindowTest, AWindowWithAChildOfTheLaunchScreensClassIsRequired) {
  load(5.0);
  EXPECT_TRUE(
      manager->isRequiredWindow(openWindowWithChildren({named("LaunchScreenViewController")})));
  EXPECT_TRUE(manager->isRequiredWindow(
      openWindowWithChildren({named("NSViewController"), named("LaunchScreenViewController")})));
}

TEST_F(RequiredWindowTest, DuringAModalRunTheChildrenAreAlsoCompared) {
  load(5.0);
  present(openPlayerWindow(), kHostModeModalWindow);
  EXPECT_TRUE(
      manager->isRequiredWindow(openWindowWithChildren({named("LaunchScreenViewController")})));
}

TEST_F(RequiredWindowTest, AWindowWithAChildOfASubclassIsNotRequired) {
  load(5.0);
  EXPECT_FALSE(manager->isRequiredWindow(
      openWindowWithChildren({named("LaunchScreenViewControllerSubclass")})));
}

TEST_F(RequiredWindowTest, TheContentViewControllerItselfIsNotCompared) {
  load(5.0);
  const auto window = openWindow("NSWindow");
  window->setContentViewController(named("LaunchScreenViewController"));
  EXPECT_FALSE(manager->isRequiredWindow(window));
}

TEST_F(RequiredWindowTest, ChildrenAreComparedWithTheClassOfTheCurrentController) {
  loadHostController(5.0);
  EXPECT_TRUE(manager->isRequiredWindow(openWindowWithChildren({named("HostController")})));
  EXPECT_FALSE(
      manager->isRequiredWindow(openWindowWithChildren({named("LaunchScreenViewController")})));
}

TEST_F(RequiredWindowTest, WithoutAControllerNoChildMatches) {
  EXPECT_FALSE(
      manager->isRequiredWindow(openWindowWithChildren({named("LaunchScreenViewController")})));
}

TEST_F(RequiredWindowTest, AnEmptyClassNameMatchesNoChild) {
  const auto window = openWindowWithChildren({named("")});
  EXPECT_FALSE(manager->isRequiredWindow(window)) << "without a controller";
  configuration().setExpirationTimeInterval(5);
  const auto unnamed = make<UnnamedController>();
  configuration().setViewController(unnamed);
  load(5.0);
  ASSERT_EQ(manager->content()->viewController(), unnamed);
  EXPECT_FALSE(manager->isRequiredWindow(window)) << "with a controller whose class name is empty";
}

TEST_F(RequiredWindowTest, TheFirstMatchEndsTheSearch) {
  load(5.0);
  const auto before = make<CountedController>("NSViewController");
  const auto after = make<CountedController>("NSViewController");
  EXPECT_TRUE(manager->isRequiredWindow(
      openWindowWithChildren({before, named("LaunchScreenViewController"), after})));
  EXPECT_EQ(before->calls, 1);
  EXPECT_EQ(after->calls, 0);
}

// The temporary content

class TemporaryItemTest : public LaunchScreenTest {
 protected:
  // Opens a window with a child that does not match. The child counts its comparisons.
  static std::pair<Strong<NSWindow>, Strong<CountedController>> openCountedWindow() {
    auto counted = make<CountedController>("NSViewController");
    return {openWindowWithChildren({counted}), counted};
  }
};

TEST_F(TemporaryItemTest, WithoutACoverItIsNotRequired) {
  EXPECT_FALSE(manager->tempItemRequired());
  openPlayerWindowWithContentViewController();
  EXPECT_FALSE(manager->tempItemRequired());
  load(5.0);
  EXPECT_FALSE(manager->tempItemRequired());
}

TEST_F(TemporaryItemTest, WithoutAnApplicationItIsNotRequired) {
  NSApplication::stop();
  EXPECT_FALSE(manager->tempItemRequired());
}

TEST_F(TemporaryItemTest, WhileTheMainContentIsPresentedItIsRequired) {
  for (const std::int32_t mode : {kHostModeSheet, kHostModeModalWindow}) {
    load(5.0);
    present(openPlayerWindowWithContentViewController(), mode);
    ASSERT_NE(controller()->presentingViewController(), nullptr);
    EXPECT_TRUE(manager->tempItemRequired()) << "host mode " << mode;
    controller()->deactivate();
    controller()->dismissViewController(controller());
    EXPECT_FALSE(manager->tempItemRequired()) << "host mode " << mode;
  }
}

TEST_F(TemporaryItemTest, WhileAnotherContentIsPresentedItIsNotRequired) {
  load(5.0);
  const auto other = LaunchScreenContent::init();
  other->setContentRequest(makeRequest("e", 5));
  manager->setTempContent(other);
  other->presentForWindowWithPresentationMode(openPlayerWindowWithContentViewController(),
                                              kHostModeSheet);
  ASSERT_NE(other->viewController()->presentingViewController(), nullptr);
  EXPECT_FALSE(manager->tempItemRequired());
}

TEST_F(TemporaryItemTest, WithACoverInTheKeyWindowItIsRequired) {
  load(5.0);
  present(openPlayerWindowWithContentViewController(), kHostModeEmbedded);
  EXPECT_TRUE(manager->tempItemRequired());
}

TEST_F(TemporaryItemTest, WithACoverInABackgroundWindowItIsRequired) {
  load(5.0);
  const auto window = openPlayerWindowWithContentViewController();
  present(window, kHostModeEmbedded);
  const auto front = openPlayerWindow();
  ASSERT_NE(NSApp->keyWindow(), window);
  ASSERT_NE(NSApp->mainWindow(), window);
  ASSERT_EQ(NSApp->orderedWindows().back(), window);
  EXPECT_TRUE(manager->tempItemRequired());
  window->miniaturize();
  EXPECT_FALSE(manager->tempItemRequired()) << "a window off the screen is not looked at";
}

TEST_F(TemporaryItemTest, TheContentOfTheCoverDoesNotMatter) {
  openWindowWithChildren({named("NSViewController"), named("LaunchScreenViewController")});
  EXPECT_TRUE(manager->tempItemRequired());
}

TEST_F(TemporaryItemTest, AnEmbeddedControllerOfAnotherClassDoesNotCount) {
  loadHostController(5.0);
  openWindowWithChildren({named("LaunchScreenViewControllerSubclass"), named("HostController")});
  EXPECT_FALSE(manager->tempItemRequired());
}

TEST_F(TemporaryItemTest, ACoverWithoutAParentDoesNotCount) {
  load(5.0);
  present(openPlayerWindow(), kHostModeEmbedded);
  ASSERT_NE(controller()->view()->window(), nullptr);
  EXPECT_FALSE(manager->tempItemRequired());
}

TEST_F(TemporaryItemTest, TheKeyWindowIsSearchedFirstAndAgainAmongTheOthers) {
  const auto [main, inMain] = openCountedWindow();
  main->makeKeyWindow();
  const auto [front, inFront] = openCountedWindow();
  const auto presenter = named("NSViewController");
  presenter->presentViewControllerAsModalWindow(named("NSViewController"));
  const auto key = NSApp->keyWindow();
  const auto inKey = make<CountedController>("NSViewController");
  key->contentViewController()->addChildViewController(inKey);
  ASSERT_EQ(NSApp->mainWindow(), main);
  ASSERT_NE(key, main);

  EXPECT_FALSE(manager->tempItemRequired());
  EXPECT_EQ(inKey->calls, 2);
  EXPECT_EQ(inMain->calls, 1) << "with a key window the main window is not searched";
  EXPECT_EQ(inFront->calls, 1);
}

TEST_F(TemporaryItemTest, WithoutAKeyWindowTheMainWindowIsSearchedFirst) {
  const auto [main, inMain] = openCountedWindow();
  main->makeKeyWindow();
  const auto [front, inFront] = openCountedWindow();
  platform.windowSystem().userMovesFocusAway();
  ASSERT_EQ(NSApp->keyWindow(), nullptr);
  ASSERT_EQ(NSApp->mainWindow(), main);
  EXPECT_FALSE(manager->tempItemRequired());
  EXPECT_EQ(inMain->calls, 2);
  EXPECT_EQ(inFront->calls, 1);
}

TEST_F(TemporaryItemTest, WindowsAreSearchedFrontToBackUntilOneMatches) {
  const auto [back, inBack] = openCountedWindow();
  openWindowWithChildren({named("LaunchScreenViewController")});
  const auto [front, inFront] = openCountedWindow();
  ASSERT_EQ(NSApp->keyWindow(), nullptr);
  ASSERT_EQ(NSApp->mainWindow(), nullptr);
  EXPECT_TRUE(manager->tempItemRequired());
  EXPECT_EQ(inFront->calls, 1);
  EXPECT_EQ(inBack->calls, 0);
}

TEST_F(TemporaryItemTest, APresentedMainContentIsFoundBeforeAnyWindowIsSearched) {
  const auto [window, counted] = openCountedWindow();
  load(5.0);
  counted->calls = 0;
  present(window, kHostModeSheet);
  EXPECT_TRUE(manager->tempItemRequired());
  EXPECT_EQ(counted->calls, 0);
}

}  // namespace
}  // namespace vel::test
