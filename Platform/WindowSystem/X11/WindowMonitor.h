#pragma once

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/ReportQueue.h"
#include "Platform/WindowSystem/X11/ScreenCoordinates.h"
#include "Platform/WindowSystem/X11/StackingOrder.h"
#include "Platform/WindowSystem/X11/WindowInspector.h"
#include "Platform/WindowSystem/X11/WindowTable.h"

namespace vel::x11 {

/// Reports changes of a window's frame and miniaturisation to the `WindowSystemDelegate`. Also
/// reports changes of an adopted window's style mask. An adopted window was created by its owner:
/// another program or the host.
///
/// `handle` only marks windows. `updateChangedWindows` then reads the state of each marked window
/// once, even after many events.
class WindowMonitor final : public NonCopyable {
 public:
  WindowMonitor(Connection& connection, ScreenCoordinates& coordinates, StackingOrder& order,
                WindowTable& windows, ReportQueue& reports);

  /// Marks the window whose change `event` announces. Ignores other events.
  void handle(const xcb_generic_event_t& event);
  /// Reads the state of all marked windows and reports changes. Blocks for round trips if a window
  /// is marked.
  void updateChangedWindows();
  /// Reads the window's frame and miniaturisation, and reports changes. Sets the focus to the
  /// window if `Window::wantsFocus` is true and the window is viewable. Blocks for a round trip.
  void update(Window& window);

  /// Reports the style mask that the owner of an adopted window has set. Does nothing if this mask
  /// is overridden or already reported.
  void reportOwnersStyleMask(const Window& window);
  /// Reports the frame that the window has when the report is delivered.
  void reportFrame(const Window& window);
  /// Reports the frames of all windows. Call this if `ScreenCoordinates::handle` returns true.
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
