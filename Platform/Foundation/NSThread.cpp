#include "Platform/Foundation/NSThread.h"

#include <atomic>
#include <thread>

namespace vel {

namespace {

std::atomic<std::thread::id> mainThread = std::this_thread::get_id();

}  // namespace

bool NSThread::isMainThread() { return std::this_thread::get_id() == mainThread; }

void NSThread::becomeMainThread() { mainThread = std::this_thread::get_id(); }

}  // namespace vel
