#include "Tests/WindowSystem/Wayland/HiddenLibrary.h"

#include <dlfcn.h>

namespace vel::test {

namespace {

std::string hiddenName;  // empty if no library is hidden
int loadAttempts = 0;

}  // namespace

HiddenLibrary::HiddenLibrary(const std::string& name) { hiddenName = name; }

HiddenLibrary::~HiddenLibrary() {
  hiddenName.clear();
  loadAttempts = 0;
}

int HiddenLibrary::loadAttemptCount() { return loadAttempts; }

// With the linker option --wrap=dlopen, a call of `dlopen` calls `__wrap_dlopen`, and a call of
// `__real_dlopen` calls the real `dlopen`.
extern "C" {
void* __real_dlopen(const char* file, int mode);
void* __wrap_dlopen(const char* file, int mode);

void* __wrap_dlopen(const char* file, int mode) {
  if (file == nullptr || hiddenName.empty() || hiddenName != file) {
    return __real_dlopen(file, mode);
  }
  ++loadAttempts;
  // This call fails and sets the text that dlerror returns.
  return __real_dlopen("/nonexistent/hidden.so", mode);
}
}

}  // namespace vel::test
