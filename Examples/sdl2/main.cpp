// A host that draws only when an SDL event arrives. It waits for SDL events until the library's
// next deadline. The example uses the headless window system, so it needs no display.
#include <SDL.h>
#include <VelLaunchScreen/vel_launch_screen.h>

#include <algorithm>
#include <cstdio>

namespace {

// SDL does not wake up for the library's own connection, so the host checks it at this interval.
constexpr int kMaxWaitTime = 100;  // milliseconds

void willAppear(void* /*userData*/) { std::puts("will appear"); }
void didDisappear(void* /*userData*/) { std::puts("did disappear"); }
void recordEvent(void* userData, const char* event) {
  std::printf("event %s\n", event);
  *static_cast<bool*>(userData) = true;
}

// The time until the library's next deadline in milliseconds, at most `kMaxWaitTime`.
int waitTime(VelLaunchScreen* screen) {
  double seconds = -1;
  vel_next_deadline(screen, &seconds);
  return seconds < 0 ? kMaxWaitTime : std::min(static_cast<int>(seconds * 1000) + 1, kMaxWaitTime);
}

}  // namespace

int main(int /*argc*/, char** /*argv*/) {
  if (SDL_Init(SDL_INIT_EVENTS) != 0) {
    std::fprintf(stderr, "%s\n", SDL_GetError());
    return 1;
  }
  bool isEventRecorded = false;
  VelCallbacks callbacks = VEL_CALLBACKS_INIT;
  callbacks.user_data = &isEventRecorded;
  callbacks.will_appear = willAppear;
  callbacks.did_disappear = didDisappear;
  callbacks.record_event = recordEvent;
  VelCreateOptions options = VEL_CREATE_OPTIONS_INIT;
  options.display = "headless";
  options.callbacks = &callbacks;
  VelRequest request = VEL_REQUEST_INIT;
  request.event = "launch_end";
  request.seconds = 0.5;
  VelLaunchScreen* screen = nullptr;
  if (vel_create(&options, &screen) != VEL_OK || vel_request(screen, &request) != VEL_OK ||
      vel_present(screen, VEL_PRESENT_EMBEDDED) != VEL_OK) {
    std::fprintf(stderr, "%s\n", vel_last_error());
  }

  bool isRunning = screen != nullptr;
  while (isRunning && !isEventRecorded) {
    vel_pump(screen, nullptr);
    SDL_Event event;
    if (SDL_WaitEventTimeout(&event, waitTime(screen)) != 0) {
      isRunning = event.type != SDL_QUIT;
    }
  }
  vel_destroy(&screen);
  SDL_Quit();
  return isEventRecorded ? 0 : 1;
}
