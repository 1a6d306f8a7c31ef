// Test objects. A host written in Objective-C passes such objects to the library.
#pragma once

#import <VelLaunchScreen/ObjectiveC.h>

/// A request with the given parameters, which may be nil.
@interface NativeRequest : NSObject <ContentRequest> {
 @public
  NSDictionary* parameters;
}
+ (NativeRequest*)requestWithParameters:(NSDictionary*)parameters;
@end

/// A broker. `registerContentResolver:` stores its argument and returns NO.
@interface NativeBroker : NSObject <ContentBroker> {
 @public
  id<ContentResolver> resolver;  // not retained
}
@end

/// `changes` counts the calls of `contentResolver:didChangeStateForContentData:`. The other members
/// describe the latest call: its arguments and its thread.
@interface NativeResolverDelegate : NSObject <ContentResolverDelegate> {
 @public
  int changes;
  id resolver;  // not retained
  id data;      // not retained
  BOOL isOnMainThread;
}
@end

/// Implements the operation of ContentResolverDelegate, but does not adopt this protocol. `changes`
/// counts the calls.
@interface DelegateWithoutProtocol : NSObject {
 @public
  int changes;
}
- (void)contentResolver:(id<ContentResolver>)resolver
    didChangeStateForContentData:(id<ContentData>)data;
@end

/// Implements all operations of ContentViewDelegate. `calls` has one string for each call, such as
/// "will appear". `contentViewWillAppear:` stores its argument in `view`.
/// `canContentViewDisappear:` returns `mayDisappear`.
@interface NativeViewDelegate : NSObject <ContentViewDelegate> {
 @public
  NSMutableArray* calls;
  id view;  // not retained
  BOOL mayDisappear;
}
@end

/// Implements no operation of ContentViewDelegate. All operations of this protocol are optional.
@interface SilentViewDelegate : NSObject <ContentViewDelegate>
@end
