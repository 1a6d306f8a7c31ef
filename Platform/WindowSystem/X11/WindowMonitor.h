#pragma once

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/ReportQueue.h"
#include "Platform/WindowSystem/X11/ScreenCoordinates.h"
#include "Platform/WindowSystem/X11/StackingOrder.h"
#include "Platform/WindowSystem/X11/WindowInspector.h"
#include "Platform/WindowSystem/X11/WindowTable.h"

namespace vel::x11 {

/// Reports changes of a window's frame, miniaturisation and style to the delegate. Users, the
/// window manager and the owners of adopted windows make such changes. An owner is the program that
/// created the window. An event only marks its window. `updateChangedWindows` then reads the
/// window's state once, even after many events.
class WindowMonitor final : public NonCopyable {
 public:
  WindowMonitor(Connection& connection, ScreenCoordinates& coordinates, StackingOrder& order,
                WindowTable& windows, ReportQueue& reports);

  /// Marks the window that the event is about, if the event announces a change.
  void handle(const xcb_generic_event_t& event);
  /// Updates all marked windows. Blocks for round trips if a window is marked.
  void updateChangedWindows();
  /// Reads the window's state and reports changes. Sets the focus to the window if
  /// `Window::wantsFocus` is true and the window is viewable. Blocks for a round trip.
  void update(Window& window);

  /// Reports the style mask that the owner of an adopted window has set, if this mask has not been
  /// reported yet.
  void reportOwnersStyleMask(const Window& window);
  void reportFrame(const Window& window);
  /// Reports the frames of all windows. Call this when the origin of the screen coordinates moves.
  void reportFrames();

 private:
  void handleProperty(const xcb_property_notify_event_t& notice);
  void markChanged(xcb_window_t id);
  void updateMiniaturized(Window& window, const WindowState& state);

  Connection& connection_;
  ScreenCoordinates& coordinates_;
  StackingOrder& order_;
  WindowTable& windows_;
  ReportQueue& reports_;
  WindowInspector inspector_;
};

}  // namespace vel::x11
