#pragma once

#include <mutex>
#include <utility>

#include "Platform/Foundation/Protocol.h"

namespace vel {

/// A strong reference that any thread may read and write. `load` returns a copy of the reference.
/// Later writes do not affect the copy.
template <class T>
class AtomicReference {
 public:
  [[nodiscard]] Strong<T> load() const {
    const std::scoped_lock lock(mutex_);
    return reference_;
  }

  void store(Strong<T> reference) {
    // The destructor of the old object may call `load` or `store`, so it must run without the lock.
    // The swap moves the old object to the parameter, which outlives the lock.
    const std::scoped_lock lock(mutex_);
    reference_.swap(reference);
  }

 private:
  mutable std::mutex mutex_;
  Strong<T> reference_;
};

}  // namespace vel
