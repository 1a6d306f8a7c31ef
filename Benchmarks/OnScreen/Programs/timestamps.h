/* The arguments and the output of every program that shows a white window. Each program records
 * when it starts to show its window, when the calls that show it have returned, when it starts to
 * hide the window, and each tick of its timer. It records in memory and prints at the end, so
 * printing does not disturb the measurement. */
#ifndef VEL_BENCH_TIMESTAMPS_H
#define VEL_BENCH_TIMESTAMPS_H

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

/* The position and the size of the window that a warm program (see `Mode`) shows first. The window
 * does not overlap the points that the watcher looks at. */
enum { FIRST_X = 0, FIRST_Y = 0, FIRST_WIDTH = 300, FIRST_HEIGHT = 220 };
/* How long the first window stays, and how long the program then waits. */
enum { FIRST_MILLISECONDS = 150, PAUSE_MILLISECONDS = 100 };

enum { MAX_TICKS = 1000 };

static int64_t show_start;
static int64_t show_end;
static int64_t hide_start;
static int64_t tick_times[MAX_TICKS];
static int tick_count;

static int64_t read_clock(void) {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return (int64_t)now.tv_sec * 1000000000 + now.tv_nsec;
}

static void record_tick_at(int64_t time) {
  if (tick_count < MAX_TICKS) {
    tick_times[tick_count++] = time;
  }
}

static void record_tick(void) { record_tick_at(read_clock()); }

/* The peak resident memory of this program. The parent process cannot measure it: the value that
 * the kernel reports to the parent includes the memory of the process before it loads the program.
 */
static long peak_kibibytes(void) {
  long kibibytes = 0;
  char line[256];
  FILE* status = fopen("/proc/self/status", "r");
  while (status != NULL && fgets(line, sizeof line, status) != NULL) {
    if (sscanf(line, "VmHWM: %ld", &kibibytes) == 1) {
      break;
    }
  }
  if (status != NULL) {
    fclose(status);
  }
  return kibibytes;
}

static void print_timestamps(void) {
  int tick;
  printf("peak_kibibytes %ld\n", peak_kibibytes());
  printf("show_start %lld\nshow_end %lld\nhide_start %lld\ntick_times", (long long)show_start,
         (long long)show_end, (long long)hide_start);
  for (tick = 0; tick < tick_count; ++tick) {
    printf(" %lld", (long long)tick_times[tick]);
  }
  printf("\n");
}

/* A cold program shows its window before it has connected to the display. A warm program connects
 * first, and shows and closes a window of its own. MODE_WARM_ADOPTING is for the library only: the
 * program is warm, but the measured time includes adopting the host's window. */
typedef enum { MODE_COLD, MODE_WARM, MODE_WARM_ADOPTING } Mode;

typedef struct {
  Mode mode;
  int ticks; /* how many ticks of 0.1 s the window stays */
  int x, y, width, height;
  unsigned long window; /* the window to cover; 0: open a new window */
} Arguments;

static Mode find_mode(const char* name) {
  static const char* const names[] = {"cold", "warm", "warm-adopting"};
  int mode;
  for (mode = 0; mode < 3; ++mode) {
    if (strcmp(name, names[mode]) == 0) {
      return (Mode)mode;
    }
  }
  fprintf(stderr, "no mode has the name %s\n", name);
  exit(2);
}

static Arguments parse_arguments(int argc, char** argv) {
  Arguments arguments;
  if (argc != 8) {
    fprintf(stderr, "usage: %s cold|warm|warm-adopting TICKS X Y WIDTH HEIGHT WINDOW\n", argv[0]);
    exit(2);
  }
  arguments.mode = find_mode(argv[1]);
  arguments.ticks = atoi(argv[2]);
  arguments.x = atoi(argv[3]);
  arguments.y = atoi(argv[4]);
  arguments.width = atoi(argv[5]);
  arguments.height = atoi(argv[6]);
  arguments.window = strtoul(argv[7], NULL, 0);
  return arguments;
}

#endif
