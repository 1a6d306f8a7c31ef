#include "Platform/WindowSystem/Wayland/Toplevel.h"

#include <wayland-client.h>
#include <xdg-decoration-unstable-v1.h>
#include <xdg-shell.h>

#include <algorithm>
#include <cmath>
#include <span>
#include <string>
#include <utility>

namespace vel::wayland {

namespace {

// A request has at most 4096 bytes. libwayland ends the connection if a request is longer.
constexpr std::size_t kMaxTitleLength = 4000;

// If a UTF-8 text is too long, cuts it between two characters.
std::string_view shorten(std::string_view text) {
  if (text.size() <= kMaxTitleLength) {
    return text;
  }
  std::size_t length = kMaxTitleLength;
  while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) {
    --length;
  }
  return text.substr(0, length);
}

// True if the client chooses the size of a window with these states.
bool isFloatingState(const wl_array& states) {
  const std::span<const std::uint32_t> values(static_cast<const std::uint32_t*>(states.data),
                                              states.size / sizeof(std::uint32_t));
  return std::ranges::none_of(values, [](std::uint32_t state) {
    return state == XDG_TOPLEVEL_STATE_MAXIMIZED || state == XDG_TOPLEVEL_STATE_FULLSCREEN;
  });
}

}  // namespace

/// The functions that libwayland calls with the events of a toplevel.
struct ToplevelEvents {
  static void configureSurface(void* data, xdg_surface* surface, std::uint32_t serial) {
    Toplevel& toplevel = *static_cast<Toplevel*>(data);
    xdg_surface_ack_configure(surface, serial);
    toplevel.isConfigured_ = true;
    toplevel.isFloating_ = toplevel.isPendingFloating_;
    toplevel.handlers_.configured(toplevel.pendingSize_);
  }
  static constexpr xdg_surface_listener kSurfaceListener{.configure = configureSurface};

  static void configure(void* data, xdg_toplevel* /*proxy*/, std::int32_t width,
                        std::int32_t height, wl_array* states) {
    Toplevel& toplevel = *static_cast<Toplevel*>(data);
    toplevel.pendingSize_ = {static_cast<double>(width), static_cast<double>(height)};
    toplevel.isPendingFloating_ = isFloatingState(*states);
  }
  static void close(void* data, xdg_toplevel* /*proxy*/) {
    static_cast<Toplevel*>(data)->handlers_.closeRequested();
  }
  static const xdg_toplevel_listener kListener;
};

// Later versions of xdg-shell add members to the listener. They stay null.
const xdg_toplevel_listener ToplevelEvents::kListener = [] {
  xdg_toplevel_listener listener{};
  listener.configure = ToplevelEvents::configure;
  listener.close = ToplevelEvents::close;
  return listener;
}();

void setResizable(xdg_toplevel* toplevel, bool isResizable, CGSize size) {
  const int width = isResizable ? 0 : static_cast<int>(std::ceil(size.width));
  const int height = isResizable ? 0 : static_cast<int>(std::ceil(size.height));
  // The minimum must never exceed the maximum, not even between two requests.
  xdg_toplevel_set_min_size(toplevel, 0, 0);
  xdg_toplevel_set_max_size(toplevel, width, height);
  xdg_toplevel_set_min_size(toplevel, width, height);
}

Toplevel::Toplevel(Connection& connection, wl_surface* surface,
                   const WindowDescription& description, xdg_toplevel* owner,
                   const FrameContext* frameContext, Handlers handlers)
    : handlers_(std::move(handlers)) {
  if (frameContext != nullptr) {
    frame_ = Frame::create(*frameContext, surface,
                           {.configured =
                                [this](CGSize size) {
                                  isConfigured_ = true;
                                  handlers_.configured(size);
                                },
                            .closeRequested = [this] { handlers_.closeRequested(); }});
  }
  if (frame_ == nullptr) {
    createRole(connection, surface);
  }
  setTitle(description.title);
  xdg_toplevel_set_app_id(proxy(), description.className.c_str());
  if (owner != nullptr) {
    xdg_toplevel_set_parent(proxy(), owner);
  }
  setStyle(description.styleMask, description.frame.size);
  if (frame_ != nullptr) {
    frame_->map();
  } else {
    wl_surface_commit(surface);
  }
}

Toplevel::~Toplevel() = default;

void Toplevel::createRole(const Connection& connection, wl_surface* surface) {
  surface_.reset(xdg_wm_base_get_xdg_surface(connection.windowManager(), surface));
  toplevel_.reset(xdg_surface_get_toplevel(surface_.get()));
  xdg_surface_add_listener(surface_.get(), &ToplevelEvents::kSurfaceListener, this);
  xdg_toplevel_add_listener(toplevel_.get(), &ToplevelEvents::kListener, this);
  if (connection.decorations() != nullptr) {
    decoration_.reset(zxdg_decoration_manager_v1_get_toplevel_decoration(connection.decorations(),
                                                                         toplevel_.get()));
  }
}

xdg_toplevel* Toplevel::proxy() const {
  return frame_ != nullptr ? frame_->toplevel() : toplevel_.get();
}

bool Toplevel::isFloating() const { return frame_ != nullptr ? frame_->isFloating() : isFloating_; }

void Toplevel::setTitle(std::string_view title) {
  if (frame_ != nullptr) {
    frame_->setTitle(shorten(title));
  } else {
    xdg_toplevel_set_title(toplevel_.get(), std::string(shorten(title)).c_str());
  }
}

void Toplevel::setStyle(NSWindowStyleMask styleMask, CGSize size) {
  if (frame_ != nullptr) {
    frame_->setStyle(styleMask, size);
    return;
  }
  setResizable(toplevel_.get(), (styleMask & NSWindowStyleMaskResizable) != 0, size);
  if (decoration_ != nullptr) {
    zxdg_toplevel_decoration_v1_set_mode(decoration_.get(),
                                         (styleMask & NSWindowStyleMaskTitled) != 0
                                             ? ZXDG_TOPLEVEL_DECORATION_V1_MODE_SERVER_SIDE
                                             : ZXDG_TOPLEVEL_DECORATION_V1_MODE_CLIENT_SIDE);
  }
}

void Toplevel::move(wl_seat* seat, std::uint32_t serial) const {
  xdg_toplevel_move(proxy(), seat, serial);
}

}  // namespace vel::wayland
