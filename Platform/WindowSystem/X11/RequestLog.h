#pragma once

#include <xcb/xproto.h>

#include <cstdint>
#include <deque>
#include <vector>

#include "Platform/Foundation/NonCopyable.h"

namespace vel::x11 {

/// Logs the errors of requests. Remembers the requests that the server may not have processed yet,
/// so that a log line can name the failed request. Requests on a destroyed window are expected to
/// fail, so their errors are not logged.
class RequestLog final : public NonCopyable {
 public:
  /// Remembers a sent request on `window`. `name` must be a string literal.
  void add(unsigned sequence, const char* name, xcb_window_t window);
  /// Forgets the requests before `sequence`. Call this when the server has processed them.
  void removeBefore(unsigned sequence);

  /// Remembers an error that the server has sent as an event.
  void addError(const xcb_generic_error_t& error);
  /// Remembers an error that the server has sent instead of a reply.
  void addError(const xcb_generic_error_t& error, const char* name, xcb_window_t window);

  /// From now on, `logErrors` ignores errors of requests on this window.
  void markDestroyed(xcb_window_t window);
  /// Reverses `markDestroyed`: a new window may have the id of a destroyed window.
  void unmarkDestroyed(xcb_window_t window);

  [[nodiscard]] bool hasErrors() const { return !errors_.empty(); }
  /// Logs the errors and forgets them. Process all events that have arrived before calling this: a
  /// DestroyNotify event may show that an error was expected.
  void logErrors();

 private:
  struct Request {
    unsigned sequence;
    const char* name;
    xcb_window_t window;
  };
  struct Error {
    std::uint8_t code;
    const char* request;
    xcb_window_t window;
  };

  std::deque<Request> requests_;
  std::deque<xcb_window_t> destroyedWindows_;
  std::vector<Error> errors_;
};

}  // namespace vel::x11
