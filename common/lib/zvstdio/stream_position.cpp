#include "stream.h"

#include <unistd.h>

namespace zv {
namespace {

// Moves the descriptor, back again when the place is no position. Gives the offset, or -1.
off_t seek_from_end(int descriptor, long offset) {
    const off_t before = lseek(descriptor, 0, SEEK_CUR);
    off_t place = offset;
    if (place <= kLastPosition) // far beyond it lseek() says EINVAL
        place = lseek(descriptor, offset, SEEK_END);
    if (place <= kLastPosition)
        return place;
    lseek(descriptor, before, SEEK_SET);
    errno = EOVERFLOW;
    return -1;
}

off_t seek_from(int descriptor, int32_t base, long offset) {
    off_t target;
    if (__builtin_add_overflow(base, offset, &target) || target > kLastPosition) {
        errno = EOVERFLOW;
        return -1;
    }
    return lseek(descriptor, target, SEEK_SET);
}

} // namespace
} // namespace zv

long ZVftell(ZVFILE* stream) {
    return zv::is_open(stream) ? stream->position() : -1;
}

int ZVfgetpos(ZVFILE* stream, long* pos) {
    if (!zv::is_open(stream))
        return -1;
    *pos = stream->position();
    return 0;
}

int ZVfseek(ZVFILE* stream, long offset, int whence) {
    if (!zv::is_open(stream))
        return -1;
    const off_t place = whence == SEEK_END
                            ? zv::seek_from_end(stream->descriptor, offset)
                            : zv::seek_from(stream->descriptor,
                                            whence == SEEK_SET ? 0 : stream->position(), offset);
    if (place < 0) {
        zv::keep_error(*stream, errno);
        return -1;
    }
    stream->at_end = false;
    stream->stand_at(static_cast<int32_t>(place));
    return 0;
}

void ZVrewind(ZVFILE* stream) {
    if (!zv::is_open(stream))
        return;
    const bool moved = lseek(stream->descriptor, 0, SEEK_SET) == 0;
    stream->stand_at(moved ? 0 : stream->position());
    ZVclearerr(stream);
}

int ZVfeof(ZVFILE* stream) {
    return zv::is_open(stream) && stream->at_end;
}

int ZVferror(ZVFILE* stream) {
    return zv::is_open(stream) ? stream->error : -1;
}

void ZVclearerr(ZVFILE* stream) {
    if (!zv::is_open(stream))
        return;
    stream->error = 0;
    stream->at_end = false;
}

int ZVfflush(ZVFILE* stream) {
    return zv::is_open(stream) ? 0 : -1;
}

int ZVfileno(ZVFILE* stream) {
    return stream != nullptr && stream->magic == zv::kOpenMagic ? stream->descriptor : -1;
}
