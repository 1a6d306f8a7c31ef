/* A host in C that requests the AppKit back end. Prints why it cannot create a launch screen. */
#include <VelLaunchScreen/vel_launch_screen.h>
#include <stdio.h>

int main(void) {
  VelLaunchScreen* screen = NULL;
  VelCreateOptions options = VEL_CREATE_OPTIONS_INIT;
  options.display = "cocoa";
  if (vel_create(&options, &screen) != VEL_OK) {
    puts(vel_last_error());
  }
  vel_destroy(&screen);
  return 0;
}
