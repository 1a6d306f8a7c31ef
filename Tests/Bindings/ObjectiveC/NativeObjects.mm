#import "Tests/Bindings/ObjectiveC/NativeObjects.h"

@implementation NativeRequest
+ (NativeRequest*)requestWithParameters:(NSDictionary*)parameters {
  NativeRequest* const request = [[[NativeRequest alloc] init] autorelease];
  request->parameters = [parameters retain];
  return request;
}
- (NSDictionary*)parameters {
  return parameters;
}
- (void)dealloc {
  [parameters release];
  [super dealloc];
}
@end

@implementation NativeBroker
- (BOOL)registerContentResolver:(id<ContentResolver>)newResolver {
  resolver = newResolver;
  return NO;
}
@end

@implementation NativeResolverDelegate
- (void)contentResolver:(id<ContentResolver>)contentResolver
    didChangeStateForContentData:(id<ContentData>)contentData {
  ++changes;
  resolver = contentResolver;
  data = contentData;
  isOnMainThread = [NSThread isMainThread];
}
@end

@implementation DelegateWithoutProtocol
- (void)contentResolver:(id<ContentResolver>)resolver
    didChangeStateForContentData:(id<ContentData>)data {
  ++changes;
}
@end

@implementation NativeViewDelegate
- (id)init {
  self = [super init];
  calls = [[NSMutableArray alloc] init];
  mayDisappear = YES;
  return self;
}
- (void)dealloc {
  [calls release];
  [super dealloc];
}
- (void)contentViewWillAppear:(id<ContentView>)contentView {
  view = contentView;
  [calls addObject:@"will appear"];
}
- (BOOL)canContentViewDisappear:(id<ContentView>)contentView {
  [calls addObject:@"can disappear"];
  return mayDisappear;
}
- (void)contentViewDidDisappear:(id<ContentView>)contentView {
  [calls addObject:@"did disappear"];
}
@end

@implementation SilentViewDelegate
@end
