// An SDL 2 game on Wayland.
//
// usage: wayland-sdl2 RENDERER
//
// RENDERER is the name of an SDL renderer, such as "software" or "opengl".
#include <SDL.h>
#include <SDL_syswm.h>

#include "Tests/Bindings/Wayland/programs/controlled_screen.h"

int main(int argc, char** argv) {
  const char* rendererName = argc > 1 ? argv[1] : "";
  SDL_SetHint(SDL_HINT_VIDEODRIVER, "wayland");
  SDL_SetHint(SDL_HINT_RENDER_DRIVER, rendererName);
  SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
  SDL_SetHint(SDL_HINT_VIDEO_WAYLAND_ALLOW_LIBDECOR, "0");
  if (SDL_Init(SDL_INIT_VIDEO) != 0) {
    return 1;
  }
  SDL_Window* window = SDL_CreateWindow("game", 0, 0, 500, 320, SDL_WINDOW_RESIZABLE);
  SDL_Renderer* renderer = SDL_CreateRenderer(window, -1, 0);
  SDL_RendererInfo rendererInfo;
  SDL_SysWMinfo info;
  SDL_VERSION(&info.version);
  if (renderer == NULL || SDL_GetRendererInfo(renderer, &rendererInfo) != 0 ||
      strcmp(rendererInfo.name, rendererName) != 0 || !SDL_GetWindowWMInfo(window, &info)) {
    fprintf(stderr, "no renderer \"%s\": %s\n", rendererName, SDL_GetError());
    return 1;
  }
  handleSignals();
  while (!isProgramEndRequested()) {
    SDL_Event event;
    while (SDL_PollEvent(&event)) {
      if (event.type == SDL_MOUSEBUTTONDOWN && hasScreen()) {
        fprintf(stderr, "the game receives a click under the cover\n");
        return 1;
      }
    }
    int width = 0;
    int height = 0;
    SDL_GetWindowSize(window, &width, &height);
    updateScreen(info.info.wl.display, info.info.wl.surface, width, height);
    SDL_SetRenderDrawColor(renderer, 32, 64, 160, 255);
    SDL_RenderClear(renderer);
    SDL_RenderPresent(renderer);
    SDL_Delay(8);
  }
  endProgram(info.info.wl.display);
  return 1;
}
