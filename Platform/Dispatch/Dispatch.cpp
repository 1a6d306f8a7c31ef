#include "Platform/Dispatch/Dispatch.h"

#include <algorithm>
#include <utility>

namespace vel {

DispatchQueue::DispatchQueue() { NSRunLoop::mainRunLoop().setMainQueueSource(this); }

bool DispatchQueue::later(const Task& left, const Task& right) {
  return left.deadline != right.deadline ? left.deadline > right.deadline
                                         : left.order > right.order;
}

void DispatchQueue::noteNextDeadline() {
  nextDeadline_ = tasks_.empty() ? kNever : tasks_.front().deadline;
}

void DispatchQueue::submit(dispatch_time_t deadline, Work work) {
  bool first = false;
  {
    const std::scoped_lock lock(mutex_);
    tasks_.push_back({deadline, submitted_++, std::move(work)});
    std::ranges::push_heap(tasks_, later);
    first = deadline < nextDeadline_;
    noteNextDeadline();
  }
  if (first) {
    NSRunLoop::mainRunLoop().wake();
  }
}

void DispatchQueue::takeDue() {
  if (nextDeadline_ == kNever) {
    return;  // the usual case costs no reading of the clock
  }
  const Nanoseconds now = NSRunLoop::mainRunLoop().now();
  const std::scoped_lock lock(mutex_);
  while (!tasks_.empty() && tasks_.front().deadline <= now) {
    std::ranges::pop_heap(tasks_, later);
    due_.push_back(std::move(tasks_.back()));
    tasks_.pop_back();
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
  return tasks_.size() + (due_.size() - next_);
}

std::vector<DispatchQueue::Pending> DispatchQueue::pending() const {
  const std::scoped_lock lock(mutex_);
  std::vector<const Task*> tasks;
  for (std::size_t index = next_; index < due_.size(); ++index) {
    tasks.push_back(&due_[index]);
  }
  const auto waiting = static_cast<std::ptrdiff_t>(tasks.size());
  for (const Task& task : tasks_) {
    tasks.push_back(&task);
  }
  std::sort(tasks.begin() + waiting, tasks.end(),
            [](const Task* left, const Task* right) { return later(*right, *left); });
  std::vector<Pending> pending;
  pending.reserve(tasks.size());
  for (const Task* task : tasks) {
    pending.push_back({task->deadline, &task->work.target_type()});
  }
  return pending;
}

void DispatchQueue::removeAll() {
  std::vector<Task> dropped;
  std::vector<Task> droppedDue;
  const std::scoped_lock lock(mutex_);
  dropped.swap(tasks_);
  droppedDue.swap(due_);
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
  queue.submit(NSRunLoop::mainRunLoop().now(), std::move(work));
}

void dispatch_after(dispatch_time_t when, DispatchQueue& queue, DispatchQueue::Work work) {
  queue.submit(dispatch_time(when, 0), std::move(work));
}

}  // namespace vel
