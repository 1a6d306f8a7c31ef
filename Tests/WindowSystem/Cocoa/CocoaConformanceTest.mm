#include <stdexcept>

#include "Platform/WindowSystem/Cocoa/CocoaWindowSystem.h"
#include "Tests/Support/Cocoa/AppKitDisplay.h"
#include "Tests/WindowSystem/Conformance.h"

@interface PlayerWindow : NSWindow
@end
@implementation PlayerWindow
@end

namespace vel::test {
namespace {

NSWindow* nativeOf(WindowHandle window) {
  return reinterpret_cast<NSWindow*>(static_cast<std::uintptr_t>(window));
}

class CocoaDisplay final : public TestDisplay {
 public:
  CocoaDisplay() : otherProgramsWindow_(display_.openGame({900, 600, 100, 100})) {
    std::string error;
    system_ = CocoaWindowSystem::open(error);
    if (system_ == nullptr) {
      throw std::runtime_error(error);
    }
    // The window of the previous test may still have the focus. Each test starts with the focus in
    // another program.
    EXPECT_TRUE(deliverUntil(
        *system_, [this] { return display_.giveFocusToOtherProgram(otherProgramsWindow_); }));
  }
  ~CocoaDisplay() override {
    system_ = nullptr;
    display_.client.destroy(otherProgramsWindow_);
  }

  WindowSystem& system() override { return *system_; }
  void userGoesToAnotherApplication() override {
    // AppKit reports the key window before the X server has moved the focus to the key window. Wait
    // for the X server. Otherwise it would move the focus after `focus(otherProgramsWindow_)`.
    EXPECT_TRUE(deliverUntil(*system_, [this] {
      return display_.giveFocus([NSApp keyWindow] != nil ? [NSApp keyWindow] : frontWindow());
    }));
    // Wait until the window manager has executed the requests of `giveFocus`.
    display_.waitForManager();
    display_.client.focus(otherProgramsWindow_);
  }
  void userComesBackTo(WindowHandle window) override {
    display_.client.requestActivation(idOf(window));
  }
  void userClosesWindow(WindowHandle window) override {
    display_.client.sendProtocolMessage(idOf(window), "WM_DELETE_WINDOW");
    display_.client.waitForServer();
  }
  void otherProgramResizes(WindowHandle window, CGSize size) override {
    PixelRect frame = display_.client.areaOnScreen(idOf(window));
    frame.width = static_cast<int>(size.width);
    frame.height = static_cast<int>(size.height);
    display_.client.configure(idOf(window), frame);
  }
  void otherProgramRaises(WindowHandle window, WindowHandle /*sibling*/) override {
    display_.client.raise(idOf(window));
    display_.client.requestActivation(idOf(window));
  }
  void ownerDestroysWindow(WindowHandle window) override {
    NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
    [nativeOf(window) close];
    [pool release];
  }
  void serverClosesConnection() override {}
  std::optional<NativeWindow> openForeignWindow() override {
    NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
    PlayerWindow* const window =
        [[PlayerWindow alloc] initWithContentRect:NSMakeRect(100, 100, 200, 160)
                                        styleMask:15
                                          backing:NSBackingStoreBuffered
                                            defer:NO];
    [window makeKeyAndOrderFront:nil];
    [pool release];
    return CocoaWindow{.window = window};
  }

 private:
  static NSWindow* frontWindow() {
    NSArray* const windows = [NSApp orderedWindows];
    return [windows count] > 0 ? [windows objectAtIndex:0] : nil;
  }
  static xcb_window_t idOf(WindowHandle window) { return AppKitDisplay::idOf(nativeOf(window)); }

  AppKitDisplay& display_ = AppKitDisplay::shared();
  xcb_window_t otherProgramsWindow_;  // gets the focus when the user leaves the application
  std::unique_ptr<CocoaWindowSystem> system_;
};

std::unique_ptr<TestDisplay> open() { return std::make_unique<CocoaDisplay>(); }

// Why two features are false:
// - `capturesWindows`: AppKit can read its own windows, but not what other programs show over them.
// - `reportsLostDisplay`: the free AppKit of GNUstep ends the process when the X server ends. On
//   macOS the window server does not end before the process.
INSTANTIATE_TEST_SUITE_P(Cocoa, Conformance,
                         testing::Values(Backend{.name = "OnTheFreeAppKit",
                                                 .open = open,
                                                 .adoptsWindows = true,
                                                 .capturesWindows = false,
                                                 .miniaturizes = true,
                                                 .reportsOrder = true,
                                                 .reportsDestruction = true,
                                                 .reportsRemainingControls = true,
                                                 .reportsLostDisplay = false}),
                         nameOfBackend);

}  // namespace
}  // namespace vel::test
