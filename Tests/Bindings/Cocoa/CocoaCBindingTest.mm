// The C interface in an AppKit host: the launch screen covers a window of the host.
#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "Bindings/C/vel_launch_screen.h"
#include "Tests/Support/Cocoa/AppKitDisplay.h"

// The library recognises the host's main window by this class name.
@interface PlayerWindow : NSWindow
@end
@implementation PlayerWindow
@end

// The content of the host's window. It is green everywhere.
@interface GreenView : NSView
@end
@implementation GreenView
- (void)drawRect:(NSRect)dirtyRect {
  [[NSColor colorWithDeviceRed:0 green:1 blue:0 alpha:1] set];
  NSRectFill([self bounds]);
}
@end

// Checks a condition sixty times per second. Stops the native loop (`[NSApp run]` or the loop of a
// modal dialog) when the condition is true or the deadline has passed. To stop the loop,
// `checkCondition:` posts an event. The free AppKit of GNUstep notices this event only when
// something else wakes the loop. Therefore `timer` fires until the loop has stopped.
@interface LoopStopper : NSObject {
 @public
  const std::function<bool()>* condition;
  vel::Nanoseconds deadline;
  NSTimer* timer;
  BOOL isConditionTrue;
}
@end
@implementation LoopStopper
- (void)startInMode:(NSString*)mode {
  timer = [NSTimer timerWithTimeInterval:1 / 60.0
                                  target:self
                                selector:@selector(checkCondition:)
                                userInfo:nil
                                 repeats:YES];
  [[NSRunLoop currentRunLoop] addTimer:timer forMode:mode];
}
- (void)checkCondition:(NSTimer*)firedTimer {
  isConditionTrue = (*condition)() ? YES : NO;
  if (!isConditionTrue && vel::test::steadyNow() < deadline) {
    return;
  }
  if ([NSApp modalWindow] != nil) {
    [NSApp stopModal];
  } else {
    [NSApp stop:nil];
  }
  // The loop stops after the next event.
  [NSApp postEvent:[NSEvent otherEventWithType:NSApplicationDefined
                                      location:NSZeroPoint
                                 modifierFlags:0
                                     timestamp:0
                                  windowNumber:0
                                       context:nil
                                       subtype:0
                                         data1:0
                                         data2:0]
           atStart:NO];
}
@end

namespace vel::test {
namespace {

using testing::Contains;

constexpr std::uint32_t kGreen = 0x00FF00;

/// A host with an application and a window of its own. `calls` has a line for each callback
/// except log_line, with the values of its arguments. "ended 1" means that the time was used up.
/// The line for record_event is only the event.
class CocoaCBinding : public testing::Test {
 protected:
  CocoaCBinding() {
    [NSApplication sharedApplication];
    window = [[PlayerWindow alloc] initWithContentRect:NSMakeRect(200, 200, 400, 300)
                                             styleMask:15
                                               backing:NSBackingStoreBuffered
                                                 defer:NO];
    [window setReleasedWhenClosed:NO];
    [window
        setContentView:[[[GreenView alloc] initWithFrame:NSMakeRect(0, 0, 400, 300)] autorelease]];
    [window makeKeyAndOrderFront:nil];
    callbacks.user_data = this;
    callbacks.may_disappear = [](void* test) {
      recordCall(test, "may_disappear");
      return 1;
    };
    callbacks.did_disappear = [](void* test) { recordCall(test, "did_disappear"); };
    callbacks.record_event = [](void* test, const char* event) { recordCall(test, event); };
    callbacks.controls_kept = [](void* test, std::uint32_t controls) {
      recordCall(test, "controls_kept " + std::to_string(controls));
    };
    callbacks.ended = [](void* test, VelEndReason reason) {
      recordCall(test, "ended " + std::to_string(reason));
    };
    callbacks.log_line = [](void* /*test*/, const char* /*line*/) {};
  }
  ~CocoaCBinding() override {
    vel_destroy(&screen);
    [window close];
    [window release];
    [pool release];
  }
  void SetUp() override {
    ASSERT_TRUE(runUntil([this] { return isAll(window, kGreen); }));
    ASSERT_TRUE(runUntil([this] { return display.giveFocus(window); }));
  }

  static void recordCall(void* test, const std::string& call) {
    static_cast<CocoaCBinding*>(test)->calls.push_back(call);
  }

  static void destroyScreen(void* test) { vel_destroy(&static_cast<CocoaCBinding*>(test)->screen); }

  VelStatus create(const VelHostWindow& hostWindow, bool hasContentController = false) {
    VelCreateOptions options = VEL_CREATE_OPTIONS_INIT;
    options.display = "cocoa";
    options.host_window = &hostWindow;
    options.callbacks = &callbacks;
    options.content_controller = hasContentController ? 1 : 0;
    return vel_create(&options, &screen);
  }
  /// Creates a launch screen over `window` and presents it. In mode "skip", the host may dismiss it
  /// at any time. Null means mode "forced".
  void present(double seconds, VelPresentation presentation = VEL_PRESENT_EMBEDDED,
               const char* mode = nullptr) {
    VelHostWindow hostWindow = VEL_HOST_WINDOW_INIT;
    hostWindow.ns_window = window;
    // A sheet requires a content controller.
    ASSERT_EQ(create(hostWindow, presentation == VEL_PRESENT_SHEET), VEL_OK) << vel_last_error();
    VelRequest request = VEL_REQUEST_INIT;
    request.mode = mode;
    request.event = "launch_end";
    request.seconds = seconds;
    ASSERT_EQ(vel_request(screen, &request), VEL_OK) << vel_last_error();
    ASSERT_EQ(vel_present(screen, presentation), VEL_OK) << vel_last_error();
  }

  /// Runs `[NSApp run]` until the condition is true. Returns false after `kTimeout`.
  static bool runUntil(const std::function<bool()>& condition) {
    LoopStopper* const stopper = makeStopper(condition);
    [stopper startInMode: ::NSDefaultRunLoopMode];
    [NSApp run];
    [stopper->timer invalidate];
    return stopper->isConditionTrue == YES;
  }
  /// Runs a modal dialog of the host until the condition is true. Returns false after `kTimeout`.
  static bool runDialogUntil(NSWindow* dialog, const std::function<bool()>& condition) {
    LoopStopper* const stopper = makeStopper(condition);
    [stopper startInMode: ::NSModalPanelRunLoopMode];
    [NSApp runModalForWindow:dialog];
    [stopper->timer invalidate];
    return stopper->isConditionTrue == YES;
  }
  static LoopStopper* makeStopper(const std::function<bool()>& condition) {
    LoopStopper* const stopper = [[[LoopStopper alloc] init] autorelease];
    stopper->condition = &condition;
    stopper->deadline = steadyNow() + kTimeout;
    return stopper;
  }
  static NSWindow* openSmallWindow() {
    NSWindow* const small = [[NSWindow alloc] initWithContentRect:NSMakeRect(700, 300, 200, 150)
                                                        styleMask:1
                                                          backing:NSBackingStoreBuffered
                                                            defer:NO];
    [small setReleasedWhenClosed:NO];
    [small makeKeyAndOrderFront:nil];
    return small;
  }

  /// True if all pixels of the window on the screen have this colour.
  [[nodiscard]] bool isAll(NSWindow* shownWindow, std::uint32_t color) const {
    if (shownWindow == nil) {
      return false;
    }
    const xcb_window_t xWindow = AppKitDisplay::idOf(shownWindow);
    return display.client.isViewable(xWindow) && display.client.screenPicture(xWindow).isAll(color);
  }
  /// Saves the screen around the window, for manual inspection.
  void savePicture(const std::string& name) const {
    const PixelRect area = display.client.areaOnScreen(AppKitDisplay::idOf(window));
    display.client.screenPicture({area.x - 20, area.y - 40, area.width + 40, area.height + 60})
        .save(name);
  }
  /// The visible window that the library has opened; nil if there is none.
  static NSWindow* windowOfLibrary() {
    for (NSUInteger i = 0; i < [[NSApp windows] count]; ++i) {
      NSWindow* const candidate = [[NSApp windows] objectAtIndex:i];
      if ([NSStringFromClass([candidate class]) isEqualToString:@"VelWindow"] &&
          [candidate isVisible]) {
        return candidate;
      }
    }
    return nil;
  }
  [[nodiscard]] bool hasCall(const std::string& call) const {
    return std::ranges::find(calls, call) != calls.end();
  }
  [[nodiscard]] VelPause pauseReason() const {
    VelPause reason = VEL_PAUSE_NOT_UP;
    vel_pause_reason(screen, &reason);
    return reason;
  }

  AppKitDisplay& display = AppKitDisplay::shared();
  NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
  PlayerWindow* window = nil;
  VelCallbacks callbacks = VEL_CALLBACKS_INIT;
  VelLaunchScreen* screen = nullptr;
  std::vector<std::string> calls;
};

// Windows

TEST_F(CocoaCBinding, AWindowNumberSelectsTheWindowToCover) {
  VelHostWindow hostWindow = VEL_HOST_WINDOW_INIT;
  hostWindow.ns_window_number = [window windowNumber];
  EXPECT_EQ(create(hostWindow), VEL_OK) << vel_last_error();
}

TEST_F(CocoaCBinding, APointerThatIsNotAWindowIsABadWindow) {
  int other = 0;
  VelHostWindow hostWindow = VEL_HOST_WINDOW_INIT;
  hostWindow.ns_window = &other;
  EXPECT_EQ(create(hostWindow), VEL_BAD_WINDOW);
  EXPECT_STREQ(vel_last_error(), "the AppKit window: the process has no such window");
}

TEST_F(CocoaCBinding, AnUnknownWindowNumberIsABadWindow) {
  VelHostWindow hostWindow = VEL_HOST_WINDOW_INIT;
  hostWindow.ns_window_number = 1'000'000;
  EXPECT_EQ(create(hostWindow), VEL_BAD_WINDOW);
}

TEST_F(CocoaCBinding, AWindowOfAnotherWindowSystemIsABadWindow) {
  VelHostWindow hostWindow = VEL_HOST_WINDOW_INIT;
  hostWindow.x11_window = AppKitDisplay::idOf(window);
  EXPECT_EQ(create(hostWindow), VEL_BAD_WINDOW);
  EXPECT_STREQ(vel_last_error(), "the window is not an AppKit window");
}

// Presentations

TEST_F(CocoaCBinding, TheHostsWindowIsWhiteUntilTheLaunchScreenEnds) {
  const NSUInteger subviewCount = [[[window contentView] subviews] count];
  savePicture("cocoa-before");
  present(1);
  EXPECT_TRUE(eventually([this] { return isAll(window, kWhite); }));
  savePicture("cocoa-covered");
  EXPECT_TRUE(runUntil([this] { return hasCall("ended 1") && hasCall("launch_end"); }));
  EXPECT_THAT(calls, Contains("did_disappear"));
  EXPECT_TRUE(runUntil([this] { return isAll(window, kGreen); }));
  savePicture("cocoa-after");
  EXPECT_EQ([[[window contentView] subviews] count], subviewCount);
}

TEST_F(CocoaCBinding, AModalWindowIsWhiteUntilTheLaunchScreenEnds) {
  present(1.5, VEL_PRESENT_MODAL);
  EXPECT_TRUE(runUntil([this] { return isAll(windowOfLibrary(), kWhite); }));
  savePicture("cocoa-modal");
  EXPECT_TRUE(runUntil([this] { return hasCall("ended 1") && hasCall("launch_end"); }));
  EXPECT_EQ(windowOfLibrary(), nil);
  EXPECT_TRUE(runUntil([this] { return isAll(window, kGreen); }));
}

TEST_F(CocoaCBinding, ASheetIsWhiteUntilTheLaunchScreenEnds) {
  present(1.5, VEL_PRESENT_SHEET);
  EXPECT_TRUE(runUntil([this] { return isAll(windowOfLibrary(), kWhite); }));
  savePicture("cocoa-sheet");
  EXPECT_TRUE(runUntil([this] { return hasCall("ended 1") && hasCall("launch_end"); }));
  EXPECT_EQ(windowOfLibrary(), nil);
  EXPECT_TRUE(runUntil([this] { return isAll(window, kGreen); }));
}

TEST_F(CocoaCBinding, TheHostIsNotifiedOfDisabledControlsThatTheWindowManagerStillOffers) {
  present(60);
  // 6: the close and miniaturise controls.
  EXPECT_TRUE(runUntil([this] { return hasCall("controls_kept 6"); }));
}

TEST_F(CocoaCBinding, TheCountdownPausesWhileAnotherWindowIsKey) {
  present(60);
  ASSERT_TRUE(runUntil([this] { return pauseReason() == VEL_PAUSE_NONE; }));
  NSWindow* const small = openSmallWindow();
  EXPECT_TRUE(runUntil([this] { return pauseReason() == VEL_PAUSE_NOT_IN_FRONT; }));
  [window makeKeyAndOrderFront:nil];
  EXPECT_TRUE(runUntil([this] { return pauseReason() == VEL_PAUSE_NONE; }));
  [small close];
  [small release];
}

TEST_F(CocoaCBinding, AnotherKeyWindowPausesTheCountdownEvenIfTheHostsWindowOpensAfterPresent) {
  [window orderOut:nil];
  present(60);
  [window makeKeyAndOrderFront:nil];
  ASSERT_TRUE(
      runUntil([this] { return display.giveFocus(window) && pauseReason() == VEL_PAUSE_NONE; }));
  NSWindow* const small = openSmallWindow();
  EXPECT_TRUE(runUntil([this] { return pauseReason() == VEL_PAUSE_NOT_IN_FRONT; }));
  [small close];
  [small release];
}

TEST_F(CocoaCBinding, TheCountdownPausesWhileTheHostsWindowIsNotOnTheScreen) {
  present(60);
  ASSERT_TRUE(runUntil([this] { return pauseReason() == VEL_PAUSE_NONE; }));
  [window orderOut:nil];
  EXPECT_TRUE(runUntil([this] { return pauseReason() == VEL_PAUSE_NOT_IN_FRONT; }));
  [window makeKeyAndOrderFront:nil];
  EXPECT_TRUE(
      runUntil([this] { return display.giveFocus(window) && pauseReason() == VEL_PAUSE_NONE; }));
}

// Loops

TEST_F(CocoaCBinding, AModalDialogOfTheHostDoesNotStopTheLibrary) {
  present(60);
  ASSERT_TRUE(runUntil([this] { return pauseReason() == VEL_PAUSE_NONE; }));
  NSWindow* const dialog = openSmallWindow();
  EXPECT_TRUE(runDialogUntil(dialog, [this] { return pauseReason() == VEL_PAUSE_NOT_IN_FRONT; }));
  [dialog close];
  [dialog release];
}

TEST_F(CocoaCBinding, ACallOnAnotherThreadWakesTheNativeLoop) {
  present(60, VEL_PRESENT_EMBEDDED, "skip");
  ASSERT_TRUE(runUntil([this] { return pauseReason() == VEL_PAUSE_NONE; }));
  // While the countdown is paused, only the call on the other thread gives the library work.
  NSWindow* const small = openSmallWindow();
  ASSERT_TRUE(runUntil([this] { return pauseReason() == VEL_PAUSE_NOT_IN_FRONT; }));
  std::thread([this] { vel_dismiss(screen); }).join();
  EXPECT_TRUE(runUntil([this] { return hasCall("may_disappear"); }));
  [small close];
  [small release];
}

TEST_F(CocoaCBinding, AHostCanCallPumpInsteadOfRunningTheNativeLoop) {
  present(1);
  EXPECT_TRUE(eventually([this] {
    vel_pump(screen, nullptr);
    return hasCall("ended 1") && hasCall("launch_end");
  }));
}

TEST_F(CocoaCBinding, ACallbackInTheNativeLoopCanDestroyTheLaunchScreen) {
  callbacks.did_disappear = [](void* test) {
    recordCall(test, "did_disappear");
    destroyScreen(test);
  };
  for (int run = 0; run < 2; ++run) {
    calls.clear();
    present(0.5);
    EXPECT_TRUE(runUntil([this] { return hasCall("did_disappear"); }));
    EXPECT_EQ(screen, nullptr);
    EXPECT_TRUE(runUntil([this] { return isAll(window, kGreen); }));
  }
}

}  // namespace
}  // namespace vel::test
