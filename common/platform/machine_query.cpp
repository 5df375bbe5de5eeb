#include "platform/machine_query.h"

#include <sys/utsname.h>

#include <algorithm>
#include <cstring>

namespace zv {
namespace {

const char* field_of(const utsname& machine, MachineQuery query) {
    switch (query) {
    case MachineQuery::kNodeName:
        return machine.nodename;
    case MachineQuery::kSystemName:
        return machine.sysname;
    case MachineQuery::kRelease:
        return machine.release;
    case MachineQuery::kHardware:
        return machine.machine;
    }
    return "";
}

} // namespace

bool query_machine(MachineQuery query, std::span<char> answer) {
    if (answer.empty())
        return false;
    answer[0] = '\0';
    utsname machine;
    if (uname(&machine) != 0)
        return false;
    const char* field = field_of(machine, query);
    const size_t length = std::min(std::strlen(field), answer.size() - 1);
    std::memcpy(answer.data(), field, length);
    answer[length] = '\0';
    return true;
}

} // namespace zv
