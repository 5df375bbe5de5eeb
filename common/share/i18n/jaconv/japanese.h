#ifndef ZVUTIL_JACONV_JAPANESE_H
#define ZVUTIL_JACONV_JAPANESE_H

#include "bytes.h"

namespace zv {

// The shift state of JIS text. A text begins and, when an encoder ends it, closes in single-byte
// mode; a caller that converts by blocks carries the state from one to the next.
enum class JisMode : bool { single_byte, two_byte };

// The converters read whole characters (in JIS: whole escape sequences too) and stop before one
// that the end of the source cuts short. What each writes for n bytes that it reads: to EUC at
// most 2n; to Shift-JIS at most n; from EUC to JIS at most 3n, from Shift-JIS 5n; 3 more to close.
Converted shift_jis_to_euc(Source source, Byte* out);
Converted euc_to_shift_jis(Source source, Byte* out);
Converted shift_jis_to_jis(Source source, Byte* out, JisMode& mode);
Converted euc_to_jis(Source source, Byte* out, JisMode& mode);
Converted jis_to_shift_jis(Source source, Byte* out, JisMode& mode);
Converted jis_to_euc(Source source, Byte* out, JisMode& mode);

// Ends a conversion from JIS: a lone byte in two-byte mode is written unchanged, a cut escape
// sequence is dropped. Gives the terminator.
Byte* finish_from_jis(Converted converted, const Source& source);

} // namespace zv

#endif
