#pragma once

#import <Foundation/NSAutoreleasePool.h>

#include "Platform/Foundation/NonCopyable.h"

namespace vel::cocoa {

/// Releases, in its destructor, the objects that were autoreleased while it existed. Each operation
/// of the back end that uses AppKit creates one, because a C++ host may call the operation without
/// a pool.
class AutoreleasePool final : public NonCopyable {
 public:
  AutoreleasePool() : pool_([[NSAutoreleasePool alloc] init]) {}
  ~AutoreleasePool() { [pool_ release]; }

 private:
  NSAutoreleasePool* pool_;
};

}  // namespace vel::cocoa
