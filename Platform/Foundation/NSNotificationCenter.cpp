#include "Platform/Foundation/NSNotificationCenter.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "Platform/Foundation/NonCopyable.h"

namespace vel {

NSNotificationCenter& NSNotificationCenter::defaultCenter() {
  // Never destroyed: observers may remove themselves while the process exits.
  static auto& center = *new NSNotificationCenter();
  return center;
}

NSNotificationCenter::Topic* NSNotificationCenter::find(NSNotificationName name) {
  const auto found = std::ranges::find(topics_, name, &Topic::name);
  return found == topics_.end() ? nullptr : &*found;
}

void NSNotificationCenter::add(NSNotificationName name, Registration registration) {
  const std::scoped_lock lock(mutex_);
  Topic* topic = find(name);
  if (topic == nullptr) {
    topic = &topics_.emplace_back(name);
  }
  topic->entries.emplace_back(std::move(registration));
}

void NSNotificationCenter::removeObserver(const NSObject* observer) {
  if (observer == nullptr) {
    return;
  }
  const std::scoped_lock lock(mutex_);
  for (Topic& topic : topics_) {
    for (Entry& entry : topic.entries) {
      if (entry.registration.identity == observer) {
        entry.removed = true;
        needsSweep_ = true;
      }
    }
  }
  sweep();
}

void NSNotificationCenter::removeAllObservers() {
  const std::scoped_lock lock(mutex_);
  for (Topic& topic : topics_) {
    for (Entry& entry : topic.entries) {
      entry.removed = true;
      needsSweep_ = true;
    }
  }
  sweep();
}

std::size_t NSNotificationCenter::registrationCount(const NSObject* observer) {
  const std::scoped_lock lock(mutex_);
  std::ptrdiff_t count = 0;
  for (const Topic& topic : topics_) {
    count += std::ranges::count_if(topic.entries, [observer](const Entry& entry) {
      return !entry.removed && entry.registration.identity == observer;
    });
  }
  return static_cast<std::size_t>(count);
}

void NSNotificationCenter::postNotificationNameObject(NSNotificationName name,
                                                      Strong<NSObject> object) {
  std::unique_lock lock(mutex_);
  Topic* const topic = find(name);
  if (topic == nullptr || topic->entries.empty()) {
    return;
  }
  auto entry = topic->entries.begin();
  const auto last = std::prev(topic->entries.end());  // the post does not reach later additions
  struct PostScope : NonCopyable {
    explicit PostScope(NSNotificationCenter& owner) : center(owner) { ++center.posts_; }
    ~PostScope() {
      if (--center.posts_ == 0 && center.needsSweep_) {
        const std::scoped_lock again(center.mutex_);
        center.sweep();
      }
    }
    NSNotificationCenter& center;
  } const scope(*this);
  lock.unlock();

  const NSObject* const sender = object.get();
  const auto notification = NSNotification::initWithNameObject(name, std::move(object));
  for (;; ++entry) {
    const Registration& registration = entry->registration;
    if (!entry->removed && (registration.object == nullptr || registration.object == sender)) {
      if (const Strong<NSObject> observer = registration.observer.lock()) {
        registration.callout(*observer, notification);
      }
    }
    if (entry == last) {
      return;
    }
  }
}

// The caller holds the lock.
void NSNotificationCenter::sweep() {
  if (posts_ > 0 || !needsSweep_) {
    return;
  }
  needsSweep_ = false;
  for (Topic& topic : topics_) {
    std::erase_if(topic.entries, [](const Entry& entry) { return entry.removed.load(); });
  }
}

}  // namespace vel
