// A module of weston that runs the commands of tests. It listens on the socket "control" in the
// runtime folder of weston. A test connects, sends one command, and reads "ok" or "failed":
//
//     check                 does nothing
//     focus TITLE           raises a window and gives it the keyboard focus
//     close TITLE           asks the client to close a window
//     resize W H TITLE      asks the client to change the size of a window
//     move X Y TITLE        moves the upper left corner of a window
//     add-touch-screen      adds a touch screen to the seat
//     touch X Y             touches the added touch screen and lifts the finger
//
// weston places new windows at random. This module moves each window to the centre of the screen,
// also after each change of its size.
#include <libweston-desktop/libweston-desktop.h>
#include <libweston/libweston.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <time.h>
#include <unistd.h>

// libweston exports these functions for its back ends, but no header in Debian declares them.
int weston_seat_init_touch(struct weston_seat* seat);
struct weston_touch_device* weston_touch_create_touch_device(
    struct weston_touch* touch, const char* name, void* data,
    const struct weston_touch_device_ops* operations);
void notify_touch_normalized(struct weston_touch_device* device, const struct timespec* time,
                             int finger, double x, double y, const void* normalizedPoint, int type);
void notify_touch_frame(struct weston_touch_device* device);

struct Control {
  struct weston_compositor* compositor;
  struct wl_listener surfaceCreated;
  struct wl_list surfaces;  // of TrackedSurface
  struct weston_touch_device* touchDevice;
};

// Some surfaces are windows. libweston calls them desktop surfaces. A surface becomes a window only
// after its creation, so this module tracks all surfaces.
struct TrackedSurface {
  struct wl_list link;
  struct Control* control;
  struct weston_surface* surface;
  struct wl_listener committed;
  struct wl_listener destroyed;
  struct wl_event_source* centering;  // the scheduled call of `center`, or null
  int centeredWidth;                  // the size of the surface when `center` was last scheduled
  int centeredHeight;
};

// Centering

static void center(void* data) {
  struct TrackedSurface* tracked = data;
  const struct weston_surface* surface = tracked->surface;
  tracked->centering = NULL;
  if (!weston_surface_is_desktop_surface(tracked->surface)) {
    return;
  }
  const struct weston_output* output;
  output = wl_container_of(tracked->control->compositor->output_list.next, output, link);
  struct weston_view* view;
  wl_list_for_each(view, &surface->views, surface_link) {
    weston_view_set_position(view, (float)((output->width - surface->width) / 2),
                             (float)((output->height - surface->height) / 2));
  }
  weston_compositor_schedule_repaint(tracked->control->compositor);
}

// weston places a new window only after this function returns, so `center` runs later, when weston
// is idle.
static void handleCommit(struct wl_listener* listener, void* data) {
  (void)data;
  struct TrackedSurface* tracked = wl_container_of(listener, tracked, committed);
  if (tracked->centering == NULL && (tracked->surface->width != tracked->centeredWidth ||
                                     tracked->surface->height != tracked->centeredHeight)) {
    tracked->centeredWidth = tracked->surface->width;
    tracked->centeredHeight = tracked->surface->height;
    tracked->centering = wl_event_loop_add_idle(
        wl_display_get_event_loop(tracked->control->compositor->wl_display), center, tracked);
  }
}

static void handleDestroy(struct wl_listener* listener, void* data) {
  (void)data;
  struct TrackedSurface* tracked = wl_container_of(listener, tracked, destroyed);
  if (tracked->centering != NULL) {
    wl_event_source_remove(tracked->centering);
  }
  wl_list_remove(&tracked->link);
  wl_list_remove(&tracked->committed.link);
  wl_list_remove(&tracked->destroyed.link);
  free(tracked);
}

static void handleNewSurface(struct wl_listener* listener, void* data) {
  struct Control* control = wl_container_of(listener, control, surfaceCreated);
  struct TrackedSurface* tracked = calloc(1, sizeof(*tracked));
  tracked->control = control;
  tracked->surface = data;
  tracked->committed.notify = handleCommit;
  wl_signal_add(&tracked->surface->commit_signal, &tracked->committed);
  tracked->destroyed.notify = handleDestroy;
  wl_signal_add(&tracked->surface->destroy_signal, &tracked->destroyed);
  wl_list_insert(&control->surfaces, &tracked->link);
}

// Commands

static struct weston_desktop_surface* findWindow(struct Control* control, const char* title) {
  struct TrackedSurface* tracked;
  wl_list_for_each(tracked, &control->surfaces, link) {
    if (weston_surface_is_desktop_surface(tracked->surface)) {
      struct weston_desktop_surface* window = weston_surface_get_desktop_surface(tracked->surface);
      const char* text = weston_desktop_surface_get_title(window);
      if (text != NULL && strcmp(text, title) == 0) {
        return window;
      }
    }
  }
  return NULL;
}

static struct weston_seat* firstSeat(struct Control* control) {
  struct weston_seat* seat;
  wl_list_for_each(seat, &control->compositor->seat_list, link) { return seat; }
  return NULL;
}

static int focusWindow(struct Control* control, const char* title) {
  struct weston_desktop_surface* window = findWindow(control, title);
  if (window == NULL) {
    return 0;
  }
  struct weston_surface* surface = weston_desktop_surface_get_surface(window);
  struct weston_view* view;
  wl_list_for_each(view, &surface->views, surface_link) {
    struct weston_layer* layer = view->layer_link.layer;
    if (layer != NULL) {
      weston_layer_entry_remove(&view->layer_link);
      weston_layer_entry_insert(&layer->view_list, &view->layer_link);
      weston_view_geometry_dirty(view);
      weston_surface_damage(surface);
      weston_view_activate_input(view, firstSeat(control), WESTON_ACTIVATE_FLAG_CONFIGURE);
      return 1;
    }
  }
  return 0;
}

static int closeWindow(struct Control* control, const char* title) {
  struct weston_desktop_surface* window = findWindow(control, title);
  if (window != NULL) {
    weston_desktop_surface_close(window);
  }
  return window != NULL;
}

static int resizeWindow(struct Control* control, int width, int height, const char* title) {
  struct weston_desktop_surface* window = findWindow(control, title);
  if (window != NULL) {
    weston_desktop_surface_set_size(window, width, height);
  }
  return window != NULL;
}

static int moveWindow(struct Control* control, int x, int y, const char* title) {
  struct weston_desktop_surface* window = findWindow(control, title);
  if (window == NULL) {
    return 0;
  }
  struct weston_view* view;
  wl_list_for_each(view, &weston_desktop_surface_get_surface(window)->views, surface_link) {
    weston_view_set_position(view, (float)x, (float)y);
  }
  weston_compositor_schedule_repaint(control->compositor);
  return 1;
}

static int addTouchScreen(struct Control* control) {
  struct weston_seat* seat = firstSeat(control);
  weston_seat_init_touch(seat);
  control->touchDevice =
      weston_touch_create_touch_device(weston_seat_get_touch(seat), "/control", NULL, NULL);
  return control->touchDevice != NULL;
}

static int touchAt(struct Control* control, int x, int y) {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  notify_touch_normalized(control->touchDevice, &now, 0, x, y, NULL, WL_TOUCH_DOWN);
  notify_touch_frame(control->touchDevice);
  notify_touch_normalized(control->touchDevice, &now, 0, 0, 0, NULL, WL_TOUCH_UP);
  notify_touch_frame(control->touchDevice);
  return 1;
}

static int runCommand(struct Control* control, const char* command) {
  int first = 0;
  int second = 0;
  int titleStart = 0;
  if (strcmp(command, "check") == 0) {
    return 1;
  }
  if (strcmp(command, "add-touch-screen") == 0) {
    return addTouchScreen(control);
  }
  if (strncmp(command, "focus ", 6) == 0) {
    return focusWindow(control, command + 6);
  }
  if (strncmp(command, "close ", 6) == 0) {
    return closeWindow(control, command + 6);
  }
  if (sscanf(command, "resize %d %d %n", &first, &second, &titleStart) == 2 && titleStart > 0) {
    return resizeWindow(control, first, second, command + titleStart);
  }
  if (sscanf(command, "move %d %d %n", &first, &second, &titleStart) == 2 && titleStart > 0) {
    return moveWindow(control, first, second, command + titleStart);
  }
  if (sscanf(command, "touch %d %d", &first, &second) == 2) {
    return touchAt(control, first, second);
  }
  return 0;
}

// The socket

static int handleConnection(int listeningSocket, uint32_t mask, void* data) {
  (void)mask;
  const int connection = accept(listeningSocket, NULL, NULL);
  char command[256];
  const ssize_t size = recv(connection, command, sizeof(command) - 1, 0);
  if (size > 0) {
    command[size] = 0;
    const char* reply = runCommand(data, command) ? "ok" : "failed";
    send(connection, reply, strlen(reply), MSG_NOSIGNAL);
  }
  close(connection);
  return 0;
}

WL_EXPORT int wet_module_init(struct weston_compositor* compositor, int* argc, char* argv[]);

WL_EXPORT int wet_module_init(struct weston_compositor* compositor, int* argc, char* argv[]) {
  (void)argc;
  (void)argv;
  struct Control* control = calloc(1, sizeof(*control));  // lives as long as weston
  control->compositor = compositor;
  wl_list_init(&control->surfaces);
  control->surfaceCreated.notify = handleNewSurface;
  wl_signal_add(&compositor->create_surface_signal, &control->surfaceCreated);
  struct sockaddr_un address = {.sun_family = AF_UNIX};
  snprintf(address.sun_path, sizeof(address.sun_path), "%s/control", getenv("XDG_RUNTIME_DIR"));
  const int listeningSocket = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  if (bind(listeningSocket, (const struct sockaddr*)&address, sizeof(address)) != 0 ||
      listen(listeningSocket, 8) != 0) {
    return -1;
  }
  wl_event_loop_add_fd(wl_display_get_event_loop(compositor->wl_display), listeningSocket,
                       WL_EVENT_READABLE, handleConnection, control);
  return 0;
}
