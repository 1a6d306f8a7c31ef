/* Where a host in C finds the library's header, as it does when the library is installed. */
#include "Bindings/C/vel_launch_screen.h"
