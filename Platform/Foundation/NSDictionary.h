#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSObject.h"

namespace vel {

/// An immutable dictionary that maps strings to objects of any class.
class VEL_EXPORT NSDictionary final : public Class<NSDictionary, "NSDictionary"> {
 public:
  using Entries = std::map<std::string, Strong<NSObjectProtocol>, std::less<>>;

  explicit NSDictionary(Entries entries) : entries_(std::move(entries)) {}

  static Strong<NSDictionary> dictionary() { return make<NSDictionary>(Entries()); }
  static Strong<NSDictionary> dictionaryWithEntries(Entries entries) {
    return make<NSDictionary>(std::move(entries));
  }

  /// The value of `key`. Null if the dictionary does not contain `key`.
  [[nodiscard]] Strong<NSObjectProtocol> objectForKey(std::string_view key) const {
    const auto entry = entries_.find(key);
    return entry == entries_.end() ? nullptr : entry->second;
  }
  [[nodiscard]] std::size_t count() const { return entries_.size(); }

 private:
  Entries entries_;
};

/// An object that stands for a null value in an NSDictionary, such as the JSON value `null`.
class VEL_EXPORT NSNull final : public Class<NSNull, "NSNull"> {
 public:
  static Strong<NSNull> null() { return make<NSNull>(); }
};

}  // namespace vel
