#include "Tests/Support/Wayland/SurfaceHost.h"

#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <span>
#include <stdexcept>
#include <string_view>

namespace vel::test {

/// The functions that libwayland calls for the events of a SurfaceHost, the host. `data` points to
/// the host.
struct HostEvents {
  /// Returns the host.
  static SurfaceHost& countEvent(void* data) {
    auto& host = *static_cast<SurfaceHost*>(data);
    ++host.eventCount_;
    return host;
  }

  static void global(void* data, wl_registry* registry, std::uint32_t name, const char* interface,
                     std::uint32_t /*version*/) {
    SurfaceHost& host = countEvent(data);
    const std::string_view text = interface;
    if (text == "wl_compositor" && host.compositor_ == nullptr) {
      host.compositor_ = static_cast<wl_compositor*>(
          wl_registry_bind(registry, name, &wl_compositor_interface, 4));
    } else if (text == "wl_shm" && host.shm_ == nullptr) {
      host.shm_ = static_cast<wl_shm*>(wl_registry_bind(registry, name, &wl_shm_interface, 1));
    } else if (text == "xdg_wm_base" && host.windowManager_ == nullptr) {
      host.windowManager_ =
          static_cast<xdg_wm_base*>(wl_registry_bind(registry, name, &xdg_wm_base_interface, 1));
      xdg_wm_base_add_listener(host.windowManager_, &kWindowManagerListener, data);
    } else if (text == "wl_seat" && host.seat_ == nullptr) {
      host.seat_ = static_cast<wl_seat*>(wl_registry_bind(registry, name, &wl_seat_interface, 1));
      wl_seat_add_listener(host.seat_, &kSeatListener, data);
    }
  }
  static void globalRemove(void* /*data*/, wl_registry* /*registry*/, std::uint32_t /*name*/) {}
  static constexpr wl_registry_listener kRegistryListener{.global = global,
                                                          .global_remove = globalRemove};

  static void ping(void* data, xdg_wm_base* windowManager, std::uint32_t serial) {
    countEvent(data);
    xdg_wm_base_pong(windowManager, serial);
  }
  static constexpr xdg_wm_base_listener kWindowManagerListener{.ping = ping};

  static void configureXdgSurface(void* data, xdg_surface* surface, std::uint32_t serial) {
    SurfaceHost& host = countEvent(data);
    xdg_surface_ack_configure(surface, serial);
    // If the compositor sends a size of zero, the host chooses the size.
    const CGSize size = host.pendingSize_.width > 0 ? host.pendingSize_ : host.ownSize_;
    const bool isNewSize = size != host.size_;
    if (isNewSize) {
      host.size_ = size;
    }
    if (isNewSize || !host.isConfigured_) {
      host.isConfigured_ = true;
      host.draw();
    }
  }
  static constexpr xdg_surface_listener kXdgSurfaceListener{.configure = configureXdgSurface};

  static void configureToplevel(void* data, xdg_toplevel* /*toplevel*/, std::int32_t width,
                                std::int32_t height, wl_array* /*states*/) {
    countEvent(data).pendingSize_ = {static_cast<double>(width), static_cast<double>(height)};
  }
  static void closeToplevel(void* data, xdg_toplevel* /*toplevel*/) {
    countEvent(data).isAskedToClose_ = true;
  }
  static const xdg_toplevel_listener kToplevelListener;

  static void enterOutput(void* data, wl_surface* /*surface*/, wl_output* /*output*/) {
    ++countEvent(data).outputEntries_;
  }
  static void leaveOutput(void* /*data*/, wl_surface* /*surface*/, wl_output* /*output*/) {}
  static const wl_surface_listener kSurfaceListener;

  static void capabilities(void* data, wl_seat* seat, std::uint32_t capabilities) {
    SurfaceHost& host = countEvent(data);
    if ((capabilities & WL_SEAT_CAPABILITY_POINTER) != 0 && host.pointer_ == nullptr) {
      host.pointer_ = wl_seat_get_pointer(seat);
      wl_pointer_add_listener(host.pointer_, &kPointerListener, data);
    }
    if ((capabilities & WL_SEAT_CAPABILITY_TOUCH) != 0 && host.touch_ == nullptr) {
      host.touch_ = wl_seat_get_touch(seat);
      wl_touch_add_listener(host.touch_, &kTouchListener, data);
    }
  }
  static void seatName(void* /*data*/, wl_seat* /*seat*/, const char* /*name*/) {}
  static constexpr wl_seat_listener kSeatListener{.capabilities = capabilities, .name = seatName};

  static void touchDown(void* data, wl_touch* /*touch*/, std::uint32_t /*serial*/,
                        std::uint32_t /*time*/, wl_surface* surface, std::int32_t /*id*/,
                        wl_fixed_t /*x*/, wl_fixed_t /*y*/) {
    SurfaceHost& host = countEvent(data);
    ++(surface == host.surface_ ? host.touches_ : host.touchesElsewhere_);
  }
  static void touchUp(void* /*data*/, wl_touch* /*touch*/, std::uint32_t /*serial*/,
                      std::uint32_t /*time*/, std::int32_t /*id*/) {}
  static void touchMotion(void* /*data*/, wl_touch* /*touch*/, std::uint32_t /*time*/,
                          std::int32_t /*id*/, wl_fixed_t /*x*/, wl_fixed_t /*y*/) {}
  static void touchFrame(void* /*data*/, wl_touch* /*touch*/) {}
  static void touchCancel(void* /*data*/, wl_touch* /*touch*/) {}
  static const wl_touch_listener kTouchListener;

  static void frameDone(void* data, wl_callback* callback, std::uint32_t /*time*/) {
    ++countEvent(data).frameCount_;
    wl_callback_destroy(callback);
  }
  static constexpr wl_callback_listener kFrameListener{.done = frameDone};

  static void pointerEnter(void* data, wl_pointer* /*pointer*/, std::uint32_t /*serial*/,
                           wl_surface* surface, wl_fixed_t /*x*/, wl_fixed_t /*y*/) {
    SurfaceHost& host = countEvent(data);
    host.isPointerInside_ = surface == host.surface_;
    // A toolkit would mistake the user data of a foreign surface for its own data.
    if (surface != nullptr && surface != host.surface_ &&
        wl_surface_get_user_data(surface) != nullptr) {
      host.hasEnteredForeignSurfaceWithData_ = true;
    }
  }
  static void pointerLeave(void* data, wl_pointer* /*pointer*/, std::uint32_t /*serial*/,
                           wl_surface* /*surface*/) {
    countEvent(data).isPointerInside_ = false;
  }
  static void motion(void* /*data*/, wl_pointer* /*pointer*/, std::uint32_t /*time*/,
                     wl_fixed_t /*x*/, wl_fixed_t /*y*/) {}
  static void button(void* data, wl_pointer* /*pointer*/, std::uint32_t /*serial*/,
                     std::uint32_t /*time*/, std::uint32_t /*button*/, std::uint32_t state) {
    SurfaceHost& host = countEvent(data);
    if (state == WL_POINTER_BUTTON_STATE_PRESSED) {
      ++(host.isPointerInside_ ? host.presses_ : host.pressesElsewhere_);
    }
  }
  static void axis(void* /*data*/, wl_pointer* /*pointer*/, std::uint32_t /*time*/,
                   std::uint32_t /*axis*/, wl_fixed_t /*value*/) {}
  static const wl_pointer_listener kPointerListener;
};

// Later protocol versions add members to the four listeners below. These members stay null.
const xdg_toplevel_listener HostEvents::kToplevelListener = [] {
  xdg_toplevel_listener listener{};
  listener.configure = HostEvents::configureToplevel;
  listener.close = HostEvents::closeToplevel;
  return listener;
}();

const wl_surface_listener HostEvents::kSurfaceListener = [] {
  wl_surface_listener listener{};
  listener.enter = HostEvents::enterOutput;
  listener.leave = HostEvents::leaveOutput;
  return listener;
}();

const wl_touch_listener HostEvents::kTouchListener = [] {
  wl_touch_listener listener{};
  listener.down = HostEvents::touchDown;
  listener.up = HostEvents::touchUp;
  listener.motion = HostEvents::touchMotion;
  listener.frame = HostEvents::touchFrame;
  listener.cancel = HostEvents::touchCancel;
  return listener;
}();

const wl_pointer_listener HostEvents::kPointerListener = [] {
  wl_pointer_listener listener{};
  listener.enter = HostEvents::pointerEnter;
  listener.leave = HostEvents::pointerLeave;
  listener.motion = HostEvents::motion;
  listener.button = HostEvents::button;
  listener.axis = HostEvents::axis;
  return listener;
}();

SurfaceHost::SurfaceHost(const std::string& display, const std::string& title, CGSize size,
                         std::uint32_t color)
    : display_(wl_display_connect(display.c_str())), size_(size), ownSize_(size), color_(color) {
  if (display_ == nullptr) {
    throw std::runtime_error("cannot connect to " + display);
  }
  registry_ = wl_display_get_registry(display_);
  wl_registry_add_listener(registry_, &HostEvents::kRegistryListener, this);
  wl_display_roundtrip(display_);
  surface_ = wl_compositor_create_surface(compositor_);
  wl_surface_add_listener(surface_, &HostEvents::kSurfaceListener, this);
  role_ = xdg_wm_base_get_xdg_surface(windowManager_, surface_);
  xdg_surface_add_listener(role_, &HostEvents::kXdgSurfaceListener, this);
  toplevel_ = xdg_surface_get_toplevel(role_);
  xdg_toplevel_add_listener(toplevel_, &HostEvents::kToplevelListener, this);
  xdg_toplevel_set_title(toplevel_, title.c_str());
  wl_surface_commit(surface_);
  while (!isConfigured_ && wl_display_dispatch(display_) >= 0) {
  }
  // sway configures a new window again when sway makes the window float. The round trips receive
  // these events.
  wl_display_roundtrip(display_);
  wl_display_roundtrip(display_);
}

SurfaceHost::~SurfaceHost() {
  destroyWindow();
  std::ranges::for_each(buffers_, wl_buffer_destroy);
  if (touch_ != nullptr) {
    wl_touch_destroy(touch_);
  }
  if (pointer_ != nullptr) {
    wl_pointer_destroy(pointer_);
  }
  if (seat_ != nullptr) {
    wl_seat_destroy(seat_);
  }
  xdg_wm_base_destroy(windowManager_);
  wl_shm_destroy(shm_);
  wl_compositor_destroy(compositor_);
  wl_registry_destroy(registry_);
  wl_display_disconnect(display_);
}

WaylandSurface SurfaceHost::window() const {
  return {.display = display_, .surface = surface_, .size = size_, .toplevel = toplevel_};
}

void SurfaceHost::pump() {
  while (wl_display_prepare_read(display_) != 0) {
    wl_display_dispatch_pending(display_);
  }
  wl_display_flush(display_);
  pollfd input{.fd = wl_display_get_fd(display_), .events = POLLIN, .revents = 0};
  if (poll(&input, 1, 0) > 0) {
    wl_display_read_events(display_);
  } else {
    wl_display_cancel_read(display_);
  }
  wl_display_dispatch_pending(display_);
}

void SurfaceHost::draw() {
  const int width = static_cast<int>(size_.width);
  const int height = static_cast<int>(size_.height);
  if (buffers_.empty() || bufferSize_ != size_) {
    buffers_.push_back(makeBuffer(width, height));
    bufferSize_ = size_;
  }
  wl_surface_attach(surface_, buffers_.back(), 0, 0);
  wl_surface_damage(surface_, 0, 0, width, height);
  wl_surface_commit(surface_);
  wl_display_flush(display_);
}

wl_buffer* SurfaceHost::makeBuffer(int width, int height) const {
  const std::size_t pixelCount = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  const std::size_t byteCount = pixelCount * sizeof(std::uint32_t);
  const int file = memfd_create("host", MFD_CLOEXEC);
  if (file < 0 || ftruncate(file, static_cast<off_t>(byteCount)) != 0) {
    throw std::runtime_error("no shared memory");
  }
  void* const memory = mmap(nullptr, byteCount, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  std::ranges::fill(std::span(static_cast<std::uint32_t*>(memory), pixelCount),
                    0xFF000000U | color_);
  munmap(memory, byteCount);
  wl_shm_pool* const pool = wl_shm_create_pool(shm_, file, static_cast<std::int32_t>(byteCount));
  wl_buffer* const buffer =
      wl_shm_pool_create_buffer(pool, 0, width, height, width * 4, WL_SHM_FORMAT_XRGB8888);
  wl_shm_pool_destroy(pool);
  close(file);
  return buffer;
}

void SurfaceHost::drawFrame() {
  wl_callback* const callback = wl_surface_frame(surface_);
  wl_callback_add_listener(callback, &HostEvents::kFrameListener, this);
  draw();
}

void SurfaceHost::resize(CGSize size) {
  size_ = ownSize_ = size;
  draw();
}

void SurfaceHost::setFullscreen(bool isFullscreen) {
  if (isFullscreen) {
    xdg_toplevel_set_fullscreen(toplevel_, nullptr);
  } else {
    xdg_toplevel_unset_fullscreen(toplevel_);
  }
  wl_display_flush(display_);
}

void SurfaceHost::destroyWindow() {
  if (surface_ != nullptr) {
    xdg_toplevel_destroy(toplevel_);
    xdg_surface_destroy(role_);
    wl_surface_destroy(surface_);
    surface_ = nullptr;
    wl_display_flush(display_);
  }
}

}  // namespace vel::test
