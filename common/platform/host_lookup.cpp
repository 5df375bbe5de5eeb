#include "platform/host_lookup.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>

namespace zv {
namespace {

size_t as_size(int length) {
    return static_cast<size_t>(std::max(length, 0));
}

// glibc's status is 0 for a host that is not found as well, and after a success its error code may
// hold anything: only the pointer tells.
hostent* result_of(int status, hostent* found, int* error) {
    if (status == ERANGE)
        *error = NETDB_INTERNAL;
    return status == 0 ? found : nullptr;
}

} // namespace

hostent* look_up_host_name(const char* name, hostent* entry, char* buffer, int buffer_length,
                           int* error) {
    hostent* found = nullptr;
    const int status = gethostbyname_r(name, entry, buffer, as_size(buffer_length), &found, error);
    return result_of(status, found, error);
}

hostent* look_up_host_address(const void* address, int address_length, int address_type,
                              hostent* entry, char* buffer, int buffer_length, int* error) {
    hostent* found = nullptr;
    const int status =
        gethostbyaddr_r(address, static_cast<socklen_t>(as_size(address_length)), address_type,
                        entry, buffer, as_size(buffer_length), &found, error);
    return result_of(status, found, error);
}

} // namespace zv
