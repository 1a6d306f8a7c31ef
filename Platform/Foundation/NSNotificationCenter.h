#pragma once

#include <atomic>
#include <cstddef>
#include <list>
#include <mutex>
#include <string>
#include <utility>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSNotification.h"

namespace vel {

/// Delivers notifications to observers. `postNotificationNameObject` calls the observers on the
/// calling thread, in the order of registration, and returns after the last call. The centre holds
/// no lock while it calls an observer, and does not keep observers alive. Any thread may use the
/// centre.
class VEL_EXPORT NSNotificationCenter {
 public:
  /// The centre of the process. `NSApplication` posts its notifications to this centre.
  static NSNotificationCenter& defaultCenter();

  /// Registers `observer` for notifications with this name and object. If `object` is null,
  /// registers `observer` for all notifications with this name. Example:
  /// `addObserverSelectorNameObject<&Player::windowDidBecomeKey>(self(), name, nullptr)`. An
  /// observer that is registered twice receives each notification twice. Ignores a null observer.
  template <auto Selector, class Observer>
  void addObserverSelectorNameObject(const Strong<Observer>& observer, NSNotificationName name,
                                     const Strong<NSObject>& object) {
    if (observer != nullptr) {
      addRegistration(name, {.observer = observer,
                             .observerAddress = observer.get(),
                             .object = object.get(),
                             .callout = [](NSObject& receiver, const NSNotification& notification) {
                               (static_cast<Observer&>(receiver).*Selector)(notification);
                             }});
    }
  }

  /// Removes every registration of `observer`. A post in progress no longer calls the observer. The
  /// observer's destructor may call this function.
  void removeObserver(const NSObject* observer);

  /// Removes every registration of every observer. A post in progress calls no further observer.
  void removeAllObservers();

  /// The number of registrations of `observer`.
  [[nodiscard]] std::size_t registrationCount(const NSObject* observer);

  /// Calls the observers that are registered for this name and object. Does not call an observer
  /// that is added during the post, or one that is removed before its turn. `object` may be null.
  void postNotificationNameObject(NSNotificationName name, Strong<NSObject> object);

 private:
  struct Registration {
    Weak<NSObject> observer;
    // The next two pointers are compared but never dereferenced. `observerAddress` is necessary
    // because `observer` is already null in the observer's destructor.
    const NSObject* observerAddress = nullptr;
    const NSObject* object = nullptr;  // null matches every object
    void (*callout)(NSObject&, const NSNotification&) = nullptr;
  };
  /// A removed entry stays in its list until no post is in progress.
  struct Entry {
    explicit Entry(Registration newRegistration) : registration(std::move(newRegistration)) {}
    Registration registration;
    std::atomic<bool> isRemoved = false;
  };
  /// The registrations for one notification name.
  struct Topic {
    explicit Topic(NSNotificationName newName) : name(newName) {}
    std::string name;
    std::list<Entry> entries;
  };

  void addRegistration(NSNotificationName name, Registration registration);
  [[nodiscard]] Topic* findTopic(NSNotificationName name);
  void eraseRemovedEntries();

  std::mutex mutex_;
  std::list<Topic> topics_;
  // The number of posts in progress. A post iterates over a list without the lock. No entry may be
  // erased until this number is 0.
  std::atomic<std::size_t> runningPosts_ = 0;
  std::atomic<bool> hasRemovedEntries_ = false;
};

}  // namespace vel
