#include "Platform/WindowSystem/X11/HintOverride.h"

#include <algorithm>
#include <utility>

namespace vel::x11 {

namespace {

// Limits the memory. An owner that edits the property reads it first. In practice, we write the
// property fewer times than this limit before the owner writes the edited value.
constexpr std::size_t kMaxRecentWrites = 4;

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

// Does not change the current value, because our write came after the owner's write. We recorded
// our writes before we read `value`, so the owner's value in each record is out of date.
void HintOverride::recordReplacedValue(const HintValue& expectedValue, const HintValue& value) {
  if (value == expectedValue) {
    return;
  }
  ownersValue_ = interpretOwnersWrite(value);
  for (RecentWrite& write : recentWrites_) {
    write.ownersValue = ownersValue_;
  }
}

// If the value contains the changes of several writes, uses the latest of these writes.
HintValue HintOverride::interpretOwnersWrite(const HintValue& value) const {
  HintValue interpretation = value;
  for (const RecentWrite& write : recentWrites_) {
    if (value && containsOurChanges(write, *value)) {
      // The owner's value can be missing or shorter. `withoutOurChanges` cannot return such a
      // value.
      interpretation =
          value == write.writtenValue ? write.ownersValue : withoutOurChanges(write, *value);
    }
  }
  return interpretation;
}

// Returns, for each element, the bits in which the written value differs from the owner's value. If
// an element that is not a set of bits differs, all its bits count as changed.
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

bool HintOverride::containsOurChanges(const RecentWrite& write, const Property& value) const {
  const std::vector<std::uint32_t> ourElements = elementsOf(write.writtenValue, 0);
  const std::vector<std::uint32_t> changes = changedBits(write);
  const std::vector<std::uint32_t> elements = value.numbers();
  if (elements.size() < ourElements.size() || write.writtenValue == write.ownersValue) {
    return false;
  }
  for (std::size_t i = 0; i < ourElements.size(); ++i) {
    if (((elements[i] ^ ourElements[i]) & changes[i]) != 0) {
      return false;
    }
  }
  return true;
}

Property HintOverride::withoutOurChanges(const RecentWrite& write, const Property& value) const {
  const std::vector<std::uint32_t> changes = changedBits(write);
  const std::vector<std::uint32_t> ownersElements = elementsOf(write.ownersValue, changes.size());
  std::vector<std::uint32_t> elements = value.numbers();
  for (std::size_t i = 0; i < changes.size(); ++i) {
    elements[i] = (elements[i] & ~changes[i]) | (ownersElements[i] & changes[i]);
  }
  return Property::ofNumbers(value.type, elements);
}

}  // namespace vel::x11
