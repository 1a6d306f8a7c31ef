/* The game of sdl2-game in C99. It shows a launch screen over its own X11 window at start, keeps
 * drawing under the cover, 60 times a second, and appends the event to a file.
 *
 *     c-host [EVENTS_FILE [SECONDS [FRAMES]]]
 *
 * The game draws FRAMES frames (default 0) before it shows the launch screen. */
#include <SDL.h>
#include <SDL_syswm.h>
#include <VelLaunchScreen/vel_launch_screen.h>
#include <stdio.h>
#include <stdlib.h>

enum { WIDTH = 640, HEIGHT = 400, BALL = 60, FRAME_MILLISECONDS = 16 };

typedef struct {
  char* events_file;
  double seconds;
  int frames_before_launch_screen;
} Arguments;

typedef struct {
  int frames;
  int covered_frames;
  double longest_pump; /* seconds */
} Counts;

static void print_line(const char* text) {
  puts(text);
  fflush(stdout);
}

static int fail(const char* reason) {
  fprintf(stderr, "c-host: %s\n", reason);
  return 1;
}

static void record_event(void* user_data, const char* event) {
  const char* file = (const char*)user_data;
  FILE* events = fopen(file, "a");
  if (events == NULL || fprintf(events, "%s\n", event) < 0 || fclose(events) != 0) {
    perror(file);
    return;
  }
  print_line("event");
}

static void controls_kept(void* user_data, uint32_t controls) {
  (void)user_data;
  print_line(controls == 0 ? "no controls kept" : "controls kept");
}

/* Presents a launch screen over the game's window. Returns null if that fails. */
static VelLaunchScreen* show_launch_screen(SDL_Window* window, const Arguments* arguments) {
  SDL_SysWMinfo info;
  VelLaunchScreen* screen = NULL;
  VelCallbacks callbacks = VEL_CALLBACKS_INIT;
  VelCreateOptions options = VEL_CREATE_OPTIONS_INIT;
  VelRequest request = VEL_REQUEST_INIT;

  SDL_VERSION(&info.version)
  if (SDL_GetWindowWMInfo(window, &info) != SDL_TRUE || info.subsystem != SDL_SYSWM_X11) {
    fail("no X11 window: there is no launch screen");
    return NULL;
  }
  callbacks.user_data = arguments->events_file;
  callbacks.record_event = record_event;
  callbacks.controls_kept = controls_kept;
  options.display = "x11";
  options.window = info.info.x11.window;
  options.callbacks = &callbacks;
  request.event = "launch_end";
  request.seconds = arguments->seconds;
  if (vel_create(&options, &screen) != VEL_OK || vel_request(screen, &request) != VEL_OK ||
      vel_present(screen, VEL_PRESENT_EMBEDDED) != VEL_OK) {
    fail(vel_last_error());
    vel_destroy(&screen);
  }
  return screen;
}

/* Draws a ball that moves from side to side. */
static void draw(SDL_Renderer* renderer, int frame) {
  const int distance = WIDTH - BALL;
  const int position = frame * 5 % (2 * distance);
  SDL_Rect ball = {0, (HEIGHT - BALL) / 2, BALL, BALL};
  ball.x = position < distance ? position : 2 * distance - position;
  SDL_SetRenderDrawColor(renderer, 32, 64, 128, 255);
  SDL_RenderClear(renderer);
  SDL_SetRenderDrawColor(renderer, 255, 176, 32, 255);
  SDL_RenderFillRect(renderer, &ball);
  SDL_RenderPresent(renderer);
}

static void play(SDL_Window* window, SDL_Renderer* renderer, const Arguments* arguments,
                 Counts* counts) {
  VelLaunchScreen* screen = NULL;
  const double ticks_per_second = (double)SDL_GetPerformanceFrequency();
  int was_up = 0;
  int is_running = 1;
  while (is_running) {
    const Uint32 frame_start = SDL_GetTicks();
    SDL_Event event;
    while (SDL_PollEvent(&event)) {
      is_running = is_running && event.type != SDL_QUIT;
    }

    if (counts->frames == arguments->frames_before_launch_screen) {
      screen = show_launch_screen(window, arguments);
    }
    /* The only call in each frame. It does the work that is due and does not wait for events. */
    const Uint64 pump_start = SDL_GetPerformanceCounter();
    vel_pump(screen, NULL);
    const double pump_time = (double)(SDL_GetPerformanceCounter() - pump_start) / ticks_per_second;
    counts->longest_pump = pump_time > counts->longest_pump ? pump_time : counts->longest_pump;
    int is_up = 0;
    vel_is_up(screen, &is_up);
    if (is_up != was_up) {
      print_line(is_up ? "covered" : "uncovered");
      was_up = is_up;
    }

    draw(renderer, ++counts->frames);
    counts->covered_frames += is_up;
    if (is_up && counts->covered_frames % 30 == 0) {
      printf("%d frames covered\n", counts->covered_frames);
      fflush(stdout);
    }
    const Uint32 frame_time = SDL_GetTicks() - frame_start;
    SDL_Delay(frame_time < FRAME_MILLISECONDS ? FRAME_MILLISECONDS - frame_time : 0);
  }
  vel_destroy(&screen);
}

int main(int argc, char** argv) {
  char default_file[] = "events.txt";
  Arguments arguments;
  Counts counts = {0, 0, 0};

  arguments.events_file = argc > 1 ? argv[1] : default_file;
  arguments.seconds = argc > 2 ? atof(argv[2]) : 3;
  arguments.frames_before_launch_screen = argc > 3 ? atoi(argv[3]) : 0;
  /* The library recognises the player window by this class name. */
  SDL_setenv("SDL_VIDEO_X11_WMCLASS", "PlayerWindow", 1);
  if (SDL_Init(SDL_INIT_VIDEO) != 0) {
    return fail(SDL_GetError());
  }
  SDL_Window* window = SDL_CreateWindow("A game", SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED,
                                        WIDTH, HEIGHT, SDL_WINDOW_RESIZABLE);
  SDL_Renderer* renderer =
      window != NULL ? SDL_CreateRenderer(window, -1, SDL_RENDERER_SOFTWARE) : NULL;
  if (renderer == NULL) {
    SDL_Quit();
    return fail(SDL_GetError());
  }
  play(window, renderer, &arguments, &counts);
  SDL_DestroyRenderer(renderer);
  SDL_DestroyWindow(window);
  SDL_Quit();
  printf("%d frames, %d of them covered, longest pump %.3f ms\n", counts.frames,
         counts.covered_frames, counts.longest_pump * 1000);
  return 0;
}
