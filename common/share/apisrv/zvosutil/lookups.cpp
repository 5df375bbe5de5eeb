#include <sys/time.h>
#include <time.h>

#include "platform/host_lookup.h"
#include "zvosutil.h"

hostent* OSGetHostByName(const char* name, hostent* entry, char* buffer, int buffer_length,
                         int* error) {
    return zv::look_up_host_name(name, entry, buffer, buffer_length, error);
}

hostent* OSGetHostByAddr(const void* address, int address_length, int address_type, hostent* entry,
                         char* buffer, int buffer_length, int* error) {
    return zv::look_up_host_address(address, address_length, address_type, entry, buffer,
                                    buffer_length, error);
}

tm* OSLocalTime(const time_t* seconds, tm* broken_down) {
    return localtime_r(seconds, broken_down);
}

void OSGetStatsTime(ZVStatsTime* stamp) {
    timeval now;
    gettimeofday(&now, nullptr);
    stamp->seconds = static_cast<uint32_t>(now.tv_sec);
    stamp->microseconds = static_cast<uint32_t>(now.tv_usec);
}
