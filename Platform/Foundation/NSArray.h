#pragma once

#include <vector>

#include "Platform/Foundation/Protocol.h"

namespace vel {

/// A list of objects that an operation returns. It is a copy: later changes do not affect it.
template <class T>
using NSArray = std::vector<Strong<T>>;

}  // namespace vel
