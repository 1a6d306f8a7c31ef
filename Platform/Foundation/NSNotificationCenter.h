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

/// Tells observers of notifications, synchronously on the posting thread, in the order of
/// registration. Observers are not kept alive. Callable from any thread; no lock is held while an
/// observer is told.
class VEL_EXPORT NSNotificationCenter {
 public:
  /// The centre that the platform posts to.
  static NSNotificationCenter& defaultCenter();

  /// Registers `observer` for notifications of that name, from `object` or, with none, from
  /// anybody: `addObserverSelectorNameObject<&Player::windowDidBecomeKey>(self(), name, nullptr)`.
  /// A second registration of the same observer is told a second time. No observer: nothing
  /// happens.
  template <auto Selector, class Observer>
  void addObserverSelectorNameObject(const Strong<Observer>& observer, NSNotificationName name,
                                     const Strong<NSObject>& object) {
    if (observer != nullptr) {
      add(name, {.observer = observer,
                 .identity = observer.get(),
                 .object = object.get(),
                 .callout = [](NSObject& receiver, const NSNotification& notification) {
                   (static_cast<Observer&>(receiver).*Selector)(notification);
                 }});
    }
  }

  /// Ends every registration of `observer`, which may be under destruction. A post in progress does
  /// not reach it any more.
  void removeObserver(const NSObject* observer);

  /// Ends every registration. A post in progress reaches no further observer.
  void removeAllObservers();

  /// How many registrations of `observer` stand.
  [[nodiscard]] std::size_t registrationCount(const NSObject* observer);

  /// Posts to the registrations that stand now, less those removed meanwhile.
  void postNotificationNameObject(NSNotificationName name, Strong<NSObject> object);

 private:
  struct Registration {
    Weak<NSObject> observer;
    const NSObject* identity = nullptr;
    const NSObject* object = nullptr;
    void (*callout)(NSObject&, const NSNotification&) = nullptr;
  };
  /// A registration in its place; it stays there while a post walks past it.
  struct Entry {
    explicit Entry(Registration given) : registration(std::move(given)) {}
    Registration registration;
    std::atomic<bool> removed = false;
  };
  struct Topic {
    explicit Topic(NSNotificationName given) : name(given) {}
    std::string name;
    std::list<Entry> entries;
  };

  void add(NSNotificationName name, Registration registration);
  [[nodiscard]] Topic* find(NSNotificationName name);
  void sweep();

  std::mutex mutex_;
  std::list<Topic> topics_;
  // Posts under way. While there is one, entries are only added at the end and marked as removed,
  // so that a post walks without the lock.
  std::atomic<std::size_t> posts_ = 0;
  std::atomic<bool> needsSweep_ = false;
};

}  // namespace vel
