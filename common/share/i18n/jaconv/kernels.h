#ifndef ZVUTIL_JACONV_KERNELS_H
#define ZVUTIL_JACONV_KERNELS_H

#include <cstdint>

#include "bytes.h"

namespace zv {

// Block loops over a known length that run ahead of the scalar rules and stop at the first byte
// that is not plain. They give byte for byte what the rules give.

// Copies the run of ASCII at the front of the source. Writes no more bytes than it reads.
inline Byte* copy_ascii(Source& source, Byte* out) {
    constexpr std::uint64_t kHighBits = 0x8080808080808080;
    while (source.left() >= 16) {
        std::uint64_t block[2];
        std::memcpy(block, source.next, sizeof block);
        if (((block[0] | block[1]) & kHighBits) != 0)
            break;
        std::memcpy(out, block, sizeof block);
        source.next += sizeof block;
        out += sizeof block;
    }
    while (source.next != source.end && *source.next < 0x80)
        *out++ = *source.next++;
    return out;
}

} // namespace zv

#endif
