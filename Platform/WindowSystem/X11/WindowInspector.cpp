#include "Platform/WindowSystem/X11/WindowInspector.h"

#include <xcb/xcb_icccm.h>

#include <algorithm>
#include <array>
#include <utility>

#include "Platform/WindowSystem/X11/Requests.h"

namespace vel::x11 {

namespace {

// The second of the two strings in WM_CLASS.
std::string classOf(const std::optional<Property>& wmClass) {
  const std::string text = wmClass ? wmClass->text() : std::string();
  const std::size_t separator = text.find('\0');
  return separator == std::string::npos ? std::string() : std::string(text.c_str() + separator + 1);
}

}  // namespace

bool WindowState::isViewable() const { return attributes->map_state == XCB_MAP_STATE_VIEWABLE; }

bool WindowState::isUnmapped() const { return attributes->map_state == XCB_MAP_STATE_UNMAPPED; }

bool WindowState::isIconic() const {
  const std::vector<std::uint32_t> fields =
      wmState ? wmState->numbers() : std::vector<std::uint32_t>();
  return !fields.empty() && fields.front() == XCB_ICCCM_WM_STATE_ICONIC;
}

bool WindowInspection::isSupportingWmCheckWindow() const {
  return supportingWmCheck && supportingWmCheck->numbers() == std::vector{id};
}

WindowState WindowInspector::readState(xcb_window_t id) {
  xcb_connection_t* const xcb = connection_.get();
  const auto wmState = connection_.requestProperty(id, connection_.atom(Atom::WmState));
  const auto netWmState = connection_.requestProperty(id, connection_.atom(Atom::NetWmState));
  const auto attributes = xcb_get_window_attributes(xcb, id);
  const auto geometry = xcb_get_geometry(xcb, id);
  const auto origin = xcb_translate_coordinates(xcb, id, connection_.root(), 0, 0);
  WindowState state;
  state.wmState = connection_.readProperty(wmState, id);
  state.netWmState = connection_.readProperty(netWmState, id);
  state.attributes = connection_.waitForReply(xcb_get_window_attributes_reply, attributes,
                                              "GetWindowAttributes", id);
  state.geometry = connection_.waitForReply(xcb_get_geometry_reply, geometry, "GetGeometry", id);
  state.origin =
      connection_.waitForReply(xcb_translate_coordinates_reply, origin, "TranslateCoordinates", id);
  return state;
}

// Sends all requests before it waits for a reply, so the replies take one round trip.
WindowInspection WindowInspector::inspect(xcb_window_t id) {
  const auto request = [this, id](xcb_atom_t name) {
    return connection_.requestProperty(id, name);
  };
  const auto tree = xcb_query_tree(connection_.get(), id);
  const auto inputFocus = xcb_get_input_focus(connection_.get());
  const auto motif = request(connection_.atom(Atom::MotifWmHints));
  const auto normal = request(XCB_ATOM_WM_NORMAL_HINTS);
  const auto supportingWmCheck = request(connection_.atom(Atom::NetSupportingWmCheck));
  const auto wmClass = request(XCB_ATOM_WM_CLASS);
  const auto netWmName = request(connection_.atom(Atom::NetWmName));
  const auto wmName = request(XCB_ATOM_WM_NAME);
  WindowInspection inspection;
  inspection.id = id;
  inspection.state = readState(id);
  inspection.tree = connection_.waitForReply(xcb_query_tree_reply, tree, "QueryTree", id);
  inspection.inputFocus = connection_.waitForReply(xcb_get_input_focus_reply, inputFocus,
                                                   "GetInputFocus", connection_.root());
  inspection.hints = {connection_.readProperty(motif, id), connection_.readProperty(normal, id)};
  inspection.supportingWmCheck = connection_.readProperty(supportingWmCheck, id);
  inspection.className = classOf(connection_.readProperty(wmClass, id));
  const auto title = connection_.readProperty(netWmName, id);
  const auto fallbackTitle = connection_.readProperty(wmName, id);
  inspection.title = title ? title->text() : fallbackTitle ? fallbackTitle->text() : std::string();
  return inspection;
}

const char* WindowInspector::reasonNotToAdopt(const WindowInspection& inspection) {
  const WindowState& state = inspection.state;
  if (connection_.isBroken()) {
    return "the X11 display does not answer any more";
  }
  if (!state.isComplete()) {
    return "there is no such window";
  }
  if (state.attributes->_class == XCB_WINDOW_CLASS_INPUT_ONLY) {
    return "it takes input only, nothing can be shown in it";
  }
  if (state.geometry->root != connection_.root() || state.origin->same_screen == 0) {
    return "it is on another screen";
  }
  if (inspection.isSupportingWmCheckWindow()) {
    return "it is the window that a window manager uses to announce itself";
  }
  return isFrame(inspection)
             ? "it is a window manager's frame; pass the id of the window inside the frame"
             : nullptr;
}

// A window manager's frame has no WM_STATE. The client's window inside the frame has WM_STATE.
bool WindowInspector::isFrame(const WindowInspection& inspection) {
  if (inspection.state.wmState || inspection.tree == nullptr ||
      inspection.tree->parent != inspection.tree->root) {
    return false;
  }
  for (const xcb_window_t child : childrenOf(inspection.tree)) {
    if (connection_.readProperty(child, connection_.atom(Atom::WmState))) {
      return true;
    }
  }
  return false;
}

bool WindowInspector::isMaximizedOrFullscreen(const WindowState& state) const {
  const std::vector<std::uint32_t> atoms =
      state.netWmState ? state.netWmState->numbers() : std::vector<std::uint32_t>();
  return std::ranges::any_of(kMaximizedAndFullscreenStates, [&](Atom name) {
    return std::ranges::find(atoms, connection_.atom(name)) != atoms.end();
  });
}

bool WindowInspector::hasFocus(const WindowInspection& inspection) {
  xcb_window_t window = inspection.inputFocus == nullptr ? xcb_window_t{XCB_INPUT_FOCUS_NONE}
                                                         : inspection.inputFocus->focus;
  // A descendant of the inspected window may have the focus.
  while (window > XCB_INPUT_FOCUS_POINTER_ROOT && window != connection_.root()) {
    if (window == inspection.id) {
      return true;
    }
    const auto tree = queryTree(connection_, window);
    window = tree == nullptr ? xcb_window_t{XCB_WINDOW_NONE} : tree->parent;
  }
  return false;
}

}  // namespace vel::x11
