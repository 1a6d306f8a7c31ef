// The functions of the C interface. They check their arguments and call the session.
#include "Bindings/C/vel_launch_screen.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Bindings/C/Session.h"
#include "Bindings/Json/JsonParameters.h"
#include "LaunchScreen/Helpers/LaunchScreenConstants.h"
#include "Platform/Foundation/NSNumber.h"
#include "Platform/Foundation/NSThread.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/Backends/Backends.h"

namespace {

using vel::Session;

// A fixed array, because storing an error must not fail.
thread_local char lastError[256] = "";

VelStatus fail(VelStatus status, std::string_view text) {
  const std::size_t length = text.copy(lastError, sizeof lastError - 1);
  lastError[length] = '\0';
  return status;
}

void clearLastError() { lastError[0] = '\0'; }

/// The session of the process. A handle is a number and never used as an address, so that the
/// library can detect a handle whose launch screen has been destroyed.
struct Registry {
  std::mutex mutex;
  std::unique_ptr<Session> session;
  std::uintptr_t handle = 0;
  /// True while a thread creates or ends a session. The thread does not hold the lock during this
  /// time. The flag prevents the creation of another session.
  bool isChanging = false;

  /// Returns the session of a handle, or null if the session has been destroyed. The caller holds
  /// the lock.
  [[nodiscard]] Session* find(const VelLaunchScreen* screen) const {
    const bool isCurrent = reinterpret_cast<std::uintptr_t>(screen) == handle;
    return isCurrent && session != nullptr && !session->isDestroyed() ? session.get() : nullptr;
  }
};

Registry& registry() {
  // The registry is never destroyed, because other threads may use it while the process ends.
  static auto& theRegistry = *new Registry();
  return theRegistry;
}

/// Calls `markEnded` when the owning thread of the session ends. Every owning thread has one
/// observer.
class ThreadEndObserver : vel::NonCopyable {
 public:
  ThreadEndObserver() = default;
  ~ThreadEndObserver() {
    const std::scoped_lock lock(registry().mutex);
    Session* const session = registry().session.get();
    if (session != nullptr && session->ownerThread.isCurrentThread()) {
      session->ownerThread.markEnded();
    }
  }
  /// The first call on a thread creates the observer of the thread.
  static void observeThisThread() { thread_local const ThreadEndObserver observer; }
};

/// The threads that may call a function.
enum class AllowedCaller : std::uint8_t {
  Owner,
  OwnerOrSuccessor,  // the owning thread or, after it has ended, any other thread
};

// Stores the session of a handle in `session`. Only the owning thread ends the session, so the
// pointer stays valid on this thread.
VelStatus findSession(const VelLaunchScreen* screen, AllowedCaller caller, Session*& session) {
  const std::scoped_lock lock(registry().mutex);
  session = registry().find(screen);
  if (session == nullptr) {
    return fail(VEL_NOT_ALIVE, "the launch screen is null or has been destroyed");
  }
  if (session->ownerThread.isCurrentThread()) {
    return VEL_OK;
  }
  if (caller == AllowedCaller::OwnerOrSuccessor && session->ownerThread.hasEnded()) {
    session->ownerThread.becomeCurrentThread();
    ThreadEndObserver::observeThisThread();
    vel::NSThread::becomeMainThread();
    return VEL_OK;
  }
  return fail(VEL_WRONG_THREAD, "only the thread that created the launch screen may call this");
}

// Ends the session. Returns the function that calls the last callbacks. The function may be empty.
std::function<void()> endSession() {
  std::unique_ptr<Session> session;
  {
    const std::scoped_lock lock(registry().mutex);
    registry().isChanging = true;
    session.swap(registry().session);
  }
  std::function<void()> lastCallbacks = session->takeLastCallbacks();
  session = nullptr;
  const std::scoped_lock lock(registry().mutex);
  registry().isChanging = false;
  return lastCallbacks;
}

/// A running function of this interface. The outermost running function ends a session that
/// `Session::markDestroyed` has marked.
class RunningFunction : vel::NonCopyable {
 public:
  /// If this object ends the session, stores the function that calls the last callbacks in
  /// `lastCallbacks`.
  RunningFunction(Session& session, std::function<void()>& lastCallbacks)
      : session_(session), lastCallbacks_(lastCallbacks) {
    session_.enterFunction();
  }
  ~RunningFunction() {
    if (session_.leaveFunction() && session_.isDestroyed()) {
      lastCallbacks_ = endSession();
    }
  }

 private:
  Session& session_;
  std::function<void()>& lastCallbacks_;
};

// Calls `body`. Converts an exception to a status, because C has no exceptions.
template <class Body>
VelStatus catchExceptions(Body&& body) {
  try {
    return body();
  } catch (const std::exception& exception) {
    return fail(VEL_INTERNAL_ERROR, exception.what());
  } catch (...) {
    return fail(VEL_INTERNAL_ERROR, "an exception of an unknown type");
  }
}

// Calls `body` with the session of a handle. `body` returns a status and stores the reason of a
// failure in its second argument.
template <class Body>
VelStatus withSession(VelLaunchScreen* screen, Body&& body,
                      AllowedCaller caller = AllowedCaller::Owner) {
  Session* session = nullptr;
  if (const VelStatus status = findSession(screen, caller, session); status != VEL_OK) {
    return status;
  }
  std::function<void()> lastCallbacks;
  const VelStatus status = catchExceptions([&] {
    const RunningFunction function(*session, lastCallbacks);
    session->deliverCallbacks();
    if (session->isDestroyed()) {
      return fail(VEL_NOT_ALIVE, "a callback has destroyed the launch screen");
    }
    std::string error;
    const VelStatus result = body(*session, error);
    if (!session->isDestroyed()) {
      session->deliverCallbacks();
    }
    return result == VEL_OK ? VEL_OK : fail(result, error);
  });
  if (lastCallbacks) {
    lastCallbacks();
  }
  if (status == VEL_OK) {
    clearLastError();  // a callback may have called a function that failed
  }
  return status;
}

// Stores the value that `readValue` returns in *result.
template <class Value, class ReadValue>
VelStatus storeResult(VelLaunchScreen* screen, Value* result, ReadValue&& readValue) {
  return withSession(screen, [&](Session& session, std::string& error) {
    if (result == nullptr) {
      error = "the pointer for the result is null";
      return VEL_INVALID_ARGUMENT;
    }
    *result = readValue(session);
    return VEL_OK;
  });
}

// `member` cannot be in parentheses. The size of a pointer is intended.
// NOLINTBEGIN(bugprone-macro-parentheses, bugprone-sizeof-expression)
// The size of a structure whose last member is `member`.
#define VEL_SIZE_UP_TO(Structure, member) (offsetof(Structure, member) + sizeof(Structure::member))

// The sizes that versions of this library have published, in ascending order. When a structure gets
// a new member, add its new size and keep the previous sizes.
constexpr std::array kCallbacksSizes{VEL_SIZE_UP_TO(VelCallbacks, display_lost),
                                     VEL_SIZE_UP_TO(VelCallbacks, ended),
                                     VEL_SIZE_UP_TO(VelCallbacks, take_controls)};
constexpr std::array kCreateOptionsSizes{VEL_SIZE_UP_TO(VelCreateOptions, callbacks),
                                         VEL_SIZE_UP_TO(VelCreateOptions, host_window)};
constexpr std::array kHostWindowSizes{VEL_SIZE_UP_TO(VelHostWindow, height)};
constexpr std::array kRequestSizes{VEL_SIZE_UP_TO(VelRequest, seconds)};
#undef VEL_SIZE_UP_TO
// NOLINTEND(bugprone-macro-parentheses, bugprone-sizeof-expression)
static_assert(kCallbacksSizes.back() == sizeof(VelCallbacks));
static_assert(kCreateOptionsSizes.back() == sizeof(VelCreateOptions));
static_assert(kHostWindowSizes.back() == sizeof(VelHostWindow));

// Copies a structure of a published size. Also copies a structure of a later version if all its
// unknown members are zero. In the copy, members that the structure does not have are zero. Returns
// no value for any other structure.
template <class Structure, std::size_t Count>
std::optional<Structure> copyKnownMembers(const Structure* structure,
                                          const std::array<std::size_t, Count>& publishedSizes) {
  constexpr std::size_t kMaximumSize = 4096;
  if (structure == nullptr || structure->size > kMaximumSize) {
    return std::nullopt;
  }
  const std::size_t size = structure->size;
  if (size <= sizeof(Structure) &&
      std::ranges::find(publishedSizes, size) == publishedSizes.end()) {
    return std::nullopt;
  }
  const auto* const bytes = reinterpret_cast<const unsigned char*>(structure);
  const std::size_t knownSize = std::min(size, sizeof(Structure));
  if (!std::all_of(bytes + knownSize, bytes + size, [](unsigned char byte) { return byte == 0; })) {
    return std::nullopt;
  }
  Structure copy{};
  std::memcpy(&copy, structure, knownSize);
  copy.size = sizeof(Structure);
  return copy;
}

bool isKnownMode(const char* text) {
  const auto& keys = vel::LaunchScreenContentRequest;
  return text == nullptr || text == keys.skip || text == keys.forced;
}

bool isValidSurfaceSide(double length) { return length >= 1 && length <= 32767; }

bool isValidWindowSide(double points) { return points == 0 || isValidSurfaceSide(points); }

// Copies the description of the window to cover. Stores no value if the host has no window.
VelStatus readHostWindow(const VelCreateOptions& options,
                         std::optional<vel::NativeWindow>& hostWindow) {
  hostWindow.reset();
  if (options.window != 0) {
    hostWindow = vel::X11WindowId{options.window};
  }
  if (options.host_window == nullptr) {
    return VEL_OK;
  }
  if (hostWindow) {
    return fail(VEL_INVALID_ARGUMENT, "the options have both a window and a host window");
  }
  const auto known = copyKnownMembers(options.host_window, kHostWindowSizes);
  if (!known) {
    return fail(VEL_INVALID_ARGUMENT, "the host window has an unknown size");
  }
  const bool isX11 = known->x11_window != 0;
  const bool isCocoa = known->ns_window != nullptr || known->ns_window_number != 0;
  const bool isWayland = known->wl_display != nullptr || known->wl_surface != nullptr ||
                         known->xdg_toplevel != nullptr;
  if (int{isX11} + int{isCocoa} + int{isWayland} != 1) {
    return fail(VEL_INVALID_ARGUMENT, "a host window has members of one window system");
  }
  if (isX11) {
    hostWindow = vel::X11WindowId{known->x11_window};
  } else if (isCocoa) {
    hostWindow = vel::CocoaWindow{known->ns_window, known->ns_window_number};
  } else if (known->wl_display == nullptr || known->wl_surface == nullptr) {
    return fail(VEL_INVALID_ARGUMENT, "the connection or the surface of the host is null");
  } else if (!isValidSurfaceSide(known->width) || !isValidSurfaceSide(known->height)) {
    return fail(VEL_INVALID_ARGUMENT, "the width and the height of a surface are 1 to 32767");
  } else {
    hostWindow = vel::WaylandSurface{.display = known->wl_display,
                                     .surface = known->wl_surface,
                                     .size = {known->width, known->height},
                                     .toplevel = known->xdg_toplevel};
  }
  return VEL_OK;
}

// Copies the options, the callbacks and the host's window if they are valid.
VelStatus readOptions(const VelCreateOptions* structure, VelCreateOptions& options,
                      VelCallbacks& callbacks, std::optional<vel::NativeWindow>& hostWindow) {
  const auto knownOptions = copyKnownMembers(structure, kCreateOptionsSizes);
  if (!knownOptions) {
    return fail(VEL_INVALID_ARGUMENT, "the options are null or have an unknown size");
  }
  options = *knownOptions;
  if (options.callbacks != nullptr) {
    const auto knownCallbacks = copyKnownMembers(options.callbacks, kCallbacksSizes);
    if (!knownCallbacks) {
      return fail(VEL_INVALID_ARGUMENT, "the callbacks have an unknown size");
    }
    callbacks = *knownCallbacks;
  }
  if (options.time != VEL_TIME_REAL && options.time != VEL_TIME_VIRTUAL) {
    return fail(VEL_INVALID_ARGUMENT, "unknown time");
  }
  if (!isValidWindowSide(options.width) || !isValidWindowSide(options.height)) {
    return fail(VEL_INVALID_ARGUMENT, "the width and the height of a window are 1 to 32767 points");
  }
  return readHostWindow(options, hostWindow);
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
    case VEL_BUSY:
      return "busy with another operation";
  }
  return "unknown status";
}

const char* vel_last_error(void) { return lastError; }

VelStatus vel_create(const VelCreateOptions* options, VelLaunchScreen** screen) {
  if (screen == nullptr) {
    return fail(VEL_INVALID_ARGUMENT, "the pointer for the handle is null");
  }
  *screen = nullptr;
  VelLaunchScreen* newScreen = nullptr;
  VelCreateOptions knownOptions = VEL_CREATE_OPTIONS_INIT;
  VelCallbacks knownCallbacks = VEL_CALLBACKS_INIT;
  std::optional<vel::NativeWindow> hostWindow;
  if (const VelStatus status = readOptions(options, knownOptions, knownCallbacks, hostWindow);
      status != VEL_OK) {
    return status;
  }
  {
    const std::scoped_lock lock(registry().mutex);
    if (registry().session != nullptr || registry().isChanging || vel::NSApp != nullptr) {
      return fail(VEL_ALREADY_EXISTS, "this process already has a launch screen");
    }
    registry().isChanging = true;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): never used as an address
    newScreen = reinterpret_cast<VelLaunchScreen*>(registry().handle + 1);
  }
  ThreadEndObserver::observeThisThread();
  std::unique_ptr<Session> session;
  const VelStatus status = catchExceptions([&] {
    std::string error;
    const VelStatus result =
        Session::create(knownOptions, hostWindow, knownCallbacks, session, error);
    if (result == VEL_OK) {
      vel::runPassesInHostLoop(vel::NSApp->windowSystem(),
                               [newScreen] { vel_pump(newScreen, nullptr); });
    }
    return result == VEL_OK ? VEL_OK : fail(result, error);
  });
  const std::scoped_lock lock(registry().mutex);
  registry().isChanging = false;
  if (status == VEL_OK) {
    clearLastError();
    registry().session = std::move(session);
    ++registry().handle;
    *screen = newScreen;
  }
  return status;
}

VelStatus vel_destroy(VelLaunchScreen** screen) {
  if (screen == nullptr) {
    return fail(VEL_INVALID_ARGUMENT, "the pointer to the handle is null");
  }
  return withSession(
      *screen,
      [screen](Session& session, std::string& /*error*/) {
        session.markDestroyed();
        *screen = nullptr;
        return VEL_OK;
      },
      AllowedCaller::OwnerOrSuccessor);
}

VelStatus vel_request(VelLaunchScreen* screen, const VelRequest* request) {
  return withSession(screen, [request](Session& session, std::string& error) {
    const auto knownRequest = copyKnownMembers(request, kRequestSizes);
    if (!knownRequest) {
      error = "the request is null or has an unknown size";
      return VEL_INVALID_ARGUMENT;
    }
    if (!isKnownMode(knownRequest->mode)) {
      error = "unknown mode";
      return VEL_INVALID_ARGUMENT;
    }
    if (std::isnan(knownRequest->seconds)) {
      error = "the time is not a number";
      return VEL_INVALID_ARGUMENT;
    }
    vel::NSDictionary::Entries entries;
    const auto& keys = vel::LaunchScreenContentRequest;
    if (knownRequest->mode != nullptr) {
      entries.emplace(keys.mode, vel::NSString::stringWithUTF8String(knownRequest->mode));
    }
    if (knownRequest->event != nullptr) {
      entries.emplace(keys.event, vel::NSString::stringWithUTF8String(knownRequest->event));
    }
    entries.emplace(keys.maxDurationTime, vel::NSNumber::numberWithDouble(knownRequest->seconds));
    return session.request(vel::NSDictionary::dictionaryWithEntries(std::move(entries)), error);
  });
}

VelStatus vel_request_json(VelLaunchScreen* screen, const char* json, size_t length) {
  return withSession(screen, [json, length](Session& session, std::string& error) {
    if (json == nullptr) {
      error = "the JSON text is null";
      return VEL_INVALID_ARGUMENT;
    }
    const auto parameters = vel::parametersFromJsonText({json, length}, error);
    return parameters != nullptr ? session.request(parameters, error) : VEL_INVALID_ARGUMENT;
  });
}

VelStatus vel_present(VelLaunchScreen* screen, VelPresentation presentation) {
  return withSession(screen, [presentation](Session& session, std::string& error) {
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
    // The lock keeps the session alive: its owning thread may destroy it at any time.
    const std::scoped_lock lock(registry().mutex);
    Session* const session = registry().find(screen);
    if (session != nullptr && !session->ownerThread.isCurrentThread()) {
      clearLastError();
      return catchExceptions([session] {
        std::string error;
        return session->dismiss(error);
      });
    }
  }
  return withSession(screen,
                     [](Session& session, std::string& error) { return session.dismiss(error); });
}

VelStatus vel_resized(VelLaunchScreen* screen, double width, double height) {
  return withSession(screen, [&](Session& session, std::string& error) {
    if (!isValidSurfaceSide(width) || !isValidSurfaceSide(height)) {
      error = "the width and the height of a surface are 1 to 32767";
      return VEL_INVALID_ARGUMENT;
    }
    return session.resized({width, height}, error);
  });
}

VelStatus vel_pump(VelLaunchScreen* screen, int* did_something) {
  return withSession(screen, [did_something](Session& session, std::string& /*error*/) {
    const bool hadWork = session.pump();
    if (did_something != nullptr) {
      *did_something = hadWork ? 1 : 0;
    }
    return VEL_OK;
  });
}

VelStatus vel_run(VelLaunchScreen* screen, double seconds) {
  return withSession(screen, [seconds](Session& session, std::string& error) {
    constexpr double kMaximum = 1e9;
    if (std::isnan(seconds) || seconds < 0 || seconds > kMaximum) {
      error = "the time is not in the range 0 to 1000000000 seconds";
      return VEL_INVALID_ARGUMENT;
    }
    return session.run(seconds, error);
  });
}

VelStatus vel_poll_descriptor(VelLaunchScreen* screen, int* descriptor) {
  return storeResult(screen, descriptor, [](const Session& /*session*/) {
    return vel::NSRunLoop::mainRunLoop().waitHandle().descriptor();
  });
}

VelStatus vel_next_deadline(VelLaunchScreen* screen, double* seconds) {
  return storeResult(screen, seconds, [](const Session& /*session*/) {
    const vel::NSRunLoop& loop = vel::NSRunLoop::mainRunLoop();
    const vel::Nanoseconds deadline = loop.nextDeadline();
    return deadline == vel::kNever
               ? -1.0
               : std::max(0.0, vel::secondsFromNanoseconds(deadline - loop.now()));
  });
}

VelStatus vel_seconds_left(VelLaunchScreen* screen, double* seconds) {
  return storeResult(screen, seconds, [](const Session& session) { return session.secondsLeft(); });
}

VelStatus vel_is_up(VelLaunchScreen* screen, int* up) {
  return storeResult(screen, up, [](const Session& session) { return session.isUp() ? 1 : 0; });
}

VelStatus vel_pause_reason(VelLaunchScreen* screen, VelPause* reason) {
  return storeResult(screen, reason, [](const Session& session) { return session.pauseReason(); });
}

VelStatus vel_state(VelLaunchScreen* screen, VelState* state) {
  return storeResult(screen, state, [](const Session& session) { return session.state(); });
}
