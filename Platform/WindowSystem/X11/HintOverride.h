#pragma once

#include <cstddef>
#include <deque>
#include <optional>

#include "Platform/WindowSystem/X11/Property.h"

namespace vel::x11 {

/// The value of a property, or no value if the window does not have the property.
using HintValue = std::optional<Property>;

/// One property of an adopted window: the owner's value, which restoring writes back, and the
/// current value, which can be ours. It sends no requests: `WindowStyle` reads and writes the
/// property and passes the values on.
///
/// The owner can write the property at any time, and its last write becomes the owner's value. Many
/// programs read a property, edit a part of it and write it back. If such a program has read a
/// value of ours, its new value still contains our changes. The owner's value is then the new value
/// with our changes taken out.
class HintOverride {
 public:
  /// `value` is the window's value before we write. The first `bitSetCount` elements of the
  /// property are sets of bits: the owner and we can change different bits of one element. Each
  /// other element is a number.
  HintOverride(HintValue value, std::size_t bitSetCount);

  /// The value to restore.
  [[nodiscard]] const HintValue& ownersValue() const { return ownersValue_; }
  /// The value that the window has, as far as we know.
  [[nodiscard]] const HintValue& currentValue() const { return currentValue_; }

  /// Makes `value`, which we are about to write, the current value. Returns false if it is the
  /// current value already, so that no request is needed.
  [[nodiscard]] bool recordWrite(const HintValue& value);
  /// Forgets what we wrote. Call it after restoring: whatever the owner writes from then on is the
  /// owner's value as it is.
  void forgetWrites();

  /// Compares with the value that the window has now. A difference is a write of the owner.
  void reconcile(const HintValue& value);
  /// Compares with the value that the window had just before one of our writes; `expectedValue` was
  /// the current value then. A difference is a write of the owner, which our write has replaced.
  void reconcileReplaced(const HintValue& expectedValue, const HintValue& value);

 private:
  /// A value that we wrote, and the owner's value that we made it from.
  struct RecentWrite {
    HintValue ourValue;
    HintValue ownersValue;
  };

  [[nodiscard]] HintValue interpretOwnersWrite(const HintValue& value) const;
  [[nodiscard]] std::vector<std::uint32_t> changedBits(const RecentWrite& write) const;
  [[nodiscard]] bool containsOurChanges(const RecentWrite& write, const Property& value) const;
  [[nodiscard]] Property withoutOurChanges(const RecentWrite& write, const Property& value) const;

  std::size_t bitSetCount_;
  HintValue ownersValue_;
  HintValue currentValue_;
  std::deque<RecentWrite> recentWrites_;  // oldest first; the owner can have read any of them
};

}  // namespace vel::x11
