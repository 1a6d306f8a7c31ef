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

// Points to the pool of the current thread after the first call of `currentPool`. While a thread
// ends, the system may reset this variable to null before the pool is removed from the table. The
// next call of `currentPool` then finds the same pool in the table.
thread_local ReleasePool* cachedPool = nullptr;

/// Drains the pool of a thread when the thread ends. Finds the pool without thread-local data,
/// because such data may already be destroyed.
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
  // The destructor of an object may add more objects. The loop also releases these objects.
  while (objects_.size() > mark) {
    const auto begin = objects_.begin() + static_cast<std::ptrdiff_t>(mark);
    std::vector<Strong<const NSObjectProtocol>> objects(std::make_move_iterator(begin),
                                                        std::make_move_iterator(objects_.end()));
    objects_.resize(mark);
    // Releases the objects one by one: the order in which a vector destroys its elements is not
    // specified.
    for (Strong<const NSObjectProtocol>& object : objects) {
      object.reset();
    }
  }
}

}  // namespace vel
