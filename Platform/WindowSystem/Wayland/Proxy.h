#pragma once

#include <memory>

struct wl_buffer;
struct wl_callback;
struct wl_compositor;
struct wl_event_queue;
struct wl_keyboard;
struct wl_output;
struct wl_pointer;
struct wl_region;
struct wl_registry;
struct wl_seat;
struct wl_shm;
struct wl_subcompositor;
struct wl_subsurface;
struct wl_surface;
struct wp_fractional_scale_manager_v1;
struct wp_fractional_scale_v1;
struct wp_viewport;
struct wp_viewporter;
struct xdg_activation_token_v1;
struct xdg_activation_v1;
struct xdg_dialog_v1;
struct xdg_surface;
struct xdg_toplevel;
struct xdg_wm_base;
struct xdg_wm_dialog_v1;
struct zxdg_decoration_manager_v1;
struct zxdg_exported_v2;
struct zxdg_exporter_v2;
struct zxdg_imported_v2;
struct zxdg_importer_v2;
struct zxdg_toplevel_decoration_v1;

namespace vel::wayland {

/// Destroys a protocol object with the request that its interface has for this purpose.
struct ProxyDestroyer {
  void operator()(wl_buffer* proxy) const;
  void operator()(wl_callback* proxy) const;
  void operator()(wl_compositor* proxy) const;
  void operator()(wl_event_queue* queue) const;
  void operator()(wl_keyboard* proxy) const;
  void operator()(wl_output* proxy) const;
  void operator()(wl_pointer* proxy) const;
  void operator()(wl_registry* proxy) const;
  void operator()(wl_seat* proxy) const;
  void operator()(wl_shm* proxy) const;
  void operator()(wl_subcompositor* proxy) const;
  void operator()(wl_subsurface* proxy) const;
  void operator()(wl_surface* proxy) const;
  void operator()(wp_fractional_scale_manager_v1* proxy) const;
  void operator()(wp_fractional_scale_v1* proxy) const;
  void operator()(wp_viewport* proxy) const;
  void operator()(wp_viewporter* proxy) const;
  void operator()(xdg_activation_token_v1* proxy) const;
  void operator()(xdg_activation_v1* proxy) const;
  void operator()(xdg_dialog_v1* proxy) const;
  void operator()(xdg_surface* proxy) const;
  void operator()(xdg_toplevel* proxy) const;
  void operator()(xdg_wm_base* proxy) const;
  void operator()(xdg_wm_dialog_v1* proxy) const;
  void operator()(zxdg_decoration_manager_v1* proxy) const;
  void operator()(zxdg_exported_v2* proxy) const;
  void operator()(zxdg_exporter_v2* proxy) const;
  void operator()(zxdg_imported_v2* proxy) const;
  void operator()(zxdg_importer_v2* proxy) const;
  void operator()(zxdg_toplevel_decoration_v1* proxy) const;
};

/// A protocol object that the back end has created and destroys.
template <class T>
using Proxy = std::unique_ptr<T, ProxyDestroyer>;

}  // namespace vel::wayland
