/* VelLaunchScreen for C and for every language that can call C.
 *
 * A launch screen covers a host's window for a bounded time. From creation to event:
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
 * Threads: the thread that calls vel_create owns the launch screen. All functions and all callbacks
 * belong to it, but for those whose comment says otherwise.
 *
 * Errors: every function that can fail answers a VelStatus, and none ends the process.
 * vel_last_error has the details in words. A call that fails has changed nothing, unless its
 * comment says otherwise.
 *
 * Structures begin with their size and are filled in from their _INIT value: 0 and null are the
 * defaults of all that follows. A later version of the library may have more members; it takes the
 * structures of this one all the same, and this one takes those of a later one as long as what it
 * does not know is 0. */
#ifndef VEL_LAUNCH_SCREEN_H
#define VEL_LAUNCH_SCREEN_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define VEL_C_EXPORT __attribute__((visibility("default")))
#else
#define VEL_C_EXPORT
#endif

/* Values that are not listed may come in, and are refused: in C++ this takes a fixed type. */
#ifdef __cplusplus
#define VEL_ENUM(name) enum name : int
extern "C" {
#else
#define VEL_ENUM(name) enum name
#endif

/* A launch screen over one window. One at a time in a process. */
typedef struct VelLaunchScreen VelLaunchScreen;

/* How a call went. */
typedef VEL_ENUM(VelStatus){
    VEL_OK = 0,
    VEL_INVALID_ARGUMENT = 1,   /* a null, an unknown value, a structure of no known size */
    VEL_NOT_ALIVE = 2,          /* no launch screen, or one that has been destroyed */
    VEL_WRONG_THREAD = 3,       /* not the thread that created it */
    VEL_ALREADY_EXISTS = 4,     /* there is one already in this process */
    VEL_NO_DISPLAY = 5,         /* the display is not built in, or does not answer */
    VEL_BAD_WINDOW = 6,         /* no such window, or one that cannot be covered */
    VEL_REFUSED = 7,            /* the library has no launch screen for this request */
    VEL_NOTHING_TO_PRESENT = 8, /* no request has been loaded, or nowhere to show it this way */
    VEL_NOT_UP = 9,             /* no launch screen is shown */
    VEL_STILL_UP = 10,          /* one is shown, and has to go first */
    VEL_INTERNAL_ERROR = 11     /* out of memory or of descriptors, or a fault of the library */
} VelStatus;

/* How the launch screen is shown. */
typedef VEL_ENUM(VelPresentation){
    VEL_PRESENT_EMBEDDED = 0, /* over the window's content; its controls are taken away */
    VEL_PRESENT_SHEET = 1,    /* in a sheet of the window */
    VEL_PRESENT_MODAL = 2     /* in a modal window of its own */
} VelPresentation;

/* How far the content of a request is. */
typedef VEL_ENUM(VelState){
    VEL_STATE_NONE = 0,   /* nothing requested yet */
    VEL_STATE_LOADED = 3, /* it can be presented */
    VEL_STATE_FAILED = 4  /* it cannot */
} VelState;

/* Why the time left stands still. */
typedef VEL_ENUM(VelPause){
    VEL_PAUSE_NONE = 0,         /* it does not: the countdown runs */
    VEL_PAUSE_NOT_UP = 1,       /* the launch screen is not up */
    VEL_PAUSE_NOT_IN_FRONT = 2, /* no window that shows it is key */
    VEL_PAUSE_NO_TIME_LEFT = 3  /* the time is used up */
} VelPause;

/* Which time the countdown runs on. */
typedef VEL_ENUM(VelTime){
    VEL_TIME_REAL = 0,
    VEL_TIME_VIRTUAL = 1 /* stands still but in vel_run, which then takes no time: for tests */
} VelTime;

/* Controls of a window, as bits. */
#define VEL_CONTROL_CLOSE 2u
#define VEL_CONTROL_MINIATURIZE 4u
#define VEL_CONTROL_RESIZE 8u

/* What the host hears, from inside its calls to this library. Each may be null. A callback may call
 * any function here. After vel_destroy in a callback no other one comes; the launch screen ends
 * when the call that led to the callback returns. Texts are valid during the call. */
typedef struct VelCallbacks {
  size_t size;     /* sizeof(VelCallbacks) */
  void* user_data; /* passed on to every callback */
  /* The content has changed its state; `error` is null unless it failed. */
  void (*state_changed)(void* user_data, VelState state, const char* error);
  /* The cover is about to appear. */
  void (*will_appear)(void* user_data);
  /* Whether the cover may go now (0: no); asked before each dismissal. */
  int (*may_disappear)(void* user_data);
  /* The cover has gone; or, embedded without a content controller, goes in a second. */
  void (*did_disappear)(void* user_data);
  /* The analytics event to record; once. Without this, each event gives one log line. */
  void (*record_event)(void* user_data, const char* event);
  /* A log line. Without this, lines go to standard error. */
  void (*log_line)(void* user_data, const char* line);
  /* After a change of style: the controls (VEL_CONTROL_ bits) that the window manager still offers
   * although they were taken away; 0 when it took them all. */
  void (*controls_kept)(void* user_data, uint32_t controls);
  /* The display's connection is lost; its windows count as closed. */
  void (*display_lost)(void* user_data, const char* reason);
} VelCallbacks;

#define VEL_CALLBACKS_INIT \
  { sizeof(VelCallbacks), 0, 0, 0, 0, 0, 0, 0, 0, 0 }

typedef struct VelCreateOptions {
  size_t size;              /* sizeof(VelCreateOptions) */
  const char* display;      /* "headless", "x11", or "auto" (null too) for the best there is */
  const char* display_name; /* which X display; null for the environment's */
  uint64_t window;          /* the host's window, by the window system's id; 0 opens one */
  const char* title;        /* of a window that is opened */
  double width;             /* of a window that is opened, in points; 0 for 1280 */
  double height;            /* likewise; 0 for 720 */
  int content_controller; /* not 0: the window gets a content controller. A sheet needs one, and an
                             embedded cover then goes at once when it ends, otherwise one second
                             after did_disappear */
  VelTime time;
  const VelCallbacks* callbacks; /* copied; null for none */
} VelCreateOptions;

#define VEL_CREATE_OPTIONS_INIT \
  { sizeof(VelCreateOptions), 0, 0, 0, 0, 0, 0, 0, VEL_TIME_REAL, 0 }

typedef struct VelRequest {
  size_t size;       /* sizeof(VelRequest) */
  const char* mode;  /* "skip": the host may end the launch screen at any time, and no event is
                        recorded; "forced", and null: it stays up for its time */
  const char* event; /* the analytics event */
  double seconds;    /* how long the launch screen stays up while in front; single precision */
} VelRequest;

#define VEL_REQUEST_INIT \
  { sizeof(VelRequest), 0, 0, 0 }

/* The library's version, such as 1.0, and a text that identifies it. Any thread. */
VEL_C_EXPORT double vel_version_number(void);
VEL_C_EXPORT const char* vel_version_string(void);

/* What a status means, in a few words; never null. Any thread. */
VEL_C_EXPORT const char* vel_status_text(VelStatus status);
/* Why the last call on the calling thread failed; "" where it did not. Valid until the thread's
 * next call. Any thread. */
VEL_C_EXPORT const char* vel_last_error(void);

/* Makes a launch screen for a window and stores it in *screen, or null where this fails: with
 * VEL_ALREADY_EXISTS, VEL_NO_DISPLAY or VEL_BAD_WINDOW, or with VEL_INVALID_ARGUMENT where an
 * option makes no sense. Nothing is shown yet. Any thread, which owns it from then on. */
VEL_C_EXPORT VelStatus vel_create(const VelCreateOptions* options, VelLaunchScreen** screen);

/* Ends the launch screen in any state, gives the window back as it was, and stores null in *screen.
 * Nothing is called back any more; an event not recorded by then is not recorded. From inside a
 * callback, the end, and with it the place for another launch screen, comes when the call that led
 * to it returns. VEL_NOT_ALIVE where *screen is null or destroyed. The owning thread. */
VEL_C_EXPORT VelStatus vel_destroy(VelLaunchScreen** screen);

/* Requests a launch screen. VEL_INVALID_ARGUMENT where the mode is unknown or the time is not a
 * number; VEL_REFUSED where the event is missing or empty or the time is 0 or less, and then
 * vel_last_error has the library's own words. What is read before a refusal stays: the mode, and
 * the event where it is there. VEL_STILL_UP while a launch screen is shown; nothing is read then.
 * The owning thread. */
VEL_C_EXPORT VelStatus vel_request(VelLaunchScreen* screen, const VelRequest* request);
/* The same from the JSON object that a content service sends, with "mode", "event" and
 * "max_duration_time" (a number or a text); a mode that nobody knows counts as "forced" there.
 * `length` is in bytes. VEL_INVALID_ARGUMENT where it is not a JSON object. The owning thread. */
VEL_C_EXPORT VelStatus vel_request_json(VelLaunchScreen* screen, const char* json, size_t length);

/* Shows what has been requested, once for each request. VEL_NOTHING_TO_PRESENT where nothing is
 * loaded or what is has been presented, where the window has been closed, or where a sheet has no
 * content controller to hang on. The owning thread. */
VEL_C_EXPORT VelStatus vel_present(VelLaunchScreen* screen, VelPresentation presentation);

/* Asks for the dismissal, as a host does in skip mode. In any other mode it is refused as long as
 * time is left, and the event is recorded early. Whether the cover goes is told by did_disappear.
 * VEL_NOT_UP where none is shown. Any thread; from another one the dismissal comes with the owner's
 * next vel_pump, and the answer is VEL_OK also where none is shown; nothing happens then. */
VEL_C_EXPORT VelStatus vel_dismiss(VelLaunchScreen* screen);

/* Does what there is to do now: once a frame. It waits for no event, only for the window system's
 * answers. *did_something (may be null) tells whether there was anything. The owning thread. */
VEL_C_EXPORT VelStatus vel_pump(VelLaunchScreen* screen, int* did_something);
/* Does what there is to do during `seconds`, waiting in between. The owning thread. */
VEL_C_EXPORT VelStatus vel_run(VelLaunchScreen* screen, double seconds);
/* A descriptor that becomes readable when vel_pump has something to do, for poll or select; do not
 * read from it or close it. It stays the same until vel_destroy. -1 in virtual time. The owning
 * thread. */
VEL_C_EXPORT VelStatus vel_poll_descriptor(VelLaunchScreen* screen, int* descriptor);
/* In how many seconds vel_pump has something to do at the latest: 0 for now, negative when only the
 * descriptor tells. The owning thread. */
VEL_C_EXPORT VelStatus vel_next_deadline(VelLaunchScreen* screen, double* seconds);

/* The seconds that the launch screen may still stay up; 0 or a little below at the end. The owning
 * thread. */
VEL_C_EXPORT VelStatus vel_seconds_left(VelLaunchScreen* screen, double* seconds);
/* Whether the cover is on the window. The owning thread. */
VEL_C_EXPORT VelStatus vel_is_up(VelLaunchScreen* screen, int* up);
/* Whether the countdown stands still, and why. The owning thread. */
VEL_C_EXPORT VelStatus vel_pause_reason(VelLaunchScreen* screen, VelPause* reason);
/* How far the content is. The owning thread. */
VEL_C_EXPORT VelStatus vel_state(VelLaunchScreen* screen, VelState* state);

#ifdef __cplusplus
}
#endif

#endif
