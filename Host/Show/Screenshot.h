#pragma once

#include <string>

#include "Platform/WindowSystem/WindowSystem.h"

namespace vel::host {

/// Writes the picture to a file in the PNG format, over what is there; answers what went wrong,
/// empty for nothing.
[[nodiscard]] std::string writePng(const WindowPicture& picture, const std::string& path);

}  // namespace vel::host
