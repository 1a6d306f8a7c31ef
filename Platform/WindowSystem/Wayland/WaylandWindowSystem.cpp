#include "Platform/WindowSystem/Wayland/WaylandWindowSystem.h"

#include <wayland-client.h>
#include <xdg-dialog-v1.h>
#include <xdg-shell.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <utility>

namespace vel {

using wayland::Canvas;
using wayland::Connection;
using wayland::FocusTracker;
using wayland::ForeignParent;
using wayland::Frame;
using wayland::FrameContext;
using wayland::Proxy;
using wayland::Toplevel;

namespace {

// A host that reads the shared connection also reads the events of the back end. The descriptor is
// then no longer readable, so the back end checks its queue at this interval.
constexpr Nanoseconds kSharedReadInterval = kNanosecondsPerSecond / 20;

constexpr NSWindowStyleMask kControls =
    NSWindowStyleMaskClosable | NSWindowStyleMaskMiniaturizable | NSWindowStyleMaskResizable;

// A Wayland surface has no class name, so each adopted surface gets this one. The library
// recognises the player window by it.
constexpr const char* kHostClassName = "PlayerWindow";

constexpr CGColor kTransparent{0, 0, 0, 0};
constexpr CGColor kBlack{0, 0, 0, 1};
constexpr CGColor kWhite{1, 1, 1, 1};

Nanoseconds steadyNow() {
  return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace

std::unique_ptr<WaylandWindowSystem> WaylandWindowSystem::open(const std::string& displayName,
                                                               std::string& error) {
  return start(Connection::open(displayName, error), error);
}

std::unique_ptr<WaylandWindowSystem> WaylandWindowSystem::share(wl_display* display,
                                                                std::string& error) {
  return start(Connection::share(display, error), error);
}

std::unique_ptr<WaylandWindowSystem> WaylandWindowSystem::start(
    std::unique_ptr<Connection> connection, std::string& error) {
  if (connection == nullptr) {
    return nullptr;
  }
  std::unique_ptr<WaylandWindowSystem> system(new WaylandWindowSystem(std::move(connection)));
  WaylandWindowSystem& self = *system;
  const bool isReady = self.connection_->readGlobals(
      {.seatAdded = [&self](std::uint32_t name,
                            Proxy<wl_seat> seat) { self.focus_->addSeat(name, std::move(seat)); },
       .globalRemoved = [&self](std::uint32_t name) { self.focus_->removeGlobal(name); },
       .scaleChanged =
           [&self] {
             for (const auto& [handle, window] : self.windows_) {
               if (window->canvas != nullptr) {
                 window->canvas->updateScale();
               }
             }
           }},
      error);
  return isReady ? std::move(system) : nullptr;
}

WaylandWindowSystem::WaylandWindowSystem(std::unique_ptr<Connection> connection)
    : connection_(std::move(connection)),
      focus_(std::make_unique<FocusTracker>(
          *connection_, reports_,
          [this](const wl_surface* surface) { return findBySurface(surface); },
          [this](wl_surface* surface) { return findContent(surface); },
          [this](WindowHandle window, wl_seat* seat, std::uint32_t serial) {
            buttonPressed(window, seat, serial);
          })) {}

WaylandWindowSystem::~WaylandWindowSystem() {
  while (!windows_.empty()) {
    releaseWindow(windows_.begin()->first);
  }
}

bool WaylandWindowSystem::canOwnWindows(const WaylandSurface& surface) const {
  return surface.toplevel != nullptr || ForeignParent::isSupported(*connection_);
}

WaitHandle WaylandWindowSystem::waitHandle() const { return WaitHandle(connection_->descriptor()); }

WaylandWindowSystem::Window* WaylandWindowSystem::find(WindowHandle handle) {
  const auto position = windows_.find(handle);
  return position == windows_.end() ? nullptr : position->second.get();
}

WindowHandle WaylandWindowSystem::findBySurface(const wl_surface* surface) const {
  for (const auto& [handle, window] : windows_) {
    if (surface == window->adoptedSurface ||
        (window->canvas != nullptr && window->canvas->contains(surface))) {
      return handle;
    }
  }
  return WindowHandle::None;
}

const wl_surface* WaylandWindowSystem::findContent(wl_surface* surface) const {
  for (const auto& [handle, window] : windows_) {
    const Frame* const frame = window->toplevel != nullptr ? window->toplevel->frame() : nullptr;
    if (frame != nullptr && frame->contains(surface)) {
      return window->surface.get();
    }
  }
  return surface;
}

// Creating, adopting and releasing windows

WindowHandle WaylandWindowSystem::createWindow(const WindowDescription& description) {
  if (isConnectionLost_ || connection_->windowManager() == nullptr) {
    return WindowHandle::None;
  }
  auto window = std::make_unique<Window>();
  window->handle = static_cast<WindowHandle>(++lastHandle_);
  window->description = description;
  const WindowHandle handle = window->handle;
  windows_[handle] = std::move(window);
  return handle;
}

std::optional<AdoptedWindow> WaylandWindowSystem::adoptWindow(const NativeWindow& native,
                                                              std::string& error) {
  connection_->roundTrip();  // reads which surface has the keyboard
  const auto* const surface = std::get_if<WaylandSurface>(&native);
  if (isConnectionLost_ || connection_->isBroken()) {
    error = "the Wayland display is lost";
  } else if (surface == nullptr) {
    error = "the window is not a Wayland surface";
  } else if (surface->surface == nullptr || surface->size.width < 1 || surface->size.height < 1) {
    error = "the surface is null or has no size";
  } else if (surface->display != connection_->display()) {
    error = "the surface belongs to another connection";
  } else if (findBySurface(surface->surface) != WindowHandle::None) {
    error = "the surface is already adopted";
  } else {
    auto window = std::make_unique<Window>();
    window->handle = static_cast<WindowHandle>(++lastHandle_);
    window->ownersMask = NSWindowStyleMaskTitled | kControls;
    window->description.className = kHostClassName;
    window->description.frame.size = surface->size;
    window->description.styleMask = window->ownersMask;
    window->adoptedSurface = surface->surface;
    window->adoptedToplevel = surface->toplevel;
    window->isOrderedIn = true;
    const AdoptedWindow adopted{.handle = window->handle,
                                .className = window->description.className,
                                .title = {},
                                .frame = window->description.frame,
                                .styleMask = window->ownersMask};
    windows_[adopted.handle] = std::move(window);
    focus_->windowAdopted(adopted.handle);
    AdoptedWindow result = adopted;
    result.hasFocus = focus_->focus() == adopted.handle;
    return result;
  }
  return std::nullopt;
}

void WaylandWindowSystem::releaseWindow(WindowHandle handle) {
  Window* const window = find(handle);
  if (window == nullptr) {
    return;
  }
  if (window->isAdopted()) {
    const NSWindowStyleMask previousMask =
        std::exchange(window->description.styleMask, window->ownersMask);
    setAdoptedStyle(*window, previousMask);
    closeCover(*window);
  } else {
    closeToplevel(*window);
  }
  windows_.erase(handle);
  focus_->windowRemoved(handle);
  reports_.removeReports(handle);
  connection_->flush();
}

// The cover of an adopted window

bool WaylandWindowSystem::isShielded(const Window& window) const {
  return modalWindow_ != WindowHandle::None && modalWindow_ != window.handle;
}

void WaylandWindowSystem::updateCover(Window& window) {
  if (window.scene.empty() && !isShielded(window)) {
    closeCover(window);
    focus_->coverClosed();
    connection_->flush();
    return;
  }
  const bool isOpening = window.surface == nullptr;
  if (isOpening) {
    window.surface.reset(wl_compositor_create_surface(connection_->compositor()));
    window.subsurface.reset(wl_subcompositor_get_subsurface(
        connection_->subcompositor(), window.surface.get(), window.adoptedSurface));
    wl_subsurface_set_desync(window.subsurface.get());
    window.canvas = std::make_unique<Canvas>(*connection_, window.surface.get(), kTransparent);
  }
  window.canvas->show(window.scene, window.description.frame.size);
  if (isOpening) {
    // A new subsurface appears when its parent is committed. A host that is busy loading may not
    // commit for a long time.
    wl_surface_commit(window.adoptedSurface);
  }
  connection_->flush();
}

void WaylandWindowSystem::closeCover(Window& window) {
  window.canvas = nullptr;
  window.subsurface = nullptr;
  window.surface = nullptr;
}

// Sends no request to the objects of the owner if resizing does not change. The owner may have
// destroyed them.
void WaylandWindowSystem::setAdoptedStyle(const Window& window,
                                          NSWindowStyleMask previousMask) const {
  const NSWindowStyleMask changes = window.description.styleMask ^ previousMask;
  if (window.adoptedToplevel == nullptr || isConnectionLost_ ||
      (changes & NSWindowStyleMaskResizable) == 0) {
    return;
  }
  const bool isResizable = (window.description.styleMask & NSWindowStyleMaskResizable) != 0;
  wayland::setResizable(window.adoptedToplevel, isResizable, window.description.frame.size);
  wl_surface_commit(window.adoptedSurface);
}

// Windows of the back end

const FrameContext* WaylandWindowSystem::frameContext() {
  if (connection_->decorations() != nullptr || connection_->isShared() || isConnectionLost_) {
    return nullptr;
  }
  if (!std::exchange(hasLoadedFrameContext_, true)) {
    frameContext_ = FrameContext::create(connection_->display());
  }
  return frameContext_.get();
}

void WaylandWindowSystem::openToplevel(Window& window) {
  const bool isPlain = window.description.kind == WindowKind::Plain;
  window.surface.reset(wl_compositor_create_surface(connection_->compositor()));
  window.canvas =
      std::make_unique<Canvas>(*connection_, window.surface.get(), isPlain ? kBlack : kWhite);
  xdg_toplevel* ownersToplevel = nullptr;
  const Window* const owner = find(window.description.ownerWindow);
  if (owner != nullptr) {
    ownersToplevel = owner->toplevel != nullptr ? owner->toplevel->proxy() : owner->adoptedToplevel;
  }
  if (owner != nullptr && owner->isAdopted() && ownersToplevel == nullptr &&
      ForeignParent::isSupported(*connection_)) {
    window.foreignParent = std::make_unique<ForeignParent>(*connection_, owner->adoptedSurface);
  }
  const WindowHandle handle = window.handle;
  const bool hasTitleBar = (window.description.styleMask & NSWindowStyleMaskTitled) != 0;
  window.toplevel = std::make_unique<Toplevel>(
      *connection_, window.surface.get(), window.description, ownersToplevel,
      hasTitleBar ? frameContext() : nullptr,
      Toplevel::Handlers{.configured = [this, handle](CGSize size) { configured(handle, size); },
                         .closeRequested =
                             [this, handle] {
                               const NSWindowStyleMask mask = find(handle)->description.styleMask;
                               if ((mask & NSWindowStyleMaskClosable) != 0) {
                                 reports_.add(handle, [handle](WindowSystemDelegate& delegate) {
                                   delegate.closeRequested(handle);
                                 });
                               }
                             }});
  if (window.foreignParent != nullptr) {
    window.foreignParent->setParentOf(window.surface.get());
  }
  setModal(window, modalWindow_ == handle);
}

void WaylandWindowSystem::closeToplevel(Window& window) {
  window.canvas = nullptr;
  window.foreignParent = nullptr;
  window.dialog = nullptr;
  window.toplevel = nullptr;
  window.surface = nullptr;
}

void WaylandWindowSystem::setModal(Window& window, bool isModal) const {
  if (window.toplevel == nullptr || connection_->dialogs() == nullptr) {
    return;
  }
  if (isModal) {
    if (window.dialog == nullptr) {
      window.dialog.reset(
          xdg_wm_dialog_v1_get_xdg_dialog(connection_->dialogs(), window.toplevel->proxy()));
    }
    xdg_dialog_v1_set_modal(window.dialog.get());
  } else if (window.dialog != nullptr) {
    xdg_dialog_v1_unset_modal(window.dialog.get());
  }
}

void WaylandWindowSystem::reopenToplevel(Window& window) {
  closeToplevel(window);
  focus_->windowRemoved(window.handle);
  openToplevel(window);
  connection_->flush();
}

void WaylandWindowSystem::configured(WindowHandle handle, CGSize size) {
  Window& window = *find(handle);
  CGRect& frame = window.description.frame;
  // The client chooses each length that is zero.
  const CGSize newSize{size.width > 0 ? size.width : frame.size.width,
                       size.height > 0 ? size.height : frame.size.height};
  if (newSize != frame.size) {
    frame.size = newSize;
    reportFrame(window);
  }
  window.canvas->show(window.scene, frame.size);
}

void WaylandWindowSystem::reportFrame(const Window& window) {
  reports_.add(window.handle,
               [handle = window.handle, frame = window.description.frame](
                   WindowSystemDelegate& delegate) { delegate.frameChanged(handle, frame); });
}

void WaylandWindowSystem::buttonPressed(WindowHandle handle, wl_seat* seat, std::uint32_t serial) {
  const Window& window = *find(handle);
  if (window.toplevel != nullptr && window.description.isMovableByBackground &&
      !isShielded(window)) {
    window.toplevel->move(seat, serial);
  }
}

// Operations on windows

void WaylandWindowSystem::orderFront(WindowHandle handle) {
  Window* const window = find(handle);
  if (window == nullptr || window->isOrderedIn || connection_->windowManager() == nullptr) {
    return;
  }
  window->isOrderedIn = true;
  openToplevel(*window);
  connection_->flush();
}

void WaylandWindowSystem::orderOut(WindowHandle handle) {
  Window* const window = find(handle);
  if (window == nullptr) {
    return;
  }
  window->scene.clear();
  if (window->isAdopted()) {
    updateCover(*window);
  } else if (std::exchange(window->isOrderedIn, false)) {
    closeToplevel(*window);
    focus_->windowRemoved(handle);
    connection_->flush();
  }
}

void WaylandWindowSystem::requestFocus(WindowHandle handle) {
  const Window* const window = find(handle);
  if (window != nullptr && window->isOrderedIn) {
    focus_->request(handle, window->isAdopted() ? window->adoptedSurface : window->surface.get());
    connection_->flush();
  }
}

void WaylandWindowSystem::setFrame(WindowHandle handle, CGRect frame) {
  Window* const window = find(handle);
  if (window == nullptr) {
    return;
  }
  const CGSize previousSize = std::exchange(window->description.frame, frame).size;
  if (window->isAdopted()) {
    const bool isResizable = (window->description.styleMask & NSWindowStyleMaskResizable) != 0;
    if (window->adoptedToplevel != nullptr && !isConnectionLost_ && !isResizable) {
      // The next commit of the owner applies the new limits. A commit here could come before the
      // owner attaches a buffer of the new size, which is an error in a maximised window.
      wayland::setResizable(window->adoptedToplevel, false, frame.size);
      connection_->flush();
    }
    if (window->surface != nullptr) {
      updateCover(*window);
    }
  } else if (window->toplevel != nullptr && !window->toplevel->isFloating()) {
    window->description.frame.size = previousSize;
    if (frame.size != previousSize) {
      reportFrame(*window);
    }
  } else if (window->toplevel != nullptr) {
    window->toplevel->setStyle(window->description.styleMask, frame.size);
    if (window->toplevel->isConfigured()) {
      window->canvas->show(window->scene, frame.size);
    }
    connection_->flush();
  }
}

void WaylandWindowSystem::setTitle(WindowHandle handle, std::string_view title) {
  Window* const window = find(handle);
  if (window == nullptr) {
    return;
  }
  window->description.title = title;
  if (window->toplevel != nullptr) {
    window->toplevel->setTitle(title);
    connection_->flush();
  }
}

void WaylandWindowSystem::setStyleMask(WindowHandle handle, NSWindowStyleMask styleMask) {
  Window* const window = find(handle);
  if (window == nullptr) {
    return;
  }
  const NSWindowStyleMask previousMask = std::exchange(window->description.styleMask, styleMask);
  window->hasNewStyleMask = true;
  if (window->isAdopted()) {
    setAdoptedStyle(*window, previousMask);
  } else if (window->toplevel != nullptr) {
    const bool hasNewTitleBar = ((styleMask ^ previousMask) & NSWindowStyleMaskTitled) != 0;
    if (hasNewTitleBar && frameContext() != nullptr && connection_->windowManager() != nullptr) {
      reopenToplevel(*window);
      return;
    }
    window->toplevel->setStyle(styleMask, window->description.frame.size);
    if (window->toplevel->isConfigured()) {
      wl_surface_commit(window->surface.get());
    }
  }
  connection_->flush();
}

void WaylandWindowSystem::reportRemainingControls() {
  for (const auto& [handle, window] : windows_) {
    if (!std::exchange(window->hasNewStyleMask, false)) {
      continue;
    }
    NSWindowStyleMask remainingControls = kControls & ~window->description.styleMask;
    if (window->toplevel != nullptr && window->toplevel->frame() != nullptr) {
      remainingControls = 0;  // the frame has no other controls than those of the style mask
    } else if (!window->isAdopted() || window->adoptedToplevel != nullptr) {
      remainingControls &= ~NSWindowStyleMaskResizable;
    }
    reports_.add(handle,
                 [changedWindow = handle, remainingControls](WindowSystemDelegate& delegate) {
                   delegate.remainingControlsDetected(changedWindow, remainingControls);
                 });
  }
}

void WaylandWindowSystem::setMovableByBackground(WindowHandle handle, bool movable) {
  if (Window* const window = find(handle)) {
    window->description.isMovableByBackground = movable;
  }
}

void WaylandWindowSystem::setScene(WindowHandle handle, const Scene& scene) {
  Window* const window = find(handle);
  if (window == nullptr) {
    return;
  }
  window->scene = scene;
  if (window->isAdopted()) {
    updateCover(*window);
  } else if (window->toplevel != nullptr && window->toplevel->isConfigured()) {
    window->canvas->show(scene, window->description.frame.size);
    connection_->flush();
  }
}

void WaylandWindowSystem::setModalWindow(WindowHandle handle) {
  if (handle != WindowHandle::None && find(handle) == nullptr) {
    return;
  }
  const WindowHandle previous = std::exchange(modalWindow_, handle);
  if (previous == handle) {
    return;
  }
  for (const auto& [other, window] : windows_) {
    if (window->isAdopted()) {
      updateCover(*window);
    } else if (other == previous || other == handle) {
      setModal(*window, other == handle);
    }
  }
  connection_->flush();
}

// Events

bool WaylandWindowSystem::deliverEvents() {
  bool hasEvents = false;
  if (!isConnectionLost_) {
    hasEvents = connection_->dispatch();
    if (frameContext_ != nullptr && !connection_->isBroken()) {
      hasEvents = frameContext_->dispatch() || hasEvents;
    }
    const Nanoseconds now = lastReadTime_ = steadyNow();
    if (now >= nextFrameTime_) {
      for (const auto& [handle, window] : windows_) {
        if (window->canvas != nullptr) {
          window->canvas->animate(now);
        }
      }
      nextFrameTime_ = (now / wayland::kFrameInterval + 1) * wayland::kFrameInterval;
    }
    connection_->flush();
    checkConnection();
  }
  if (!isConnectionLost_) {
    focus_->reportChanges();
    reportRemainingControls();
  }
  return reports_.deliver() || hasEvents;  // the delegate may destroy this object
}

bool WaylandWindowSystem::hasSurface() const {
  return std::ranges::any_of(windows_,
                             [](const auto& entry) { return entry.second->surface != nullptr; });
}

Nanoseconds WaylandWindowSystem::nextDeadline() const {
  if (!reports_.isEmpty()) {
    return 0;
  }
  if (isConnectionLost_) {
    return kNever;
  }
  if (focus_->hasPendingChanges() || connection_->isBroken() || connection_->hasQueuedEvents() ||
      (frameContext_ != nullptr && frameContext_->hasQueuedEvents())) {
    return 0;
  }
  if (std::ranges::any_of(windows_,
                          [](const auto& entry) { return entry.second->hasNewStyleMask; })) {
    return 0;
  }
  const bool isAnimated = std::ranges::any_of(windows_, [](const auto& entry) {
    return entry.second->canvas != nullptr && entry.second->canvas->isAnimated();
  });
  Nanoseconds deadline = isAnimated ? nextFrameTime_ : kNever;
  if (connection_->isShared() && hasSurface()) {
    deadline = std::min(deadline, lastReadTime_ + kSharedReadInterval);
  }
  return deadline;
}

void WaylandWindowSystem::checkConnection() {
  if (!connection_->isBroken()) {
    return;
  }
  isConnectionLost_ = true;
  const std::string reason =
      "the Wayland display is lost: " +
      std::string(std::strerror(wl_display_get_error(connection_->display())));
  while (!windows_.empty()) {
    releaseWindow(windows_.begin()->first);
  }
  reports_.add([reason](WindowSystemDelegate& delegate) { delegate.displayLost(reason); });
}

}  // namespace vel
