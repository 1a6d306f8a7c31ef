#include "Platform/WindowSystem/X11/Overlay.h"

#include <xcb/shape.h>

#include <utility>

#include "Platform/WindowSystem/X11/FocusTracker.h"
#include "Platform/WindowSystem/X11/PixelFormat.h"
#include "Platform/WindowSystem/X11/Requests.h"
#include "Platform/WindowSystem/X11/WindowTable.h"

namespace vel::x11 {

namespace {

// For a structure event, returns the window on which we selected the event. Returns None for other
// events. All structure events have the field `event` at the same offset.
xcb_window_t receiverOf(const xcb_generic_event_t& event) {
  switch (typeOf(event)) {
    case XCB_CONFIGURE_NOTIFY:
    case XCB_CIRCULATE_NOTIFY:
    case XCB_GRAVITY_NOTIFY:
    case XCB_REPARENT_NOTIFY:
    case XCB_MAP_NOTIFY:
    case XCB_UNMAP_NOTIFY:
    case XCB_DESTROY_NOTIFY:
      return eventAs<xcb_map_notify_event_t>(event).event;
    default:
      return XCB_WINDOW_NONE;
  }
}

// Returns the window that a structure event is about. All structure events have the field
// `window` at the same offset.
xcb_window_t subjectOf(const xcb_generic_event_t& event) {
  return eventAs<xcb_map_notify_event_t>(event).window;
}

}  // namespace

Overlay::Overlay(Connection& connection, WindowTable& windows, const CoveredWindow& coveredWindow)
    : connection_(connection),
      windows_(windows),
      coveredWindow_(coveredWindow),
      coveredWindowFillsParent_(coveredWindowFillsParent()) {
  readVisual();
}

bool Overlay::isSupported(const Connection& connection) {
  const xcb_query_extension_reply_t* const extension =
      xcb_get_extension_data(connection.get(), &xcb_shape_id);
  return extension != nullptr && extension->present != 0;
}

// `createWindow` gives the overlay its parent's visual. If only the overlay or only the parent had
// an alpha channel, the server would draw the overlay into a separate pixmap. For an overlay of the
// maximum size, this pixmap would take gigabytes.
void Overlay::open(CGColor background) {
  window_ = connection_.makeId();
  connection_.markDestroyed(window_);  // so that errors of requests on the overlay are not logged
  createWindow(connection_,
               {.id = window_, .parent = coveredWindow_.parent, .frame = overlayFrame()},
               XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK,
               {pixel(background), 1, XCB_EVENT_MASK_STRUCTURE_NOTIFY});
  connection_.track(xcb_shape_rectangles(connection_.get(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT,
                                         XCB_CLIP_ORDERING_UNSORTED, window_, 0, 0, 0, nullptr),
                    "ShapeRectangles", window_);
  selectParentEvents(XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
  restack();
}

void Overlay::show() {
  if (!isOpen() || isShown_) {
    return;
  }
  isShown_ = true;
  if (mustBeMapped()) {
    mapWindow(connection_, window_);
  }
}

bool Overlay::mustBeMapped() const {
  return isOpen() && isShown_ && coveredWindow_.isMapped &&
         (coveredWindow_.hasFocus || !isAboveAllWindows());
}

// On Xwayland, compositors show an overlay above all windows if its parent is the root window.
bool Overlay::isAboveAllWindows() const {
  return coveredWindow_.parent == connection_.root() && connection_.isXwayland();
}

void Overlay::close() {
  if (!isOpen()) {
    return;
  }
  selectParentEvents(XCB_EVENT_MASK_NO_EVENT);
  destroyWindow(connection_, std::exchange(window_, XCB_WINDOW_NONE));
  isShown_ = false;
}

void Overlay::setBackground(CGColor color) {
  changeWindowAttributes(connection_, window_, XCB_CW_BACK_PIXEL, {pixel(color)});
  clearWindow(connection_, window_);
}

void Overlay::restack() {
  if (isOpen()) {
    configureWindow(connection_, window_, XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE,
                    {coveredWindow_.window, XCB_STACK_MODE_ABOVE});
  }
}

void Overlay::handle(const xcb_generic_event_t& event) {
  if (typeOf(event) == XCB_FOCUS_IN || typeOf(event) == XCB_FOCUS_OUT) {
    return handleFocusEvent(event);
  }
  const xcb_window_t receiver = receiverOf(event);
  if (receiver == XCB_WINDOW_NONE || isSentByClient(event)) {
    return;
  }
  if (receiver == coveredWindow_.window) {
    handleCoveredWindowEvent(event);
  } else if (receiver == window_) {
    handleOwnEvent(event);
  } else if (receiver == coveredWindow_.parent && subjectOf(event) != window_ &&
             (typeOf(event) == XCB_CONFIGURE_NOTIFY || typeOf(event) == XCB_CIRCULATE_NOTIFY)) {
    restack();  // a sibling may now lie between the covered window and the overlay
  }
}

void Overlay::handleOwnEvent(const xcb_generic_event_t& event) {
  if (typeOf(event) == XCB_DESTROY_NOTIFY) {
    close();
  } else if (typeOf(event) == XCB_UNMAP_NOTIFY && mustBeMapped()) {
    mapWindow(connection_, window_);  // another client has unmapped the overlay
  }
}

void Overlay::handleFocusEvent(const xcb_generic_event_t& event) {
  const FocusChange change = focusChange(event);
  if (eventAs<xcb_focus_in_event_t>(event).event != coveredWindow_.window ||
      change == FocusChange::None) {
    return;
  }
  const bool hadToBeMapped = mustBeMapped();
  coveredWindow_.hasFocus = change == FocusChange::In;
  if (mustBeMapped() && !hadToBeMapped) {
    restack();
    mapWindow(connection_, window_);
  } else if (hadToBeMapped && !mustBeMapped()) {
    unmapWindow(connection_, window_);
  }
}

void Overlay::handleCoveredWindowEvent(const xcb_generic_event_t& event) {
  if (subjectOf(event) != coveredWindow_.window) {
    return;  // the event is about a child of the covered window
  }
  switch (typeOf(event)) {
    case XCB_CONFIGURE_NOTIFY: {
      const auto notice = eventAs<xcb_configure_notify_event_t>(event);
      coveredWindow_.borderWidth = notice.border_width;
      return setCoveredWindowFrame({notice.x, notice.y, notice.width, notice.height});
    }
    case XCB_GRAVITY_NOTIFY: {
      const auto notice = eventAs<xcb_gravity_notify_event_t>(event);
      return setCoveredWindowFrame(
          {notice.x, notice.y, coveredWindow_.frame.width, coveredWindow_.frame.height});
    }
    case XCB_REPARENT_NOTIFY: {
      const auto notice = eventAs<xcb_reparent_notify_event_t>(event);
      if (notice.parent != coveredWindow_.parent) {
        close();
        coveredWindow_.parent = notice.parent;
        readVisual();
      }
      return setCoveredWindowFrame(
          {notice.x, notice.y, coveredWindow_.frame.width, coveredWindow_.frame.height});
    }
    case XCB_CIRCULATE_NOTIFY:
      return restack();
    case XCB_MAP_NOTIFY:
      return coveredWindowMapped();
    case XCB_UNMAP_NOTIFY:
      return coveredWindowUnmapped();
    default:
      return;
  }
}

void Overlay::coveredWindowMapped() {
  coveredWindow_.isMapped = true;
  if (mustBeMapped()) {
    restack();
    mapWindow(connection_, window_);
  }
}

// Unmaps the overlay, because the server does not: the overlay is not a child of the covered
// window.
void Overlay::coveredWindowUnmapped() {
  coveredWindow_.isMapped = false;
  if (isOpen() && isShown_) {
    unmapWindow(connection_, window_);
  }
}

void Overlay::setCoveredWindowFrame(PixelRect frame) {
  coveredWindow_.frame = frame;
  coveredWindowFillsParent_ = coveredWindowFillsParent();
  if (isOpen()) {
    moveResizeWindow(connection_, window_, overlayFrame());
    restack();
  }
}

// An overlay of the maximum size still fills the parent when the parent grows. But if the covered
// window does not fill the parent, an overlay of this size would hide the rest of the parent.
PixelRect Overlay::overlayFrame() const {
  const PixelRect& frame = coveredWindow_.frame;
  const int border = coveredWindow_.borderWidth;
  return coveredWindowFillsParent_
             ? PixelRect{0, 0, kMaxWindowSize, kMaxWindowSize}
             : PixelRect{frame.x + border, frame.y + border, frame.width, frame.height};
}

bool Overlay::coveredWindowFillsParent() const {
  const PixelRect& frame = coveredWindow_.frame;
  if (coveredWindow_.parent == connection_.root() || coveredWindow_.borderWidth != 0 ||
      frame.x != 0 || frame.y != 0) {
    return false;
  }
  // Ignores an error, because the parent may already be destroyed.
  const XcbPointer<xcb_get_geometry_reply_t> parent(xcb_get_geometry_reply(
      connection_.get(), xcb_get_geometry(connection_.get(), coveredWindow_.parent), nullptr));
  return parent != nullptr && parent->width == frame.width && parent->height == frame.height;
}

// Reads the parent's visual and depth, which the overlay inherits. Ignores errors, because the
// parent may already be destroyed.
void Overlay::readVisual() {
  visual_ = connection_.screen().root_visual;
  depth_ = connection_.screen().root_depth;
  if (coveredWindow_.parent == connection_.root()) {
    return;
  }
  xcb_connection_t* const xcb = connection_.get();
  const auto attributesCookie = xcb_get_window_attributes(xcb, coveredWindow_.parent);
  const auto geometryCookie = xcb_get_geometry(xcb, coveredWindow_.parent);
  const XcbPointer<xcb_get_window_attributes_reply_t> attributes(
      xcb_get_window_attributes_reply(xcb, attributesCookie, nullptr));
  const XcbPointer<xcb_get_geometry_reply_t> geometry(
      xcb_get_geometry_reply(xcb, geometryCookie, nullptr));
  if (attributes != nullptr && geometry != nullptr) {
    visual_ = attributes->visual;
    depth_ = geometry->depth;
  }
}

std::uint32_t Overlay::pixel(CGColor color) const {
  return PixelFormat(connection_.screen(), visual_, depth_).pixel(color);
}

void Overlay::selectParentEvents(std::uint32_t events) {
  if (coveredWindow_.parent == connection_.root() ||
      windows_.find(coveredWindow_.parent) != nullptr) {
    return;  // a new event mask would replace the mask that the back end has selected
  }
  // The parent may already be destroyed. `track` gets the overlay's id, because errors of requests
  // on the overlay are not logged.
  connection_.track(xcb_change_window_attributes(connection_.get(), coveredWindow_.parent,
                                                 XCB_CW_EVENT_MASK, &events),
                    "ChangeWindowAttributes", window_);
}

}  // namespace vel::x11
