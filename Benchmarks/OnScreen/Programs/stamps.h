/* What every program on the screen notes, in the same way: when it was asked to show its window,
 * when that call returned, when it was asked to take it down, and each tick of its timer. Noted
 * in memory and printed at the end, so that noting costs nothing that is measured. */
#ifndef VEL_BENCH_STAMPS_H
#define VEL_BENCH_STAMPS_H

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

enum { STAMPS_MAX_TICKS = 1000 };

static int64_t stamp_called;
static int64_t stamp_returned;
static int64_t stamp_down;
static int64_t stamp_ticks[STAMPS_MAX_TICKS];
static int stamp_tick_count;

static int64_t stamp_now(void) {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return (int64_t)now.tv_sec * 1000000000 + now.tv_nsec;
}

static void stamp_tick_at(int64_t moment) {
  if (stamp_tick_count < STAMPS_MAX_TICKS) {
    stamp_ticks[stamp_tick_count++] = moment;
  }
}

static void stamp_tick(void) { stamp_tick_at(stamp_now()); }

/* The most memory that this program has had at a time. Asked of the kernel here, since what it
 * tells a parent counts from before the program was loaded. */
static long stamp_kibibytes(void) {
  long found = 0;
  char line[256];
  FILE* status = fopen("/proc/self/status", "r");
  while (status != NULL && fgets(line, sizeof line, status) != NULL) {
    if (sscanf(line, "VmHWM: %ld", &found) == 1) {
      break;
    }
  }
  if (status != NULL) {
    fclose(status);
  }
  return found;
}

static void stamps_print(void) {
  int tick;
  printf("kibibytes %ld\n", stamp_kibibytes());
  printf("called %lld\nreturned %lld\ndown %lld\nticks", (long long)stamp_called,
         (long long)stamp_returned, (long long)stamp_down);
  for (tick = 0; tick < stamp_tick_count; ++tick) {
    printf(" %lld", (long long)stamp_ticks[tick]);
  }
  printf("\n");
}

/* The arguments: for how many tenths of a second, where and how large, and the window to cover, 0
 * for none (a window of its own then). */
typedef struct {
  int tenths;
  int x, y, width, height;
  unsigned long window;
} Arguments;

static Arguments arguments_of(int argc, char** argv) {
  Arguments arguments;
  if (argc != 7) {
    fprintf(stderr, "usage: %s TENTHS X Y WIDTH HEIGHT WINDOW\n", argv[0]);
    exit(2);
  }
  arguments.tenths = atoi(argv[1]);
  arguments.x = atoi(argv[2]);
  arguments.y = atoi(argv[3]);
  arguments.width = atoi(argv[4]);
  arguments.height = atoi(argv[5]);
  arguments.window = strtoul(argv[6], NULL, 0);
  return arguments;
}

#endif
