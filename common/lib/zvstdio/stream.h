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

// The bytes read or pushed back and not yet consumed stand from `next` to `end`, inside `room`.
// Where they end is the descriptor's place, never beyond the last position, so consuming them needs
// no check.
struct ZVFILE {
    uint32_t magic;
    int descriptor;
    signed char* next;
    signed char* end;
    int32_t end_position;
    int error;
    bool append;
    bool at_end;
    // The pushback room, and the read buffer directly behind it.
    signed char room[zv::kPushbackSize + zv::kBufferSize];

    signed char* buffer() { return room + zv::kPushbackSize; }
    size_t unread() const { return static_cast<size_t>(end - next); }
    int32_t position() const { return static_cast<int32_t>(end_position - (end - next)); }
    // Drops what is unread.
    void stand_at(int32_t position) {
        next = end;
        end_position = position;
    }
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
