// The objects of a host in Objective-C, for the tests of the binding.
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

/// A resolver delegate that counts the changes of the state. It stores the arguments of the latest
/// call, and whether the main thread made that call.
@interface NativeResolverDelegate : NSObject <ContentResolverDelegate> {
 @public
  int changes;
  id resolver;  // not retained
  id data;      // not retained
  BOOL isOnMainThread;
}
@end

/// Has the operation of ContentResolverDelegate, but its class does not adopt the protocol.
@interface UndeclaredDelegate : NSObject {
 @public
  int changes;
}
- (void)contentResolver:(id<ContentResolver>)resolver
    didChangeStateForContentData:(id<ContentData>)data;
@end

/// A view delegate with all operations. It stores the names of the calls in order, and the argument
/// of `contentViewWillAppear:`. `canContentViewDisappear:` returns `mayDisappear`.
@interface NativeViewDelegate : NSObject <ContentViewDelegate> {
 @public
  NSMutableArray* calls;
  id view;  // not retained
  BOOL mayDisappear;
}
@end

/// A view delegate without operations.
@interface SilentViewDelegate : NSObject <ContentViewDelegate>
@end
