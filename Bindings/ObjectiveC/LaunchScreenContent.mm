#import "Bindings/ObjectiveC/LaunchScreenContent.h"

#include "Bindings/ObjectiveC/HostObjects.h"
#include "Bindings/ObjectiveC/LaunchScreenContentLibrary.h"
#include "Bindings/ObjectiveC/NativeApplication.h"
#include "Bindings/ObjectiveC/NativeValues.h"
#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/NSLog.h"

struct VelContentReference {
  vel::Strong<vel::LaunchScreenContent> content;
  id<ContentViewDelegate> delegate;  // not retained
  vel::Strong<vel_objc::HostViewDelegate> libraryDelegate;
};

@implementation LaunchScreenContent

- (id)init {
  return [self initWithLibraryContent:vel::LaunchScreenContent::init()];
}

- (id)initWithLibraryContent:(const vel::Strong<vel::LaunchScreenContent>&)content {
  self = [super init];
  if (self != nil) {
    reference_ = new VelContentReference{content, nil, nullptr};
  }
  return self;
}

- (void)dealloc {
  delete reference_;
  [super dealloc];
}

- (BOOL)isObjectOf:(const vel::Strong<vel::LaunchScreenContent>&)content {
  return reference_->content == content ? YES : NO;
}

// ContentData

- (id<ContentRequest>)request {
  const auto request = vel::as<vel_objc::HostRequest>(reference_->content->request());
  return vel::send(request, &vel_objc::HostRequest::native);
}

- (ContentDataState)state {
  return reference_->content->state();
}

- (void)setState:(ContentDataState)state {
  const auto content = reference_->content;  // the delegate may release this object
  content->setState(state);
}

- (NSError*)error {
  return vel_objc::nativeError(reference_->content->error());
}

// ContentView

- (id<ContentData>)data {
  return self;
}

- (id<CVPresentation>)presentation {
  return self;
}

- (id<ContentViewDelegate>)delegate {
  return reference_->delegate;
}

- (void)setDelegate:(id<ContentViewDelegate>)delegate {
  reference_->delegate = delegate;
  reference_->libraryDelegate =
      delegate != nil ? vel::make<vel_objc::HostViewDelegate>(delegate, self) : nullptr;
  reference_->content->setDelegate(reference_->libraryDelegate);
}

// CVPresentationFullScreen

- (void)presentForWindow:(NSWindow*)window withPresentationMode:(int32_t)mode {
  std::string error;
  const auto libraryWindow = window != nil ? vel_objc::windowFor(window, error) : nullptr;
  if (window != nil && libraryWindow == nullptr) {
    vel::NSLog("%@ (%s): %@", "LaunchScreenContent",
               "-[LaunchScreenContent presentForWindow:withPresentationMode:]", error);
    return;
  }
  const auto content = reference_->content;  // the delegate may release this object
  content->presentForWindowWithPresentationMode(libraryWindow, mode);
}

- (void)dismissViewController {
  const auto content = reference_->content;  // the delegate may release this object
  content->dismissViewController();
}

@end
