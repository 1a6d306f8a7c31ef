#include "Platform/Dispatch/Dispatch.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace vel {

DispatchQueue::DispatchQueue() { NSRunLoop::mainRunLoop().setMainQueueSource(this); }

// The caller must hold the lock.
void DispatchQueue::updateNextDeadline() {
  Nanoseconds next = kNever;
  if (!immediateTasks_.empty()) {
    next = immediateTasks_.front().sortKey.deadline;
  }
  if (!delayedTasks_.empty()) {
    next = std::min(next, delayedTasks_.begin()->sortKey.deadline);
  }
  nextDeadline_ = next;
}

void DispatchQueue::submit(dispatch_time_t deadline, Work work, std::string_view label) {
  bool isEarliest = false;
  {
    const std::scoped_lock lock(mutex_);
    if (deadline == kDispatchTimeNow) {
      // The clock is read under the lock, so that the deadlines follow the order of submission.
      deadline = NSRunLoop::mainRunLoop().now();
      immediateTasks_.push_back({{deadline, submissionCount_++}, label, std::move(work)});
    } else {
      delayedTasks_.insert({{deadline, submissionCount_++}, label, std::move(work)});
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

void DispatchQueue::takeDueTasks() {
  if (nextDeadline_ == kNever) {
    return;  // an empty queue needs neither the lock nor the clock
  }
  const std::scoped_lock lock(mutex_);
  auto immediateTask = immediateTasks_.begin();
  if (!delayedTasks_.empty()) {
    const Nanoseconds now = NSRunLoop::mainRunLoop().now();
    while (!delayedTasks_.empty() && delayedTasks_.begin()->sortKey.deadline <= now) {
      auto delayedTask = delayedTasks_.extract(delayedTasks_.begin());
      for (; immediateTask != immediateTasks_.end() && *immediateTask < delayedTask.value();
           ++immediateTask) {
        dueTasks_.push_back(std::move(*immediateTask));
      }
      dueTasks_.push_back(std::move(delayedTask.value()));
    }
  }
  if (dueTasks_.empty()) {
    dueTasks_.swap(immediateTasks_);
  } else {
    std::move(immediateTask, immediateTasks_.end(), std::back_inserter(dueTasks_));
    immediateTasks_.clear();
  }
  updateNextDeadline();
}

bool DispatchQueue::deliver() {
  takeDueTasks();
  bool hasRunWork = false;
  while (nextDueTask_ < dueTasks_.size()) {
    hasRunWork = true;
    // `exchange` empties the task: a moved-from std::function may still hold what it captured.
    const Work work = std::exchange(dueTasks_[nextDueTask_++].work, nullptr);
    work();
  }
  dueTasks_.clear();
  nextDueTask_ = 0;
  return hasRunWork;
}

std::size_t DispatchQueue::pendingWorkCount() const {
  const std::scoped_lock lock(mutex_);
  return immediateTasks_.size() + delayedTasks_.size() + (dueTasks_.size() - nextDueTask_);
}

std::vector<DispatchQueue::PendingWork> DispatchQueue::pendingWork() const {
  const std::scoped_lock lock(mutex_);
  std::vector<PendingWork> result;
  const auto add = [&result](const Task& task) {
    result.push_back({task.sortKey.deadline, task.label});
  };
  for (std::size_t index = nextDueTask_; index < dueTasks_.size(); ++index) {
    add(dueTasks_[index]);
  }
  auto delayedTask = delayedTasks_.begin();
  for (const Task& task : immediateTasks_) {
    for (; delayedTask != delayedTasks_.end() && *delayedTask < task; ++delayedTask) {
      add(*delayedTask);
    }
    add(task);
  }
  for (; delayedTask != delayedTasks_.end(); ++delayedTask) {
    add(*delayedTask);
  }
  return result;
}

std::string DispatchQueue::describePending() const {
  std::string text;
  for (const PendingWork& work : pendingWork()) {
    text += "\n  at " + std::to_string(work.deadline) +
            " ns, work: " + (work.label.empty() ? "no label" : std::string(work.label));
  }
  return text;
}

void DispatchQueue::removeAll() {
  // Declared before the lock, so that the work is destroyed after the lock is released: the
  // destructor of a captured object may use this queue.
  std::vector<Task> immediateTasks;
  std::set<Task> delayedTasks;
  std::vector<Task> dueTasks;
  const std::scoped_lock lock(mutex_);
  immediateTasks.swap(immediateTasks_);
  delayedTasks.swap(delayedTasks_);
  dueTasks.swap(dueTasks_);
  nextDueTask_ = 0;
  updateNextDeadline();
}

DispatchQueue& dispatch_get_main_queue() {
  // Never destroyed: other threads may submit work while the process exits.
  static auto& queue = *new DispatchQueue();
  return queue;
}

dispatch_time_t dispatch_time(dispatch_time_t when, std::int64_t delta) {
  const Nanoseconds base = when == kDispatchTimeNow ? NSRunLoop::mainRunLoop().now() : when;
  if (delta > 0 && base > kNever - delta) {
    return kNever;
  }
  if (delta < 0 && base < -kNever - delta) {
    return -kNever;
  }
  return base + delta;
}

void dispatch_async(DispatchQueue& queue, DispatchQueue::Work work) {
  queue.submit(kDispatchTimeNow, std::move(work));
}

void dispatch_async(DispatchQueue& queue, std::string_view label, DispatchQueue::Work work) {
  queue.submit(kDispatchTimeNow, std::move(work), label);
}

void dispatch_after(dispatch_time_t when, DispatchQueue& queue, DispatchQueue::Work work) {
  queue.submit(when, std::move(work));
}

void dispatch_after(dispatch_time_t when, DispatchQueue& queue, std::string_view label,
                    DispatchQueue::Work work) {
  queue.submit(when, std::move(work), label);
}

}  // namespace vel
