/* SDL2 with window surfaces: a borderless white window and SDL's timer. */
#include <SDL2/SDL.h>

#include "Benchmarks/OnScreen/Programs/timestamps.h"

static void fail(void) {
  fprintf(stderr, "%s\n", SDL_GetError());
  exit(1);
}

static Uint32 push_tick(Uint32 interval, void* data) {
  SDL_Event event;
  (void)data;
  SDL_zero(event);
  event.type = SDL_USEREVENT;
  SDL_PushEvent(&event);
  return interval;
}

static void initialize(void) {
  /* On Wayland, SDL draws a window surface only with its accelerated renderer. */
  if (getenv("WAYLAND_DISPLAY") == NULL) {
    SDL_SetHint(SDL_HINT_FRAMEBUFFER_ACCELERATION, "0");
  }
  if (SDL_Init(SDL_INIT_VIDEO | SDL_INIT_TIMER) != 0) {
    fail();
  }
}

static SDL_Window* show_window(int x, int y, int width, int height) {
  SDL_Window* window = SDL_CreateWindow("splash", x, y, width, height, SDL_WINDOW_BORDERLESS);
  SDL_Surface* surface = window == NULL ? NULL : SDL_GetWindowSurface(window);
  if (surface == NULL) {
    fail();
  }
  SDL_FillRect(surface, NULL, SDL_MapRGB(surface->format, 255, 255, 255));
  SDL_UpdateWindowSurface(window);
  return window;
}

static void handle_events(Uint32 milliseconds) {
  Uint32 end = SDL_GetTicks() + milliseconds;
  while (SDL_GetTicks() < end) {
    SDL_Event event;
    SDL_WaitEventTimeout(&event, 10);
  }
}

static void show_first_window(void) {
  SDL_Window* window = show_window(FIRST_X, FIRST_Y, FIRST_WIDTH, FIRST_HEIGHT);
  handle_events(FIRST_MILLISECONDS);
  SDL_DestroyWindow(window);
  handle_events(PAUSE_MILLISECONDS);
}

int main(int argc, char** argv) {
  Arguments arguments = parse_arguments(argc, argv);
  SDL_Window* window;
  SDL_Event event;
  if (arguments.mode != MODE_COLD) {
    initialize();
    show_first_window();
  }
  show_start = read_clock();
  if (arguments.mode == MODE_COLD) {
    initialize();
  }
  window = show_window(arguments.x, arguments.y, arguments.width, arguments.height);
  show_end = read_clock();
  SDL_AddTimer(100, push_tick, NULL);
  while (tick_count < arguments.ticks && SDL_WaitEvent(&event)) {
    if (event.type == SDL_USEREVENT) {
      record_tick();
    } else if (event.type == SDL_WINDOWEVENT && event.window.event == SDL_WINDOWEVENT_EXPOSED) {
      SDL_UpdateWindowSurface(window);
    }
  }
  hide_start = read_clock();
  SDL_DestroyWindow(window);
  SDL_Quit();
  print_timestamps();
  return 0;
}
