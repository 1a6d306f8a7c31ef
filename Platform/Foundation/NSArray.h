#pragma once

#include <vector>

#include "Platform/Foundation/Protocol.h"

namespace vel {

/// A list of objects.
template <class T>
using NSArray = std::vector<Strong<T>>;

}  // namespace vel
