#include "Tests/WindowSystem/Wayland/HiddenLibrary.h"

#include <dlfcn.h>

namespace vel::test {

namespace {

std::string hiddenLibraryName;  // empty if no library is hidden
int loadAttempts = 0;

}  // namespace

HiddenLibrary::HiddenLibrary(const std::string& name) { hiddenLibraryName = name; }

HiddenLibrary::~HiddenLibrary() {
  hiddenLibraryName.clear();
  loadAttempts = 0;
}

int HiddenLibrary::loadAttemptCount() { return loadAttempts; }

// The linker option --wrap=dlopen replaces `dlopen` with `__wrap_dlopen`. `__real_dlopen` is then
// the original `dlopen`.
extern "C" {
void* __real_dlopen(const char* file, int mode);
void* __wrap_dlopen(const char* file, int mode);

void* __wrap_dlopen(const char* file, int mode) {
  if (file == nullptr || hiddenLibraryName.empty() || hiddenLibraryName != file) {
    return __real_dlopen(file, mode);
  }
  ++loadAttempts;
  // This call fails and sets the text that dlerror returns.
  return __real_dlopen("/nonexistent/hidden.so", mode);
}
}

}  // namespace vel::test
