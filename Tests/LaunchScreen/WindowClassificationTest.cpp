// Which windows are required, and when a request needs a temporary content. A window is required if
// the user can see the launch screen while the window is key. A request that arrives while a launch
// screen is shown gets a temporary content instead of the main content.
#include <utility>

#include "Tests/Support/LaunchScreenHost.h"

namespace vel::test {
namespace {

/// A view controller that counts the calls of `className`.
class CountingController final
    : public Class<CountingController, "CountingController", NSViewController> {
 public:
  explicit CountingController(std::string_view name) : name_(name) {}
  [[nodiscard]] std::string_view className() const override {
    ++callCount;
    return name_;
  }
  mutable int callCount = 0;

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

// Opens a window whose content view controller has these child view controllers.
Strong<NSWindow> openWindowWithChildren(std::initializer_list<Strong<NSViewController>> children,
                                        std::string_view className = "NSWindow") {
  const auto window = openWindow(className);
  const auto contentViewController = make<NamedViewController>("HostViewController");
  for (const auto& child : children) {
    contentViewController->addChildViewController(child);
  }
  window->setContentViewController(contentViewController);
  return window;
}

Strong<NSViewController> makeNamed(std::string_view name) {
  return make<NamedViewController>(name);
}

// Required windows

class RequiredWindowTest : public LaunchScreenTest {};

TEST_F(RequiredWindowTest, ANullWindowIsNotRequired) {
  EXPECT_FALSE(manager->isRequiredWindow(nullptr));
  load(5.0);
  EXPECT_FALSE(manager->isRequiredWindow(nullptr)) << "while nothing is presented";
  present(openPlayerWindow(), kHostModeModalWindow);
  EXPECT_FALSE(manager->isRequiredWindow(nullptr)) << "during a modal session";
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

TEST_F(RequiredWindowTest, AWindowThatDoesNotShowTheLaunchScreenIsNotRequired) {
  load(5.0);
  present(openPlayerWindow(), kHostModeEmbedded);
  EXPECT_FALSE(manager->isRequiredWindow(openWindow("NSWindow")));
  EXPECT_FALSE(manager->isRequiredWindow(openWindowWithChildren({})));
}

TEST_F(RequiredWindowTest, ThePlayerWindowUnderASheetIsNotRequired) {
  load(5.0);
  const auto player = openPlayerWindowWithContentViewController();
  present(player, kHostModeSheet);
  ASSERT_NE(controller()->view()->window(), player);
  EXPECT_FALSE(manager->isRequiredWindow(player));
}

TEST_F(RequiredWindowTest, WithoutAModalSessionAChildWindowOfThePlayerWindowIsNotRequired) {
  load(5.0);
  const auto player = openPlayerWindow();
  const auto child = openWindow("NSWindow");
  player->addChildWindow(child);
  present(player, kHostModeEmbedded);
  EXPECT_FALSE(manager->isRequiredWindow(child));
}

TEST_F(RequiredWindowTest, DuringAModalSessionOfAnotherWindowThePlayerWindowIsNotRequired) {
  load(5.0);
  const auto player = openPlayerWindow();
  present(openWindow("NSWindow"), kHostModeEmbedded);
  NSApp->beginModalSession(openWindow("NSWindow"));
  EXPECT_FALSE(manager->isRequiredWindow(player));
}

TEST_F(RequiredWindowTest, DuringTheLaunchScreensModalSessionThePlayerWindowIsRequired) {
  load(5.0);
  const auto player = openPlayerWindow();
  present(player, kHostModeModalWindow);
  ASSERT_TRUE(controller()->view()->window()->isModalPanel());
  EXPECT_TRUE(manager->isRequiredWindow(player));
}

TEST_F(RequiredWindowTest,
       DuringTheLaunchScreensModalSessionADirectChildWindowOfThePlayerWindowIsRequired) {
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

TEST_F(RequiredWindowTest, DuringTheLaunchScreensModalSessionASheetOfThePlayerWindowIsNotRequired) {
  load(5.0);
  const auto player = openPlayerWindowWithContentViewController();
  const auto sheet = makeNamed("NSViewController");
  player->contentViewController()->presentViewControllerAsSheet(sheet);
  present(player, kHostModeModalWindow);
  ASSERT_EQ(sheet->view()->window()->sheetParent(), player);
  EXPECT_FALSE(manager->isRequiredWindow(sheet->view()->window()));
}

TEST_F(RequiredWindowTest,
       DuringTheLaunchScreensModalSessionANonPlayerWindowAndItsChildAreNotRequired) {
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

TEST_F(RequiredWindowTest, AWindowWithAChildControllerOfTheLaunchScreensClassIsRequired) {
  load(5.0);
  EXPECT_TRUE(
      manager->isRequiredWindow(openWindowWithChildren({makeNamed("LaunchScreenViewController")})));
  EXPECT_TRUE(manager->isRequiredWindow(openWindowWithChildren(
      {makeNamed("NSViewController"), makeNamed("LaunchScreenViewController")})));
}

TEST_F(RequiredWindowTest,
       DuringAModalSessionAWindowWithAChildControllerOfTheLaunchScreensClassIsRequired) {
  load(5.0);
  present(openPlayerWindow(), kHostModeModalWindow);
  EXPECT_TRUE(
      manager->isRequiredWindow(openWindowWithChildren({makeNamed("LaunchScreenViewController")})));
}

TEST_F(RequiredWindowTest, AWindowWithAChildControllerOfASubclassIsNotRequired) {
  load(5.0);
  EXPECT_FALSE(manager->isRequiredWindow(
      openWindowWithChildren({makeNamed("LaunchScreenViewControllerSubclass")})));
}

TEST_F(RequiredWindowTest, AWindowWhoseContentViewControllerHasTheLaunchScreensClassIsNotRequired) {
  load(5.0);
  const auto window = openWindow("NSWindow");
  window->setContentViewController(makeNamed("LaunchScreenViewController"));
  EXPECT_FALSE(manager->isRequiredWindow(window));
}

TEST_F(RequiredWindowTest, ChildControllersAreComparedWithTheClassOfTheMainContentsController) {
  loadHostController(5.0);
  EXPECT_TRUE(manager->isRequiredWindow(openWindowWithChildren({makeNamed("HostController")})));
  EXPECT_FALSE(
      manager->isRequiredWindow(openWindowWithChildren({makeNamed("LaunchScreenViewController")})));
}

TEST_F(RequiredWindowTest, IfTheMainContentHasNoControllerNoChildControllerMatches) {
  EXPECT_FALSE(
      manager->isRequiredWindow(openWindowWithChildren({makeNamed("LaunchScreenViewController")})));
}

TEST_F(RequiredWindowTest, AnEmptyClassNameMatchesNoChildController) {
  const auto window = openWindowWithChildren({makeNamed("")});
  EXPECT_FALSE(manager->isRequiredWindow(window)) << "without a controller";
  configuration().setExpirationTimeInterval(5);
  const auto unnamedController = make<UnnamedController>();
  configuration().setViewController(unnamedController);
  load(5.0);
  ASSERT_EQ(manager->content()->viewController(), unnamedController);
  EXPECT_FALSE(manager->isRequiredWindow(window)) << "with a controller whose class name is empty";
}

TEST_F(RequiredWindowTest, TheFirstChildControllerThatMatchesEndsTheSearch) {
  load(5.0);
  const auto controllerBeforeMatch = make<CountingController>("NSViewController");
  const auto controllerAfterMatch = make<CountingController>("NSViewController");
  EXPECT_TRUE(manager->isRequiredWindow(openWindowWithChildren(
      {controllerBeforeMatch, makeNamed("LaunchScreenViewController"), controllerAfterMatch})));
  EXPECT_EQ(controllerBeforeMatch->callCount, 1);
  EXPECT_EQ(controllerAfterMatch->callCount, 0);
}

// The temporary content

class TemporaryItemTest : public LaunchScreenTest {
 protected:
  // Opens a window with a child view controller that is not a launch screen. The child counts how
  // often its class name is read.
  static std::pair<Strong<NSWindow>, Strong<CountingController>> openWindowWithCountingChild() {
    auto countingController = make<CountingController>("NSViewController");
    return {openWindowWithChildren({countingController}), countingController};
  }
};

TEST_F(TemporaryItemTest, WithoutACoverNoTemporaryContentIsRequired) {
  EXPECT_FALSE(manager->tempItemRequired());
  openPlayerWindowWithContentViewController();
  EXPECT_FALSE(manager->tempItemRequired());
  load(5.0);
  EXPECT_FALSE(manager->tempItemRequired());
}

TEST_F(TemporaryItemTest, WithoutAnApplicationNoTemporaryContentIsRequired) {
  NSApplication::stop();
  EXPECT_FALSE(manager->tempItemRequired());
}

TEST_F(TemporaryItemTest, ATemporaryContentIsRequiredWhileTheMainContentIsPresented) {
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

TEST_F(TemporaryItemTest, APresentedTemporaryContentRequiresNoOtherTemporaryContent) {
  load(5.0);
  const auto temporaryContent = LaunchScreenContent::init();
  temporaryContent->setContentRequest(makeRequest("e", 5));
  manager->setTempContent(temporaryContent);
  temporaryContent->presentForWindowWithPresentationMode(
      openPlayerWindowWithContentViewController(), kHostModeSheet);
  ASSERT_NE(temporaryContent->viewController()->presentingViewController(), nullptr);
  EXPECT_FALSE(manager->tempItemRequired());
}

TEST_F(TemporaryItemTest, ATemporaryContentIsRequiredWithACoverInTheKeyWindow) {
  load(5.0);
  present(openPlayerWindowWithContentViewController(), kHostModeEmbedded);
  EXPECT_TRUE(manager->tempItemRequired());
}

TEST_F(TemporaryItemTest, ATemporaryContentIsRequiredWithACoverInABackgroundWindow) {
  load(5.0);
  const auto window = openPlayerWindowWithContentViewController();
  present(window, kHostModeEmbedded);
  const auto frontWindow = openPlayerWindow();
  ASSERT_NE(NSApp->keyWindow(), window);
  ASSERT_NE(NSApp->mainWindow(), window);
  ASSERT_EQ(NSApp->orderedWindows().back(), window);
  EXPECT_TRUE(manager->tempItemRequired());
  window->miniaturize();
  EXPECT_FALSE(manager->tempItemRequired()) << "a window that is not on the screen is not searched";
}

TEST_F(TemporaryItemTest, ATemporaryContentIsRequiredWithACoverThatTheMainContentDoesNotOwn) {
  openWindowWithChildren({makeNamed("NSViewController"), makeNamed("LaunchScreenViewController")});
  EXPECT_TRUE(manager->tempItemRequired());
}

TEST_F(TemporaryItemTest, OnlyAChildOfClassLaunchScreenViewControllerCountsAsACover) {
  loadHostController(5.0);
  openWindowWithChildren(
      {makeNamed("LaunchScreenViewControllerSubclass"), makeNamed("HostController")});
  EXPECT_FALSE(manager->tempItemRequired());
}

TEST_F(TemporaryItemTest, ACoverWithoutAParentViewControllerRequiresNoTemporaryContent) {
  load(5.0);
  present(openPlayerWindow(), kHostModeEmbedded);
  ASSERT_NE(controller()->view()->window(), nullptr);
  EXPECT_FALSE(manager->tempItemRequired());
}

TEST_F(TemporaryItemTest, TheKeyWindowIsSearchedTwiceAndTheOtherWindowsOnce) {
  const auto [mainWindow, mainController] = openWindowWithCountingChild();
  mainWindow->makeKeyWindow();
  const auto [frontWindow, frontController] = openWindowWithCountingChild();
  const auto presenter = makeNamed("NSViewController");
  presenter->presentViewControllerAsModalWindow(makeNamed("NSViewController"));
  const auto keyWindow = NSApp->keyWindow();
  const auto keyController = make<CountingController>("NSViewController");
  keyWindow->contentViewController()->addChildViewController(keyController);
  ASSERT_EQ(NSApp->mainWindow(), mainWindow);
  ASSERT_NE(keyWindow, mainWindow);

  EXPECT_FALSE(manager->tempItemRequired());
  EXPECT_EQ(keyController->callCount, 2);
  EXPECT_EQ(mainController->callCount, 1)
      << "only as one of the ordered windows, because there is a key window";
  EXPECT_EQ(frontController->callCount, 1);
}

TEST_F(TemporaryItemTest, WithoutAKeyWindowTheMainWindowIsSearchedTwice) {
  const auto [mainWindow, mainController] = openWindowWithCountingChild();
  mainWindow->makeKeyWindow();
  const auto [frontWindow, frontController] = openWindowWithCountingChild();
  platform.windowSystem().userMovesFocusAway();
  ASSERT_EQ(NSApp->keyWindow(), nullptr);
  ASSERT_EQ(NSApp->mainWindow(), mainWindow);
  EXPECT_FALSE(manager->tempItemRequired());
  EXPECT_EQ(mainController->callCount, 2);
  EXPECT_EQ(frontController->callCount, 1);
}

TEST_F(TemporaryItemTest, WindowsAreSearchedFrontToBackUntilOneMatches) {
  const auto [backWindow, backController] = openWindowWithCountingChild();
  openWindowWithChildren({makeNamed("LaunchScreenViewController")});
  const auto [frontWindow, frontController] = openWindowWithCountingChild();
  ASSERT_EQ(NSApp->keyWindow(), nullptr);
  ASSERT_EQ(NSApp->mainWindow(), nullptr);
  EXPECT_TRUE(manager->tempItemRequired());
  EXPECT_EQ(frontController->callCount, 1);
  EXPECT_EQ(backController->callCount, 0);
}

TEST_F(TemporaryItemTest, APresentedMainContentIsFoundBeforeAnyWindowIsSearched) {
  const auto [window, countingController] = openWindowWithCountingChild();
  load(5.0);
  countingController->callCount = 0;
  present(window, kHostModeSheet);
  EXPECT_TRUE(manager->tempItemRequired());
  EXPECT_EQ(countingController->callCount, 0);
}

}  // namespace
}  // namespace vel::test
