// Timers and the run loop, compared with plain code and GLib's main loop.
#include <benchmark/benchmark.h>
#include <glib.h>
#include <xcb/xcb.h>

#include <chrono>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "Benchmarks/InProcess/Fixtures.h"
#include "Benchmarks/InProcess/OffsetClock.h"
#include "Benchmarks/InProcess/RunningApplication.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Foundation/NSTimer.h"
#include "Platform/WindowSystem/Backends/Backends.h"

namespace vel::bench {
namespace {

constexpr Nanoseconds kTickInterval = 100'000'000;

class Counter final : public Class<Counter, "Counter"> {
 public:
  void tick() { ++count_; }
  [[nodiscard]] std::int64_t count() const { return count_; }

 private:
  std::int64_t count_ = 0;
};

Nanoseconds readClock() {
  return std::chrono::steady_clock::now().time_since_epoch() / std::chrono::nanoseconds(1);
}

// A tick: each pass of the run loop fires one timer.

void fireTimerWithLibrary(benchmark::State& state) {
  auto ownedClock = std::make_unique<OffsetClock>();
  OffsetClock& clock = *ownedClock;
  const RunningApplication application(std::move(ownedClock));
  const auto counter = make<Counter>();
  const auto timer = NSTimer::scheduledTimerWithTimeIntervalTargetSelectorRepeats<&Counter::tick>(
      0.1, counter, true);
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  for (auto _ : state) {
    clock.advance(kTickInterval);
    loop.pump();
  }
  if (counter->count() != static_cast<std::int64_t>(state.iterations())) {
    state.SkipWithError("a pass has not fired the timer");
  }
}
BENCHMARK(fireTimerWithLibrary)->Name("tick/library");

void fireTimerWithPlainCode(benchmark::State& state) {
  Counter counter;
  void (Counter::*call)() = &Counter::tick;
  benchmark::DoNotOptimize(call);
  Nanoseconds tickTime = 0;
  Nanoseconds offset = 0;
  for (auto _ : state) {
    offset += kTickInterval;
    if (readClock() + offset >= tickTime) {
      tickTime += kTickInterval;
      (counter.*call)();
    }
    benchmark::DoNotOptimize(tickTime);
  }
}
BENCHMARK(fireTimerWithPlainCode)->Name("tick/plain");

void fireTimerWithGLib(benchmark::State& state) {
  GMainContext* const context = g_main_context_new();
  std::int64_t count = 0;
  GSource* const source =
      g_timeout_source_new(0);  // always due: a benchmark cannot advance GLib's clock
  g_source_set_callback(
      source,
      [](gpointer data) -> gboolean {
        ++*static_cast<std::int64_t*>(data);
        return G_SOURCE_CONTINUE;
      },
      &count, nullptr);
  g_source_attach(source, context);
  for (auto _ : state) {
    g_main_context_iteration(context, FALSE);
  }
  benchmark::DoNotOptimize(count);
  g_source_destroy(source);
  g_source_unref(source);
  g_main_context_unref(context);
}
BENCHMARK(fireTimerWithGLib)->Name("tick/GLib");

// Schedules one timer and invalidates it. The size is the number of timers that are scheduled
// already.

void scheduleTimerWithLibrary(benchmark::State& state) {
  const RunningApplication application(kRealTime);
  const auto counter = make<Counter>();
  const auto schedule = [&](double seconds) {
    return NSTimer::scheduledTimerWithTimeIntervalTargetSelectorRepeats<&Counter::tick>(
        seconds, counter, true);
  };
  for (std::int64_t index = 0; index < state.range(0); ++index) {
    schedule(1000.0 + static_cast<double>(index));
  }
  for (auto _ : state) {
    schedule(1500.5)->invalidate();
  }
}
BENCHMARK(scheduleTimerWithLibrary)
    ->Name("schedule a timer/library")
    ->Arg(1)
    ->Arg(100)
    ->Arg(10'000);

void scheduleTimerWithPlainCode(benchmark::State& state) {
  std::multimap<Nanoseconds, void (*)()> timers;
  for (std::int64_t index = 0; index < state.range(0); ++index) {
    timers.emplace((1000 + index) * 1'000'000'000, nullptr);
  }
  for (auto _ : state) {
    timers.erase(timers.emplace(readClock() + 1'500'500'000'000, nullptr));
  }
}
BENCHMARK(scheduleTimerWithPlainCode)
    ->Name("schedule a timer/plain")
    ->Arg(1)
    ->Arg(100)
    ->Arg(10'000);

void scheduleTimerWithGLib(benchmark::State& state) {
  GMainContext* const context = g_main_context_new();
  const auto schedule = [context](guint milliseconds) {
    GSource* const source = g_timeout_source_new(milliseconds);
    g_source_set_callback(
        source, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr, nullptr);
    g_source_attach(source, context);
    g_source_unref(source);
    return source;
  };
  for (std::int64_t index = 0; index < state.range(0); ++index) {
    schedule(static_cast<guint>(1'000'000 + 1000 * index));
  }
  for (auto _ : state) {
    g_source_destroy(schedule(1'500'500));
  }
  g_main_context_unref(context);
}
BENCHMARK(scheduleTimerWithGLib)->Name("schedule a timer/GLib")->Arg(1)->Arg(100)->Arg(10'000);

// An idle pump: the cost for a game in a frame without work, while the countdown runs.

void pumpIdleWithLibrary(benchmark::State& state) {
  const RunningApplication application(kRealTime);
  const auto timer = NSTimer::scheduledTimerWithTimeIntervalTargetSelectorRepeats<&Counter::tick>(
      1e6, make<Counter>(), true);
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  for (auto _ : state) {
    benchmark::DoNotOptimize(loop.pump());
  }
}
BENCHMARK(pumpIdleWithLibrary)->Name("idle pump/library");

void pumpIdleWithPlainCode(benchmark::State& state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(readClock());
  }
}
BENCHMARK(pumpIdleWithPlainCode)->Name("idle pump/plain");

void pumpIdleWithGLib(benchmark::State& state) {
  GMainContext* const context = g_main_context_new();
  GSource* const source = g_timeout_source_new(1'000'000'000);
  g_source_set_callback(
      source, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr, nullptr);
  g_source_attach(source, context);
  for (auto _ : state) {
    benchmark::DoNotOptimize(g_main_context_iteration(context, FALSE));
  }
  g_source_destroy(source);
  g_source_unref(source);
  g_main_context_unref(context);
}
BENCHMARK(pumpIdleWithGLib)->Name("idle pump/GLib");

// An idle pump on a display: both programs check if the connection has an event.

void pumpIdleOnDisplayWithLibrary(benchmark::State& state) {
  std::string error;
  auto windowSystem = makeWindowSystem("x11", {}, error);
  if (windowSystem == nullptr) {
    state.SkipWithError(error.c_str());
    return;
  }
  const RunningApplication application(kRealTime, std::move(windowSystem));
  const auto timer = NSTimer::scheduledTimerWithTimeIntervalTargetSelectorRepeats<&Counter::tick>(
      1e6, make<Counter>(), true);
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  for (auto _ : state) {
    benchmark::DoNotOptimize(loop.pump());
  }
}
BENCHMARK(pumpIdleOnDisplayWithLibrary)->Name("idle pump on a display/library");

void pumpIdleOnDisplayWithPlainCode(benchmark::State& state) {
  xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
  for (auto _ : state) {
    benchmark::DoNotOptimize(readClock());
    std::free(xcb_poll_for_event(connection));
  }
  xcb_disconnect(connection);
}
BENCHMARK(pumpIdleOnDisplayWithPlainCode)->Name("idle pump on a display/plain");

// A countdown in virtual time, from the presentation to the event. The size is its length in
// seconds.

void countDownWithLibrary(benchmark::State& state) {
  for (auto _ : state) {
    const RunningApplication application(std::make_unique<VirtualClock>());
    const auto manager = LaunchScreenManager::init();
    const auto window = openWindow("PlayerWindow");
    window->makeKeyWindow();
    const auto view = loadContent(manager, static_cast<double>(state.range(0)));
    as<CVPresentationFullScreen>(view->presentation())
        ->presentForWindowWithPresentationMode(window, 0);
    NSRunLoop& loop = NSRunLoop::mainRunLoop();
    loop.runUntilDate((state.range(0) + 2) * kNanosecondsPerSecond);
    if (!manager->eventWasSended()) {
      state.SkipWithError("the event has not been recorded");
    }
    manager->deactivate();
  }
}
BENCHMARK(countDownWithLibrary)
    ->Name("countdown/library")
    ->Arg(36)
    ->Arg(360)
    ->Arg(3600)
    ->Unit(benchmark::kMicrosecond);

void countDownWithPlainCode(benchmark::State& state) {
  for (auto _ : state) {
    double secondsLeft = static_cast<double>(state.range(0));
    Nanoseconds now = 0;
    while (secondsLeft > 0.1) {
      now += kTickInterval;
      secondsLeft -= 0.1;
      benchmark::DoNotOptimize(now);
    }
    benchmark::DoNotOptimize(secondsLeft);
  }
}
BENCHMARK(countDownWithPlainCode)
    ->Name("countdown/plain")
    ->Arg(36)
    ->Arg(360)
    ->Arg(3600)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace vel::bench
