#pragma once

#include <xcb/xproto.h>

#include <cstdint>
#include <deque>
#include <vector>

#include "Platform/Foundation/NonCopyable.h"

namespace vel::x11 {

/// Remembers the requests in progress, so that the log can name the request that caused an error.
/// Requests on a destroyed window are expected to fail, so their errors are not logged.
class RequestLog final : public NonCopyable {
 public:
  /// Remembers a request on `window`. Call this after sending it. `name` must be a string literal.
  void add(unsigned sequence, const char* name, xcb_window_t window);
  /// Forgets the requests with lower sequence numbers, which the server has processed.
  void removeBefore(unsigned sequence);

  /// Remembers an error that the server has sent as an event.
  void addError(const xcb_generic_error_t& error);
  /// Remembers an error that has replaced the reply to a request.
  void addError(const xcb_generic_error_t& error, const char* name, xcb_window_t window);

  /// From now on, errors of requests on this window are not logged.
  void markDestroyed(xcb_window_t window);
  /// Reverses `markDestroyed`: a new window may have the id of a destroyed window.
  void unmarkDestroyed(xcb_window_t window);

  [[nodiscard]] bool hasErrors() const { return !errors_.empty(); }
  /// Writes the errors to the log and forgets them. Call this when all events have been processed,
  /// because one of the events may be the DestroyNotify that explains an error.
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
