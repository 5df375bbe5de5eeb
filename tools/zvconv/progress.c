#include "progress.h"

#include <stdio.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

enum { MEBIBYTE = 1024 * 1024, SHOWN_ABOVE = 64 * MEBIBYTE };
static const double kInterval = 0.1;

static struct {
    bool active;
    off_t size, done;
    double begun, written; /* seconds */
    size_t width;          /* of the line that stands there */
} progress;

static double now(void) {
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return (double)time.tv_sec + (double)time.tv_nsec * 1e-9;
}

void progress_begin(off_t size, bool wanted) {
    progress.active = wanted && size > SHOWN_ABOVE && isatty(STDERR_FILENO);
    progress.size = size;
    progress.done = 0;
    progress.begun = progress.active ? now() : 0;
    progress.written = progress.begun - kInterval; /* the first line comes at once */
}

void progress_add(size_t bytes) {
    if (!progress.active)
        return;
    progress.done += (off_t)bytes;
    const double time = now();
    if (time - progress.written < kInterval)
        return;
    progress.written = time;
    /* A file that grows meanwhile is not more than done. */
    const off_t part = progress.done < progress.size ? progress.done : progress.size;
    char line[80];
    const int length = snprintf(line, sizeof line, "zvconv: %3d %% of %lld MiB, %.0f MiB/s",
                                (int)(100.0 * (double)part / (double)progress.size),
                                (long long)(progress.size / MEBIBYTE),
                                (double)progress.done / (double)MEBIBYTE / (time - progress.begun));
    fprintf(stderr, "\r%-*s", (int)progress.width, line);
    progress.width = (size_t)length;
}

void progress_erase(void) {
    if (progress.width > 0)
        fprintf(stderr, "\r%*s\r", (int)progress.width, "");
    progress.width = 0;
}

void progress_end(void) {
    progress_erase();
    progress.active = false;
}
