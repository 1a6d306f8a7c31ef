#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

#include "Platform/WindowSystem/X11/Property.h"

namespace vel::x11 {

/// The value of a property, or no value if the window does not have the property.
using HintValue = std::optional<Property>;

/// Returns the elements of a property of format 32. Appends zeros if there are fewer elements than
/// `minCount`.
[[nodiscard]] std::vector<std::uint32_t> elementsOf(const HintValue& value, std::size_t minCount);

/// One hint of an adopted window, for example the property _MOTIF_WM_HINTS. An adopted window was
/// created by its owner, not by us. This class keeps the owner's value, which we restore later, and
/// the current value, which we may have written. This class sends no requests: `WindowStyle` reads
/// and writes the property and passes the values to this class.
///
/// The owner can write the property at any time. Many owners read the property, edit a part of it
/// and write it back. If the owner has read a value that we wrote, the value that it writes still
/// contains some of our changes. This class removes our changes to get the owner's value. In all
/// other cases, the value that the owner writes is the owner's value.
class HintOverride {
 public:
  /// `value` is the value of the property before our first write. The first `bitSetCount` elements
  /// of the property are sets of bits: the owner and we can change different bits of one element.
  /// The later elements are numbers. The bits of element 0 say which of the other sets of bits are
  /// valid: bit 0 is for element 1, bit 1 is for element 2, and so on.
  HintOverride(HintValue value, std::size_t bitSetCount);

  /// The value to restore.
  [[nodiscard]] const HintValue& ownersValue() const { return ownersValue_; }
  /// The value that the window has, as far as we know.
  [[nodiscard]] const HintValue& currentValue() const { return currentValue_; }

  /// Records that we write `value`. Returns false if `value` is already the current value, so that
  /// the caller need not write it.
  [[nodiscard]] bool recordWrite(const HintValue& value);
  /// Forgets our writes, so that the owner's later values are not checked for our changes. Call
  /// this after you restore the owner's value.
  void forgetWrites();

  /// Records that we have read `value` from the window. If `value` is not the current value, the
  /// owner wrote it, and this function updates the owner's value and the current value.
  void recordCurrentValue(const HintValue& value);
  /// Records that one of our writes replaced `value`. `expectedValue` is the result of
  /// `currentValue` before that write. If `value` differs from `expectedValue`, the owner wrote
  /// `value`, and this function updates only the owner's value.
  void recordReplacedValue(const HintValue& expectedValue, const HintValue& value);

 private:
  /// A value that we wrote, and the owner's value from which we computed the written value.
  struct RecentWrite {
    HintValue writtenValue;
    HintValue ownersValue;
  };

  [[nodiscard]] HintValue interpretOwnersWrite(const HintValue& value) const;
  [[nodiscard]] std::vector<std::uint32_t> changedBits(const RecentWrite& write) const;
  [[nodiscard]] bool isBasedOnWrite(const RecentWrite& write, const Property& value) const;
  [[nodiscard]] Property withoutOurChanges(const RecentWrite& write, const Property& value) const;

  std::size_t bitSetCount_;
  HintValue ownersValue_;
  HintValue currentValue_;
  std::deque<RecentWrite> recentWrites_;  // oldest first; the owner may have read any of them
};

}  // namespace vel::x11
