#include "Host/Show/Screenshot.h"

#include <png.h>

namespace vel::host {

std::string writePng(const WindowPicture& picture, const std::string& path) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(picture.width);
  image.height = static_cast<png_uint_32>(picture.height);
  image.format = PNG_FORMAT_RGB;
  const bool isWritten =
      png_image_write_to_file(&image, path.c_str(), 0, picture.pixels.data(), 0, nullptr) != 0;
  return isWritten ? std::string() : std::string(image.message);
}

}  // namespace vel::host
