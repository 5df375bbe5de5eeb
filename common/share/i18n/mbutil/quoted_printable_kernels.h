#ifndef ZVUTIL_MBUTIL_QUOTED_PRINTABLE_KERNELS_H
#define ZVUTIL_MBUTIL_QUOTED_PRINTABLE_KERNELS_H

#include "../jaconv/bytes.h"

namespace zv {

// Quoted-printable for vectors of a size, which is 32 at least.
template <int VectorSize>
struct QuotedPrintableKernels {
    // The result may be followed by up to 3 * kQuotedBlock bytes that mean nothing.
    static Byte* encode(Source source, Byte* out);

    // Decodes plain bytes, escapes and soft line breaks, and stops at what is none of these. Less
    // than a block is decoded only where the text ends behind it. Writes no more than it has read,
    // and the output may stand where the source does.
    static Converted decode(Source source, Byte* out, bool is_last);
};

// The largest block of a kernel.
inline constexpr size_t kQuotedBlock = 64;

} // namespace zv

#endif
