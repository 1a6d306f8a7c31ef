#import "Bindings/ObjectiveC/LaunchScreenManager.h"

#include "Bindings/ObjectiveC/HostObjects.h"
#include "Bindings/ObjectiveC/LaunchScreenContentLibrary.h"
#include "Bindings/ObjectiveC/NativeApplication.h"
#include "Bindings/ObjectiveC/NativeValues.h"
#include "LaunchScreen/LaunchScreenManager.h"
#include "Platform/Foundation/NSLog.h"

struct VelManagerReference {
  vel::Strong<vel::LaunchScreenManager> manager;
  LaunchScreenContent* content;          // the native object of `manager->content()`, retained
  id<ContentResolverDelegate> delegate;  // not retained
  vel::Strong<vel_objc::HostResolverDelegate> libraryDelegate;
};

@interface LaunchScreenManager (Library)
/// The native object of a content that this manager has returned. Returns nil for null.
- (LaunchScreenContent*)objectOf:(const vel::Strong<vel::LaunchScreenContent>&)content;
@end

@implementation LaunchScreenManager

- (id)init {
  self = [super init];
  if (self == nil) {
    return nil;
  }
  std::string error;
  if (!vel_objc::startApplication(error)) {
    vel::NSLog("%@ (%s): %@", "LaunchScreenManager", "-[LaunchScreenManager init]", error);
    [self release];
    return nil;
  }
  const auto manager = vel::LaunchScreenManager::init();
  LaunchScreenContent* const content =
      [[LaunchScreenContent alloc] initWithLibraryContent:manager->content()];
  reference_ = new VelManagerReference{manager, content, nil, nullptr};
  return self;
}

- (void)dealloc {
  if (reference_ != nullptr) {
    [reference_->content release];
    delete reference_;
  }
  [super dealloc];
}

- (LaunchScreenContent*)objectOf:(const vel::Strong<vel::LaunchScreenContent>&)content {
  if (content == nullptr) {
    return nil;
  }
  if ([reference_->content isObjectOf:content]) {
    return [[reference_->content retain] autorelease];
  }
  return [[[LaunchScreenContent alloc] initWithLibraryContent:content] autorelease];
}

- (NSArray*)supportedEngines {
  NSMutableArray* const engines = [NSMutableArray array];
  for (const auto& engine : reference_->manager->supportedEngines()) {
    [engines addObject:vel_objc::nativeString(engine)];
  }
  return engines;
}

- (BOOL)activate:(id<ContentBroker>)broker {
  const auto manager = reference_->manager;
  return manager->activate(broker != nil ? vel::make<vel_objc::HostBroker>(broker, self) : nullptr)
             ? YES
             : NO;
}

- (id<ContentData>)contentDataForContentRequest:(id<ContentRequest>)request {
  [[self retain] autorelease];  // the delegate may release this object
  const auto data = reference_->manager->contentDataForContentRequest(
      request != nil ? vel::make<vel_objc::HostRequest>(request) : nullptr);
  return [self objectOf:vel::as<vel::LaunchScreenContent>(data)];
}

// The library ignores the argument of this operation, so it needs no library object for `data`.
- (id<ContentView>)contentViewForContentData:(id<ContentData>)data {
  const auto view = reference_->manager->contentViewForContentData(nullptr);
  return [self objectOf:vel::as<vel::LaunchScreenContent>(view)];
}

- (void)deactivate {
  const auto manager = reference_->manager;
  manager->deactivate();
}

- (id<ContentResolverDelegate>)delegate {
  return reference_->delegate;
}

// The library notifies a delegate only if its class adopts the protocol. Clang does not register
// the result of `@protocol` with GCC's Objective-C runtime, so this method finds the protocol by
// its name.
- (void)setDelegate:(id<ContentResolverDelegate>)delegate {
  reference_->delegate = delegate;
  reference_->libraryDelegate =
      [delegate conformsToProtocol:NSProtocolFromString(@"ContentResolverDelegate")]
          ? vel::make<vel_objc::HostResolverDelegate>(delegate, self, reference_->content)
          : nullptr;
  reference_->manager->setDelegate(reference_->libraryDelegate);
}

- (void)dismissLaunchScreen {
  const auto manager = reference_->manager;  // a delegate may release this object
  manager->dismissLaunchScreen();
}

@end
