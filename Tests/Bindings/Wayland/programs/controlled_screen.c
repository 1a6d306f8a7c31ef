#include "Tests/Bindings/Wayland/programs/controlled_screen.h"

#include <VelLaunchScreen/vel_launch_screen.h>
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

static volatile sig_atomic_t isPresentRequested;
static volatile sig_atomic_t isDismissRequested;
static volatile sig_atomic_t hasReceivedSigterm;

static VelLaunchScreen* screen;
// The size that the program last reported to the library.
static double reportedWidth;
static double reportedHeight;
static int hasScreenEnded;

static void handleSignal(int number) {
  if (number == SIGUSR1) {
    isPresentRequested = 1;
  } else if (number == SIGUSR2) {
    isDismissRequested = 1;
  } else {
    hasReceivedSigterm = 1;
  }
}

void handleSignals(void) {
  struct sigaction action;
  memset(&action, 0, sizeof(action));
  action.sa_handler = handleSignal;
  sigaction(SIGUSR1, &action, NULL);
  sigaction(SIGUSR2, &action, NULL);
  sigaction(SIGTERM, &action, NULL);
}

int isProgramEndRequested(void) { return hasReceivedSigterm != 0; }

int hasScreen(void) { return screen != NULL; }

static void recordEnd(void* userData, VelEndReason reason) {
  (void)userData;
  (void)reason;
  hasScreenEnded = 1;
}

static void requireOk(VelStatus status) {
  if (status != VEL_OK) {
    fprintf(stderr, "%s\n", vel_last_error());
    _exit(1);
  }
}

static void presentScreen(struct wl_display* display, struct wl_surface* surface, double width,
                          double height) {
  VelCallbacks callbacks = VEL_CALLBACKS_INIT;
  callbacks.ended = recordEnd;
  VelHostWindow window = VEL_HOST_WINDOW_INIT;
  window.wl_display = display;
  window.wl_surface = surface;
  window.width = reportedWidth = width;
  window.height = reportedHeight = height;
  VelCreateOptions options = VEL_CREATE_OPTIONS_INIT;
  options.callbacks = &callbacks;
  options.host_window = &window;
  VelRequest request = VEL_REQUEST_INIT;
  request.mode = "skip";
  request.event = "launch_end";
  request.seconds = 600;
  requireOk(vel_create(&options, &screen));
  requireOk(vel_request(screen, &request));
  requireOk(vel_present(screen, VEL_PRESENT_EMBEDDED));
}

void updateScreen(struct wl_display* display, struct wl_surface* surface, double width,
                  double height) {
  if (isPresentRequested) {
    isPresentRequested = 0;
    presentScreen(display, surface, width, height);
  }
  if (screen != NULL) {
    if (width != reportedWidth || height != reportedHeight) {
      requireOk(vel_resized(screen, reportedWidth = width, reportedHeight = height));
    }
    if (isDismissRequested) {
      isDismissRequested = 0;
      requireOk(vel_dismiss(screen));
    }
    requireOk(vel_pump(screen, NULL));
    if (hasScreenEnded) {
      hasScreenEnded = 0;
      requireOk(vel_destroy(&screen));
    }
  }
  if (wl_display_get_error(display) != 0) {
    fprintf(stderr, "the connection has a protocol error\n");
    _exit(1);
  }
}

void endProgram(struct wl_display* display) { _exit(wl_display_roundtrip(display) < 0 ? 1 : 0); }
