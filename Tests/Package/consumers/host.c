/* A host in C. It runs a launch screen in virtual time and prints the callbacks. */
#include <VelLaunchScreen/vel_launch_screen.h>
#include <stdio.h>

static void will_appear(void* user_data) {
  (void)user_data;
  puts("will appear");
}

static void did_disappear(void* user_data) {
  (void)user_data;
  puts("did disappear");
}

static void record_event(void* user_data, const char* event) {
  int* is_event_recorded = (int*)user_data;
  printf("event %s\n", event);
  *is_event_recorded = 1;
}

int main(void) {
  int is_event_recorded = 0;
  VelLaunchScreen* screen = NULL;
  VelCallbacks callbacks = VEL_CALLBACKS_INIT;
  VelCreateOptions options = VEL_CREATE_OPTIONS_INIT;
  VelRequest request = VEL_REQUEST_INIT;

  callbacks.user_data = &is_event_recorded;
  callbacks.will_appear = will_appear;
  callbacks.did_disappear = did_disappear;
  callbacks.record_event = record_event;
  options.display = "headless";
  options.time = VEL_TIME_VIRTUAL;
  options.callbacks = &callbacks;
  request.event = "launch_end";
  request.seconds = 2;
  if (vel_create(&options, &screen) != VEL_OK || vel_request(screen, &request) != VEL_OK ||
      vel_present(screen, VEL_PRESENT_EMBEDDED) != VEL_OK || vel_run(screen, 60) != VEL_OK) {
    fprintf(stderr, "%s\n", vel_last_error());
    vel_destroy(&screen);
    return 1;
  }
  vel_destroy(&screen);
  return is_event_recorded ? 0 : 1;
}
