#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/Foundation/Time.h"
#include "Platform/WindowSystem/Wayland/Proxy.h"

struct wl_display;
struct wl_interface;

namespace vel::wayland {

/// A screen of the compositor.
struct Output {
  Proxy<wl_output> proxy;
  std::uint32_t name = 0;  // the name in the registry
  int scale = 1;
};

/// An object xdg_wm_base of the compositor.
struct WindowManager {
  Proxy<xdg_wm_base> proxy;
  std::uint32_t name = 0;  // the name in the registry
  bool isRemoved = false;
};

/// A connection to a compositor, and the compositor's global objects. This object opens the
/// connection or uses the connection of the host. All objects of the back end use an event queue of
/// their own, so the back end never dispatches events of the host. `WaylandWindowSystem` owns this
/// object.
class Connection final : public NonCopyable {
 public:
  /// The functions that report that a seat appears, that a global object disappears, or that the
  /// scale of an output may have changed. `name` is a name in the registry.
  struct Handlers {
    std::function<void(std::uint32_t name, Proxy<wl_seat> seat)> seatAdded;
    std::function<void(std::uint32_t name)> globalRemoved;
    std::function<void()> scaleChanged;
  };

  /// Connects to a compositor. An empty name means the compositor that `WAYLAND_DISPLAY` names.
  /// On failure, sets `error` to the reason and returns null.
  static std::unique_ptr<Connection> open(const std::string& displayName, std::string& error);
  /// Uses the connection of the host. The host must not disconnect before this object is destroyed.
  /// On failure, sets `error` to the reason and returns null.
  static std::unique_ptr<Connection> share(wl_display* display, std::string& error);
  ~Connection();

  /// Sets the handlers and reads the global objects. Blocks for round trips. Returns false if the
  /// connection breaks or if the compositor lacks a global object that the back end needs.
  bool readGlobals(Handlers handlers, std::string& error);

  [[nodiscard]] wl_display* display() const { return display_; }
  [[nodiscard]] int descriptor() const;
  /// True if the connection belongs to the host.
  [[nodiscard]] bool isShared() const { return isShared_; }
  [[nodiscard]] bool isBroken() const;

  /// Reads and dispatches the events that have arrived, without blocking. Returns true if there
  /// were any.
  bool dispatch();
  /// True if events wait in the event queue of the back end.
  [[nodiscard]] bool hasQueuedEvents() const;
  /// Blocks until the compositor has processed all requests, and dispatches the events.
  void roundTrip();
  void flush();
  /// The wrapper of the display, which creates objects on the queue of the back end.
  [[nodiscard]] wl_display* wrapper() const { return wrapper_; }

  [[nodiscard]] wl_compositor* compositor() const { return compositor_.get(); }
  [[nodiscard]] wl_subcompositor* subcompositor() const { return subcompositor_.get(); }
  [[nodiscard]] wl_shm* shm() const { return shm_.get(); }
  /// These global objects are null if the compositor does not have them.
  [[nodiscard]] wp_viewporter* viewporter() const { return viewporter_.get(); }
  [[nodiscard]] wp_fractional_scale_manager_v1* fractionalScale() const {
    return fractionalScale_.get();
  }
  [[nodiscard]] xdg_wm_base* windowManager() const;
  [[nodiscard]] xdg_wm_dialog_v1* dialogs() const { return dialogs_.get(); }
  [[nodiscard]] zxdg_decoration_manager_v1* decorations() const { return decorations_.get(); }
  [[nodiscard]] zxdg_exporter_v2* exporter() const { return exporter_.get(); }
  [[nodiscard]] zxdg_importer_v2* importer() const { return importer_.get(); }
  [[nodiscard]] xdg_activation_v1* activation() const { return activation_.get(); }
  /// The outputs. Empty if the connection is shared, because the compositor would send
  /// `wl_surface.enter` with these outputs to the surfaces of the host. The toolkit of the host
  /// would then take the user data of these outputs for its own.
  [[nodiscard]] const std::vector<std::unique_ptr<Output>>& outputs() const { return outputs_; }

 private:
  friend struct RegistryEvents;

  Connection(wl_display* display, bool isShared);
  void addGlobal(std::uint32_t name, const std::string& interface, std::uint32_t version);
  void removeGlobal(std::uint32_t name);
  template <class T>
  void bindFirst(Proxy<T>& proxy, std::uint32_t name, const std::string& interface,
                 const wl_interface& wantedInterface, std::uint32_t version);
  void addWindowManager(std::uint32_t name);
  void addOutput(std::uint32_t name, std::uint32_t version);

  wl_display* display_;
  bool isShared_;
  Handlers handlers_;
  Proxy<wl_event_queue> queue_;
  wl_display* wrapper_;
  Proxy<wl_registry> registry_;
  Proxy<wl_compositor> compositor_;
  Proxy<wl_subcompositor> subcompositor_;
  Proxy<wl_shm> shm_;
  Proxy<wp_viewporter> viewporter_;
  Proxy<wp_fractional_scale_manager_v1> fractionalScale_;
  // An entry stays until the connection ends, because windows of the back end may use its object
  // after the compositor has removed the global object.
  std::vector<WindowManager> windowManagers_;
  Proxy<xdg_wm_dialog_v1> dialogs_;
  Proxy<zxdg_decoration_manager_v1> decorations_;
  Proxy<zxdg_exporter_v2> exporter_;
  Proxy<zxdg_importer_v2> importer_;
  Proxy<xdg_activation_v1> activation_;
  std::vector<std::unique_ptr<Output>> outputs_;
};

}  // namespace vel::wayland
