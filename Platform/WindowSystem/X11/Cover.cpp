#include "Platform/WindowSystem/X11/Cover.h"

#include <algorithm>
#include <utility>

#include "Platform/WindowSystem/X11/Requests.h"

namespace vel::x11 {

namespace {

// A change of scene destroys fewer windows than this.
constexpr std::size_t kMaxRecentlyDestroyed = 8;

// The maximum width and height of a window.
constexpr int kMaxWindowSize = 32767;

constexpr std::uint32_t kPointerEvents =
    XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION;
constexpr std::uint32_t kDoNotPropagate = kPointerEvents | XCB_EVENT_MASK_BUTTON_MOTION;

constexpr CGColor kWhite{1, 1, 1, 1};

// ReisIndicator true if the centre of `inner` is in `outer`.
bool containsCentre(CGRect outer, CGRect inner) {
  const double x = inner.origin.x + inner.size.width / 2;
  const double y = inner.origin.y + inner.size.height / 2;
  return x >= outer.origin.x && x < outer.origin.x + outer.size.width && y >= outer.origin.y &&
         y < outer.origin.y + outer.size.height;
}

PixelRect centredSquareIn(PixelRect rect) {
  const int side = std::min(rect.width, rect.height);
  return {rect.x + (rect.width - side) / 2, rect.y + (rect.height - side) / 2, side, side};
}

// ReisIndicator true if a child with the frame `child` fills the window with the frame `window`.
bool fills(PixelRect child, PixelRect window) {
  return child.x <= 0 && child.y <= 0 && child.x + child.width >= window.width &&
         child.y + child.height >= window.height;
}

unsigned spokeAt(Nanoseconds now) {
  return static_cast<unsigned>(now / Spinner::kFrameInterval % Spinner::kSpokes);
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
    Pane newPane = describePane(scene, i, frame);
    if (i == panes_.size()) {
      panes_.push_back(std::move(newPane));
      openPane(panes_.back());
    } else {
      updatePane(panes_[i], std::move(newPane));
    }
  }
  while (panes_.size() > scene.size()) {
    closePane(panes_.back());
    panes_.pop_back();
  }
  if (shield_ != XCB_WINDOW_NONE) {
    raise();
  }
}

Cover::Pane Cover::describePane(const Scene& scene, std::size_t index, PixelRect frame) const {
  const SceneItem& item = scene[index];
  const PixelRect itemFrame = coordinates_.contentPixels(item.frame, frame.height);
  if (item.kind == SceneItem::Kind::Fill) {
    constexpr PixelRect kLargestWindow{0, 0, kMaxWindowSize, kMaxWindowSize};
    return {.item = item,
            .frame = fills(itemFrame, frame) ? kLargestWindow : itemFrame,
            .background = item.color,
            .spinner = nullptr};
  }
  CGColor background = kWhite;
  for (const SceneItem& lower : std::span(scene).first(index)) {
    if (lower.kind == SceneItem::Kind::Fill && containsCentre(lower.frame, item.frame)) {
      background = lower.color;
    }
  }
  return {.item = item,
          .frame = centredSquareIn(itemFrame),
          .background = background,
          .spinner = nullptr};
}

void Cover::openPane(Pane& pane) {
  const bool isIndicator = pane.item.kind == SceneItem::Kind::Spinner;
  const auto format = isIndicator ? render_.formatOf(visual_) : std::nullopt;
  if (pane.frame.width <= 0 || pane.frame.height <= 0 || (isIndicator && !format)) {
    return;  // the item has no pixels, or indicators cannot be drawn
  }
  pane.window = connection_.makeId();
  // When the window grows, the server keeps an indicator in the centre until we move it.
  createWindow(
      connection_, {.id = pane.window, .parent = window_, .frame = pane.frame},
      XCB_CW_BACK_PIXEL | XCB_CW_WIN_GRAVITY | XCB_CW_EVENT_MASK | XCB_CW_DONT_PROPAGATE,
      {format_.pixel(pane.background),
       static_cast<std::uint32_t>(isIndicator ? XCB_GRAVITY_CENTER : XCB_GRAVITY_NORTH_WEST),
       kPointerEvents, kDoNotPropagate});
  if (isIndicator) {
    pane.spinner = std::make_unique<Spinner>(connection_, render_, *format, pane.window, depth_,
                                             pane.frame.width, pane.background);
    pane.spinner->draw(0);
  }
  mapWindow(connection_, pane.window);
}

void Cover::updatePane(Pane& pane, Pane&& newPane) {
  const bool needsNewWindow = pane.window == XCB_WINDOW_NONE ||
                              pane.item.kind != newPane.item.kind || newPane.frame.width <= 0 ||
                              newPane.frame.height <= 0;
  const bool needsNewPicture =
      pane.spinner != nullptr &&
      (pane.frame.width != newPane.frame.width || pane.background != newPane.background);
  if (needsNewWindow || needsNewPicture) {
    closePane(pane);
    pane = std::move(newPane);
    openPane(pane);
    raise();
    return;
  }
  if (pane.background != newPane.background) {
    changeWindowAttributes(connection_, pane.window, XCB_CW_BACK_PIXEL,
                           {format_.pixel(newPane.background)});
    clearWindow(connection_, pane.window);
  }
  // The server may have moved an indicator when the window was resized.
  if (pane.frame != newPane.frame || pane.spinner != nullptr) {
    moveResizeWindow(connection_, pane.window, newPane.frame);
  }
  pane.item = newPane.item;
  pane.frame = newPane.frame;
  pane.background = newPane.background;
}

void Cover::closePane(Pane& pane) {
  if (pane.window != XCB_WINDOW_NONE) {
    pane.spinner = nullptr;
    destroy(std::exchange(pane.window, XCB_WINDOW_NONE));
  }
}

void Cover::destroy(xcb_window_t window) {
  if (recentlyDestroyed_.size() == kMaxRecentlyDestroyed) {
    recentlyDestroyed_.erase(recentlyDestroyed_.begin());
  }
  recentlyDestroyed_.push_back(window);
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
                .frame = {0, 0, kMaxWindowSize, kMaxWindowSize},
                .windowClass = XCB_WINDOW_CLASS_INPUT_ONLY},
               XCB_CW_EVENT_MASK | XCB_CW_DONT_PROPAGATE, {kPointerEvents, kDoNotPropagate});
  mapWindow(connection_, shield_);
}

void Cover::windowEnded() {
  for (Pane& pane : panes_) {
    connection_.markDestroyed(std::exchange(pane.window, XCB_WINDOW_NONE));
  }
  panes_.clear();
  connection_.markDestroyed(std::exchange(shield_, XCB_WINDOW_NONE));
  // The server may have processed our requests for these windows after it destroyed them.
  for (const xcb_window_t window : std::exchange(recentlyDestroyed_, {})) {
    connection_.markDestroyed(window);
  }
}

bool Cover::owns(xcb_window_t window) const {
  return window != XCB_WINDOW_NONE &&
         (window == shield_ || std::ranges::find(panes_, window, &Pane::window) != panes_.end());
}

// A child that is created or reparented is above all its siblings.
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

// Restacks from the top down, so that no window of the cover hides another one in between.
void Cover::raise() {
  xcb_window_t sibling = XCB_WINDOW_NONE;  // the one raised last
  const auto lift = [this, &sibling](xcb_window_t window) {
    if (window == XCB_WINDOW_NONE) {
      return;
    }
    if (sibling == XCB_WINDOW_NONE) {
      raiseWindow(connection_, window);
    } else {
      configureWindow(connection_, window, XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE,
                      {sibling, XCB_STACK_MODE_BELOW});
    }
    sibling = window;
  };
  lift(shield_);
  std::for_each(panes_.rbegin(), panes_.rend(), [&lift](const Pane& pane) { lift(pane.window); });
}

bool Cover::isAnimated() const {
  return std::ranges::any_of(
      panes_, [](const Pane& pane) { return pane.spinner != nullptr && pane.item.isAnimated; });
}

void Cover::animate(Nanoseconds now) {
  for (const Pane& pane : panes_) {
    if (pane.spinner != nullptr && pane.item.isAnimated) {
      pane.spinner->draw(spokeAt(now));
    }
  }
}

}  // namespace vel::x11
