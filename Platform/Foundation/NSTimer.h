#pragma once

#include <cstdint>
#include <type_traits>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NSObject.h"
#include "Platform/Foundation/Time.h"

namespace vel {

/// A mode of the run loop. A timer fires only in the modes that it was added for.
enum class NSRunLoopMode : std::uint8_t { Default = 1, ModalPanel = 2, EventTracking = 4 };

inline constexpr NSRunLoopMode NSDefaultRunLoopMode = NSRunLoopMode::Default;
inline constexpr NSRunLoopMode NSModalPanelRunLoopMode = NSRunLoopMode::ModalPanel;
inline constexpr NSRunLoopMode NSEventTrackingRunLoopMode = NSRunLoopMode::EventTracking;

/// A timer of the run loop. It calls an operation of its target after an interval, once or
/// repeatedly. The timer holds a strong reference to its target while the timer is valid and
/// during each call. Only the main thread may use a scheduled timer.
class VEL_EXPORT NSTimer final : public Class<NSTimer, "NSTimer"> {
 public:
  /// Calls the timer's operation on the target.
  using Callout = void (*)(NSObject& target, NSTimer& timer);

  /// Makes a timer that is not scheduled. `firstFireDate` is a time on the run loop's clock.
  NSTimer(Nanoseconds firstFireDate, Nanoseconds interval, bool repeats, Strong<NSObject> target,
          Callout callout);

  /// Makes a timer. On the main thread, schedules the timer on the run loop in the default mode. On
  /// another thread, does not schedule the timer. The interval is in seconds; 0 or less means 0.1
  /// ms.
  ///
  ///     NSTimer::scheduledTimerWithTimeIntervalTargetSelectorRepeats<&Player::tick>(0.1, self(),
  ///                                                                                 true);
  template <auto Selector, class Target>
  static Strong<NSTimer> scheduledTimerWithTimeIntervalTargetSelectorRepeats(
      double interval, const Strong<Target>& target, bool repeats) {
    return schedule(interval, target, repeats, [](NSObject& receiver, NSTimer& timer) {
      if constexpr (std::is_invocable_v<decltype(Selector), Target&, NSTimer&>) {
        (static_cast<Target&>(receiver).*Selector)(timer);
      } else {
        (static_cast<Target&>(receiver).*Selector)();
      }
    });
  }

  /// False after `invalidate`. A timer that does not repeat becomes invalid just before it calls
  /// its target.
  [[nodiscard]] bool isValid() const { return isValid_; }
  /// Ends the timer and releases its target. Does nothing if the timer is invalid.
  void invalidate();
  /// The time on the run loop's clock at which the timer fires next.
  [[nodiscard]] Nanoseconds fireDate() const { return fireDate_; }
  /// The target. Null if the timer is invalid.
  [[nodiscard]] const Strong<NSObject>& target() const { return target_; }

 private:
  friend class NSRunLoop;

  static Strong<NSTimer> schedule(double interval, Strong<NSObject> target, bool repeats,
                                  Callout callout);
  // Adds whole intervals to the fire date until it is later than `now`. A late call thus does not
  // shift the later fire dates.
  void advanceFireDate(Nanoseconds now);
  // Calls the target. The caller must hold a strong reference to the timer.
  void fire();

  Nanoseconds firstFireDate_;
  Nanoseconds fireDate_;
  Nanoseconds interval_;
  bool repeats_;
  bool isValid_ = true;
  bool isFiring_ = false;
  Strong<NSObject> target_;
  Callout callout_;
  // The run loop sets these two members.
  std::uint8_t modes_ = 0;   // the modes in which the timer fires, as bits of `NSRunLoopMode`
  std::uint64_t order_ = 0;  // orders timers that have the same fire date
};

}  // namespace vel
