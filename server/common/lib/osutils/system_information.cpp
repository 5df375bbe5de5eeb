#include <cstring>

#include "osutils.h"
#include "platform/machine_query.h"

namespace zv {
namespace {

// The longest answer to one query, with its terminator.
constexpr size_t kAnswerRoom = 258;

} // namespace
} // namespace zv

void OSGetTimeForStats(ZVStatsTime* stamp) {
    OSGetStatsTime(stamp);
}

unsigned char OSGetHardware(char* out) {
    return zv::query_machine(zv::MachineQuery::kHardware, {out, zv::kAnswerRoom});
}

unsigned char OSGetOS(char* out) {
    using zv::MachineQuery;
    char release[zv::kAnswerRoom];
    if (!zv::query_machine(MachineQuery::kRelease, release) ||
        !zv::query_machine(MachineQuery::kSystemName, {out, zv::kAnswerRoom})) {
        *out = '\0';
        return 0;
    }
    char* end = out + std::strlen(out);
    *end++ = ' ';
    std::strcpy(end, release);
    return 1;
}
