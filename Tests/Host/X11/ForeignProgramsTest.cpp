// Runs `launchscreen show` over the windows of programs that are not part of this project.
#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <sstream>

#include "Tests/Host/X11/ShowProcess.h"
#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::UnorderedElementsAre;

struct Program {
  const char* name;
  std::vector<std::string> command;
  const char* windowName;  // the window's class or title
  Manager manager;         // the window manager or the Wayland compositor

  [[nodiscard]] std::string testName() const {
    return name + (manager == Manager::None ? "" : "Under" + nameOf(manager));
  }
  friend void PrintTo(const Program& program, std::ostream* out) { *out << program.testName(); }
};

std::string hexadecimal(xcb_window_t window) {
  std::ostringstream text;
  text << "0x" << std::hex << window;
  return text.str();
}

int nonWhitePixelCount(const Picture& picture) {
  const auto colors = picture.colors();
  const auto white = colors.find(kWhite);
  return picture.width * picture.height - (white == colors.end() ? 0 : white->second);
}

class ForeignPrograms : public X11Test, public testing::WithParamInterface<Program> {
 protected:
  ForeignPrograms() : X11Test(GetParam().manager) {}

  void SetUp() override {
    program = server.start(GetParam().command);
    ASSERT_TRUE(eventually([this] {
      window = client.findWindow(GetParam().windowName);
      return window != 0 && client.isViewable(window) && isDrawn();
    }));
  }
  bool isDrawn() { return client.screenPicture(window).colors().size() > 1; }
  /// Saves a picture of the window and of its frame, which the window manager draws.
  void savePicture(const std::string& moment) {
    PixelRect area = client.areaOnScreen(window);
    const auto extents = client.numbers(window, "_NET_FRAME_EXTENTS");  // left, right, top, bottom
    if (extents.size() == 4) {
      area.x -= static_cast<int>(extents[0]);
      area.y -= static_cast<int>(extents[2]);
      area.width += static_cast<int>(extents[0] + extents[1]);
      area.height += static_cast<int>(extents[2] + extents[3]);
    }
    client.screenPicture(area).save(std::string(GetParam().name) + "-" + moment);
  }
  /// Returns the properties that the program has set on its window.
  std::map<std::string, std::optional<Property>> programProperties() {
    std::map<std::string, std::optional<Property>> properties;
    for (const char* name :
         {"_MOTIF_WM_HINTS", "WM_NORMAL_HINTS", "WM_HINTS", "WM_PROTOCOLS", "WM_CLASS", "WM_NAME",
          "WM_ICON_NAME", "WM_TRANSIENT_FOR", "_NET_WM_NAME", "_NET_WM_WINDOW_TYPE"}) {
      properties[name] = client.property(window, name);
    }
    return properties;
  }
  /// Returns `programProperties` without the obsolete position and size in WM_NORMAL_HINTS. Some
  /// programs update these fields whenever their window is resized.
  std::map<std::string, std::optional<Property>> programPropertiesWithoutGeometry() {
    auto properties = programProperties();
    auto& hints = properties.at("WM_NORMAL_HINTS");
    std::vector<std::uint32_t> numbers = hints.value().numbers();
    std::fill_n(numbers.begin() + 1, 4, 0);
    hints = Property::ofNumbers(hints->type, numbers);
    return properties;
  }
  /// Returns which of three actions the window manager allows: close, miniaturise and resize.
  std::vector<std::string> allowedActions() {
    std::vector<std::string> actions = client.atomNames(window, "_NET_WM_ALLOWED_ACTIONS");
    std::erase_if(actions, [](const std::string& action) {
      return action != "_NET_WM_ACTION_CLOSE" && action != "_NET_WM_ACTION_MINIMIZE" &&
             action != "_NET_WM_ACTION_RESIZE";
    });
    return actions;
  }
  /// Returns true if the window is white except for the spinner in its middle.
  bool isCovered() {
    const Picture picture = client.screenPicture(window);
    const PixelRect bounds = picture.boundsOfPixelsExcept(kWhite);
    // The spinner is 32 pixels wide and high. In a window of odd size, the spinner may begin one
    // pixel after `left` or `top`.
    const int left = picture.width / 2 - 16;
    const int top = picture.height / 2 - 16;
    return bounds.width > 0 && isNoLargerThanSpinner(bounds) && bounds.x >= left &&
           bounds.x + bounds.width <= left + 33 && bounds.y >= top &&
           bounds.y + bounds.height <= top + 33;
  }
  /// Returns true if the window is white except for the spinner. Immediately after a change of
  /// size, the spinner may still be in the middle of the previous size, or may be missing.
  bool isProgramHidden() {
    return isNoLargerThanSpinner(client.screenPicture(window).boundsOfPixelsExcept(kWhite));
  }
  /// The spinner is 32 pixels wide and high. One more pixel is tolerated.
  static bool isNoLargerThanSpinner(PixelRect bounds) {
    return bounds.width <= 33 && bounds.height <= 33;
  }
  /// Clicks the close button of Metacity's frame.
  void clickClose() {
    const PixelRect frame = client.areaOnScreen(window);
    client.click(frame.x + frame.width - 18, frame.y - 18);
  }
  void resizeBy(int width, int height) {
    PixelRect frame = client.areaOnScreen(window);
    frame.width += width;
    frame.height += height;
    client.configure(window, frame);
  }
  bool isAtLeastAsLargeAs(PixelRect frame) {
    const PixelRect currentFrame = client.areaOnScreen(window);
    return currentFrame.width >= frame.width && currentFrame.height >= frame.height;
  }

  Process program;
  xcb_window_t window = 0;
};

class ForeignProgramsWithManager : public ForeignPrograms {};

TEST_P(ForeignProgramsWithManager, WindowsAreCoveredAndRestored) {
  ASSERT_TRUE(eventually([this] { return allowedActions().size() == 3; }));
  const auto propertiesBefore = programProperties();
  const auto childrenBefore = client.children(window);
  const int nonWhitePixelCountBefore = nonWhitePixelCount(client.screenPicture(window));
  const PixelRect frameBefore = client.areaOnScreen(window);
  savePicture("before");

  ShowProcess show(server, {"--window", hexadecimal(window), "--mode", "skip", "--duration", "600",
                            "--content-controller", "--indicator"});
  ASSERT_TRUE(show.waitForOutput("covered")) << show.output();
  EXPECT_TRUE(eventually([this] { return isCovered(); }));
  EXPECT_TRUE(show.waitForOutput("controls kept by the window manager: resize")) << show.output();
  EXPECT_THAT(allowedActions(), ElementsAre("_NET_WM_ACTION_RESIZE"));
  EXPECT_EQ(programProperties()["WM_NORMAL_HINTS"], propertiesBefore.at("WM_NORMAL_HINTS"));
  EXPECT_TRUE(isCovered());
  savePicture("covered");
  clickClose();  // must have no effect while the window is covered

  show.pressEnter();
  EXPECT_EQ(show.wait(), 0) << show.output();
  EXPECT_THAT(show.output(), HasSubstr("controls restored"));
  EXPECT_THAT(show.output(), Not(HasSubstr("X11:")));  // no X error has been logged
  EXPECT_TRUE(eventually([this] { return allowedActions().size() == 3; }));
  EXPECT_EQ(programProperties(), propertiesBefore);
  EXPECT_EQ(client.children(window), childrenBefore);
  EXPECT_EQ(client.areaOnScreen(window), frameBefore);
  EXPECT_TRUE(eventually([&] {
    return nonWhitePixelCount(client.screenPicture(window)) > nonWhitePixelCountBefore / 2;
  }));
  savePicture("after");

  // The program still runs and reacts.
  ASSERT_TRUE(program.isRunning());
  resizeBy(120, 90);
  // Metacity rounds the size of a terminal down to whole characters.
  EXPECT_TRUE(eventually([&] {
    return isAtLeastAsLargeAs({0, 0, frameBefore.width + 100, frameBefore.height + 70}) &&
           isDrawn();
  }));
  clickClose();
  EXPECT_TRUE(eventually([this] { return !program.isRunning(); }));
}

TEST_P(ForeignPrograms, WindowsCanBeResizedWhileCovered) {
  const auto propertiesBefore = programPropertiesWithoutGeometry();
  ShowProcess show(server, {"--window", std::to_string(window), "--mode", "skip", "--duration",
                            "600", "--indicator"});
  ASSERT_TRUE(show.waitForOutput(featuresOf(GetParam().manager).publishesAllowedActions
                                     ? "controls kept"
                                     : "controls removed"))
      << show.output();
  ASSERT_TRUE(eventually([this] { return isCovered(); }));
  const PixelRect frame = client.areaOnScreen(window);
  resizeBy(150, 100);
  // Without a compositor, the launch screen must fill the new size immediately. A compositor shows
  // the new size later.
  if (compositor == nullptr) {
    EXPECT_TRUE(isProgramHidden());
  }
  EXPECT_TRUE(eventually([&] {
    return isAtLeastAsLargeAs({0, 0, frame.width + 150, frame.height + 100});
  }));
  EXPECT_TRUE(eventually([this] { return isCovered(); }));
  show.pressEnter();
  EXPECT_EQ(show.wait(), 0) << show.output();
  EXPECT_EQ(programPropertiesWithoutGeometry(), propertiesBefore);
  EXPECT_TRUE(isAtLeastAsLargeAs({0, 0, frame.width + 150, frame.height + 100}));
  EXPECT_TRUE(eventually([this] { return isDrawn(); }));
  EXPECT_TRUE(program.isRunning());
}

std::vector<Program> programsUnder(Manager manager) {
  return {{"xclock", {"xclock", "-geometry", "300x300+120+120"}, "XClock", manager},
          {"xterm", {"xterm", "-geometry", "70x20+120+120"}, "XTerm", manager},
          {"glxgears", {"glxgears", "-geometry", "300x300+120+120"}, "glxgears", manager},
          {"xmahjongg", {"/usr/games/xmahjongg"}, "XMahjongg", manager}};
}

// Returns all programs without a window manager, and xterm and glxgears under each compositor.
std::vector<Program> programsWithoutManagerAndUnderCompositors() {
  std::vector<Program> programs = programsUnder(Manager::None);
  for (const Manager compositor : withXwayland({})) {
    const std::vector<Program> all = programsUnder(compositor);
    programs.insert(programs.end(), {all[1], all[2]});
  }
  return programs;
}

std::string nameOfProgram(const testing::TestParamInfo<Program>& testInfo) {
  return testInfo.param.testName();
}

INSTANTIATE_TEST_SUITE_P(X11Show, ForeignProgramsWithManager,
                         testing::ValuesIn(programsUnder(Manager::Metacity)), nameOfProgram);
INSTANTIATE_TEST_SUITE_P(X11Show, ForeignPrograms,
                         testing::ValuesIn(programsWithoutManagerAndUnderCompositors()),
                         nameOfProgram);

}  // namespace
}  // namespace vel::test
