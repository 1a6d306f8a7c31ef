/* SDL2 on plain surfaces: a borderless white window and SDL's own timer. */
#include <SDL2/SDL.h>

#include "Benchmarks/OnScreen/Programs/stamps.h"

static Uint32 tick(Uint32 interval, void* data) {
  SDL_Event event;
  (void)data;
  SDL_zero(event);
  event.type = SDL_USEREVENT;
  SDL_PushEvent(&event);
  return interval;
}

int main(int argc, char** argv) {
  Arguments arguments = arguments_of(argc, argv);
  SDL_Window* window;
  SDL_Surface* surface;
  SDL_Event event;
  SDL_SetHint(SDL_HINT_FRAMEBUFFER_ACCELERATION, "0");
  if (SDL_Init(SDL_INIT_VIDEO | SDL_INIT_TIMER) != 0) {
    fprintf(stderr, "%s\n", SDL_GetError());
    return 1;
  }
  stamp_called = stamp_now();
  window = SDL_CreateWindow("splash", arguments.x, arguments.y, arguments.width, arguments.height,
                            SDL_WINDOW_BORDERLESS);
  surface = window == NULL ? NULL : SDL_GetWindowSurface(window);
  if (surface == NULL) {
    fprintf(stderr, "%s\n", SDL_GetError());
    return 1;
  }
  SDL_FillRect(surface, NULL, SDL_MapRGB(surface->format, 255, 255, 255));
  SDL_UpdateWindowSurface(window);
  stamp_returned = stamp_now();
  SDL_AddTimer(100, tick, NULL);
  while (stamp_tick_count < arguments.tenths && SDL_WaitEvent(&event)) {
    if (event.type == SDL_USEREVENT) {
      stamp_tick();
    } else if (event.type == SDL_WINDOWEVENT && event.window.event == SDL_WINDOWEVENT_EXPOSED) {
      SDL_UpdateWindowSurface(window);
    }
  }
  stamp_down = stamp_now();
  SDL_DestroyWindow(window);
  SDL_Quit();
  stamps_print();
  return 0;
}
