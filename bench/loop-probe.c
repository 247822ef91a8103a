// Loaded into a program by LD_PRELOAD, tells how long each turn of its main loop took: the time between two
// polls of GLib's default main context. Writes a line "<end> <length>", in nanoseconds of CLOCK_MONOTONIC,
// for each turn of a millisecond or more to the file that ONDREL_LOOP_PROBE names.
#include <fcntl.h>
#include <glib.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

enum { shortestTold = 1000000 };

static int output = -1;
static gint64 lastPollEnd = 0;

static gint64 now(void) {
  struct timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return (gint64)time.tv_sec * 1000000000 + time.tv_nsec;
}

static gint probingPoll(GPollFD* fds, guint count, gint timeout) {
  const gint64 begin = now();
  // A loop inside a turn polls too: what it waits for is then no part of the turn.
  if (lastPollEnd != 0 && begin - lastPollEnd >= shortestTold) {
    char line[64];
    const int length = snprintf(line, sizeof line, "%" G_GINT64_FORMAT " %" G_GINT64_FORMAT "\n", begin,
                                begin - lastPollEnd);
    if (write(output, line, (size_t)length) != length)
      abort();
  }
  const gint result = g_poll(fds, count, timeout);
  lastPollEnd = now();
  return result;
}

__attribute__((constructor)) static void install(void) {
  const char* path = getenv("ONDREL_LOOP_PROBE");
  if (!path)
    return;
  output = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  if (output < 0)
    abort();
  g_main_context_set_poll_func(NULL, probingPoll);
  // For this program alone, not for those that it starts.
  unsetenv("LD_PRELOAD");
  unsetenv("ONDREL_LOOP_PROBE");
}
