#include "Platform/WindowSystem/Headless/HeadlessWindowSystem.h"

namespace vel {

HeadlessWindowSystem::Window* HeadlessWindowSystem::findWindow(WindowHandle window) {
  const auto position = windows_.find(window);
  return position == windows_.end() ? nullptr : &position->second;
}

const HeadlessWindowSystem::Window* HeadlessWindowSystem::window(WindowHandle window) const {
  const auto position = windows_.find(window);
  return position == windows_.end() ? nullptr : &position->second;
}

WindowHandle HeadlessWindowSystem::createWindow(const WindowDescription& description) {
  const auto handle = static_cast<WindowHandle>(++lastHandle_);
  windows_[handle].description = description;
  return handle;
}

std::optional<AdoptedWindow> HeadlessWindowSystem::adoptWindow(const NativeWindow& /*native*/,
                                                               std::string& error) {
  error = "the headless display has no windows of other programs";
  return std::nullopt;
}

void HeadlessWindowSystem::releaseWindow(WindowHandle window) {
  orderOut(window);
  windows_.erase(window);
}

void HeadlessWindowSystem::orderFront(WindowHandle window) {
  if (Window* const state = findWindow(window)) {
    state->isOnScreen = true;
    state->isMiniaturized = false;
  }
}

void HeadlessWindowSystem::orderOut(WindowHandle window) {
  if (Window* const state = findWindow(window)) {
    state->isOnScreen = false;
  }
  if (focus_ == window) {
    focus_ = WindowHandle::None;
  }
}

void HeadlessWindowSystem::requestFocus(WindowHandle window) {
  const Window* const state = findWindow(window);
  if (state == nullptr || !state->isOnScreen || ignoresFocusRequests_) {
    return;
  }
  focus_ = window;
  if (delegate_ != nullptr) {
    delegate_->focusMoved(window);
  }
}

void HeadlessWindowSystem::requestMiniaturized(WindowHandle window, bool isMiniaturized) {
  Window* const state = findWindow(window);
  if (state == nullptr || state->isMiniaturized == isMiniaturized) {
    return;
  }
  state->isMiniaturized = isMiniaturized;
  state->isOnScreen = !isMiniaturized;
  if (isMiniaturized && focus_ == window) {
    focus_ = WindowHandle::None;
  }
  if (delegate_ != nullptr) {
    delegate_->miniaturizedChanged(window, isMiniaturized);
  }
}

void HeadlessWindowSystem::setFrame(WindowHandle window, CGRect frame) {
  if (Window* const state = findWindow(window)) {
    state->description.frame = frame;
  }
}

void HeadlessWindowSystem::setTitle(WindowHandle window, std::string_view title) {
  if (Window* const state = findWindow(window)) {
    state->description.title = title;
  }
}

void HeadlessWindowSystem::setStyleMask(WindowHandle window, NSWindowStyleMask styleMask) {
  if (Window* const state = findWindow(window)) {
    state->description.styleMask = styleMask;
  }
}

void HeadlessWindowSystem::setMovableByBackground(WindowHandle window, bool isMovable) {
  if (Window* const state = findWindow(window)) {
    state->description.isMovableByBackground = isMovable;
  }
}

void HeadlessWindowSystem::setScene(WindowHandle window, const Scene& scene) {
  if (Window* const state = findWindow(window)) {
    state->scene = scene;
  }
}

void HeadlessWindowSystem::setModalWindow(WindowHandle window) {
  if (window == WindowHandle::None || windows_.contains(window)) {
    modalWindow_ = window;
  }
}

bool HeadlessWindowSystem::isSceneOnScreen(WindowHandle window) {
  const Window* const state = findWindow(window);
  return state != nullptr && state->isOnScreen && !state->scene.empty() && !hidesScenes_;
}

void HeadlessWindowSystem::userMovesFocusAway() {
  focus_ = WindowHandle::None;
  if (delegate_ != nullptr) {
    delegate_->focusMoved(WindowHandle::None);
  }
}

void HeadlessWindowSystem::userDeactivatesApplication() {
  focus_ = WindowHandle::None;
  if (delegate_ != nullptr) {
    delegate_->applicationDeactivated();
  }
}

void HeadlessWindowSystem::userActivatesApplication() {
  if (delegate_ != nullptr) {
    delegate_->applicationActivated(WindowHandle::None);
  }
}

void HeadlessWindowSystem::userClosesWindow(WindowHandle window) {
  const Window* const state = findWindow(window);
  if (state != nullptr && delegate_ != nullptr &&
      (state->description.styleMask & NSWindowStyleMaskClosable) != 0) {
    delegate_->closeRequested(window);
  }
}

void HeadlessWindowSystem::userResizesWindow(WindowHandle window, CGRect frame) {
  Window* const state = findWindow(window);
  if (state == nullptr) {
    return;
  }
  state->description.frame = frame;
  if (delegate_ != nullptr) {
    delegate_->frameChanged(window, frame);
  }
}

void HeadlessWindowSystem::ownerSetsStyleMask(WindowHandle window, NSWindowStyleMask styleMask) {
  Window* const state = findWindow(window);
  if (state == nullptr) {
    return;
  }
  state->description.styleMask = styleMask;
  if (delegate_ != nullptr) {
    delegate_->styleMaskChanged(window, styleMask);
  }
}

void HeadlessWindowSystem::userRestacksWindows(const std::vector<WindowHandle>& windows) {
  if (delegate_ != nullptr) {
    delegate_->orderChanged(windows);
  }
}

void HeadlessWindowSystem::windowManagerKeepsControls(WindowHandle window,
                                                      NSWindowStyleMask controls) {
  if (findWindow(window) != nullptr && delegate_ != nullptr) {
    delegate_->remainingControlsDetected(window, controls);
  }
}

void HeadlessWindowSystem::ownerDestroysWindow(WindowHandle window) {
  if (focus_ == window) {
    focus_ = WindowHandle::None;
  }
  if (windows_.erase(window) > 0 && delegate_ != nullptr) {
    delegate_->windowDestroyed(window);
  }
}

void HeadlessWindowSystem::serverClosesConnection(std::string_view reason) {
  windows_.clear();
  focus_ = WindowHandle::None;
  modalWindow_ = WindowHandle::None;
  if (delegate_ != nullptr) {
    delegate_->displayLost(reason);
  }
}

}  // namespace vel
