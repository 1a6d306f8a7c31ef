#include "Platform/WindowSystem/Wayland/Frame.h"

#include <wayland-client.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "Platform/Foundation/NSLog.h"
#include "Platform/WindowSystem/Wayland/Libdecor.h"

namespace vel::wayland {

namespace {

constexpr unsigned kAllCapabilities = LIBDECOR_ACTION_MOVE | LIBDECOR_ACTION_RESIZE |
                                      LIBDECOR_ACTION_MINIMIZE | LIBDECOR_ACTION_FULLSCREEN |
                                      LIBDECOR_ACTION_CLOSE;

unsigned capabilitiesOf(NSWindowStyleMask styleMask) {
  unsigned capabilities = LIBDECOR_ACTION_MOVE;
  if ((styleMask & NSWindowStyleMaskClosable) != 0) {
    capabilities |= LIBDECOR_ACTION_CLOSE;
  }
  if ((styleMask & NSWindowStyleMaskMiniaturizable) != 0) {
    capabilities |= LIBDECOR_ACTION_MINIMIZE;
  }
  if ((styleMask & NSWindowStyleMaskResizable) != 0) {
    capabilities |= LIBDECOR_ACTION_RESIZE | LIBDECOR_ACTION_FULLSCREEN;
  }
  return capabilities;
}

// True if libdecor has reported an error during `FrameContext::create`.
bool hasContextFailed = false;

void logError(libdecor* /*context*/, libdecor_error /*error*/, const char* message) {
  hasContextFailed = true;
  NSLog("Wayland: windows have no frame: %s", std::string_view(message));
}

// libdecor does not change the members, but its functions take pointers to non-const.
libdecor_interface& contextInterface() {
  static libdecor_interface interface = [] {
    libdecor_interface result{};
    result.error = logError;
    return result;
  }();
  return interface;
}

}  // namespace

/// The functions that libdecor calls with the events of a frame.
struct FrameEvents {
  static void configure(libdecor_frame* /*frame*/, libdecor_configuration* configuration,
                        void* data) {
    static_cast<Frame*>(data)->configure(configuration);
  }
  static void close(libdecor_frame* /*frame*/, void* data) {
    static_cast<Frame*>(data)->handlers_.closeRequested();
  }
  static void commit(libdecor_frame* /*frame*/, void* data) {
    wl_surface_commit(static_cast<Frame*>(data)->surface_);
  }
  static void dismissPopup(libdecor_frame* /*frame*/, const char* /*seat*/, void* /*data*/) {}

  static libdecor_frame_interface& interface() {
    static libdecor_frame_interface interface = [] {
      libdecor_frame_interface result{};
      result.configure = configure;
      result.close = close;
      result.commit = commit;
      result.dismiss_popup = dismissPopup;
      return result;
    }();
    return interface;
  }
};

std::unique_ptr<FrameContext> FrameContext::create(wl_display* display) {
  std::unique_ptr<const Libdecor> functions = Libdecor::load();
  // On a broken connection, libdecor gets no global objects. `contextUnref` then crashes.
  if (functions == nullptr || wl_display_roundtrip(display) < 0) {
    return nullptr;
  }
  hasContextFailed = false;
  libdecor* const context = functions->contextNew(display, &contextInterface());
  // libdecor cannot draw a frame before it has the global objects.
  const bool hasGlobals = wl_display_roundtrip(display) >= 0;
  if (context == nullptr || hasContextFailed || !hasGlobals) {
    // After an error, libdecor has destroyed its plugin. `contextUnref` would destroy it again.
    return nullptr;
  }
  return std::unique_ptr<FrameContext>(new FrameContext(display, std::move(functions), context));
}

FrameContext::FrameContext(wl_display* display, std::unique_ptr<const Libdecor> functions,
                           libdecor* context)
    : display_(display), functions_(std::move(functions)), context_(context) {}

FrameContext::~FrameContext() { functions_->contextUnref(context_); }

bool FrameContext::dispatch() {
  // libdecor never returns from `contextDispatch` if the connection breaks while events are queued.
  const bool hasEvents = wl_display_dispatch_pending(display_) > 0;
  if (wl_display_get_error(display_) != 0) {
    return hasEvents;
  }
  return functions_->contextDispatch(context_, 0) > 0 || hasEvents;
}

bool FrameContext::hasQueuedEvents() const {
  if (wl_display_prepare_read(display_) != 0) {
    return true;
  }
  wl_display_cancel_read(display_);
  return false;
}

std::unique_ptr<Frame> Frame::create(const FrameContext& context, wl_surface* surface,
                                     Handlers handlers) {
  std::unique_ptr<Frame> frame(new Frame(context, surface, std::move(handlers)));
  return frame->frame_ != nullptr ? std::move(frame) : nullptr;
}

Frame::Frame(const FrameContext& context, wl_surface* surface, Handlers handlers)
    : functions_(*context.functions_), surface_(surface), handlers_(std::move(handlers)) {
  frame_ = functions_.decorate(context.context_, surface, &FrameEvents::interface(), this);
}

Frame::~Frame() {
  if (frame_ != nullptr) {
    functions_.frameUnref(frame_);
  }
}

xdg_toplevel* Frame::toplevel() const { return functions_.frameGetXdgToplevel(frame_); }

bool Frame::contains(wl_surface* surface) const {
  // The plugins of libdecor set the user data of their surfaces to the frame.
  return wl_surface_get_user_data(surface) == frame_;
}

bool Frame::isFloating() const { return functions_.frameIsFloating(frame_); }

void Frame::map() { functions_.frameMap(frame_); }

void Frame::setTitle(std::string_view title) {
  functions_.frameSetTitle(frame_, std::string(title).c_str());
}

void Frame::setStyle(NSWindowStyleMask styleMask, CGSize size) {
  const unsigned capabilities = capabilitiesOf(styleMask);
  isResizable_ = (styleMask & NSWindowStyleMaskResizable) != 0;
  size_ = {std::max(1, static_cast<int>(std::ceil(size.width))),
           std::max(1, static_cast<int>(std::ceil(size.height)))};
  if (isFloating()) {
    floatingSize_ = size_;
  }
  // libdecor fixes the size of a window that is not resizable, and restores the previous limits
  // when the window is resizable again. But if another capability changes while the size is fixed,
  // libdecor stores the fixed size as the previous limits. So this function removes the limits
  // before and after each change of the capabilities.
  allowAllSizes();
  functions_.frameUnsetCapabilities(
      frame_, static_cast<libdecor_capabilities>(kAllCapabilities & ~capabilities));
  allowAllSizes();
  functions_.frameSetCapabilities(frame_, static_cast<libdecor_capabilities>(capabilities));
  allowAllSizes();
  if (isConfigured_) {
    commit(nullptr);
  }
}

void Frame::allowAllSizes() {
  functions_.frameSetMinContentSize(frame_, 0, 0);
  functions_.frameSetMaxContentSize(frame_, 0, 0);
}

void Frame::configure(libdecor_configuration* configuration) {
  const Size previousSize = std::exchange(size_, contentSizeIn(configuration));
  isConfigured_ = true;
  commit(configuration);
  // libdecor includes the height of the title bar only after it has drawn the title bar.
  const Size finalSize = contentSizeIn(configuration);
  if (std::exchange(size_, finalSize) != finalSize) {
    commit(nullptr);
  }
  if (isFloating()) {
    floatingSize_ = size_;
  }
  handlers_.configured(size_ != previousSize ? CGSize{static_cast<double>(size_.width),
                                                      static_cast<double>(size_.height)}
                                             : CGSize{});
}

Frame::Size Frame::contentSizeIn(libdecor_configuration* configuration) {
  if (!isResizable_) {
    // libdecor limits the new size. The limits are the current size, which can be the size of the
    // maximised window.
    allowAllSizes();
  }
  Size size;
  if (!functions_.configurationGetContentSize(configuration, frame_, &size.width, &size.height)) {
    size = floatingSize_;
  }
  return {std::max(1, size.width), std::max(1, size.height)};
}

void Frame::commit(libdecor_configuration* configuration) {
  if (!isResizable_) {
    // When libdecor draws the frame, it raises the minimum size above the width of its buttons. If
    // the minimum then exceeds the maximum, libdecor stops working. So each commit sets both again.
    functions_.frameSetMinContentSize(frame_, size_.width, size_.height);
    functions_.frameSetMaxContentSize(frame_, size_.width, size_.height);
  }
  libdecor_state* const state = functions_.stateNew(size_.width, size_.height);
  functions_.frameCommit(frame_, state, configuration);
  functions_.stateFree(state);
}

}  // namespace vel::wayland
