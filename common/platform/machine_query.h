// Expects POSIX's uname().
#ifndef ZVUTIL_PLATFORM_MACHINE_QUERY_H
#define ZVUTIL_PLATFORM_MACHINE_QUERY_H

#include <span>

namespace zv {

enum class MachineQuery {
    kNodeName,   // the name of the machine in its network
    kSystemName, // the name of the operating system
    kRelease,    // the release of the operating system
    kHardware,   // the hardware class of the machine
};

// Writes the answer, terminated and cut at the end of `answer`. False, with an empty answer, when
// the system gives none.
bool query_machine(MachineQuery query, std::span<char> answer);

} // namespace zv

#endif
