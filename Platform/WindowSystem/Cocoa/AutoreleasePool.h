#pragma once

#import <Foundation/NSAutoreleasePool.h>

#include "Platform/Foundation/NonCopyable.h"

namespace vel::cocoa {

/// Releases the autoreleased objects of one operation. A C++ host may call the back end without a
/// pool of its own.
class AutoreleasePool final : public NonCopyable {
 public:
  AutoreleasePool() : pool_([[NSAutoreleasePool alloc] init]) {}
  ~AutoreleasePool() { [pool_ release]; }

 private:
  NSAutoreleasePool* pool_;
};

}  // namespace vel::cocoa
