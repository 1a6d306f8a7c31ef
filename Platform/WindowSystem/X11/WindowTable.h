#pragma once

#include <map>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/X11/Window.h"

namespace vel::x11 {

/// The windows of the back end, in the order of their X ids. `X11WindowSystem` owns the table.
class WindowTable final : public NonCopyable {
 public:
  Window& add(Window window);
  void remove(xcb_window_t id);
  void clear();

  /// Returns null if the table does not contain the window.
  [[nodiscard]] Window* find(xcb_window_t id);
  [[nodiscard]] Window* find(WindowHandle handle) {
    return find(static_cast<xcb_window_t>(handle));
  }
  /// Returns the window with this id. If `id` is an X window of a cover, returns the window whose
  /// content the cover hides. Returns null if no window or cover has this id.
  [[nodiscard]] Window* findByIdOrCoverId(xcb_window_t id);

  // For range-based loops over pairs of id and window.
  [[nodiscard]] auto begin() { return windows_.begin(); }
  [[nodiscard]] auto end() { return windows_.end(); }
  [[nodiscard]] auto begin() const { return windows_.begin(); }
  [[nodiscard]] auto end() const { return windows_.end(); }

 private:
  std::map<xcb_window_t, Window> windows_;
};

}  // namespace vel::x11
