#include "Platform/Foundation/ReleasePool.h"

#include <iterator>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

namespace vel {

namespace {

/// The pools of all threads. Any thread may use the table.
class PoolTable : NonCopyable {
 public:
  static PoolTable& theTable() {
    // Never destroyed: other threads may use their pools while the process exits.
    static auto& table = *new PoolTable();
    return table;
  }

  /// The pool of a thread. Makes the pool if the table has none.
  ReleasePool& poolOf(std::thread::id thread) {
    const std::scoped_lock lock(mutex_);
    return pools_[thread];
  }
  void remove(std::thread::id thread) {
    const std::scoped_lock lock(mutex_);
    pools_.erase(thread);
  }

 private:
  std::mutex mutex_;
  std::map<std::thread::id, ReleasePool> pools_;
};

// The current thread's pool, or null if `currentPool` must find it in the table: at the first call,
// or when the system has cleared the thread-local data of an ending thread.
thread_local ReleasePool* cachedPool = nullptr;

/// Drains and removes the pool of a thread when the thread ends. Does not read `cachedPool`,
/// because the system may already have cleared it.
class ThreadEndDrain : NonCopyable {
 public:
  ThreadEndDrain() = default;
  ~ThreadEndDrain() {
    const std::thread::id thread = std::this_thread::get_id();
    PoolTable::theTable().poolOf(thread).drainTo(0);
    cachedPool = nullptr;
    PoolTable::theTable().remove(thread);
  }
};

}  // namespace

ReleasePool& ReleasePool::currentPool() {
  if (cachedPool == nullptr) {
    cachedPool = &PoolTable::theTable().poolOf(std::this_thread::get_id());
    thread_local const ThreadEndDrain drain;
  }
  return *cachedPool;
}

void ReleasePool::drainTo(std::size_t mark) {
  // The destructor of an object may add objects to the pool. The loop also releases them.
  while (objects_.size() > mark) {
    const auto begin = objects_.begin() + static_cast<std::ptrdiff_t>(mark);
    std::vector<Strong<const NSObjectProtocol>> objects(std::make_move_iterator(begin),
                                                        std::make_move_iterator(objects_.end()));
    objects_.resize(mark);
    // The oldest object is released first. A vector's destructor has no specified order.
    for (Strong<const NSObjectProtocol>& object : objects) {
      object.reset();
    }
  }
}

}  // namespace vel
