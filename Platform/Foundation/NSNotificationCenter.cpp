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

NSNotificationCenter::Topic* NSNotificationCenter::findTopic(NSNotificationName name) {
  const auto topic = std::ranges::find(topics_, name, &Topic::name);
  return topic == topics_.end() ? nullptr : &*topic;
}

void NSNotificationCenter::addRegistration(NSNotificationName name, Registration registration) {
  const std::scoped_lock lock(mutex_);
  Topic* topic = findTopic(name);
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
      if (entry.registration.observerAddress == observer) {
        entry.isRemoved = true;
        hasRemovedEntries_ = true;
      }
    }
  }
  eraseRemovedEntries();
}

void NSNotificationCenter::removeAllObservers() {
  const std::scoped_lock lock(mutex_);
  for (Topic& topic : topics_) {
    for (Entry& entry : topic.entries) {
      entry.isRemoved = true;
      hasRemovedEntries_ = true;
    }
  }
  eraseRemovedEntries();
}

std::size_t NSNotificationCenter::registrationCount(const NSObject* observer) {
  const std::scoped_lock lock(mutex_);
  std::ptrdiff_t count = 0;
  for (const Topic& topic : topics_) {
    count += std::ranges::count_if(topic.entries, [observer](const Entry& entry) {
      return !entry.isRemoved && entry.registration.observerAddress == observer;
    });
  }
  return static_cast<std::size_t>(count);
}

void NSNotificationCenter::postNotificationNameObject(NSNotificationName name,
                                                      Strong<NSObject> object) {
  std::unique_lock lock(mutex_);
  Topic* const topic = findTopic(name);
  if (topic == nullptr || topic->entries.empty()) {
    return;
  }
  auto entry = topic->entries.begin();
  // Entries that are added during this post come after `lastEntry`. The loop below ignores
  // them.
  const auto lastEntry = std::prev(topic->entries.end());
  struct RunningPost : NonCopyable {
    explicit RunningPost(NSNotificationCenter& owner) : center(owner) { ++center.runningPosts_; }
    ~RunningPost() {
      if (--center.runningPosts_ == 0 && center.hasRemovedEntries_) {
        const std::scoped_lock centerLock(center.mutex_);
        center.eraseRemovedEntries();
      }
    }
    NSNotificationCenter& center;
  } const runningPost(*this);
  lock.unlock();

  const NSObject* const objectAddress = object.get();
  const auto notification = NSNotification::initWithNameObject(name, std::move(object));
  for (;; ++entry) {
    const Registration& registration = entry->registration;
    if (!entry->isRemoved &&
        (registration.object == nullptr || registration.object == objectAddress)) {
      if (const Strong<NSObject> observer = registration.observer.lock()) {
        registration.callout(*observer, notification);
      }
    }
    if (entry == lastEntry) {
      return;
    }
  }
}

// The caller must hold `mutex_`.
void NSNotificationCenter::eraseRemovedEntries() {
  if (runningPosts_ > 0 || !hasRemovedEntries_) {
    return;
  }
  hasRemovedEntries_ = false;
  for (Topic& topic : topics_) {
    std::erase_if(topic.entries, [](const Entry& entry) { return entry.isRemoved.load(); });
  }
}

}  // namespace vel
