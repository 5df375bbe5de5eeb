#ifndef ZVUTIL_JACONV_CODE_PAGE_TABLES_H
#define ZVUTIL_JACONV_CODE_PAGE_TABLES_H

#include "bytes.h"

namespace zv {

// The target byte of every source byte.
struct ByteMap {
    Byte target[256];
};

extern const ByteMap kIso5ToWindows1251;
extern const ByteMap kWindows1251ToIso5;
extern const ByteMap kIso2ToWindows1250;
extern const ByteMap kWindows1250ToIso2;

} // namespace zv

#endif
