#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "Platform/WindowSystem/WindowSystem.h"
#include "Platform/WindowSystem/X11/Connection.h"
#include "Platform/WindowSystem/X11/ScreenCoordinates.h"
#include "Platform/WindowSystem/X11/Spinner.h"
#include "Platform/WindowSystem/X11/WindowManager.h"
#include "Platform/WindowSystem/X11/X11Window.h"

namespace vel {

/// Windows on an X11 display, over a connection of its own: windows of ours, and those of any
/// program that are adopted by their ids. A window's handle is its X id, its frame that of its
/// content, without what a window manager puts around it. Reports are made from `deliverEvents`
/// only, in this order: windows that have ended, frames, miniaturisation, focus, order.
class X11WindowSystem final : public WindowSystem {
 public:
  /// None, with the reason in `error`, where the display does not answer. An empty name stands for
  /// the environment's display.
  static std::unique_ptr<X11WindowSystem> open(const std::string& displayName, std::string& error);
  ~X11WindowSystem() override;

  void setDelegate(WindowSystemDelegate* delegate) override { delegate_ = delegate; }
  [[nodiscard]] WaitHandle waitHandle() const override;
  bool deliverEvents() override;
  [[nodiscard]] Nanoseconds nextDeadline() const override;

  WindowHandle createWindow(const WindowDescription& description) override;
  std::optional<AdoptedWindow> adoptWindow(std::uint64_t nativeId, std::string& error) override;
  void releaseWindow(WindowHandle window) override;
  void orderFront(WindowHandle window) override;
  void orderOut(WindowHandle window) override;
  void requestFocus(WindowHandle window) override;
  void requestMiniaturized(WindowHandle window, bool miniaturized) override;
  void setFrame(WindowHandle window, CGRect frame) override;
  void setTitle(WindowHandle window, std::string_view title) override;
  void setStyleMask(WindowHandle window, NSWindowStyleMask styleMask) override;
  void setMovableByBackground(WindowHandle window, bool movable) override;
  void setScene(WindowHandle window, const Scene& scene) override;
  void setModalWindow(WindowHandle window) override;
  std::optional<WindowPicture> picture(WindowHandle window) override;

 private:
  using Telling = std::function<void(WindowSystemDelegate&)>;

  /// What the listener is still to be told, and of which window, if of one.
  struct Report {
    WindowHandle window = WindowHandle::None;
    Telling tell;
  };
  /// A window that follows the pointer.
  struct Drag {
    xcb_window_t window = XCB_WINDOW_NONE;
    int grabX = 0;  // from the window's corner to the pointer
    int grabY = 0;
    int pointerX = 0;
    int pointerY = 0;
    bool moved = false;
  };

  /// How the server has a window, as far as it has one.
  struct Looks {
    x11::FromServer<xcb_get_window_attributes_reply_t> attributes;
    x11::FromServer<xcb_get_geometry_reply_t> geometry;
    x11::FromServer<xcb_translate_coordinates_reply_t> corner;

    [[nodiscard]] bool areComplete() const {
      return attributes != nullptr && geometry != nullptr && corner != nullptr;
    }
    [[nodiscard]] x11::PixelRect frame() const {
      return {corner->dst_x, corner->dst_y, geometry->width, geometry->height};
    }
  };

  /// All that has to be known of somebody else's window before it can take part.
  struct Inspection {
    xcb_window_t id = XCB_WINDOW_NONE;
    Looks looks;
    x11::FromServer<xcb_query_tree_reply_t> tree;
    x11::FromServer<xcb_get_input_focus_reply_t> focus;
    std::optional<x11::Property> state;
    x11::StyleHints hints;
    std::optional<x11::Property> mark;
    std::optional<x11::Property> windowClass;
    std::optional<x11::Property> title;
  };

  explicit X11WindowSystem(std::unique_ptr<x11::Connection> connection);

  x11::Window* find(WindowHandle window);
  x11::Window* findShown(xcb_window_t window);  // itself or by a part of its cover
  void report(Telling tell) { report(WindowHandle::None, std::move(tell)); }
  void report(WindowHandle window, Telling tell) { reports_.push_back({window, std::move(tell)}); }
  bool deliverReports();
  void checkConnection();
  void letGo(x11::Window& window);
  void selectEvents(const x11::Window& window);
  void describe(const x11::Window& window, const WindowDescription& description);
  void writeTitle(const x11::Window& window, std::string_view title);
  void moveTo(x11::Window& window, x11::PixelRect frame);
  void shieldWindows();
  void makeCover(x11::Window& window, xcb_visualid_t visual, std::uint8_t depth);

  // Looking at windows; each waits
  Looks lookAt(xcb_window_t id);
  Inspection inspect(xcb_window_t id);
  const char* reasonToRefuse(const Inspection& found);
  static bool isManagersMark(const Inspection& found);
  bool isFrame(const Inspection& found);
  bool holdsFocus(xcb_window_t id, xcb_window_t focus);
  std::vector<WindowHandle> order();  // of those on screen, front to back

  // Events
  bool readEvents();
  void handle(const xcb_generic_event_t& event);
  void handleMessage(const xcb_client_message_event_t& message);
  void handleProperty(const xcb_property_notify_event_t& notice);
  void handleFocus(const xcb_generic_event_t& event);
  void handlePointer(const xcb_generic_event_t& event);
  void handleOrder(const xcb_generic_event_t& event);
  void windowEnded(xcb_window_t id);
  void focusLost(xcb_window_t id);
  // What is done once all events that have come are read
  void settle();
  void settleDrag();
  void reportOwnersStyle(const x11::Window& window);
  void settleWindow(x11::Window& window);
  void settleFocus();
  void putInFront(WindowHandle window);
  void lookAtOrderLater();
  [[nodiscard]] bool haveAnOrder() const;
  void settleOrder(Nanoseconds now);
  void settleControls(x11::Window& window, Nanoseconds now);
  void animate(Nanoseconds now);
  [[nodiscard]] bool isAnimated() const;

  std::unique_ptr<x11::Connection> connection_;
  x11::ScreenCoordinates coordinates_;
  x11::RenderExtension render_;
  x11::WindowManager windowManager_;
  WindowSystemDelegate* delegate_ = nullptr;
  std::map<WindowHandle, x11::Window> windows_;
  WindowHandle modal_ = WindowHandle::None;
  Drag drag_;

  xcb_window_t focus_ = XCB_WINDOW_NONE;      // the window of ours that has it
  xcb_window_t focusTold_ = XCB_WINDOW_NONE;  // what was reported last
  bool focusLeft_ = false;                    // a window of ours has lost it
  bool windowManagerLeft_ = false;
  bool active_ = true;
  xcb_timestamp_t timeOfFocus_ = XCB_CURRENT_TIME;  // when it last came to the application

  Nanoseconds orderDue_ = kNever;        // when to see in which order the windows lie
  std::vector<WindowHandle> orderTold_;  // what the listener takes it for

  bool unsettled_ = false;
  Nanoseconds nextPicture_ = 0;  // of the indicators that turn
  std::deque<Report> reports_;
  bool lost_ = false;
  std::shared_ptr<int> alive_ = std::make_shared<int>();  // ends with this object
};

}  // namespace vel
