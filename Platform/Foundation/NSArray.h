#pragma once

#include <vector>

#include "Platform/Foundation/Protocol.h"

namespace vel {

/// A list of objects. If a function returns a list by value, later changes do not affect the list.
template <class T>
using NSArray = std::vector<Strong<T>>;

}  // namespace vel
