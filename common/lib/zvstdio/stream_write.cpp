#include "stream.h"

#include <unistd.h>

#include <cstring>

namespace zv {
namespace {

// Moves the descriptor to where a write of that many bytes belongs, and the position with it.
bool go_to_write(ZVFILE& stream, size_t total) {
    off_t place = stream.append ? lseek(stream.descriptor, 0, SEEK_END)
                                : lseek(stream.descriptor, stream.position(), SEEK_SET);
    if (place < 0) {
        if (errno != ESPIPE) {
            keep_error(stream, errno);
            return false;
        }
        place = stream.position();
    }
    // The read-ahead goes even if the write then fails: the next read starts at the position.
    stream.stand_at(stream.position());
    if (place > kLastPosition || total > static_cast<size_t>(kLastPosition - place)) {
        lseek(stream.descriptor, stream.end_position, SEEK_SET);
        keep_error(stream, EOVERFLOW);
        return false;
    }
    stream.end_position = static_cast<int32_t>(place);
    return true;
}

} // namespace
} // namespace zv

size_t ZVfwrite(const void* src, size_t size, size_t count, ZVFILE* stream) {
    if (!zv::is_open(stream))
        return 0;
    if (size == 0)
        return 0;
    size_t left;
    if (__builtin_mul_overflow(size, count, &left))
        left = SIZE_MAX;
    if (!zv::go_to_write(*stream, left))
        return 0;
    for (const auto* next = static_cast<const char*>(src); left != 0;) {
        const ssize_t written = write(stream->descriptor, next, left);
        if (written < 0) {
            if (errno == EINTR)
                continue;
            zv::keep_error(*stream, errno);
            return 0;
        }
        next += written;
        left -= static_cast<size_t>(written);
        stream->end_position += static_cast<int32_t>(written);
    }
    return count;
}

int ZVfputc(int c, ZVFILE* stream) {
    const auto byte = static_cast<unsigned char>(c);
    return ZVfwrite(&byte, 1, 1, stream) == 1 ? c : -1;
}

int ZVfputs(const char* s, ZVFILE* stream) {
    if (!zv::is_open(stream))
        return -1;
    const size_t length = std::strlen(s);
    return ZVfwrite(s, length, 1, stream) == 1 ? static_cast<int>(length) : -1;
}
