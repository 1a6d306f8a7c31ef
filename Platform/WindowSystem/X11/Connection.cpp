#include "Platform/WindowSystem/X11/Connection.h"

#include <poll.h>
#include <xcb/randr.h>
#include <xcb/render.h>
#include <xcb/shape.h>

#include <algorithm>
#include <span>
#include <string_view>
#include <utility>

#include "Platform/WindowSystem/X11/BrokenPipeGuard.h"
#include "Platform/WindowSystem/X11/Timing.h"

namespace vel::x11 {

namespace {

constexpr std::uint32_t kMaximumPropertyLength = 0x1FFFFFFF;  // in units of four bytes
constexpr std::string_view kXwaylandName = "XWAYLAND";

const char* reasonFor(int connectionError) {
  switch (connectionError) {
    case XCB_CONN_CLOSED_PARSE_ERR:
      return "its name is malformed";
    case XCB_CONN_CLOSED_INVALID_SCREEN:
      return "it has no such screen";
    default:
      return "it does not answer";
  }
}

std::optional<Property> propertyIn(const XcbPointer<xcb_get_property_reply_t>& reply) {
  if (reply == nullptr || reply->type == XCB_ATOM_NONE) {
    return std::nullopt;
  }
  const std::span bytes(static_cast<const std::uint8_t*>(xcb_get_property_value(reply.get())),
                        static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
  return Property{reply->type, reply->format, {bytes.begin(), bytes.end()}};
}

}  // namespace

std::unique_ptr<Connection> Connection::open(const std::string& displayName, std::string& error) {
  int screenNumber = 0;
  const char* const name = displayName.empty() ? nullptr : displayName.c_str();
  xcb_connection_t* const connection = xcb_connect(name, &screenNumber);
  if (const int failure = xcb_connection_has_error(connection); failure != 0) {
    xcb_disconnect(connection);
    const char* const environment = std::getenv("DISPLAY");
    const std::string requestedName = name != nullptr          ? name
                                      : environment != nullptr ? environment
                                                               : "";
    error = requestedName.empty()
                ? "no X11 display is named (DISPLAY is not set)"
                : "cannot open the X11 display \"" + requestedName + "\": " + reasonFor(failure);
    return nullptr;
  }
  xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
  for (; screenNumber > 0 && screens.rem > 1; --screenNumber) {
    xcb_screen_next(&screens);
  }
  return std::unique_ptr<Connection>(new Connection(connection, screens.data));
}

Connection::Connection(xcb_connection_t* connection, xcb_screen_t* screen)
    : connection_(connection), screen_(screen) {
  // These requests share one round trip with the requests of `internAtoms`.
  xcb_prefetch_extension_data(connection_, &xcb_randr_id);
  xcb_prefetch_extension_data(connection_, &xcb_render_id);
  xcb_prefetch_extension_data(connection_, &xcb_shape_id);
  pendingXwaylandExtension_ = xcb_query_extension(
      connection_, static_cast<std::uint16_t>(kXwaylandName.size()), kXwaylandName.data());
  internAtoms();
  serverTimeWindow_ = makeId();
  constexpr std::uint32_t kEvents = XCB_EVENT_MASK_PROPERTY_CHANGE;
  track(xcb_create_window(connection_, 0, serverTimeWindow_, root(), -1, -1, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                          &kEvents),
        "CreateWindow", serverTimeWindow_);
}

// When a client disconnects, the server discards the requests that it has not read. Some of these
// requests may restore window hints that we have overridden. So the destructor waits until the
// server has read all requests.
Connection::~Connection() {
  const BrokenPipeGuard guard;
  waitForReply(xcb_get_input_focus_reply, xcb_get_input_focus(connection_), "GetInputFocus",
               XCB_WINDOW_NONE);
  xcb_disconnect(connection_);
}

void Connection::internAtoms() {
  std::array<xcb_intern_atom_cookie_t, kAtomNames.size()> cookies{};
  std::ranges::transform(kAtomNames, cookies.begin(), [this](std::string_view name) {
    return xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data());
  });
  std::ranges::transform(cookies, atoms_.begin(), [this](xcb_intern_atom_cookie_t cookie) {
    const auto reply = waitForReply(xcb_intern_atom_reply, cookie, "InternAtom", root());
    return reply == nullptr ? xcb_atom_t{XCB_ATOM_NONE} : reply->atom;
  });
}

void Connection::requestMonitorName(xcb_atom_t name) {
  if (!hasRequestedMonitorName_) {  // `isXwayland` needs only one name
    hasRequestedMonitorName_ = true;
    pendingMonitorName_ = xcb_get_atom_name(connection_, name);
  }
}

// Xwayland has the extension XWAYLAND since version 23.1. In earlier versions, the name of each
// monitor starts with "XWAYLAND".
bool Connection::isXwayland() {
  if (const auto cookie = std::exchange(pendingXwaylandExtension_, std::nullopt)) {
    const auto extension =
        waitForReply(xcb_query_extension_reply, *cookie, "QueryExtension", root());
    isXwayland_ = extension != nullptr && extension->present != 0;
  }
  if (const auto cookie = std::exchange(pendingMonitorName_, std::nullopt)) {
    const auto name = waitForReply(xcb_get_atom_name_reply, *cookie, "GetAtomName", root());
    isXwayland_ =
        isXwayland_ ||
        (name != nullptr &&
         std::string_view(xcb_get_atom_name_name(name.get()),
                          static_cast<std::size_t>(xcb_get_atom_name_name_length(name.get())))
             .starts_with(kXwaylandName));
  }
  return isXwayland_;
}

bool Connection::hasCreated(xcb_window_t window) const {
  const xcb_setup_t& setup = *xcb_get_setup(connection_);
  return (window & ~setup.resource_id_mask) == setup.resource_id_base;
}

Event Connection::nextEvent() {
  while (true) {
    Event event;
    if (events_.empty()) {
      event.reset(xcb_poll_for_event(connection_));
    } else {
      event = std::move(events_.front());
      events_.pop_front();
    }
    if (event == nullptr) {
      return nullptr;
    }
    if (event->response_type != 0) {
      requestLog_.removeBefore(event->full_sequence);
      return event;
    }
    requestLog_.addError(eventAs<xcb_generic_error_t>(*event));
  }
}

bool Connection::pollForEvent() { return enqueue(Event(xcb_poll_for_event(connection_))); }

bool Connection::pollForQueuedEvent() {
  return enqueue(Event(xcb_poll_for_queued_event(connection_)));
}

// Adds the event unless it is null. Returns true if the queue is not empty.
bool Connection::enqueue(Event event) {
  if (event != nullptr) {
    events_.push_back(std::move(event));
  }
  return !events_.empty();
}

bool Connection::waitForEvent(const std::function<bool(const xcb_generic_event_t&)>& isExpected,
                              Nanoseconds deadline) {
  flush();
  std::size_t checkedCount = 0;
  while (true) {
    while (Event event{xcb_poll_for_event(connection_)}) {
      events_.push_back(std::move(event));
    }
    for (; checkedCount < events_.size(); ++checkedCount) {
      const xcb_generic_event_t& event = *events_[checkedCount];
      if (event.response_type != 0 && isExpected(event)) {
        return true;
      }
    }
    const Nanoseconds timeLeft = deadline - steadyNow();
    if (timeLeft <= 0 || isBroken()) {
      return false;
    }
    constexpr Nanoseconds kMillisecond = kNanosecondsPerSecond / 1000;
    pollfd input{.fd = xcb_get_file_descriptor(connection_), .events = POLLIN, .revents = 0};
    poll(&input, 1, static_cast<int>(timeLeft / kMillisecond) + 1);
  }
}

xcb_get_property_cookie_t Connection::requestProperty(xcb_window_t window, xcb_atom_t name) const {
  return xcb_get_property(connection_, 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0,
                          kMaximumPropertyLength);
}

std::optional<Property> Connection::readProperty(xcb_get_property_cookie_t cookie,
                                                 xcb_window_t window) {
  return propertyIn(waitForReply(xcb_get_property_reply, cookie, "GetProperty", window));
}

std::optional<Property> Connection::readProperty(xcb_window_t window, xcb_atom_t name) {
  return readProperty(requestProperty(window, name), window);
}

std::optional<Property> Connection::readPropertyIfWindowExists(xcb_window_t window,
                                                               xcb_atom_t name) {
  return propertyIn(XcbPointer<xcb_get_property_reply_t>(
      xcb_get_property_reply(connection_, requestProperty(window, name), nullptr)));
}

// The protocol has no request for the time. Appending nothing to a property causes a
// PropertyNotify, which contains the time.
xcb_timestamp_t Connection::serverTime() {
  track(xcb_change_property(connection_, XCB_PROP_MODE_APPEND, serverTimeWindow_,
                            atom(Atom::VelTime), XCB_ATOM_CARDINAL, 32, 0, nullptr),
        "ChangeProperty", serverTimeWindow_);
  flush();
  while (Event event{xcb_wait_for_event(connection_)}) {
    if (typeOf(*event) == XCB_PROPERTY_NOTIFY) {
      const auto notice = eventAs<xcb_property_notify_event_t>(*event);
      if (notice.window == serverTimeWindow_) {
        return notice.time;
      }
    }
    events_.push_back(std::move(event));
  }
  return XCB_CURRENT_TIME;
}

}  // namespace vel::x11
