// Compiled for each size of vectors: what processors run that have no wide ones may not be defined
// here.
#include "strings_kernels.h"

namespace zv {

using Kernels = StringKernels<kBlockSize>;

// What longer characters begin with in some of the code sets that have these pairs.
template <PairRanges kPairs>
constexpr ByteRanges kSingleShifts =
    kPairs.leads.first[0] > 0x8F ? ByteRanges{{kSingleShift2}, {0x8F}, 1} : ByteRanges{};

// The marks of a window among those of a text.
inline void put_window(LongMask marks, size_t at, std::uint64_t* words) {
    if (kWindow == 64 || at % 64 == 0)
        words[at / 64] = marks;
    else
        words[at / 64] |= marks << at % 64;
}

template <>
bool Kernels::find(const Byte* text, size_t size, const Wanted& wanted, std::uint64_t* found) {
    const Wanted::Range firsts = wanted.firsts, seconds = wanted.seconds; // nothing changes them
    LongMask any = 0;
    for (size_t i = 0; i < size; i += kWindow) {
        const auto find_range = [](const Window& bytes, Wanted::Range range) {
            return find_in(
                bytes, [=](ByteBlock block) { return range_mask(block, range.first, range.last); });
        };
        const Window bytes = load_window_up_to(text + i, size - i);
        LongMask marked = 0;
        if (firsts.first != 0) {
            const Window next = load_window_up_to(text + i + 1, size - i);
            marked = find_range(bytes, firsts) & find_range(next, seconds);
        }
        for (size_t k = 0; k < wanted.count; ++k)
            marked |= find_range(bytes, wanted.singles[k]);
        put_window(marked, i, found);
        any |= marked;
    }
    return any != 0;
}

template <>
template <PairRanges kPairs>
void Kernels::mark_starts(const Byte* text, size_t size, size_t& from, size_t& next,
                          std::uint64_t* starts) {
    using Trails = RangedBytes<kPairs.trails>;
    LeadWalk walk(next - from);
    size_t i = from;
    for (; i < size; i += kWindow) {
        const Window bytes = load_window_up_to(text + i, size - i);
        if (find_in(bytes, RangedBytes<kSingleShifts<kPairs>>::find) != 0)
            break;
        walk.enter(find_in(bytes, RangedBytes<kPairs.leads>::find));
        const LongMask trails = walk.behind_leads() & find_in(bytes, Trails::find);
        put_window(trails ^ kAllOfWindow, i, starts);
    }
    from = std::min(i, size);
    next = i < size && walk.carried() != 0 && Trails::has(text[i]) ? i + 1 : from;
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
