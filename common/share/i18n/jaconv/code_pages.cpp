#include "code_page_tables.h"
#include "jaconv.h"

namespace {

// Every byte is read before it is written, so dst may be src.
char* convert(const zv::ByteMap& map, const char* src, char* dst) {
    const zv::Source source(src);
    zv::Byte* out = zv::as_bytes(dst);
#pragma GCC unroll 8
    for (const zv::Byte* in = source.next; in != source.end; ++in)
        *out++ = map.target[*in];
    *out = 0;
    return dst;
}

} // namespace

char* c8859_5To1251x(const char* src, char* dst) {
    return convert(zv::kIso5ToWindows1251, src, dst);
}

char* c1251To8859_5x(const char* src, char* dst) {
    return convert(zv::kWindows1251ToIso5, src, dst);
}

char* c8859_2To1250x(const char* src, char* dst) {
    return convert(zv::kIso2ToWindows1250, src, dst);
}

char* c1250To8859_2x(const char* src, char* dst) {
    return convert(zv::kWindows1250ToIso2, src, dst);
}
