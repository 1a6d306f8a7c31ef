// The lower limit on Wayland: a white subsurface over the window of the same program, made with
// libwayland only.
#include <poll.h>
#include <viewporter.h>

#include <memory>

#include "Benchmarks/OnScreen/Programs/SurfaceHost.h"
#include "Benchmarks/OnScreen/Programs/timestamps.h"

namespace {

using namespace vel::bench;

constexpr std::uint32_t kWhite = 0xFFFFFF;
constexpr int kBufferSide = 16;  // viewporter scales the buffer

/// The global objects that a cover needs.
class CoverGlobals {
 public:
  explicit CoverGlobals(const SurfaceConnection& connection) {
    wl_registry* const registry = wl_display_get_registry(connection.display());
    static constexpr wl_registry_listener kListener{.global = addGlobal,
                                                    .global_remove = removeGlobal};
    wl_registry_add_listener(registry, &kListener, this);
    wl_display_roundtrip(connection.display());
    if (subcompositor_ == nullptr || viewporter_ == nullptr) {
      fail("the compositor lacks wl_subcompositor or wp_viewporter");
    }
  }

  [[nodiscard]] wl_subcompositor* subcompositor() const { return subcompositor_; }
  [[nodiscard]] wp_viewporter* viewporter() const { return viewporter_; }

 private:
  static void addGlobal(void* data, wl_registry* registry, std::uint32_t name,
                        const char* interface, std::uint32_t /*version*/) {
    auto& self = *static_cast<CoverGlobals*>(data);
    if (std::strcmp(interface, wl_subcompositor_interface.name) == 0) {
      self.subcompositor_ = static_cast<wl_subcompositor*>(
          wl_registry_bind(registry, name, &wl_subcompositor_interface, 1));
    } else if (std::strcmp(interface, wp_viewporter_interface.name) == 0) {
      self.viewporter_ = static_cast<wp_viewporter*>(
          wl_registry_bind(registry, name, &wp_viewporter_interface, 1));
    }
  }
  static void removeGlobal(void* /*data*/, wl_registry* /*registry*/, std::uint32_t /*name*/) {}

  wl_subcompositor* subcompositor_ = nullptr;
  wp_viewporter* viewporter_ = nullptr;
};

class Cover {
 public:
  Cover(const SurfaceConnection& connection, const CoverGlobals& globals, const SurfaceHost& host,
        int width, int height)
      : display_(connection.display()),
        surface_(wl_compositor_create_surface(connection.compositor())),
        subsurface_(
            wl_subcompositor_get_subsurface(globals.subcompositor(), surface_, host.surface())),
        viewport_(wp_viewporter_get_viewport(globals.viewporter(), surface_)) {
    wl_subsurface_set_desync(subsurface_);
    wl_surface_attach(surface_, makeBuffer(connection.shm(), kBufferSide, kBufferSide, kWhite), 0,
                      0);
    wp_viewport_set_destination(viewport_, width, height);
    wl_surface_damage(surface_, 0, 0, width, height);
    wl_surface_commit(surface_);
    wl_surface_commit(host.surface());  // makes the new subsurface visible
    wl_display_flush(display_);
  }
  Cover(const Cover&) = delete;
  Cover& operator=(const Cover&) = delete;
  ~Cover() {
    wp_viewport_destroy(viewport_);
    wl_subsurface_destroy(subsurface_);
    wl_surface_destroy(surface_);
    wl_display_flush(display_);
  }

 private:
  wl_display* display_;
  wl_surface* surface_;
  wl_subsurface* subsurface_;
  wp_viewport* viewport_;
};

void handleEvents(const SurfaceConnection& connection, int milliseconds) {
  const std::int64_t end = read_clock() + std::int64_t{milliseconds} * 1'000'000;
  for (std::int64_t now = read_clock(); now < end; now = read_clock()) {
    wl_display_flush(connection.display());
    pollfd input{wl_display_get_fd(connection.display()), POLLIN, 0};
    if (poll(&input, 1, static_cast<int>((end - now) / 1'000'000) + 1) > 0) {
      wl_display_dispatch(connection.display());
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  const Arguments arguments = parse_arguments(argc, argv);
  const SurfaceConnection connection;
  std::unique_ptr<CoverGlobals> globals;
  if (arguments.mode != MODE_COLD) {
    globals = std::make_unique<CoverGlobals>(connection);
    const SurfaceHost firstHost(connection, FIRST_WIDTH, FIRST_HEIGHT);
    {
      const Cover firstCover(connection, *globals, firstHost, FIRST_WIDTH, FIRST_HEIGHT);
      handleEvents(connection, FIRST_MILLISECONDS);
    }
    handleEvents(connection, PAUSE_MILLISECONDS);
  }
  const SurfaceHost host(connection, arguments.width, arguments.height);
  waitBeforeMeasurement();

  show_start = read_clock();
  if (globals == nullptr) {
    globals = std::make_unique<CoverGlobals>(connection);
  }
  auto cover =
      std::make_unique<Cover>(connection, *globals, host, arguments.width, arguments.height);
  show_end = read_clock();

  handleEvents(connection, arguments.ticks * 100);
  hide_start = read_clock();
  cover = nullptr;
  handleEvents(connection, 200);
  print_timestamps();
  return 0;
}
