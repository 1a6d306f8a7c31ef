// Taking part in windows of other programs.
#include <array>
#include <charconv>
#include <limits>
#include <span>
#include <utility>

#include "Platform/WindowSystem/X11/Requests.h"
#include "Platform/WindowSystem/X11/X11WindowSystem.h"

namespace vel {

using x11::Atom;
using x11::RequestBatch;
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
  const RequestBatch batch(*connection_);
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
  if (id == connection_->root()) {
    error = name + ": it is the root window";
    return std::nullopt;
  }
  if (connection_->hasCreated(id)) {
    error = name + ": it is one of this program's own";
    return std::nullopt;
  }

  // Followed first and looked at then: nothing that happens meanwhile is missed.
  Window window;
  window.id = id;
  window.origin = WindowOrigin::Adopted;
  window.ordered = true;
  selectEvents(window);
  Inspection seen = inspect(id);
  if (const char* const reason = reasonToRefuse(seen)) {
    error = name + ": " + reason;
    if (seen.looks.attributes == nullptr) {
      connection_->markDestroyed(id);
    } else if (!isManagersMark(seen)) {  // of that the end is to be heard
      x11::selectEvents(*connection_, id, XCB_EVENT_MASK_NO_EVENT);
    }
    return std::nullopt;
  }

  connection_->markExisting(id);
  window.frame = seen.looks.frame();
  window.miniaturized = x11::WindowManager::isIconic(seen.state) ||
                        seen.looks.attributes->map_state == XCB_MAP_STATE_UNMAPPED;
  window.style = std::make_unique<x11::WindowStyle>(*connection_, id, seen.hints);
  makeCover(window, seen.looks.attributes->visual, seen.looks.geometry->depth);

  AdoptedWindow found;
  found.handle = window.handle();
  found.className = classPart(seen.windowClass);
  found.title = seen.title ? seen.title->text() : std::string();
  found.frame = coordinates_.points(window.frame);
  found.styleMask = window.style->mask();
  found.onScreen = !window.miniaturized;
  found.hasFocus = seen.focus != nullptr && holdsFocus(id, seen.focus->focus);
  if (found.hasFocus) {
    focus_ = focusTold_ = id;
    timeOfFocus_ = connection_->serverTime();  // not when it came, but it is here now
    if (!std::exchange(active_, true)) {
      report([handle = found.handle](WindowSystemDelegate& delegate) {
        delegate.applicationActivated(handle);
      });
    }
  } else {
    focusLeft_ = unsettled_ = true;  // to see whether the application has the focus at all
  }
  windows_.emplace(found.handle, std::move(window));
  if (found.onScreen) {
    putInFront(found.handle);
  }
  return found;
}

X11WindowSystem::Looks X11WindowSystem::lookAt(xcb_window_t id) {
  xcb_connection_t* const x = connection_->get();
  const auto attributes = xcb_get_window_attributes(x, id);
  const auto geometry = xcb_get_geometry(x, id);
  const auto corner = xcb_translate_coordinates(x, id, connection_->root(), 0, 0);
  Looks looks;
  looks.attributes = connection_->waitForReply(xcb_get_window_attributes_reply, attributes,
                                               "GetWindowAttributes", id);
  looks.geometry = connection_->waitForReply(xcb_get_geometry_reply, geometry, "GetGeometry", id);
  looks.corner = connection_->waitForReply(xcb_translate_coordinates_reply, corner,
                                           "TranslateCoordinates", id);
  return looks;
}

// All questions go to the server with the first one that is waited for.
X11WindowSystem::Inspection X11WindowSystem::inspect(xcb_window_t id) {
  const auto ask = [this, id](xcb_atom_t name) { return connection_->requestProperty(id, name); };
  const auto tree = xcb_query_tree(connection_->get(), id);
  const auto focus = xcb_get_input_focus(connection_->get());
  const auto state = ask(connection_->atom(Atom::WmState));
  const auto motif = ask(connection_->atom(Atom::MotifWmHints));
  const auto normal = ask(XCB_ATOM_WM_NORMAL_HINTS);
  const auto mark = ask(connection_->atom(Atom::NetSupportingWmCheck));
  const auto windowClass = ask(XCB_ATOM_WM_CLASS);
  const auto title = ask(connection_->atom(Atom::NetWmName));
  const auto plainTitle = ask(XCB_ATOM_WM_NAME);
  Inspection found;
  found.id = id;
  found.looks = lookAt(id);
  found.tree = connection_->waitForReply(xcb_query_tree_reply, tree, "QueryTree", id);
  found.focus = connection_->waitForReply(xcb_get_input_focus_reply, focus, "GetInputFocus",
                                          connection_->root());
  found.state = connection_->readProperty(state, id);
  found.hints = {connection_->readProperty(motif, id), connection_->readProperty(normal, id)};
  found.mark = connection_->readProperty(mark, id);
  found.windowClass = connection_->readProperty(windowClass, id);
  found.title = connection_->readProperty(title, id);
  auto plain = connection_->readProperty(plainTitle, id);
  if (!found.title) {
    found.title = std::move(plain);
  }
  return found;
}

const char* X11WindowSystem::reasonToRefuse(const Inspection& found) {
  const Looks& looks = found.looks;
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
  if (isManagersMark(found)) {
    return "it is the window manager's mark, and nobody's to see";
  }
  return isFrame(found) ? "it is a window manager's frame; name the window inside" : nullptr;
}

// The window by which a window manager says that it runs: it names itself.
bool X11WindowSystem::isManagersMark(const Inspection& found) {
  return found.mark && found.mark->numbers() == std::vector{found.id};
}

// A window that a window manager has made around another program's: it has no state of its own, but
// one of its children has.
bool X11WindowSystem::isFrame(const Inspection& found) {
  if (found.state || found.tree == nullptr || found.tree->parent != found.tree->root) {
    return false;
  }
  for (const xcb_window_t child : childrenIn(*found.tree)) {
    if (connection_->readProperty(child, connection_->atom(Atom::WmState))) {
      return true;
    }
  }
  return false;
}

// Whether the focus is on the window or on something in it.
bool X11WindowSystem::holdsFocus(xcb_window_t id, xcb_window_t focus) {
  while (focus > XCB_INPUT_FOCUS_POINTER_ROOT && focus != connection_->root()) {
    if (focus == id) {
      return true;
    }
    const auto tree = connection_->waitForReply(
        xcb_query_tree_reply, xcb_query_tree(connection_->get(), focus), "QueryTree", focus);
    focus = tree == nullptr ? xcb_window_t{XCB_WINDOW_NONE} : tree->parent;
  }
  return false;
}

}  // namespace vel
