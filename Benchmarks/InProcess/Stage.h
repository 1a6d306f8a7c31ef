// What the benchmarks inside the process run on.
#pragma once

#include <memory>
#include <string_view>

#include "LaunchScreen/LaunchScreen.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/Foundation/Clock.h"
#include "Platform/WindowSystem/WindowSystem.h"

namespace vel::bench {

/// The machine's clock, put forward by hand: what is due when is up to the benchmark, and reading
/// the time costs what it costs.
class ForwardClock final : public Clock {
 public:
  [[nodiscard]] Nanoseconds now() const override { return real_->now() + ahead_; }
  void waitUntil(Nanoseconds /*deadline*/) override {}
  [[nodiscard]] bool canWaitForEver() const override { return true; }
  void wake() override {}
  void passBegan() override {}
  [[nodiscard]] bool isPolled() const override { return false; }
  void passEnded(Nanoseconds /*deadline*/) override {}
  [[nodiscard]] int descriptor() override { return -1; }
  void watch(int /*descriptor*/) override {}

  void putForward(Nanoseconds span) { ahead_ += span; }

 private:
  std::unique_ptr<Clock> real_ = makeRealClock();
  Nanoseconds ahead_ = 0;
};

/// The platform for one benchmark, on the given clock and headless unless a window system is given;
/// at its end nothing is left of it.
class Stage {
 public:
  explicit Stage(std::unique_ptr<Clock> clock,
                 std::unique_ptr<WindowSystem> windowSystem = nullptr);
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;
  Stage(Stage&&) = delete;
  Stage& operator=(Stage&&) = delete;
  ~Stage();
};

/// An open window with a class name of a host's.
Strong<NSWindow> openWindow(std::string_view className);
/// A request as a host passes it on.
Strong<ContentRequest> makeRequest(std::string_view event, double duration);
/// The main content of `manager`, loaded for a launch screen of that many seconds.
Strong<ContentView> load(const Strong<LaunchScreenManager>& manager, double duration);

}  // namespace vel::bench
