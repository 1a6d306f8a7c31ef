// Tests `isRequiredWindow` and `tempItemRequired` of LaunchScreenManager.
//
// The countdown of the launch screen pauses when a required window stops being the key window.
//
// The main content of the manager is the launch screen. If `tempItemRequired` returns true, a new
// request does not change the main content. The request gets a temporary content.
//
// In the names of the tests, a cover is a launch screen that is shown. A player window is a window
// of class `PlayerWindow`.
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

Strong<NSViewController> makeNamedController(std::string_view name) {
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

TEST_F(RequiredWindowTest, TheWindowThatShowsTheLaunchScreenIsRequiredInEveryMode) {
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

TEST_F(RequiredWindowTest, TheWindowOfAnEmbeddedCoverIsRequired) {
  // The window has no child view controllers, so it is required only because it shows the cover.
  load(5.0);
  const auto window = openPlayerWindow();
  present(window, kHostModeEmbedded);
  EXPECT_TRUE(manager->isRequiredWindow(window));
}

TEST_F(RequiredWindowTest, ThePlayerWindowIsNotRequiredWhileNothingIsPresented) {
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

TEST_F(RequiredWindowTest, AChildWindowOfThePlayerWindowIsNotRequiredWithoutAModalSession) {
  load(5.0);
  const auto player = openPlayerWindow();
  const auto child = openWindow("NSWindow");
  player->addChildWindow(child);
  present(player, kHostModeEmbedded);
  EXPECT_FALSE(manager->isRequiredWindow(child));
}

TEST_F(RequiredWindowTest, ThePlayerWindowIsNotRequiredWhileAWindowWithoutTheCoverIsModal) {
  load(5.0);
  const auto player = openPlayerWindow();
  present(openWindow("NSWindow"), kHostModeEmbedded);
  NSApp->beginModalSession(openWindow("NSWindow"));
  EXPECT_FALSE(manager->isRequiredWindow(player));
}

TEST_F(RequiredWindowTest, ThePlayerWindowIsRequiredDuringTheLaunchScreensModalSession) {
  load(5.0);
  const auto player = openPlayerWindow();
  present(player, kHostModeModalWindow);
  ASSERT_TRUE(controller()->view()->window()->isModalPanel());
  EXPECT_TRUE(manager->isRequiredWindow(player));
}

TEST_F(RequiredWindowTest,
       ADirectChildWindowOfThePlayerWindowIsRequiredDuringTheLaunchScreensModalSession) {
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

TEST_F(RequiredWindowTest, ASheetOfThePlayerWindowIsNotRequiredDuringTheLaunchScreensModalSession) {
  load(5.0);
  const auto player = openPlayerWindowWithContentViewController();
  const auto sheet = makeNamedController("NSViewController");
  player->contentViewController()->presentViewControllerAsSheet(sheet);
  present(player, kHostModeModalWindow);
  ASSERT_EQ(sheet->view()->window()->sheetParent(), player);
  EXPECT_FALSE(manager->isRequiredWindow(sheet->view()->window()));
}

TEST_F(RequiredWindowTest,
       AWindowOfAnotherClassAndItsChildAreNotRequiredDuringTheLaunchScreensModalSession) {
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

TEST_F(RequiredWindowTest, AWindowWithALaunchScreenViewControllerAsChildControllerIsRequired) {
  load(5.0);
  EXPECT_TRUE(manager->isRequiredWindow(
      openWindowWithChildren({makeNamedController("LaunchScreenViewController")})));
  EXPECT_TRUE(manager->isRequiredWindow(
      openWindowWithChildren({makeNamedController("NSViewController"),
                              makeNamedController("LaunchScreenViewController")})));
}

TEST_F(RequiredWindowTest,
       AWindowWithALaunchScreenViewControllerAsChildControllerIsRequiredDuringAModalSession) {
  load(5.0);
  present(openPlayerWindow(), kHostModeModalWindow);
  EXPECT_TRUE(manager->isRequiredWindow(
      openWindowWithChildren({makeNamedController("LaunchScreenViewController")})));
}

TEST_F(RequiredWindowTest,
       AWindowWithALaunchScreenViewControllerSubclassAsChildControllerIsNotRequired) {
  load(5.0);
  EXPECT_FALSE(manager->isRequiredWindow(
      openWindowWithChildren({makeNamedController("LaunchScreenViewControllerSubclass")})));
}

TEST_F(RequiredWindowTest,
       AWindowWithALaunchScreenViewControllerAsContentViewControllerIsNotRequired) {
  load(5.0);
  const auto window = openWindow("NSWindow");
  window->setContentViewController(makeNamedController("LaunchScreenViewController"));
  EXPECT_FALSE(manager->isRequiredWindow(window));
}

TEST_F(RequiredWindowTest,
       AWindowIsRequiredIfAChildControllerHasTheClassOfTheMainContentsController) {
  loadHostController(5.0);
  EXPECT_TRUE(
      manager->isRequiredWindow(openWindowWithChildren({makeNamedController("HostController")})));
  EXPECT_FALSE(manager->isRequiredWindow(
      openWindowWithChildren({makeNamedController("LaunchScreenViewController")})));
}

TEST_F(RequiredWindowTest,
       AWindowWithAChildControllerIsNotRequiredIfTheMainContentHasNoController) {
  EXPECT_FALSE(manager->isRequiredWindow(
      openWindowWithChildren({makeNamedController("LaunchScreenViewController")})));
}

TEST_F(RequiredWindowTest, AChildControllerWithoutAClassNameDoesNotMakeItsWindowRequired) {
  const auto window = openWindowWithChildren({makeNamedController("")});
  EXPECT_FALSE(manager->isRequiredWindow(window)) << "without a controller";
  configuration().setExpirationTimeInterval(5);
  const auto unnamedController = make<UnnamedController>();
  configuration().setViewController(unnamedController);
  load(5.0);
  ASSERT_EQ(manager->content()->viewController(), unnamedController);
  EXPECT_FALSE(manager->isRequiredWindow(window)) << "with a controller whose class name is empty";
}

TEST_F(RequiredWindowTest, TheSearchStopsAtTheFirstLaunchScreenViewController) {
  load(5.0);
  const auto controllerBeforeMatch = make<CountingController>("NSViewController");
  const auto controllerAfterMatch = make<CountingController>("NSViewController");
  EXPECT_TRUE(manager->isRequiredWindow(openWindowWithChildren(
      {controllerBeforeMatch, makeNamedController("LaunchScreenViewController"),
       controllerAfterMatch})));
  EXPECT_EQ(controllerBeforeMatch->callCount, 1);
  EXPECT_EQ(controllerAfterMatch->callCount, 0);
}

// The temporary content

class TemporaryContentTest : public LaunchScreenTest {
 protected:
  // Opens a window with a child view controller that is not a launch screen.
  static std::pair<Strong<NSWindow>, Strong<CountingController>> openWindowWithCountingChild() {
    auto countingController = make<CountingController>("NSViewController");
    return {openWindowWithChildren({countingController}), countingController};
  }
};

TEST_F(TemporaryContentTest, NoTemporaryContentIsRequiredWithoutACover) {
  EXPECT_FALSE(manager->tempItemRequired());
  openPlayerWindowWithContentViewController();
  EXPECT_FALSE(manager->tempItemRequired());
  load(5.0);
  EXPECT_FALSE(manager->tempItemRequired());
}

TEST_F(TemporaryContentTest, NoTemporaryContentIsRequiredWithoutAnApplication) {
  NSApplication::stop();
  EXPECT_FALSE(manager->tempItemRequired());
}

TEST_F(TemporaryContentTest, ATemporaryContentIsRequiredWhileTheMainContentIsPresented) {
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

TEST_F(TemporaryContentTest, NoTemporaryContentIsRequiredWhileATemporaryContentIsPresented) {
  load(5.0);
  const auto temporaryContent = LaunchScreenContent::init();
  temporaryContent->setContentRequest(makeRequest("e", 5));
  manager->setTempContent(temporaryContent);
  temporaryContent->presentForWindowWithPresentationMode(
      openPlayerWindowWithContentViewController(), kHostModeSheet);
  ASSERT_NE(temporaryContent->viewController()->presentingViewController(), nullptr);
  EXPECT_FALSE(manager->tempItemRequired());
}

TEST_F(TemporaryContentTest, ATemporaryContentIsRequiredWithACoverInTheKeyWindow) {
  load(5.0);
  present(openPlayerWindowWithContentViewController(), kHostModeEmbedded);
  EXPECT_TRUE(manager->tempItemRequired());
}

TEST_F(TemporaryContentTest, ATemporaryContentIsRequiredWithACoverInABackgroundWindow) {
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

TEST_F(TemporaryContentTest, ATemporaryContentIsRequiredWithACoverThatTheMainContentDoesNotOwn) {
  openWindowWithChildren(
      {makeNamedController("NSViewController"), makeNamedController("LaunchScreenViewController")});
  EXPECT_TRUE(manager->tempItemRequired());
}

TEST_F(TemporaryContentTest, OnlyAChildOfClassLaunchScreenViewControllerCountsAsACover) {
  loadHostController(5.0);
  openWindowWithChildren({makeNamedController("LaunchScreenViewControllerSubclass"),
                          makeNamedController("HostController")});
  EXPECT_FALSE(manager->tempItemRequired());
}

TEST_F(TemporaryContentTest, ACoverWithoutAParentViewControllerRequiresNoTemporaryContent) {
  load(5.0);
  present(openPlayerWindow(), kHostModeEmbedded);
  ASSERT_NE(controller()->view()->window(), nullptr);
  EXPECT_FALSE(manager->tempItemRequired());
}

// `tempItemRequired` searches windows for a child controller of class LaunchScreenViewController.
// It first searches the key window. If no window is key, it first searches the main window. It then
// searches all ordered windows, front to back.

TEST_F(TemporaryContentTest, TheKeyWindowIsSearchedTwiceAndTheOtherWindowsOnce) {
  const auto [mainWindow, mainController] = openWindowWithCountingChild();
  mainWindow->makeKeyWindow();
  const auto [frontWindow, frontController] = openWindowWithCountingChild();
  const auto presenter = makeNamedController("NSViewController");
  presenter->presentViewControllerAsModalWindow(makeNamedController("NSViewController"));
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

TEST_F(TemporaryContentTest, TheMainWindowIsSearchedTwiceWithoutAKeyWindow) {
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

TEST_F(TemporaryContentTest, WindowsAreSearchedFrontToBackUntilOneMatches) {
  const auto [backWindow, backController] = openWindowWithCountingChild();
  openWindowWithChildren({makeNamedController("LaunchScreenViewController")});
  const auto [frontWindow, frontController] = openWindowWithCountingChild();
  ASSERT_EQ(NSApp->keyWindow(), nullptr);
  ASSERT_EQ(NSApp->mainWindow(), nullptr);
  EXPECT_TRUE(manager->tempItemRequired());
  EXPECT_EQ(frontController->callCount, 1);
  EXPECT_EQ(backController->callCount, 0);
}

TEST_F(TemporaryContentTest, APresentedMainContentIsFoundBeforeAnyWindowIsSearched) {
  const auto [window, countingController] = openWindowWithCountingChild();
  load(5.0);
  countingController->callCount = 0;  // `load` searched the window too
  present(window, kHostModeSheet);
  EXPECT_TRUE(manager->tempItemRequired());
  EXPECT_EQ(countingController->callCount, 0);
}

}  // namespace
}  // namespace vel::test
