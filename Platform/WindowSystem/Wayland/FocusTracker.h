#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/ReportQueue.h"
#include "Platform/WindowSystem/Wayland/Connection.h"

namespace vel::wayland {

/// Follows the keyboard focus of all seats, requests it, and reports its changes. The application
/// is active while a window of the back end has the focus. `WaylandWindowSystem` owns it.
class FocusTracker final : public NonCopyable {
 public:
  /// Returns the window that a surface belongs to; None for an unknown surface.
  using FindWindow = std::function<WindowHandle(const wl_surface*)>;
  /// Returns the content of the frame that a surface is a part of. Returns any other surface
  /// unchanged.
  using FindContent = std::function<const wl_surface*(wl_surface*)>;
  /// Called when the user presses the main pointer button in a surface of `window`.
  using ButtonHandler =
      std::function<void(WindowHandle window, wl_seat* seat, std::uint32_t serial)>;

  FocusTracker(Connection& connection, ReportQueue& reports, FindWindow findWindow,
               FindContent findContent, ButtonHandler buttonPressed);
  ~FocusTracker();

  /// `name` is the name of the seat in the registry.
  void addSeat(std::uint32_t name, Proxy<wl_seat> proxy);
  /// Removes the seat with this name in the registry. Does nothing if the name is not of a seat.
  void removeGlobal(std::uint32_t name);

  /// Call this after the adoption of a window. The application may become active or inactive.
  void windowAdopted(WindowHandle window);
  /// Call this when a cover has been closed. If the cover had the keyboard, the compositor may move
  /// the keyboard to the window below it.
  void coverClosed();
  /// Call this when the window has been hidden, released or destroyed.
  void windowRemoved(WindowHandle window);
  /// The window that has the focus; None if it is not a window of the back end.
  [[nodiscard]] WindowHandle focus() const;

  /// Requests the focus for a window with this surface. Does nothing if the compositor does not
  /// support xdg_activation_v1.
  void request(WindowHandle window, wl_surface* surface);
  /// Returns true if `reportChanges` must be called even if no event arrives.
  [[nodiscard]] bool hasPendingChanges() const { return hasPendingChanges_; }
  /// Reports the changes since the last call.
  void reportChanges();

 private:
  friend struct SeatEvents;

  struct Seat {
    FocusTracker* tracker = nullptr;
    std::uint32_t name = 0;  // the name in the registry
    Proxy<wl_seat> proxy;
    Proxy<wl_keyboard> keyboard;
    Proxy<wl_pointer> pointer;
    // The surfaces that have the keyboard and the pointer of the seat. The host may own them. If a
    // part of a frame has the keyboard, this is the content of the frame.
    const wl_surface* keyboardSurface = nullptr;
    const wl_surface* pointerSurface = nullptr;
  };
  /// A request for the focus. It waits until the compositor sends the activation token.
  struct Activation {
    FocusTracker* tracker = nullptr;
    WindowHandle window = WindowHandle::None;
    wl_surface* surface = nullptr;
    Proxy<xdg_activation_token_v1> token;
  };

  void setCapabilities(Seat& seat, std::uint32_t capabilities);
  void setKeyboardSurface(Seat& seat, const wl_surface* surface, std::uint32_t serial);
  void startBarrier();
  void pressButton(const Seat& seat, std::uint32_t serial);
  void activate(const Activation& activation, const char* token);

  Connection& connection_;
  ReportQueue& reports_;
  FindWindow findWindow_;
  FindContent findContent_;
  ButtonHandler buttonPressed_;
  std::vector<std::unique_ptr<Seat>> seats_;
  std::vector<std::unique_ptr<Activation>> activations_;
  // Pending while the keyboard may be moving between two surfaces of the connection.
  Proxy<wl_callback> barrier_;
  WindowHandle reportedFocus_ = WindowHandle::None;
  // True if `reportChanges` must check whether the application has become inactive.
  bool mayHaveLostFocus_ = false;
  bool hasPendingChanges_ = false;
  bool isActive_ = true;
  // The serial of the latest keyboard focus or button press, and the seat that sent it.
  const Seat* serialSeat_ = nullptr;
  std::uint32_t serial_ = 0;
};

}  // namespace vel::wayland
