// The protocols of the host's content framework, for hosts in Objective-C.
#pragma once

#import <Foundation/Foundation.h>

#include <stdint.h>

@class NSViewController;
@class NSWindow;
@protocol ContentResolver;
@protocol ContentView;

/// The state of a ContentData. The framework defines further values that this library does not use.
typedef uint64_t ContentDataState;

enum { ContentDataStateLoaded = 3, ContentDataStateFailed = 4 };

/// A request that the host sends to a ContentResolver.
@protocol ContentRequest <NSObject>
/// The parameters of the request, or nil. The keys are NSString objects, the values NSString or
/// NSNumber objects.
- (NSDictionary*)parameters;
@end

/// The content that a ContentResolver loads for a request, with its state and error.
@protocol ContentData <NSObject>
- (id<ContentRequest>)request;
- (ContentDataState)state;
- (void)setState:(ContentDataState)state;
/// The error, or nil. The content may release the error later. A caller that needs the error must
/// read and retain it when the state changes.
- (NSError*)error;
@end

/// A way of presenting content.
@protocol CVPresentation <NSObject>
@optional
/// YES if the user gets a reward for watching the content.
- (BOOL)rewarded;
/// YES if the user has watched the content to its end.
- (BOOL)completedView;
@end

/// A presentation of content over a window of the host. Only the main thread may use a
/// presentation.
@protocol CVPresentationFullScreen <CVPresentation>
/// Covers `window`. `mode` is a presentation mode of the framework.
- (void)presentForWindow:(NSWindow*)window withPresentationMode:(int32_t)mode;
- (void)dismissViewController;
@optional
/// The controller that covers the window, or nil. LaunchScreenContent does not have this operation,
/// because its controller is not an NSViewController of AppKit.
- (NSViewController*)viewController;
@end

/// Receives the notifications of a content view. The host implements it. The library calls the
/// operations on the main thread.
@protocol ContentViewDelegate <NSObject>
@optional
- (void)contentViewWillAppear:(id<ContentView>)view;
/// Called before each dismissal. Returns YES if the view may disappear now.
- (BOOL)canContentViewDisappear:(id<ContentView>)view;
- (void)contentViewDidDisappear:(id<ContentView>)view;
@end

/// A view of loaded content.
@protocol ContentView <NSObject>
- (id<ContentData>)data;
- (id<CVPresentation>)presentation;
/// The delegate, or nil. The view does not retain the delegate and does not notice when it is
/// deallocated: set nil before you release the delegate for the last time.
- (id<ContentViewDelegate>)delegate;
- (void)setDelegate:(id<ContentViewDelegate>)delegate;
@end

/// Receives the state changes of content data. The host implements it.
@protocol ContentResolverDelegate <NSObject>
/// The state of `data` has changed. Called on the thread that changed the state.
- (void)contentResolver:(id<ContentResolver>)resolver
    didChangeStateForContentData:(id<ContentData>)data;
@end

/// Routes content requests to registered resolvers. The host implements it.
@protocol ContentBroker <NSObject>
/// Registers a resolver for the engines that it supports. Returns YES on success.
- (BOOL)registerContentResolver:(id<ContentResolver>)resolver;
@end

/// Loads content for the requests of the engines that it supports.
@protocol ContentResolver <NSObject>
/// The names of the engines: NSString objects.
- (NSArray*)supportedEngines;
/// Registers the resolver with the broker, which may be nil. Returns YES if the resolver accepts
/// requests.
- (BOOL)activate:(id<ContentBroker>)broker;
/// Starts to load the content of a request. Returns nil if the resolver refuses the request.
- (id<ContentData>)contentDataForContentRequest:(id<ContentRequest>)request;
/// Returns the view of the content, or nil. Only the main thread may call this operation.
- (id<ContentView>)contentViewForContentData:(id<ContentData>)data;
/// Releases all content. Only the main thread may call this operation.
- (void)deactivate;
/// The delegate, or nil. The resolver does not retain the delegate and does not notice when it is
/// deallocated: set nil before you release the delegate for the last time. The resolver notifies
/// the delegate of state changes only if the class of the delegate adopts ContentResolverDelegate.
- (id<ContentResolverDelegate>)delegate;
- (void)setDelegate:(id<ContentResolverDelegate>)delegate;
@optional
/// The name to display.
- (NSString*)name;
@end
