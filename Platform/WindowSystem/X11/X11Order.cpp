// In which order the windows lie, and who has changed it.
#include <algorithm>
#include <ranges>
#include <span>
#include <utility>

#include "Platform/WindowSystem/X11/X11WindowSystem.h"

namespace vel {

using x11::eventAs;
using x11::typeOf;
using x11::Window;

// A window manager that says in which order windows lie may have put them into frames; where nobody
// says so, the windows lie beside each other and the server tells of each that is moved.
void X11WindowSystem::handleOrder(const xcb_generic_event_t& event) {
  if (windowManager_.hasOrdered(event)) {
    orderDue_ = 0;
    return;
  }
  constexpr std::uint8_t kSentByAProgram = 0x80;
  if (typeOf(event) != XCB_CONFIGURE_NOTIFY || (event.response_type & kSentByAProgram) != 0) {
    return;
  }
  const auto notice = eventAs<xcb_configure_notify_event_t>(event);
  Window* const window = find(static_cast<WindowHandle>(notice.window));
  if (window != nullptr && std::exchange(window->above, notice.above_sibling) != window->above) {
    orderDue_ = 0;
  }
}

// The listener takes the window to be in front from now on. A window manager may have another mind,
// and is given the time to act.
void X11WindowSystem::putInFront(WindowHandle window) {
  std::erase(orderTold_, window);
  orderTold_.insert(orderTold_.begin(), window);
  lookAtOrderLater();
}

void X11WindowSystem::lookAtOrderLater() {
  if (haveAnOrder()) {
    orderDue_ = std::min(orderDue_, x11::steadyNow() + x11::kTimeForWindowManager);
  }
}

// One alone is in no order.
bool X11WindowSystem::haveAnOrder() const {
  return std::ranges::count_if(windows_, [](const auto& entry) {
           return entry.second.ordered && !entry.second.miniaturized;
         }) > 1;
}

void X11WindowSystem::settleOrder(Nanoseconds now) {
  if (now < orderDue_) {
    return;
  }
  orderDue_ = kNever;
  if (!haveAnOrder()) {
    return;
  }
  std::vector<WindowHandle> windows = order();
  const auto isNamed = [&windows](WindowHandle window) {
    return std::ranges::find(windows, window) != windows.end();
  };
  std::erase_if(orderTold_, [&](WindowHandle window) { return !isNamed(window); });
  if (windows != std::exchange(orderTold_, windows)) {
    report([windows = std::move(windows)](WindowSystemDelegate& delegate) {
      delegate.orderChanged(windows);
    });
  }
}

std::vector<WindowHandle> X11WindowSystem::order() {
  auto backToFront = windowManager_.order();
  if (!backToFront) {
    const auto tree = connection_->waitForReply(
        xcb_query_tree_reply, xcb_query_tree(connection_->get(), connection_->root()), "QueryTree",
        connection_->root());
    if (tree == nullptr) {
      return {};
    }
    const std::span children(xcb_query_tree_children(tree.get()),
                             static_cast<std::size_t>(xcb_query_tree_children_length(tree.get())));
    backToFront.emplace(children.begin(), children.end());
  }
  std::vector<WindowHandle> frontToBack;
  for (const xcb_window_t id : std::views::reverse(*backToFront)) {
    const Window* const window = find(static_cast<WindowHandle>(id));
    if (window != nullptr && window->ordered && !window->miniaturized) {
      frontToBack.push_back(window->handle());
    }
  }
  return frontToBack;
}

}  // namespace vel
