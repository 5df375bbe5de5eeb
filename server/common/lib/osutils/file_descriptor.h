#ifndef ZVUTIL_OSUTILS_FILE_DESCRIPTOR_H
#define ZVUTIL_OSUTILS_FILE_DESCRIPTOR_H

#include <cstdio>

#include "zvstdio.h"

namespace zv {

// The descriptor of a stream; -1, which the system refuses with EBADF, when there is none.
inline int descriptor_of(ZVFILE* stream) {
    return ZVfileno(stream);
}

inline int descriptor_of(std::FILE* stream) {
    return stream != nullptr ? fileno(stream) : -1;
}

} // namespace zv

#endif
