#include "Platform/WindowSystem/X11/WindowTable.h"

#include <utility>

namespace vel::x11 {

Window& WindowTable::add(Window window) {
  const xcb_window_t id = window.id;
  return windows_.insert_or_assign(id, std::move(window)).first->second;
}

// The next two functions remove entries from the table before they destroy the `Window` objects:
// the destructors of the members of `Window` may search the table.

void WindowTable::remove(xcb_window_t id) { windows_.extract(id); }

void WindowTable::clear() { std::exchange(windows_, {}); }

Window* WindowTable::find(xcb_window_t id) {
  const auto entry = windows_.find(id);
  return entry == windows_.end() ? nullptr : &entry->second;
}

Window* WindowTable::findByIdOrCoverId(xcb_window_t id) {
  for (auto& [windowId, window] : windows_) {
    if (windowId == id || window.cover->owns(id)) {
      return &window;
    }
  }
  return nullptr;
}

}  // namespace vel::x11
