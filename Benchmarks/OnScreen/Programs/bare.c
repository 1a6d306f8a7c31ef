/* The lower limit: a white window made with XCB only, and a timerfd. */
#include <poll.h>
#include <sys/timerfd.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include "Benchmarks/OnScreen/Programs/timestamps.h"

static xcb_connection_t* connection;
static const xcb_screen_t* screen;

static void open_connection(void) {
  connection = xcb_connect(NULL, NULL);
  if (xcb_connection_has_error(connection)) {
    fprintf(stderr, "cannot open the display\n");
    exit(1);
  }
  screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
}

static xcb_window_t show_window(xcb_window_t parent, int x, int y, int width, int height) {
  xcb_window_t window = xcb_generate_id(connection);
  uint32_t values[2];
  values[0] = screen->white_pixel;
  values[1] = XCB_EVENT_MASK_EXPOSURE;
  xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, parent, (int16_t)x, (int16_t)y,
                    (uint16_t)width, (uint16_t)height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                    XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values);
  xcb_map_window(connection, window);
  xcb_flush(connection);
  return window;
}

/* Returns when the server has processed all requests. */
static void synchronize(void) {
  free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), NULL));
}

static void discard_events(void) {
  xcb_generic_event_t* event;
  while ((event = xcb_poll_for_event(connection)) != NULL) {
    free(event);
  }
}

static void show_first_window(void) {
  xcb_window_t window = show_window(screen->root, FIRST_X, FIRST_Y, FIRST_WIDTH, FIRST_HEIGHT);
  usleep(FIRST_MILLISECONDS * 1000);
  xcb_destroy_window(connection, window);
  synchronize();
  usleep(PAUSE_MILLISECONDS * 1000);
  discard_events();
}

static void count_ticks(int ticks) {
  struct itimerspec spec = {{0, 100000000}, {0, 100000000}};
  int timer = timerfd_create(CLOCK_MONOTONIC, 0);
  timerfd_settime(timer, 0, &spec, NULL);
  while (tick_count < ticks) {
    struct pollfd inputs[2] = {{timer, POLLIN, 0}, {-1, POLLIN, 0}};
    inputs[1].fd = xcb_get_file_descriptor(connection);
    poll(inputs, 2, -1);
    if (inputs[0].revents != 0) {
      uint64_t count;
      if (read(timer, &count, sizeof count) == sizeof count) {
        record_tick();
      }
    }
    discard_events();
  }
}

int main(int argc, char** argv) {
  Arguments arguments = parse_arguments(argc, argv);
  xcb_window_t window;
  if (arguments.mode != MODE_COLD) {
    open_connection();
    show_first_window();
  }
  show_start = read_clock();
  if (arguments.mode == MODE_COLD) {
    open_connection();
  }
  if (arguments.window != 0) {
    window = show_window((xcb_window_t)arguments.window, 0, 0, arguments.width, arguments.height);
  } else {
    window = show_window(screen->root, arguments.x, arguments.y, arguments.width, arguments.height);
  }
  show_end = read_clock();

  count_ticks(arguments.ticks);
  hide_start = read_clock();
  xcb_destroy_window(connection, window);
  xcb_flush(connection);
  synchronize();
  xcb_disconnect(connection);
  print_timestamps();
  return 0;
}
