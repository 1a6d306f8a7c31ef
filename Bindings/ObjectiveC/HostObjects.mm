#include "Bindings/ObjectiveC/HostObjects.h"

#import "Bindings/ObjectiveC/LaunchScreenContent.h"
#import "Bindings/ObjectiveC/LaunchScreenManager.h"

#include "Bindings/ObjectiveC/NativeValues.h"

namespace vel_objc {

HostRequest::HostRequest(id<ContentRequest> request) : request_([request retain]) {}

HostRequest::~HostRequest() { [request_ release]; }

vel::Strong<vel::NSDictionary> HostRequest::parameters() const {
  return libraryDictionary([request_ parameters]);
}

bool HostBroker::registerContentResolver(const vel::Strong<vel::ContentResolver>& /*resolver*/) {
  return [broker_ registerContentResolver:manager_] == YES;
}

// In the calls below, the delegate may release the native manager or content, which owns this
// object. The calls retain it, so that this object exists until the delegate returns.

void HostResolverDelegate::contentResolverDidChangeStateForContentData(
    const vel::Strong<vel::ContentResolver>& /*resolver*/,
    const vel::Strong<vel::ContentData>& /*data*/) {
  [[manager_ retain] autorelease];
  [[content_ retain] autorelease];
  [delegate_ contentResolver:manager_ didChangeStateForContentData:content_];
}

// The indexes are the positions in the list of optional operations of vel::ContentViewDelegate.
vel::OperationSet HostViewDelegate::respondingOperations() const {
  vel::OperationSet operations;
  operations[0] = [delegate_ respondsToSelector:@selector(contentViewWillAppear:)] == YES;
  operations[1] = [delegate_ respondsToSelector:@selector(canContentViewDisappear:)] == YES;
  operations[2] = [delegate_ respondsToSelector:@selector(contentViewDidDisappear:)] == YES;
  return operations;
}

void HostViewDelegate::contentViewWillAppear(const vel::Strong<vel::ContentView>& /*view*/) {
  [[content_ retain] autorelease];
  [delegate_ contentViewWillAppear:content_];
}

bool HostViewDelegate::canContentViewDisappear(const vel::Strong<vel::ContentView>& /*view*/) {
  [[content_ retain] autorelease];
  return [delegate_ canContentViewDisappear:content_] == YES;
}

void HostViewDelegate::contentViewDidDisappear(const vel::Strong<vel::ContentView>& /*view*/) {
  [[content_ retain] autorelease];
  [delegate_ contentViewDidDisappear:content_];
}

}  // namespace vel_objc
