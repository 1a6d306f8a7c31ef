/* The host: a program that does not use the library, with a black window. It prints the identifier
 * of its window and ends when its standard input ends. With the argument "fill", its window fills
 * the screen. */
#include <poll.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>
#include <xcb/xcb.h>

static xcb_atom_t intern_atom(xcb_connection_t* connection, const char* name) {
  xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(
      connection, xcb_intern_atom(connection, 0, (uint16_t)strlen(name), name), NULL);
  xcb_atom_t atom = reply == NULL ? XCB_ATOM_NONE : reply->atom;
  free(reply);
  return atom;
}

int main(int argc, char** argv) {
  xcb_connection_t* connection = xcb_connect(NULL, NULL);
  const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
  xcb_window_t window = xcb_generate_id(connection);
  uint32_t values[2];
  int fills_screen = argc > 1 && strcmp(argv[1], "fill") == 0;
  values[0] = screen->black_pixel;
  values[1] = XCB_EVENT_MASK_EXPOSURE;
  xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen->root,
                    (int16_t)(fills_screen ? 0 : 320), (int16_t)(fills_screen ? 0 : 240),
                    fills_screen ? screen->width_in_pixels : 640,
                    fills_screen ? screen->height_in_pixels : 480, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                    XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values);
  xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING,
                      8, 18, "game\0PlayerWindow");
  if (fills_screen) {
    xcb_atom_t fullscreen = intern_atom(connection, "_NET_WM_STATE_FULLSCREEN");
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window,
                        intern_atom(connection, "_NET_WM_STATE"), XCB_ATOM_ATOM, 32, 1,
                        &fullscreen);
  }
  xcb_map_window(connection, window);
  free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), NULL));
  printf("%u\n", window);
  fflush(stdout);
  for (;;) {
    struct pollfd inputs[2] = {{STDIN_FILENO, POLLIN, 0}, {-1, POLLIN, 0}};
    xcb_generic_event_t* event;
    inputs[1].fd = xcb_get_file_descriptor(connection);
    poll(inputs, 2, -1);
    if (inputs[0].revents != 0) {
      break;
    }
    while ((event = xcb_poll_for_event(connection)) != NULL) {
      free(event);
    }
  }
  xcb_disconnect(connection);
  return 0;
}
