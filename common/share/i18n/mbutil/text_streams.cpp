#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>

#include "characters.h"
#include "conversion.h"
#include "scratch.h"

namespace {

// Gives the last n bytes back to a stream, by positioning or, where that is refused, by pushing
// them back. False when the stream takes neither.
bool give_back(std::FILE* stream, const char* bytes, size_t n) {
    if (std::fseek(stream, -static_cast<long>(n), SEEK_CUR) == 0)
        return true;
    for (size_t i = n; i > 0; --i) {
        if (std::ungetc(static_cast<unsigned char>(bytes[i - 1]), stream) == EOF)
            return false;
    }
    return true;
}

} // namespace

char* mbfgets(char* buf, int size, FILE* stream, int code_set) {
    if (buf == nullptr)
        return nullptr;
    const bool converts = zv::current_is_multibyte() && code_set != 0;
    if (std::fgets(buf, size, stream) == nullptr)
        return nullptr;
    if (!converts)
        return buf;

    const bool converted = zv::convert_line(buf, size, buf, code_set, zv::current_code_set());
    return converted ? buf : nullptr;
}

int mbfputs(const char* s, FILE* stream, int code_set) {
    const bool converts = zv::current_is_multibyte() && code_set != 0;
    if (s == nullptr)
        return 0;
    if (!converts)
        return std::fputs(s, stream);

    const int current = zv::current_code_set();
    zv::Scratch text(zv::converted_room(current, code_set, std::strlen(s)));
    if (!text)
        return -1;
    return std::fputs(convertStrExt(s, current, text.data(), code_set), stream);
}

int mbfreadstring(char* buf, unsigned size, FILE* stream) {
    const bool multibyte = zv::current_is_multibyte();
    const size_t room = std::min(size, unsigned{INT_MAX}); // what the result can count
    size_t got = std::fread(buf, 1, room, stream);
    if (!multibyte)
        return static_cast<int>(got);
    if (got == room && got > 0) {
        const size_t whole = zv::whole_characters(buf, got, zv::current_code_set());
        if (whole < got && give_back(stream, buf + whole, got - whole))
            got = whole;
    }
    buf[got] = '\0';
    return static_cast<int>(got);
}

int AccumulateAsciiForStr(const char* s) {
    if (s == nullptr || *s == '\0')
        return 0;
    const bool multibyte = zv::current_is_multibyte();
    const int from = multibyte ? mbGetLocaleCodeSet() : ZV_EUC;
    zv::Scratch euc(zv::converted_room(from, ZV_EUC, std::strlen(s)));
    if (!euc)
        return -1;
    convertStrExt(s, from, euc.data(), ZV_EUC);
    unsigned sum = 0;
    for (const zv::Byte* p = zv::as_bytes(euc.data()); *p != 0; ++p)
        sum += *p;
    return static_cast<int>(sum);
}
