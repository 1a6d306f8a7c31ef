#include "Tests/Support/Wayland/HiddenGlobal.h"

#include <wayland-client.h>

#include <list>
#include <string_view>

namespace vel::test {

namespace {

/// The listener that a client adds to its registry, and the interface that is hidden from the
/// client.
struct FilteredListener {
  const wl_registry_listener* listener;
  void* data;
  std::string hiddenInterface;
};

std::string currentHiddenInterface;  // empty if no global is hidden
int filteredRegistryCount = 0;
std::list<FilteredListener> filteredListeners;  // never shrinks: registries may still use them

void global(void* data, wl_registry* registry, std::uint32_t name, const char* interface,
            std::uint32_t version) {
  const auto& filteredListener = *static_cast<FilteredListener*>(data);
  if (filteredListener.hiddenInterface == interface) {
    ++filteredRegistryCount;
    return;
  }
  filteredListener.listener->global(filteredListener.data, registry, name, interface, version);
}

void globalRemove(void* data, wl_registry* registry, std::uint32_t name) {
  const auto& filteredListener = *static_cast<FilteredListener*>(data);
  filteredListener.listener->global_remove(filteredListener.data, registry, name);
}

constexpr wl_registry_listener kFilter{.global = global, .global_remove = globalRemove};

}  // namespace

HiddenGlobal::HiddenGlobal(const std::string& interface) { currentHiddenInterface = interface; }

HiddenGlobal::~HiddenGlobal() {
  currentHiddenInterface.clear();
  filteredRegistryCount = 0;
}

int HiddenGlobal::registryCount() { return filteredRegistryCount; }

// With the linker option --wrap=wl_proxy_add_listener, a call of `wl_proxy_add_listener` calls the
// function with the prefix `__wrap_`. A call of the function with the prefix `__real_` calls
// libwayland.
extern "C" {
using Implementation = void (**)();
int __real_wl_proxy_add_listener(wl_proxy* proxy, Implementation implementation, void* data);
int __wrap_wl_proxy_add_listener(wl_proxy* proxy, Implementation implementation, void* data);

int __wrap_wl_proxy_add_listener(wl_proxy* proxy, Implementation implementation, void* data) {
  if (currentHiddenInterface.empty() ||
      wl_proxy_get_class(proxy) != std::string_view("wl_registry")) {
    return __real_wl_proxy_add_listener(proxy, implementation, data);
  }
  FilteredListener& filteredListener = filteredListeners.emplace_back(
      reinterpret_cast<const wl_registry_listener*>(implementation), data, currentHiddenInterface);
  auto* const filter =
      reinterpret_cast<Implementation>(const_cast<wl_registry_listener*>(&kFilter));
  return __real_wl_proxy_add_listener(proxy, filter, &filteredListener);
}
}

}  // namespace vel::test
