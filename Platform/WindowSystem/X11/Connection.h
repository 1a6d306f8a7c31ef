#pragma once

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/X11/Atoms.h"
#include "Platform/WindowSystem/X11/Property.h"

namespace vel::x11 {

struct FreeMemory {
  void operator()(void* memory) const { std::free(memory); }  // NOLINT(*-no-malloc): XCB's way
};

/// What XCB hands over and the receiver frees.
template <class T>
using FromServer = std::unique_ptr<T, FreeMemory>;
using Event = FromServer<xcb_generic_event_t>;

/// An event as what its type says it is.
template <class T>
[[nodiscard]] T eventAs(const xcb_generic_event_t& event) {
  static_assert(sizeof(T) <= sizeof event);
  T result;
  std::memcpy(&result, &event, sizeof result);
  return result;
}
[[nodiscard]] inline int typeOf(const xcb_generic_event_t& event) {
  return event.response_type & 0x7F;  // the bit taken out says that a client has sent it
}

/// The connection to the server: its events in order, requests and the errors that come back for
/// them, and properties. An error is named after the request that it answers and written to the
/// log; what fails because a window has ended is not an error, the window's end is told by an
/// event.
class Connection {
 public:
  /// None, with the reason in `error`, where the display does not answer. An empty name stands for
  /// the environment's display.
  static std::unique_ptr<Connection> open(const std::string& displayName, std::string& error);
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  Connection(Connection&&) = delete;
  Connection& operator=(Connection&&) = delete;
  ~Connection();

  [[nodiscard]] xcb_connection_t* get() const { return connection_; }
  [[nodiscard]] const xcb_screen_t& screen() const { return *screen_; }
  [[nodiscard]] xcb_window_t root() const { return screen_->root; }
  [[nodiscard]] xcb_atom_t atom(Atom atom) const { return atoms_[static_cast<std::size_t>(atom)]; }
  [[nodiscard]] xcb_window_t makeId() const { return xcb_generate_id(connection_); }
  [[nodiscard]] bool isBroken() const { return xcb_connection_has_error(connection_) != 0; }
  void flush() const { xcb_flush(connection_); }

  /// The next event that has come; none if there is none. Never waits. Errors do not appear here.
  Event nextEvent();
  /// Whether there is a next event. Never waits.
  bool hasEvents();
  /// Whether it has been read already, so that the descriptor does not tell of it.
  bool hasQueuedEvents();

  /// Notes which request `cookie` stands for, so that an error can be named.
  void track(xcb_void_cookie_t cookie, const char* request, xcb_window_t window);
  /// Waits for the answer of a request; none where there is none, and the error is noted.
  template <class Reply, class Cookie>
  FromServer<Reply> waitForReply(Reply* (*wait)(xcb_connection_t*, Cookie, xcb_generic_error_t**),
                                 Cookie cookie, const char* request, xcb_window_t window) {
    xcb_generic_error_t* error = nullptr;
    FromServer<Reply> reply(wait(connection_, cookie, &error));
    if (error != nullptr) {
      noteError(FromServer<xcb_generic_error_t>(error), request, window);
    }
    return reply;
  }
  /// Says that `window` no longer exists: what has failed or will fail because of it is no error.
  void markDestroyed(xcb_window_t window);
  /// Says that it does exist: its id may have been that of one that ended.
  void markExisting(xcb_window_t window);
  /// Whether the window was made over this connection.
  [[nodiscard]] bool hasCreated(xcb_window_t window) const {
    const xcb_setup_t& setup = *xcb_get_setup(connection_);
    return (window & ~setup.resource_id_mask) == setup.resource_id_base;
  }
  [[nodiscard]] bool hasErrors() const { return !failures_.empty(); }
  /// Writes the errors noted to the log, less those explained by a window's end. To be called when
  /// no events are left.
  void logErrors();

  /// A window's property, none where it is absent. Waits.
  std::optional<Property> readProperty(xcb_window_t window, xcb_atom_t name);
  [[nodiscard]] xcb_get_property_cookie_t requestProperty(xcb_window_t window,
                                                          xcb_atom_t name) const;
  std::optional<Property> readProperty(xcb_get_property_cookie_t cookie, xcb_window_t window);
  /// The same of a window that may be gone, which is no error: none then.
  std::optional<Property> readPropertyIfExists(xcb_window_t window, xcb_atom_t name);
  /// The server's time. Waits.
  xcb_timestamp_t serverTime();

 private:
  struct SentRequest {
    unsigned sequence;
    const char* name;
    xcb_window_t window;
  };
  struct Failure {
    std::uint8_t code;
    const char* request;
    xcb_window_t window;
  };

  Connection(xcb_connection_t* connection, xcb_screen_t* screen);

  void internAtoms();
  static std::optional<Property> propertyIn(const FromServer<xcb_get_property_reply_t>& reply);
  void noteError(FromServer<xcb_generic_error_t> error, const char* request, xcb_window_t window);
  bool keep(Event event);
  void forgetAnswered(unsigned sequence);

  xcb_connection_t* connection_;
  xcb_screen_t* screen_;
  xcb_window_t timeWindow_ = XCB_WINDOW_NONE;
  std::array<xcb_atom_t, static_cast<std::size_t>(Atom::Count)> atoms_{};
  std::deque<Event> events_;
  std::deque<SentRequest> sent_;
  std::deque<xcb_window_t> ended_;
  std::vector<Failure> failures_;
};

}  // namespace vel::x11
