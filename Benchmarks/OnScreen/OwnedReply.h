#pragma once

#include <cstdlib>
#include <memory>

namespace vel::bench {

struct FreeMemory {
  void operator()(void* memory) const { std::free(memory); }
};

/// A reply or an event of XCB, which the owner frees.
template <class Reply>
using OwnedReply = std::unique_ptr<Reply, FreeMemory>;

}  // namespace vel::bench
