// The operations of LaunchScreenContent that the binding uses and that are hidden from hosts.
#pragma once

#import "Bindings/ObjectiveC/LaunchScreenContent.h"

#include "LaunchScreen/Content/LaunchScreenContent.h"

@interface LaunchScreenContent (Library)
/// Makes the native object of a content of the library.
- (id)initWithLibraryContent:(const vel::Strong<vel::LaunchScreenContent>&)content;
/// True if this is the native object of `content`.
- (BOOL)isObjectOf:(const vel::Strong<vel::LaunchScreenContent>&)content;
@end
