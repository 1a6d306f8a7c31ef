// The words that scenarios and traces use for values.
#pragma once

#include <algorithm>
#include <span>
#include <string_view>

namespace vel::host {

/// A value and the word for it.
template <class Value>
struct NamedValue {
  std::string_view name;
  Value value;
};

/// The word for a value that the table holds.
template <class Value, std::size_t Size>
constexpr std::string_view nameOf(Value value, const NamedValue<Value> (&table)[Size]) {
  return std::ranges::find(table, value, &NamedValue<Value>::value)->name;
}

}  // namespace vel::host
