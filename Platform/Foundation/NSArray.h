#pragma once

#include <vector>

#include "Platform/Foundation/Protocol.h"

namespace vel {

/// A list of objects. A function that returns an NSArray by value returns a copy, which later calls
/// do not change.
template <class T>
using NSArray = std::vector<Strong<T>>;

}  // namespace vel
