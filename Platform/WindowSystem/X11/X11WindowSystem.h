#pragma once

#include <memory>
#include <string>

#include "Platform/WindowSystem/ReportQueue.h"
#include "Platform/WindowSystem/WindowSystem.h"
#include "Platform/WindowSystem/X11/Animation.h"
#include "Platform/WindowSystem/X11/ControlsMonitor.h"
#include "Platform/WindowSystem/X11/FocusTracker.h"
#include "Platform/WindowSystem/X11/PointerDrag.h"
#include "Platform/WindowSystem/X11/RenderExtension.h"
#include "Platform/WindowSystem/X11/ScreenCoordinates.h"
#include "Platform/WindowSystem/X11/StackingOrder.h"
#include "Platform/WindowSystem/X11/StateRequestRelay.h"
#include "Platform/WindowSystem/X11/StyleRestorer.h"
#include "Platform/WindowSystem/X11/WindowMonitor.h"

namespace vel {

/// The X11 back end, with its own connection to the server. It can adopt windows of other clients.
/// A window's handle is its X id. A window's frame is the rectangle of its content, without the
/// window manager's decorations. The back end calls its delegate only from `deliverEvents`.
class X11WindowSystem final : public WindowSystem {
 public:
  /// Returns null, with the reason in `error`, if the display cannot be opened. An empty
  /// `displayName` means the display in the environment variable DISPLAY.
  static std::unique_ptr<X11WindowSystem> open(const std::string& displayName, std::string& error);
  ~X11WindowSystem() override;

  void setDelegate(WindowSystemDelegate* delegate) override { reports_.setDelegate(delegate); }
  [[nodiscard]] WaitHandle waitHandle() const override;
  bool deliverEvents() override;
  [[nodiscard]] Nanoseconds nextDeadline() const override;

  WindowHandle createWindow(const WindowDescription& description) override;
  std::optional<AdoptedWindow> adoptWindow(const NativeWindow& native, std::string& error) override;
  void releaseWindow(WindowHandle handle) override;
  void orderFront(WindowHandle handle) override;
  void orderOut(WindowHandle handle) override;
  void requestFocus(WindowHandle handle) override;
  void requestMiniaturized(WindowHandle handle, bool isMiniaturized) override;
  void setFrame(WindowHandle handle, CGRect frame) override;
  void setTitle(WindowHandle handle, std::string_view title) override;
  void setStyleMask(WindowHandle handle, NSWindowStyleMask styleMask) override;
  void setMovableByBackground(WindowHandle handle, bool isMovable) override;
  void setScene(WindowHandle handle, const Scene& scene) override;
  void setModalWindow(WindowHandle handle) override;
  bool isSceneOnScreen(WindowHandle handle) override;
  std::optional<WindowPicture> picture(WindowHandle handle) override;

 private:
  explicit X11WindowSystem(std::unique_ptr<x11::Connection> connection);

  // Windows

  // Checks the id without a request to the server. Returns null if the id passes the checks.
  // Otherwise returns why the back end cannot adopt the window.
  const char* reasonNotToAdopt(std::uint64_t nativeId);
  AdoptedWindow addAdoptedWindow(const x11::WindowInspection& inspection,
                                 bool isMaximizedOrFullscreen, bool hasFocus);
  void makeCover(x11::Window& window, xcb_visualid_t visual, std::uint8_t depth,
                 std::unique_ptr<x11::Overlay> overlay);
  std::unique_ptr<x11::Overlay> makeOverlay(const x11::WindowInspection& inspection, bool hasFocus);
  // Opens or closes the window's shield: an invisible child window that blocks pointer input to
  // the window. A window needs a shield while another window is modal.
  void updateShield(x11::Window& window);
  [[nodiscard]] bool needsShield(const x11::Window& window) const;
  void selectWindowEvents(const x11::Window& window);
  void moveWindow(x11::Window& window, x11::PixelRect frame);
  // Removes the window's cover. Then destroys the window if the back end created it, or starts
  // restoring the hints of an adopted window.
  void beginRelease(x11::Window& window);
  // Finishes restoring the hints of an adopted window. May block (see `StyleRestorer::finish`).
  void finishRelease(x11::Window& window);

  // Events

  // Handles the events that have arrived. Then performs the tasks whose deadlines have passed.
  // Returns true if an event has arrived.
  bool processEvents();
  // Calls `handle` for each event that has arrived. Then calls `StateRequestRelay::repeatRequests`,
  // and `Cover::repair` for each cover. Returns true if an event has arrived.
  bool handleArrivedEvents();
  void handle(const xcb_generic_event_t& event);
  void handleClientMessage(const xcb_client_message_event_t& message);
  void handlePointer(const xcb_generic_event_t& event);
  void moveDraggedWindow();
  void windowDestroyed(xcb_window_t id);
  // If the connection is broken, removes all windows and reports that the display is lost.
  void checkConnection();

  std::unique_ptr<x11::Connection> connection_;
  x11::ScreenCoordinates coordinates_;
  x11::RenderExtension render_;
  x11::WindowManager windowManager_;
  ReportQueue reports_;
  x11::WindowTable windows_;
  x11::StackingOrder order_;
  x11::FocusTracker focus_;
  x11::WindowMonitor monitor_;
  x11::ControlsMonitor controls_;
  x11::StyleRestorer restorer_;
  x11::StateRequestRelay relay_;
  x11::Animation animation_;
  x11::PointerDrag drag_;
  WindowHandle modalWindow_ = WindowHandle::None;
  bool isConnectionLost_ = false;
};

}  // namespace vel
