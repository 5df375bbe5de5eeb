#include "stream.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace zv {
namespace {

int open_flags(const char* mode) {
    const char* update = mode;
    if (*update != '\0')
        ++update;
    if (*update == 'b')
        ++update;
    const bool both = *update == '+';
    switch (mode[0]) {
    case 'r':
        return both ? O_RDWR : O_RDONLY;
    case 'w':
        return (both ? O_RDWR : O_WRONLY) | O_CREAT | O_TRUNC;
    case 'a':
        return (both ? O_RDWR : O_WRONLY) | O_CREAT;
    default:
        return O_RDONLY;
    }
}

ZVFILE* allocate_stream(bool append) {
    auto* stream = static_cast<ZVFILE*>(std::calloc(1, sizeof(ZVFILE)));
    if (stream == nullptr)
        return nullptr;
    stream->magic = kOpenMagic;
    stream->next = stream->end = stream->buffer();
    stream->append = append;
    return stream;
}

void release_stream(ZVFILE* stream) {
    // A handle used after its end should not pass for an open one; a plain store that nothing can
    // read before free() would be left out.
    *const_cast<volatile uint32_t*>(&stream->magic) = 0;
    std::free(stream);
}

} // namespace
} // namespace zv

ZVFILE* ZVfopen(const char* path, const char* mode) {
    // Memory comes first: without it no file is created or emptied.
    ZVFILE* stream = zv::allocate_stream(mode[0] == 'a');
    if (stream == nullptr)
        return nullptr;
    stream->descriptor = open(path, zv::open_flags(mode), 0777);
    if (stream->descriptor < 0) {
        const int error = errno;
        zv::release_stream(stream);
        errno = error;
        return nullptr;
    }
    return stream;
}

ZVFILE* ZVfdopen(int descriptor, const char* mode) {
    ZVFILE* stream = zv::allocate_stream(std::strchr(mode, 'a') != nullptr);
    if (stream != nullptr)
        stream->descriptor = descriptor;
    return stream;
}

int ZVfclose(ZVFILE* stream) {
    if (!zv::is_open(stream))
        return -1;
    close(stream->descriptor);
    zv::release_stream(stream);
    return 0;
}
