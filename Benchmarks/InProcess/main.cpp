// Runs the benchmarks while a second thread exists. In a process with one thread, locks and shared
// pointers are cheaper than in any game.
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
  std::condition_variable condition;
  bool isFinished = false;
  std::thread secondThread([&] {
    std::unique_lock lock(mutex);
    condition.wait(lock, [&] { return isFinished; });
  });
  benchmark::RunSpecifiedBenchmarks();
  {
    const std::scoped_lock lock(mutex);
    isFinished = true;
  }
  condition.notify_one();
  secondThread.join();
  benchmark::Shutdown();
  return 0;
}
