#include "Platform/WindowSystem/Wayland/SharedMemory.h"

#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>

#include <cerrno>
#include <cstring>
#include <string_view>

#include "Platform/Foundation/NSLog.h"

namespace vel::wayland {

namespace {

void logFailure(std::size_t size) {
  NSLog("Wayland: shared memory of %u bytes cannot be allocated: %s",
        static_cast<std::uint32_t>(size), std::string_view(std::strerror(errno)));
}

}  // namespace

std::vector<Proxy<wl_buffer>> makeBuffers(const Connection& connection,
                                          const std::vector<Pixels>& pictures) {
  const Pixels& first = pictures.front();
  const std::size_t pictureSize = first.values.size() * sizeof(std::uint32_t);
  const std::size_t size = pictureSize * pictures.size();
  const int file = memfd_create("launch-screen", MFD_CLOEXEC);
  if (file < 0) {
    logFailure(size);
    return {};
  }
  void* memory = MAP_FAILED;
  if (ftruncate(file, static_cast<off_t>(size)) == 0) {
    memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  }
  if (memory == MAP_FAILED) {
    logFailure(size);
    close(file);
    return {};
  }
  wl_shm_pool* const pool =
      wl_shm_create_pool(connection.shm(), file, static_cast<std::int32_t>(size));
  std::vector<Proxy<wl_buffer>> buffers;
  std::size_t offset = 0;
  for (const Pixels& picture : pictures) {
    std::memcpy(static_cast<unsigned char*>(memory) + offset, picture.values.data(), pictureSize);
    buffers.emplace_back(wl_shm_pool_create_buffer(
        pool, static_cast<std::int32_t>(offset), picture.width, picture.height,
        picture.width * static_cast<int>(sizeof(std::uint32_t)), WL_SHM_FORMAT_ARGB8888));
    offset += pictureSize;
  }
  wl_shm_pool_destroy(pool);
  munmap(memory, size);
  close(file);
  return buffers;
}

}  // namespace vel::wayland
