// A launch screen over the Wayland window of a program. A test controls the program with signals:
// SIGUSR1 presents the launch screen, SIGUSR2 dismisses it, and SIGTERM ends the program.
#pragma once

#include <wayland-client.h>

// Installs handlers for these signals.
void handleSignals(void);

// Returns 1 after SIGTERM, otherwise 0.
int isProgramEndRequested(void);

// Returns 1 while the launch screen exists, otherwise 0.
int hasScreen(void);

// Presents or dismisses the launch screen if a signal has requested it. Also reports size changes
// to the library and calls vel_pump(). The program must call this function repeatedly. Ends the
// program with status 1 if a call of the library fails or the connection has failed.
void updateScreen(struct wl_display* display, struct wl_surface* surface, double width,
                  double height);

// Ends the program with status 1 if the connection has failed, otherwise with status 0. Does not
// run exit handlers, because a leak checker would then report memory that SDL or GTK has not freed.
void endProgram(struct wl_display* display);
