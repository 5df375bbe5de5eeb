#ifndef ZVUTIL_MBUTIL_QUOTED_PRINTABLE_KERNELS_H
#define ZVUTIL_MBUTIL_QUOTED_PRINTABLE_KERNELS_H

#include <algorithm>

#include "../jaconv/bytes.h"

namespace zv {

// Quoted-printable for vectors of a size, which is 32 at least.
template <int VectorSize>
struct QuotedPrintableKernels {
    // Gives the end of what it writes. `room` has kLinesRoom bytes.
    static Byte* encode(Source source, Byte* out, Byte* room);

    // Decodes plain bytes, escapes and soft line breaks, and stops at what is none of these. Less
    // than a block is decoded only where the text ends behind it. Writes no more than it has read,
    // and the output may stand where the source does.
    static Converted decode(Source source, Byte* out, bool is_last);
};

// The largest block of a kernel.
inline constexpr size_t kQuotedBlock = 64;

// What lines are put together in. Where it is written its size is out of sight, or each small copy
// would be a checked call.
inline constexpr size_t kLinesRoom = 3584;

// Encodes a text in lines, each with a soft line break behind it; the byte that fills a line ends
// it, with all three characters that it may take. `put`, Byte*(Byte* out, Source), encodes up to
// kQuotedBlock bytes without line breaks, and may write four times as many whatever they are.
template <class Put>
inline Byte* put_lines(Source source, Byte* out, Byte* room, Put put) {
    constexpr size_t kFullLine = 50;
    // So much is kept between the encoder and the lines that these do not wait for what has just
    // been stored, and that the processor looks for their ends while it encodes.
    constexpr size_t kAhead = 256;
    Byte* line = room;
    Byte* end = room;
    do {
        if (end - room > static_cast<ptrdiff_t>(kLinesRoom - 4 * kQuotedBlock)) {
            end = std::copy(line, end, room);
            line = room;
        }
        const size_t length = std::min(source.left(), kQuotedBlock);
        end = put(end, Source(source.next, length));
        source.next += length;
        const size_t kept = source.left() != 0 ? kAhead : kFullLine;
        while (end - line >= static_cast<ptrdiff_t>(kept)) {
            // At a fixed length; the soft line break, and the terminator behind it, cover what is
            // too much.
            std::memcpy(out, line, kFullLine + 2);
            // A token of three that begins before the full length ends one or two behind it.
            const size_t line_length = kFullLine + size_t{line[kFullLine - 2] == '='} +
                                       2 * size_t{line[kFullLine - 1] == '='};
            line += line_length;
            out += line_length;
            std::memcpy(out, "=\n\r", 4);
            out += 3;
        }
    } while (source.left() != 0);
    return std::copy(line, end, out);
}

} // namespace zv

#endif
