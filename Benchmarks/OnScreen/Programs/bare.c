/* The limit: a white window made with nothing but XCB, and a timerfd. With -DSHARED_CONNECTION the
 * connection is there before anything is shown. */
#include <poll.h>
#include <sys/timerfd.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include "Benchmarks/OnScreen/Programs/stamps.h"

int main(int argc, char** argv) {
  Arguments arguments = arguments_of(argc, argv);
  xcb_connection_t* connection = NULL;
  const xcb_screen_t* screen;
  xcb_window_t window;
  uint32_t values[2];
  struct itimerspec spec = {{0, 100000000}, {0, 100000000}};
  int timer = timerfd_create(CLOCK_MONOTONIC, 0);
  int child = arguments.window != 0;

#ifdef SHARED_CONNECTION
  connection = xcb_connect(NULL, NULL);
#endif
  stamp_called = stamp_now();
  if (connection == NULL) {
    connection = xcb_connect(NULL, NULL);
  }
  if (xcb_connection_has_error(connection)) {
    return 1;
  }
  screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
  window = xcb_generate_id(connection);
  values[0] = screen->white_pixel;
  values[1] = XCB_EVENT_MASK_EXPOSURE;
  xcb_create_window(connection, XCB_COPY_FROM_PARENT, window,
                    child ? (xcb_window_t)arguments.window : screen->root,
                    (int16_t)(child ? 0 : arguments.x), (int16_t)(child ? 0 : arguments.y),
                    (uint16_t)arguments.width, (uint16_t)arguments.height, 0,
                    XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                    XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values);
  xcb_map_window(connection, window);
  xcb_flush(connection);
  stamp_returned = stamp_now();

  timerfd_settime(timer, 0, &spec, NULL);
  while (stamp_tick_count < arguments.tenths) {
    struct pollfd inputs[2] = {{timer, POLLIN, 0}, {-1, POLLIN, 0}};
    xcb_generic_event_t* event;
    inputs[1].fd = xcb_get_file_descriptor(connection);
    poll(inputs, 2, -1);
    if (inputs[0].revents != 0) {
      uint64_t count;
      if (read(timer, &count, sizeof count) == sizeof count) {
        stamp_tick();
      }
    }
    while ((event = xcb_poll_for_event(connection)) != NULL) {
      free(event);
    }
  }
  stamp_down = stamp_now();
  xcb_destroy_window(connection, window);
  xcb_flush(connection);
  free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), NULL));
  xcb_disconnect(connection);
  stamps_print();
  return 0;
}
