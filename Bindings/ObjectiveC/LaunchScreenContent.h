#pragma once

#import "Bindings/ObjectiveC/ContentBroker.h"

struct VelContentReference;

/// A launch screen as the host sees it. One object is the content data, the content view and its
/// presentation. LaunchScreenManager creates it. Only the main thread may use it.
///
/// Mode 0 covers the window, mode 2 presents a modal window, and any other mode presents a sheet.
/// The window must be one of [NSApp windows] and must have a content view. Otherwise
/// `presentForWindow:withPresentationMode:` only writes the reason to the log. The library retains
/// the window until the window closes.
///
/// A sheet needs a window with a content view controller. The NSWindow of the free AppKit of
/// GNUstep does not have the operation `contentViewController`. On the free AppKit, the class of
/// the window must add this operation.
@interface LaunchScreenContent : NSObject <ContentData, ContentView, CVPresentationFullScreen> {
 @private
  struct VelContentReference* reference_;
}
@end
