#ifndef ZVUTIL_JACONV_ASCII_RUN_H
#define ZVUTIL_JACONV_ASCII_RUN_H

#include <cstdint>

#include "bytes.h"

namespace zv {

inline bool has_high_byte(uint64_t eight_bytes) {
    return (eight_bytes & 0x8080808080808080) != 0;
}

// Copies the ASCII bytes at the front of a text. Nothing is written but them.
inline Converted copy_ascii(Converted at, const Byte* end) {
    uint64_t words[2];
    for (; end - at.read >= 16; at.read += 16, at.written += 16) {
        std::memcpy(words, at.read, 16);
        if (has_high_byte(words[0] | words[1]))
            break;
        std::memcpy(at.written, words, 16);
    }
    while (at.read != end && *at.read < 0x80)
        *at.written++ = *at.read++;
    return at;
}

// The first byte that is not ASCII.
inline const Byte* skip_ascii(const Byte* in, const Byte* end) {
    while (end - in >= 16) {
        uint64_t words[2];
        std::memcpy(words, in, 16);
        if (has_high_byte(words[0] | words[1]))
            break;
        in += 16;
    }
    while (in != end && *in < 0x80)
        ++in;
    return in;
}

} // namespace zv

#endif
