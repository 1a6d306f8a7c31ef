// The library on Wayland as a host uses it: over the window of the same program.
#include <VelLaunchScreen/vel_launch_screen.h>
#include <poll.h>

#include "Benchmarks/OnScreen/Programs/SurfaceHost.h"
#include "Benchmarks/OnScreen/Programs/timestamps.h"

namespace {

using namespace vel::bench;

void check(VelStatus status) {
  if (status != VEL_OK) {
    fail(vel_last_error());
  }
}

VelLaunchScreen* create(const SurfaceConnection& connection, const SurfaceHost& host, int width,
                        int height) {
  VelHostWindow window = VEL_HOST_WINDOW_INIT;
  window.wl_display = connection.display();
  window.wl_surface = host.surface();
  window.width = width;
  window.height = height;
  VelCallbacks callbacks = VEL_CALLBACKS_INIT;
  callbacks.log_line = [](void* /*userData*/, const char* /*line*/) {};
  VelCreateOptions options = VEL_CREATE_OPTIONS_INIT;
  options.display = "wayland";
  options.host_window = &window;
  options.callbacks = &callbacks;
  options.content_controller = 1;
  VelLaunchScreen* screen = nullptr;
  check(vel_create(&options, &screen));
  return screen;
}

void present(VelLaunchScreen* screen) {
  VelRequest request = VEL_REQUEST_INIT;
  request.mode = "skip";
  request.event = "launch_end";
  request.seconds = 3600;
  check(vel_request(screen, &request));
  check(vel_present(screen, VEL_PRESENT_EMBEDDED));
}

void handleEvents(const SurfaceConnection& connection, VelLaunchScreen* screen, int milliseconds) {
  int descriptor = -1;
  check(vel_poll_descriptor(screen, &descriptor));
  const std::int64_t end = read_clock() + std::int64_t{milliseconds} * 1'000'000;
  for (std::int64_t now = read_clock(); now < end; now = read_clock()) {
    pollfd input{descriptor, POLLIN, 0};
    poll(&input, 1, static_cast<int>((end - now) / 1'000'000) + 1);
    check(vel_pump(screen, nullptr));
    wl_display_dispatch_pending(connection.display());
    wl_display_flush(connection.display());
  }
}

}  // namespace

int main(int argc, char** argv) {
  const Arguments arguments = parse_arguments(argc, argv);
  const SurfaceConnection connection;
  VelLaunchScreen* screen = nullptr;
  if (arguments.mode != MODE_COLD) {
    const SurfaceHost firstHost(connection, FIRST_WIDTH, FIRST_HEIGHT);
    screen = create(connection, firstHost, FIRST_WIDTH, FIRST_HEIGHT);
    present(screen);
    handleEvents(connection, screen, FIRST_MILLISECONDS);
    check(vel_dismiss(screen));
    handleEvents(connection, screen, PAUSE_MILLISECONDS);
    check(vel_destroy(&screen));
  }
  const SurfaceHost host(connection, arguments.width, arguments.height);
  if (arguments.mode != MODE_COLD) {
    screen = create(connection, host, arguments.width, arguments.height);
  }
  waitBeforeMeasurement();

  show_start = read_clock();
  if (screen == nullptr) {
    screen = create(connection, host, arguments.width, arguments.height);
  }
  present(screen);
  show_end = read_clock();

  handleEvents(connection, screen, arguments.ticks * 100);
  hide_start = read_clock();
  check(vel_dismiss(screen));
  handleEvents(connection, screen, 200);
  check(vel_destroy(&screen));
  print_timestamps();
  return 0;
}
