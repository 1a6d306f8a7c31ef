// An SDL 2 game.
//
// usage: hosts-sdl2 [resize|fullscreen|desktop|maximise [resizable|fixed]]
//
// The first argument names the change that the game makes to its window on SIGUSR1. On the next
// SIGUSR1, the game undoes the change. "fullscreen" and "desktop" both make the window fullscreen:
// "fullscreen" asks for a screen resolution of the window's size, and "desktop" keeps the current
// resolution. If the second argument is "fixed", the user cannot resize the window.
#include <SDL.h>
#include <signal.h>
#include <string.h>

static volatile sig_atomic_t isSignalled;

static void handleSignal(int number) {
  (void)number;
  isSignalled = 1;
}

int main(int argc, char** argv) {
  const char* change = argc > 1 ? argv[1] : "";
  SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
  if (SDL_Init(SDL_INIT_VIDEO) != 0) {
    return 1;
  }
  const Uint32 resizable = argc > 2 && strcmp(argv[2], "fixed") == 0 ? 0 : SDL_WINDOW_RESIZABLE;
  SDL_Window* window =
      SDL_CreateWindow("hosts-sdl2", 100, 80, 640, 480, resizable | SDL_WINDOW_SHOWN);
  SDL_Renderer* renderer = SDL_CreateRenderer(window, -1, SDL_RENDERER_SOFTWARE);
  struct sigaction action = {0};
  action.sa_handler = handleSignal;
  sigaction(SIGUSR1, &action, NULL);
  int isChanged = 0;
  for (int frame = 0;; ++frame) {
    SDL_Event event;
    while (SDL_PollEvent(&event)) {
      if (event.type == SDL_QUIT) {
        SDL_Quit();
        return 0;
      }
    }
    if (isSignalled) {
      isSignalled = 0;
      isChanged = !isChanged;
      if (strcmp(change, "resize") == 0) {
        SDL_SetWindowSize(window, isChanged ? 800 : 640, isChanged ? 600 : 480);
      } else if (strcmp(change, "fullscreen") == 0) {
        SDL_SetWindowFullscreen(window, isChanged ? SDL_WINDOW_FULLSCREEN : 0);
      } else if (strcmp(change, "desktop") == 0) {
        SDL_SetWindowFullscreen(window, isChanged ? SDL_WINDOW_FULLSCREEN_DESKTOP : 0);
      } else if (strcmp(change, "maximise") == 0 && isChanged) {
        SDL_MaximizeWindow(window);
      } else if (strcmp(change, "maximise") == 0) {
        SDL_RestoreWindow(window);
      }
    }
    SDL_SetRenderDrawColor(renderer, 70, 30, 90, 255);
    SDL_RenderClear(renderer);
    SDL_SetRenderDrawColor(renderer, 40, 120, 60, 255);
    const SDL_Rect box = {frame * 4 % 560, 40, 80, 80};
    SDL_RenderFillRect(renderer, &box);
    SDL_RenderPresent(renderer);
    SDL_Delay(16);
  }
}
