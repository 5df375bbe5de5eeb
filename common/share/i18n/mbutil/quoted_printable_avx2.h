#ifndef ZVUTIL_MBUTIL_QUOTED_PRINTABLE_AVX2_H
#define ZVUTIL_MBUTIL_QUOTED_PRINTABLE_AVX2_H

#include "../jaconv/wide_kernel.h"

namespace zv {

// Quoted-printable for processors with AVX2, by blocks of source.
inline constexpr size_t kQuotedBlock = kWideBlockSize;
inline constexpr size_t kDecodedBlock = 64;

#ifdef ZVUTIL_AVX2
// Encodes a text of half a block at least; the result may be followed by up to 3 * kQuotedBlock
// bytes that mean nothing.
Converted wide_encode_quoted(Source source, Byte* out);

// Decodes plain bytes, escapes and soft line breaks, and stops at what is none of these. Less than
// a block is decoded only where the text ends behind it. Writes no more than it has read, and the
// output may stand where the source does.
Converted wide_decode_quoted(Source source, Byte* out, const bool& is_last);
#else
inline constexpr Kernel wide_encode_quoted = nullptr;
inline constexpr WideKernel<const bool>::Function wide_decode_quoted = nullptr;
#endif

} // namespace zv

#endif
