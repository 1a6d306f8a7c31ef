#include "Platform/WindowSystem/Cocoa/NativeException.h"

namespace vel::cocoa {

bool tryToRun(const std::function<void()>& operation) {
  try {
    operation();
    return true;
  } catch (...) {
    return false;
  }
}

}  // namespace vel::cocoa
