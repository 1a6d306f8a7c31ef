#pragma once

#include <string>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/Wayland/Connection.h"

namespace vel::wayland {

/// Makes a surface of the host the parent of a window of the library, if the host has not passed
/// its xdg_toplevel. Uses the protocol xdg-foreign. The destructor ends this relation.
class ForeignParent final : public NonCopyable {
 public:
  /// True if the compositor supports the protocol.
  [[nodiscard]] static bool isSupported(const Connection& connection);

  /// The compositor must support the protocol, and the surface must have the role xdg_toplevel.
  /// Blocks for a round trip.
  ForeignParent(Connection& connection, wl_surface* parent);
  ~ForeignParent();

  /// Keeps the window of this surface in front of the parent. The surface must have the role
  /// xdg_toplevel.
  void setParentOf(wl_surface* child);

 private:
  friend struct ForeignParentEvents;

  Proxy<zxdg_exported_v2> exported_;
  Proxy<zxdg_imported_v2> imported_;
  std::string exportedHandle_;
};

}  // namespace vel::wayland
