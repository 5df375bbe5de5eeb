#ifndef ZVUTIL_JACONV_BIG5_CNS_H
#define ZVUTIL_JACONV_BIG5_CNS_H

#include "bytes.h"

namespace zv {

// Neither writes anything beyond the converted text, not even within the room that the worst case
// takes: a caller may have measured the text with euchLength() or big5Length().
Converted big5_to_euc_tw(Source source, Byte* out);
Converted euc_tw_to_big5(Source source, Byte* out);

} // namespace zv

#endif
