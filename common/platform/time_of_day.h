#ifndef ZVUTIL_PLATFORM_TIME_OF_DAY_H
#define ZVUTIL_PLATFORM_TIME_OF_DAY_H

#include "zvtime.h"

namespace zv {

ZVStatsTime time_of_day();

} // namespace zv

#endif
