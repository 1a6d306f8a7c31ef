#include "Platform/WindowSystem/Wayland/Proxy.h"

#include <fractional-scale-v1.h>
#include <viewporter.h>
#include <wayland-client.h>
#include <xdg-activation-v1.h>
#include <xdg-decoration-unstable-v1.h>
#include <xdg-dialog-v1.h>
#include <xdg-foreign-unstable-v2.h>
#include <xdg-shell.h>

namespace vel::wayland {

void ProxyDestroyer::operator()(wl_buffer* proxy) const { wl_buffer_destroy(proxy); }
void ProxyDestroyer::operator()(wl_callback* proxy) const { wl_callback_destroy(proxy); }
void ProxyDestroyer::operator()(wl_compositor* proxy) const { wl_compositor_destroy(proxy); }
void ProxyDestroyer::operator()(wl_event_queue* queue) const { wl_event_queue_destroy(queue); }

void ProxyDestroyer::operator()(wl_keyboard* proxy) const {
  if (wl_keyboard_get_version(proxy) >= WL_KEYBOARD_RELEASE_SINCE_VERSION) {
    wl_keyboard_release(proxy);
  } else {
    wl_keyboard_destroy(proxy);
  }
}

void ProxyDestroyer::operator()(wl_output* proxy) const {
  if (wl_output_get_version(proxy) >= WL_OUTPUT_RELEASE_SINCE_VERSION) {
    wl_output_release(proxy);
  } else {
    wl_output_destroy(proxy);
  }
}

void ProxyDestroyer::operator()(wl_pointer* proxy) const {
  if (wl_pointer_get_version(proxy) >= WL_POINTER_RELEASE_SINCE_VERSION) {
    wl_pointer_release(proxy);
  } else {
    wl_pointer_destroy(proxy);
  }
}

void ProxyDestroyer::operator()(wl_registry* proxy) const { wl_registry_destroy(proxy); }

void ProxyDestroyer::operator()(wl_seat* proxy) const {
  if (wl_seat_get_version(proxy) >= WL_SEAT_RELEASE_SINCE_VERSION) {
    wl_seat_release(proxy);
  } else {
    wl_seat_destroy(proxy);
  }
}

void ProxyDestroyer::operator()(wl_shm* proxy) const { wl_shm_destroy(proxy); }
void ProxyDestroyer::operator()(wl_subcompositor* proxy) const { wl_subcompositor_destroy(proxy); }
void ProxyDestroyer::operator()(wl_subsurface* proxy) const { wl_subsurface_destroy(proxy); }
void ProxyDestroyer::operator()(wl_surface* proxy) const { wl_surface_destroy(proxy); }
void ProxyDestroyer::operator()(wp_fractional_scale_manager_v1* proxy) const {
  wp_fractional_scale_manager_v1_destroy(proxy);
}
void ProxyDestroyer::operator()(wp_fractional_scale_v1* proxy) const {
  wp_fractional_scale_v1_destroy(proxy);
}
void ProxyDestroyer::operator()(wp_viewport* proxy) const { wp_viewport_destroy(proxy); }
void ProxyDestroyer::operator()(wp_viewporter* proxy) const { wp_viewporter_destroy(proxy); }
void ProxyDestroyer::operator()(xdg_activation_token_v1* proxy) const {
  xdg_activation_token_v1_destroy(proxy);
}
void ProxyDestroyer::operator()(xdg_activation_v1* proxy) const {
  xdg_activation_v1_destroy(proxy);
}
void ProxyDestroyer::operator()(xdg_dialog_v1* proxy) const { xdg_dialog_v1_destroy(proxy); }
void ProxyDestroyer::operator()(xdg_surface* proxy) const { xdg_surface_destroy(proxy); }
void ProxyDestroyer::operator()(xdg_toplevel* proxy) const { xdg_toplevel_destroy(proxy); }
void ProxyDestroyer::operator()(xdg_wm_base* proxy) const { xdg_wm_base_destroy(proxy); }
void ProxyDestroyer::operator()(xdg_wm_dialog_v1* proxy) const { xdg_wm_dialog_v1_destroy(proxy); }
void ProxyDestroyer::operator()(zxdg_decoration_manager_v1* proxy) const {
  zxdg_decoration_manager_v1_destroy(proxy);
}
void ProxyDestroyer::operator()(zxdg_exported_v2* proxy) const { zxdg_exported_v2_destroy(proxy); }
void ProxyDestroyer::operator()(zxdg_exporter_v2* proxy) const { zxdg_exporter_v2_destroy(proxy); }
void ProxyDestroyer::operator()(zxdg_imported_v2* proxy) const { zxdg_imported_v2_destroy(proxy); }
void ProxyDestroyer::operator()(zxdg_importer_v2* proxy) const { zxdg_importer_v2_destroy(proxy); }
void ProxyDestroyer::operator()(zxdg_toplevel_decoration_v1* proxy) const {
  zxdg_toplevel_decoration_v1_destroy(proxy);
}

}  // namespace vel::wayland
