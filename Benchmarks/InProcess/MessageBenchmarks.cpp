// Notifications, the main queue and messages, beside the plainest code, Qt's signals and GLib.
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

#include "Benchmarks/InProcess/QtSignal.h"
#include "Benchmarks/InProcess/Stage.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Platform/Foundation/NonCopyable.h"

namespace vel::bench {
namespace {

using SteadyClock = std::chrono::steady_clock;

class Listener final : public Class<Listener, "Listener"> {
 public:
  void hear(const NSNotification& /*notification*/) { ++heard_; }
  std::int64_t touch() { return ++heard_; }
  [[nodiscard]] std::int64_t heard() const { return heard_; }

 private:
  std::int64_t heard_ = 0;
};

// Posting a notification to so many observers.

void postOfLibrary(benchmark::State& state) {
  NSNotificationCenter center;
  std::vector<Strong<Listener>> listeners;
  for (std::int64_t index = 0; index < state.range(0); ++index) {
    listeners.push_back(make<Listener>());
    center.addObserverSelectorNameObject<&Listener::hear>(listeners.back(), "tick", nullptr);
  }
  const auto sender = make<Listener>();
  for (auto _ : state) {
    center.postNotificationNameObject("tick", sender);
  }
  if (listeners.back()->heard() != static_cast<std::int64_t>(state.iterations())) {
    state.SkipWithError("somebody has not heard");
  }
}
BENCHMARK(postOfLibrary)->Name("post/library")->Arg(1)->Arg(10)->Arg(1000)->Arg(10'000);

void postPlain(benchmark::State& state) {
  struct Observer {
    std::int64_t heard = 0;
    void hear() { ++heard; }
  };
  std::vector<Observer> observers(static_cast<std::size_t>(state.range(0)));
  std::mutex mutex;
  std::vector<Observer*> registered;
  for (Observer& observer : observers) {
    registered.push_back(&observer);
  }
  void (Observer::*call)() = &Observer::hear;
  benchmark::DoNotOptimize(call);
  for (auto _ : state) {
    std::vector<Observer*> snapshot;
    {
      const std::scoped_lock lock(mutex);
      snapshot = registered;
    }
    for (Observer* const observer : snapshot) {
      (observer->*call)();
    }
  }
  benchmark::DoNotOptimize(observers.data());
}
BENCHMARK(postPlain)->Name("post/plain")->Arg(1)->Arg(10)->Arg(1000)->Arg(10'000);

// What it costs at the least to keep each observer alive for its call, as the library does.
void postPlainKeptAlive(benchmark::State& state) {
  struct Observer {
    std::int64_t heard = 0;
    void hear() { ++heard; }
  };
  std::vector<std::shared_ptr<Observer>> observers;
  std::vector<std::weak_ptr<Observer>> registered;
  for (std::int64_t index = 0; index < state.range(0); ++index) {
    registered.emplace_back(observers.emplace_back(std::make_shared<Observer>()));
  }
  void (Observer::*call)() = &Observer::hear;
  benchmark::DoNotOptimize(call);
  for (auto _ : state) {
    for (const std::weak_ptr<Observer>& observer : registered) {
      if (const std::shared_ptr<Observer> kept = observer.lock()) {
        (kept.get()->*call)();
      }
    }
  }
  benchmark::DoNotOptimize(observers.data());
}
BENCHMARK(postPlainKeptAlive)
    ->Name("post/plain, kept alive")
    ->Arg(1)
    ->Arg(10)
    ->Arg(1000)
    ->Arg(10'000);

void postOfQt(benchmark::State& state) {
  QtSender sender;
  std::vector<std::unique_ptr<QtListener>> listeners;
  for (std::int64_t index = 0; index < state.range(0); ++index) {
    listeners.push_back(std::make_unique<QtListener>());
    QObject::connect(&sender, &QtSender::ticked, listeners.back().get(), &QtListener::hear);
  }
  for (auto _ : state) {
    emit sender.ticked();
  }
  if (listeners.back()->heard != static_cast<std::int64_t>(state.iterations())) {
    state.SkipWithError("somebody has not heard");
  }
}
BENCHMARK(postOfQt)->Name("post/Qt")->Arg(1)->Arg(10)->Arg(1000)->Arg(10'000);

// A task through the main queue, from the main thread.

void taskOfLibrary(benchmark::State& state) {
  const Stage stage(kRealTime);
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  std::int64_t done = 0;
  for (auto _ : state) {
    dispatch_async(dispatch_get_main_queue(), [&done] { ++done; });
    loop.pump();
  }
  if (done != static_cast<std::int64_t>(state.iterations())) {
    state.SkipWithError("a task was not run");
  }
}
BENCHMARK(taskOfLibrary)->Name("task/library");

void taskPlain(benchmark::State& state) {
  std::mutex mutex;
  std::vector<std::function<void()>> tasks;
  std::vector<std::function<void()>> taken;
  std::int64_t done = 0;
  for (auto _ : state) {
    {
      const std::scoped_lock lock(mutex);
      tasks.emplace_back([&done] { ++done; });
    }
    {
      const std::scoped_lock lock(mutex);
      taken.swap(tasks);
    }
    for (const auto& task : taken) {
      task();
    }
    taken.clear();
  }
  benchmark::DoNotOptimize(done);
}
BENCHMARK(taskPlain)->Name("task/plain");

void taskOfGLib(benchmark::State& state) {
  GMainContext* const context = g_main_context_new();
  std::int64_t done = 0;
  for (auto _ : state) {
    GSource* const source = g_idle_source_new();
    g_source_set_callback(
        source,
        [](gpointer data) -> gboolean {
          ++*static_cast<std::int64_t*>(data);
          return G_SOURCE_REMOVE;
        },
        &done, nullptr);
    g_source_attach(source, context);
    g_source_unref(source);
    g_main_context_iteration(context, FALSE);
  }
  benchmark::DoNotOptimize(done);
  g_main_context_unref(context);
}
BENCHMARK(taskOfGLib)->Name("task/GLib");

// The same from another thread, while the main one waits: the time from handing over to running.

/// Hands over one task at a time from a thread of its own, and takes the time of each.
class Sender : NonCopyable {
 public:
  using HandOver = std::function<void(std::function<void()>)>;

  Sender(HandOver handOver, std::size_t count)
      : thread_([this, handOver = std::move(handOver), count] {
          for (std::size_t index = 0; index < count; ++index) {
            // The main thread has to be asleep by then.
            std::this_thread::sleep_for(std::chrono::microseconds(200));
            const auto began = SteadyClock::now();
            handOver([this, began] {
              times_.push_back(std::chrono::duration<double>(SteadyClock::now() - began).count());
              ready_.store(true, std::memory_order_release);
            });
            while (!ready_.exchange(false, std::memory_order_acquire)) {
              std::this_thread::yield();
            }
          }
          over_ = true;
          handOver([] {});
        }) {}
  ~Sender() { thread_.join(); }

  [[nodiscard]] bool isOver() const { return over_; }
  [[nodiscard]] double median() {
    std::ranges::sort(times_);
    return times_[times_.size() / 2];
  }

 private:
  std::vector<double> times_;
  std::atomic<bool> ready_ = false;
  std::atomic<bool> over_ = false;
  std::thread thread_;
};

constexpr std::size_t kHandedOver = 500;

void handedOverToLibrary(benchmark::State& state) {
  const Stage stage(kRealTime);
  NSRunLoop& loop = NSRunLoop::mainRunLoop();
  DispatchQueue& queue = dispatch_get_main_queue();
  for (auto _ : state) {
    Sender sender([&queue](auto work) { dispatch_async(queue, std::move(work)); }, kHandedOver);
    loop.runUntil([&] { return sender.isOver(); });
    state.SetIterationTime(sender.median());
  }
}
BENCHMARK(handedOverToLibrary)
    ->Name("task from another thread/library")
    ->UseManualTime()
    ->Iterations(1);

void handedOverPlain(benchmark::State& state) {
  const int descriptor = eventfd(0, EFD_NONBLOCK);
  std::mutex mutex;
  std::vector<std::function<void()>> tasks;
  std::vector<std::function<void()>> taken;
  for (auto _ : state) {
    Sender sender(
        [&](auto work) {
          {
            const std::scoped_lock lock(mutex);
            tasks.push_back(std::move(work));
          }
          eventfd_write(descriptor, 1);
        },
        kHandedOver);
    while (!sender.isOver()) {
      pollfd input{descriptor, POLLIN, 0};
      poll(&input, 1, -1);
      eventfd_t value = 0;
      eventfd_read(descriptor, &value);
      {
        const std::scoped_lock lock(mutex);
        taken.swap(tasks);
      }
      for (const auto& task : taken) {
        task();
      }
      taken.clear();
    }
    state.SetIterationTime(sender.median());
  }
  close(descriptor);
}
BENCHMARK(handedOverPlain)->Name("task from another thread/plain")->UseManualTime()->Iterations(1);

void handedOverToGLib(benchmark::State& state) {
  GMainContext* const context = g_main_context_new();
  for (auto _ : state) {
    Sender sender(
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
        kHandedOver);
    while (!sender.isOver()) {
      g_main_context_iteration(context, TRUE);
    }
    state.SetIterationTime(sender.median());
  }
  g_main_context_unref(context);
}
BENCHMARK(handedOverToGLib)->Name("task from another thread/GLib")->UseManualTime()->Iterations(1);

// A message to an object, and to none.

void sendOfLibrary(benchmark::State& state) {
  const auto listener = make<Listener>();
  for (auto _ : state) {
    benchmark::DoNotOptimize(send(listener, &Listener::touch));
  }
}
BENCHMARK(sendOfLibrary)->Name("send/library");

void sendPlain(benchmark::State& state) {
  const auto listener = std::make_unique<Listener>();
  Listener* receiver = listener.get();
  std::int64_t (Listener::*call)() = &Listener::touch;
  for (auto _ : state) {
    benchmark::DoNotOptimize(receiver);
    benchmark::DoNotOptimize(call);
    benchmark::DoNotOptimize(receiver != nullptr ? (receiver->*call)() : 0);
  }
}
BENCHMARK(sendPlain)->Name("send/plain");

void sendOfQt(benchmark::State& state) {
  QtListener listener;
  for (auto _ : state) {
    QMetaObject::invokeMethod(&listener, &QtListener::hear, Qt::DirectConnection);
  }
  benchmark::DoNotOptimize(listener.heard);
}
BENCHMARK(sendOfQt)->Name("send/Qt");

void sendToNoneOfLibrary(benchmark::State& state) {
  Strong<Listener> none;
  for (auto _ : state) {
    benchmark::DoNotOptimize(none);
    benchmark::DoNotOptimize(send(none, &Listener::touch));
  }
}
BENCHMARK(sendToNoneOfLibrary)->Name("send to none/library");

void sendToNonePlain(benchmark::State& state) {
  Listener* none = nullptr;
  std::int64_t (Listener::*call)() = &Listener::touch;
  for (auto _ : state) {
    benchmark::DoNotOptimize(none);
    benchmark::DoNotOptimize(call);
    benchmark::DoNotOptimize(none != nullptr ? (none->*call)() : 0);
  }
}
BENCHMARK(sendToNonePlain)->Name("send to none/plain");

}  // namespace
}  // namespace vel::bench
