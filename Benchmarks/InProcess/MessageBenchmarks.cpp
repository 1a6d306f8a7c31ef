// Notifications, the main queue and null-safe calls, compared with plain code, Qt and GLib.
#include <benchmark/benchmark.h>
#include <glib.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <QObject>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "Benchmarks/InProcess/QtObjects.h"
#include "Benchmarks/InProcess/RunningApplication.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Platform/Foundation/NonCopyable.h"

namespace vel::bench {
namespace {

using SteadyClock = std::chrono::steady_clock;

class Receiver final : public Class<Receiver, "Receiver"> {
 public:
  void receive(const NSNotification& /*notification*/) { ++callCount_; }
  std::int64_t countCall() { return ++callCount_; }
  [[nodiscard]] std::int64_t callCount() const { return callCount_; }

 private:
  std::int64_t callCount_ = 0;
};

// Posts one notification. The size is the number of observers.

void postWithLibrary(benchmark::State& state) {
  NSNotificationCenter center;
  std::vector<Strong<Receiver>> observers;
  for (std::int64_t index = 0; index < state.range(0); ++index) {
    observers.push_back(make<Receiver>());
    center.addObserverSelectorNameObject<&Receiver::receive>(observers.back(), "tick", nullptr);
  }
  const auto sender = make<Receiver>();
  for (auto _ : state) {
    center.postNotificationNameObject("tick", sender);
  }
  if (observers.back()->callCount() != static_cast<std::int64_t>(state.iterations())) {
    state.SkipWithError("an observer has missed a notification");
  }
}
BENCHMARK(postWithLibrary)->Name("post/library")->Arg(1)->Arg(10)->Arg(1000)->Arg(10'000);

void postWithPlainCode(benchmark::State& state) {
  struct Observer {
    std::int64_t callCount = 0;
    void receive() { ++callCount; }
  };
  std::vector<Observer> observers(static_cast<std::size_t>(state.range(0)));
  std::mutex mutex;
  std::vector<Observer*> registeredObservers;
  for (Observer& observer : observers) {
    registeredObservers.push_back(&observer);
  }
  void (Observer::*call)() = &Observer::receive;
  benchmark::DoNotOptimize(call);
  for (auto _ : state) {
    std::vector<Observer*> snapshot;
    {
      const std::scoped_lock lock(mutex);
      snapshot = registeredObservers;
    }
    for (Observer* const observer : snapshot) {
      (observer->*call)();
    }
  }
  benchmark::DoNotOptimize(observers.data());
}
BENCHMARK(postWithPlainCode)->Name("post/plain")->Arg(1)->Arg(10)->Arg(1000)->Arg(10'000);

// The minimum cost of keeping each observer alive during its call, which the library does.
void postWithPlainCodeKeepingAlive(benchmark::State& state) {
  struct Observer {
    std::int64_t callCount = 0;
    void receive() { ++callCount; }
  };
  std::vector<std::shared_ptr<Observer>> observers;
  std::vector<std::weak_ptr<Observer>> registeredObservers;
  for (std::int64_t index = 0; index < state.range(0); ++index) {
    registeredObservers.emplace_back(observers.emplace_back(std::make_shared<Observer>()));
  }
  void (Observer::*call)() = &Observer::receive;
  benchmark::DoNotOptimize(call);
  for (auto _ : state) {
    for (const std::weak_ptr<Observer>& observer : registeredObservers) {
      if (const std::shared_ptr<Observer> strongObserver = observer.lock()) {
        (strongObserver.get()->*call)();
      }
    }
  }
  benchmark::DoNotOptimize(observers.data());
}
BENCHMARK(postWithPlainCodeKeepingAlive)
    ->Name("post/plain, observers kept alive")
    ->Arg(1)
    ->Arg(10)
    ->Arg(1000)
    ->Arg(10'000);

void postWithQt(benchmark::State& state) {
  QtSender sender;
  std::vector<std::unique_ptr<QtReceiver>> receivers;
  for (std::int64_t index = 0; index < state.range(0); ++index) {
    receivers.push_back(std::make_unique<QtReceiver>());
    QObject::connect(&sender, &QtSender::tickOccurred, receivers.back().get(),
                     &QtReceiver::countCall);
  }
  for (auto _ : state) {
    emit sender.tickOccurred();
  }
  if (receivers.back()->callCount != static_cast<std::int64_t>(state.iterations())) {
    state.SkipWithError("an observer has missed a notification");
  }
}
BENCHMARK(postWithQt)->Name("post/Qt")->Arg(1)->Arg(10)->Arg(1000)->Arg(10'000);

// Submits one task to the main queue on the main thread, and runs it.

void taskWithLibrary(benchmark::State& state) {
  const RunningApplication application(kRealTime);
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  std::int64_t runCount = 0;
  for (auto _ : state) {
    dispatch_async(dispatch_get_main_queue(), [&runCount] { ++runCount; });
    loop.pump();
  }
  if (runCount != static_cast<std::int64_t>(state.iterations())) {
    state.SkipWithError("a task has not run");
  }
}
BENCHMARK(taskWithLibrary)->Name("task/library");

void taskWithPlainCode(benchmark::State& state) {
  std::mutex mutex;
  std::vector<std::function<void()>> tasks;
  std::vector<std::function<void()>> batch;
  std::int64_t runCount = 0;
  for (auto _ : state) {
    {
      const std::scoped_lock lock(mutex);
      tasks.emplace_back([&runCount] { ++runCount; });
    }
    {
      const std::scoped_lock lock(mutex);
      batch.swap(tasks);
    }
    for (const auto& task : batch) {
      task();
    }
    batch.clear();
  }
  benchmark::DoNotOptimize(runCount);
}
BENCHMARK(taskWithPlainCode)->Name("task/plain");

void taskWithGLib(benchmark::State& state) {
  GMainContext* const context = g_main_context_new();
  std::int64_t runCount = 0;
  for (auto _ : state) {
    GSource* const source = g_idle_source_new();
    g_source_set_callback(
        source,
        [](gpointer data) -> gboolean {
          ++*static_cast<std::int64_t*>(data);
          return G_SOURCE_REMOVE;
        },
        &runCount, nullptr);
    g_source_attach(source, context);
    g_source_unref(source);
    g_main_context_iteration(context, FALSE);
  }
  benchmark::DoNotOptimize(runCount);
  g_main_context_unref(context);
}
BENCHMARK(taskWithGLib)->Name("task/GLib");

// Submits one task from another thread while the main thread waits. Measures the time from the
// submission to the call of the task.

/// Submits tasks from its own thread, one at a time, and measures how long each task takes to
/// start.
class Submitter : private NonCopyable {
 public:
  using Submit = std::function<void(std::function<void()>)>;

  Submitter(Submit submit, std::size_t count)
      : thread_([this, submit = std::move(submit), count] {
          for (std::size_t index = 0; index < count; ++index) {
            // After this time the main thread is asleep.
            std::this_thread::sleep_for(std::chrono::microseconds(200));
            const auto submitTime = SteadyClock::now();
            submit([this, submitTime] {
              times_.push_back(
                  std::chrono::duration<double>(SteadyClock::now() - submitTime).count());
              hasRun_.store(true, std::memory_order_release);
            });
            while (!hasRun_.exchange(false, std::memory_order_acquire)) {
              std::this_thread::yield();
            }
          }
          isFinished_ = true;
          submit([] {});
        }) {}
  ~Submitter() { thread_.join(); }

  [[nodiscard]] bool isFinished() const { return isFinished_; }
  [[nodiscard]] double median() {
    std::ranges::sort(times_);
    return times_[times_.size() / 2];
  }

 private:
  std::vector<double> times_;
  std::atomic<bool> hasRun_ = false;
  std::atomic<bool> isFinished_ = false;
  std::thread thread_;
};

constexpr std::size_t kTaskCount = 500;

void submitToLibrary(benchmark::State& state) {
  const RunningApplication application(kRealTime);
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  DispatchQueue& queue = dispatch_get_main_queue();
  for (auto _ : state) {
    Submitter submitter([&queue](auto work) { dispatch_async(queue, std::move(work)); },
                        kTaskCount);
    loop.runUntil([&] { return submitter.isFinished(); });
    state.SetIterationTime(submitter.median());
  }
}
BENCHMARK(submitToLibrary)
    ->Name("task from another thread/library")
    ->UseManualTime()
    ->Iterations(1);

void submitToPlainQueue(benchmark::State& state) {
  const int descriptor = eventfd(0, EFD_NONBLOCK);
  std::mutex mutex;
  std::vector<std::function<void()>> tasks;
  std::vector<std::function<void()>> batch;
  for (auto _ : state) {
    Submitter submitter(
        [&](auto work) {
          {
            const std::scoped_lock lock(mutex);
            tasks.push_back(std::move(work));
          }
          eventfd_write(descriptor, 1);
        },
        kTaskCount);
    while (!submitter.isFinished()) {
      pollfd input{descriptor, POLLIN, 0};
      poll(&input, 1, -1);
      eventfd_t value = 0;
      eventfd_read(descriptor, &value);
      {
        const std::scoped_lock lock(mutex);
        batch.swap(tasks);
      }
      for (const auto& task : batch) {
        task();
      }
      batch.clear();
    }
    state.SetIterationTime(submitter.median());
  }
  close(descriptor);
}
BENCHMARK(submitToPlainQueue)
    ->Name("task from another thread/plain")
    ->UseManualTime()
    ->Iterations(1);

void submitToGLib(benchmark::State& state) {
  GMainContext* const context = g_main_context_new();
  for (auto _ : state) {
    Submitter submitter(
        [context](auto work) {
          GSource* const source = g_idle_source_new();
          g_source_set_priority(source, G_PRIORITY_DEFAULT);
          g_source_set_callback(
              source,
              [](gpointer data) -> gboolean {
                (*static_cast<std::function<void()>*>(data))();
                return G_SOURCE_REMOVE;
              },
              new std::function<void()>(std::move(work)),
              [](gpointer data) { delete static_cast<std::function<void()>*>(data); });
          g_source_attach(source, context);
          g_source_unref(source);
        },
        kTaskCount);
    while (!submitter.isFinished()) {
      g_main_context_iteration(context, TRUE);
    }
    state.SetIterationTime(submitter.median());
  }
  g_main_context_unref(context);
}
BENCHMARK(submitToGLib)->Name("task from another thread/GLib")->UseManualTime()->Iterations(1);

// Calls a function of an object through a reference that may be null.

void callWithLibrary(benchmark::State& state) {
  const auto receiver = make<Receiver>();
  for (auto _ : state) {
    benchmark::DoNotOptimize(send(receiver, &Receiver::countCall));
  }
}
BENCHMARK(callWithLibrary)->Name("call a receiver/library");

void callWithPlainCode(benchmark::State& state) {
  const auto owner = std::make_unique<Receiver>();
  Receiver* receiver = owner.get();
  std::int64_t (Receiver::*call)() = &Receiver::countCall;
  for (auto _ : state) {
    benchmark::DoNotOptimize(receiver);
    benchmark::DoNotOptimize(call);
    benchmark::DoNotOptimize(receiver != nullptr ? (receiver->*call)() : 0);
  }
}
BENCHMARK(callWithPlainCode)->Name("call a receiver/plain");

void callWithQt(benchmark::State& state) {
  QtReceiver receiver;
  for (auto _ : state) {
    QMetaObject::invokeMethod(&receiver, &QtReceiver::countCall, Qt::DirectConnection);
  }
  benchmark::DoNotOptimize(receiver.callCount);
}
BENCHMARK(callWithQt)->Name("call a receiver/Qt");

void callNullWithLibrary(benchmark::State& state) {
  Strong<Receiver> receiver;
  for (auto _ : state) {
    benchmark::DoNotOptimize(receiver);
    benchmark::DoNotOptimize(send(receiver, &Receiver::countCall));
  }
}
BENCHMARK(callNullWithLibrary)->Name("call a null receiver/library");

void callNullWithPlainCode(benchmark::State& state) {
  Receiver* receiver = nullptr;
  std::int64_t (Receiver::*call)() = &Receiver::countCall;
  for (auto _ : state) {
    benchmark::DoNotOptimize(receiver);
    benchmark::DoNotOptimize(call);
    benchmark::DoNotOptimize(receiver != nullptr ? (receiver->*call)() : 0);
  }
}
BENCHMARK(callNullWithPlainCode)->Name("call a null receiver/plain");

}  // namespace
}  // namespace vel::bench
