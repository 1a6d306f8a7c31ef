#pragma once

#include <optional>
#include <vector>

#include "Platform/WindowSystem/WindowSystem.h"
#include "Platform/WindowSystem/X11/Connection.h"

namespace vel::x11 {

/// The window manager that runs on the display, if any: what it supports, what it is asked to do
/// and what it says about windows. It may come, go and be replaced at any time. The server is asked
/// for it at once, and the answers are taken when they are first needed.
class WindowManager {
 public:
  explicit WindowManager(Connection& connection);

  /// Takes an event; answers whether the window manager has gone or another one has come.
  bool handle(const xcb_generic_event_t& event);

  /// Whether one that speaks the extended hints runs.
  [[nodiscard]] bool isPresent();
  /// Whether one runs that takes requests for the focus.
  [[nodiscard]] bool activatesWindows();

  /// Whether the event says that it has put windows into another order.
  [[nodiscard]] bool hasOrdered(const xcb_generic_event_t& event) const;
  /// The windows that it manages, back to front; none where it does not say. Waits.
  [[nodiscard]] std::optional<std::vector<xcb_window_t>> order();

  /// Asks it to give the focus to `window`, `time` being when the user wished so.
  void askToActivate(xcb_window_t window, xcb_timestamp_t time);
  void askToIconify(xcb_window_t window);

  /// Whether a window with this WM_STATE is miniaturised.
  [[nodiscard]] static bool isIconic(const std::optional<Property>& state);
  /// The controls that it offers for `window`; none where it does not say. Waits.
  std::optional<NSWindowStyleMask> controlsOffered(xcb_window_t window);

 private:
  struct Asked {
    xcb_get_property_cookie_t check;
    xcb_get_property_cookie_t supported;
  };

  void ask();
  void takeAnswers();
  bool namesItself(xcb_window_t window);
  [[nodiscard]] bool supports(Atom feature) const;

  Connection& connection_;
  std::optional<Asked> asked_;
  xcb_window_t check_ = XCB_WINDOW_NONE;
  std::vector<std::uint32_t> supported_;
};

}  // namespace vel::x11
