#include "Platform/Dispatch/Dispatch.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace vel {

DispatchQueue::DispatchQueue() { NSRunLoop::mainRunLoop().setMainQueueSource(this); }

// The caller holds the lock.
void DispatchQueue::updateNextDeadline() {
  Nanoseconds next = kNever;
  if (!immediate_.empty()) {
    next = immediate_.front().place.deadline;
  }
  if (!delayed_.empty()) {
    next = std::min(next, delayed_.begin()->place.deadline);
  }
  nextDeadline_ = next;
}

void DispatchQueue::submit(dispatch_time_t deadline, Work work, std::string_view label) {
  bool isEarliest = false;
  {
    const std::scoped_lock lock(mutex_);
    if (deadline == DISPATCH_TIME_NOW) {
      // The clock is read under the lock, so that the deadlines follow the order of submission.
      deadline = NSRunLoop::mainRunLoop().now();
      immediate_.push_back({{deadline, submissions_++}, label, std::move(work)});
    } else {
      delayed_.insert({{deadline, submissions_++}, label, std::move(work)});
    }
    isEarliest = deadline < nextDeadline_;
    if (isEarliest) {
      nextDeadline_ = deadline;
    }
  }
  if (isEarliest) {
    NSRunLoop::mainRunLoop().wake();
  }
}

void DispatchQueue::takeDue() {
  if (nextDeadline_ == kNever) {
    return;  // an empty queue costs neither the lock nor a reading of the clock
  }
  const std::scoped_lock lock(mutex_);
  auto immediate = immediate_.begin();
  if (!delayed_.empty()) {
    const Nanoseconds now = NSRunLoop::mainRunLoop().now();
    while (!delayed_.empty() && delayed_.begin()->place.deadline <= now) {
      auto delayed = delayed_.extract(delayed_.begin());
      for (; immediate != immediate_.end() && *immediate < delayed.value(); ++immediate) {
        due_.push_back(std::move(*immediate));
      }
      due_.push_back(std::move(delayed.value()));
    }
  }
  if (due_.empty()) {
    due_.swap(immediate_);
  } else {
    std::move(immediate, immediate_.end(), std::back_inserter(due_));
    immediate_.clear();
  }
  updateNextDeadline();
}

bool DispatchQueue::deliver() {
  takeDue();
  bool hasRun = false;
  while (next_ < due_.size()) {
    hasRun = true;
    // Emptied, not only moved from: a moved-from std::function may still hold what it captured.
    const Work work = std::exchange(due_[next_++].work, nullptr);
    work();
  }
  due_.clear();
  next_ = 0;
  return hasRun;
}

std::size_t DispatchQueue::pendingCount() const {
  const std::scoped_lock lock(mutex_);
  return immediate_.size() + delayed_.size() + (due_.size() - next_);
}

std::vector<DispatchQueue::Pending> DispatchQueue::pending() const {
  const std::scoped_lock lock(mutex_);
  std::vector<Pending> pending;
  const auto add = [&pending](const Task& task) {
    pending.push_back({task.place.deadline, task.label});
  };
  for (std::size_t index = next_; index < due_.size(); ++index) {
    add(due_[index]);
  }
  auto delayed = delayed_.begin();
  for (const Task& task : immediate_) {
    for (; delayed != delayed_.end() && *delayed < task; ++delayed) {
      add(*delayed);
    }
    add(task);
  }
  for (; delayed != delayed_.end(); ++delayed) {
    add(*delayed);
  }
  return pending;
}

std::string DispatchQueue::describePending() const {
  std::string text;
  for (const Pending& work : pending()) {
    text += "\n  at " + std::to_string(work.deadline) +
            " ns, work: " + (work.label.empty() ? "no label" : std::string(work.label));
  }
  return text;
}

void DispatchQueue::removeAll() {
  // Declared before the lock, so that the work is destroyed after the lock is released: the
  // destructor of a captured object may use this queue.
  std::vector<Task> immediate;
  std::set<Task> delayed;
  std::vector<Task> due;
  const std::scoped_lock lock(mutex_);
  immediate.swap(immediate_);
  delayed.swap(delayed_);
  due.swap(due_);
  next_ = 0;
  updateNextDeadline();
}

DispatchQueue& dispatch_get_main_queue() {
  // Never destroyed: other threads may submit work while the process exits.
  static auto& queue = *new DispatchQueue();
  return queue;
}

dispatch_time_t dispatch_time(dispatch_time_t when, std::int64_t delta) {
  const Nanoseconds base = when == DISPATCH_TIME_NOW ? NSRunLoop::mainRunLoop().now() : when;
  if (delta > 0 && base > kNever - delta) {
    return kNever;
  }
  if (delta < 0 && base < -kNever - delta) {
    return -kNever;
  }
  return base + delta;
}

void dispatch_async(DispatchQueue& queue, DispatchQueue::Work work) {
  queue.submit(DISPATCH_TIME_NOW, std::move(work));
}

void dispatch_async(DispatchQueue& queue, std::string_view label, DispatchQueue::Work work) {
  queue.submit(DISPATCH_TIME_NOW, std::move(work), label);
}

void dispatch_after(dispatch_time_t when, DispatchQueue& queue, DispatchQueue::Work work) {
  queue.submit(when, std::move(work));
}

void dispatch_after(dispatch_time_t when, DispatchQueue& queue, std::string_view label,
                    DispatchQueue::Work work) {
  queue.submit(when, std::move(work), label);
}

}  // namespace vel
