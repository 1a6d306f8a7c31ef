#include "Platform/Foundation/ReleasePool.h"

#include <iterator>
#include <utility>

namespace vel {

ReleasePool& ReleasePool::currentPool() {
  thread_local ReleasePool pool;
  return pool;
}

void ReleasePool::drainTo(std::size_t mark) {
  // The destructor of an object may add more objects. The loop also releases these objects.
  while (objects_.size() > mark) {
    const auto begin = objects_.begin() + static_cast<std::ptrdiff_t>(mark);
    std::vector<Strong<const NSObjectProtocol>> objects(std::make_move_iterator(begin),
                                                        std::make_move_iterator(objects_.end()));
    objects_.resize(mark);
    // Releases the objects one by one: the order in which a vector destroys its elements is not
    // specified.
    for (Strong<const NSObjectProtocol>& object : objects) {
      object.reset();
    }
  }
}

}  // namespace vel
