#include "Platform/Foundation/ReleasePool.h"

#include <iterator>
#include <utility>

namespace vel {

ReleasePool& ReleasePool::current() {
  thread_local ReleasePool pool;
  return pool;
}

void ReleasePool::drainTo(std::size_t mark) {
  // A destructor may add more objects. The loop releases them too.
  while (objects_.size() > mark) {
    const auto first = objects_.begin() + static_cast<std::ptrdiff_t>(mark);
    std::vector<Strong<const NSObjectProtocol>> objects(std::make_move_iterator(first),
                                                        std::make_move_iterator(objects_.end()));
    objects_.resize(mark);
    // One by one: the order in which a vector destroys its elements is not specified.
    for (Strong<const NSObjectProtocol>& object : objects) {
      object.reset();
    }
  }
}

}  // namespace vel
