#include "Platform/WindowSystem/X11/RequestLog.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Foundation/NSLog.h"

namespace vel::x11 {

namespace {

// When the list is full, `add` drops the oldest request. The log cannot name a dropped request that
// fails. The list is rarely full: the back end reads errors in each call of `deliverEvents`, and
// sends fewer requests between two calls.
constexpr std::size_t kMaximumRequests = 2048;
// When the list is full, `markDestroyed` drops the oldest window. Later errors for the dropped
// window are logged.
constexpr std::size_t kMaximumDestroyedWindows = 256;

constexpr std::array kErrorNames{
    "Success",   "BadRequest", "BadValue",    "BadWindow",   "BadPixmap", "BadAtom",
    "BadCursor", "BadFont",    "BadMatch",    "BadDrawable", "BadAccess", "BadAlloc",
    "BadColor",  "BadGC",      "BadIDChoice", "BadName",     "BadLength", "BadImplementation"};

std::string nameOfError(std::uint8_t code) {
  return code < kErrorNames.size() ? kErrorNames.at(code) : "error " + std::to_string(code);
}

}  // namespace

void RequestLog::add(unsigned sequence, const char* name, xcb_window_t window) {
  if (requests_.size() == kMaximumRequests) {
    requests_.pop_front();
  }
  requests_.push_back({sequence, name, window});
}

// Compares by the sign of the difference, because sequence numbers wrap around.
void RequestLog::removeBefore(unsigned sequence) {
  while (!requests_.empty() && static_cast<int>(requests_.front().sequence - sequence) < 0) {
    requests_.pop_front();
  }
}

void RequestLog::addError(const xcb_generic_error_t& error) {
  const auto request = std::ranges::find(requests_, error.full_sequence, &Request::sequence);
  if (request == requests_.end()) {
    addError(error, "a request", XCB_WINDOW_NONE);
  } else {
    addError(error, request->name, request->window);
    removeBefore(error.full_sequence);
  }
}

void RequestLog::addError(const xcb_generic_error_t& error, const char* name, xcb_window_t window) {
  errors_.push_back({error.error_code, name, window});
}

void RequestLog::markDestroyed(xcb_window_t window) {
  // XCB_WINDOW_NONE is the window of an error whose request is unknown. Such errors must be logged.
  if (window == XCB_WINDOW_NONE) {
    return;
  }
  if (destroyedWindows_.size() == kMaximumDestroyedWindows) {
    destroyedWindows_.pop_front();
  }
  destroyedWindows_.push_back(window);
}

void RequestLog::unmarkDestroyed(xcb_window_t window) { std::erase(destroyedWindows_, window); }

void RequestLog::logErrors() {
  for (const Error& error : std::exchange(errors_, {})) {
    if (std::ranges::find(destroyedWindows_, error.window) == destroyedWindows_.end()) {
      NSLog("X11: %s for window %s failed: %s", std::string_view(error.request),
            std::to_string(error.window), nameOfError(error.code));
    }
  }
}

}  // namespace vel::x11
