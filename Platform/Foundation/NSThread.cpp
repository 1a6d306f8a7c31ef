#include "Platform/Foundation/NSThread.h"

#include <atomic>
#include <thread>

namespace vel {

namespace {

std::atomic<std::thread::id> mainThreadId = std::this_thread::get_id();

}  // namespace

bool NSThread::isMainThread() { return std::this_thread::get_id() == mainThreadId; }

void NSThread::becomeMainThread() { mainThreadId = std::this_thread::get_id(); }

}  // namespace vel
