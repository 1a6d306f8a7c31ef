// Tests the AppKit back end on a window of the host. `setScene` shows the cover, a view over the
// content of the window. A separate client of the X server reads the screen.
#include <gmock/gmock.h>

#include <algorithm>

#include "Platform/WindowSystem/Cocoa/CocoaWindowSystem.h"
#include "Tests/Support/Cocoa/AppKitDisplay.h"

// The green content of the host's window. Counts the mouse presses that it receives.
@interface GreenContentView : NSView {
 @public
  int presses;
}
@end
@implementation GreenContentView
- (void)drawRect:(NSRect)dirtyRect {
  [[NSColor colorWithDeviceRed:0 green:1 blue:0 alpha:1] set];
  NSRectFill([self bounds]);
}
- (void)mouseDown:(NSEvent*)event {
  ++presses;
}
- (BOOL)acceptsFirstMouse:(NSEvent*)event {
  return YES;
}
@end

// A content view that forwards each added view to its first subview, as NSBox does.
@interface ForwardingContentView : NSView {
 @public
  NSView* inner;  // not retained
}
@end
@implementation ForwardingContentView
- (void)addSubview:(NSView*)view positioned:(NSWindowOrderingMode)place relativeTo:(NSView*)other {
  if (inner == nil) {
    inner = view;
    [super addSubview:view positioned:place relativeTo:other];
  } else {
    [inner addSubview:view positioned:place relativeTo:other];
  }
}
@end

// A green content view that refuses and counts each added view.
@interface RefusingContentView : GreenContentView {
 @public
  int refusals;
}
@end
@implementation RefusingContentView
- (void)addSubview:(NSView*)view positioned:(NSWindowOrderingMode)place relativeTo:(NSView*)other {
  ++refusals;
}
@end

// The host's window. Counts all mouse presses, including those on the cover.
@interface CountingWindow : NSWindow {
 @public
  int presses;
}
@end
@implementation CountingWindow
- (void)sendEvent:(NSEvent*)event {
  presses += [event type] == NSLeftMouseDown ? 1 : 0;
  [super sendEvent:event];
}
@end

// A window whose style mask can change, as on macOS.
@interface StyledWindow : NSWindow {
 @public
  NSUInteger mask;
}
- (void)setStyleMask:(NSUInteger)styleMask;
@end
@implementation StyledWindow
- (NSUInteger)styleMask {
  return mask;
}
- (void)setStyleMask:(NSUInteger)styleMask {
  mask = styleMask;
}
@end

// Records the activation policy. The free AppKit of GNUstep has no `setActivationPolicy:`.
static NSInteger activationPolicy = -1;
@interface NSApplication (ActivationPolicy)
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;
@end
@implementation NSApplication (ActivationPolicy)
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy {
  activationPolicy = policy;
  return YES;
}
@end

namespace vel::test {
namespace {

using testing::Contains;

constexpr std::uint32_t kGreen = 0x00FF00;

class CocoaWindowTest : public testing::Test {
 protected:
  CocoaWindowTest() {
    std::string error;
    system = CocoaWindowSystem::open(error);
    if (system == nullptr) {
      throw std::runtime_error(error);
    }
    system->setDelegate(&reports);
    native = [[CountingWindow alloc] initWithContentRect:NSMakeRect(200, 200, 400, 300)
                                               styleMask:15
                                                 backing:NSBackingStoreBuffered
                                                   defer:NO];
    [native setReleasedWhenClosed:NO];
    content = [[GreenContentView alloc] initWithFrame:NSMakeRect(0, 0, 400, 300)];
    [native setContentView:content];
    [native makeKeyAndOrderFront:nil];
    EXPECT_TRUE(waitFor([this] { return isAll(kGreen); }));
    // The window manager may still be adding its frame. The window then loses its picture, and
    // AppKit draws it again.
    display.waitForManager();
    EXPECT_TRUE(waitFor([this] { return isAll(kGreen); }));
    const auto adopted = system->adoptWindow(CocoaWindow{.window = native}, error);
    window = adopted ? adopted->handle : WindowHandle::None;
  }
  ~CocoaWindowTest() override {
    system = nullptr;
    [native close];
    [native release];
    [content release];
    [pool release];
  }

  bool waitFor(const std::function<bool()>& condition) { return deliverUntil(*system, condition); }
  [[nodiscard]] bool isAll(std::uint32_t color) const {
    const Picture picture = display.client.screenPicture(AppKitDisplay::idOf(native));
    return picture.width > 0 && picture.isAll(color);
  }
  void clickInTheMiddle() {
    const PixelRect area = display.client.areaOnScreen(AppKitDisplay::idOf(native));
    display.client.click(area.x + area.width / 2, area.y + area.height / 2);
  }
  void showWhite(double width, double height) {
    system->setScene(window, {{.kind = SceneItem::Kind::Fill,
                               .frame = CGRectMake(0, 0, width, height),
                               .color = {1, 1, 1, 1}}});
  }

  AppKitDisplay& display = AppKitDisplay::shared();
  NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
  std::unique_ptr<CocoaWindowSystem> system;
  ReportListener reports;
  CountingWindow* native = nil;
  GreenContentView* content = nil;
  WindowHandle window = WindowHandle::None;
};

TEST_F(CocoaWindowTest, TheApplicationThatTheLibraryCreatesHasTheRegularActivationPolicy) {
  EXPECT_EQ(activationPolicy, NSApplicationActivationPolicyRegular);
}

TEST_F(CocoaWindowTest, ASceneShowsTheCoverAtOnceAndAnEmptySceneRemovesIt) {
  showWhite(400, 300);
  EXPECT_EQ([[content subviews] count], 1U);
  // `eventually` delivers no events, unlike `waitFor`.
  EXPECT_TRUE(eventually([this] { return isAll(kWhite); }));
  system->setScene(window, {});
  EXPECT_EQ([[content subviews] count], 0U);
  EXPECT_TRUE(waitFor([this] { return isAll(kGreen); }));
}

TEST_F(CocoaWindowTest, TheCoverFollowsTheSizeOfTheContent) {
  showWhite(400, 300);
  [native setContentSize:NSMakeSize(600, 450)];
  EXPECT_TRUE(waitFor([this] {
    return display.client.areaOnScreen(AppKitDisplay::idOf(native)).width == 600 && isAll(kWhite);
  }));
}

TEST_F(CocoaWindowTest, TheCoverStaysAboveViewsThatTheOwnerAdds) {
  showWhite(400, 300);
  GreenContentView* const added =
      [[[GreenContentView alloc] initWithFrame:NSMakeRect(50, 50, 100, 100)] autorelease];
  [content addSubview:added];
  EXPECT_TRUE(
      waitFor([=, this] { return [[content subviews] lastObject] != added && isAll(kWhite); }));
  [added removeFromSuperview];
}

TEST_F(CocoaWindowTest, AContentViewCanForwardTheCoverToAnInnerView) {
  ForwardingContentView* const box =
      [[[ForwardingContentView alloc] initWithFrame:NSMakeRect(0, 0, 400, 300)] autorelease];
  [box addSubview:[[[GreenContentView alloc] initWithFrame:NSMakeRect(0, 0, 400, 300)] autorelease]
       positioned:NSWindowAbove
       relativeTo:nil];
  [native setContentView:box];
  showWhite(400, 300);
  EXPECT_EQ([[box->inner subviews] count], 1U);
  GreenContentView* const added =
      [[[GreenContentView alloc] initWithFrame:NSMakeRect(50, 50, 100, 100)] autorelease];
  [box->inner addSubview:added];
  EXPECT_TRUE(
      waitFor([=, this] { return [[box->inner subviews] lastObject] != added && isAll(kWhite); }));
  EXPECT_EQ([[box->inner subviews] count], 2U);
}

TEST_F(CocoaWindowTest, AContentViewCanRefuseTheCover) {
  RefusingContentView* const refusing =
      [[[RefusingContentView alloc] initWithFrame:NSMakeRect(0, 0, 400, 300)] autorelease];
  [native setContentView:refusing];
  showWhite(400, 300);
  EXPECT_GT(refusing->refusals, 0);
  EXPECT_EQ([[refusing subviews] count], 0U);
  EXPECT_TRUE(waitFor([this] { return isAll(kGreen); }));
  // The back end still shows the cover in the next content view.
  [native setContentView:content];
  EXPECT_TRUE(waitFor([this] { return isAll(kWhite); }));
}

TEST_F(CocoaWindowTest, TheCoverReturnsWhenTheWindowHasAContentViewAgain) {
  showWhite(400, 300);
  [native setContentView:nil];
  system->deliverEvents();
  [native setContentView:content];
  EXPECT_TRUE(waitFor([this] { return isAll(kWhite); }));
}

TEST_F(CocoaWindowTest, TheCoverIsResizedEvenIfTheContentViewDoesNotResizeItsSubviews) {
  [content setAutoresizesSubviews:NO];
  showWhite(400, 300);
  [native setContentSize:NSMakeSize(600, 450)];
  EXPECT_TRUE(waitFor([this] {
    return display.client.areaOnScreen(AppKitDisplay::idOf(native)).width == 600 && isAll(kWhite);
  }));
}

TEST_F(CocoaWindowTest, TheBoundsOfTheContentViewDoNotScaleTheCover) {
  [content setBounds:NSMakeRect(30, 40, 800, 600)];
  system->setScene(
      window,
      {{.kind = SceneItem::Kind::Fill, .frame = CGRectMake(0, 0, 400, 300), .color = {1, 1, 1, 1}},
       {.kind = SceneItem::Kind::Fill,
        .frame = CGRectMake(200, 150, 100, 50),
        .color = {1, 0, 0, 1}}});
  EXPECT_TRUE(waitFor([this] {
    const PixelRect drawn =
        display.client.screenPicture(AppKitDisplay::idOf(native)).boundsOfPixelsExcept(kWhite);
    return drawn.x == 200 && drawn.width == 100 && drawn.height == 50;
  }));
}

TEST_F(CocoaWindowTest, TheSpinnerTurnsInsideItsFrame) {
  const CGRect spinnerFrame{{184, 134}, {32, 32}};
  system->setScene(
      window,
      {{.kind = SceneItem::Kind::Fill, .frame = CGRectMake(0, 0, 400, 300), .color = {1, 1, 1, 1}},
       {.kind = SceneItem::Kind::Spinner, .frame = spinnerFrame, .color = {}, .isAnimated = true}});
  const auto picture = [this] { return display.client.screenPicture(AppKitDisplay::idOf(native)); };
  // The spokes of the spinner have different shades.
  const auto showsSpinner = [](const Picture& shown) { return shown.colors().size() > 4; };
  EXPECT_TRUE(waitFor([&] { return showsSpinner(picture()); }));
  const Picture first = picture();
  first.save("cocoa-indicator");
  Picture second;
  EXPECT_TRUE(waitFor([&] {
    second = picture();
    return second != first && showsSpinner(second);
  }));
  const PixelRect drawn = second.boundsOfPixelsExcept(kWhite);
  EXPECT_GE(drawn.x, 184);
  EXPECT_GE(drawn.y, 134);
  EXPECT_LE(drawn.x + drawn.width, 216);
  EXPECT_LE(drawn.y + drawn.height, 166);
}

TEST_F(CocoaWindowTest, TheCoverTakesThePointerEvents) {
  const NSPoint middle = NSMakePoint(200, 150);
  EXPECT_EQ([content hitTest:middle], content);
  showWhite(400, 300);
  EXPECT_NE([content hitTest:middle], content);
  // The window manager does not forward clicks on a window without the focus.
  ASSERT_TRUE(waitFor([this] { return display.giveFocus(native); }));
  clickInTheMiddle();
  EXPECT_TRUE(waitFor([this] { return native->presses == 1; }));
  EXPECT_EQ(content->presses, 0);
  system->setScene(window, {});
  clickInTheMiddle();
  EXPECT_TRUE(waitFor([this] { return native->presses == 2; }));
  EXPECT_EQ(content->presses, 1);
}

TEST_F(CocoaWindowTest, AModalWindowShieldsTheHostsWindowFromThePointer) {
  const WindowHandle modal = system->createWindow({.className = "NSWindow",
                                                   .title = "modal",
                                                   .frame = CGRectMake(700, 300, 200, 150),
                                                   .styleMask = 1,
                                                   .kind = WindowKind::Modal,
                                                   .ownerWindow = window});
  system->orderFront(modal);
  system->setModalWindow(modal);
  const NSPoint middle = NSMakePoint(200, 150);
  EXPECT_NE([content hitTest:middle], content);
  // The shield is transparent.
  EXPECT_TRUE(waitFor([this] { return isAll(kGreen); }));
  system->setModalWindow(WindowHandle::None);
  EXPECT_EQ([[content subviews] count], 0U);
  EXPECT_EQ([content hitTest:middle], content);
}

TEST_F(CocoaWindowTest, AnInvalidHandleMakesNoWindowModal) {
  const WindowHandle closed = system->createWindow(
      {.className = "NSWindow", .title = "closed", .frame = CGRectMake(700, 300, 200, 150)});
  system->releaseWindow(closed);
  system->setModalWindow(closed);
  EXPECT_EQ([content hitTest:NSMakePoint(200, 150)], content);
}

TEST_F(CocoaWindowTest, ASheetIsAChildWindowOfItsOwner) {
  const WindowHandle sheet =
      system->createWindow({.className = "NSWindow",
                            .title = "sheet",
                            .frame = CGRectMake(250, 250, 200, 150),
                            .styleMask = NSWindowStyleMaskTitled | NSWindowStyleMaskDocModalWindow,
                            .kind = WindowKind::Sheet,
                            .ownerWindow = window});
  system->orderFront(sheet);
  EXPECT_EQ([[native childWindows] count], 1U);
  system->releaseWindow(sheet);
  EXPECT_EQ([[native childWindows] count], 0U);
}

TEST_F(CocoaWindowTest, RemovingTheControlsFixesTheSizeUntilTheWindowIsReleased) {
  const NSSize minSize = [native minSize];
  const NSSize maxSize = [native maxSize];
  system->setStyleMask(window, NSWindowStyleMaskTitled);
  EXPECT_TRUE(NSEqualSizes([native minSize], [native frame].size));
  EXPECT_TRUE(NSEqualSizes([native maxSize], [native frame].size));
  // 6 is the close and miniaturise controls. AppKit cannot remove these controls, because the
  // window manager draws the title bar.
  EXPECT_TRUE(
      waitFor([this] { return reports.contains("remaining controls " + nameOf(window) + " 6"); }));
  // In the free AppKit, not even the owner can change the fixed size.
  [native setContentSize:NSMakeSize(600, 450)];
  EXPECT_TRUE(NSEqualSizes([[native contentView] frame].size, NSMakeSize(400, 300)));
  system->releaseWindow(window);
  EXPECT_TRUE(NSEqualSizes([native minSize], minSize));
  EXPECT_TRUE(NSEqualSizes([native maxSize], maxSize));
  [native setContentSize:NSMakeSize(600, 450)];
  EXPECT_TRUE(NSEqualSizes([[native contentView] frame].size, NSMakeSize(600, 450)));
}

TEST_F(CocoaWindowTest, ReleasingTheWindowKeepsAMinimumSizeThatTheOwnerHasSet) {
  system->setStyleMask(window, NSWindowStyleMaskTitled);
  [native setMinSize:NSMakeSize(123, 45)];
  system->releaseWindow(window);
  EXPECT_EQ([native minSize].width, 123);
}

TEST_F(CocoaWindowTest, RemovingTheControlsDoesNotHideAButtonInTheContent) {
  // The free AppKit finds the close button by its tag 0. This button also has the tag 0.
  NSButton* const button =
      [[[NSButton alloc] initWithFrame:NSMakeRect(10, 10, 50, 20)] autorelease];
  [content addSubview:button];
  system->setStyleMask(window, NSWindowStyleMaskTitled);
  EXPECT_FALSE([button isHidden]);
  EXPECT_TRUE(
      waitFor([this] { return reports.contains("remaining controls " + nameOf(window) + " 6"); }));
  [button setHidden:YES];
  system->releaseWindow(window);
  EXPECT_TRUE([button isHidden]);
}

TEST_F(CocoaWindowTest, TheBackEndReportsThatTheOwnerHasChangedTheStyleMask) {
  StyledWindow* const styled = [[[StyledWindow alloc] initWithContentRect:NSMakeRect(0, 0, 100, 80)
                                                                styleMask:15
                                                                  backing:NSBackingStoreBuffered
                                                                    defer:NO] autorelease];
  [styled setReleasedWhenClosed:NO];
  styled->mask = 15;
  std::string error;
  const auto adopted = system->adoptWindow(CocoaWindow{.window = styled}, error);
  ASSERT_TRUE(adopted.has_value()) << error;
  EXPECT_EQ(adopted->styleMask, 15U);
  styled->mask = 7;
  EXPECT_TRUE(waitFor([&] { return reports.contains("style " + nameOf(adopted->handle) + " 7"); }));
}

TEST_F(CocoaWindowTest, TheLibraryChangesOnlyTheControlsOfAStyleMask) {
  constexpr NSUInteger kFullScreen = 1U << 14U;
  StyledWindow* const styled = [[[StyledWindow alloc] initWithContentRect:NSMakeRect(0, 0, 100, 80)
                                                                styleMask:15
                                                                  backing:NSBackingStoreBuffered
                                                                    defer:NO] autorelease];
  [styled setReleasedWhenClosed:NO];
  styled->mask = 15;
  std::string error;
  const auto adopted = system->adoptWindow(CocoaWindow{.window = styled}, error);
  ASSERT_TRUE(adopted.has_value()) << error;
  system->setStyleMask(adopted->handle, NSWindowStyleMaskTitled);
  EXPECT_EQ(styled->mask, 1U);
  styled->mask |= kFullScreen;
  system->releaseWindow(adopted->handle);
  EXPECT_EQ(styled->mask, 15U | kFullScreen);
}

TEST_F(CocoaWindowTest, AWindowCanBeAdoptedByItsNumberButNotTwice) {
  system->releaseWindow(window);
  std::string error;
  const auto adopted =
      system->adoptWindow(CocoaWindow{.window = nullptr, .number = [native windowNumber]}, error);
  ASSERT_TRUE(adopted.has_value()) << error;
  EXPECT_FALSE(system->adoptWindow(CocoaWindow{.window = native}, error).has_value());
  EXPECT_EQ(error, "the AppKit window: it is already adopted");
}

TEST_F(CocoaWindowTest, AnOrderedOutWindowIsReportedAsMiniaturised) {
  [native orderOut:nil];
  EXPECT_TRUE(waitFor([this] { return reports.contains("miniaturized " + nameOf(window)); }));
  [native makeKeyAndOrderFront:nil];
  EXPECT_TRUE(waitFor([this] { return reports.contains("deminiaturized " + nameOf(window)); }));
}

// The platform layer ignores a focus report for a window that is not on the screen.
TEST_F(CocoaWindowTest, AWindowIsReportedAsDeminiaturisedBeforeItIsReportedAsKey) {
  [native orderOut:nil];
  EXPECT_TRUE(waitFor([this] { return reports.contains("miniaturized " + nameOf(window)); }));
  reports.lines.clear();
  [native orderFront:nil];
  [[NSNotificationCenter defaultCenter] postNotificationName:NSWindowDidBecomeKeyNotification
                                                      object:native];
  system->deliverEvents();
  const auto positionOf = [this](const std::string& line) {
    return std::ranges::find(reports.lines, line) - reports.lines.begin();
  };
  EXPECT_TRUE(reports.contains("focus " + nameOf(window)));
  EXPECT_LT(positionOf("deminiaturized " + nameOf(window)), positionOf("focus " + nameOf(window)));
}

TEST_F(CocoaWindowTest, ActivationReportsTheKeyWindowEvenIfTheBackEndHasNotAdoptedIt) {
  NSWindow* const unknown = [[[NSWindow alloc] initWithContentRect:NSMakeRect(700, 300, 200, 150)
                                                         styleMask:1
                                                           backing:NSBackingStoreBuffered
                                                             defer:NO] autorelease];
  [unknown setReleasedWhenClosed:NO];
  [unknown makeKeyAndOrderFront:nil];
  // The fixture has requested the focus for `native`, and the X server may move the focus late. So
  // wait until `unknown` has the focus.
  EXPECT_TRUE(waitFor([=, this] { return display.giveFocus(unknown); }));
  [[NSNotificationCenter defaultCenter]
      postNotificationName:NSApplicationDidBecomeActiveNotification
                    object:NSApp];
  const std::string line =
      "activated " + nameOf(static_cast<WindowHandle>(reinterpret_cast<std::uintptr_t>(unknown)));
  EXPECT_TRUE(waitFor([&] { return reports.contains(line); }));
  [unknown close];
}

TEST_F(CocoaWindowTest, AClosedWindowStaysRetainedUntilItsDestructionIsReported) {
  const NSUInteger retainCount = [native retainCount];
  [native close];
  EXPECT_EQ([native retainCount], retainCount);
  EXPECT_TRUE(waitFor([this] { return reports.contains("destroyed " + nameOf(window)); }));
  EXPECT_EQ([native retainCount], retainCount - 1);
}

}  // namespace
}  // namespace vel::test
