#include "stream.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace zv {
namespace {

// What a read at the last position gives: 0 at the end of the file, else -1, since what is there
// cannot be passed.
ssize_t read_at_last_position(int descriptor) {
    const off_t here = lseek(descriptor, 0, SEEK_CUR);
    char byte;
    const ssize_t got = here < 0 ? 1 : pread(descriptor, &byte, 1, here);
    if (got <= 0)
        return got;
    errno = EOVERFLOW;
    return -1;
}

// Reads at the position, with nothing unread, and never beyond the last position. Gives the number
// of bytes, 0 at the end of the file and -1 on errors; a read that a signal interrupts is one.
ssize_t read_at_position(ZVFILE& stream, void* dst, size_t size) {
    const auto left = static_cast<size_t>(int64_t{kLastPosition} - stream.end_position);
    const ssize_t got = left == 0 ? read_at_last_position(stream.descriptor)
                                  : read(stream.descriptor, dst, std::min(size, left));
    if (got == 0)
        stream.at_end = true;
    else if (got < 0)
        keep_error(stream, errno);
    return got;
}

[[gnu::noinline]] ssize_t fill(ZVFILE& stream) {
    stream.next = stream.end = stream.buffer();
    const ssize_t got = read_at_position(stream, stream.buffer(), kBufferSize);
    if (got > 0) {
        stream.end += got;
        stream.end_position += static_cast<int32_t>(got);
    }
    return got;
}

char* take(ZVFILE& stream, char* dst, size_t size) {
    std::memcpy(dst, stream.next, size);
    stream.next += size;
    return dst + size;
}

// Undoes an operation that met the last position with nothing unread, where the file can be
// positioned.
bool taken_back(ZVFILE& stream, int32_t start) {
    const bool moved = lseek(stream.descriptor, off_t{start} - stream.end_position, SEEK_CUR) >= 0;
    if (moved)
        stream.end_position = start;
    errno = EOVERFLOW;
    return moved;
}

// Whatever is not the common case of ZVfgetc(), which so needs no stack frame.
[[gnu::noinline]] int fill_and_take_byte(ZVFILE* stream) {
    if (!is_open(stream))
        return -1;
    return fill(*stream) > 0 ? *stream->next++ : -1;
}

} // namespace
} // namespace zv

int ZVfgetc(ZVFILE* stream) {
    if (stream == nullptr || stream->magic != zv::kOpenMagic || stream->next == stream->end)
        [[unlikely]]
        return zv::fill_and_take_byte(stream);
    return *stream->next++;
}

int ZVungetc(int c, ZVFILE* stream) {
    if (!zv::is_open(stream))
        return -1;
    if (stream->position() == INT32_MIN)
        return -1;
    if (stream->unread() == 0)
        stream->next = stream->end = stream->buffer() + zv::kBufferSize - zv::kPushbackSize;
    else if (stream->next == stream->room)
        return -1;
    *--stream->next = static_cast<signed char>(c);
    stream->at_end = false;
    return c;
}

size_t ZVfread(void* dst, size_t size, size_t count, ZVFILE* stream) {
    if (!zv::is_open(stream))
        return static_cast<size_t>(-1);
    if (size == 0 || count == 0)
        return 0;
    size_t total;
    if (__builtin_mul_overflow(size, count, &total))
        total = SIZE_MAX;

    const int32_t start = stream->position();
    auto* out = static_cast<char*>(dst);
    size_t left = total;
    while (left > stream->unread()) {
        left -= stream->unread();
        out = zv::take(*stream, out, stream->unread());
        // Whole blocks need not pass through the buffer; its state is the same afterwards.
        const size_t blocks = left - left % zv::kBufferSize;
        const ssize_t got =
            blocks != 0 ? zv::read_at_position(*stream, out, blocks) : zv::fill(*stream);
        if (got == 0)
            return (total - left) / size;
        if (got < 0) {
            if (errno == EOVERFLOW)
                zv::taken_back(*stream, start);
            return 0;
        }
        if (blocks != 0) {
            out += got;
            left -= static_cast<size_t>(got);
            stream->end_position += static_cast<int32_t>(got);
        }
    }
    zv::take(*stream, out, left);
    return count;
}

char* ZVfgets(char* s, int n, ZVFILE* stream) {
    if (!zv::is_open(stream) || n < 2)
        return nullptr;
    const int32_t start = stream->position();
    char* out = s;
    auto room = static_cast<size_t>(n - 1);
    const void* newline = nullptr;
    while (newline == nullptr && room != 0) {
        if (stream->unread() == 0) {
            const ssize_t got = zv::fill(*stream);
            if (got < 0 && errno == EOVERFLOW && zv::taken_back(*stream, start))
                return nullptr;
            if (got <= 0 && out == s)
                return nullptr;
            if (got <= 0)
                break;
        }
        size_t run = std::min(room, stream->unread());
        newline = std::memchr(stream->next, '\n', run);
        if (newline != nullptr)
            run = static_cast<size_t>(static_cast<const signed char*>(newline) - stream->next) + 1;
        out = zv::take(*stream, out, run);
        room -= run;
    }
    *out = '\0';
    return s;
}
