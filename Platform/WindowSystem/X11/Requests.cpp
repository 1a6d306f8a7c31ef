#include "Platform/WindowSystem/X11/Requests.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace vel::x11 {

namespace {

std::uint32_t unsignedOf(int value) { return static_cast<std::uint32_t>(value); }

// Sends an event about `window` to the root window. The window manager receives the event, because
// it has selected SubstructureNotify and SubstructureRedirect on the root window.
template <class Event>
void sendToRoot(Connection& connection, xcb_window_t window, const Event& event) {
  std::array<char, 32> bytes{};
  static_assert(sizeof event <= bytes.size());
  std::memcpy(bytes.data(), &event, sizeof event);
  connection.track(
      xcb_send_event(connection.get(), 0, connection.root(),
                     XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                     bytes.data()),
      "SendEvent", window);
}

}  // namespace

ServerGrab::ServerGrab(Connection& connection) : connection_(connection) {
  connection_.track(xcb_grab_server(connection_.get()), "GrabServer", connection_.root());
}

ServerGrab::~ServerGrab() {
  connection_.track(xcb_ungrab_server(connection_.get()), "UngrabServer", connection_.root());
  connection_.flush();
}

void createWindow(Connection& connection, const NewWindow& window, std::uint32_t valueMask,
                  std::initializer_list<std::uint32_t> values) {
  const PixelRect& frame = window.frame;
  connection.track(
      xcb_create_window(
          connection.get(), window.depth, window.id, window.parent,
          static_cast<std::int16_t>(frame.x), static_cast<std::int16_t>(frame.y),
          static_cast<std::uint16_t>(frame.width), static_cast<std::uint16_t>(frame.height), 0,
          static_cast<std::uint16_t>(window.windowClass), window.visual, valueMask, values.begin()),
      "CreateWindow", window.id);
}

void changeWindowAttributes(Connection& connection, xcb_window_t window, std::uint32_t valueMask,
                            std::initializer_list<std::uint32_t> values) {
  connection.track(
      xcb_change_window_attributes(connection.get(), window, valueMask, values.begin()),
      "ChangeWindowAttributes", window);
}

void selectEvents(Connection& connection, xcb_window_t window, std::uint32_t events) {
  changeWindowAttributes(connection, window, XCB_CW_EVENT_MASK, {events});
}

void destroyWindow(Connection& connection, xcb_window_t window) {
  connection.track(xcb_destroy_window(connection.get(), window), "DestroyWindow", window);
}

void mapWindow(Connection& connection, xcb_window_t window) {
  connection.track(xcb_map_window(connection.get(), window), "MapWindow", window);
}

void unmapWindow(Connection& connection, xcb_window_t window) {
  connection.track(xcb_unmap_window(connection.get(), window), "UnmapWindow", window);
}

void configureWindow(Connection& connection, xcb_window_t window, std::uint16_t valueMask,
                     std::initializer_list<std::uint32_t> values) {
  connection.track(xcb_configure_window(connection.get(), window, valueMask, values.begin()),
                   "ConfigureWindow", window);
}

void moveResizeWindow(Connection& connection, xcb_window_t window, PixelRect frame) {
  configureWindow(connection, window,
                  XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                      XCB_CONFIG_WINDOW_HEIGHT,
                  {unsignedOf(frame.x), unsignedOf(frame.y), unsignedOf(frame.width),
                   unsignedOf(frame.height)});
}

void raiseWindow(Connection& connection, xcb_window_t window) {
  configureWindow(connection, window, XCB_CONFIG_WINDOW_STACK_MODE, {XCB_STACK_MODE_ABOVE});
}

void clearWindow(Connection& connection, xcb_window_t window) {
  connection.track(xcb_clear_area(connection.get(), 0, window, 0, 0, 0, 0), "ClearArea", window);
}

void setInputFocus(Connection& connection, xcb_window_t window) {
  connection.track(
      xcb_set_input_focus(connection.get(), XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME),
      "SetInputFocus", window);
}

void changeProperty(Connection& connection, xcb_window_t window, xcb_atom_t name,
                    const std::optional<Property>& value) {
  if (!value) {
    connection.track(xcb_delete_property(connection.get(), window, name), "DeleteProperty", window);
    return;
  }
  const std::size_t elementCount = value->bytes.size() / (value->format / 8U);
  connection.track(
      xcb_change_property(connection.get(), XCB_PROP_MODE_REPLACE, window, name, value->type,
                          value->format, static_cast<std::uint32_t>(elementCount),
                          value->bytes.data()),
      "ChangeProperty", window);
}

void sendToWindowManager(Connection& connection, xcb_window_t window, Atom message,
                         const std::array<std::uint32_t, 5>& data) {
  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = window;
  event.type = connection.atom(message);
  std::ranges::copy(data, event.data.data32);
  sendToRoot(connection, window, event);
}

void sendUnmapNotify(Connection& connection, xcb_window_t window) {
  xcb_unmap_notify_event_t event{};
  event.response_type = XCB_UNMAP_NOTIFY;
  event.event = connection.root();
  event.window = window;
  sendToRoot(connection, window, event);
}

XcbPointer<xcb_query_tree_reply_t> queryTree(Connection& connection, xcb_window_t window) {
  return connection.waitForReply(xcb_query_tree_reply, xcb_query_tree(connection.get(), window),
                                 "QueryTree", window);
}

XcbPointer<xcb_get_input_focus_reply_t> queryInputFocus(Connection& connection) {
  return connection.waitForReply(xcb_get_input_focus_reply, xcb_get_input_focus(connection.get()),
                                 "GetInputFocus", connection.root());
}

std::span<const xcb_window_t> childrenOf(const XcbPointer<xcb_query_tree_reply_t>& tree) {
  if (tree == nullptr) {
    return {};
  }
  return {xcb_query_tree_children(tree.get()),
          static_cast<std::size_t>(xcb_query_tree_children_length(tree.get()))};
}

}  // namespace vel::x11
