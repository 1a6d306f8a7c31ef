// A small SDL game that shows a launch screen over its own window at start, on X11 and on Wayland.
// It keeps drawing under the cover, 60 times a second, and appends the event to a file.
//
//     sdl2-game [EVENTS_FILE [SECONDS [FRAMES]]]
//
// The game draws FRAMES frames (default 0) before it shows the launch screen.
#include <SDL.h>
#include <SDL_syswm.h>
#include <VelLaunchScreen/vel_launch_screen.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kWidth = 640;
constexpr int kHeight = 400;
constexpr auto kFrameTime = std::chrono::microseconds(16'667);

template <class T, void (*destroy)(T*)>
struct Deleter {
  void operator()(T* object) const { destroy(object); }
};
using GameWindow = std::unique_ptr<SDL_Window, Deleter<SDL_Window, SDL_DestroyWindow>>;
using GameRenderer = std::unique_ptr<SDL_Renderer, Deleter<SDL_Renderer, SDL_DestroyRenderer>>;

// The arguments of the command line.
struct Arguments {
  const char* eventsFile = "events.txt";
  double seconds = 3;
  int framesBeforeLaunchScreen = 0;
};

// What the game prints at its end.
struct Counts {
  int frames = 0;
  int coveredFrames = 0;
  std::chrono::duration<double, std::milli> longestPump{0};
};

void printLine(const char* text) {
  std::puts(text);
  std::fflush(stdout);
}

int fail(const char* reason) {
  std::fprintf(stderr, "sdl2-game: %s\n", reason);
  return 1;
}

// The state that the callbacks use.
struct Game {
  SDL_Window* window = nullptr;
  const char* eventsFile = nullptr;
  std::uint32_t removedControls = 0;  // always 0 on X11, where the library removes them
};

Game& gameOf(void* userData) { return *static_cast<Game*>(userData); }

void recordEvent(void* userData, const char* event) {
  const char* const file = gameOf(userData).eventsFile;
  std::FILE* const events = std::fopen(file, "a");
  if (events == nullptr || std::fprintf(events, "%s\n", event) < 0 || std::fclose(events) != 0) {
    std::perror(file);
    return;
  }
  printLine("event");
}

void controlsKept(void* /*userData*/, std::uint32_t controls) {
  printLine(controls == 0 ? "no controls kept" : "controls kept");
}

// Called on Wayland only. `controls` has a bit for each control that the game must remove. SDL can
// disable resizing. It cannot remove the close control, so `handleEvent` ignores a close request
// while the bit is set. The miniaturise control stays.
void takeControls(void* userData, std::uint32_t controls) {
  Game& game = gameOf(userData);
  game.removedControls = controls;
  const bool isResizable = (controls & VEL_CONTROL_RESIZE) == 0;
  SDL_SetWindowResizable(game.window, isResizable ? SDL_TRUE : SDL_FALSE);
  printLine(controls == 0 ? "controls restored" : "controls removed");
}

// Describes the window for the library. Returns false if the window is neither an X11 nor a Wayland
// window.
bool describeWindow(SDL_Window* window, VelHostWindow& hostWindow) {
  SDL_SysWMinfo info;
  SDL_VERSION(&info.version)
  if (SDL_GetWindowWMInfo(window, &info) != SDL_TRUE) {
    return false;
  }
  if (info.subsystem == SDL_SYSWM_X11) {
    hostWindow.x11_window = info.info.x11.window;
    return true;
  }
  if (info.subsystem != SDL_SYSWM_WAYLAND) {
    return false;
  }
  int width = 0;
  int height = 0;
  SDL_GetWindowSize(window, &width, &height);
  // `xdg_toplevel` stays null: SDL sets the minimum and maximum size itself, in `takeControls`.
  hostWindow.wl_display = info.info.wl.display;
  hostWindow.wl_surface = info.info.wl.surface;
  hostWindow.width = width;
  hostWindow.height = height;
  return true;
}

// Presents a launch screen over the game's window. Returns null if that fails.
VelLaunchScreen* showLaunchScreen(Game& game, double seconds) {
  VelHostWindow hostWindow = VEL_HOST_WINDOW_INIT;
  if (!describeWindow(game.window, hostWindow)) {
    fail("neither an X11 nor a Wayland window: there is no launch screen");
    return nullptr;
  }
  VelCallbacks callbacks = VEL_CALLBACKS_INIT;
  callbacks.user_data = &game;
  callbacks.record_event = recordEvent;
  callbacks.controls_kept = controlsKept;
  callbacks.take_controls = takeControls;
  VelCreateOptions options = VEL_CREATE_OPTIONS_INIT;
  options.display = hostWindow.x11_window != 0 ? "x11" : "wayland";
  options.host_window = &hostWindow;
  options.callbacks = &callbacks;
  VelRequest request = VEL_REQUEST_INIT;
  request.event = "launch_end";
  request.seconds = seconds;
  VelLaunchScreen* screen = nullptr;
  if (vel_create(&options, &screen) != VEL_OK || vel_request(screen, &request) != VEL_OK ||
      vel_present(screen, VEL_PRESENT_EMBEDDED) != VEL_OK) {
    fail(vel_last_error());
    vel_destroy(&screen);
  }
  return screen;
}

// Draws a ball that moves through the window.
void draw(SDL_Renderer* renderer, int frame) {
  const double angle = frame * 0.05;
  const SDL_Rect ball{static_cast<int>((kWidth - 60) * (0.5 + 0.5 * std::sin(angle))),
                      static_cast<int>((kHeight - 60) * (0.5 + 0.5 * std::cos(angle * 0.7))), 60,
                      60};
  SDL_SetRenderDrawColor(renderer, 32, 64, 128, 255);
  SDL_RenderClear(renderer);
  SDL_SetRenderDrawColor(renderer, 255, 176, 32, 255);
  SDL_RenderFillRect(renderer, &ball);
  SDL_RenderPresent(renderer);
}

// Returns false if the game must end.
bool handleEvent(const SDL_Event& event, const Game& game, VelLaunchScreen* screen) {
  if (event.type != SDL_WINDOWEVENT) {
    return event.type != SDL_QUIT;
  }
  if (event.window.event == SDL_WINDOWEVENT_CLOSE) {
    return (game.removedControls & VEL_CONTROL_CLOSE) != 0;
  }
  if (event.window.event == SDL_WINDOWEVENT_SIZE_CHANGED) {
    // The library cannot read the size of a Wayland surface. On X11, this call has no effect.
    vel_resized(screen, event.window.data1, event.window.data2);
  }
  return true;
}

Counts play(SDL_Window* window, SDL_Renderer* renderer, const Arguments& arguments) {
  Counts counts;
  Game game{window, arguments.eventsFile};
  VelLaunchScreen* screen = nullptr;
  int wasUp = 0;
  bool isRunning = true;
  for (auto frameStart = Clock::now(); isRunning;
       frameStart = std::max(frameStart + kFrameTime, Clock::now())) {
    SDL_Event event;
    while (SDL_PollEvent(&event) != 0) {
      isRunning = handleEvent(event, game, screen) && isRunning;
    }

    if (counts.frames == arguments.framesBeforeLaunchScreen) {
      screen = showLaunchScreen(game, arguments.seconds);
    }
    // The only call in each frame. It does the work that is due and does not wait for events.
    const auto pumpStart = Clock::now();
    vel_pump(screen, nullptr);
    counts.longestPump =
        std::max<decltype(counts.longestPump)>(counts.longestPump, Clock::now() - pumpStart);
    int isUp = 0;
    vel_is_up(screen, &isUp);
    if (isUp != wasUp) {
      printLine(isUp != 0 ? "covered" : "uncovered");
      wasUp = isUp;
    }

    draw(renderer, ++counts.frames);
    counts.coveredFrames += isUp;
    if (isUp != 0 && counts.coveredFrames % 30 == 0) {
      std::printf("%d frames covered\n", counts.coveredFrames);
      std::fflush(stdout);
    }
    const auto remainingTime = std::chrono::duration_cast<std::chrono::milliseconds>(
        frameStart + kFrameTime - Clock::now());
    SDL_Delay(static_cast<Uint32>(std::max<std::int64_t>(remainingTime.count(), 0)));
  }
  vel_destroy(&screen);
  return counts;
}

}  // namespace

int main(int argc, char** argv) {
  Arguments arguments;
  if (argc > 1) {
    arguments.eventsFile = argv[1];
  }
  if (argc > 2) {
    arguments.seconds = std::atof(argv[2]);
  }
  if (argc > 3) {
    arguments.framesBeforeLaunchScreen = std::atoi(argv[3]);
  }

  // The library recognises the player window by this class name.
  SDL_setenv("SDL_VIDEO_X11_WMCLASS", "PlayerWindow", 1);
  // Otherwise SDL would end the game when the user closes the window, also under the launch screen.
  SDL_SetHint(SDL_HINT_QUIT_ON_LAST_WINDOW_CLOSE, "0");
  // SDL 2 prefers X11, which most Wayland desktops also offer.
  if (std::getenv("WAYLAND_DISPLAY") != nullptr) {
    SDL_SetHint(SDL_HINT_VIDEODRIVER, "wayland,x11");
  }
  if (SDL_Init(SDL_INIT_VIDEO) != 0) {
    return fail(SDL_GetError());
  }
  Counts counts;
  {
    const GameWindow window(SDL_CreateWindow("A game", SDL_WINDOWPOS_CENTERED,
                                             SDL_WINDOWPOS_CENTERED, kWidth, kHeight,
                                             SDL_WINDOW_RESIZABLE));
    const GameRenderer renderer(window ? SDL_CreateRenderer(window.get(), -1, SDL_RENDERER_SOFTWARE)
                                       : nullptr);
    if (!renderer) {
      return fail(SDL_GetError());
    }
    counts = play(window.get(), renderer.get(), arguments);
  }
  SDL_Quit();
  std::printf("%d frames, %d of them covered, longest pump %.3f ms\n", counts.frames,
              counts.coveredFrames, counts.longestPump.count());
  return 0;
}
