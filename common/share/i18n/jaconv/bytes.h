#ifndef ZVUTIL_JACONV_BYTES_H
#define ZVUTIL_JACONV_BYTES_H

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zv {

using Byte = unsigned char;

// One subtraction and one comparison.
constexpr bool in_range(unsigned value, unsigned first, unsigned last) {
    return value - first <= last - first;
}

// A length as the interface gives it.
constexpr int saturated(size_t length) {
    return length > INT_MAX ? INT_MAX : static_cast<int>(length);
}

inline const Byte* as_bytes(const char* text) {
    return reinterpret_cast<const Byte*>(text);
}
inline Byte* as_bytes(char* text) {
    return reinterpret_cast<Byte*>(text);
}

// A source text whose length has been taken once; nothing looks for its terminator again.
struct Source {
    const Byte* next;
    const Byte* end;

    explicit Source(const char* text) : next(as_bytes(text)), end(next + std::strlen(text)) {}
    Source(const Byte* first, size_t length) : next(first), end(first + length) {}

    size_t left() const { return static_cast<size_t>(end - next); }
};

// How far a converter came: it reads whole characters only and stops before one that the end of the
// source cuts short.
struct Converted {
    const Byte* read;
    Byte* written;
};

// Ends a conversion of a whole string: a character that its terminator cuts short is written
// unchanged. Gives the terminator.
inline Byte* finish(Converted converted, const Source& source) {
    while (converted.read != source.end)
        *converted.written++ = *converted.read++;
    *converted.written = 0;
    return converted.written;
}

// The two words at the ends of a run, which may overlap; both are read before either is written.
template <class Word>
inline void copy_ends(Byte* out, const Byte* in, size_t length) {
    Word first, last;
    std::memcpy(&first, in, sizeof first);
    std::memcpy(&last, in + length - sizeof last, sizeof last);
    std::memcpy(out, &first, sizeof first);
    std::memcpy(out + length - sizeof last, &last, sizeof last);
}

// Copies up to 32 bytes without the cost of a call.
inline void copy_short(Byte* out, const Byte* in, size_t length) {
    struct Sixteen {
        std::uint64_t words[2];
    };
    if (length >= sizeof(Sixteen))
        copy_ends<Sixteen>(out, in, length);
    else if (length >= sizeof(std::uint64_t))
        copy_ends<std::uint64_t>(out, in, length);
    else if (length >= sizeof(std::uint32_t))
        copy_ends<std::uint32_t>(out, in, length);
    else if (length >= sizeof(std::uint16_t))
        copy_ends<std::uint16_t>(out, in, length);
    else if (length != 0)
        *out = *in;
}

inline Byte* put_pair(Byte* out, unsigned first, unsigned second) {
    out[0] = static_cast<Byte>(first);
    out[1] = static_cast<Byte>(second);
    return out + 2;
}

} // namespace zv

#endif
