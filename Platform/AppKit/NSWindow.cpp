#include "Platform/AppKit/NSWindow.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSViewController.h"
#include "Platform/AppKit/ViewLifeCycle.h"
#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/NSNotificationCenter.h"

namespace vel {

namespace {

// Returns the lower left corner of a modal window or a sheet. A modal window is centred over its
// owner. A sheet is centred below the title bar of its owner.
CGPoint originFor(WindowKind kind, CGSize size, CGRect ownerFrame) {
  const double x = ownerFrame.origin.x + (ownerFrame.size.width - size.width) / 2;
  const double spareHeight = ownerFrame.size.height - size.height;
  return {x, ownerFrame.origin.y + (kind == WindowKind::Sheet ? spareHeight : spareHeight / 2)};
}

}  // namespace

NSWindow::~NSWindow() {
  if (handle_ != WindowHandle::None && NSApp != nullptr) {
    NSApp->windowsByHandle_.erase(handle_);
    NSApp->guardedWindowSystem()->releaseWindow(handle_);
  }
}

Strong<NSWindow> NSWindow::makePresentationWindow(WindowKind kind, CGSize size,
                                                  const Strong<NSWindow>& owner,
                                                  NSWindowStyleMask styleMask) {
  const CGRect ownerFrame = send(owner, &NSWindow::frame);
  auto window = initWithContentRectStyleMask({originFor(kind, size, ownerFrame), size}, styleMask);
  window->kind_ = kind;
  window->owner_ = owner;
  if (kind == WindowKind::Sheet) {
    window->sheetParent_ = owner;
    owner->sheets_.push_back(window);
  }
  return window;
}

void NSWindow::makeContentView() { replaceContentView(NSView::initWithFrame(CGRectZero)); }

void NSWindow::replaceContentView(const Strong<NSView>& view) {
  if (contentView_ != nullptr) {
    contentView_->window_.reset();
  }
  contentView_ = view;
  if (contentView_ != nullptr) {
    contentView_->window_ = self();
    contentView_->setFrame({{}, frame_.size});
  }
  setNeedsDisplay();
}

void NSWindow::setContentView(const Strong<NSView>& view) {
  if (view == contentView_) {
    return;
  }
  const Strong<NSWindow> strongSelf = self();
  if (view != nullptr) {
    view->removeFromSuperview();
  }
  DisappearanceTransition disappearance(contentView_);
  disappearance.sendWillDisappear();
  // The window must not show the new view before `viewWillAppear`.
  std::optional<DisplayPause> displayPause(strongSelf);
  replaceContentView(view);
  disappearance.sendDidDisappear();
  if (isOpen_) {
    AppearanceTransition appearance(view);
    appearance.sendWillAppear();
    displayPause.reset();
    appearance.sendDidAppear();
  }
}

void NSWindow::setContentViewController(const Strong<NSViewController>& controller) {
  // The previous controller must live until `setContentView` has called its life-cycle methods.
  const Strong<NSViewController> previousController =
      std::exchange(contentViewController_, controller);
  setContentView(controller != nullptr ? controller->view() : NSView::initWithFrame(CGRectZero));
}

void NSWindow::setFrame(CGRect frame) {
  if (NSApp != nullptr && frame != frame_) {
    NSApp->guardedWindowSystem()->setFrame(handle_, frame);
  }
  frameChanged(frame);
}

void NSWindow::frameChanged(CGRect frame) {
  frame_ = frame;
  if (contentView_ != nullptr) {
    contentView_->setFrame({{}, frame.size});
  }
  for (const Strong<NSWindow>& sheet : NSArray<NSWindow>(sheets_)) {
    const CGSize size = sheet->frame_.size;
    sheet->setFrame({originFor(WindowKind::Sheet, size, frame), size});
  }
}

void NSWindow::setTitle(std::string_view title) {
  title_ = title;
  if (NSApp != nullptr) {
    NSApp->guardedWindowSystem()->setTitle(handle_, title);
  }
}

void NSWindow::setStyleMask(NSWindowStyleMask styleMask) {
  styleMask_ = styleMask;
  notifyPlatformObserver(
      [&](PlatformObserver& observer) { observer.styleMaskWasSet(*this, styleMask); });
  if (NSApp != nullptr) {
    NSApp->guardedWindowSystem()->setStyleMask(handle_, styleMask);
  }
}

void NSWindow::setMovableByWindowBackground(bool isMovable) {
  isMovableByWindowBackground_ = isMovable;
  if (NSApp != nullptr) {
    NSApp->guardedWindowSystem()->setMovableByBackground(handle_, isMovable);
  }
}

void NSWindow::addChildWindow(const Strong<NSWindow>& child) {
  if (child == nullptr || child.get() == this || child->parentWindow().get() == this) {
    return;
  }
  if (const Strong<NSWindow> previousParent = child->parentWindow()) {
    std::erase(previousParent->children_, child);
  }
  children_.push_back(child);
  child->parent_ = self();
}

void NSWindow::realize() {
  if (handle_ != WindowHandle::None) {
    return;
  }
  const Strong<NSWindow> owner = owner_.lock();
  handle_ = NSApp->guardedWindowSystem()->createWindow(
      {.className = std::string(className()),
       .title = title_,
       .frame = frame_,
       .styleMask = styleMask_,
       .kind = kind_,
       .ownerWindow = send(owner, &NSWindow::handle),
       .isMovableByBackground = isMovableByWindowBackground_});
  if (handle_ != WindowHandle::None) {  // it is None if the display is lost
    NSApp->windowsByHandle_[handle_] = this;
  }
}

void NSWindow::orderFront() { open(KeyRequest::None); }

void NSWindow::makeKeyAndOrderFront() { open(KeyRequest::MakeKey); }

void NSWindow::open(KeyRequest keyRequest) {
  if (NSApp == nullptr || isMiniaturized_) {
    return;
  }
  const Strong<NSWindow> strongSelf = self();
  const bool isOpening = !isOpen_;
  if (isOpening) {
    isOpen_ = true;
    NSApp->openWindows_.push_back(strongSelf);
  }
  AppearanceTransition appearance(isOpening ? contentView_ : nullptr);
  appearance.sendWillAppear();
  if (!isOpen_ || NSApp == nullptr) {
    return;  // `viewWillAppear` has closed the window
  }
  realize();
  isOnScreen_ = true;
  NSApp->addToOrderedWindows(strongSelf);
  NSApp->guardedWindowSystem()->orderFront(handle_);
  setNeedsDisplay();
  if (isOpening) {
    notifyPlatformObserver([this](PlatformObserver& observer) { observer.windowOpened(*this); });
  }
  if (keyRequest == KeyRequest::MakeKey) {
    makeKeyWindow();
  }
  appearance.sendDidAppear();
}

void NSWindow::close() {
  if (!isOpen_) {
    return;
  }
  const Strong<NSWindow> strongSelf = self();
  while (!sheets_.empty()) {
    const Strong<NSWindow> sheet = sheets_.back();
    sheet->close();
    std::erase(sheets_, sheet);  // `close` does nothing if the sheet is not open yet
  }
  DisappearanceTransition disappearance(contentView_);
  disappearance.sendWillDisappear();
  if (!isOpen_) {
    return;  // `viewWillDisappear` has closed the window
  }
  isOpen_ = false;
  isOnScreen_ = false;
  isMiniaturized_ = false;
  scene_.clear();
  const Strong<NSApplication> application = NSApp;
  if (application != nullptr) {
    application->removeFromOrderedWindows(strongSelf);
    std::erase(application->openWindows_, strongSelf);
    application->guardedWindowSystem()->orderOut(handle_);
    application->endModalSessions(this);
  }
  endPresentation();
  notifyPlatformObserver([this](PlatformObserver& observer) { observer.windowClosed(*this); });
  disappearance.sendDidDisappear();
  if (application != nullptr) {
    application->makeNextWindowKey(strongSelf);
  }
}

void NSWindow::endPresentation() {
  if (kind_ == WindowKind::Plain) {
    return;
  }
  if (const Strong<NSWindow> sheetParent = sheetParent_.lock()) {
    std::erase(sheetParent->sheets_, self());
  }
  sheetParent_.reset();
  // Another window may present the controller again, so this window releases the controller and
  // its view.
  const Strong<NSViewController> controller = std::exchange(contentViewController_, nullptr);
  if (controller != nullptr) {
    controller->endPresentation();
  }
  replaceContentView(nullptr);
}

void NSWindow::performClose() {
  if ((styleMask_ & NSWindowStyleMaskClosable) != 0) {
    close();
  }
}

void NSWindow::miniaturize() {
  if (isOnScreen_ && NSApp != nullptr) {
    NSApp->guardedWindowSystem()->requestMiniaturized(handle_, true);
  }
}

void NSWindow::deminiaturize() {
  if (isMiniaturized_ && NSApp != nullptr) {
    NSApp->guardedWindowSystem()->requestMiniaturized(handle_, false);
  }
}

void NSWindow::miniaturizedChanged(bool isMiniaturized) {
  if (!isOpen_ || isMiniaturized == isMiniaturized_ || NSApp == nullptr) {
    return;
  }
  const Strong<NSWindow> strongSelf = self();
  isMiniaturized_ = isMiniaturized;
  isOnScreen_ = !isMiniaturized;
  if (isMiniaturized) {
    NSApp->removeFromOrderedWindows(strongSelf);
    NSApp->makeNextWindowKey(strongSelf);
  } else {
    NSApp->addToOrderedWindows(strongSelf);
    setNeedsDisplay();
  }
  NSNotificationCenter::defaultCenter().postNotificationNameObject(
      isMiniaturized ? NSWindowDidMiniaturizeNotification : NSWindowDidDeminiaturizeNotification,
      strongSelf);
}

void NSWindow::windowDestroyed() {
  handle_ = WindowHandle::None;
  close();
}

void NSWindow::makeKeyWindow() {
  if (isOnScreen_ && !isKeyWindow() && NSApp != nullptr) {
    NSApp->guardedWindowSystem()->requestFocus(handle_);
  }
}

bool NSWindow::isKeyWindow() const { return NSApp != nullptr && NSApp->keyWindow().get() == this; }

bool NSWindow::isModalPanel() const {
  return NSApp != nullptr &&
         std::ranges::any_of(NSApp->modalSessions_,
                             [this](const NSApplication::ModalSession& session) {
                               return session.window.get() == this;
                             });
}

// Also sends the scene of a miniaturised window, because the window may return to the screen while
// our run loop is not running.
void NSWindow::setNeedsDisplay() {
  if ((!isOnScreen_ && !isMiniaturized_) || NSApp == nullptr || displayPauses_ > 0) {
    return;
  }
  Scene scene;
  if (contentView_ != nullptr) {
    contentView_->addToScene(scene, {});
  }
  if (scene != scene_) {
    scene_ = std::move(scene);
    NSApp->guardedWindowSystem()->setScene(handle_, scene_);
  }
}

}  // namespace vel
