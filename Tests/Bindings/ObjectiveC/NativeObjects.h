// Simulates the objects that a host written in Objective-C passes to the library.
#pragma once

#import <VelLaunchScreen/ObjectiveC.h>

/// A request with the given parameters, which may be nil.
@interface NativeRequest : NSObject <ContentRequest> {
 @public
  NSDictionary* parameters;
}
+ (NativeRequest*)requestWithParameters:(NSDictionary*)parameters;
@end

/// A broker that stores the latest resolver. `registerContentResolver:` returns NO.
@interface NativeBroker : NSObject <ContentBroker> {
 @public
  id<ContentResolver> resolver;  // not retained
}
@end

/// Counts the calls of `contentResolver:didChangeStateForContentData:`. Stores the arguments of the
/// latest call, and whether the main thread made this call.
@interface NativeResolverDelegate : NSObject <ContentResolverDelegate> {
 @public
  int changes;
  id resolver;  // not retained
  id data;      // not retained
  BOOL isOnMainThread;
}
@end

/// Implements the operation of ContentResolverDelegate. The class does not adopt this protocol.
@interface DelegateWithoutProtocol : NSObject {
 @public
  int changes;
}
- (void)contentResolver:(id<ContentResolver>)resolver
    didChangeStateForContentData:(id<ContentData>)data;
@end

/// Implements all operations of ContentViewDelegate. `calls` has one string for each call, and
/// `view` is the argument of `contentViewWillAppear:`. `canContentViewDisappear:` returns
/// `mayDisappear`.
@interface NativeViewDelegate : NSObject <ContentViewDelegate> {
 @public
  NSMutableArray* calls;
  id view;  // not retained
  BOOL mayDisappear;
}
@end

/// Implements no operation of ContentViewDelegate: all of them are optional.
@interface SilentViewDelegate : NSObject <ContentViewDelegate>
@end
