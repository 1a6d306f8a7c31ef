// The C functions: they check what they are given, find the session, and answer with a status.
#include "Bindings/C/vel_launch_screen.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "Bindings/C/Session.h"
#include "Bindings/Json/JsonParameters.h"
#include "LaunchScreen/Helpers/LaunchScreenConstants.h"
#include "Platform/Foundation/NSNumber.h"

namespace {

using vel::Session;

// A fixed place: to say what went wrong must not go wrong itself.
thread_local char lastError[256] = "";

VelStatus fail(VelStatus status, std::string_view text) {
  const std::size_t length = text.copy(lastError, sizeof lastError - 1);
  lastError[length] = '\0';
  return status;
}

void clearLastError() { lastError[0] = '\0'; }

/// The one session there may be. Handles are numbers, never used as addresses, so that one that was
/// copied and kept beyond its end is found out.
struct Registry {
  std::mutex mutex;
  std::unique_ptr<Session> session;
  std::uintptr_t handle = 0;
  /// One is being made or ended, without the lock; no other may begin meanwhile.
  bool changing = false;

  /// The session that a handle stands for; none where that has been destroyed. Under the lock.
  [[nodiscard]] Session* find(const VelLaunchScreen* screen) const {
    const bool known = reinterpret_cast<std::uintptr_t>(screen) == handle;
    return known && session != nullptr && !session->isSilent() ? session.get() : nullptr;
  }
};

Registry& registry() {
  // Never destroyed: other threads may ask while the process ends.
  static auto& theRegistry = *new Registry();
  return theRegistry;
}

// Finds the session of a handle that the calling thread owns. Only this thread ends it, so it
// stays.
VelStatus findOwned(const VelLaunchScreen* screen, Session*& session) {
  const std::scoped_lock lock(registry().mutex);
  session = registry().find(screen);
  if (session == nullptr) {
    return fail(VEL_NOT_ALIVE, "there is no such launch screen, or it has been destroyed");
  }
  if (!session->isOwnedByThisThread()) {
    return fail(VEL_WRONG_THREAD, "only the thread that created the launch screen may call this");
  }
  return VEL_OK;
}

void endSession() {
  std::unique_ptr<Session> ended;
  {
    const std::scoped_lock lock(registry().mutex);
    registry().changing = true;
    ended.swap(registry().session);
  }
  ended = nullptr;
  const std::scoped_lock lock(registry().mutex);
  registry().changing = false;
}

/// Counts a call while it is under way. The outermost one ends a session that was destroyed inside.
class Call {
 public:
  explicit Call(Session& session) : session_(session) { ++session_.calls; }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;
  Call(Call&&) = delete;
  Call& operator=(Call&&) = delete;
  ~Call() {
    if (--session_.calls == 0 && session_.isSilent()) {
      endSession();
    }
  }

 private:
  Session& session_;
};

// Runs the body; no exception leaves it, since C has none.
template <class Body>
VelStatus guarded(Body&& body) {
  try {
    return body();
  } catch (const std::exception& problem) {
    return fail(VEL_INTERNAL_ERROR, problem.what());
  } catch (...) {
    return fail(VEL_INTERNAL_ERROR, "an exception of no known kind");
  }
}

// Runs a function's body on the session, which the calling thread has to own. The body answers a
// status and, where it fails, says why.
template <class Body>
VelStatus onSession(VelLaunchScreen* screen, Body&& body) {
  clearLastError();
  Session* session = nullptr;
  if (const VelStatus status = findOwned(screen, session); status != VEL_OK) {
    return status;
  }
  return guarded([&] {
    const Call call(*session);
    std::string error;
    const VelStatus status = body(*session, error);
    return status == VEL_OK ? VEL_OK : fail(status, error);
  });
}

// The same for a function that only reads something.
template <class Value, class Read>
VelStatus answer(VelLaunchScreen* screen, Value* result, Read&& read) {
  return onSession(screen, [&](Session& session, std::string& error) {
    if (result == nullptr) {
      error = "there is no place for the result";
      return VEL_INVALID_ARGUMENT;
    }
    *result = read(session);
    return VEL_OK;
  });
}

// Whether we understand a structure: it has what this version has, and what it has beyond that,
// from a later version, asks for nothing.
template <class Structure>
bool isUnderstood(const Structure* structure) {
  constexpr std::size_t kLargest = 4096;
  if (structure == nullptr || structure->size < sizeof(Structure) || structure->size > kLargest) {
    return false;
  }
  const auto* const bytes = reinterpret_cast<const unsigned char*>(structure);
  return std::all_of(bytes + sizeof(Structure), bytes + structure->size,
                     [](unsigned char byte) { return byte == 0; });
}

bool isMode(const char* text) {
  const auto& keys = vel::LaunchScreenContentRequest;
  return text == nullptr || text == keys.skip || text == keys.forced;
}

bool isWindowSide(double points) { return points == 0 || (points >= 1 && points <= 32767); }

VelStatus check(const VelCreateOptions* options, VelLaunchScreen** screen) {
  if (screen == nullptr) {
    return fail(VEL_INVALID_ARGUMENT, "there is no place for the result");
  }
  if (!isUnderstood(options)) {
    return fail(VEL_INVALID_ARGUMENT, "the options are missing, or of no known size");
  }
  if (options->callbacks != nullptr && !isUnderstood(options->callbacks)) {
    return fail(VEL_INVALID_ARGUMENT, "the callbacks are of no known size");
  }
  if (options->time != VEL_TIME_REAL && options->time != VEL_TIME_VIRTUAL) {
    return fail(VEL_INVALID_ARGUMENT, "unknown time");
  }
  if (!isWindowSide(options->width) || !isWindowSide(options->height)) {
    return fail(VEL_INVALID_ARGUMENT, "a window is 1 to 32767 points wide and high");
  }
  return VEL_OK;
}

}  // namespace

double vel_version_number(void) { return VelLaunchScreenVersionNumber; }

const char* vel_version_string(void) { return VelLaunchScreenVersionString; }

const char* vel_status_text(VelStatus status) {
  switch (status) {
    case VEL_OK:
      return "done";
    case VEL_INVALID_ARGUMENT:
      return "invalid argument";
    case VEL_NOT_ALIVE:
      return "no such launch screen";
    case VEL_WRONG_THREAD:
      return "wrong thread";
    case VEL_ALREADY_EXISTS:
      return "there is a launch screen already";
    case VEL_NO_DISPLAY:
      return "no display";
    case VEL_BAD_WINDOW:
      return "no such window";
    case VEL_REFUSED:
      return "request refused";
    case VEL_NOTHING_TO_PRESENT:
      return "nothing to present";
    case VEL_NOT_UP:
      return "no launch screen is up";
    case VEL_STILL_UP:
      return "a launch screen is up";
    case VEL_INTERNAL_ERROR:
      return "internal error";
  }
  return "unknown status";
}

const char* vel_last_error(void) { return lastError; }

VelStatus vel_create(const VelCreateOptions* options, VelLaunchScreen** screen) {
  clearLastError();
  if (screen != nullptr) {
    *screen = nullptr;
  }
  if (const VelStatus status = check(options, screen); status != VEL_OK) {
    return status;
  }
  {
    const std::scoped_lock lock(registry().mutex);
    if (registry().session != nullptr || registry().changing || vel::NSApp != nullptr) {
      return fail(VEL_ALREADY_EXISTS, "there is a launch screen in this process already");
    }
    registry().changing = true;
  }
  std::unique_ptr<Session> session;
  const VelStatus status = guarded([&] {
    std::string error;
    const VelStatus created = Session::create(*options, session, error);
    return created == VEL_OK ? VEL_OK : fail(created, error);
  });
  const std::scoped_lock lock(registry().mutex);
  registry().changing = false;
  if (status == VEL_OK) {
    registry().session = std::move(session);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): never used as an address
    *screen = reinterpret_cast<VelLaunchScreen*>(++registry().handle);
  }
  return status;
}

VelStatus vel_destroy(VelLaunchScreen** screen) {
  if (screen == nullptr) {
    return fail(VEL_INVALID_ARGUMENT, "there is no place where a launch screen could stand");
  }
  const VelStatus status = onSession(*screen, [](Session& session, std::string& /*error*/) {
    session.silence();
    return VEL_OK;
  });
  if (status == VEL_OK) {
    *screen = nullptr;
  }
  return status;
}

VelStatus vel_request(VelLaunchScreen* screen, const VelRequest* request) {
  return onSession(screen, [request](Session& session, std::string& error) {
    if (!isUnderstood(request)) {
      error = "the request is missing, or of no known size";
      return VEL_INVALID_ARGUMENT;
    }
    if (!isMode(request->mode)) {
      error = "unknown mode";
      return VEL_INVALID_ARGUMENT;
    }
    if (std::isnan(request->seconds)) {
      error = "the time is not a number";
      return VEL_INVALID_ARGUMENT;
    }
    vel::NSDictionary::Entries entries;
    const auto& keys = vel::LaunchScreenContentRequest;
    if (request->mode != nullptr) {
      entries.emplace(keys.mode, vel::NSString::stringWithUTF8String(request->mode));
    }
    if (request->event != nullptr) {
      entries.emplace(keys.event, vel::NSString::stringWithUTF8String(request->event));
    }
    entries.emplace(keys.maxDurationTime, vel::NSNumber::numberWithDouble(request->seconds));
    return session.request(vel::NSDictionary::dictionaryWithEntries(std::move(entries)), error);
  });
}

VelStatus vel_request_json(VelLaunchScreen* screen, const char* json, size_t length) {
  return onSession(screen, [json, length](Session& session, std::string& error) {
    if (json == nullptr) {
      error = "there is no JSON";
      return VEL_INVALID_ARGUMENT;
    }
    const auto parameters = vel::parametersFromJsonText({json, length}, error);
    return parameters != nullptr ? session.request(parameters, error) : VEL_INVALID_ARGUMENT;
  });
}

VelStatus vel_present(VelLaunchScreen* screen, VelPresentation presentation) {
  return onSession(screen, [presentation](Session& session, std::string& error) {
    if (presentation != VEL_PRESENT_EMBEDDED && presentation != VEL_PRESENT_SHEET &&
        presentation != VEL_PRESENT_MODAL) {
      error = "unknown presentation";
      return VEL_INVALID_ARGUMENT;
    }
    return session.present(presentation, error);
  });
}

VelStatus vel_dismiss(VelLaunchScreen* screen) {
  {
    // Held while another thread's session is asked: its owner may destroy it meanwhile.
    const std::scoped_lock lock(registry().mutex);
    Session* const session = registry().find(screen);
    if (session != nullptr && !session->isOwnedByThisThread()) {
      clearLastError();
      return guarded([session] {
        session->dismiss();
        return VEL_OK;
      });
    }
  }
  return onSession(screen, [](Session& session, std::string& error) {
    if (!session.isUp()) {
      error = "no launch screen is shown";
      return VEL_NOT_UP;
    }
    session.dismiss();
    return VEL_OK;
  });
}

VelStatus vel_pump(VelLaunchScreen* screen, int* did_something) {
  return onSession(screen, [did_something](Session& /*session*/, std::string& /*error*/) {
    const bool did = vel::NSRunLoop::mainRunLoop().pump();
    if (did_something != nullptr) {
      *did_something = did ? 1 : 0;
    }
    return VEL_OK;
  });
}

VelStatus vel_run(VelLaunchScreen* screen, double seconds) {
  return onSession(screen, [seconds](Session& session, std::string& error) {
    constexpr double kLongest = 1e9;
    if (std::isnan(seconds) || seconds < 0 || seconds > kLongest) {
      error = "a time is 0 to 1000000000 seconds";
      return VEL_INVALID_ARGUMENT;
    }
    session.run(seconds);
    return VEL_OK;
  });
}

VelStatus vel_poll_descriptor(VelLaunchScreen* screen, int* descriptor) {
  return answer(screen, descriptor, [](const Session& /*session*/) {
    return vel::NSRunLoop::mainRunLoop().descriptor();
  });
}

VelStatus vel_next_deadline(VelLaunchScreen* screen, double* seconds) {
  return answer(screen, seconds, [](const Session& /*session*/) {
    const vel::NSRunLoop& loop = vel::NSRunLoop::mainRunLoop();
    const vel::Nanoseconds deadline = loop.nextDeadline();
    return deadline == vel::kNever
               ? -1.0
               : std::max(0.0, vel::secondsFromNanoseconds(deadline - loop.now()));
  });
}

VelStatus vel_seconds_left(VelLaunchScreen* screen, double* seconds) {
  return answer(screen, seconds, [](const Session& session) { return session.secondsLeft(); });
}

VelStatus vel_is_up(VelLaunchScreen* screen, int* up) {
  return answer(screen, up, [](const Session& session) { return session.isUp() ? 1 : 0; });
}

VelStatus vel_pause_reason(VelLaunchScreen* screen, VelPause* reason) {
  return answer(screen, reason, [](const Session& session) { return session.pauseReason(); });
}

VelStatus vel_state(VelLaunchScreen* screen, VelState* state) {
  return answer(screen, state, [](const Session& session) { return session.state(); });
}
