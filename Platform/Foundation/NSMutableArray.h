#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSObject.h"

namespace vel {

/// Thrown if an array changes during an iteration over it.
class VEL_EXPORT NSCollectionMutatedError : public std::runtime_error {
 public:
  NSCollectionMutatedError() : std::runtime_error("collection mutated while being enumerated") {}
};

/// A growable ordered array of objects. A range-based `for` loop over the array throws
/// `NSCollectionMutatedError` if the loop body changes the array, even in the last iteration. Only
/// one thread at a time may use an array.
///
/// In an Objective-C++ file that includes the system's AppKit, write `vel::NSMutableArray`. Without
/// `vel::`, GCC uses the Objective-C class.
template <class T>
class NSMutableArray final : public Class<vel::NSMutableArray<T>, "NSMutableArray"> {
 public:
  static Strong<NSMutableArray> array() { return make<NSMutableArray>(); }

  [[nodiscard]] std::size_t count() const { return objects_.size(); }
  [[nodiscard]] const Strong<T>& objectAtIndex(std::size_t index) const {
    return objects_.at(index);
  }

  /// The index of the first object that is equal to `object`. Returns `std::nullopt` if no object
  /// is equal, or if `object` is null.
  [[nodiscard]] std::optional<std::size_t> indexOfObject(const T* object) const {
    const auto position = std::ranges::find_if(
        objects_, [object](const Strong<T>& element) { return element->isEqual(object); });
    if (object == nullptr || position == objects_.end()) {
      return std::nullopt;
    }
    return static_cast<std::size_t>(position - objects_.begin());
  }
  [[nodiscard]] bool containsObject(const T* object) const {
    return indexOfObject(object).has_value();
  }

  /// `object` must not be null.
  void addObject(Strong<T> object) {
    ++mutationCount_;
    objects_.push_back(std::move(object));
  }

  void removeObjectAtIndex(std::size_t index) {
    // Keeps the object alive until `erase` returns, because its destructor may use the array.
    const Strong<T> object = objects_.at(index);
    ++mutationCount_;
    objects_.erase(objects_.begin() + static_cast<std::ptrdiff_t>(index));
  }

  void removeAllObjects() {
    if (!objects_.empty()) {
      ++mutationCount_;
      // Keeps the objects alive until the array is empty: their destructors may use the array.
      const std::vector<Strong<T>> objects = std::exchange(objects_, {});
    }
  }

  /// The sentinel that `end` returns.
  struct End {};

  /// `operator*` returns a strong reference, which keeps the element alive in the loop's body.
  class Iterator {
   public:
    explicit Iterator(const NSMutableArray& array)
        : array_(array), initialMutationCount_(array.mutationCount_) {}

    Strong<T> operator*() const { return array_.objects_[index_]; }
    Iterator& operator++() {
      if (array_.mutationCount_ != initialMutationCount_) {
        throw NSCollectionMutatedError();
      }
      ++index_;
      return *this;
    }
    bool operator==(End) const { return index_ >= array_.objects_.size(); }

   private:
    const NSMutableArray& array_;
    std::size_t index_ = 0;
    std::size_t initialMutationCount_;
  };

  [[nodiscard]] Iterator begin() const { return Iterator(*this); }
  [[nodiscard]] End end() const { return {}; }

 private:
  std::vector<Strong<T>> objects_;
  std::size_t mutationCount_ = 0;
};

}  // namespace vel
