#ifndef ZVUTIL_MBUTIL_QUOTED_PRINTABLE_KERNELS_H
#define ZVUTIL_MBUTIL_QUOTED_PRINTABLE_KERNELS_H

#include "../jaconv/bytes.h"

namespace zv {

// Quoted-printable for processors with vectors of 32 bytes and more.
inline constexpr size_t kQuotedBlock = 32;
inline constexpr size_t kDecodedBlock = 64;

#ifdef ZVUTIL_WIDE_KERNELS
// Encodes a text of half a block at least; the result may be followed by up to 3 * kQuotedBlock
// bytes that mean nothing.
Byte* wide_encode_quoted(Source source, Byte* out);

// Decodes plain bytes, escapes and soft line breaks, and stops at what is none of these. Less than
// a block is decoded only where the text ends behind it. Writes no more than it has read, and the
// output may stand where the source does.
Converted wide_decode_quoted(Source source, Byte* out, bool is_last);
#else
inline constexpr Byte* (*wide_encode_quoted)(Source, Byte*) = nullptr;
inline constexpr Converted (*wide_decode_quoted)(Source, Byte*, bool) = nullptr;
#endif

} // namespace zv

#endif
