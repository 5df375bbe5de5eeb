#include "conversion.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include "current_code_set.h"
#include "jaconv.h"
#include "scratch.h"

namespace zv {
namespace {

// A pair of code sets, what converts it, and the room that n bytes need: n * growth + extra.
struct Conversion {
    int from;
    int to;
    char* (*convert)(const char*, char*);
    unsigned char growth;
    unsigned char extra;
    bool serves_files;
};

// Into JIS, a two-byte character alone between single-byte ones takes eight bytes: two escape
// sequences of three and its code. From EUC that is 9 bytes for every 3 and 8 for a last
// character of 2; a half-width katakana of Shift-JIS, one byte, takes as many, 9 for every 2.
constexpr Conversion kConversions[] = {
    {ZV_JIS, ZV_SJIS, jis2shiftx, 1, 1, true},
    {ZV_JIS, ZV_EUC, jis2eucx, 1, 1, true},
    {ZV_EUC, ZV_SJIS, euc2shiftx, 1, 1, true},
    {ZV_EUC, ZV_JIS, euc2jisx, 3, 4, false},
    {ZV_SJIS, ZV_EUC, shift2eucx, 2, 1, true},
    {ZV_SJIS, ZV_JIS, shift2jisx, 5, 4, false},
    {ZV_BIG5, ZV_EUC_H, big2euchx, 2, 1, true},
    {ZV_EUC_H, ZV_BIG5, euch2bigx, 1, 1, true},
    {ZV_8859_2, ZV_CP1250, c8859_2To1250x, 1, 1, false},
    {ZV_8859_5, ZV_CP1251, c8859_5To1251x, 1, 1, false},
    {ZV_CP1250, ZV_8859_2, c1250To8859_2x, 1, 1, false},
    {ZV_CP1251, ZV_8859_5, c1251To8859_5x, 1, 1, false},
};

const Conversion* find_conversion(int from, int to) {
    for (const Conversion& conversion : kConversions) {
        if (conversion.from == from && conversion.to == to)
            return &conversion;
    }
    return nullptr;
}

bool is_japanese_text(int code_set) {
    return code_set == ZV_EUC || code_set == ZV_SJIS;
}

} // namespace

size_t converted_room(int from, int to, size_t length) {
    const Conversion* conversion = find_conversion(from, to);
    return conversion == nullptr ? length + 1 : length * conversion->growth + conversion->extra;
}

bool convert_line(char* dst, int size, const char* line, int from, int to) {
    Scratch converted(converted_room(from, to, std::strlen(line)));
    if (!converted)
        return false;
    convertStrExt(line, from, converted.data(), to);
    const unsigned room = static_cast<unsigned>(size) - 1;
    if (mbstrncpyi(dst, converted.data(), room) == room)
        dst[room] = '\0';
    return true;
}

} // namespace zv

char* convertStrExt(const char* src, int from, char* dst, int to) {
    const zv::Conversion* conversion = zv::find_conversion(from, to);
    return conversion == nullptr ? std::strcpy(dst, src) : conversion->convert(src, dst);
}

int IsConversionSupport(int from, int to) {
    const zv::Conversion* conversion = zv::find_conversion(from, to);
    return conversion != nullptr && conversion->serves_files;
}

int mbconvertnativestring(char* dst, const char* src, int to) {
    if (dst == nullptr || src == nullptr)
        return 0;
    if (zv::current_is_multibyte())
        convertStrExt(src, zv::native_code_set, dst, to);
    else
        std::strcpy(dst, src);
    return 1;
}

char* UnixCodingToWindowsCodingExt(const char* src, char* dst) {
    if (src == nullptr || dst == nullptr)
        return nullptr;
    return zv::is_japanese_text(zv::native_code_set) ? euc2shiftx(src, dst) : std::strcpy(dst, src);
}

char* WindowsCodingToUnixCodingExt(const char* src, char* dst) {
    if (src == nullptr || dst == nullptr)
        return nullptr;
    return zv::is_japanese_text(zv::native_code_set) ? shift2eucx(src, dst) : std::strcpy(dst, src);
}

int MaxStringLengthOnWinAndUnix(const char* s) {
    // EUC-TW text never grows on its way to Big5, nor Japanese EUC on its way to Shift-JIS.
    const auto length = static_cast<int>(std::min<size_t>(std::strlen(s), INT_MAX));
    int other_form = 0;
    if (zv::native_code_set == ZV_SJIS)
        other_form = eucLength(s);
    else if (zv::native_code_set == ZV_BIG5)
        other_form = euchLength(s);
    return std::max(other_form, length);
}
