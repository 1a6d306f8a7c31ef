#pragma once

#include <string>

#include "Platform/WindowSystem/WindowSystem.h"

namespace vel::host {

/// Writes the picture to a PNG file and replaces an existing file. Returns an error message, or an
/// empty string on success.
[[nodiscard]] std::string writePng(const WindowPicture& picture, const std::string& path);

}  // namespace vel::host
