/* A host with GLib's main loop. The library is a source of that loop. The loop waits for the
 * library's descriptor and next deadline. The example uses the headless window system, so it needs
 * no display. */
#include <VelLaunchScreen/vel_launch_screen.h>
#include <glib-unix.h>
#include <stdio.h>

typedef struct {
  GSource source;
  VelLaunchScreen* screen;
} LaunchScreenSource;

static gboolean prepare(GSource* source, int* milliseconds) {
  double seconds = -1;
  vel_next_deadline(((LaunchScreenSource*)source)->screen, &seconds);
  /* Rounded up, so the loop does not wake before the deadline. */
  *milliseconds = seconds < 0 ? -1 : (int)(seconds * 1000) + 1;
  return seconds == 0;
}

static gboolean dispatch(GSource* source, GSourceFunc callback, gpointer user_data) {
  (void)callback;
  (void)user_data;
  vel_pump(((LaunchScreenSource*)source)->screen, NULL);
  return G_SOURCE_CONTINUE;
}

/* Without `check`, GLib dispatches the source when its descriptor is readable or it is due. */
static GSourceFuncs functions = {prepare, NULL, dispatch, NULL, NULL, NULL};

static void will_appear(void* user_data) {
  (void)user_data;
  puts("will appear");
}

static void did_disappear(void* user_data) {
  (void)user_data;
  puts("did disappear");
}

static void record_event(void* user_data, const char* event) {
  printf("event %s\n", event);
  g_main_loop_quit((GMainLoop*)user_data);
}

int main(void) {
  GMainLoop* loop = g_main_loop_new(NULL, FALSE);
  VelLaunchScreen* screen = NULL;
  VelCallbacks callbacks = VEL_CALLBACKS_INIT;
  VelCreateOptions options = VEL_CREATE_OPTIONS_INIT;
  VelRequest request = VEL_REQUEST_INIT;

  callbacks.user_data = loop;
  callbacks.will_appear = will_appear;
  callbacks.did_disappear = did_disappear;
  callbacks.record_event = record_event;
  options.display = "headless";
  options.callbacks = &callbacks;
  request.event = "launch_end";
  request.seconds = 0.5;
  if (vel_create(&options, &screen) != VEL_OK || vel_request(screen, &request) != VEL_OK ||
      vel_present(screen, VEL_PRESENT_EMBEDDED) != VEL_OK) {
    fprintf(stderr, "%s\n", vel_last_error());
    vel_destroy(&screen);
    g_main_loop_unref(loop);
    return 1;
  }

  {
    int descriptor = -1;
    GSource* source = g_source_new(&functions, sizeof(LaunchScreenSource));
    ((LaunchScreenSource*)source)->screen = screen;
    vel_poll_descriptor(screen, &descriptor);
    g_source_add_unix_fd(source, descriptor, G_IO_IN);
    g_source_attach(source, NULL);
    g_main_loop_run(loop);
    g_source_destroy(source);
    g_source_unref(source);
  }
  vel_destroy(&screen);
  g_main_loop_unref(loop);
  return 0;
}
