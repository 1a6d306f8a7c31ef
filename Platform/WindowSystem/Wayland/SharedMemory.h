#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Platform/WindowSystem/Wayland/Connection.h"

namespace vel::wayland {

/// Pixels in the format WL_SHM_FORMAT_ARGB8888: premultiplied by their opacity, row by row from the
/// top.
struct Pixels {
  int width = 0;
  int height = 0;
  std::vector<std::uint32_t> values;
};

/// The maximum number of pixels that a wl_shm_pool holds. The protocol limits the size of a pool to
/// INT32_MAX bytes.
inline constexpr std::size_t kMaxPixelCount = INT32_MAX / sizeof(std::uint32_t);

/// Copies pictures of the same size into shared memory and returns one buffer for each picture. The
/// pictures must have at most `kMaxPixelCount` pixels together. If the system has no memory, logs
/// this and returns an empty list.
[[nodiscard]] std::vector<Proxy<wl_buffer>> makeBuffers(const Connection& connection,
                                                        const std::vector<Pixels>& pictures);

}  // namespace vel::wayland
