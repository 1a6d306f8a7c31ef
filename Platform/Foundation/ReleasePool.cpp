#include "Platform/Foundation/ReleasePool.h"

#include <iterator>
#include <utility>

namespace vel {

ReleasePool& ReleasePool::current() {
  thread_local ReleasePool pool;
  return pool;
}

void ReleasePool::drainTo(std::size_t mark) {
  // A destructor may hand over more while we release; that goes in the same drain.
  while (objects_.size() > mark) {
    const auto first = objects_.begin() + static_cast<std::ptrdiff_t>(mark);
    const std::vector<Strong<const NSObjectProtocol>> released(
        std::make_move_iterator(first), std::make_move_iterator(objects_.end()));
    objects_.resize(mark);
  }
}

}  // namespace vel
