#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/Foundation/Protocol.h"

namespace vel {

/// A thread's pool for deferred releases. It keeps an object alive until the end of the run loop
/// pass in which the object was added, or until the end of the next pass if no pass was running. On
/// a thread without a run loop, it keeps each object alive until the thread ends.
class VEL_EXPORT ReleasePool : NonCopyable {
 public:
  ReleasePool() = default;
  /// Releases all objects before the members are destroyed, because the destructor of an object may
  /// add more objects.
  ~ReleasePool() { drainTo(0); }

  /// The pool of the calling thread.
  static ReleasePool& currentPool();

  /// Keeps `object` alive until the pool is drained.
  void add(Strong<const NSObjectProtocol> object) { objects_.push_back(std::move(object)); }

  /// The number of objects in the pool. `drainTo` takes this number as a mark.
  [[nodiscard]] std::size_t size() const { return objects_.size(); }

  /// Releases the objects that were added after `size` returned `mark`, oldest first.
  void drainTo(std::size_t mark);

 private:
  std::vector<Strong<const NSObjectProtocol>> objects_;
};

/// Adds `object` to the current thread's pool and returns it.
template <class T>
const Strong<T>& releaseLater(const Strong<T>& object) {
  ReleasePool::currentPool().add(object);
  return object;
}

}  // namespace vel
