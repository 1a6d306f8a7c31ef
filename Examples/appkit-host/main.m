// A host in Objective-C with its own content broker, its own run loop and its own MetricsCenter. A
// click in its window requests a launch screen and presents it over the window. The host prints
// what happens, and when, in seconds since the click.
//
// usage: appkit-host [-seconds SECONDS] [-mode MODE]
// MODE 0 covers the window, MODE 1 presents a sheet, MODE 2 presents a modal window.

#import <AppKit/AppKit.h>
#import <VelLaunchScreen/ObjectiveC.h>

#include <stdio.h>

static NSTimeInterval clickTime = 0;

static void printLine(NSString* line) {
  printf("%.3f %s\n", [NSDate timeIntervalSinceReferenceDate] - clickTime, [line UTF8String]);
  fflush(stdout);
}

// The free AppKit of GNUstep does not declare this operation.
@protocol ActivationPolicySetter
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;
@end

// The library calls this class to record the event.
@interface MetricsCenter : NSObject
@end
@implementation MetricsCenter
+ (void)logEvent:(NSString*)name {
  printLine([@"event " stringByAppendingString:name]);
}
@end

// Keeps the resolver that is registered for each engine.
@interface GameBroker : NSObject <ContentBroker> {
 @public
  NSMutableDictionary* resolvers;
}
@end
@implementation GameBroker
- (BOOL)registerContentResolver:(id<ContentResolver>)resolver {
  resolvers = [[NSMutableDictionary alloc] init];
  for (NSString* engine in [resolver supportedEngines]) {
    [resolvers setObject:resolver forKey:engine];
  }
  return YES;
}
@end

// The library recognises the window of the player by the class name PlayerWindow. A sheet needs a
// window with a content view controller. The NSWindow of the free AppKit has no such operation, so
// this class adds it.
@interface PlayerWindow : NSWindow {
  NSViewController* controller_;
}
@end
@implementation PlayerWindow
- (NSViewController*)contentViewController {
  if (controller_ == nil) {
    controller_ = [[NSViewController alloc] initWithNibName:nil bundle:nil];
  }
  return controller_;
}
@end

@interface Game : NSObject <ContentRequest, ContentResolverDelegate, ContentViewDelegate> {
 @public
  double seconds;
  int mode;
  PlayerWindow* window;
  GameBroker* broker;
}
- (void)showLaunchScreen;
@end
@implementation Game
- (NSDictionary*)parameters {
  return
      [NSDictionary dictionaryWithObjectsAndKeys:@"launch_end", LaunchScreenContentRequest.event,
                                                 [NSNumber numberWithDouble:seconds],
                                                 LaunchScreenContentRequest.maxDurationTime, nil];
}
- (void)showLaunchScreen {
  clickTime = [NSDate timeIntervalSinceReferenceDate];
  id<ContentResolver> resolver = [broker->resolvers objectForKey:kLaunchScreenEngine];
  id<ContentData> data = [resolver contentDataForContentRequest:self];
  id<ContentView> view = [resolver contentViewForContentData:data];
  [view setDelegate:self];
  [(id<CVPresentationFullScreen>)[view presentation] presentForWindow:window
                                                 withPresentationMode:mode];
}
- (void)contentResolver:(id<ContentResolver>)resolver
    didChangeStateForContentData:(id<ContentData>)data {
  printLine([data state] == ContentDataStateLoaded ? @"loaded" : @"failed");
}
- (void)contentViewWillAppear:(id<ContentView>)view {
  printLine(@"will appear");
}
- (void)contentViewDidDisappear:(id<ContentView>)view {
  printLine(@"did disappear");
}
- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(NSApplication*)application {
  return YES;
}
@end

// The content of the game's window: one colour. A click shows the launch screen.
@interface GameView : NSView {
 @public
  Game* game;
}
@end
@implementation GameView
- (void)drawRect:(NSRect)dirtyRect {
  [[NSColor colorWithDeviceRed:0 green:0 blue:1 alpha:1] set];
  NSRectFill([self bounds]);
}
- (BOOL)acceptsFirstMouse:(NSEvent*)event {
  return YES;
}
- (void)mouseDown:(NSEvent*)event {
  [game showLaunchScreen];
}
@end

int main(void) {
  NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
  [NSApplication sharedApplication];
  // On macOS, a program without a bundle cannot become active until it sets this policy.
  if ([NSApp respondsToSelector:@selector(setActivationPolicy:)]) {
    [(id<ActivationPolicySetter>)NSApp setActivationPolicy:NSApplicationActivationPolicyRegular];
  }
  Game* game = [[Game alloc] init];
  // The user defaults contain the options of the command line.
  NSUserDefaults* options = [NSUserDefaults standardUserDefaults];
  game->seconds = [options objectForKey:@"seconds"] != nil ? [options floatForKey:@"seconds"] : 3;
  game->mode = (int)[options integerForKey:@"mode"];
  game->broker = [[GameBroker alloc] init];
  LaunchScreenManager* manager = [[LaunchScreenManager alloc] init];
  [manager setDelegate:game];
  [manager activate:game->broker];

  const NSRect frame = NSMakeRect(200, 200, 640, 400);
  game->window = [[PlayerWindow alloc]
      initWithContentRect:frame
                styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable |
                          NSWindowStyleMaskMiniaturizable | NSWindowStyleMaskResizable
                  backing:NSBackingStoreBuffered
                    defer:NO];
  GameView* view = [[[GameView alloc] initWithFrame:frame] autorelease];
  view->game = game;
  [game->window setTitle:@"appkit-host"];
  [game->window setContentView:view];
  [game->window makeKeyAndOrderFront:nil];
  [NSApp setDelegate:(id)game];
  [NSApp activateIgnoringOtherApps:YES];
  [NSApp run];
  [pool release];
  return 0;
}
