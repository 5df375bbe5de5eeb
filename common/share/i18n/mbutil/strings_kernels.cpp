// Compiled for each size of vectors: what processors run that have no wide ones may not be defined
// here.
#include "strings_kernels.h"

namespace zv {

using Kernels = StringKernels<kBlockSize>;

// What longer characters begin with in some of the code sets that have these pairs.
template <PairRanges kPairs>
constexpr ByteRanges kSingleShifts =
    kPairs.leads.first[0] > 0x8F ? ByteRanges{{kSingleShift2}, {0x8F}, 1} : ByteRanges{};

// As many blocks as a word has bits for.
constexpr size_t kWordBlocks = 64 / kBlockSize;
using Word = std::array<ByteBlock, kWordBlocks>;
inline Word load(const Byte* text, size_t left) {
    return load_window_up_to<kWordBlocks>(text, left);
}

template <>
bool Kernels::find(const Byte* text, size_t size, const Wanted& wanted, std::uint64_t* found) {
    const auto find_range = [](const Word& bytes, Wanted::Range range) {
        return find_in(bytes,
                       [=](ByteBlock block) { return range_mask(block, range.first, range.last); });
    };
    const Wanted::Range firsts = wanted.firsts, seconds = wanted.seconds; // nothing changes them
    std::uint64_t any = 0;
    for (size_t i = 0; i < size; i += 64) {
        const Word bytes = load(text + i, size - i);
        std::uint64_t marked = 0;
        if (firsts.first != 0)
            marked = find_range(bytes, firsts) & find_range(load(text + i + 1, size - i), seconds);
        for (size_t k = 0; k < wanted.count; ++k)
            marked |= find_range(bytes, wanted.singles[k]);
        found[i / 64] = marked;
        any |= marked;
    }
    return any != 0;
}

template <>
template <PairRanges kPairs>
void Kernels::mark_starts(const Byte* text, size_t size, size_t& from, size_t& next,
                          std::uint64_t* starts) {
    using Trails = RangedBytes<kPairs.trails>;
    std::uint64_t carried = next - from; // 1 behind a lead byte
    std::uint64_t leads = 0;
    size_t i = from;
    for (; i < size; i += 64) {
        const Word bytes = load(text + i, size - i);
        if (find_in(bytes, RangedBytes<kSingleShifts<kPairs>>::find) != 0)
            break;
        leads = every_other(find_in(bytes, RangedBytes<kPairs.leads>::find) & ~carried);
        starts[i / 64] = ~((leads << 1 | carried) & find_in(bytes, Trails::find));
        carried = leads >> 63;
    }
    if (i >= size) {
        i = size;
        carried = leads >> (size - 1) % 64 & 1;
    }
    from = i;
    next = i + (carried != 0 && Trails::has(text[i]));
}

template <>
template <ByteRanges kLeads>
const Byte* Kernels::run_of_leads(const Byte* first, const Byte* p) {
    return zv::run_of_leads<kLeads>(first, p);
}

template <>
template <PairRanges kPairs>
const Byte* Kernels::skip_well_formed(const Byte* p, size_t left) {
    return zv::skip_well_formed<kPairs>(p, left);
}

#define ZVUTIL_LEADS(Scanner)                                                                      \
    template const Byte* Kernels::run_of_leads<kPairsOf<Scanner>.leads>(const Byte*, const Byte*);
#define ZVUTIL_PAIRS(Scanner)                                                                      \
    template MarkStarts Kernels::mark_starts<kPairsOf<Scanner>>;                                   \
    template const Byte* Kernels::skip_well_formed<kPairsOf<Scanner>>(const Byte*, size_t);

ZVUTIL_LEADS(SingleByteScanner)
ZVUTIL_PAIRS(SingleByteScanner)
ZVUTIL_LEADS(EucScanner)
ZVUTIL_PAIRS(EucScanner) // and GB
ZVUTIL_LEADS(ShiftJisScanner)
ZVUTIL_PAIRS(ShiftJisScanner)
ZVUTIL_PAIRS(Big5Scanner) // and EUC-TW, with the leads of EUC
ZVUTIL_LEADS(Ksc87Scanner)
ZVUTIL_PAIRS(Ksc87Scanner)
ZVUTIL_LEADS(Ksc92Scanner)
ZVUTIL_PAIRS(Ksc92Scanner)

} // namespace zv
