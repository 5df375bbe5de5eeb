#include <cstring>

#include "scanner_choice.h"

namespace {

const MbToSbNumber* number_table(int code_set) {
    switch (code_set) {
    case ZV_SJIS:
        return Mb2SbNumberTableInSJIS;
    case ZV_EUC:
        return Mb2SbNumberTableInEUC;
    case ZV_GB:
        return Mb2SbNumberTableInGB;
    case ZV_KSC_5601_92:
        return Mb2SbNumberTableInKSC92;
    case ZV_BIG5:
        return Mb2SbNumberTableInBIG5;
    case ZV_EUC_H:
        return Mb2SbNumberTableInEUC_H;
    default:
        return nullptr;
    }
}

// The ASCII character for the two bytes at p; 0 when the table has none.
char narrow(const MbToSbNumber* table, const char* p) {
    for (; table->mb[0] != 0; ++table) {
        if (std::memcmp(table->mb, p, 2) == 0)
            return table->sb;
    }
    return '\0';
}

} // namespace

int ConvertMBNumberToSBNumber(const char* src, char* dst) {
    const MbToSbNumber* table = number_table(zv::current_code_set());
    if (table == nullptr) {
        std::strcpy(dst, src);
        return 0;
    }
    zv::with_current_scanner([&](auto scanner) {
        while (*src != '\0') {
            const int length = zv::step<decltype(scanner)>(zv::as_bytes(src));
            const char ascii = length > 1 ? narrow(table, src) : '\0';
            if (ascii != '\0') {
                *dst++ = ascii;
            } else {
                std::memcpy(dst, src, static_cast<size_t>(length));
                dst += length;
            }
            src += length;
        }
    });
    *dst = '\0';
    return 0;
}
