#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/Foundation/Protocol.h"

namespace vel {

/// Keeps objects alive and releases them later. Each thread has its own pool. On the main thread,
/// the end of a run loop pass releases the objects that were added during the pass. Objects that
/// are added between two passes are released at the end of the second pass. On other threads, the
/// end of the thread releases its objects.
class VEL_EXPORT ReleasePool : NonCopyable {
 public:
  ReleasePool() = default;
  /// Releases the objects while `objects_` still exists, because an object's destructor may add
  /// objects to the pool.
  ~ReleasePool() { drainTo(0); }

  /// The pool of the calling thread.
  static ReleasePool& currentPool();

  /// Keeps `object` alive until `drainTo` releases it.
  void add(Strong<const NSObjectProtocol> object) { objects_.push_back(std::move(object)); }

  [[nodiscard]] std::size_t size() const { return objects_.size(); }

  /// Releases all objects except the first `mark` objects, oldest first. Pass an earlier result of
  /// `size` to release only the objects that were added later.
  void drainTo(std::size_t mark);

 private:
  std::vector<Strong<const NSObjectProtocol>> objects_;
};

/// Adds `object` to the current thread's pool and returns `object`.
template <class T>
const Strong<T>& releaseLater(const Strong<T>& object) {
  ReleasePool::currentPool().add(object);
  return object;
}

}  // namespace vel
