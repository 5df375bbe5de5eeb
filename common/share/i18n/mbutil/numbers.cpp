#include <cstring>

#include "../jaconv/character_blocks.h"
#include "scanner_choice.h"

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

// The entries of a table by their second bytes.
class Numbers {
public:
    explicit Numbers(const MbToSbNumber* table) : table_(table) {
        Byte count = 0;
        while (table[count].mb[0] != 0)
            ++count;
        // Backwards, so that the first of equal entries is found first.
        for (; count != 0; --count) {
            in_table_[table[count - 1].mb[0]] = 0xFF;
            Byte& first = entry_[table[count - 1].mb[1]];
            next_[count - 1] = first;
            first = count;
        }
    }
    // The ASCII character for the two bytes at p; 0 when the table has none.
    char narrow(const Byte* p) const {
        // Few pairs have both, so that one branch tells nearly all of the others.
        for (Byte entry = entry_[p[1]] & in_table_[p[0]]; entry != 0; entry = next_[entry - 1]) {
            if (table_[entry - 1].mb[0] == p[0])
                return table_[entry - 1].sb;
        }
        return '\0';
    }

private:
    static constexpr size_t kMost = 24; // entries of a table

    const MbToSbNumber* table_;
    Byte in_table_[256] = {}; // all bits of first bytes
    Byte entry_[256] = {};    // entries count from 1
    Byte next_[kMost];
};

} // namespace

int ConvertMBNumberToSBNumber(const char* src, char* dst) {
    const MbToSbNumber* table = number_table(zv::current_code_set());
    if (table == nullptr) {
        std::strcpy(dst, src);
        return 0;
    }
    const Numbers numbers(table);
    zv::with_current_scanner([&](auto scanner) {
        const Byte* from = zv::as_bytes(src);
        Byte* to = zv::as_bytes(dst);
        constexpr zv::PairRanges kPairs = zv::kPairsOf<decltype(scanner)>;
        while (*from != 0) {
            // Code sets of longer characters take more steps to tell how long one is.
            const bool is_pair = decltype(scanner)::kLongest > 2 &&
                                 zv::RangedBytes<kPairs.leads>::has(from[0]) &&
                                 zv::RangedBytes<kPairs.trails>::has(from[1]);
            const int length = is_pair ? 2 : zv::step<decltype(scanner)>(from);
            const char ascii = length > 1 ? numbers.narrow(from) : '\0';
            *to++ = ascii != '\0' ? static_cast<Byte>(ascii) : *from;
            for (int i = 1; i < length && ascii == '\0'; ++i)
                *to++ = from[i];
            from += length;
        }
        *to = 0;
    });
    return 0;
}
