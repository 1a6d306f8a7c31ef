#include "Platform/WindowSystem/Wayland/Connection.h"

#include <fractional-scale-v1.h>
#include <poll.h>
#include <viewporter.h>
#include <wayland-client.h>
#include <xdg-activation-v1.h>
#include <xdg-decoration-unstable-v1.h>
#include <xdg-dialog-v1.h>
#include <xdg-foreign-unstable-v2.h>
#include <xdg-shell.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace vel::wayland {

namespace {

// The highest versions whose events this back end handles.
constexpr std::uint32_t kCompositorVersion = 4;
constexpr std::uint32_t kSeatVersion = 5;
constexpr std::uint32_t kOutputVersion = 3;
constexpr std::uint32_t kWindowManagerVersion = 1;

template <class T>
Proxy<T> bindGlobal(wl_registry* registry, std::uint32_t name, const wl_interface& interface,
                    std::uint32_t version) {
  return Proxy<T>(static_cast<T*>(wl_registry_bind(registry, name, &interface, version)));
}

void ping(void* /*data*/, xdg_wm_base* windowManager, std::uint32_t serial) {
  xdg_wm_base_pong(windowManager, serial);
}
constexpr xdg_wm_base_listener kWindowManagerListener{.ping = ping};

}  // namespace

/// The functions that libwayland calls with the events of the registry and of the outputs.
struct RegistryEvents {
  static void global(void* data, wl_registry* /*registry*/, std::uint32_t name,
                     const char* interface, std::uint32_t version) {
    static_cast<Connection*>(data)->addGlobal(name, interface, version);
  }
  static void globalRemove(void* data, wl_registry* /*registry*/, std::uint32_t name) {
    static_cast<Connection*>(data)->removeGlobal(name);
  }
  static constexpr wl_registry_listener kListener{.global = global, .global_remove = globalRemove};

  static void geometry(void* /*data*/, wl_output* /*output*/, std::int32_t /*x*/,
                       std::int32_t /*y*/, std::int32_t /*physicalWidth*/,
                       std::int32_t /*physicalHeight*/, std::int32_t /*subpixel*/,
                       const char* /*make*/, const char* /*model*/, std::int32_t /*transform*/) {}
  static void mode(void* /*data*/, wl_output* /*output*/, std::uint32_t /*flags*/,
                   std::int32_t /*width*/, std::int32_t /*height*/, std::int32_t /*refresh*/) {}
  static void done(void* data, wl_output* /*output*/) {
    const Connection& connection = *static_cast<Connection*>(data);
    if (connection.handlers_.scaleChanged) {
      connection.handlers_.scaleChanged();
    }
  }
  static void scale(void* data, wl_output* proxy, std::int32_t factor) {
    for (const auto& output : static_cast<Connection*>(data)->outputs_) {
      if (output->proxy.get() == proxy) {
        output->scale = factor;
      }
    }
  }
  static constexpr wl_output_listener kOutputListener{.geometry = geometry,
                                                      .mode = mode,
                                                      .done = done,
                                                      .scale = scale,
                                                      .name = nullptr,
                                                      .description = nullptr};
};

std::unique_ptr<Connection> Connection::open(const std::string& displayName, std::string& error) {
  wl_display* const display =
      wl_display_connect(displayName.empty() ? nullptr : displayName.c_str());
  if (display == nullptr) {
    error = "the Wayland display cannot be opened: " + std::string(std::strerror(errno));
    return nullptr;
  }
  return std::unique_ptr<Connection>(new Connection(display, false));
}

std::unique_ptr<Connection> Connection::share(wl_display* display, std::string& error) {
  if (display == nullptr || wl_display_get_error(display) != 0) {
    error = "the Wayland connection of the host is null or broken";
    return nullptr;
  }
  return std::unique_ptr<Connection>(new Connection(display, true));
}

Connection::Connection(wl_display* display, bool isShared)
    : display_(display), isShared_(isShared), queue_(wl_display_create_queue(display)) {
  wrapper_ = static_cast<wl_display*>(wl_proxy_create_wrapper(display));
  wl_proxy_set_queue(reinterpret_cast<wl_proxy*>(wrapper_), queue_.get());
}

Connection::~Connection() {
  outputs_.clear();
  activation_ = nullptr;
  importer_ = nullptr;
  exporter_ = nullptr;
  decorations_ = nullptr;
  dialogs_ = nullptr;
  windowManagers_.clear();
  fractionalScale_ = nullptr;
  viewporter_ = nullptr;
  shm_ = nullptr;
  subcompositor_ = nullptr;
  compositor_ = nullptr;
  registry_ = nullptr;
  wl_proxy_wrapper_destroy(wrapper_);
  flush();
  queue_ = nullptr;
  if (!isShared_) {
    wl_display_disconnect(display_);
  }
}

bool Connection::readGlobals(Handlers handlers, std::string& error) {
  handlers_ = std::move(handlers);
  registry_.reset(wl_display_get_registry(wrapper_));
  wl_registry_add_listener(registry_.get(), &RegistryEvents::kListener, this);
  roundTrip();  // the global objects
  roundTrip();  // the events that they send first
  if (isBroken()) {
    error = "the compositor broke the connection";
    return false;
  }
  if (compositor_ == nullptr || subcompositor_ == nullptr || shm_ == nullptr) {
    error = "the compositor lacks wl_compositor, wl_subcompositor or wl_shm";
    return false;
  }
  return true;
}

int Connection::descriptor() const { return wl_display_get_fd(display_); }

bool Connection::isBroken() const { return wl_display_get_error(display_) != 0; }

bool Connection::dispatch() {
  bool hasEvents = false;
  while (wl_display_prepare_read_queue(display_, queue_.get()) != 0) {
    if (wl_display_dispatch_queue_pending(display_, queue_.get()) < 0) {
      return hasEvents;
    }
    hasEvents = true;
  }
  flush();
  pollfd input{.fd = descriptor(), .events = POLLIN, .revents = 0};
  if (poll(&input, 1, 0) > 0) {
    wl_display_read_events(display_);
  } else {
    wl_display_cancel_read(display_);
  }
  return wl_display_dispatch_queue_pending(display_, queue_.get()) > 0 || hasEvents;
}

bool Connection::hasQueuedEvents() const {
  if (wl_display_prepare_read_queue(display_, queue_.get()) != 0) {
    return true;
  }
  wl_display_cancel_read(display_);
  return false;
}

void Connection::roundTrip() { wl_display_roundtrip_queue(display_, queue_.get()); }

void Connection::flush() { wl_display_flush(display_); }

// Binds the first global object that has the wanted interface. A later one does not replace it,
// because the back end may have created objects from the first one.
template <class T>
void Connection::bindFirst(Proxy<T>& proxy, std::uint32_t name, const std::string& interface,
                           const wl_interface& wantedInterface, std::uint32_t version) {
  if (proxy == nullptr && interface == wantedInterface.name) {
    proxy = bindGlobal<T>(registry_.get(), name, wantedInterface, version);
  }
}

void Connection::addGlobal(std::uint32_t name, const std::string& interface,
                           std::uint32_t version) {
  bindFirst(compositor_, name, interface, wl_compositor_interface,
            std::min(version, kCompositorVersion));
  bindFirst(subcompositor_, name, interface, wl_subcompositor_interface, 1);
  bindFirst(shm_, name, interface, wl_shm_interface, 1);
  bindFirst(viewporter_, name, interface, wp_viewporter_interface, 1);
  bindFirst(fractionalScale_, name, interface, wp_fractional_scale_manager_v1_interface, 1);
  bindFirst(decorations_, name, interface, zxdg_decoration_manager_v1_interface, 1);
  bindFirst(dialogs_, name, interface, xdg_wm_dialog_v1_interface, 1);
  bindFirst(exporter_, name, interface, zxdg_exporter_v2_interface, 1);
  bindFirst(importer_, name, interface, zxdg_importer_v2_interface, 1);
  bindFirst(activation_, name, interface, xdg_activation_v1_interface, 1);
  if (interface == xdg_wm_base_interface.name) {
    addWindowManager(name);
  } else if (interface == wl_seat_interface.name) {
    handlers_.seatAdded(name, bindGlobal<wl_seat>(registry_.get(), name, wl_seat_interface,
                                                  std::min(version, kSeatVersion)));
  } else if (interface == wl_output_interface.name && !isShared_) {
    addOutput(name, version);
  }
}

void Connection::removeGlobal(std::uint32_t name) {
  handlers_.globalRemoved(name);
  for (WindowManager& windowManager : windowManagers_) {
    windowManager.isRemoved = windowManager.isRemoved || windowManager.name == name;
  }
  if (std::erase_if(outputs_, [name](const auto& output) { return output->name == name; }) > 0) {
    handlers_.scaleChanged();
  }
}

xdg_wm_base* Connection::windowManager() const {
  const auto position = std::ranges::find(windowManagers_, false, &WindowManager::isRemoved);
  return position == windowManagers_.end() ? nullptr : position->proxy.get();
}

void Connection::addWindowManager(std::uint32_t name) {
  WindowManager windowManager;
  windowManager.name = name;
  windowManager.proxy =
      bindGlobal<xdg_wm_base>(registry_.get(), name, xdg_wm_base_interface, kWindowManagerVersion);
  xdg_wm_base_add_listener(windowManager.proxy.get(), &kWindowManagerListener, nullptr);
  windowManagers_.push_back(std::move(windowManager));
}

void Connection::addOutput(std::uint32_t name, std::uint32_t version) {
  auto output = std::make_unique<Output>();
  output->name = name;
  output->proxy = bindGlobal<wl_output>(registry_.get(), name, wl_output_interface,
                                        std::min(version, kOutputVersion));
  wl_output_add_listener(output->proxy.get(), &RegistryEvents::kOutputListener, this);
  outputs_.push_back(std::move(output));
}

}  // namespace vel::wayland
