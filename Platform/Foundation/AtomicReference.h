#pragma once

#include <mutex>
#include <utility>

#include "Platform/Foundation/Protocol.h"

namespace vel {

/// An atomic strong property: every read and write is indivisible, from any thread. A read answers
/// a reference that stays valid whatever is written meanwhile.
template <class T>
class AtomicReference {
 public:
  [[nodiscard]] Strong<T> load() const {
    const std::scoped_lock lock(mutex_);
    return reference_;
  }

  void store(Strong<T> reference) {
    // Swapped, so that the old value dies with the parameter, after the lock is given back: its
    // destructor may come back here.
    const std::scoped_lock lock(mutex_);
    reference_.swap(reference);
  }

 private:
  mutable std::mutex mutex_;
  Strong<T> reference_;
};

}  // namespace vel
