#include "Platform/Dispatch/Dispatch.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace vel {

DispatchQueue::DispatchQueue() { NSRunLoop::mainRunLoop().setMainQueueSource(this); }

void DispatchQueue::noteNextDeadline() {
  Nanoseconds next = kNever;
  if (!arrived_.empty()) {
    next = arrived_.front().place.deadline;
  }
  if (!later_.empty()) {
    next = std::min(next, later_.begin()->first.deadline);
  }
  nextDeadline_ = next;
}

void DispatchQueue::submit(dispatch_time_t deadline, Work work) {
  bool first = false;
  {
    const std::scoped_lock lock(mutex_);
    if (deadline == DISPATCH_TIME_NOW) {
      // Read under the lock: what is submitted later has a later deadline.
      deadline = NSRunLoop::mainRunLoop().now();
      arrived_.emplace_back(Place{deadline, submitted_++}, std::move(work));
    } else {
      later_.emplace(Place{deadline, submitted_++}, std::move(work));
    }
    first = deadline < nextDeadline_;
    if (first) {
      nextDeadline_ = deadline;
    }
  }
  if (first) {
    NSRunLoop::mainRunLoop().wake();
  }
}

void DispatchQueue::takeDue() {
  if (nextDeadline_ == kNever) {
    return;  // the usual case costs neither the lock nor a reading of the clock
  }
  const std::scoped_lock lock(mutex_);
  auto arrived = arrived_.begin();
  if (!later_.empty()) {
    const Nanoseconds now = NSRunLoop::mainRunLoop().now();
    while (!later_.empty() && later_.begin()->first.deadline <= now) {
      auto later = later_.extract(later_.begin());
      for (; arrived != arrived_.end() && arrived->place < later.key(); ++arrived) {
        due_.push_back(std::move(*arrived));
      }
      due_.emplace_back(later.key(), std::move(later.mapped()));
    }
  }
  if (due_.empty()) {
    due_.swap(arrived_);
  } else {
    std::move(arrived, arrived_.end(), std::back_inserter(due_));
    arrived_.clear();
  }
  noteNextDeadline();
}

bool DispatchQueue::deliver() {
  takeDue();
  bool ran = false;
  while (next_ < due_.size()) {
    ran = true;
    const Work work = std::move(due_[next_++].work);
    work();
  }
  due_.clear();
  next_ = 0;
  return ran;
}

std::size_t DispatchQueue::pendingCount() const {
  const std::scoped_lock lock(mutex_);
  return arrived_.size() + later_.size() + (due_.size() - next_);
}

std::vector<DispatchQueue::Pending> DispatchQueue::pending() const {
  const std::scoped_lock lock(mutex_);
  std::vector<Pending> pending;
  const auto add = [&pending](const Place& place, const Work& work) {
    pending.push_back({place.deadline, &work.target_type()});
  };
  for (std::size_t index = next_; index < due_.size(); ++index) {
    add(due_[index].place, due_[index].work);
  }
  auto later = later_.begin();
  for (const Task& task : arrived_) {
    for (; later != later_.end() && later->first < task.place; ++later) {
      add(later->first, later->second);
    }
    add(task.place, task.work);
  }
  for (; later != later_.end(); ++later) {
    add(later->first, later->second);
  }
  return pending;
}

void DispatchQueue::removeAll() {
  // What the work held dies after the lock is given back: it may come back here.
  std::vector<Task> arrived;
  std::map<Place, Work> later;
  std::vector<Task> due;
  const std::scoped_lock lock(mutex_);
  arrived.swap(arrived_);
  later.swap(later_);
  due.swap(due_);
  next_ = 0;
  noteNextDeadline();
}

DispatchQueue& dispatch_get_main_queue() {
  // Never destroyed: other threads may submit work while the process ends.
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

void dispatch_after(dispatch_time_t when, DispatchQueue& queue, DispatchQueue::Work work) {
  queue.submit(when, std::move(work));
}

}  // namespace vel
