#include "Platform/WindowSystem/X11/HintOverride.h"

#include <algorithm>
#include <utility>

namespace vel::x11 {

namespace {

// Limits the memory. In practice, we write fewer values than this while the owner edits a value
// that it has read.
constexpr std::size_t kMaxRecentWrites = 4;

// Returns true if `element` and `ourElement` are equal in the bits of the mask `changes`.
bool containsChanges(std::uint32_t element, std::uint32_t ourElement, std::uint32_t changes) {
  return ((element ^ ourElement) & changes) == 0;
}

}  // namespace

std::vector<std::uint32_t> elementsOf(const HintValue& value, std::size_t minCount) {
  std::vector<std::uint32_t> elements = value ? value->numbers() : std::vector<std::uint32_t>();
  elements.resize(std::max(elements.size(), minCount));
  return elements;
}

HintOverride::HintOverride(HintValue value, std::size_t bitSetCount)
    : bitSetCount_(bitSetCount), ownersValue_(value), currentValue_(std::move(value)) {}

bool HintOverride::recordWrite(const HintValue& value) {
  if (value == currentValue_) {
    return false;
  }
  currentValue_ = value;
  if (recentWrites_.size() == kMaxRecentWrites) {
    recentWrites_.pop_front();
  }
  recentWrites_.push_back({.writtenValue = value, .ownersValue = ownersValue_});
  return true;
}

void HintOverride::forgetWrites() { recentWrites_.clear(); }

void HintOverride::recordCurrentValue(const HintValue& value) {
  if (value != currentValue_) {
    ownersValue_ = interpretOwnersWrite(value);
    currentValue_ = value;
  }
}

// Our write has replaced `value`, so `currentValue_` does not change. The recorded writes contain
// the owner's previous value, so this function updates them.
void HintOverride::recordReplacedValue(const HintValue& expectedValue, const HintValue& value) {
  if (value == expectedValue) {
    return;
  }
  ownersValue_ = interpretOwnersWrite(value);
  for (RecentWrite& write : recentWrites_) {
    write.ownersValue = ownersValue_;
  }
}

// If `value` can be based on several of our writes, uses the latest of them.
HintValue HintOverride::interpretOwnersWrite(const HintValue& value) const {
  HintValue interpretation = value;
  for (const RecentWrite& write : recentWrites_) {
    if (value && isBasedOnWrite(write, *value)) {
      // `withoutOurChanges` would keep the elements that we added to the owner's value.
      interpretation =
          value == write.writtenValue ? write.ownersValue : withoutOurChanges(write, *value);
    }
  }
  return interpretation;
}

// Returns, for each element, a mask of the bits that we changed in the owner's value. If the
// element is a number, not a set of bits, the mask contains all bits or none.
std::vector<std::uint32_t> HintOverride::changedBits(const RecentWrite& write) const {
  const std::vector<std::uint32_t> ourElements = elementsOf(write.writtenValue, 0);
  const std::vector<std::uint32_t> ownersElements =
      elementsOf(write.ownersValue, ourElements.size());
  std::vector<std::uint32_t> changes(ourElements.size());
  for (std::size_t i = 0; i < ourElements.size(); ++i) {
    const std::uint32_t difference = ourElements[i] ^ ownersElements[i];
    changes[i] = i < bitSetCount_ || difference == 0 ? difference : ~0U;
  }
  return changes;
}

// Returns true if the owner has probably read the value that we wrote and then written `value`,
// with or without an edit. This function checks two conditions:
// 1. `value` contains our changes of element 0 (the flags) and of the first other element that we
//    changed.
// 2. If we changed elements other than the flags, `value` contains at least one of these elements
//    exactly as we wrote it.
// The first condition is not enough: most of our changes remove bits, and an owner that has not
// read our value can remove the same bits by chance.
bool HintOverride::isBasedOnWrite(const RecentWrite& write, const Property& value) const {
  const std::vector<std::uint32_t> ourElements = elementsOf(write.writtenValue, 0);
  const std::vector<std::uint32_t> changes = changedBits(write);
  const std::vector<std::uint32_t> elements = value.numbers();
  const std::size_t count = ourElements.size();
  if (count == 0 || elements.size() < count || write.writtenValue == write.ownersValue ||
      !containsChanges(elements[0], ourElements[0], changes[0])) {
    return false;
  }
  std::size_t firstChanged = 1;
  while (firstChanged < count && changes[firstChanged] == 0) {
    ++firstChanged;
  }
  if (firstChanged == count) {
    return true;  // we changed only the flags
  }
  if (!containsChanges(elements[firstChanged], ourElements[firstChanged], changes[firstChanged])) {
    return false;
  }
  for (std::size_t i = firstChanged; i < count; ++i) {
    if (changes[i] != 0 && elements[i] == ourElements[i]) {
      return true;
    }
  }
  return false;
}

// Undoes our changes in `value`. If an element does not contain our changes, the owner has replaced
// the element. This function keeps such an element, and the bit in the flags that marks the element
// as valid.
Property HintOverride::withoutOurChanges(const RecentWrite& write, const Property& value) const {
  const std::vector<std::uint32_t> ourElements = elementsOf(write.writtenValue, 0);
  const std::vector<std::uint32_t> ownersElements =
      elementsOf(write.ownersValue, ourElements.size());
  std::vector<std::uint32_t> changes = changedBits(write);
  std::vector<std::uint32_t> elements = value.numbers();
  for (std::size_t i = 1; i < changes.size(); ++i) {
    if (!containsChanges(elements[i], ourElements[i], changes[i])) {
      changes[i] = 0;
      if (i < bitSetCount_) {
        changes[0] &= ~(1U << (i - 1));
      }
    }
  }
  for (std::size_t i = 0; i < changes.size(); ++i) {
    elements[i] = (elements[i] & ~changes[i]) | (ownersElements[i] & changes[i]);
  }
  return Property::ofNumbers(value.type, elements);
}

}  // namespace vel::x11
