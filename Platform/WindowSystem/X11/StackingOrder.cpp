#include "Platform/WindowSystem/X11/StackingOrder.h"

#include <algorithm>
#include <ranges>
#include <span>
#include <utility>

#include "Platform/WindowSystem/X11/Requests.h"

namespace vel::x11 {

StackingOrder::StackingOrder(Connection& connection, WindowManager& windowManager,
                             WindowTable& windows, ReportQueue& reports)
    : connection_(connection),
      windowManager_(windowManager),
      windows_(windows),
      reports_(reports) {}

void StackingOrder::handle(const xcb_generic_event_t& event) {
  if (windowManager_.isStackingChange(event)) {
    deadline_ = 0;  // the next `check` reads the order
    return;
  }
  // The server's ConfigureNotify events contain the sibling that is directly below the window. The
  // window manager's ConfigureNotify events do not contain a sibling.
  if (typeOf(event) != XCB_CONFIGURE_NOTIFY || isSentByClient(event)) {
    return;
  }
  const auto notice = eventAs<xcb_configure_notify_event_t>(event);
  Window* const window = windows_.find(notice.window);
  if (window != nullptr &&
      std::exchange(window->siblingBelow, notice.above_sibling) != notice.above_sibling) {
    deadline_ = 0;
  }
}

void StackingOrder::assumeInFront(WindowHandle window) {
  std::erase(reportedOrder_, window);
  reportedOrder_.insert(reportedOrder_.begin(), window);
  scheduleCheck();
}

void StackingOrder::scheduleCheck() {
  if (hasSeveralWindows()) {
    deadline_ = std::min(deadline_, steadyNow() + kWindowManagerDelay);
  }
}

// A single window has no stacking order.
bool StackingOrder::hasSeveralWindows() const {
  return std::ranges::count_if(windows_,
                               [](const auto& entry) { return entry.second.isOnScreen(); }) > 1;
}

void StackingOrder::check(Nanoseconds now) {
  if (now < deadline_) {
    return;
  }
  deadline_ = kNever;
  if (!hasSeveralWindows()) {
    return;
  }
  std::vector<WindowHandle> order = readOrder();
  // A window that has left the screen does not change the order of the remaining windows.
  std::erase_if(reportedOrder_, [&order](WindowHandle window) {
    return std::ranges::find(order, window) == order.end();
  });
  if (std::exchange(reportedOrder_, order) != order) {
    reports_.add([order = std::move(order)](WindowSystemDelegate& delegate) {
      delegate.orderChanged(order);
    });
  }
}

// The windows on screen, front to back.
std::vector<WindowHandle> StackingOrder::readOrder() {
  const auto publishedOrder = windowManager_.readStackingOrder();
  const std::vector<xcb_window_t> backToFront =
      publishedOrder ? *publishedOrder : readRootChildren();
  std::vector<WindowHandle> frontToBack;
  for (const xcb_window_t id : std::views::reverse(backToFront)) {
    const Window* const window = windows_.find(id);
    if (window != nullptr && window->isOnScreen()) {
      frontToBack.push_back(window->handle());
    }
  }
  return frontToBack;
}

std::vector<xcb_window_t> StackingOrder::readRootChildren() {
  const auto tree = queryTree(connection_, connection_.root());
  const std::span<const xcb_window_t> children = childrenOf(tree);
  return {children.begin(), children.end()};
}

}  // namespace vel::x11
