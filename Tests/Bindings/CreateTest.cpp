// vel_create, calls with an invalid handle, the status texts and the version.
#include <gmock/gmock.h>

#include <cstring>
#include <set>
#include <string>

#include "HostInterfaces/MetricsCenter.h"
#include "Platform/AppKit/NSApplication.h"
#include "Tests/Bindings/CScreen.h"
#include "Tests/Support/VirtualPlatform.h"

namespace vel::test {
namespace {

class CreateTest : public testing::Test {
 protected:
  ~CreateTest() override { vel_destroy(&screen); }

  VelLaunchScreen* screen = nullptr;
};

/// `Structure` as a later version of the library might declare it: with one more member.
template <class Structure>
struct LaterStructure {
  Structure knownMembers;
  std::uint64_t unknownMember = 0;
};

TEST(StatusTest, EveryStatusHasADifferentText) {
  std::set<std::string> texts;
  for (int status = VEL_OK; status <= VEL_BUSY; ++status) {
    const char* const text = vel_status_text(static_cast<VelStatus>(status));
    ASSERT_NE(text, nullptr);
    EXPECT_STRNE(text, "unknown status");
    EXPECT_TRUE(texts.insert(text).second) << text;
  }
  EXPECT_STREQ(vel_status_text(static_cast<VelStatus>(1000)), "unknown status");
  EXPECT_STREQ(vel_status_text(static_cast<VelStatus>(-1)), "unknown status");
}

TEST(VersionTest, TheCFunctionsReturnTheVersionOfTheLibrary) {
  EXPECT_EQ(vel_version_number(), VelLaunchScreenVersionNumber);
  EXPECT_STREQ(vel_version_string(), VelLaunchScreenVersionString);
}

TEST_F(CreateTest, CreateOpensAWindowOf1280By720ByDefault) {
  VelCreateOptions options = virtualTimeOptions();
  ASSERT_EQ(vel_create(&options, &screen), VEL_OK) << vel_last_error();
  ASSERT_NE(screen, nullptr);
  ASSERT_EQ(NSApp->orderedWindows().size(), 1u);
  EXPECT_EQ(NSApp->keyWindow()->frame().size, (CGSize{1280, 720}));
  EXPECT_EQ(NSApp->keyWindow()->className(), "PlayerWindow");
  EXPECT_EQ(NSApp->keyWindow()->title(), "");
  EXPECT_EQ(NSApp->keyWindow()->contentViewController(), nullptr);
}

TEST_F(CreateTest, OptionsDefineTitleSizeAndContentController) {
  VelCreateOptions options = virtualTimeOptions();
  options.title = "A game";
  options.width = 640;
  options.height = 1;
  options.content_controller = 1;
  ASSERT_EQ(vel_create(&options, &screen), VEL_OK) << vel_last_error();
  EXPECT_EQ(NSApp->keyWindow()->frame().size, (CGSize{640, 1}));
  EXPECT_EQ(NSApp->keyWindow()->title(), "A game");
  EXPECT_NE(NSApp->keyWindow()->contentViewController(), nullptr);
}

TEST_F(CreateTest, CreateRefusesANullPointerForTheHandle) {
  const VelCreateOptions options = virtualTimeOptions();
  EXPECT_EQ(vel_create(&options, nullptr), VEL_INVALID_ARGUMENT);
  EXPECT_STRNE(vel_last_error(), "");
  EXPECT_EQ(NSApp, nullptr);
}

TEST_F(CreateTest, CreateSetsTheHandleToNullIfItFails) {
  screen = reinterpret_cast<VelLaunchScreen*>(77);
  EXPECT_EQ(vel_create(nullptr, &screen), VEL_INVALID_ARGUMENT);
  EXPECT_EQ(screen, nullptr);
}

TEST_F(CreateTest, ATooSmallStructureSizeIsRefused) {
  VelCreateOptions options = virtualTimeOptions();
  for (const std::size_t size : {std::size_t{0}, sizeof(VelCreateOptions) - 1}) {
    options.size = size;
    EXPECT_EQ(vel_create(&options, &screen), VEL_INVALID_ARGUMENT);
  }
}

TEST_F(CreateTest, ALargerStructureIsAcceptedIfItsUnknownMembersAreZero) {
  LaterStructure<VelCreateOptions> options{virtualTimeOptions()};
  options.knownMembers.size = sizeof options;
  options.unknownMember = 1;
  EXPECT_EQ(vel_create(&options.knownMembers, &screen), VEL_INVALID_ARGUMENT);
  options.unknownMember = 0;
  EXPECT_EQ(vel_create(&options.knownMembers, &screen), VEL_OK) << vel_last_error();
}

TEST_F(CreateTest, AHugeStructureSizeIsRefused) {
  VelCreateOptions options = virtualTimeOptions();
  options.size = static_cast<std::size_t>(-1);
  EXPECT_EQ(vel_create(&options, &screen), VEL_INVALID_ARGUMENT);
}

TEST_F(CreateTest, CreateChecksTheSizeAndTheUnknownMembersOfTheCallbacks) {
  LaterStructure<VelCallbacks> callbacks{VEL_CALLBACKS_INIT};
  const VelCreateOptions options = virtualTimeOptions(&callbacks.knownMembers);
  callbacks.knownMembers.size = sizeof(VelCallbacks) - 1;
  EXPECT_EQ(vel_create(&options, &screen), VEL_INVALID_ARGUMENT);
  callbacks.knownMembers.size = sizeof callbacks;
  callbacks.unknownMember = 1;
  EXPECT_EQ(vel_create(&options, &screen), VEL_INVALID_ARGUMENT);
  callbacks.unknownMember = 0;
  EXPECT_EQ(vel_create(&options, &screen), VEL_OK) << vel_last_error();
}

TEST_F(CreateTest, TheCallbacksStructureIsCopied) {
  CHost host;
  VelCallbacks callbacks = host.callbacks();
  const VelCreateOptions options = virtualTimeOptions(&callbacks);
  ASSERT_EQ(vel_create(&options, &screen), VEL_OK);
  std::memset(&callbacks, 0xff, sizeof callbacks);
  const VelRequest request = makeRequest("launch_end", 1);
  EXPECT_EQ(vel_request(screen, &request), VEL_OK);
  // 3 is VEL_STATE_LOADED.
  EXPECT_EQ(host.callbackLines, (std::vector<std::string>{"state_changed 3"}));
}

TEST_F(CreateTest, AnUnknownClockAndAnInvalidWindowSizeAreRefused) {
  VelCreateOptions options = virtualTimeOptions();
  options.time = static_cast<VelTime>(2);
  EXPECT_EQ(vel_create(&options, &screen), VEL_INVALID_ARGUMENT);
  for (const double side : {-1.0, 0.5, 32768.0, 1e300, std::numeric_limits<double>::quiet_NaN()}) {
    options = virtualTimeOptions();
    options.width = side;
    EXPECT_EQ(vel_create(&options, &screen), VEL_INVALID_ARGUMENT) << side;
    options = virtualTimeOptions();
    options.height = side;
    EXPECT_EQ(vel_create(&options, &screen), VEL_INVALID_ARGUMENT) << side;
  }
}

TEST_F(CreateTest, AnUnsupportedDisplayIsRefused) {
  VelCreateOptions options = virtualTimeOptions();
  options.display = "punched cards";
  EXPECT_EQ(vel_create(&options, &screen), VEL_NO_DISPLAY);
  EXPECT_NE(std::string(vel_last_error()).find("punched cards"), std::string::npos);
  EXPECT_EQ(NSApp, nullptr);
}

TEST_F(CreateTest, AnX11DisplayThatCannotBeOpenedIsRefused) {
  VelCreateOptions options = virtualTimeOptions();
  options.display = "x11";
  options.display_name = ":2147483647";
  EXPECT_EQ(vel_create(&options, &screen), VEL_NO_DISPLAY);
  EXPECT_STRNE(vel_last_error(), "");
  EXPECT_EQ(NSApp, nullptr);
}

TEST_F(CreateTest, TheCocoaDisplayIsRefusedIfItIsNotBuiltIn) {
  VelCreateOptions options = virtualTimeOptions();
  options.display = "cocoa";
  EXPECT_EQ(vel_create(&options, &screen), VEL_NO_DISPLAY);
  EXPECT_STREQ(vel_last_error(), "the Cocoa display is not built in");
  EXPECT_EQ(NSApp, nullptr);
}

TEST_F(CreateTest, ALongErrorIsTruncated) {
  const std::string name(10'000, 'x');
  VelCreateOptions options = virtualTimeOptions();
  options.display = name.c_str();
  EXPECT_EQ(vel_create(&options, &screen), VEL_NO_DISPLAY);
  EXPECT_GT(std::strlen(vel_last_error()), 100u);
  EXPECT_LT(std::strlen(vel_last_error()), 1'000u);
}

TEST_F(CreateTest, CreateSucceedsAfterItHasRefusedABadWindow) {
  VelCreateOptions options = virtualTimeOptions();
  options.window = 4711;
  EXPECT_EQ(vel_create(&options, &screen), VEL_BAD_WINDOW);
  EXPECT_STRNE(vel_last_error(), "");
  EXPECT_EQ(screen, nullptr);
  EXPECT_EQ(NSApp, nullptr);
  options.window = 0;
  EXPECT_EQ(vel_create(&options, &screen), VEL_OK);
}

TEST_F(CreateTest, AProcessHasOneLaunchScreenAtATime) {
  const VelCreateOptions options = virtualTimeOptions();
  ASSERT_EQ(vel_create(&options, &screen), VEL_OK);
  VelLaunchScreen* secondScreen = nullptr;
  EXPECT_EQ(vel_create(&options, &secondScreen), VEL_ALREADY_EXISTS);
  EXPECT_EQ(secondScreen, nullptr);
  ASSERT_EQ(vel_destroy(&screen), VEL_OK);
  EXPECT_EQ(vel_create(&options, &screen), VEL_OK);
}

TEST_F(CreateTest, CreateIsRefusedWhileTheHostHasItsOwnNSApplication) {
  const VirtualPlatform platform;
  const Strong<NSApplication> application = NSApp;
  const VelCreateOptions options = virtualTimeOptions();
  EXPECT_EQ(vel_create(&options, &screen), VEL_ALREADY_EXISTS);
  EXPECT_EQ(NSApp, application);
}

TEST_F(CreateTest, CreateClearsTheLastErrorIfItSucceeds) {
  EXPECT_EQ(vel_create(nullptr, &screen), VEL_INVALID_ARGUMENT);
  EXPECT_STRNE(vel_last_error(), "");
  const VelCreateOptions options = virtualTimeOptions();
  EXPECT_EQ(vel_create(&options, &screen), VEL_OK);
  EXPECT_STREQ(vel_last_error(), "");
}

TEST_F(CreateTest, DestroySetsTheHandleToNullAndRefusesANullHandle) {
  const VelCreateOptions options = virtualTimeOptions();
  ASSERT_EQ(vel_create(&options, &screen), VEL_OK);
  EXPECT_EQ(vel_destroy(&screen), VEL_OK);
  EXPECT_EQ(screen, nullptr);
  EXPECT_EQ(vel_destroy(&screen), VEL_NOT_ALIVE);
  EXPECT_EQ(vel_destroy(nullptr), VEL_INVALID_ARGUMENT);
}

// Calls every function that takes a handle, and returns their results.
std::vector<VelStatus> callAllFunctions(VelLaunchScreen* screen) {
  const VelRequest request = makeRequest("launch_end", 1);
  int integerResult = 0;
  double seconds = 0;
  VelPause reason = VEL_PAUSE_NONE;
  VelState state = VEL_STATE_NONE;
  VelLaunchScreen* handleCopy = screen;
  return {vel_request(screen, &request),
          vel_request_json(screen, "{}", 2),
          vel_present(screen, VEL_PRESENT_EMBEDDED),
          vel_dismiss(screen),
          vel_pump(screen, &integerResult),
          vel_run(screen, 0),
          vel_poll_descriptor(screen, &integerResult),
          vel_next_deadline(screen, &seconds),
          vel_seconds_left(screen, &seconds),
          vel_is_up(screen, &integerResult),
          vel_pause_reason(screen, &reason),
          vel_state(screen, &state),
          vel_resized(screen, 1, 1),
          vel_destroy(&handleCopy)};
}

TEST_F(CreateTest, NoFunctionAcceptsANullHandle) {
  EXPECT_THAT(callAllFunctions(nullptr), testing::Each(VEL_NOT_ALIVE));
  const VelCreateOptions options = virtualTimeOptions();
  ASSERT_EQ(vel_create(&options, &screen), VEL_OK);
  EXPECT_THAT(callAllFunctions(nullptr), testing::Each(VEL_NOT_ALIVE));
}

TEST_F(CreateTest, NoFunctionAcceptsACopyOfADestroyedHandle) {
  const VelCreateOptions options = virtualTimeOptions();
  ASSERT_EQ(vel_create(&options, &screen), VEL_OK);
  VelLaunchScreen* const staleHandle = screen;
  ASSERT_EQ(vel_destroy(&screen), VEL_OK);
  EXPECT_THAT(callAllFunctions(staleHandle), testing::Each(VEL_NOT_ALIVE));
  ASSERT_EQ(vel_create(&options, &screen), VEL_OK);
  EXPECT_NE(screen, staleHandle);
  EXPECT_THAT(callAllFunctions(staleHandle), testing::Each(VEL_NOT_ALIVE));
  EXPECT_STRNE(vel_last_error(), "");
}

TEST_F(CreateTest, NoFunctionAcceptsAPointerThatIsNotAHandle) {
  const VelCreateOptions options = virtualTimeOptions();
  ASSERT_EQ(vel_create(&options, &screen), VEL_OK);
  EXPECT_THAT(callAllFunctions(reinterpret_cast<VelLaunchScreen*>(&screen)),
              testing::Each(VEL_NOT_ALIVE));
}

TEST_F(CreateTest, OnlyPumpAcceptsANullPointerForItsResult) {
  const VelCreateOptions options = virtualTimeOptions();
  ASSERT_EQ(vel_create(&options, &screen), VEL_OK);
  EXPECT_EQ(vel_poll_descriptor(screen, nullptr), VEL_INVALID_ARGUMENT);
  EXPECT_EQ(vel_next_deadline(screen, nullptr), VEL_INVALID_ARGUMENT);
  EXPECT_EQ(vel_seconds_left(screen, nullptr), VEL_INVALID_ARGUMENT);
  EXPECT_EQ(vel_is_up(screen, nullptr), VEL_INVALID_ARGUMENT);
  EXPECT_EQ(vel_pause_reason(screen, nullptr), VEL_INVALID_ARGUMENT);
  EXPECT_EQ(vel_state(screen, nullptr), VEL_INVALID_ARGUMENT);
  EXPECT_EQ(vel_pump(screen, nullptr), VEL_OK);
}

}  // namespace
}  // namespace vel::test
