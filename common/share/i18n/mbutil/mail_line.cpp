#include <cstdio>

#include "conversion.h"
#include "mbutil.h"
#include "scratch.h"

namespace zv {
namespace {

// A "=" there is taken for a soft line break, which stands before the LF.
bool is_continued(const char* raw) {
    const size_t length = std::strlen(raw);
    return length >= 2 && raw[length - 2] == '=';
}

// Reads a line and the lines that continue it, each of at most size - 1 bytes, and decodes them.
bool read_quoted_printable(Scratch& line, Scratch& raw, int size, FILE* stream) {
    size_t length = 0;
    do {
        if (std::fgets(raw.data(), size, stream) == nullptr)
            return false;
        // Decoded text is never longer; behind it comes the LF.
        if (!line.grow(length + std::strlen(raw.data()) + sizeof "\n"))
            return false;
        convertFromQuotedPrintable(line.data() + length, raw.data());
        length += std::strlen(line.data() + length);
    } while (is_continued(raw.data()));
    std::memcpy(line.data() + length, "\n", sizeof "\n");
    return true;
}

} // namespace
} // namespace zv

char* getLine(char* dst, int size, FILE* stream, int from, int kind, int wanted) {
    if (dst == nullptr || kind == ZV_TRANSFER_NOTHING)
        return dst;
    if (size < 1)
        return nullptr;
    zv::Scratch raw(static_cast<size_t>(size));
    if (!raw)
        return nullptr;
    bool is_delivered = false;
    if (kind == ZV_TRANSFER_QUOTED_PRINTABLE) {
        zv::Scratch line(0);
        is_delivered = zv::read_quoted_printable(line, raw, size, stream) &&
                       zv::convert_line(dst, size, line.data(), from, wanted);
    } else {
        is_delivered = std::fgets(raw.data(), size, stream) != nullptr &&
                       zv::convert_line(dst, size, raw.data(), from, wanted);
    }
    return is_delivered ? dst : nullptr;
}
