// Taking part in windows of other programs.
#include <array>
#include <charconv>
#include <limits>
#include <span>
#include <utility>

#include "Platform/WindowSystem/X11/X11WindowSystem.h"

namespace vel {

using x11::Atom;
using x11::BrokenPipeGuard;
using x11::Window;
using x11::WindowOrigin;

namespace {

std::string hexadecimal(std::uint64_t number) {
  std::array<char, 16> digits{};
  auto* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number, 16).ptr;
  return "0x" + std::string(digits.data(), end);
}

// The second of the two texts in WM_CLASS.
std::string classPart(const std::optional<x11::Property>& windowClass) {
  const std::string text = windowClass ? windowClass->text() : std::string();
  const std::size_t start = text.find('\0');
  return start == std::string::npos ? std::string() : std::string(text.c_str() + start + 1);
}

std::span<const xcb_window_t> childrenIn(const xcb_query_tree_reply_t& tree) {
  return {xcb_query_tree_children(&tree),
          static_cast<std::size_t>(xcb_query_tree_children_length(&tree))};
}

}  // namespace

std::optional<AdoptedWindow> X11WindowSystem::adoptWindow(std::uint64_t nativeId,
                                                          std::string& error) {
  const BrokenPipeGuard guard;
  const std::string name = "window " + hexadecimal(nativeId);
  if (lost_) {
    error = "the X11 display is lost";
    return std::nullopt;
  }
  if (nativeId == 0 || nativeId > std::numeric_limits<xcb_window_t>::max()) {
    error = name + ": that is no X11 window's id";
    return std::nullopt;
  }
  const auto id = static_cast<xcb_window_t>(nativeId);
  if (findShown(id) != nullptr) {
    error = name + ": it takes part already";
    return std::nullopt;
  }
  if (connection_->hasMade(id)) {
    error = name + ": it is one of this program's own";
    return std::nullopt;
  }

  // Followed first and looked at then: nothing that happens meanwhile is missed.
  Window window;
  window.id = id;
  window.origin = WindowOrigin::Adopted;
  window.ordered = true;
  const bool isRoot = id == connection_->root();
  if (!isRoot) {
    selectEvents(window);
  }
  const Looks looks = lookAt(id);
  if (const char* const reason = isRoot ? "it is the root window" : reasonToRefuse(id, looks)) {
    error = name + ": " + reason;
    if (looks.attributes == nullptr) {
      connection_->windowEnded(id);
    } else if (!isRoot) {
      ignoreEvents(id);
    }
    connection_->flush();
    return std::nullopt;
  }

  connection_->windowFound(id);
  window.frame = looks.frame();
  const bool iconic =
      x11::WindowManager::isIconic(connection_->property(id, connection_->atom(Atom::WmState)));
  window.miniaturized = iconic || looks.attributes->map_state == XCB_MAP_STATE_UNMAPPED;
  window.style = std::make_unique<x11::Style>(
      *connection_, id,
      x11::StyleHints{connection_->property(id, connection_->atom(Atom::MotifWmHints)),
                      connection_->property(id, XCB_ATOM_WM_NORMAL_HINTS)});
  makeCover(window, looks.attributes->visual, looks.geometry->depth);

  AdoptedWindow found;
  found.handle = window.handle();
  found.className = classPart(connection_->property(id, XCB_ATOM_WM_CLASS));
  auto title = connection_->property(id, connection_->atom(Atom::NetWmName));
  if (!title) {
    title = connection_->property(id, XCB_ATOM_WM_NAME);
  }
  found.title = title ? title->text() : std::string();
  found.frame = display_.points(window.frame);
  found.styleMask = window.style->mask();
  found.onScreen = !window.miniaturized;
  found.hasFocus = holdsFocus(id);
  if (found.hasFocus) {
    focus_ = focusTold_ = id;
    if (!std::exchange(active_, true)) {
      report([handle = found.handle](WindowSystemDelegate& delegate) {
        delegate.applicationActivated(handle);
      });
    }
  } else {
    focusLeft_ = unsettled_ = true;  // to see whether the application has the focus at all
  }
  windows_.emplace(found.handle, std::move(window));
  connection_->flush();
  return found;
}

X11WindowSystem::Looks X11WindowSystem::lookAt(xcb_window_t id) {
  xcb_connection_t* const x = connection_->get();
  const auto attributes = xcb_get_window_attributes(x, id);
  const auto geometry = xcb_get_geometry(x, id);
  const auto corner = xcb_translate_coordinates(x, id, connection_->root(), 0, 0);
  Looks looks;
  looks.attributes =
      connection_->answer(xcb_get_window_attributes_reply, attributes, "GetWindowAttributes", id);
  looks.geometry = connection_->answer(xcb_get_geometry_reply, geometry, "GetGeometry", id);
  looks.corner =
      connection_->answer(xcb_translate_coordinates_reply, corner, "TranslateCoordinates", id);
  return looks;
}

const char* X11WindowSystem::reasonToRefuse(xcb_window_t id, const Looks& looks) {
  if (connection_->isBroken()) {
    return "the X11 display does not answer any more";
  }
  if (!looks.areComplete()) {
    return "there is no such window";
  }
  if (looks.attributes->_class == XCB_WINDOW_CLASS_INPUT_ONLY) {
    return "it takes input only, nothing can be shown in it";
  }
  if (looks.geometry->root != connection_->root() || looks.corner->same_screen == 0) {
    return "it is on another screen";
  }
  return isFrame(id) ? "it is a window manager's frame; name the window inside" : nullptr;
}

// A window that a window manager has made around another program's: it has no state of its own, but
// one of its children has.
bool X11WindowSystem::isFrame(xcb_window_t id) {
  const xcb_atom_t state = connection_->atom(Atom::WmState);
  if (connection_->property(id, state)) {
    return false;
  }
  const auto tree = connection_->answer(xcb_query_tree_reply,
                                        xcb_query_tree(connection_->get(), id), "QueryTree", id);
  if (tree == nullptr || tree->parent != tree->root) {
    return false;
  }
  for (const xcb_window_t child : childrenIn(*tree)) {
    if (connection_->property(child, state)) {
      return true;
    }
  }
  return false;
}

// Whether the focus is on the window or on something in it.
bool X11WindowSystem::holdsFocus(xcb_window_t id) {
  xcb_connection_t* const x = connection_->get();
  const auto focus = connection_->answer(xcb_get_input_focus_reply, xcb_get_input_focus(x),
                                         "GetInputFocus", connection_->root());
  xcb_window_t window = focus == nullptr ? xcb_window_t{XCB_WINDOW_NONE} : focus->focus;
  while (window > XCB_INPUT_FOCUS_POINTER_ROOT && window != connection_->root()) {
    if (window == id) {
      return true;
    }
    const auto tree =
        connection_->answer(xcb_query_tree_reply, xcb_query_tree(x, window), "QueryTree", window);
    window = tree == nullptr ? xcb_window_t{XCB_WINDOW_NONE} : tree->parent;
  }
  return false;
}

}  // namespace vel
