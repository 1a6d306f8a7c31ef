#pragma once

#include "Platform/WindowSystem/X11/Connection.h"

namespace vel::x11 {

enum class FocusChange : std::uint8_t { None, Came, Left };

/// What a FocusIn or FocusOut event of a window says about whether the keyboard goes to it or to
/// something in it. A grab borrows the keyboard and gives it back; a focus that follows the pointer
/// is nobody's; and a focus that moves between a window and its children has not left it.
[[nodiscard]] inline FocusChange focusChange(const xcb_generic_event_t& event) {
  const auto focus = eventAs<xcb_focus_in_event_t>(event);
  if (focus.mode == XCB_NOTIFY_MODE_GRAB || focus.mode == XCB_NOTIFY_MODE_UNGRAB) {
    return FocusChange::None;
  }
  switch (focus.detail) {
    case XCB_NOTIFY_DETAIL_ANCESTOR:
    case XCB_NOTIFY_DETAIL_VIRTUAL:
    case XCB_NOTIFY_DETAIL_NONLINEAR:
    case XCB_NOTIFY_DETAIL_NONLINEAR_VIRTUAL:
      return typeOf(event) == XCB_FOCUS_IN ? FocusChange::Came : FocusChange::Left;
    default:  // Inferior; Pointer, PointerRoot, None
      return FocusChange::None;
  }
}

}  // namespace vel::x11
