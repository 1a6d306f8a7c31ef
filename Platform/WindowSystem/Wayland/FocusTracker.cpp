#include "Platform/WindowSystem/Wayland/FocusTracker.h"

#include <unistd.h>
#include <wayland-client.h>
#include <xdg-activation-v1.h>

#include <algorithm>
#include <utility>

namespace vel::wayland {

namespace {

constexpr std::uint32_t kMainButton = 0x110;  // BTN_LEFT of the Linux kernel

}  // namespace

/// The functions that libwayland calls with the events of seats.
struct SeatEvents {
  using Seat = FocusTracker::Seat;

  static void capabilities(void* data, wl_seat* /*proxy*/, std::uint32_t capabilities) {
    Seat& seat = *static_cast<Seat*>(data);
    seat.tracker->setCapabilities(seat, capabilities);
  }
  static void name(void* /*data*/, wl_seat* /*proxy*/, const char* /*name*/) {}
  static constexpr wl_seat_listener kSeatListener{.capabilities = capabilities, .name = name};

  static void keymap(void* /*data*/, wl_keyboard* /*keyboard*/, std::uint32_t /*format*/, int file,
                     std::uint32_t /*size*/) {
    close(file);
  }
  static void keyboardEnter(void* data, wl_keyboard* /*keyboard*/, std::uint32_t serial,
                            wl_surface* surface, wl_array* /*keys*/) {
    Seat& seat = *static_cast<Seat*>(data);
    const wl_surface* const content =
        surface == nullptr ? nullptr : seat.tracker->findContent_(surface);
    seat.tracker->setKeyboardSurface(seat, content, serial);
  }
  static void keyboardLeave(void* data, wl_keyboard* /*keyboard*/, std::uint32_t /*serial*/,
                            wl_surface* /*surface*/) {
    Seat& seat = *static_cast<Seat*>(data);
    seat.tracker->setKeyboardSurface(seat, nullptr, 0);
  }
  static void key(void* /*data*/, wl_keyboard* /*keyboard*/, std::uint32_t /*serial*/,
                  std::uint32_t /*time*/, std::uint32_t /*key*/, std::uint32_t /*state*/) {}
  static void modifiers(void* /*data*/, wl_keyboard* /*keyboard*/, std::uint32_t /*serial*/,
                        std::uint32_t /*depressed*/, std::uint32_t /*latched*/,
                        std::uint32_t /*locked*/, std::uint32_t /*group*/) {}
  static void repeatInfo(void* /*data*/, wl_keyboard* /*keyboard*/, std::int32_t /*rate*/,
                         std::int32_t /*delay*/) {}
  static constexpr wl_keyboard_listener kKeyboardListener{.keymap = keymap,
                                                          .enter = keyboardEnter,
                                                          .leave = keyboardLeave,
                                                          .key = key,
                                                          .modifiers = modifiers,
                                                          .repeat_info = repeatInfo};

  static void pointerEnter(void* data, wl_pointer* /*pointer*/, std::uint32_t /*serial*/,
                           wl_surface* surface, wl_fixed_t /*x*/, wl_fixed_t /*y*/) {
    static_cast<Seat*>(data)->pointerSurface = surface;
  }
  static void pointerLeave(void* data, wl_pointer* /*pointer*/, std::uint32_t /*serial*/,
                           wl_surface* /*surface*/) {
    static_cast<Seat*>(data)->pointerSurface = nullptr;
  }
  static void motion(void* /*data*/, wl_pointer* /*pointer*/, std::uint32_t /*time*/,
                     wl_fixed_t /*x*/, wl_fixed_t /*y*/) {}
  static void button(void* data, wl_pointer* /*pointer*/, std::uint32_t serial,
                     std::uint32_t /*time*/, std::uint32_t button, std::uint32_t state) {
    const Seat& seat = *static_cast<Seat*>(data);
    if (button == kMainButton && state == WL_POINTER_BUTTON_STATE_PRESSED) {
      seat.tracker->pressButton(seat, serial);
    }
  }
  static void axis(void* /*data*/, wl_pointer* /*pointer*/, std::uint32_t /*time*/,
                   std::uint32_t /*axis*/, wl_fixed_t /*value*/) {}
  static void frame(void* /*data*/, wl_pointer* /*pointer*/) {}
  static void axisSource(void* /*data*/, wl_pointer* /*pointer*/, std::uint32_t /*source*/) {}
  static void axisStop(void* /*data*/, wl_pointer* /*pointer*/, std::uint32_t /*time*/,
                       std::uint32_t /*axis*/) {}
  static void axisDiscrete(void* /*data*/, wl_pointer* /*pointer*/, std::uint32_t /*axis*/,
                           std::int32_t /*discrete*/) {}
  static const wl_pointer_listener kPointerListener;

  static void done(void* data, wl_callback* /*callback*/, std::uint32_t /*serial*/) {
    static_cast<FocusTracker*>(data)->barrier_ = nullptr;
  }
  static constexpr wl_callback_listener kBarrierListener{.done = done};

  static void tokenDone(void* data, xdg_activation_token_v1* /*object*/, const char* token) {
    auto* const activation = static_cast<FocusTracker::Activation*>(data);
    FocusTracker& tracker = *activation->tracker;
    tracker.activate(*activation, token);
    std::erase_if(tracker.activations_,
                  [activation](const auto& entry) { return entry.get() == activation; });
  }
  static constexpr xdg_activation_token_v1_listener kTokenListener{.done = tokenDone};
};

// Later versions of libwayland add members to the listener. They stay null.
const wl_pointer_listener SeatEvents::kPointerListener = [] {
  wl_pointer_listener listener{};
  listener.enter = SeatEvents::pointerEnter;
  listener.leave = SeatEvents::pointerLeave;
  listener.motion = SeatEvents::motion;
  listener.button = SeatEvents::button;
  listener.axis = SeatEvents::axis;
  listener.frame = SeatEvents::frame;
  listener.axis_source = SeatEvents::axisSource;
  listener.axis_stop = SeatEvents::axisStop;
  listener.axis_discrete = SeatEvents::axisDiscrete;
  return listener;
}();

FocusTracker::FocusTracker(Connection& connection, ReportQueue& reports, FindWindow findWindow,
                           FindContent findContent, ButtonHandler buttonPressed)
    : connection_(connection),
      reports_(reports),
      findWindow_(std::move(findWindow)),
      findContent_(std::move(findContent)),
      buttonPressed_(std::move(buttonPressed)) {}

FocusTracker::~FocusTracker() = default;

void FocusTracker::addSeat(std::uint32_t name, Proxy<wl_seat> proxy) {
  auto seat = std::make_unique<Seat>();
  seat->tracker = this;
  seat->name = name;
  seat->proxy = std::move(proxy);
  wl_seat_add_listener(seat->proxy.get(), &SeatEvents::kSeatListener, seat.get());
  seats_.push_back(std::move(seat));
}

void FocusTracker::removeGlobal(std::uint32_t name) {
  const std::size_t removedCount = std::erase_if(seats_, [this, name](const auto& seat) {
    if (seat->name == name && serialSeat_ == seat.get()) {
      serialSeat_ = nullptr;
    }
    return seat->name == name;
  });
  if (removedCount > 0) {
    mayHaveLostFocus_ = true;
  }
}

void FocusTracker::setCapabilities(Seat& seat, std::uint32_t capabilities) {
  const bool hasKeyboard = (capabilities & WL_SEAT_CAPABILITY_KEYBOARD) != 0;
  if (hasKeyboard && seat.keyboard == nullptr) {
    seat.keyboard.reset(wl_seat_get_keyboard(seat.proxy.get()));
    wl_keyboard_add_listener(seat.keyboard.get(), &SeatEvents::kKeyboardListener, &seat);
  } else if (!hasKeyboard && seat.keyboard != nullptr) {
    seat.keyboard = nullptr;
    setKeyboardSurface(seat, nullptr, 0);
  }
  const bool hasPointer = (capabilities & WL_SEAT_CAPABILITY_POINTER) != 0;
  if (hasPointer && seat.pointer == nullptr) {
    seat.pointer.reset(wl_seat_get_pointer(seat.proxy.get()));
    wl_pointer_add_listener(seat.pointer.get(), &SeatEvents::kPointerListener, &seat);
  } else if (!hasPointer) {
    seat.pointer = nullptr;
    seat.pointerSurface = nullptr;
  }
}

// If the keyboard moves between two surfaces of a client, the compositor sends `leave` before
// `enter`. Both have arrived when the reply to `wl_display_sync`, the barrier, arrives.
void FocusTracker::setKeyboardSurface(Seat& seat, const wl_surface* surface, std::uint32_t serial) {
  seat.keyboardSurface = surface;
  if (surface != nullptr) {
    serialSeat_ = &seat;
    serial_ = serial;
    return;
  }
  mayHaveLostFocus_ = true;
  startBarrier();
}

void FocusTracker::startBarrier() {
  barrier_.reset(wl_display_sync(connection_.wrapper()));
  wl_callback_add_listener(barrier_.get(), &SeatEvents::kBarrierListener, this);
  connection_.flush();
}

void FocusTracker::coverClosed() {
  if (reportedFocus_ != WindowHandle::None && focus() == WindowHandle::None) {
    startBarrier();
  }
}

void FocusTracker::pressButton(const Seat& seat, std::uint32_t serial) {
  const WindowHandle window =
      seat.pointerSurface == nullptr ? WindowHandle::None : findWindow_(seat.pointerSurface);
  if (window != WindowHandle::None) {
    serialSeat_ = &seat;
    serial_ = serial;
    buttonPressed_(window, seat.proxy.get(), serial);
  }
}

WindowHandle FocusTracker::focus() const {
  for (const auto& seat : seats_) {
    const WindowHandle window =
        seat->keyboardSurface == nullptr ? WindowHandle::None : findWindow_(seat->keyboardSurface);
    if (window != WindowHandle::None) {
      return window;
    }
  }
  return WindowHandle::None;
}

void FocusTracker::windowAdopted(WindowHandle window) {
  if (focus() != window) {
    mayHaveLostFocus_ = hasPendingChanges_ = true;
    return;
  }
  reportedFocus_ = window;
  if (!std::exchange(isActive_, true)) {
    reports_.add(
        [window](WindowSystemDelegate& delegate) { delegate.applicationActivated(window); });
  }
}

void FocusTracker::windowRemoved(WindowHandle window) {
  std::erase_if(activations_, [window](const auto& entry) { return entry->window == window; });
  if (reportedFocus_ == window) {
    reportedFocus_ = WindowHandle::None;
    mayHaveLostFocus_ = hasPendingChanges_ = true;
  }
}

void FocusTracker::request(WindowHandle window, wl_surface* surface) {
  if (focus() == window) {
    reports_.add(window, [window](WindowSystemDelegate& delegate) { delegate.focusMoved(window); });
    return;
  }
  if (connection_.activation() == nullptr) {
    return;
  }
  auto activation = std::make_unique<Activation>();
  activation->tracker = this;
  activation->window = window;
  activation->surface = surface;
  activation->token.reset(xdg_activation_v1_get_activation_token(connection_.activation()));
  xdg_activation_token_v1* const token = activation->token.get();
  xdg_activation_token_v1_add_listener(token, &SeatEvents::kTokenListener, activation.get());
  if (serialSeat_ != nullptr) {
    xdg_activation_token_v1_set_serial(token, serial_, serialSeat_->proxy.get());
  }
  xdg_activation_token_v1_commit(token);
  activations_.push_back(std::move(activation));
}

void FocusTracker::activate(const Activation& activation, const char* token) {
  xdg_activation_v1_activate(connection_.activation(), token, activation.surface);
  connection_.flush();
}

void FocusTracker::reportChanges() {
  hasPendingChanges_ = false;
  const WindowHandle current = focus();
  if (current == WindowHandle::None && barrier_ != nullptr) {
    return;
  }
  const bool mayHaveLostFocus = std::exchange(mayHaveLostFocus_, false);
  if (mayHaveLostFocus && current == WindowHandle::None && isActive_) {
    isActive_ = false;
    reports_.add([](WindowSystemDelegate& delegate) { delegate.applicationDeactivated(); });
  }
  if (current == reportedFocus_) {
    return;
  }
  reportedFocus_ = current;
  reports_.add(current,
               [current](WindowSystemDelegate& delegate) { delegate.focusMoved(current); });
  if (current != WindowHandle::None && !std::exchange(isActive_, true)) {
    reports_.add(
        [current](WindowSystemDelegate& delegate) { delegate.applicationActivated(current); });
  }
}

}  // namespace vel::wayland
