// What the back end is told to do; what it hears is in X11Events.cpp.
#include "Platform/WindowSystem/X11/X11WindowSystem.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <utility>

#include "Platform/WindowSystem/X11/Requests.h"

namespace vel {

using x11::Atom;
using x11::BrokenPipeGuard;
using x11::PixelRect;
using x11::Property;
using x11::RequestBatch;
using x11::Window;

namespace {

constexpr std::uint32_t kFollowed = XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                                    XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY |
                                    XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_FOCUS_CHANGE;
constexpr std::uint32_t kDragging =
    XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_BUTTON_MOTION;

}  // namespace

std::unique_ptr<X11WindowSystem> X11WindowSystem::open(const std::string& displayName,
                                                       std::string& error) {
  const BrokenPipeGuard guard;
  auto connection = x11::Connection::open(displayName, error);
  if (connection == nullptr) {
    return nullptr;
  }
  std::unique_ptr<X11WindowSystem> system(new X11WindowSystem(std::move(connection)));
  if (system->connection_->isBroken()) {
    error = "the X11 display broke the connection";
    return nullptr;
  }
  return system;
}

X11WindowSystem::X11WindowSystem(std::unique_ptr<x11::Connection> connection)
    : connection_(std::move(connection)),
      coordinates_(*connection_),
      render_(*connection_),
      windowManager_(*connection_) {}

X11WindowSystem::~X11WindowSystem() {
  const RequestBatch batch(*connection_);
  for (auto& [handle, window] : windows_) {
    letGo(window);
  }
  windows_.clear();
}

WaitHandle X11WindowSystem::waitHandle() const {
  return WaitHandle(xcb_get_file_descriptor(connection_->get()));
}

Window* X11WindowSystem::find(WindowHandle window) {
  const auto found = windows_.find(window);
  return found == windows_.end() ? nullptr : &found->second;
}

// Making windows and letting them go

WindowHandle X11WindowSystem::createWindow(const WindowDescription& description) {
  if (lost_ || connection_->isBroken()) {
    return WindowHandle::None;
  }
  const RequestBatch batch(*connection_);
  const xcb_window_t id = connection_->makeId();
  Window& window = windows_[static_cast<WindowHandle>(id)];
  window.id = id;
  window.kind = description.kind;
  window.frame = coordinates_.pixels(description.frame);
  window.frame.width = std::max(window.frame.width, 1);
  window.frame.height = std::max(window.frame.height, 1);
  window.movableByBackground = description.movableByBackground;

  // A presentation is white before anything is drawn in it.
  const xcb_screen_t& screen = connection_->screen();
  const std::uint32_t background =
      description.kind == WindowKind::Plain ? screen.black_pixel : screen.white_pixel;
  x11::createWindow(*connection_, {.id = id, .parent = connection_->root(), .frame = window.frame},
                    XCB_CW_BACK_PIXEL, {background});
  describe(window, description);
  window.style = std::make_unique<x11::WindowStyle>(*connection_, id, description.kind,
                                                    description.styleMask, window.frame);
  selectEvents(window);  // what has been written so far, we know
  makeCover(window, screen.root_visual, screen.root_depth);
  return window.handle();
}

void X11WindowSystem::describe(const Window& window, const WindowDescription& description) {
  const auto set = [this, &window](xcb_atom_t name, Property value) {
    changeProperty(*connection_, window.id, name, std::move(value));
  };
  const auto atom = [this](Atom name) { return connection_->atom(name); };
  const std::string className = description.className + '\0' + description.className + '\0';
  set(XCB_ATOM_WM_CLASS, Property::ofText(XCB_ATOM_STRING, className));
  constexpr std::array<std::uint32_t, 9> kTakesInput{1, 1};  // the first flag: the second field
  set(XCB_ATOM_WM_HINTS, Property::ofNumbers(XCB_ATOM_WM_HINTS, kTakesInput));
  const std::array protocols{atom(Atom::WmDeleteWindow)};
  set(atom(Atom::WmProtocols), Property::ofNumbers(XCB_ATOM_ATOM, protocols));
  const std::array process{static_cast<std::uint32_t>(getpid())};
  set(atom(Atom::NetWmPid), Property::ofNumbers(XCB_ATOM_CARDINAL, process));
  if (utsname machine{}; uname(&machine) == 0) {  // a process's number is one of a machine's
    set(XCB_ATOM_WM_CLIENT_MACHINE,
        Property::ofText(XCB_ATOM_STRING, static_cast<const char*>(machine.nodename)));
  }
  const std::array type{atom(description.kind == WindowKind::Plain ? Atom::NetWmWindowTypeNormal
                                                                   : Atom::NetWmWindowTypeDialog)};
  set(atom(Atom::NetWmWindowType), Property::ofNumbers(XCB_ATOM_ATOM, type));
  if (const Window* const owner = find(description.owner)) {
    const std::array ownerId{owner->id};
    set(XCB_ATOM_WM_TRANSIENT_FOR, Property::ofNumbers(XCB_ATOM_WINDOW, ownerId));
  }
  writeTitle(window, description.title);
}

void X11WindowSystem::writeTitle(const Window& window, std::string_view title) {
  const xcb_atom_t utf8 = connection_->atom(Atom::Utf8String);
  changeProperty(*connection_, window.id, connection_->atom(Atom::NetWmName),
                 Property::ofText(utf8, title));
  changeProperty(*connection_, window.id, XCB_ATOM_WM_NAME, Property::ofText(utf8, title));
}

void X11WindowSystem::makeCover(Window& window, xcb_visualid_t visual, std::uint8_t depth) {
  window.cover =
      std::make_unique<x11::Cover>(*connection_, coordinates_, render_, window.id, visual, depth);
  window.cover->setShielded(modal_ != WindowHandle::None && modal_ != window.handle());
}

// Pointer events of a window can be selected by one program only: it is left to others unless it is
// needed.
void X11WindowSystem::selectEvents(const Window& window) {
  x11::selectEvents(*connection_, window.id,
                    window.movableByBackground ? kFollowed | kDragging : kFollowed);
}

void X11WindowSystem::releaseWindow(WindowHandle window) {
  Window* const released = find(window);
  if (released == nullptr) {
    return;
  }
  const RequestBatch batch(*connection_);
  letGo(*released);
  focusLost(released->id);
  std::erase_if(reports_, [window](const Report& report) { return report.window == window; });
  windows_.erase(window);
}

void X11WindowSystem::letGo(Window& window) {
  window.cover = nullptr;
  if (window.isOwn()) {
    destroyWindow(*connection_, window.id);
    return;
  }
  window.style->restore();
  x11::selectEvents(*connection_, window.id, XCB_EVENT_MASK_NO_EVENT);
}

// Putting them on screen

void X11WindowSystem::orderFront(WindowHandle window) {
  Window* const shown = find(window);
  if (shown == nullptr) {
    return;
  }
  const RequestBatch batch(*connection_);
  raiseWindow(*connection_, shown->id);
  if (shown->isOwn() && !shown->ordered) {
    shown->ordered = shown->appears = true;
    shown->miniaturized = false;
    if (shown->kind == WindowKind::Modal) {
      // Written each time: a window manager takes it away from a window that leaves the screen.
      const std::array state{connection_->atom(Atom::NetWmStateModal)};
      changeProperty(*connection_, shown->id, connection_->atom(Atom::NetWmState),
                     Property::ofNumbers(XCB_ATOM_ATOM, state));
    }
    mapWindow(*connection_, shown->id);
  }
  putInFront(window);
}

void X11WindowSystem::orderOut(WindowHandle window) {
  Window* const hidden = find(window);
  if (hidden == nullptr) {
    return;
  }
  const RequestBatch batch(*connection_);
  hidden->wantsFocus = false;
  if (drag_.window == hidden->id) {
    drag_ = {};
  }
  if (hidden->isOwn() && hidden->ordered) {
    hidden->ordered = hidden->appears = false;
    hidden->miniaturized = false;
    unmapWindow(*connection_, hidden->id);
    sendWithdrawn(*connection_, hidden->id);
    if (focus_ == hidden->id) {
      focus_ = focusTold_ = XCB_WINDOW_NONE;
    }
  }
  hidden->cover->show({}, hidden->frame);
}

void X11WindowSystem::requestMiniaturized(WindowHandle window, bool miniaturized) {
  const Window* const changed = find(window);
  if (changed == nullptr) {
    return;
  }
  const RequestBatch batch(*connection_);
  if (miniaturized) {
    windowManager_.askToIconify(changed->id);
  } else {
    mapWindow(*connection_, changed->id);
  }
}

// While another application has the focus, a request is as old as ours of it was: whether that is
// reason enough to take the focus away from there, the window manager knows.
void X11WindowSystem::requestFocus(WindowHandle window) {
  Window* const wanted = find(window);
  if (wanted == nullptr || (wanted->isOwn() && !wanted->ordered)) {
    return;
  }
  if (focus_ == wanted->id) {
    report(window, [window](WindowSystemDelegate& delegate) { delegate.focusMoved(window); });
    return;
  }
  const RequestBatch batch(*connection_);
  if (windowManager_.activatesWindows()) {
    const bool elsewhere = !active_ && timeOfFocus_ != XCB_CURRENT_TIME;
    const xcb_timestamp_t time = elsewhere ? timeOfFocus_ : connection_->serverTime();
    windowManager_.askToActivate(wanted->id, time);
  } else {
    for (auto& [handle, other] : windows_) {
      other.wantsFocus = false;  // the latest wish is the one that counts
    }
    wanted->wantsFocus = true;
    if (!wanted->appears) {
      settleWindow(*wanted);  // gives it, unless the window cannot be seen yet
    }
  }
}

// How they look

void X11WindowSystem::moveTo(Window& window, PixelRect frame) {
  frame.width = std::max(frame.width, 1);
  frame.height = std::max(frame.height, 1);
  window.frame = frame;
  window.style->sizeChanged(frame);
  moveResizeWindow(*connection_, window.id, frame);
}

void X11WindowSystem::setFrame(WindowHandle window, CGRect frame) {
  if (Window* const changed = find(window)) {
    const RequestBatch batch(*connection_);
    moveTo(*changed, coordinates_.pixels(frame));
  }
}

void X11WindowSystem::setTitle(WindowHandle window, std::string_view title) {
  if (const Window* const changed = find(window)) {
    const RequestBatch batch(*connection_);
    writeTitle(*changed, title);
  }
}

void X11WindowSystem::setStyleMask(WindowHandle window, NSWindowStyleMask styleMask) {
  if (Window* const changed = find(window)) {
    const RequestBatch batch(*connection_);
    changed->style->setMask(styleMask, changed->frame);
    reportOwnersStyle(*changed);
    changed->controlsTold.reset();
    changed->controlsDue = x11::steadyNow() + x11::kTimeForWindowManager;
  }
}

void X11WindowSystem::setMovableByBackground(WindowHandle window, bool movable) {
  Window* const changed = find(window);
  if (changed != nullptr && changed->isOwn() && changed->movableByBackground != movable) {
    const RequestBatch batch(*connection_);
    changed->movableByBackground = movable;
    selectEvents(*changed);
  }
}

void X11WindowSystem::setScene(WindowHandle window, const Scene& scene) {
  if (Window* const changed = find(window)) {
    const RequestBatch batch(*connection_);
    changed->cover->show(scene, changed->frame);
  }
}

void X11WindowSystem::setModalWindow(WindowHandle window) {
  if (std::exchange(modal_, window) != window) {
    const RequestBatch batch(*connection_);
    shieldWindows();
  }
}

void X11WindowSystem::shieldWindows() {
  for (auto& [handle, window] : windows_) {
    window.cover->setShielded(modal_ != WindowHandle::None && modal_ != handle);
  }
}

}  // namespace vel
