// What the benchmarks inside the process run on.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

#include "LaunchScreen/LaunchScreen.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/Foundation/Clock.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/Foundation/RealClock.h"
#include "Platform/WindowSystem/WindowSystem.h"

namespace vel::bench {

/// The machine's clock, put forward by hand: what is due when is up to the benchmark, and reading
/// the time costs what it costs.
class ForwardClock final : public Clock {
 public:
  [[nodiscard]] Nanoseconds now() const override { return real_.now() + ahead_; }
  bool waitUntil(Nanoseconds /*deadline*/) override { return true; }
  void wake() override {}

  void putForward(Nanoseconds span) { ahead_ += span; }

 private:
  std::unique_ptr<WaitSet> waitSet_ = makeWaitSet();
  RealClock real_{*waitSet_};
  Nanoseconds ahead_ = 0;
};

/// Given to `Stage` for the machine's own clock.
inline constexpr std::nullptr_t kRealTime = nullptr;

/// The platform for one benchmark, in real time unless a clock is given, and headless unless a
/// window system is given; at its end nothing is left of it.
class Stage : NonCopyable {
 public:
  explicit Stage(std::unique_ptr<Clock> clock,
                 std::unique_ptr<WindowSystem> windowSystem = nullptr);
  ~Stage();
};

/// An open window with a class name of a host's.
Strong<NSWindow> openWindow(std::string_view className);
/// A request as a host passes it on.
Strong<ContentRequest> makeRequest(std::string_view event, double duration);
/// The main content of `manager`, loaded for a launch screen of that many seconds.
Strong<ContentView> load(const Strong<LaunchScreenManager>& manager, double duration);

}  // namespace vel::bench
