// Keeps a second thread alive meanwhile: without one, locks and shared pointers cost less than they
// do in any game.
#include <benchmark/benchmark.h>

#include <condition_variable>
#include <mutex>
#include <thread>

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 2;
  }
  std::mutex mutex;
  std::condition_variable ended;
  bool over = false;
  std::thread other([&] {
    std::unique_lock lock(mutex);
    ended.wait(lock, [&] { return over; });
  });
  benchmark::RunSpecifiedBenchmarks();
  {
    const std::scoped_lock lock(mutex);
    over = true;
  }
  ended.notify_one();
  other.join();
  benchmark::Shutdown();
  return 0;
}
