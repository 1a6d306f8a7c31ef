#include "Platform/WindowSystem/Wayland/Libdecor.h"

#include <dlfcn.h>

#include <string_view>

#include "Platform/Foundation/NSLog.h"

namespace vel::wayland {

namespace {

constexpr const char* kLibraryName = "libdecor-0.so.0";

// Sets `function` to the function with this name. Returns false if the library does not have it.
template <class Function>
bool findFunction(void* library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(dlsym(library, name));
  return function != nullptr;
}

bool findFunctions(void* library, Libdecor& functions) {
  return findFunction(library, "libdecor_new", functions.contextNew) &&
         findFunction(library, "libdecor_unref", functions.contextUnref) &&
         findFunction(library, "libdecor_dispatch", functions.contextDispatch) &&
         findFunction(library, "libdecor_decorate", functions.decorate) &&
         findFunction(library, "libdecor_frame_unref", functions.frameUnref) &&
         findFunction(library, "libdecor_frame_map", functions.frameMap) &&
         findFunction(library, "libdecor_frame_commit", functions.frameCommit) &&
         findFunction(library, "libdecor_frame_set_title", functions.frameSetTitle) &&
         findFunction(library, "libdecor_frame_set_capabilities", functions.frameSetCapabilities) &&
         findFunction(library, "libdecor_frame_unset_capabilities",
                      functions.frameUnsetCapabilities) &&
         findFunction(library, "libdecor_frame_set_min_content_size",
                      functions.frameSetMinContentSize) &&
         findFunction(library, "libdecor_frame_set_max_content_size",
                      functions.frameSetMaxContentSize) &&
         findFunction(library, "libdecor_frame_is_floating", functions.frameIsFloating) &&
         findFunction(library, "libdecor_frame_get_xdg_toplevel", functions.frameGetXdgToplevel) &&
         findFunction(library, "libdecor_state_new", functions.stateNew) &&
         findFunction(library, "libdecor_state_free", functions.stateFree) &&
         findFunction(library, "libdecor_configuration_get_content_size",
                      functions.configurationGetContentSize);
}

}  // namespace

std::unique_ptr<const Libdecor> Libdecor::load() {
  void* const library = dlopen(kLibraryName, RTLD_NOW | RTLD_LOCAL);
  auto functions = std::make_unique<Libdecor>();
  if (library == nullptr || !findFunctions(library, *functions)) {
    const char* const reason = dlerror();
    NSLog("Wayland: windows have no frame: %s",
          std::string_view(reason == nullptr ? kLibraryName : reason));
    return nullptr;
  }
  return functions;
}

}  // namespace vel::wayland
