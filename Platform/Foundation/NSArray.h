#pragma once

#include <vector>

#include "Platform/Foundation/Protocol.h"

namespace vel {

/// A list of objects as an operation answers it: a copy that nobody changes.
template <class T>
using NSArray = std::vector<Strong<T>>;

}  // namespace vel
