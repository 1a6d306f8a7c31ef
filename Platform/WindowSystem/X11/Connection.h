#pragma once

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Foundation/NonCopyable.h"
#include "Platform/Foundation/Time.h"
#include "Platform/WindowSystem/X11/Atoms.h"
#include "Platform/WindowSystem/X11/Property.h"
#include "Platform/WindowSystem/X11/RequestLog.h"

namespace vel::x11 {

struct XcbDeleter {
  void operator()(void* memory) const {
    std::free(memory);  // NOLINT(*-no-malloc): XCB uses malloc
  }
};

/// A reply, event or error that XCB has allocated.
template <class T>
using XcbPointer = std::unique_ptr<T, XcbDeleter>;
using Event = XcbPointer<xcb_generic_event_t>;

/// Converts an event to the structure of its type.
template <class T>
[[nodiscard]] T eventAs(const xcb_generic_event_t& event) {
  static_assert(sizeof(T) <= sizeof event);
  T result;
  std::memcpy(&result, &event, sizeof result);
  return result;
}

/// The highest bit of `response_type` is set in events that a client has sent with SendEvent.
inline constexpr std::uint8_t kSentByClient = 0x80;
[[nodiscard]] inline int typeOf(const xcb_generic_event_t& event) {
  return event.response_type & ~kSentByClient;
}
[[nodiscard]] inline bool isSentByClient(const xcb_generic_event_t& event) {
  return (event.response_type & kSentByClient) != 0;
}

/// A connection to the X server. It delivers events in order, waits for replies, reads properties,
/// and logs errors with the names of the requests that caused them. Requests.h has the functions
/// that send requests.
class Connection final : public NonCopyable {
 public:
  /// Returns null, with the reason in `error`, if the display cannot be opened. If `displayName` is
  /// empty, opens the display that the environment variable DISPLAY names.
  static std::unique_ptr<Connection> open(const std::string& displayName, std::string& error);
  ~Connection();

  [[nodiscard]] xcb_connection_t* get() const { return connection_; }
  [[nodiscard]] const xcb_screen_t& screen() const { return *screen_; }
  [[nodiscard]] xcb_window_t root() const { return screen_->root; }
  [[nodiscard]] xcb_atom_t atom(Atom atom) const { return atoms_[static_cast<std::size_t>(atom)]; }
  [[nodiscard]] xcb_window_t makeId() const { return xcb_generate_id(connection_); }
  /// Returns true if the window's id belongs to this connection.
  [[nodiscard]] bool hasCreated(xcb_window_t window) const;
  [[nodiscard]] bool isBroken() const { return xcb_connection_has_error(connection_) != 0; }
  void flush() const { xcb_flush(connection_); }
  /// Returns true if the server is Xwayland. On Xwayland, a Wayland compositor shows each child of
  /// the root window as a surface of its own. Blocks until the server has replied to the requests
  /// that the constructor and `requestMonitorName` have sent.
  [[nodiscard]] bool isXwayland();
  /// Requests the name of a monitor. `name` is the atom of the name. `isXwayland` recognises early
  /// versions of Xwayland by this name. Only the first call has an effect.
  void requestMonitorName(xcb_atom_t name);

  /// Returns the next event that has arrived, or null. Does not block. Remembers errors for
  /// `logErrors`.
  Event nextEvent();
  /// Returns true if there is an event or an error that `nextEvent` has not processed yet. Reads
  /// from the connection, but does not block.
  bool pollForEvent();
  /// Like `pollForEvent`, but does not read from the connection. `poll` on the connection's
  /// descriptor does not report an event that has already been read.
  bool pollForQueuedEvent();

  /// Passes each event to `isExpected`, and blocks until it returns true. `nextEvent` still returns
  /// all of these events. Returns false if the deadline passes or the connection breaks.
  bool waitForEvent(const std::function<bool(const xcb_generic_event_t&)>& isExpected,
                    Nanoseconds deadline);

  /// Call this after sending a request on `window`. If the request fails, the log names the
  /// request. `request` is the request's name and must be a string literal.
  void track(xcb_void_cookie_t cookie, const char* request, xcb_window_t window) {
    requestLog_.add(cookie.sequence, request, window);
  }
  /// Blocks until the reply to a request comes. Returns null if the request fails or the connection
  /// is broken. `wait` is XCB's function for the reply, for example `xcb_intern_atom_reply`.
  /// `request` (a string literal) and `window` describe the request in the log.
  template <class Reply, class Cookie>
  XcbPointer<Reply> waitForReply(Reply* (*wait)(xcb_connection_t*, Cookie, xcb_generic_error_t**),
                                 Cookie cookie, const char* request, xcb_window_t window) {
    xcb_generic_error_t* rawError = nullptr;
    XcbPointer<Reply> reply(wait(connection_, cookie, &rawError));
    if (const XcbPointer<xcb_generic_error_t> error(rawError); error != nullptr) {
      requestLog_.addError(*error, request, window);
    }
    return reply;
  }
  // RequestLog describes the following four operations.
  void markDestroyed(xcb_window_t window) { requestLog_.markDestroyed(window); }
  void unmarkDestroyed(xcb_window_t window) { requestLog_.unmarkDestroyed(window); }
  [[nodiscard]] bool hasErrors() const { return requestLog_.hasErrors(); }
  void logErrors() { requestLog_.logErrors(); }

  /// Requests a property. The overload of `readProperty` with a cookie reads the reply.
  [[nodiscard]] xcb_get_property_cookie_t requestProperty(xcb_window_t window,
                                                          xcb_atom_t name) const;
  /// Returns a property, or no value if the window does not have the property. Blocks for a round
  /// trip.
  std::optional<Property> readProperty(xcb_get_property_cookie_t cookie, xcb_window_t window);
  std::optional<Property> readProperty(xcb_window_t window, xcb_atom_t name);
  /// Like `readProperty`, but logs no error if the window does not exist.
  std::optional<Property> readPropertyIfWindowExists(xcb_window_t window, xcb_atom_t name);

  /// Returns the server's current time, or `XCB_CURRENT_TIME` if the connection is broken. Blocks
  /// for a round trip.
  xcb_timestamp_t serverTime();

 private:
  Connection(xcb_connection_t* connection, xcb_screen_t* screen);

  void internAtoms();
  bool enqueue(Event event);

  xcb_connection_t* connection_;
  xcb_screen_t* screen_;
  std::array<xcb_atom_t, kAtomNames.size()> atoms_{};
  // `serverTime` writes a property of this window.
  xcb_window_t serverTimeWindow_ = XCB_WINDOW_NONE;
  std::deque<Event> events_;  // read, but not returned by `nextEvent` yet
  RequestLog requestLog_;
  std::optional<xcb_query_extension_cookie_t> pendingXwaylandExtension_;
  std::optional<xcb_get_atom_name_cookie_t> pendingMonitorName_;
  bool hasRequestedMonitorName_ = false;
  bool isXwayland_ = false;  // false until a reply shows that the server is Xwayland
};

}  // namespace vel::x11
