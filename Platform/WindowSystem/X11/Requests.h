// Sends requests of the X11 core protocol. If a request fails, the log names the request and the
// window.
#pragma once

#include <xcb/xproto.h>

#include <array>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/X11/BrokenPipeGuard.h"
#include "Platform/WindowSystem/X11/Connection.h"
#include "Platform/WindowSystem/X11/PixelRect.h"

namespace vel::x11 {

/// Create an object of this class before sending requests. Its destructor flushes the connection:
/// without a flush, XCB could keep requests in its buffer. The object blocks SIGPIPE on the calling
/// thread until it is destroyed.
class RequestBatch final : public NonCopyable {
 public:
  explicit RequestBatch(Connection& connection) : connection_(connection) {}
  ~RequestBatch() { connection_.flush(); }

 private:
  Connection& connection_;
  BrokenPipeGuard guard_;  // destroyed after the flush
};

/// While an object of this class exists, the server processes no other client's requests. Destroy
/// the object after a few requests, because all other clients wait. The destructor flushes the
/// connection.
class ServerGrab final : public NonCopyable {
 public:
  explicit ServerGrab(Connection& connection);
  ~ServerGrab();

 private:
  Connection& connection_;
};

/// The maximum width and height of a window.
inline constexpr int kMaxWindowSize = 32767;

/// The source indication that EWMH defines for messages from a normal application.
inline constexpr std::uint32_t kSourceApplication = 1;

/// The parameters of CreateWindow. By default, the new window has the visual and the depth of its
/// parent.
struct NewWindow {
  xcb_window_t id = XCB_WINDOW_NONE;
  xcb_window_t parent = XCB_WINDOW_NONE;
  PixelRect frame;
  xcb_window_class_t windowClass = XCB_WINDOW_CLASS_INPUT_OUTPUT;
  std::uint8_t depth = XCB_COPY_FROM_PARENT;
  xcb_visualid_t visual = XCB_COPY_FROM_PARENT;
};

/// `valueMask` consists of XCB_CW_… bits. `values` has one value for each bit, lowest bit first.
void createWindow(Connection& connection, const NewWindow& window, std::uint32_t valueMask,
                  std::initializer_list<std::uint32_t> values);
/// `valueMask` and `values` have the same meaning as in `createWindow`.
void changeWindowAttributes(Connection& connection, xcb_window_t window, std::uint32_t valueMask,
                            std::initializer_list<std::uint32_t> values);
/// Selects the events that this connection receives for the window: a mask of XCB_EVENT_MASK_….
void selectEvents(Connection& connection, xcb_window_t window, std::uint32_t events);
void destroyWindow(Connection& connection, xcb_window_t window);
void mapWindow(Connection& connection, xcb_window_t window);
void unmapWindow(Connection& connection, xcb_window_t window);
/// `valueMask` consists of XCB_CONFIG_WINDOW_… bits. `values` has one value for each bit, lowest
/// bit first.
void configureWindow(Connection& connection, xcb_window_t window, std::uint16_t valueMask,
                     std::initializer_list<std::uint32_t> values);
void moveResizeWindow(Connection& connection, xcb_window_t window, PixelRect frame);
/// Puts the window above all its siblings.
void raiseWindow(Connection& connection, xcb_window_t window);
/// Fills the window with its background.
void clearWindow(Connection& connection, xcb_window_t window);
void setInputFocus(Connection& connection, xcb_window_t window);
/// Sets a property, or deletes it if there is no value.
void changeProperty(Connection& connection, xcb_window_t window, xcb_atom_t name,
                    const std::optional<Property>& value);
/// Sends a client message about `window` to the window manager, through the root window.
void sendToWindowManager(Connection& connection, xcb_window_t window, Atom message,
                         const std::array<std::uint32_t, 5>& data);
/// Sends the window manager the UnmapNotify that ICCCM requires when a client withdraws its window.
void sendUnmapNotify(Connection& connection, xcb_window_t window);

/// `queryTree` and `queryInputFocus` block for a round trip. They return null if the request fails.
XcbPointer<xcb_query_tree_reply_t> queryTree(Connection& connection, xcb_window_t window);
XcbPointer<xcb_get_input_focus_reply_t> queryInputFocus(Connection& connection);

/// Returns the child windows in `tree`, a result of `queryTree`, back to front. Returns an empty
/// span if `tree` is null. Do not use the span after `tree` is destroyed.
[[nodiscard]] std::span<const xcb_window_t> childrenOf(
    const XcbPointer<xcb_query_tree_reply_t>& tree);

}  // namespace vel::x11
