#include "platform/time_of_day.h"

#include <sys/time.h>

namespace zv {

ZVStatsTime time_of_day() {
    timeval now;
    gettimeofday(&now, nullptr);
    return {static_cast<uint32_t>(now.tv_sec), static_cast<uint32_t>(now.tv_usec)};
}

} // namespace zv
