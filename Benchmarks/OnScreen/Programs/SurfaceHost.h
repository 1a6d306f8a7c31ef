// A host on Wayland: a connection, and windows in one colour that are drawn once.
#pragma once

#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>
#include <xdg-shell.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <span>

namespace vel::bench {

[[noreturn]] inline void fail(const char* reason) {
  std::fprintf(stderr, "%s\n", reason);
  std::exit(1);
}

/// Creates a buffer of one opaque colour.
inline wl_buffer* makeBuffer(wl_shm* shm, int width, int height, std::uint32_t color) {
  const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  const std::size_t size = count * sizeof(std::uint32_t);
  const int file = memfd_create("buffer", MFD_CLOEXEC);
  if (file < 0 || ftruncate(file, static_cast<off_t>(size)) != 0) {
    fail("no shared memory");
  }
  void* const memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  std::ranges::fill(std::span(static_cast<std::uint32_t*>(memory), count), 0xFF000000U | color);
  munmap(memory, size);
  wl_shm_pool* const pool = wl_shm_create_pool(shm, file, static_cast<std::int32_t>(size));
  wl_buffer* const buffer =
      wl_shm_pool_create_buffer(pool, 0, width, height, width * 4, WL_SHM_FORMAT_ARGB8888);
  wl_shm_pool_destroy(pool);
  close(file);
  return buffer;
}

/// The connection of the host, and the global objects that the windows need.
class SurfaceConnection {
 public:
  SurfaceConnection() {
    if (display_ == nullptr) {
      fail("cannot open the display");
    }
    wl_registry* const registry = wl_display_get_registry(display_);
    static constexpr wl_registry_listener kListener{.global = addGlobal,
                                                    .global_remove = removeGlobal};
    wl_registry_add_listener(registry, &kListener, this);
    wl_display_roundtrip(display_);
    if (compositor_ == nullptr || shm_ == nullptr || windowManager_ == nullptr) {
      fail("the compositor lacks a global object");
    }
  }
  SurfaceConnection(const SurfaceConnection&) = delete;
  SurfaceConnection& operator=(const SurfaceConnection&) = delete;
  ~SurfaceConnection() { wl_display_disconnect(display_); }

  [[nodiscard]] wl_display* display() const { return display_; }
  [[nodiscard]] wl_compositor* compositor() const { return compositor_; }
  [[nodiscard]] wl_shm* shm() const { return shm_; }
  [[nodiscard]] xdg_wm_base* windowManager() const { return windowManager_; }

 private:
  static void addGlobal(void* data, wl_registry* registry, std::uint32_t name,
                        const char* interface, std::uint32_t /*version*/) {
    auto& self = *static_cast<SurfaceConnection*>(data);
    if (std::strcmp(interface, wl_compositor_interface.name) == 0) {
      self.compositor_ = static_cast<wl_compositor*>(
          wl_registry_bind(registry, name, &wl_compositor_interface, 4));
    } else if (std::strcmp(interface, wl_shm_interface.name) == 0) {
      self.shm_ = static_cast<wl_shm*>(wl_registry_bind(registry, name, &wl_shm_interface, 1));
    } else if (std::strcmp(interface, xdg_wm_base_interface.name) == 0) {
      self.windowManager_ =
          static_cast<xdg_wm_base*>(wl_registry_bind(registry, name, &xdg_wm_base_interface, 1));
      static constexpr xdg_wm_base_listener kListener{
          .ping = [](void* /*data*/, xdg_wm_base* manager, std::uint32_t serial) {
            xdg_wm_base_pong(manager, serial);
          }};
      xdg_wm_base_add_listener(self.windowManager_, &kListener, nullptr);
    }
  }
  static void removeGlobal(void* /*data*/, wl_registry* /*registry*/, std::uint32_t /*name*/) {}

  wl_display* display_ = wl_display_connect(nullptr);
  wl_compositor* compositor_ = nullptr;
  wl_shm* shm_ = nullptr;
  xdg_wm_base* windowManager_ = nullptr;
};

/// A black window.
class SurfaceHost {
 public:
  /// Opens the window and waits until the compositor has drawn it.
  SurfaceHost(const SurfaceConnection& connection, int width, int height)
      : surface_(wl_compositor_create_surface(connection.compositor())),
        role_(xdg_wm_base_get_xdg_surface(connection.windowManager(), surface_)),
        toplevel_(xdg_surface_get_toplevel(role_)) {
    static constexpr xdg_surface_listener kRoleListener{
        .configure = [](void* data, xdg_surface* role, std::uint32_t serial) {
          xdg_surface_ack_configure(role, serial);
          *static_cast<bool*>(data) = true;
        }};
    xdg_surface_add_listener(role_, &kRoleListener, &isConfigured_);
    xdg_toplevel_set_title(toplevel_, "host");
    wl_surface_commit(surface_);
    waitFor(connection.display(), isConfigured_);

    static constexpr wl_callback_listener kFrameListener{
        .done = [](void* data, wl_callback* callback, std::uint32_t /*time*/) {
          wl_callback_destroy(callback);
          *static_cast<bool*>(data) = true;
        }};
    bool isDrawn = false;
    wl_callback_add_listener(wl_surface_frame(surface_), &kFrameListener, &isDrawn);
    wl_surface_attach(surface_, makeBuffer(connection.shm(), width, height, 0), 0, 0);
    wl_surface_damage(surface_, 0, 0, width, height);
    wl_surface_commit(surface_);
    waitFor(connection.display(), isDrawn);
    wl_display_roundtrip(connection.display());  // acknowledges the configure events after drawing
  }
  SurfaceHost(const SurfaceHost&) = delete;
  SurfaceHost& operator=(const SurfaceHost&) = delete;
  ~SurfaceHost() {
    xdg_toplevel_destroy(toplevel_);
    xdg_surface_destroy(role_);
    wl_surface_destroy(surface_);
  }

  [[nodiscard]] wl_surface* surface() const { return surface_; }

 private:
  static void waitFor(wl_display* display, const bool& condition) {
    while (!condition) {
      if (wl_display_dispatch(display) < 0) {
        fail("the connection to the display is lost");
      }
    }
  }

  wl_surface* surface_;
  xdg_surface* role_;
  xdg_toplevel* toplevel_;
  bool isConfigured_ = false;
};

/// Waits before the measurement. The length is random, so the measurement begins at any time within
/// a frame of the compositor.
inline void waitBeforeMeasurement() {
  constexpr useconds_t kMinimum = 100'000;
  constexpr useconds_t kRange = 50'000;
  usleep(kMinimum + std::random_device()() % kRange);
}

}  // namespace vel::bench
