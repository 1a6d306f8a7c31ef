#include "Tests/Support/X11/XClient.h"

#include <xcb/res.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <stdexcept>

#include "Tests/WindowSystem/Reports.h"

namespace vel::test {

namespace {

template <class T>
using Reply = x11::XcbPointer<T>;

std::string atomName(xcb_connection_t* connection, xcb_atom_t atom) {
  const Reply<xcb_get_atom_name_reply_t> reply(
      xcb_get_atom_name_reply(connection, xcb_get_atom_name(connection, atom), nullptr));
  return reply == nullptr
             ? std::string()
             : std::string(xcb_get_atom_name_name(reply.get()),
                           static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get())));
}

}  // namespace

XClient::XClient(const std::string& display) : connection_(xcb_connect(display.c_str(), nullptr)) {
  if (xcb_connection_has_error(connection_) != 0) {
    throw std::runtime_error("the test cannot open the display " + display);
  }
  root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
}

XClient::~XClient() { xcb_disconnect(connection_); }

xcb_atom_t XClient::atom(std::string_view name) const {
  const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
      connection_,
      xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()),
      nullptr));
  return reply->atom;
}

// Creating and changing windows

xcb_window_t XClient::makeWindow(PixelRect frame, std::uint32_t color, xcb_window_t parent) {
  const xcb_window_t window = xcb_generate_id(connection_);
  xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, parent == 0 ? root_ : parent,
                    static_cast<std::int16_t>(frame.x), static_cast<std::int16_t>(frame.y),
                    static_cast<std::uint16_t>(frame.width),
                    static_cast<std::uint16_t>(frame.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                    XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL, &color);
  waitForServer();
  return window;
}

xcb_window_t XClient::openGameWindow(PixelRect frame, std::uint32_t color) {
  const xcb_window_t window = makeWindow(frame, color);
  constexpr std::string_view kClass("game\0PlayerWindow\0", 18);
  setProperty(window, "WM_CLASS", Property::ofText(XCB_ATOM_STRING, kClass));
  setProperty(window, "WM_NAME", Property::ofText(XCB_ATOM_STRING, "A game"));
  const std::array protocols{atom("WM_DELETE_WINDOW")};
  setProperty(window, "WM_PROTOCOLS", Property::ofNumbers(XCB_ATOM_ATOM, protocols));
  std::array<std::uint32_t, 18> hints{1 | 4};  // USPosition and PPosition
  setProperty(window, "WM_NORMAL_HINTS", Property::ofNumbers(XCB_ATOM_WM_SIZE_HINTS, hints));
  map(window);
  return window;
}

xcb_window_t XClient::openTransparentWindow(PixelRect frame, xcb_window_t parent) {
  const xcb_screen_t& screen = *xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
  xcb_visualid_t visual = 0;
  for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem > 0;
       xcb_depth_next(&depths)) {
    if (depths.data->depth == 32) {
      visual = xcb_depth_visuals(depths.data)->visual_id;
    }
  }
  const xcb_colormap_t colormap = xcb_generate_id(connection_);
  xcb_create_colormap(connection_, XCB_COLORMAP_ALLOC_NONE, colormap, root_, visual);
  const xcb_window_t window = xcb_generate_id(connection_);
  const std::array<std::uint32_t, 3> values{0, 0, colormap};
  xcb_create_window(
      connection_, 32, window, parent == 0 ? root_ : parent, static_cast<std::int16_t>(frame.x),
      static_cast<std::int16_t>(frame.y), static_cast<std::uint16_t>(frame.width),
      static_cast<std::uint16_t>(frame.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
      XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_COLORMAP, values.data());
  map(window);
  return window;
}

void XClient::map(xcb_window_t window) {
  xcb_map_window(connection_, window);
  waitForServer();
}

void XClient::unmap(xcb_window_t window) {
  xcb_unmap_window(connection_, window);
  waitForServer();
}

void XClient::destroy(xcb_window_t window) {
  xcb_destroy_window(connection_, window);
  waitForServer();
}

void XClient::configure(xcb_window_t window, PixelRect frame) {
  const std::array values{frame.x, frame.y, frame.width, frame.height};
  xcb_configure_window(connection_, window,
                       XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                           XCB_CONFIG_WINDOW_HEIGHT,
                       values.data());
  waitForServer();
}

void XClient::raise(xcb_window_t window) {
  constexpr std::uint32_t kAbove = XCB_STACK_MODE_ABOVE;
  xcb_configure_window(connection_, window, XCB_CONFIG_WINDOW_STACK_MODE, &kAbove);
  waitForServer();
}

void XClient::focus(xcb_window_t window) {
  xcb_set_input_focus(connection_, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
  waitForServer();
}

void XClient::fill(xcb_window_t window, std::uint32_t color) {
  xcb_change_window_attributes(connection_, window, XCB_CW_BACK_PIXEL, &color);
  xcb_clear_area(connection_, 0, window, 0, 0, 0, 0);
  waitForServer();
}

// Receiving events

void XClient::selectEvents(xcb_window_t window, std::uint32_t events) {
  xcb_change_window_attributes(connection_, window, XCB_CW_EVENT_MASK, &events);
  waitForServer();
}

std::vector<int> XClient::takeEventTypes() {
  waitForServer();
  std::vector<int> types;
  while (const x11::Event event{xcb_poll_for_event(connection_)}) {
    types.push_back(x11::typeOf(*event));
  }
  return types;
}

void XClient::waitForServer() {
  const Reply<xcb_get_input_focus_reply_t> reply(
      xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

// Reading and writing properties

std::optional<Property> XClient::property(xcb_window_t window, std::string_view name) const {
  const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
      connection_,
      xcb_get_property(connection_, 0, window, atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, 0xFFFFFF),
      nullptr));
  if (reply == nullptr || reply->type == XCB_ATOM_NONE) {
    return std::nullopt;
  }
  const std::span bytes(static_cast<const std::uint8_t*>(xcb_get_property_value(reply.get())),
                        static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
  return Property{reply->type, reply->format, {bytes.begin(), bytes.end()}};
}

void XClient::setProperty(xcb_window_t window, std::string_view name,
                          const std::optional<Property>& value) {
  if (value) {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom(name), value->type,
                        value->format,
                        static_cast<std::uint32_t>(value->bytes.size() / (value->format / 8U)),
                        value->bytes.data());
  } else {
    xcb_delete_property(connection_, window, atom(name));
  }
  waitForServer();
}

std::vector<std::uint32_t> XClient::numbers(xcb_window_t window, std::string_view name) const {
  const auto value = property(window, name);
  return value ? value->numbers() : std::vector<std::uint32_t>();
}

std::vector<std::string> XClient::atomNames(xcb_window_t window, std::string_view name) const {
  std::vector<std::string> names;
  for (const xcb_atom_t atom : numbers(window, name)) {
    names.push_back(atomName(connection_, atom));
  }
  return names;
}

// Reading the state of windows

PixelRect XClient::areaOnScreen(xcb_window_t window) const {
  const Reply<xcb_get_geometry_reply_t> geometry(
      xcb_get_geometry_reply(connection_, xcb_get_geometry(connection_, window), nullptr));
  const Reply<xcb_translate_coordinates_reply_t> corner(xcb_translate_coordinates_reply(
      connection_, xcb_translate_coordinates(connection_, window, root_, 0, 0), nullptr));
  return geometry == nullptr || corner == nullptr
             ? PixelRect{}
             : PixelRect{corner->dst_x, corner->dst_y, geometry->width, geometry->height};
}

bool XClient::isViewable(xcb_window_t window) const {
  const Reply<xcb_get_window_attributes_reply_t> reply(xcb_get_window_attributes_reply(
      connection_, xcb_get_window_attributes(connection_, window), nullptr));
  return reply != nullptr && reply->map_state == XCB_MAP_STATE_VIEWABLE;
}

bool XClient::exists(xcb_window_t window) const {
  const Reply<xcb_get_geometry_reply_t> geometry(
      xcb_get_geometry_reply(connection_, xcb_get_geometry(connection_, window), nullptr));
  return geometry != nullptr;
}

xcb_window_t XClient::focusedWindow() const {
  const Reply<xcb_get_input_focus_reply_t> reply(
      xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
  return reply->focus;
}

std::vector<xcb_window_t> XClient::children(xcb_window_t window) const {
  const Reply<xcb_query_tree_reply_t> tree(
      xcb_query_tree_reply(connection_, xcb_query_tree(connection_, window), nullptr));
  if (tree == nullptr) {
    return {};
  }
  const std::span childIds(xcb_query_tree_children(tree.get()),
                           static_cast<std::size_t>(xcb_query_tree_children_length(tree.get())));
  return {childIds.begin(), childIds.end()};
}

xcb_window_t XClient::findWindow(std::string_view classOrTitle, xcb_window_t ancestor) const {
  std::vector<xcb_window_t> windows = children(ancestor == 0 ? root_ : ancestor);
  std::ranges::reverse(windows);  // topmost window first
  const auto text = [this](xcb_window_t window, std::string_view property) {
    const auto value = this->property(window, property);
    return value ? value->text() : std::string();
  };
  for (const xcb_window_t window : windows) {
    if (text(window, "WM_CLASS").ends_with('\0' + std::string(classOrTitle) + '\0') ||
        text(window, "WM_NAME") == classOrTitle) {
      return window;
    }
    if (const xcb_window_t descendant = findWindow(classOrTitle, window); descendant != 0) {
      return descendant;
    }
  }
  return 0;
}

// Sending messages

void XClient::sendMessage(xcb_window_t destination, std::uint32_t eventMask, xcb_window_t window,
                          std::string_view type, std::uint32_t data0, std::uint32_t data1,
                          std::uint32_t data2, std::uint32_t data3) {
  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = window;
  event.type = atom(type);
  event.data.data32[0] = data0;
  event.data.data32[1] = data1;
  event.data.data32[2] = data2;
  event.data.data32[3] = data3;
  std::array<char, 32> bytes{};
  std::memcpy(bytes.data(), &event, bytes.size());
  xcb_send_event(connection_, 0, destination, eventMask, bytes.data());
  waitForServer();
}

void XClient::sendProtocolMessage(xcb_window_t window, std::string_view protocol) {
  sendMessage(window, XCB_EVENT_MASK_NO_EVENT, window, "WM_PROTOCOLS", atom(protocol), 0);
}

void XClient::requestClose(xcb_window_t window) {
  constexpr std::uint32_t kSourcePager = 2;
  sendMessage(root_, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
              window, "_NET_CLOSE_WINDOW", XCB_CURRENT_TIME, kSourcePager);
}

void XClient::requestActivation(xcb_window_t window) {
  constexpr std::uint32_t kSourcePager = 2;
  sendMessage(root_, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
              window, "_NET_ACTIVE_WINDOW", kSourcePager, XCB_CURRENT_TIME);
}

void XClient::requestIconify(xcb_window_t window) {
  constexpr std::uint32_t kIconic = 3;
  sendMessage(root_, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
              window, "WM_CHANGE_STATE", kIconic, 0);
}

void XClient::requestAddStates(xcb_window_t window, std::string_view state,
                               std::string_view secondState) {
  constexpr std::uint32_t kAdd = 1;
  sendStateRequest(window, kAdd, state, secondState);
}

void XClient::requestRemoveStates(xcb_window_t window, std::string_view state,
                                  std::string_view secondState) {
  constexpr std::uint32_t kRemove = 0;
  sendStateRequest(window, kRemove, state, secondState);
}

void XClient::requestToggleStates(xcb_window_t window, std::string_view state,
                                  std::string_view secondState) {
  constexpr std::uint32_t kToggle = 2;
  sendStateRequest(window, kToggle, state, secondState);
}

void XClient::sendStateRequest(xcb_window_t window, std::uint32_t action, std::string_view state,
                               std::string_view secondState) {
  constexpr std::uint32_t kSourceApplication = 1;
  sendMessage(root_, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
              window, "_NET_WM_STATE", action, atom(state),
              secondState.empty() ? 0 : atom(secondState), kSourceApplication);
}

// Simulating the pointer and the keyboard

void XClient::sendFakeInput(std::uint8_t type, std::uint8_t detail, int x, int y) {
  xcb_test_fake_input(connection_, type, detail, XCB_CURRENT_TIME, root_,
                      static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 0);
  waitForServer();
}

// Waits until `condition` returns true for the pointer state of the server, or until a timeout. If
// `outerClient_` is not null, the server is Xwayland. Xwayland receives no input while the pointer
// is outside the windows of its clients, so a wait for this input times out after one second.
void XClient::waitForPointer(
    const std::function<bool(const xcb_query_pointer_reply_t&)>& condition) {
  const Nanoseconds limit =
      steadyNow() + (outerClient_ == nullptr ? kTimeout : kNanosecondsPerSecond);
  while (steadyNow() < limit) {
    const Reply<xcb_query_pointer_reply_t> pointer(
        xcb_query_pointer_reply(connection_, xcb_query_pointer(connection_, root_), nullptr));
    if (pointer == nullptr || condition(*pointer)) {
      return;
    }
    if (outerClient_ != nullptr) {  // gives the compositor time to send the input to Xwayland
      waitForInput(-1, steadyNow() + kNanosecondsPerSecond / 500);
    }
  }
}

void XClient::movePointer(int x, int y) {
  const auto waitForPosition = [this](int expectedX, int expectedY) {
    waitForPointer([=](const xcb_query_pointer_reply_t& pointer) {
      return pointer.root_x == expectedX && pointer.root_y == expectedY;
    });
  };
  if (outerClient_ != nullptr) {
    // Xwayland may already report (x, y) from an earlier movement. Then the second wait would end
    // before Xwayland has received the new movement. Moving to (x + 1, y) first prevents this.
    outerClient_->movePointer(x + 1, y);
    waitForPosition(x + 1, y);
    outerClient_->movePointer(x, y);
  } else {
    sendFakeInput(XCB_MOTION_NOTIFY, 0, x, y);
  }
  waitForPosition(x, y);
}

void XClient::pressButton() {
  if (outerClient_ != nullptr) {
    outerClient_->pressButton();
  } else {
    sendFakeInput(XCB_BUTTON_PRESS, 1, 0, 0);
  }
  waitForPointer([](const xcb_query_pointer_reply_t& pointer) {
    return (pointer.mask & XCB_BUTTON_MASK_1) != 0;
  });
}

void XClient::releaseButton() {
  if (outerClient_ != nullptr) {
    outerClient_->releaseButton();
  } else {
    sendFakeInput(XCB_BUTTON_RELEASE, 1, 0, 0);
  }
  waitForPointer([](const xcb_query_pointer_reply_t& pointer) {
    return (pointer.mask & XCB_BUTTON_MASK_1) == 0;
  });
}

void XClient::click(int x, int y) {
  movePointer(x, y);
  pressButton();
  releaseButton();
  if (outerClient_ != nullptr) {
    // The compositor draws the pointer on the screen. `screenPicture` paints over the lower right
    // corner of the screen, so the pointer moves to this corner.
    const PixelRect screen = screenArea();
    outerClient_->movePointer(screen.width - 1, screen.height - 1);
  }
}

void XClient::typeKey(std::uint8_t code) {
  if (outerClient_ != nullptr) {
    return outerClient_->typeKey(code);
  }
  sendFakeInput(XCB_KEY_PRESS, code, 0, 0);
  sendFakeInput(XCB_KEY_RELEASE, code, 0, 0);
}

// The time of the server and the resources of clients

void XClient::updateUserTime(xcb_window_t window) {
  const std::array<std::uint32_t, 1> now{serverTime(window)};
  setProperty(window, "_NET_WM_USER_TIME", Property::ofNumbers(XCB_ATOM_CARDINAL, now));
}

xcb_timestamp_t XClient::serverTime(xcb_window_t window) {
  xcb_timestamp_t time = XCB_CURRENT_TIME;
  selectEvents(window, XCB_EVENT_MASK_PROPERTY_CHANGE);
  // The change makes the server send a PropertyNotify event with the server's time.
  setProperty(window, "_VEL_TEST", Property::ofText(XCB_ATOM_STRING, ""));
  while (const x11::Event event{xcb_poll_for_event(connection_)}) {
    if (x11::typeOf(*event) == XCB_PROPERTY_NOTIFY) {
      time = x11::eventAs<xcb_property_notify_event_t>(*event).time;
    }
  }
  selectEvents(window, XCB_EVENT_MASK_NO_EVENT);
  return time;
}

std::map<std::string, unsigned> XClient::clientResourceCounts(xcb_window_t window) const {
  const Reply<xcb_res_query_client_resources_reply_t> reply(xcb_res_query_client_resources_reply(
      connection_, xcb_res_query_client_resources(connection_, window), nullptr));
  std::map<std::string, unsigned> counts;
  if (reply != nullptr) {
    for (auto types = xcb_res_query_client_resources_types_iterator(reply.get()); types.rem > 0;
         xcb_res_type_next(&types)) {
      counts[atomName(connection_, types.data->resource_type)] = types.data->count;
    }
  }
  return counts;
}

}  // namespace vel::test
