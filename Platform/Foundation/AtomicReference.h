#pragma once

#include <mutex>
#include <utility>

#include "Platform/Foundation/Protocol.h"

namespace vel {

/// A strong reference that any thread may read and write. `load` returns a copy, which later writes
/// do not affect.
template <class T>
class AtomicReference {
 public:
  [[nodiscard]] Strong<T> load() const {
    const std::scoped_lock lock(mutex_);
    return reference_;
  }

  void store(Strong<T> reference) {
    // After the swap, the parameter keeps the old object alive until the lock is released. The
    // destructor of the old object may call `load` or `store`, which take the lock.
    const std::scoped_lock lock(mutex_);
    reference_.swap(reference);
  }

 private:
  mutable std::mutex mutex_;
  Strong<T> reference_;
};

}  // namespace vel
