#include "Platform/WindowSystem/ReportQueue.h"

#include <utility>

namespace vel {

ReportQueue::ReportQueue() : state_(std::make_shared<State>()) {}

// Ends a delivery in progress.
ReportQueue::~ReportQueue() { state_->entries.clear(); }

void ReportQueue::setDelegate(WindowSystemDelegate* delegate) { state_->delegate = delegate; }

void ReportQueue::add(Report report) { add(WindowHandle::None, std::move(report)); }

void ReportQueue::add(WindowHandle window, Report report) {
  state_->entries.push_back({window, std::move(report)});
}

void ReportQueue::removeReports(WindowHandle window) {
  std::erase_if(state_->entries, [window](const Entry& entry) { return entry.window == window; });
}

bool ReportQueue::isEmpty() const { return state_->entries.empty(); }

bool ReportQueue::deliver() {
  const std::shared_ptr<State> state = state_;
  bool hasDelivered = false;
  while (!state->entries.empty()) {
    const Entry entry = std::move(state->entries.front());
    state->entries.pop_front();
    if (state->delegate != nullptr) {
      entry.report(*state->delegate);  // may destroy this object
    }
    hasDelivered = true;
  }
  return hasDelivered;
}

}  // namespace vel
