// Expects the C library to have gethostbyname_r() and gethostbyaddr_r() that return a status,
// ERANGE where the buffer is too small, and give the result through a pointer (glibc, musl).
#ifndef ZVUTIL_PLATFORM_HOST_LOOKUP_H
#define ZVUTIL_PLATFORM_HOST_LOOKUP_H

#include <netdb.h>

// Not every C library has a name for it.
#ifndef NETDB_INTERNAL
#define NETDB_INTERNAL (-1)
#endif

namespace zv {

// The reentrant host look-ups in the form that gives its result as a pointer: `entry` with its
// strings and lists in `buffer`, or null with the reason in `error`. A buffer too small gives
// NETDB_INTERNAL.
hostent* look_up_host_name(const char* name, hostent* entry, char* buffer, int buffer_length,
                           int* error);
hostent* look_up_host_address(const void* address, int address_length, int address_type,
                              hostent* entry, char* buffer, int buffer_length, int* error);

} // namespace zv

#endif
