#ifndef ZVUTIL_ZVSTDIO_STREAM_H
#define ZVUTIL_ZVSTDIO_STREAM_H

#include <cerrno>
#include <cstddef>
#include <cstdint>

#include "zvstdio.h"

namespace zv {

constexpr uint32_t kOpenMagic = 0xDEADBEEF;
constexpr int32_t kPushbackSize = 4;
constexpr int32_t kBufferSize = 4096;
constexpr int32_t kLastPosition = INT32_MAX;

} // namespace zv

// The bytes read or pushed back and not yet consumed are the `unread` ones from `next` on, wholly
// inside `room`. The descriptor is ahead of `position` by as many, and position + unread never
// passes the last position, so that consuming them needs no check.
struct ZVFILE {
    uint32_t magic;
    int32_t unread;
    // The pushback room, and the read buffer directly behind it.
    signed char room[zv::kPushbackSize + zv::kBufferSize];
    signed char* next;
    int32_t position;
    int descriptor;
    bool append;
    bool at_end;
    int error;

    signed char* buffer() { return room + zv::kPushbackSize; }
};

namespace zv {

// What every operation begins with; says EBADF when it may not go on.
inline bool is_open(const ZVFILE* stream) {
    if (stream != nullptr && stream->magic == kOpenMagic) [[likely]]
        return true;
    errno = EBADF;
    return false;
}

// Keeps an error in the stream as well as in errno.
inline void keep_error(ZVFILE& stream, int error) {
    errno = error;
    stream.error = error;
}

} // namespace zv

#endif
