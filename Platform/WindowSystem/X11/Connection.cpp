#include "Platform/WindowSystem/X11/Connection.h"

#include <xcb/randr.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "Platform/Foundation/NSLog.h"
#include "Platform/WindowSystem/X11/BrokenPipeGuard.h"

namespace vel::x11 {

namespace {

// More than can be under way between two looks at the events.
constexpr std::size_t kRequestsRemembered = 2048;
constexpr std::size_t kEndedWindowsRemembered = 256;
constexpr std::uint32_t kWholeProperty = 0x1FFFFFFF;

constexpr std::array kErrorNames{
    "Success",   "BadRequest", "BadValue",    "BadWindow",   "BadPixmap", "BadAtom",
    "BadCursor", "BadFont",    "BadMatch",    "BadDrawable", "BadAccess", "BadAlloc",
    "BadColor",  "BadGC",      "BadIDChoice", "BadName",     "BadLength", "BadImplementation"};

std::string nameOfError(std::uint8_t code) {
  return code < kErrorNames.size() ? kErrorNames.at(code) : "error " + std::to_string(code);
}

const char* reasonOf(int connectionError) {
  switch (connectionError) {
    case XCB_CONN_CLOSED_PARSE_ERR:
      return "its name is malformed";
    case XCB_CONN_CLOSED_INVALID_SCREEN:
      return "it has no such screen";
    default:
      return "it does not answer";
  }
}

}  // namespace

std::unique_ptr<Connection> Connection::open(const std::string& displayName, std::string& error) {
  int number = 0;
  const char* const name = displayName.empty() ? nullptr : displayName.c_str();
  xcb_connection_t* const connection = xcb_connect(name, &number);
  if (const int failure = xcb_connection_has_error(connection); failure != 0) {
    xcb_disconnect(connection);
    const char* const environment = std::getenv("DISPLAY");
    const std::string asked = name != nullptr ? name : environment != nullptr ? environment : "";
    error = asked.empty() ? "no X11 display is named (DISPLAY is not set)"
                          : "cannot open the X11 display \"" + asked + "\": " + reasonOf(failure);
    return nullptr;
  }
  xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
  for (; number > 0 && screens.rem > 1; --number) {
    xcb_screen_next(&screens);
  }
  return std::unique_ptr<Connection>(new Connection(connection, screens.data));
}

Connection::Connection(xcb_connection_t* connection, xcb_screen_t* screen)
    : connection_(connection), screen_(screen) {
  xcb_prefetch_extension_data(connection_, &xcb_randr_id);  // answered along with the names
  internAtoms();
  timeWindow_ = makeId();
  constexpr std::uint32_t kEvents = XCB_EVENT_MASK_PROPERTY_CHANGE;
  track(xcb_create_window(connection_, 0, timeWindow_, root(), -1, -1, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                          &kEvents),
        "CreateWindow", timeWindow_);
}

Connection::~Connection() {
  const BrokenPipeGuard guard;
  // A server drops what it has not read yet of a client that is gone: windows would not be given
  // back. Its answer tells that it has read everything.
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
      forgetAnswered(event->full_sequence);
      return event;
    }
    FromServer<xcb_generic_error_t> error(
        reinterpret_cast<xcb_generic_error_t*>(event.release()));  // NOLINT(*-reinterpret-cast)
    const auto request = std::ranges::find(sent_, error->full_sequence, &SentRequest::sequence);
    if (request == sent_.end()) {
      noteError(std::move(error), "a request", XCB_WINDOW_NONE);
    } else {
      const SentRequest found = *request;
      forgetAnswered(error->full_sequence);
      noteError(std::move(error), found.name, found.window);
    }
  }
}

bool Connection::hasEvents() { return keep(Event(xcb_poll_for_event(connection_))); }

bool Connection::hasQueuedEvents() { return keep(Event(xcb_poll_for_queued_event(connection_))); }

// Keeps an event for later; answers whether there is any.
bool Connection::keep(Event event) {
  if (event != nullptr) {
    events_.push_back(std::move(event));
  }
  return !events_.empty();
}

void Connection::track(xcb_void_cookie_t cookie, const char* request, xcb_window_t window) {
  if (sent_.size() == kRequestsRemembered) {
    sent_.pop_front();
  }
  sent_.push_back({cookie.sequence, request, window});
}

// Whatever was sent before the request that an event is numbered after has been carried out.
void Connection::forgetAnswered(unsigned sequence) {
  while (!sent_.empty() && static_cast<int>(sent_.front().sequence - sequence) < 0) {
    sent_.pop_front();
  }
}

void Connection::noteError(FromServer<xcb_generic_error_t> error, const char* request,
                           xcb_window_t window) {
  failures_.push_back({error->error_code, request, window});
}

void Connection::markExisting(xcb_window_t window) { std::erase(ended_, window); }

void Connection::markDestroyed(xcb_window_t window) {
  if (window == XCB_WINDOW_NONE) {
    return;  // errors without a window are nobody's, and told
  }
  if (ended_.size() == kEndedWindowsRemembered) {
    ended_.pop_front();
  }
  ended_.push_back(window);
}

void Connection::logErrors() {
  for (const Failure& failure : std::exchange(failures_, {})) {
    if (std::ranges::find(ended_, failure.window) == ended_.end()) {
      NSLog("X11: %s for window %s failed: %s", std::string_view(failure.request),
            std::to_string(failure.window), nameOfError(failure.code));
    }
  }
}

xcb_get_property_cookie_t Connection::requestProperty(xcb_window_t window, xcb_atom_t name) const {
  return xcb_get_property(connection_, 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0,
                          kWholeProperty);
}

std::optional<Property> Connection::readProperty(xcb_window_t window, xcb_atom_t name) {
  return readProperty(requestProperty(window, name), window);
}

std::optional<Property> Connection::readProperty(xcb_get_property_cookie_t cookie,
                                                 xcb_window_t window) {
  return propertyIn(waitForReply(xcb_get_property_reply, cookie, "GetProperty", window));
}

std::optional<Property> Connection::readPropertyIfExists(xcb_window_t window, xcb_atom_t name) {
  return propertyIn(FromServer<xcb_get_property_reply_t>(
      xcb_get_property_reply(connection_, requestProperty(window, name), nullptr)));
}

std::optional<Property> Connection::propertyIn(const FromServer<xcb_get_property_reply_t>& reply) {
  if (reply == nullptr || reply->type == XCB_ATOM_NONE) {
    return std::nullopt;
  }
  const std::span bytes(static_cast<const std::uint8_t*>(xcb_get_property_value(reply.get())),
                        static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
  return Property{reply->type, reply->format, {bytes.begin(), bytes.end()}};
}

// A property written without a change brings an event with the time of the writing.
xcb_timestamp_t Connection::serverTime() {
  track(xcb_change_property(connection_, XCB_PROP_MODE_APPEND, timeWindow_, atom(Atom::VelTime),
                            XCB_ATOM_CARDINAL, 32, 0, nullptr),
        "ChangeProperty", timeWindow_);
  flush();
  while (Event event{xcb_wait_for_event(connection_)}) {
    if (typeOf(*event) == XCB_PROPERTY_NOTIFY) {
      const auto notice = eventAs<xcb_property_notify_event_t>(*event);
      if (notice.window == timeWindow_) {
        return notice.time;
      }
    }
    events_.push_back(std::move(event));
  }
  return XCB_CURRENT_TIME;
}

}  // namespace vel::x11
