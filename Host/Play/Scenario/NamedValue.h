// Tables of values and their names in scenarios and traces.
#pragma once

#include <algorithm>
#include <string_view>

namespace vel::host {

/// An entry of a table: a value and its name.
template <class Value>
struct NamedValue {
  std::string_view name;
  Value value;
};

/// Returns the name of a value. The table must contain the value.
template <class Value, std::size_t Size>
constexpr std::string_view nameOf(Value value, const NamedValue<Value> (&table)[Size]) {
  return std::ranges::find(table, value, &NamedValue<Value>::value)->name;
}

}  // namespace vel::host
