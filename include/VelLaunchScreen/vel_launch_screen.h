/* This file has the path of the installed header, so a host in C writes the same #include for
 * both. */
#include "Bindings/C/vel_launch_screen.h"
