#pragma once

#include <mutex>
#include <utility>

#include "Platform/Foundation/Protocol.h"

namespace vel {

/// A strong reference that any thread may read and write.
template <class T>
class AtomicReference {
 public:
  [[nodiscard]] Strong<T> load() const {
    const std::scoped_lock lock(mutex_);
    return reference_;
  }

  void store(Strong<T> reference) {
    // The parameter outlives the lock and releases the old object. The object's destructor may thus
    // call `load` or `store`.
    const std::scoped_lock lock(mutex_);
    reference_.swap(reference);
  }

 private:
  mutable std::mutex mutex_;
  Strong<T> reference_;
};

}  // namespace vel
