#include "Platform/WindowSystem/X11/Cover.h"

#include <algorithm>
#include <utility>

#include "Platform/WindowSystem/X11/Requests.h"

namespace vel::x11 {

namespace {

// More than a change of scene closes.
constexpr std::size_t kClosedWindowsRemembered = 8;

// As far as windows reach.
constexpr int kBeyondEveryWindow = 32767;

constexpr std::uint32_t kPointerEvents =
    XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION;
constexpr std::uint32_t kKeptFromWindowsBelow = kPointerEvents | XCB_EVENT_MASK_BUTTON_MOTION;

constexpr CGColor kWhite{1, 1, 1, 1};

bool contains(CGRect outer, CGRect inner) {
  const double x = inner.origin.x + inner.size.width / 2;
  const double y = inner.origin.y + inner.size.height / 2;
  return x >= outer.origin.x && x < outer.origin.x + outer.size.width && y >= outer.origin.y &&
         y < outer.origin.y + outer.size.height;
}

PixelRect squareIn(PixelRect place) {
  const int side = std::min(place.width, place.height);
  return {place.x + (place.width - side) / 2, place.y + (place.height - side) / 2, side, side};
}

bool fills(PixelRect place, PixelRect frame) {
  return place.x <= 0 && place.y <= 0 && place.x + place.width >= frame.width &&
         place.y + place.height >= frame.height;
}

unsigned spokeAt(Nanoseconds now) {
  return static_cast<unsigned>(now / Spinner::kTimeForSpoke % Spinner::kSpokes);
}

}  // namespace

Cover::Cover(Connection& connection, ScreenCoordinates& coordinates, RenderExtension& render,
             xcb_window_t window, xcb_visualid_t visual, std::uint8_t depth)
    : connection_(connection),
      coordinates_(coordinates),
      render_(render),
      window_(window),
      visual_(visual),
      depth_(depth),
      format_(connection.screen(), visual, depth) {}

Cover::~Cover() {
  show({}, {});
  setShielded(false);
}

void Cover::show(const Scene& scene, PixelRect frame) {
  for (std::size_t i = 0; i < scene.size(); ++i) {
    Pane wanted = paneFor(scene, i, frame);
    if (i == panes_.size()) {
      panes_.push_back(std::move(wanted));
      open(panes_.back());
    } else {
      update(panes_[i], std::move(wanted));
    }
  }
  while (panes_.size() > scene.size()) {
    close(panes_.back());
    panes_.pop_back();
  }
  if (shield_ != XCB_WINDOW_NONE) {
    raise();
  }
}

Cover::Pane Cover::paneFor(const Scene& scene, std::size_t index, PixelRect frame) const {
  const SceneItem& item = scene[index];
  const PixelRect place = coordinates_.contentPixels(item.frame, frame.height);
  if (item.kind == SceneItem::Kind::Fill) {
    constexpr PixelRect kEverywhere{0, 0, kBeyondEveryWindow, kBeyondEveryWindow};
    return {.item = item,
            .place = fills(place, frame) ? kEverywhere : place,
            .color = item.color,
            .spinner = nullptr};
  }
  CGColor below = kWhite;
  for (const SceneItem& lower : std::span(scene).first(index)) {
    if (lower.kind == SceneItem::Kind::Fill && contains(lower.frame, item.frame)) {
      below = lower.color;
    }
  }
  return {.item = item, .place = squareIn(place), .color = below, .spinner = nullptr};
}

void Cover::open(Pane& pane) {
  const bool turns = pane.item.kind == SceneItem::Kind::Spinner;
  const auto format = turns ? render_.formatOf(visual_) : std::nullopt;
  if (pane.place.width <= 0 || pane.place.height <= 0 || (turns && !format)) {
    return;  // nothing to see
  }
  pane.window = connection_.makeId();
  // An indicator stays in the middle while the window grows, until its new place is told.
  createWindow(connection_, {.id = pane.window, .parent = window_, .frame = pane.place},
               XCB_CW_BACK_PIXEL | XCB_CW_WIN_GRAVITY | XCB_CW_EVENT_MASK | XCB_CW_DONT_PROPAGATE,
               {format_.pixel(pane.color),
                static_cast<std::uint32_t>(turns ? XCB_GRAVITY_CENTER : XCB_GRAVITY_NORTH_WEST),
                kPointerEvents, kKeptFromWindowsBelow});
  if (turns) {
    pane.spinner = std::make_unique<Spinner>(connection_, render_, *format, pane.window, depth_,
                                             pane.place.width, pane.color);
    pane.spinner->draw(0);
  }
  mapWindow(connection_, pane.window);
}

void Cover::update(Pane& pane, Pane&& wanted) {
  const bool another = pane.window == XCB_WINDOW_NONE || pane.item.kind != wanted.item.kind ||
                       wanted.place.width <= 0 || wanted.place.height <= 0;
  const bool redrawn = pane.spinner != nullptr &&
                       (pane.place.width != wanted.place.width || pane.color != wanted.color);
  if (another || redrawn) {
    close(pane);
    pane = std::move(wanted);
    open(pane);
    raise();
    return;
  }
  if (pane.color != wanted.color) {
    changeWindowAttributes(connection_, pane.window, XCB_CW_BACK_PIXEL,
                           {format_.pixel(wanted.color)});
    clearWindow(connection_, pane.window);
  }
  // Also where it is known to lie there: the server may have moved it with the window.
  if (pane.place != wanted.place || pane.spinner != nullptr) {
    moveResizeWindow(connection_, pane.window, wanted.place);
  }
  pane.item = wanted.item;
  pane.place = wanted.place;
  pane.color = wanted.color;
}

void Cover::close(Pane& pane) {
  if (pane.window != XCB_WINDOW_NONE) {
    pane.spinner = nullptr;
    destroy(std::exchange(pane.window, XCB_WINDOW_NONE));
  }
}

void Cover::destroy(xcb_window_t window) {
  if (closed_.size() == kClosedWindowsRemembered) {
    closed_.erase(closed_.begin());
  }
  closed_.push_back(window);
  destroyWindow(connection_, window);
}

void Cover::setShielded(bool shielded) {
  if (shielded == (shield_ != XCB_WINDOW_NONE)) {
    return;
  }
  if (!shielded) {
    destroy(std::exchange(shield_, XCB_WINDOW_NONE));
    return;
  }
  shield_ = connection_.makeId();
  createWindow(connection_,
               {.id = shield_,
                .parent = window_,
                .frame = {0, 0, kBeyondEveryWindow, kBeyondEveryWindow},
                .windowClass = XCB_WINDOW_CLASS_INPUT_ONLY},
               XCB_CW_EVENT_MASK | XCB_CW_DONT_PROPAGATE, {kPointerEvents, kKeptFromWindowsBelow});
  mapWindow(connection_, shield_);
}

void Cover::windowEnded() {
  for (Pane& pane : panes_) {
    connection_.markDestroyed(std::exchange(pane.window, XCB_WINDOW_NONE));
  }
  panes_.clear();
  connection_.markDestroyed(std::exchange(shield_, XCB_WINDOW_NONE));
  // Their requests may have come too late as well.
  for (const xcb_window_t window : std::exchange(closed_, {})) {
    connection_.markDestroyed(window);
  }
}

bool Cover::owns(xcb_window_t window) const {
  return window != XCB_WINDOW_NONE &&
         (window == shield_ || std::ranges::find(panes_, window, &Pane::window) != panes_.end());
}

// What a window has anew comes to lie above all it had.
bool Cover::isOvertakenBy(const xcb_generic_event_t& event) const {
  switch (typeOf(event)) {
    case XCB_CREATE_NOTIFY: {
      const auto notice = eventAs<xcb_create_notify_event_t>(event);
      return notice.parent == window_ && !owns(notice.window);
    }
    case XCB_REPARENT_NOTIFY: {
      const auto notice = eventAs<xcb_reparent_notify_event_t>(event);
      return notice.event == window_ && notice.parent == window_;
    }
    case XCB_CIRCULATE_NOTIFY: {
      const auto notice = eventAs<xcb_circulate_notify_event_t>(event);
      return notice.event == window_ && !owns(notice.window) && notice.place == XCB_PLACE_ON_TOP;
    }
    case XCB_CONFIGURE_NOTIFY: {
      const auto notice = eventAs<xcb_configure_notify_event_t>(event);
      return notice.event == window_ && notice.window != window_ && !owns(notice.window) &&
             owns(notice.above_sibling);
    }
    default:
      return false;
  }
}

// From the top down, each below the last: so none of ours is hidden by another for a moment.
void Cover::raise() {
  xcb_window_t above = XCB_WINDOW_NONE;
  const auto lift = [this, &above](xcb_window_t window) {
    if (window == XCB_WINDOW_NONE) {
      return;
    }
    if (above == XCB_WINDOW_NONE) {
      raiseWindow(connection_, window);
    } else {
      configureWindow(connection_, window, XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE,
                      {above, XCB_STACK_MODE_BELOW});
    }
    above = window;
  };
  lift(shield_);
  std::for_each(panes_.rbegin(), panes_.rend(), [&lift](const Pane& pane) { lift(pane.window); });
}

bool Cover::isAnimated() const {
  return std::ranges::any_of(
      panes_, [](const Pane& pane) { return pane.spinner != nullptr && pane.item.animates; });
}

void Cover::animate(Nanoseconds now) {
  for (const Pane& pane : panes_) {
    if (pane.spinner != nullptr && pane.item.animates) {
      pane.spinner->draw(spokeAt(now));
    }
  }
}

}  // namespace vel::x11
