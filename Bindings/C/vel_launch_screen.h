/* VelLaunchScreen for C and for every language that can call C.
 *
 * A launch screen covers the window of a host, such as a game, for a limited time. A complete run:
 *
 *     VelCallbacks callbacks = VEL_CALLBACKS_INIT;
 *     VelCreateOptions options = VEL_CREATE_OPTIONS_INIT;
 *     VelRequest request = VEL_REQUEST_INIT;
 *     VelLaunchScreen *screen = NULL;
 *     callbacks.record_event = my_record_event;
 *     options.window = my_window;
 *     options.callbacks = &callbacks;
 *     request.event = "launch_end";
 *     request.seconds = 5;
 *     vel_create(&options, &screen);
 *     vel_request(screen, &request);
 *     vel_present(screen, VEL_PRESENT_EMBEDDED);
 *     each frame: vel_pump(screen, NULL);
 *     vel_destroy(&screen);
 *
 * Threads. The thread that calls vel_create() is the owning thread of the launch screen. Every
 * function must be called on the owning thread unless its comment says that any thread may call it.
 * The library calls every callback on the owning thread. If the owning thread ends, the launch
 * screen stops: nothing counts down, and functions return VEL_WRONG_THREAD. Any other thread can
 * then call vel_destroy().
 *
 * Errors. Every function that can fail returns a VelStatus. No function throws an exception or ends
 * the process. After a failure, vel_last_error() returns the reason as text. A call that fails
 * changes nothing unless its comment says otherwise. Passing a null launch screen returns
 * VEL_NOT_ALIVE.
 *
 * Structures. The first member of every structure is the size of the structure. Initialize a
 * structure with its _INIT macro. The macro sets the size, and sets every other member to zero or
 * null. Zero or null selects the default. Later versions may add members at the end of a structure.
 * A later version accepts the structures of every earlier version. This version accepts a structure
 * of a later version if all members that this version does not know are zero.
 *
 * Strings are UTF-8 and end with a zero byte unless the comment says otherwise. */
#ifndef VEL_LAUNCH_SCREEN_H
#define VEL_LAUNCH_SCREEN_H

#include <stddef.h>
#include <stdint.h>

/* Marks the functions of the library. A program that uses the library as a DLL defines VEL_DLL.
 * CMake defines the macro. */
#if defined(VEL_DLL_EXPORTS)
#define VEL_C_EXPORT __declspec(dllexport)
#elif defined(VEL_DLL)
#define VEL_C_EXPORT __declspec(dllimport)
#elif defined(__GNUC__)
#define VEL_C_EXPORT __attribute__((visibility("default")))
#else
#define VEL_C_EXPORT
#endif

/* A caller may pass a value that an enumeration does not list. The library refuses such a value. In
 * C++, passing such a value is defined only for an enumeration with a fixed underlying type. */
#ifdef __cplusplus
#define VEL_ENUM(name) enum name : int
extern "C" {
#else
#define VEL_ENUM(name) enum name
#endif

/* A handle of a launch screen over one window. A process can have one launch screen at a time.
 * Using a handle after vel_destroy() is safe and returns VEL_NOT_ALIVE. */
typedef struct VelLaunchScreen VelLaunchScreen;

/* The result of a call. */
typedef VEL_ENUM(VelStatus){
    VEL_OK = 0,
    VEL_INVALID_ARGUMENT = 1,   /* a pointer is null, or a value or a structure size is unknown */
    VEL_NOT_ALIVE = 2,          /* the launch screen is null or has been destroyed */
    VEL_WRONG_THREAD = 3,       /* the calling thread is not the owning thread */
    VEL_ALREADY_EXISTS = 4,     /* this process already has a launch screen */
    VEL_NO_DISPLAY = 5,         /* the display is not supported or cannot be opened */
    VEL_BAD_WINDOW = 6,         /* the window does not exist or cannot be covered */
    VEL_REFUSED = 7,            /* the library rejects the parameters of the request */
    VEL_NOTHING_TO_PRESENT = 8, /* no request is loaded, or its launch screen cannot be shown */
    VEL_NOT_UP = 9,             /* no launch screen is shown */
    VEL_STILL_UP = 10,          /* a launch screen is shown and must end first */
    VEL_INTERNAL_ERROR = 11,    /* out of memory or file descriptors, or a fault of the library */
    VEL_BUSY = 12               /* a callback called this function during another operation */
} VelStatus;

/* How vel_present() shows the launch screen. */
typedef VEL_ENUM(VelPresentation){
    VEL_PRESENT_EMBEDDED = 0, /* over the content of the window; disables the window's controls */
    VEL_PRESENT_SHEET = 1,    /* in a sheet that is attached to the window */
    VEL_PRESENT_MODAL = 2     /* in a modal window of its own */
} VelPresentation;

/* The state of the content that a request loads. */
typedef VEL_ENUM(VelState){
    VEL_STATE_NONE = 0,   /* there has been no request */
    VEL_STATE_LOADED = 3, /* the launch screen can be presented */
    VEL_STATE_FAILED = 4  /* the launch screen cannot be presented */
} VelState;

/* Why the countdown is paused. */
typedef VEL_ENUM(VelPause){
    VEL_PAUSE_NONE = 0,         /* the countdown is running */
    VEL_PAUSE_NOT_UP = 1,       /* the launch screen is not shown */
    VEL_PAUSE_NOT_IN_FRONT = 2, /* no window that shows the launch screen has the keyboard focus */
    VEL_PAUSE_NO_TIME_LEFT = 3  /* the time is used up */
} VelPause;

/* Why a presented launch screen has ended. */
typedef VEL_ENUM(VelEndReason){
    VEL_END_TIME_USED_UP = 1,  /* the time is used up */
    VEL_END_DISMISSED = 2,     /* the host has called vel_dismiss() */
    VEL_END_WINDOW_CLOSED = 3, /* the window that showed the launch screen has been closed */
    VEL_END_DISPLAY_LOST = 4,  /* the connection to the display is lost */
    VEL_END_DESTROYED = 5      /* vel_destroy() has ended the launch screen before it disappeared */
} VelEndReason;

/* The clock that the countdown uses. */
typedef VEL_ENUM(VelTime){
    VEL_TIME_REAL = 0,   /* the monotonic clock of the system */
    VEL_TIME_VIRTUAL = 1 /* for tests: time advances only in vel_run(), which does not wait */
} VelTime;

/* The controls of a window, as bits. */
#define VEL_CONTROL_CLOSE 2u
#define VEL_CONTROL_MINIATURIZE 4u
#define VEL_CONTROL_RESIZE 8u

/* The functions that the library calls to notify the host. Every member may be null. The library
 * calls them from inside a call of the host to this library, never at another time. Every string is
 * valid only during the callback.
 *
 * A callback may call any function of this interface. The library calls log_line, will_appear and
 * may_disappear during an operation. Inside these three callbacks, vel_request() and vel_present()
 * return VEL_BUSY and change nothing, and vel_dismiss() takes effect after the operation. The
 * library calls all other callbacks after the operation. Every function works normally inside those
 * callbacks.
 *
 * If a callback calls vel_destroy(), the library calls no further callback except `ended`. */
typedef struct VelCallbacks {
  size_t size;     /* sizeof(VelCallbacks) */
  void* user_data; /* the first argument of every callback */
  /* The state of the content has changed. `error` is null unless the new state is
   * VEL_STATE_FAILED. Null: the host is not notified. */
  void (*state_changed)(void* user_data, VelState state, const char* error);
  /* The cover is about to appear. Null: the host is not notified. */
  void (*will_appear)(void* user_data);
  /* The library asks before each dismissal if the cover may disappear. Return 0 to keep the cover.
   * Null: the host always agrees. */
  int (*may_disappear)(void* user_data);
  /* The cover has disappeared. Exception: an embedded cover over a window without a content
   * controller is removed one second after this callback; `ended` reports its removal. Null: the
   * host is not notified. */
  void (*did_disappear)(void* user_data);
  /* The host should record this analytics event. The library calls record_event at most once. Null:
   * the library writes the event to the log. */
  void (*record_event)(void* user_data, const char* event);
  /* A log line, without a newline. Null: the library writes the line to standard error. */
  void (*log_line)(void* user_data, const char* line);
  /* The library has disabled or restored controls of the window. `controls` has the VEL_CONTROL_
   * bit of every disabled control that the window manager still offers. `controls` is 0 if the
   * window manager has removed all disabled controls. Null: the host is not notified. */
  void (*controls_kept)(void* user_data, uint32_t controls);
  /* The connection to the display is lost. The library treats all windows as closed. Null: the
   * host is not notified. */
  void (*display_lost)(void* user_data, const char* reason);
  /* A presented launch screen has ended: its cover has been removed. The library calls `ended`
   * exactly once for each successful vel_present(). If vel_destroy() ends the launch screen, the
   * handle is no longer valid in this callback, and `user_data` must stay valid until this callback
   * returns. Null: the host is not notified. */
  void (*ended)(void* user_data, VelEndReason reason);
  /* The host should remove these controls of its Wayland window with its toolkit, because Wayland
   * does not allow the library to remove them. `controls` has VEL_CONTROL_ bits. The host should
   * restore every control whose bit is not set. When the launch screen ends, `controls` is 0. If
   * vel_destroy() ends the launch screen, the handle is no longer valid in this callback, and
   * `user_data` must stay valid until this callback returns. The library calls take_controls only
   * for a window that VelHostWindow::wl_surface names. Null: the controls stay. */
  void (*take_controls)(void* user_data, uint32_t controls);
} VelCallbacks;

#define VEL_CALLBACKS_INIT \
  { sizeof(VelCallbacks), 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0 }

/* The objects of libwayland-client. */
struct wl_display;
struct wl_surface;
struct xdg_toplevel;

/* A window for vel_create() to cover. Set the members of one window system, and leave all other
 * members 0. All objects must stay valid until vel_destroy() returns. This includes the role
 * `xdg_toplevel`. */
typedef struct VelHostWindow {
  size_t size;         /* sizeof(VelHostWindow) */
  uint64_t x11_window; /* X11: the identifier of a window of any program */
  void* ns_window;     /* AppKit: an NSWindow of this process */
  /* AppKit: the windowNumber of an NSWindow of this process. Used if `ns_window` is null. */
  int64_t ns_window_number;
  struct wl_display* wl_display; /* Wayland: the connection of this process */
  struct wl_surface* wl_surface; /* Wayland: a surface of this connection */
  /* Wayland: the role of the surface. To disable resizing, the library sets the minimum and maximum
   * size of the role. To restore resizing, it removes both sizes. After vel_resized(), the next
   * commit of the host applies the new sizes. The window geometry must have the size of the
   * surface. Null: the library does not disable resizing. A sheet or a modal window then needs a
   * compositor with xdg-foreign, and the surface must have the role xdg_toplevel. */
  struct xdg_toplevel* xdg_toplevel;
  double width;  /* Wayland: width of the surface in surface coordinates, 1 to 32767 */
  double height; /* Wayland: height of the surface in surface coordinates, 1 to 32767 */
} VelHostWindow;

#define VEL_HOST_WINDOW_INIT \
  { sizeof(VelHostWindow), 0, 0, 0, 0, 0, 0, 0, 0 }

/* The options of vel_create(). */
typedef struct VelCreateOptions {
  size_t size; /* sizeof(VelCreateOptions) */
  /* "headless" for a display in memory, "x11", "wayland", or "cocoa" if the host links the AppKit
   * back end. "auto" or null: Wayland if `host_window` is a Wayland surface, or if $WAYLAND_DISPLAY
   * names a compositor and the options contain neither a window nor `display_name`. Otherwise Cocoa
   * on macOS and X11 elsewhere if a display can be opened, otherwise the display in memory. */
  const char* display;
  /* The name of the X display or of the Wayland display. Null: the value of $DISPLAY or of
   * $WAYLAND_DISPLAY. Not used if `host_window` is a Wayland surface. */
  const char* display_name;
  uint64_t window;   /* the X11 identifier of the host's window; 0: open a new window */
  const char* title; /* title of a new window; null: empty */
  double width;      /* width of a new window in points, 1 to 32767; 0: 1280 */
  double height;     /* height of a new window in points, 1 to 32767; 0: 720 */
  /* Not 0: give the window a content controller. A sheet requires a content controller. With a
   * content controller, an embedded cover is removed when did_disappear is called. Without a
   * content controller, the cover is removed one second after did_disappear. */
  int content_controller;
  VelTime time;                  /* the clock of the countdown */
  const VelCallbacks* callbacks; /* vel_create() copies the structure; null: no callbacks */
  /* The window to cover, on any window system. vel_create() copies the structure. If this member is
   * not null, `window` must be 0. Null: `window` names the window to cover. */
  const VelHostWindow* host_window;
} VelCreateOptions;

#define VEL_CREATE_OPTIONS_INIT \
  { sizeof(VelCreateOptions), 0, 0, 0, 0, 0, 0, 0, VEL_TIME_REAL, 0, 0 }

/* The parameters of a launch screen. */
typedef struct VelRequest {
  size_t size; /* sizeof(VelRequest) */
  /* "skip": the host may end the launch screen at any time, and no event is recorded. "forced" or
   * null: the launch screen stays until its time is used up. */
  const char* mode;
  const char* event; /* the name of the analytics event; must not be null or empty */
  /* How many seconds the launch screen stays. The library counts only the time during which the
   * launch screen is in front. It converts the value to single precision. The value must be greater
   * than 0. */
  double seconds;
} VelRequest;

#define VEL_REQUEST_INIT \
  { sizeof(VelRequest), 0, 0, 0 }

/* This interface returns the version of the library, such as 1.0. Any thread may call this
 * interface. */
VEL_C_EXPORT double vel_version_number(void);
/* This interface returns a string that contains the name and the version of the library. The string
 * is never null and is valid until the process ends. Any thread may call this interface. */
VEL_C_EXPORT const char* vel_version_string(void);

/* This interface returns a short English description of a status. The string is never null and is
 * valid until the process ends. Any thread may call this interface. */
VEL_C_EXPORT const char* vel_status_text(VelStatus status);
/* This interface returns the reason why the latest call on the calling thread failed. It returns ""
 * if the latest call succeeded, even if a callback made a call that failed. The string is never
 * null and is valid until the next call on the calling thread. Any thread may call this
 * interface. */
VEL_C_EXPORT const char* vel_last_error(void);

/* This interface creates a launch screen for a window and stores its handle in *screen. It does not
 * show anything yet. The calling thread becomes the owning thread. If the call fails, it stores
 * null in *screen. Any thread may call this interface.
 *
 * VEL_INVALID_ARGUMENT: `options` or `screen` is null, or an option has an invalid value.
 * VEL_ALREADY_EXISTS: this process already has a launch screen.
 * VEL_NO_DISPLAY: the display is not supported by this build or cannot be opened.
 * VEL_BAD_WINDOW: the window does not exist, cannot be covered, or is a window of another window
 * system than the display. */
VEL_C_EXPORT VelStatus vel_create(const VelCreateOptions* options, VelLaunchScreen** screen);

/* This interface ends a launch screen in any state, restores the window, and stores null in
 * *screen. The library discards an event that has not been recorded yet. The library calls no
 * callback after this call. Exceptions: it calls take_controls with 0 if the latest argument of
 * take_controls was not 0, and then it calls `ended` for a presented launch screen that has not
 * ended. If a callback calls this interface, the launch screen ends when the outermost call
 * returns. Only then does the library call take_controls and `ended`, and only then can a new
 * launch screen be created. If the owning thread has ended, any thread can call this interface and
 * becomes the owning thread.
 *
 * VEL_INVALID_ARGUMENT: `screen` is null.
 * VEL_NOT_ALIVE: *screen is null or has been destroyed. */
VEL_C_EXPORT VelStatus vel_destroy(VelLaunchScreen** screen);

/* This interface requests a launch screen. After success, vel_present() can show it.
 *
 * VEL_INVALID_ARGUMENT: `request` is null, its mode is unknown, or its time is not a number.
 * VEL_REFUSED: the event is null or empty, or the time is 0 or negative. If the event is missing or
 * the time is 0, vel_last_error() returns the log line of the library, and the mode and a valid
 * event remain stored in the library. The launch screen of an earlier request can still be
 * presented.
 * VEL_STILL_UP: a launch screen is shown.
 * VEL_BUSY: the caller is log_line, will_appear or may_disappear. */
VEL_C_EXPORT VelStatus vel_request(VelLaunchScreen* screen, const VelRequest* request);
/* This interface requests a launch screen like vel_request(), with the parameters from a JSON
 * object. `length` is the number of bytes of `json`, which needs no zero byte at its end. The
 * members of the object are "mode", "event" and "max_duration_time". The time is a number or a
 * string; true counts as 1 and false as 0. Every mode other than "skip" means "forced". Other
 * members are ignored.
 *
 * VEL_INVALID_ARGUMENT: `json` is null or is not one JSON object, or the event contains a zero
 * byte. VEL_REFUSED, VEL_STILL_UP, VEL_BUSY: like vel_request(). */
VEL_C_EXPORT VelStatus vel_request_json(VelLaunchScreen* screen, const char* json, size_t length);

/* This interface shows the launch screen of the latest request. Each request can be presented once.
 *
 * VEL_INVALID_ARGUMENT: the presentation is unknown.
 * VEL_NOTHING_TO_PRESENT: no request is loaded, the latest request has been presented, the window
 * has been closed, a sheet is requested for a window without a content controller, or a sheet or a
 * modal window is requested for a Wayland surface without its xdg_toplevel, under a compositor
 * without xdg-foreign.
 * VEL_INTERNAL_ERROR: the launch screen may be shown nevertheless; `ended` then reports its end.
 * VEL_BUSY: the caller is log_line, will_appear or may_disappear. */
VEL_C_EXPORT VelStatus vel_present(VelLaunchScreen* screen, VelPresentation presentation);

/* This interface asks the launch screen to disappear. The callback may_disappear can keep it. In
 * mode "skip", a launch screen that is not in front disappears when it is in front again. In mode
 * "forced", the launch screen stays until its time is used up, and the event is recorded early. If
 * the launch screen disappears, the library calls did_disappear and `ended`. The return value is
 * VEL_OK whether it disappears or not. Any thread may call this interface. On a thread other than
 * the owning thread, the call returns VEL_OK immediately and takes effect in the next vel_pump() or
 * vel_run() of the owning thread.
 *
 * VEL_NOT_UP: no launch screen is shown. Only the owning thread receives this status. */
VEL_C_EXPORT VelStatus vel_dismiss(VelLaunchScreen* screen);

/* This interface reports the new size of a Wayland surface, in surface coordinates. Call it for
 * each new size, before the host commits a buffer of this size. Wayland does not report the size of
 * a surface to the library. The cover has the new size when this interface returns.
 *
 * VEL_INVALID_ARGUMENT: the width or the height is not 1 to 32767.
 * VEL_BAD_WINDOW: the window is not a Wayland surface of the host, or the window has been closed.
 */
VEL_C_EXPORT VelStatus vel_resized(VelLaunchScreen* screen, double width, double height);

/* This interface performs all work that is due and returns. Call it once per frame. It does not
 * wait for events or timers. It may block for a round trip to the X server. If `did_something` is
 * not null, this interface stores 1 in *did_something if there was any work, otherwise 0. */
VEL_C_EXPORT VelStatus vel_pump(VelLaunchScreen* screen, int* did_something);
/* This interface performs all work that becomes due during the next `seconds` seconds. It waits
 * while no work is due. In virtual time it does not wait. `seconds` must be from 0 to 1e9. It
 * returns earlier if a callback destroys the launch screen.
 *
 * VEL_INVALID_ARGUMENT: `seconds` is not in this range, or virtual time would exceed 9e9 seconds.
 */
VEL_C_EXPORT VelStatus vel_run(VelLaunchScreen* screen, double seconds);
/* This interface stores a file descriptor in *descriptor that is readable when vel_pump() has work.
 * Use it with poll() or select(). Do not read from it and do not close it. The descriptor does not
 * change until vel_destroy(). In virtual time, the descriptor is -1.
 *
 * VEL_INVALID_ARGUMENT: `descriptor` is null. */
VEL_C_EXPORT VelStatus vel_poll_descriptor(VelLaunchScreen* screen, int* descriptor);
/* This interface stores in *seconds the number of seconds until vel_pump() has work. It stores 0 if
 * there is work now, and a negative value if no timer is scheduled. An event of the display can
 * cause work earlier. The descriptor of vel_poll_descriptor() then becomes readable.
 *
 * VEL_INVALID_ARGUMENT: `seconds` is null. */
VEL_C_EXPORT VelStatus vel_next_deadline(VelLaunchScreen* screen, double* seconds);

/* This interface stores in *seconds the number of seconds for which the launch screen may still be
 * shown. The value is 0 or slightly negative at the end.
 *
 * VEL_INVALID_ARGUMENT: `seconds` is null. */
VEL_C_EXPORT VelStatus vel_seconds_left(VelLaunchScreen* screen, double* seconds);
/* This interface stores 1 in *up if the launch screen is shown, otherwise 0. A launch screen counts
 * as shown from vel_present() until its removal, even while its windows are not on the screen. The
 * library writes a log line if the X server has not mapped the cover after one second.
 *
 * VEL_INVALID_ARGUMENT: `up` is null. */
VEL_C_EXPORT VelStatus vel_is_up(VelLaunchScreen* screen, int* up);
/* This interface stores in *reason why the countdown is paused.
 *
 * VEL_INVALID_ARGUMENT: `reason` is null. */
VEL_C_EXPORT VelStatus vel_pause_reason(VelLaunchScreen* screen, VelPause* reason);
/* This interface stores in *state the state of the content.
 *
 * VEL_INVALID_ARGUMENT: `state` is null. */
VEL_C_EXPORT VelStatus vel_state(VelLaunchScreen* screen, VelState* state);

#ifdef __cplusplus
}
#endif

#endif
