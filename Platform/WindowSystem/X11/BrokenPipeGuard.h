#pragma once

#include "Platform/Foundation/NonCopyable.h"

namespace vel::x11 {

/// Prevents SIGPIPE from ending the process. XCB raises SIGPIPE when it writes to a connection that
/// the server has closed. The guard blocks the signal on the calling thread, and restores the
/// thread's signal mask when the guard is destroyed. Create a guard in each scope that may write to
/// the connection. A scope that has a `RequestBatch` needs no other guard: the batch contains one.
class BrokenPipeGuard final : public NonCopyable {
 public:
  BrokenPipeGuard();
  ~BrokenPipeGuard();

 private:
  bool hasBlockedSignal_ = false;  // false if the signal was already blocked
};

}  // namespace vel::x11
