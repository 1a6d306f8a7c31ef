#include "Host/Play/Trace/WindowNames.h"

#include <algorithm>

#include "Host/Play/Scenario/Scenario.h"

namespace vel::host {

void WindowNames::add(const Strong<NSWindow>& window, std::string_view name) {
  std::erase_if(entries_, [](const Entry& entry) { return entry.window.expired(); });
  entries_.push_back({window, std::string(name)});
}

std::string WindowNames::nameOf(NSWindow& window) {
  const Strong<NSWindow> strongWindow = window.self();
  const auto match = std::ranges::find_if(entries_, [&strongWindow](const Entry& entry) {
    return entry.window.lock() == strongWindow;
  });
  if (match != entries_.end()) {
    return match->name;
  }
  // A window without a name is a modal window or a sheet: `add` has named all plain windows.
  const bool isModal = window.kind() == WindowKind::Modal;
  std::string name(isModal ? kModalWindowPrefix : kSheetPrefix);
  name += std::to_string(isModal ? ++modalWindowCount_ : ++sheetCount_);
  add(strongWindow, name);
  return name;
}

std::optional<std::string> WindowNames::nameOf(const Strong<NSWindow>& window) {
  return window == nullptr ? std::nullopt : std::optional(nameOf(*window));
}

Strong<NSWindow> WindowNames::window(std::string_view name) const {
  const auto match = std::ranges::find(entries_, name, &Entry::name);
  return match == entries_.end() ? nullptr : match->window.lock();
}

}  // namespace vel::host
