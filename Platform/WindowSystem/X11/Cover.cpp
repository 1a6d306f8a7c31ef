#include "Platform/WindowSystem/X11/Cover.h"

#include <algorithm>
#include <ranges>
#include <string>
#include <utility>

#include "Platform/Foundation/NSLog.h"
#include "Platform/WindowSystem/X11/Requests.h"

namespace vel::x11 {

namespace {

// Limits `recentlyDestroyedWindows_`. A change of scene destroys fewer windows than this limit.
constexpr std::size_t kMaxRecentlyDestroyedWindows = 8;

constexpr std::uint32_t kPointerEvents =
    XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION;
constexpr std::uint32_t kDoNotPropagate = kPointerEvents | XCB_EVENT_MASK_BUTTON_MOTION;

// The server should map a child window within this time. Only a busy or grabbed server takes
// longer.
constexpr Nanoseconds kMaximumMapTime = kNanosecondsPerSecond;

constexpr CGColor kWhite{1, 1, 1, 1};

// Returns true if the centre of `inner` is in `outer`.
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

// Returns true if a child window with the frame `child` hides all of its parent. The position of
// `window`, the parent's frame, is ignored.
bool fills(PixelRect child, PixelRect window) {
  return child.x <= 0 && child.y <= 0 && child.x + child.width >= window.width &&
         child.y + child.height >= window.height;
}

// Sends all requests before it waits for the first reply, so it blocks for one round trip. Logs no
// errors, because another client can destroy the windows.
bool areViewable(Connection& connection, const std::vector<xcb_window_t>& windows) {
  std::vector<xcb_get_window_attributes_cookie_t> cookies;
  cookies.reserve(windows.size());
  for (const xcb_window_t window : windows) {
    cookies.push_back(xcb_get_window_attributes(connection.get(), window));
  }
  bool areAllViewable = true;
  for (const xcb_get_window_attributes_cookie_t cookie : cookies) {
    const XcbPointer<xcb_get_window_attributes_reply_t> reply(
        xcb_get_window_attributes_reply(connection.get(), cookie, nullptr));
    areAllViewable =
        areAllViewable && reply != nullptr && reply->map_state == XCB_MAP_STATE_VIEWABLE;
  }
  return areAllViewable;
}

unsigned darkestSpokeAt(Nanoseconds now) {
  return static_cast<unsigned>(now / Spinner::kFrameInterval % Spinner::kSpokes);
}

}  // namespace

Cover::Cover(Connection& connection, ScreenCoordinates& coordinates, RenderExtension& render,
             xcb_window_t window, xcb_visualid_t visual, std::uint8_t depth,
             std::unique_ptr<Overlay> overlay)
    : connection_(connection),
      coordinates_(coordinates),
      render_(render),
      window_(window),
      visual_(visual),
      depth_(depth),
      pixelFormat_(connection.screen(), visual, depth),
      overlay_(std::move(overlay)) {}

Cover::~Cover() {
  show({}, {});
  closeShield();
}

void Cover::show(const Scene& scene, PixelRect frame) {
  const bool usedOverlayBefore = std::exchange(usesOverlay_, needsOverlay(scene, frame));
  if (usedOverlayBefore && !usesOverlay_) {
    if (scene.empty()) {
      // Closes the first pane while the overlay still hides it. The whole cover then disappears in
      // one step when the overlay closes.
      closePane(panes_.front());
    }
    closeOverlay();
  } else if (usesOverlay_ && !usedOverlayBefore) {
    // The loop below creates all panes again. All panes except the first become children of the
    // overlay.
    std::for_each(panes_.begin(), panes_.end(), [this](Pane& pane) { closePane(pane); });
    panes_.clear();
  }
  for (std::size_t i = 0; i < scene.size(); ++i) {
    Pane newPane = describePane(scene, i, frame);
    if (i == panes_.size()) {
      panes_.push_back(std::move(newPane));
      if (i > 0 || !usesOverlay_) {
        openPane(panes_.back());
      }
    } else {
      updatePane(panes_[i], std::move(newPane));
    }
    if (usesOverlay_ && !overlay_->isOpen()) {
      openOverlay();
    }
  }
  while (panes_.size() > scene.size()) {
    closePane(panes_.back());
    panes_.pop_back();
  }
  if (panes_.empty()) {
    mapDeadline_ = kNever;
  }
  if (usesOverlay_) {
    overlay_->show();
    // Opens the first pane last, so that the overlay already hides it. The owner could draw over
    // this pane if it were visible.
    if (!panes_.front().child.isOpen()) {
      openPane(panes_.front());
    }
  }
  if (shield_.isOpen()) {
    raise();  // puts the shield above the new panes
  }
}

PixelFormat Cover::pixelFormatOf(const Pane& pane) const {
  return pane.isInOverlay ? PixelFormat(connection_.screen(), overlay_->visual(), overlay_->depth())
                          : pixelFormat_;
}

bool Cover::needsOverlay(const Scene& scene, PixelRect frame) const {
  return overlay_ != nullptr && !scene.empty() && scene.front().kind == SceneItem::Kind::Fill &&
         fills(coordinates_.contentPixels(scene.front().frame, frame.height), frame);
}

Cover::Pane Cover::describePane(const Scene& scene, std::size_t index, PixelRect frame) const {
  const SceneItem& item = scene[index];
  const bool isInOverlay = usesOverlay_ && index > 0;
  const PixelRect itemFrame = coordinates_.contentPixels(item.frame, frame.height);
  if (item.kind == SceneItem::Kind::Fill) {
    constexpr PixelRect kLargestWindow{0, 0, kMaxWindowSize, kMaxWindowSize};
    return {.child = {},
            .isInOverlay = isInOverlay,
            .item = item,
            .frame = fills(itemFrame, frame) ? kLargestWindow : itemFrame,
            .background = item.color,
            .spinner = nullptr};
  }
  CGColor background = kWhite;
  for (const SceneItem& lowerItem : std::span(scene).first(index)) {
    if (lowerItem.kind == SceneItem::Kind::Fill && containsCentre(lowerItem.frame, item.frame)) {
      background = lowerItem.color;
    }
  }
  return {.child = {},
          .isInOverlay = isInOverlay,
          .item = item,
          .frame = centredSquareIn(itemFrame),
          .background = background,
          .spinner = nullptr};
}

// The new window is override-redirect, so that the server maps and moves it even if the owner has
// selected SubstructureRedirect on the parent.
void Cover::openPane(Pane& pane) {
  const xcb_visualid_t visual = pane.isInOverlay ? overlay_->visual() : visual_;
  const bool isSpinner = pane.item.kind == SceneItem::Kind::Spinner;
  const auto pictureFormat = isSpinner ? render_.formatOf(visual) : std::nullopt;
  if (pane.frame.width <= 0 || pane.frame.height <= 0 || (isSpinner && !pictureFormat)) {
    return;  // the item has no pixels, or spinners cannot be drawn
  }
  pane.child = {.window = connection_.makeId()};
  mapDeadline_ = std::min(mapDeadline_, steadyNow() + kMaximumMapTime);
  const xcb_window_t window = pane.child.window;
  // When the parent grows, the server keeps a spinner in the centre until we move the spinner.
  createWindow(connection_,
               {.id = window,
                .parent = pane.isInOverlay ? overlay_->window() : window_,
                .frame = pane.frame},
               XCB_CW_BACK_PIXEL | XCB_CW_WIN_GRAVITY | XCB_CW_OVERRIDE_REDIRECT |
                   XCB_CW_EVENT_MASK | XCB_CW_DONT_PROPAGATE,
               {pixelFormatOf(pane).pixel(pane.background),
                static_cast<std::uint32_t>(isSpinner ? XCB_GRAVITY_CENTER : XCB_GRAVITY_NORTH_WEST),
                1, kPointerEvents, kDoNotPropagate});
  if (isSpinner) {
    pane.spinner = std::make_unique<Spinner>(connection_, render_, *pictureFormat, window,
                                             pane.isInOverlay ? overlay_->depth() : depth_,
                                             pane.frame.width, pane.background);
    pane.spinner->draw(0);
  }
  mapWindow(connection_, window);
}

void Cover::updatePane(Pane& pane, Pane&& newPane) {
  const bool cannotKeepWindow = !pane.child.isOpen() || pane.isInOverlay != newPane.isInOverlay ||
                                pane.item.kind != newPane.item.kind || newPane.frame.width <= 0 ||
                                newPane.frame.height <= 0;
  const bool needsNewPicture =
      pane.spinner != nullptr &&
      (pane.frame.width != newPane.frame.width || pane.background != newPane.background);
  if (cannotKeepWindow || needsNewPicture) {
    closePane(pane);
    pane = std::move(newPane);
    openPane(pane);
    raise();
    return;
  }
  if (pane.background != newPane.background) {
    changeWindowAttributes(connection_, pane.child.window, XCB_CW_BACK_PIXEL,
                           {pixelFormatOf(pane).pixel(newPane.background)});
    clearWindow(connection_, pane.child.window);
    if (usesOverlay_ && overlay_->isOpen() && &pane == &panes_.front()) {
      overlay_->setBackground(newPane.background);
    }
  }
  // The server may have moved a spinner when the spinner's parent was resized.
  if (pane.frame != newPane.frame || pane.spinner != nullptr) {
    moveResizeWindow(connection_, pane.child.window, newPane.frame);
  }
  pane.item = newPane.item;
  pane.frame = newPane.frame;
  pane.background = newPane.background;
}

void Cover::closePane(Pane& pane) {
  if (pane.child.isOpen()) {
    pane.spinner = nullptr;
    destroy(std::exchange(pane.child, {}).window);
  }
}

void Cover::forgetPane(Pane& pane) {
  pane.spinner = nullptr;
  connection_.markDestroyed(std::exchange(pane.child, {}).window);
}

void Cover::openOverlay() {
  overlay_->open(panes_.front().background);
  for (Pane& pane : panes_) {
    if (pane.isInOverlay) {
      forgetPane(pane);  // the server destroys the children of a closed overlay
      openPane(pane);
    }
  }
}

void Cover::closeOverlay() {
  for (Pane& pane : panes_) {
    if (pane.isInOverlay) {
      forgetPane(pane);
    }
  }
  overlay_->close();
}

void Cover::destroy(xcb_window_t window) {
  if (recentlyDestroyedWindows_.size() == kMaxRecentlyDestroyedWindows) {
    recentlyDestroyedWindows_.erase(recentlyDestroyedWindows_.begin());
  }
  recentlyDestroyedWindows_.push_back(window);
  destroyWindow(connection_, window);
}

void Cover::openShield() {
  if (!shield_.isOpen()) {
    createShield();
  }
}

void Cover::closeShield() {
  if (shield_.isOpen()) {
    destroy(std::exchange(shield_, {}).window);
  }
}

void Cover::createShield() {
  shield_ = {.window = connection_.makeId()};
  createWindow(connection_,
               {.id = shield_.window,
                .parent = window_,
                .frame = {0, 0, kMaxWindowSize, kMaxWindowSize},
                .windowClass = XCB_WINDOW_CLASS_INPUT_ONLY},
               XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK | XCB_CW_DONT_PROPAGATE,
               {1, kPointerEvents, kDoNotPropagate});
  mapWindow(connection_, shield_.window);
}

void Cover::windowDestroyed() {
  std::for_each(panes_.begin(), panes_.end(), [this](Pane& pane) { forgetPane(pane); });
  panes_.clear();
  if (std::exchange(usesOverlay_, false)) {
    overlay_->close();
  }
  connection_.markDestroyed(std::exchange(shield_, {}).window);
  // Our DestroyWindow requests for these windows may fail: the server may already have destroyed
  // the windows with their parent.
  for (const xcb_window_t window : std::exchange(recentlyDestroyedWindows_, {})) {
    connection_.markDestroyed(window);
  }
}

bool Cover::isMapped() const {
  return !panes_.empty() && std::ranges::all_of(panes_, [](const Pane& pane) {
    return pane.isInOverlay || !pane.child.isOpen() || pane.child.state == ChildState::Mapped;
  });
}

bool Cover::isViewable() const {
  if (panes_.empty()) {
    return false;
  }
  // The overlay is a sibling of `window_`, so it can be viewable while `window_` is not.
  std::vector<xcb_window_t> windows{window_};
  const bool mustOverlayBeMapped = usesOverlay_ && overlay_->mustBeMapped();
  if (mustOverlayBeMapped) {
    windows.push_back(overlay_->window());
  }
  for (const Pane& pane : panes_) {
    // A mapped overlay hides the panes outside it. The panes inside an unmapped overlay are
    // invisible.
    if (pane.isInOverlay == mustOverlayBeMapped && pane.child.isOpen()) {
      windows.push_back(pane.child.window);
    }
  }
  return areViewable(connection_, windows);
}

Nanoseconds Cover::mapDeadline() const {
  return panes_.empty() || isMapped() ? kNever : mapDeadline_;
}

void Cover::logMissedMapDeadline(Nanoseconds now) {
  if (isMapped()) {
    mapDeadline_ = kNever;
  } else if (now >= mapDeadline()) {
    mapDeadline_ = kNever;
    NSLog("X11: the cover of window %s is not on the screen: the server has not mapped it",
          std::to_string(window_));
  }
}

bool Cover::owns(xcb_window_t window) const {
  return window != XCB_WINDOW_NONE &&
         (window == shield_.window || (overlay_ != nullptr && window == overlay_->window()) ||
          std::ranges::any_of(panes_,
                              [window](const Pane& pane) { return window == pane.child.window; }));
}

void Cover::handle(const xcb_generic_event_t& event) {
  if (overlay_ != nullptr) {
    const bool hadMaximumSize = overlay_->hasMaximumSize();
    overlay_->handle(event);
    if (overlay_->hasMaximumSize() != hadMaximumSize) {
      movePanesInOverlay();
    }
  }
  updateState(event);
  if (isObscuredBy(event)) {
    raise();
  }
}

// When the overlay changes to or from its maximum size, the server moves each spinner away from the
// centre of the covered window. This function moves it back.
void Cover::movePanesInOverlay() {
  for (const Pane& pane : panes_) {
    if (pane.isInOverlay && pane.child.isOpen() && overlay_->isOpen()) {
      moveResizeWindow(connection_, pane.child.window, pane.frame);
    }
  }
}

Cover::Child* Cover::findChild(xcb_window_t window) {
  if (window == XCB_WINDOW_NONE) {
    return nullptr;
  }
  if (window == shield_.window) {
    return &shield_;
  }
  const auto pane = std::ranges::find_if(
      panes_, [window](const Pane& candidate) { return candidate.child.window == window; });
  return pane == panes_.end() ? nullptr : &pane->child;
}

void Cover::updateState(const xcb_generic_event_t& event) {
  const auto setState = [this](xcb_window_t window, ChildState state) {
    if (Child* const child = findChild(window)) {
      child->state = state;
    }
  };
  switch (typeOf(event)) {
    case XCB_MAP_NOTIFY:
      return setState(eventAs<xcb_map_notify_event_t>(event).window, ChildState::Mapped);
    case XCB_UNMAP_NOTIFY:
      return setState(eventAs<xcb_unmap_notify_event_t>(event).window, ChildState::Unmapped);
    case XCB_DESTROY_NOTIFY:
      return setState(eventAs<xcb_destroy_notify_event_t>(event).window, ChildState::Destroyed);
    default:
      return;
  }
}

void Cover::repair() {
  bool hasNewWindow = false;
  for (Pane& pane : panes_) {
    if (pane.isInOverlay) {
      continue;
    }
    mapIfUnmapped(pane.child);
    if (pane.child.isDestroyed()) {
      forgetPane(pane);
      openPane(pane);
      hasNewWindow = true;
    }
  }
  mapIfUnmapped(shield_);
  if (shield_.isDestroyed()) {
    connection_.markDestroyed(shield_.window);
    createShield();
    hasNewWindow = true;
  }
  if (usesOverlay_ && !overlay_->isOpen()) {
    openOverlay();
    overlay_->show();
  }
  if (hasNewWindow) {
    raise();
  }
}

void Cover::mapIfUnmapped(Child& child) {
  if (child.isOpen() && child.state == ChildState::Unmapped) {
    child.state = ChildState::BeingMapped;
    mapDeadline_ = std::min(mapDeadline_, steadyNow() + kMaximumMapTime);
    mapWindow(connection_, child.window);
  }
}

// A child that is created or reparented is above all its siblings.
bool Cover::isObscuredBy(const xcb_generic_event_t& event) const {
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

// Restacks from the top down. If this function restacked from the bottom up, a lower window would
// briefly hide the windows that belong above it.
void Cover::raise() {
  xcb_window_t sibling = XCB_WINDOW_NONE;  // the most recently restacked window
  const auto restack = [this, &sibling](const Child& child) {
    if (!child.isOpen()) {
      return;
    }
    if (sibling == XCB_WINDOW_NONE) {
      raiseWindow(connection_, child.window);
    } else {
      configureWindow(connection_, child.window,
                      XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE,
                      {sibling, XCB_STACK_MODE_BELOW});
    }
    sibling = child.window;
  };
  restack(shield_);
  for (const bool isInOverlay : {false, true}) {
    for (const Pane& pane : std::views::reverse(panes_)) {
      if (pane.isInOverlay == isInOverlay) {
        restack(pane.child);
      }
    }
    sibling = XCB_WINDOW_NONE;  // the panes in the overlay have another parent
  }
  if (usesOverlay_) {
    overlay_->restack();
  }
}

bool Cover::isAnimated() const {
  return std::ranges::any_of(
      panes_, [](const Pane& pane) { return pane.spinner != nullptr && pane.item.isAnimated; });
}

void Cover::animate(Nanoseconds now) {
  for (const Pane& pane : panes_) {
    if (pane.spinner != nullptr && pane.item.isAnimated) {
      pane.spinner->draw(darkestSpokeAt(now));
    }
  }
}

}  // namespace vel::x11
