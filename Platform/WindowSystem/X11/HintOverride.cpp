#include "Platform/WindowSystem/X11/HintOverride.h"

#include <algorithm>
#include <utility>

namespace vel::x11 {

namespace {

// Between the time when an owner reads the property and the time when it writes the property, we
// write it fewer times than this.
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
  recentWrites_.push_back({.ourValue = value, .ownersValue = ownersValue_});
  return true;
}

void HintOverride::forgetWrites() { recentWrites_.clear(); }

void HintOverride::reconcile(const HintValue& value) {
  if (value != currentValue_) {
    ownersValue_ = interpretOwnersWrite(value);
    currentValue_ = value;
  }
}

// Keeps the current value, because our write came later. Updates the owner's value in each recorded
// write, because the recorded value is out of date.
void HintOverride::reconcileReplaced(const HintValue& expectedValue, const HintValue& value) {
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
      interpretation =
          value == write.ourValue ? write.ownersValue : withoutOurChanges(write, *value);
    }
  }
  return interpretation;
}

// Returns the bits of each element in which our value differs from the owner's value. If a number
// differs, returns all its bits.
std::vector<std::uint32_t> HintOverride::changedBits(const RecentWrite& write) const {
  const std::vector<std::uint32_t> ours = elementsOf(write.ourValue, 0);
  const std::vector<std::uint32_t> owners = elementsOf(write.ownersValue, ours.size());
  std::vector<std::uint32_t> changed(ours.size());
  for (std::size_t i = 0; i < ours.size(); ++i) {
    const std::uint32_t difference = ours[i] ^ owners[i];
    changed[i] = i < bitSetCount_ || difference == 0 ? difference : ~0U;
  }
  return changed;
}

bool HintOverride::containsOurChanges(const RecentWrite& write, const Property& value) const {
  const std::vector<std::uint32_t> ours = elementsOf(write.ourValue, 0);
  const std::vector<std::uint32_t> changed = changedBits(write);
  const std::vector<std::uint32_t> elements = value.numbers();
  if (elements.size() < ours.size() || write.ourValue == write.ownersValue) {
    return false;
  }
  for (std::size_t i = 0; i < ours.size(); ++i) {
    if (((elements[i] ^ ours[i]) & changed[i]) != 0) {
      return false;
    }
  }
  return true;
}

Property HintOverride::withoutOurChanges(const RecentWrite& write, const Property& value) const {
  const std::vector<std::uint32_t> changed = changedBits(write);
  const std::vector<std::uint32_t> owners = elementsOf(write.ownersValue, changed.size());
  std::vector<std::uint32_t> elements = value.numbers();
  for (std::size_t i = 0; i < changed.size(); ++i) {
    elements[i] = (elements[i] & ~changed[i]) | (owners[i] & changed[i]);
  }
  return Property::ofNumbers(value.type, elements);
}

}  // namespace vel::x11
