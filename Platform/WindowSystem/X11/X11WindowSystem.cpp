#include "Platform/WindowSystem/X11/X11WindowSystem.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <utility>

#include "Platform/WindowSystem/X11/Requests.h"
#include "Platform/WindowSystem/X11/WindowCapture.h"
#include "Platform/WindowSystem/X11/WindowProperties.h"

namespace vel {

using x11::Atom;
using x11::Event;
using x11::eventAs;
using x11::PixelRect;
using x11::RequestBatch;
using x11::typeOf;
using x11::Window;

namespace {

constexpr std::uint32_t kWindowEvents =
    XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY |
    XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_FOCUS_CHANGE;
constexpr std::uint32_t kDragEvents =
    XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_BUTTON_MOTION;

constexpr const char* kConnectionLost = "the X11 display does not answer any more";

std::string hexadecimal(std::uint64_t number) {
  std::array<char, 16> digits{};
  const char* const end =
      std::to_chars(digits.data(), digits.data() + digits.size(), number, 16).ptr;
  return "0x" + std::string(std::as_const(digits).data(), end);
}

// Returns true if the server sent the event because SubstructureNotify is selected on `parent`.
bool isSubstructureEvent(const xcb_generic_event_t& event, xcb_window_t parent) {
  const int type = typeOf(event);
  if (type < XCB_CREATE_NOTIFY || type > XCB_CIRCULATE_NOTIFY) {
    return false;
  }
  // All substructure events begin with the same fields.
  const auto notice = eventAs<xcb_destroy_notify_event_t>(event);
  return notice.event == parent && notice.window != parent;
}

PixelRect withMinimumSize(PixelRect frame) {
  frame.width = std::max(frame.width, 1);
  frame.height = std::max(frame.height, 1);
  return frame;
}

}  // namespace

std::unique_ptr<X11WindowSystem> X11WindowSystem::open(const std::string& displayName,
                                                       std::string& error) {
  const x11::BrokenPipeGuard guard;
  auto connection = x11::Connection::open(displayName, error);
  if (connection == nullptr) {
    return nullptr;
  }
  std::unique_ptr<X11WindowSystem> windowSystem(new X11WindowSystem(std::move(connection)));
  if (windowSystem->connection_->isBroken()) {
    error = "the X11 display broke the connection";
    return nullptr;
  }
  return windowSystem;
}

X11WindowSystem::X11WindowSystem(std::unique_ptr<x11::Connection> connection)
    : connection_(std::move(connection)),
      coordinates_(*connection_),
      render_(*connection_),
      windowManager_(*connection_),
      order_(*connection_, windowManager_, windows_, reports_),
      focus_(*connection_, windowManager_, windows_, reports_),
      monitor_(*connection_, coordinates_, order_, windows_, reports_),
      controls_(*connection_, windowManager_, windows_, reports_),
      restorer_(*connection_, windowManager_, windows_),
      relay_(*connection_, windowManager_, windows_),
      animation_(windows_) {}

X11WindowSystem::~X11WindowSystem() {
  const RequestBatch batch(*connection_);
  // Begin all releases before finishing the first: while `finishRelease` blocks for one window, the
  // window manager can read the restored hints of the other windows.
  for (auto& [id, window] : windows_) {
    beginRelease(window);
  }
  for (auto& [id, window] : windows_) {
    finishRelease(window);
  }
  windows_.clear();
}

WaitHandle X11WindowSystem::waitHandle() const {
  return WaitHandle(xcb_get_file_descriptor(connection_->get()));
}

// Creating, adopting and releasing windows

WindowHandle X11WindowSystem::createWindow(const WindowDescription& description) {
  if (isConnectionLost_ || connection_->isBroken()) {
    return WindowHandle::None;
  }
  const RequestBatch batch(*connection_);
  Window& window = windows_.add({.id = connection_->makeId(),
                                 .kind = description.kind,
                                 .isMovableByBackground = description.isMovableByBackground,
                                 .frame = withMinimumSize(coordinates_.pixels(description.frame))});
  // A modal window or a sheet is white even before its scene is drawn.
  const xcb_screen_t& screen = connection_->screen();
  const bool isPlain = description.kind == WindowKind::Plain;
  x11::createWindow(*connection_,
                    {.id = window.id, .parent = connection_->root(), .frame = window.frame},
                    XCB_CW_BACK_PIXEL, {isPlain ? screen.black_pixel : screen.white_pixel});
  const Window* const owner = windows_.find(description.ownerWindow);
  writeProperties(*connection_, window.id, description,
                  owner == nullptr ? xcb_window_t{XCB_WINDOW_NONE} : owner->id);
  window.style = std::make_unique<x11::WindowStyle>(*connection_, window.id, description.kind,
                                                    description.styleMask, window.frame);
  selectWindowEvents(window);  // after our own writes, so that these writes cause no events
  makeCover(window, screen.root_visual, screen.root_depth, nullptr);
  return window.handle();
}

void X11WindowSystem::makeCover(Window& window, xcb_visualid_t visual, std::uint8_t depth,
                                std::unique_ptr<x11::Overlay> overlay) {
  window.cover = std::make_unique<x11::Cover>(*connection_, coordinates_, render_, window.id,
                                              visual, depth, std::move(overlay));
  updateShield(window);
}

// The shield takes the window's pointer input while another window is modal.
void X11WindowSystem::updateShield(Window& window) {
  if (needsShield(window)) {
    window.cover->openShield();
  } else {
    window.cover->closeShield();
  }
}

bool X11WindowSystem::needsShield(const Window& window) const {
  return modalWindow_ != WindowHandle::None && modalWindow_ != window.handle();
}

// Only one client can select ButtonPress on a window. So the back end selects it only for a window
// that the user can drag by its background.
void X11WindowSystem::selectWindowEvents(const Window& window) {
  selectEvents(*connection_, window.id,
               window.isMovableByBackground ? kWindowEvents | kDragEvents : kWindowEvents);
}

std::optional<AdoptedWindow> X11WindowSystem::adoptWindow(const NativeWindow& native,
                                                          std::string& error) {
  if (isConnectionLost_) {
    error = "the X11 display is lost";
    return std::nullopt;
  }
  const auto* const x11Window = std::get_if<X11WindowId>(&native);
  if (x11Window == nullptr) {
    error = "the window is not an X11 window";
    return std::nullopt;
  }
  const std::uint64_t nativeId = x11Window->id;
  const std::string name = "window " + hexadecimal(nativeId);
  if (const char* const reason = reasonNotToAdopt(nativeId)) {
    error = name + ": " + reason;
    return std::nullopt;
  }
  // Select the events before the window is inspected, so that no change is missed.
  const RequestBatch batch(*connection_);
  const auto id = static_cast<xcb_window_t>(nativeId);
  selectEvents(*connection_, id, kWindowEvents);
  x11::WindowInspector inspector(*connection_);
  const x11::WindowInspection inspection = inspector.inspect(id);
  if (const char* const reason = inspector.reasonNotToAdopt(inspection)) {
    error = name + ": " + reason;
    if (inspection.state.attributes == nullptr) {
      connection_->markDestroyed(id);
    } else if (!inspection.isSupportingWmCheckWindow()) {
      // Do not deselect the events of the window that a window manager creates to announce itself:
      // `windowManager_` needs the DestroyNotify of that window.
      selectEvents(*connection_, id, XCB_EVENT_MASK_NO_EVENT);
    }
    return std::nullopt;
  }
  connection_->unmarkDestroyed(id);  // a destroyed window may have had the same id
  const bool hasFocus = inspector.hasFocus(inspection);
  AdoptedWindow adoptedWindow =
      addAdoptedWindow(inspection, inspector.isMaximizedOrFullscreen(inspection.state), hasFocus);
  focus_.windowAdopted(id, adoptedWindow.hasFocus);
  if (adoptedWindow.isOnScreen) {
    order_.assumeInFront(adoptedWindow.handle);
  }
  return adoptedWindow;
}

const char* X11WindowSystem::reasonNotToAdopt(std::uint64_t nativeId) {
  if (nativeId == 0 || nativeId > std::numeric_limits<xcb_window_t>::max()) {
    return "that is no X11 window's id";
  }
  const auto id = static_cast<xcb_window_t>(nativeId);
  if (windows_.findByIdOrCoverId(id) != nullptr) {
    return "it is already adopted";
  }
  if (id == connection_->root()) {
    return "it is the root window";
  }
  return connection_->hasCreated(id) ? "it belongs to this program" : nullptr;
}

AdoptedWindow X11WindowSystem::addAdoptedWindow(const x11::WindowInspection& inspection,
                                                bool isMaximizedOrFullscreen, bool hasFocus) {
  const x11::WindowState& state = inspection.state;
  Window& window = windows_.add(
      {.id = inspection.id,
       .origin = x11::WindowOrigin::Adopted,
       .frame = state.frame(),
       .isOrderedIn = true,
       .isMiniaturized = state.isIconic() || state.isUnmapped(),
       .isMaximizedOrFullscreen = isMaximizedOrFullscreen,
       .style = std::make_unique<x11::WindowStyle>(*connection_, inspection.id, inspection.hints)});
  makeCover(window, state.attributes->visual, state.geometry->depth,
            makeOverlay(inspection, hasFocus));
  return {.handle = window.handle(),
          .className = inspection.className,
          .title = inspection.title,
          .frame = coordinates_.points(window.frame),
          .styleMask = window.style->mask(),
          .isOnScreen = !window.isMiniaturized,
          .hasFocus = hasFocus};
}

// Returns null if the server does not support overlays, or if the window's parent is unknown.
std::unique_ptr<x11::Overlay> X11WindowSystem::makeOverlay(const x11::WindowInspection& inspection,
                                                           bool hasFocus) {
  if (inspection.tree == nullptr || !x11::Overlay::isSupported(*connection_)) {
    return nullptr;
  }
  const xcb_get_geometry_reply_t& geometry = *inspection.state.geometry;
  return std::make_unique<x11::Overlay>(
      *connection_, windows_,
      x11::Overlay::CoveredWindow{
          .window = inspection.id,
          .parent = inspection.tree->parent,
          .frame = {geometry.x, geometry.y, geometry.width, geometry.height},
          .borderWidth = geometry.border_width,
          .isMapped = !inspection.state.isUnmapped(),
          .hasFocus = hasFocus});
}

void X11WindowSystem::releaseWindow(WindowHandle handle) {
  Window* const window = windows_.find(handle);
  if (window == nullptr) {
    return;
  }
  const RequestBatch batch(*connection_);
  const xcb_window_t id = window->id;
  beginRelease(*window);
  finishRelease(*window);
  focus_.windowRemoved(id);
  reports_.removeReports(handle);
  windows_.remove(id);
  relay_.stopIfUnused();
}

void X11WindowSystem::beginRelease(Window& window) {
  window.cover = nullptr;
  if (!window.isAdopted()) {
    destroyWindow(*connection_, window.id);
    return;
  }
  window.style->restore();
  restorer_.begin(window);
}

void X11WindowSystem::finishRelease(Window& window) {
  if (window.isAdopted()) {
    restorer_.finish(window);
    selectEvents(*connection_, window.id, XCB_EVENT_MASK_NO_EVENT);
  }
}

// Showing, hiding and focusing windows

void X11WindowSystem::orderFront(WindowHandle handle) {
  Window* const window = windows_.find(handle);
  if (window == nullptr) {
    return;
  }
  const RequestBatch batch(*connection_);
  raiseWindow(*connection_, window->id);
  window->cover->raise();
  if (!window->isAdopted() && !window->isOrderedIn) {
    window->isOrderedIn = window->isBeingMapped = true;
    window->isMiniaturized = false;
    if (window->kind == WindowKind::Modal) {
      writeModalState(*connection_, window->id);
    }
    mapWindow(*connection_, window->id);
  }
  order_.assumeInFront(handle);
}

void X11WindowSystem::orderOut(WindowHandle handle) {
  Window* const window = windows_.find(handle);
  if (window == nullptr) {
    return;
  }
  const RequestBatch batch(*connection_);
  window->wantsFocus = false;
  if (drag_.window() == window->id) {
    drag_.end();
  }
  if (!window->isAdopted() && window->isOrderedIn) {
    window->isOrderedIn = window->isBeingMapped = false;
    window->isMiniaturized = false;
    unmapWindow(*connection_, window->id);
    sendUnmapNotify(*connection_, window->id);
    focus_.windowWithdrawn(window->id);
  }
  window->cover->show({}, window->frame);  // an empty scene
}

void X11WindowSystem::requestMiniaturized(WindowHandle handle, bool isMiniaturized) {
  const Window* const window = windows_.find(handle);
  if (window == nullptr) {
    return;
  }
  const RequestBatch batch(*connection_);
  if (isMiniaturized) {
    windowManager_.requestIconify(window->id);
  } else {
    mapWindow(*connection_, window->id);
  }
}

void X11WindowSystem::requestFocus(WindowHandle handle) {
  Window* const window = windows_.find(handle);
  if (window == nullptr || !window->isOrderedIn) {
    return;
  }
  const RequestBatch batch(*connection_);
  const bool mustSetFocus = focus_.requestFocus(*window);
  // A window that is being mapped gets the focus after its MapNotify event.
  if (mustSetFocus && !window->isBeingMapped) {
    monitor_.update(*window);  // sets the focus if the window is viewable
  }
}

// Frames, titles, styles and scenes of windows

void X11WindowSystem::moveWindow(Window& window, PixelRect frame) {
  window.frame = withMinimumSize(frame);
  window.style->updateSizeHints(window.frame);
  moveResizeWindow(*connection_, window.id, window.frame);
}

void X11WindowSystem::setFrame(WindowHandle handle, CGRect frame) {
  if (Window* const window = windows_.find(handle)) {
    const RequestBatch batch(*connection_);
    moveWindow(*window, coordinates_.pixels(frame));
  }
}

void X11WindowSystem::setTitle(WindowHandle handle, std::string_view title) {
  if (const Window* const window = windows_.find(handle)) {
    const RequestBatch batch(*connection_);
    writeTitle(*connection_, window->id, title);
  }
}

void X11WindowSystem::setStyleMask(WindowHandle handle, NSWindowStyleMask styleMask) {
  if (Window* const window = windows_.find(handle)) {
    const RequestBatch batch(*connection_);
    if (window->isAdopted()) {
      relay_.prepareOverride(*window, styleMask);
    }
    window->style->setMask(styleMask, window->frame);
    // `begin` must follow each call that may override or restore the hints.
    restorer_.begin(*window);
    relay_.stopIfUnused();
    monitor_.reportOwnersStyleMask(*window);
    x11::ControlsMonitor::styleMaskChanged(*window);
  }
}

void X11WindowSystem::setMovableByBackground(WindowHandle handle, bool isMovable) {
  Window* const window = windows_.find(handle);
  if (window != nullptr && !window->isAdopted() && window->isMovableByBackground != isMovable) {
    const RequestBatch batch(*connection_);
    window->isMovableByBackground = isMovable;
    selectWindowEvents(*window);
  }
}

void X11WindowSystem::setScene(WindowHandle handle, const Scene& scene) {
  if (Window* const window = windows_.find(handle)) {
    const RequestBatch batch(*connection_);
    window->cover->show(scene, window->frame);
  }
}

void X11WindowSystem::setModalWindow(WindowHandle handle) {
  if (handle != WindowHandle::None && windows_.find(handle) == nullptr) {
    return;
  }
  if (std::exchange(modalWindow_, handle) == handle) {
    return;
  }
  const RequestBatch batch(*connection_);
  for (auto& [id, window] : windows_) {
    updateShield(window);
  }
}

bool X11WindowSystem::isSceneOnScreen(WindowHandle handle) {
  const Window* const window = windows_.find(handle);
  return window != nullptr && window->cover->isViewable();
}

std::optional<WindowPicture> X11WindowSystem::picture(WindowHandle handle) {
  const Window* const window = windows_.find(handle);
  if (window == nullptr || !window->isOnScreen()) {
    return std::nullopt;
  }
  const RequestBatch batch(*connection_);
  return x11::WindowCapture(*connection_).capture(window->frame);
}

// Events

// Games call this function once per rendered frame. Usually no event has come, and the function
// only polls the connection.
bool X11WindowSystem::deliverEvents() {
  bool hasEvents = false;
  if (!isConnectionLost_ && (connection_->pollForEvent() || nextDeadline() <= x11::steadyNow())) {
    hasEvents = processEvents();
    checkConnection();
  }
  return reports_.deliver() || hasEvents;  // the delegate may destroy this object
}

Nanoseconds X11WindowSystem::nextDeadline() const {
  if (!reports_.isEmpty()) {
    return 0;
  }
  if (isConnectionLost_) {
    return kNever;
  }
  if (focus_.hasPendingChanges() || connection_->pollForQueuedEvent() || connection_->hasErrors() ||
      connection_->isBroken()) {
    return 0;
  }
  Nanoseconds deadline = std::min(
      {animation_.deadline(), controls_.deadline(), restorer_.deadline(), order_.deadline()});
  for (const auto& [id, window] : windows_) {
    deadline = std::min(deadline, window.cover->mapDeadline());
  }
  return deadline;
}

bool X11WindowSystem::processEvents() {
  const RequestBatch batch(*connection_);
  bool hasEvents = false;
  do {
    hasEvents = handleArrivedEvents() || hasEvents;
    moveDraggedWindow();
    monitor_.updateChangedWindows();
    relay_.allowResizingOfMaximizedAndFullscreenWindows();
    // After a FocusOut event, `reportChanges` calls the lambda to handle a FocusIn event that may
    // follow.
    focus_.reportChanges([this] { return handleArrivedEvents(); });
  } while (focus_.hasPendingChanges() || connection_->pollForQueuedEvent());
  const Nanoseconds now = x11::steadyNow();
  controls_.check(now);
  restorer_.check(now);
  order_.check(now);
  animation_.advance(now);
  for (auto& [id, window] : windows_) {
    window.cover->logMissedMapDeadline(now);
  }
  // Handle the queued events first: after a DestroyNotify, `logErrors` ignores the errors of
  // requests on the destroyed window.
  if (!connection_->pollForQueuedEvent()) {
    connection_->logErrors();
  }
  return hasEvents;
}

bool X11WindowSystem::handleArrivedEvents() {
  bool hasEvents = false;
  while (const Event event = connection_->nextEvent()) {
    handle(*event);
    hasEvents = true;
  }
  relay_.repeatRequests();
  for (auto& [id, window] : windows_) {
    window.cover->repair();
  }
  return hasEvents;
}

void X11WindowSystem::handle(const xcb_generic_event_t& event) {
  if (isSubstructureEvent(event, connection_->root())) {
    // `WindowManager` selects these events only to receive _NET_WM_STATE messages.
    return;
  }
  for (auto& [id, window] : windows_) {
    window.cover->handle(event);
  }
  if (coordinates_.handle(event)) {
    monitor_.reportFrames();
  }
  if (windowManager_.handle(event)) {
    focus_.windowManagerChanged();
    order_.scheduleCheck();
    controls_.windowManagerChanged();
  }
  order_.handle(event);
  monitor_.handle(event);
  controls_.handle(event);
  restorer_.handle(event);
  switch (typeOf(event)) {
    case XCB_CLIENT_MESSAGE:
      return handleClientMessage(eventAs<xcb_client_message_event_t>(event));
    case XCB_FOCUS_IN:
    case XCB_FOCUS_OUT:
      return focus_.handle(event);
    case XCB_BUTTON_PRESS:
    case XCB_BUTTON_RELEASE:
    case XCB_MOTION_NOTIFY:
      return handlePointer(event);
    case XCB_DESTROY_NOTIFY:
      return windowDestroyed(eventAs<xcb_destroy_notify_event_t>(event).window);
    default:
      return;
  }
}

void X11WindowSystem::handleClientMessage(const xcb_client_message_event_t& message) {
  relay_.handle(message);
  const Window* const window = windows_.find(message.window);
  if (window != nullptr && !window->isAdopted() &&
      message.type == connection_->atom(Atom::WmProtocols) && message.format == 32 &&
      message.data.data32[0] == connection_->atom(Atom::WmDeleteWindow) &&
      (window->style->mask() & NSWindowStyleMaskClosable) != 0) {
    const WindowHandle handle = window->handle();
    reports_.add(handle,
                 [handle](WindowSystemDelegate& delegate) { delegate.closeRequested(handle); });
  }
}

// ButtonPress, ButtonRelease and MotionNotify have the same layout.
void X11WindowSystem::handlePointer(const xcb_generic_event_t& event) {
  const auto pointer = eventAs<xcb_button_press_event_t>(event);
  if (typeOf(event) == XCB_MOTION_NOTIFY) {
    drag_.movePointer(pointer.root_x, pointer.root_y);
    return;
  }
  if (pointer.detail != XCB_BUTTON_INDEX_1) {
    return;
  }
  moveDraggedWindow();
  drag_.end();
  const Window* const window = windows_.findByIdOrCoverId(pointer.event);
  if (typeOf(event) == XCB_BUTTON_PRESS && window != nullptr && window->isMovableByBackground) {
    drag_.begin(window->id, window->frame, pointer.root_x, pointer.root_y);
  }
}

void X11WindowSystem::moveDraggedWindow() {
  Window* const window = windows_.find(drag_.window());
  if (window == nullptr) {
    return;
  }
  const auto frame = drag_.takeMovedFrame(window->frame);
  if (frame && *frame != window->frame) {
    moveWindow(*window, *frame);
    monitor_.reportFrame(*window);
  }
}

void X11WindowSystem::windowDestroyed(xcb_window_t id) {
  connection_->markDestroyed(id);
  Window* const window = windows_.find(id);
  if (window == nullptr) {
    return;
  }
  const WindowHandle handle = window->handle();
  window->cover->windowDestroyed();
  restorer_.cancel(*window);
  windows_.remove(id);
  relay_.stopIfUnused();
  focus_.windowRemoved(id);
  reports_.add(handle,
               [handle](WindowSystemDelegate& delegate) { delegate.windowDestroyed(handle); });
}

void X11WindowSystem::checkConnection() {
  if (!connection_->isBroken()) {
    return;
  }
  isConnectionLost_ = true;
  windows_.clear();
  focus_.reset();
  drag_.end();
  reports_.add([](WindowSystemDelegate& delegate) { delegate.displayLost(kConnectionLost); });
}

}  // namespace vel
