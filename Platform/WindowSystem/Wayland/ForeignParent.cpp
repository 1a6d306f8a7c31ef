#include "Platform/WindowSystem/Wayland/ForeignParent.h"

#include <wayland-client.h>
#include <xdg-foreign-unstable-v2.h>

namespace vel::wayland {

/// The function that libwayland calls with the event of an exported surface.
struct ForeignParentEvents {
  static void handle(void* data, zxdg_exported_v2* /*exported*/, const char* handle) {
    static_cast<ForeignParent*>(data)->exportedHandle_ = handle;
  }
  static constexpr zxdg_exported_v2_listener kListener{.handle = handle};
};

bool ForeignParent::isSupported(const Connection& connection) {
  return connection.exporter() != nullptr && connection.importer() != nullptr;
}

ForeignParent::ForeignParent(Connection& connection, wl_surface* parent)
    : exported_(zxdg_exporter_v2_export_toplevel(connection.exporter(), parent)) {
  zxdg_exported_v2_add_listener(exported_.get(), &ForeignParentEvents::kListener, this);
  connection.roundTrip();
  if (!exportedHandle_.empty()) {
    imported_.reset(
        zxdg_importer_v2_import_toplevel(connection.importer(), exportedHandle_.c_str()));
  }
}

ForeignParent::~ForeignParent() = default;

void ForeignParent::setParentOf(wl_surface* child) {
  if (imported_ != nullptr) {
    zxdg_imported_v2_set_parent_of(imported_.get(), child);
  }
}

}  // namespace vel::wayland
