// Ticks, timers and the run loop, beside the plainest code and GLib's main loop.
#include <benchmark/benchmark.h>
#include <glib.h>
#include <xcb/xcb.h>

#include <chrono>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "Benchmarks/InProcess/Stage.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Foundation/NSTimer.h"
#include "Platform/WindowSystem/Backends/Backends.h"

namespace vel::bench {
namespace {

constexpr Nanoseconds kTenth = 100'000'000;

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

// A tick: one timer is due in each turn.

void tickOfLibrary(benchmark::State& state) {
  auto forward = std::make_unique<ForwardClock>();
  ForwardClock& clock = *forward;
  const Stage stage(std::move(forward));
  const auto counter = make<Counter>();
  const auto timer = NSTimer::scheduledTimerWithTimeIntervalTargetSelectorRepeats<&Counter::tick>(
      0.1, counter, true);
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  for (auto _ : state) {
    clock.putForward(kTenth);
    loop.pump();
  }
  if (counter->count() != static_cast<std::int64_t>(state.iterations())) {
    state.SkipWithError("a turn without its tick");
  }
}
BENCHMARK(tickOfLibrary)->Name("tick/library");

void tickPlain(benchmark::State& state) {
  Counter counter;
  void (Counter::*call)() = &Counter::tick;
  benchmark::DoNotOptimize(call);
  Nanoseconds due = 0;
  Nanoseconds ahead = 0;
  for (auto _ : state) {
    ahead += kTenth;
    if (readClock() + ahead >= due) {
      due += kTenth;
      (counter.*call)();
    }
    benchmark::DoNotOptimize(due);
  }
}
BENCHMARK(tickPlain)->Name("tick/plain");

void tickOfGLib(benchmark::State& state) {
  GMainContext* const context = g_main_context_new();
  std::int64_t count = 0;
  GSource* const source = g_timeout_source_new(0);  // always due: its clock cannot be put forward
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
BENCHMARK(tickOfGLib)->Name("tick/GLib");

// Armed timers: one more is armed and taken back while so many wait.

void timersOfLibrary(benchmark::State& state) {
  const Stage stage(kRealTime);
  const auto counter = make<Counter>();
  const auto arm = [&](double seconds) {
    return NSTimer::scheduledTimerWithTimeIntervalTargetSelectorRepeats<&Counter::tick>(
        seconds, counter, true);
  };
  for (std::int64_t index = 0; index < state.range(0); ++index) {
    arm(1000.0 + static_cast<double>(index));
  }
  for (auto _ : state) {
    arm(1500.5)->invalidate();
  }
}
BENCHMARK(timersOfLibrary)->Name("timers/library")->Arg(1)->Arg(100)->Arg(10'000);

void timersPlain(benchmark::State& state) {
  std::multimap<Nanoseconds, void (*)()> timers;
  for (std::int64_t index = 0; index < state.range(0); ++index) {
    timers.emplace((1000 + index) * 1'000'000'000, nullptr);
  }
  for (auto _ : state) {
    timers.erase(timers.emplace(readClock() + 1'500'500'000'000, nullptr));
  }
}
BENCHMARK(timersPlain)->Name("timers/plain")->Arg(1)->Arg(100)->Arg(10'000);

void timersOfGLib(benchmark::State& state) {
  GMainContext* const context = g_main_context_new();
  const auto arm = [context](guint milliseconds) {
    GSource* const source = g_timeout_source_new(milliseconds);
    g_source_set_callback(
        source, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr, nullptr);
    g_source_attach(source, context);
    g_source_unref(source);
    return source;
  };
  for (std::int64_t index = 0; index < state.range(0); ++index) {
    arm(static_cast<guint>(1'000'000 + 1000 * index));
  }
  for (auto _ : state) {
    g_source_destroy(arm(1'500'500));
  }
  g_main_context_unref(context);
}
BENCHMARK(timersOfGLib)->Name("timers/GLib")->Arg(1)->Arg(100)->Arg(10'000);

// An idle pump: what a game pays in a frame in which nothing happens, while the countdown runs.

void idleOfLibrary(benchmark::State& state) {
  const Stage stage(kRealTime);
  const auto timer = NSTimer::scheduledTimerWithTimeIntervalTargetSelectorRepeats<&Counter::tick>(
      1e6, make<Counter>(), true);
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  for (auto _ : state) {
    benchmark::DoNotOptimize(loop.pump());
  }
}
BENCHMARK(idleOfLibrary)->Name("idle pump/library");

void idlePlain(benchmark::State& state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(readClock());
  }
}
BENCHMARK(idlePlain)->Name("idle pump/plain");

void idleOfGLib(benchmark::State& state) {
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
BENCHMARK(idleOfGLib)->Name("idle pump/GLib");

// The same on a display: both look whether anything has come over the connection.

void idleOnDisplayOfLibrary(benchmark::State& state) {
  std::string error;
  auto windowSystem = makeWindowSystem("x11", {}, error);
  if (windowSystem == nullptr) {
    state.SkipWithError(error.c_str());
    return;
  }
  const Stage stage(kRealTime, std::move(windowSystem));
  const auto timer = NSTimer::scheduledTimerWithTimeIntervalTargetSelectorRepeats<&Counter::tick>(
      1e6, make<Counter>(), true);
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  for (auto _ : state) {
    benchmark::DoNotOptimize(loop.pump());
  }
}
BENCHMARK(idleOnDisplayOfLibrary)->Name("idle pump on a display/library");

void idleOnDisplayPlain(benchmark::State& state) {
  xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
  for (auto _ : state) {
    benchmark::DoNotOptimize(readClock());
    std::free(xcb_poll_for_event(connection));
  }
  xcb_disconnect(connection);
}
BENCHMARK(idleOnDisplayPlain)->Name("idle pump on a display/plain");

// A whole countdown in virtual time, from the presentation to the event; the size is in seconds.

void countdownOfLibrary(benchmark::State& state) {
  for (auto _ : state) {
    const Stage stage(std::make_unique<VirtualClock>());
    const auto manager = LaunchScreenManager::init();
    const auto window = openWindow("PlayerWindow");
    window->makeKeyWindow();
    const auto view = load(manager, static_cast<double>(state.range(0)));
    as<CVPresentationFullScreen>(view->presentation())
        ->presentForWindowWithPresentationMode(window, 0);
    NSRunLoop& loop = NSRunLoop::mainRunLoop();
    loop.runUntilDate((state.range(0) + 2) * kNanosecondsPerSecond);
    if (!manager->eventWasSended()) {
      state.SkipWithError("no event at the end");
    }
    manager->deactivate();
  }
}
BENCHMARK(countdownOfLibrary)
    ->Name("countdown/library")
    ->Arg(36)
    ->Arg(360)
    ->Arg(3600)
    ->Unit(benchmark::kMicrosecond);

void countdownPlain(benchmark::State& state) {
  for (auto _ : state) {
    double left = static_cast<double>(state.range(0));
    Nanoseconds now = 0;
    while (left > 0.1) {
      now += kTenth;
      left -= 0.1;
      benchmark::DoNotOptimize(now);
    }
    benchmark::DoNotOptimize(left);
  }
}
BENCHMARK(countdownPlain)
    ->Name("countdown/plain")
    ->Arg(36)
    ->Arg(360)
    ->Arg(3600)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace vel::bench
