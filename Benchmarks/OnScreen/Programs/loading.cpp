// A running C++ game that loads the library.
//
//     loading LIBRARY
//
// Prints one line of JSON: the time that loading takes, in nanoseconds, and the memory of the
// process in KiB before loading, after loading, and while a launch screen is shown.
// "resident" memory includes pages that are shared with other processes; "private" memory does not.
#include <VelLaunchScreen/vel_launch_screen.h>
#include <dlfcn.h>

#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "Benchmarks/OnScreen/MonotonicClock.h"
#include "Benchmarks/OnScreen/Programs/GameWindow.h"

namespace {

using namespace vel::bench;

[[noreturn]] void fail(const std::string& reason) {
  std::cerr << "loading: " << reason << "\n";
  std::exit(1);
}

struct Memory {
  long residentKibibytes = 0;
  long privateKibibytes = 0;
};

Memory readMemory() {
  Memory memory;
  std::ifstream file("/proc/self/smaps_rollup");
  std::string line;
  while (std::getline(file, line)) {
    long kibibytes = 0;
    if (std::sscanf(line.c_str(), "Rss: %ld", &kibibytes) == 1) {
      memory.residentKibibytes = kibibytes;
    } else if (std::sscanf(line.c_str(), "Private_Clean: %ld", &kibibytes) == 1 ||
               std::sscanf(line.c_str(), "Private_Dirty: %ld", &kibibytes) == 1) {
      memory.privateKibibytes += kibibytes;
    }
  }
  return memory;
}

template <class Function>
Function* findFunction(void* library, const char* name) {
  void* const function = dlsym(library, name);
  if (function == nullptr) {
    fail(dlerror());
  }
  return reinterpret_cast<Function*>(function);
}

void showLaunchScreen(void* library, xcb_window_t window) {
  VelCreateOptions options = VEL_CREATE_OPTIONS_INIT;
  options.display = "x11";
  options.window = window;
  VelRequest request = VEL_REQUEST_INIT;
  request.event = "launch_end";
  request.seconds = 60;
  VelLaunchScreen* screen = nullptr;
  if (findFunction<decltype(vel_create)>(library, "vel_create")(&options, &screen) != VEL_OK ||
      findFunction<decltype(vel_request)>(library, "vel_request")(screen, &request) != VEL_OK ||
      findFunction<decltype(vel_present)>(library, "vel_present")(screen, VEL_PRESENT_EMBEDDED) !=
          VEL_OK) {
    fail("cannot show a launch screen");
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    fail("usage: loading LIBRARY");
  }
  GameWindow window;
  window.draw(0);
  readMemory();  // The first call of `readMemory` allocates the buffers of the stream.
  const Memory memoryBefore = readMemory();
  const std::int64_t start = readClock();
  // RTLD_NOW also looks up every function, so no later call has to look up a function.
  void* const library = dlopen(argv[1], RTLD_NOW);
  const std::int64_t loadTime = readClock() - start;
  if (library == nullptr) {
    fail(dlerror());
  }
  const Memory memoryAfterLoading = readMemory();
  showLaunchScreen(library, window.id());
  const Memory memoryWithCover = readMemory();
  std::cout << R"({"load": )" << loadTime << R"(, "resident": [)" << memoryBefore.residentKibibytes
            << ", " << memoryAfterLoading.residentKibibytes << ", "
            << memoryWithCover.residentKibibytes << R"(], "private": [)"
            << memoryBefore.privateKibibytes << ", " << memoryAfterLoading.privateKibibytes << ", "
            << memoryWithCover.privateKibibytes << "]}\n";
  return 0;
}
