// A launch screen over the Wayland window of a program. A test controls the program with signals:
// SIGUSR1 presents the launch screen, SIGUSR2 dismisses it, and SIGTERM ends the program.
#pragma once

#include <wayland-client.h>

// Installs the handlers of the signals.
void handleSignals(void);

// Returns 1 after SIGTERM, otherwise 0.
int isProgramEndRequested(void);

// Returns 1 while there is a launch screen, otherwise 0.
int hasScreen(void);

// Call this function often, with the current size of the surface. It pumps the library, reports
// a new size to it, and presents or dismisses the launch screen after a signal. It ends the program
// with status 1 if a call fails or the connection has a protocol error.
void updateScreen(struct wl_display* display, struct wl_surface* surface, double width,
                  double height);

// Ends the program with status 1 if the connection has failed, otherwise with status 0. Does not
// run exit handlers: a leak checker would report memory that the toolkit has not freed.
void endProgram(struct wl_display* display);
