#pragma once

#include <cstddef>
#include <vector>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Protocol.h"

namespace vel {

/// The deferred-release pool of the current thread. What is handed to it stays alive until the run
/// loop ends the pass in which it was handed over (or, handed over between passes, the next one);
/// on a thread without a run loop, until the thread ends.
class VEL_EXPORT ReleasePool {
 public:
  ReleasePool() = default;
  ReleasePool(const ReleasePool&) = delete;
  ReleasePool& operator=(const ReleasePool&) = delete;
  ReleasePool(ReleasePool&&) = delete;
  ReleasePool& operator=(ReleasePool&&) = delete;
  /// Released while the pool still stands: what dies then may hand over more.
  ~ReleasePool() { drainTo(0); }

  /// The pool of the calling thread.
  static ReleasePool& current();

  /// Keeps `object` alive until the pool is drained.
  void add(Strong<const NSObjectProtocol> object) { objects_.push_back(std::move(object)); }

  /// How many objects the pool holds; a mark for `drainTo`.
  [[nodiscard]] std::size_t size() const { return objects_.size(); }

  /// Releases what was added since the pool had `mark` objects, newest last.
  void drainTo(std::size_t mark);

 private:
  std::vector<Strong<const NSObjectProtocol>> objects_;
};

/// Hands `object` to the current thread's pool and answers it.
template <class T>
const Strong<T>& releaseLater(const Strong<T>& object) {
  ReleasePool::current().add(object);
  return object;
}

}  // namespace vel
