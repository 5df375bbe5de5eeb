/**
 * @file zvtime.h
 * @brief The time stamp for statistics, shared by osutils.h and zvosutil.h.
 */
#ifndef ZVUTIL_ZVTIME_H
#define ZVUTIL_ZVTIME_H

#include <stdint.h>

/** A moment since the epoch (1970-01-01, UTC). */
struct ZVStatsTime {
    uint32_t seconds;      /**< Whole seconds, good until 2106. */
    uint32_t microseconds; /**< 0 to 999999. */
};

#endif
