#include <bitset>
#include <cstring>

#include "character_search.h"

namespace {

using zv::Byte;

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

} // namespace

int ConvertMBNumberToSBNumber(const char* src, char* dst) {
    const MbToSbNumber* const table = number_table(zv::current_code_set());
    if (table == nullptr) {
        std::strcpy(dst, src);
        return 0;
    }
    // What tells most of the other marks apart at once.
    const auto difference = [](const Byte* pair) { return static_cast<Byte>(pair[0] - pair[1]); };
    std::bitset<256> differences;
    zv::Wanted numbers;
    for (const MbToSbNumber* row = table; row->mb[0] != 0; ++row) {
        numbers.add(row->mb, 2);
        differences[difference(row->mb)] = true;
    }
    const Byte* from = zv::as_bytes(src);
    // The output may stand where the source does: the search has looked at what is written there.
    const auto copy_until = [&](const Byte* end) {
        const auto length = static_cast<size_t>(end - from);
        std::memmove(dst, from, length);
        dst += length;
    };
    zv::CharacterSearch search(zv::current_characters(), from, from, numbers);
    while (const Byte* const p = search.next()) {
        if (!differences[difference(p)])
            continue;
        const MbToSbNumber* row = table;
        while (row->mb[0] != 0 && std::memcmp(row->mb, p, 2) != 0)
            ++row;
        if (row->mb[0] != 0) {
            copy_until(p);
            *dst++ = row->sb;
            from = p + 2;
        }
    }
    copy_until(search.end());
    *dst = '\0';
    return 0;
}
