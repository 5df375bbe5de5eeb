// Compiled for each size of vectors: what processors run that have no wide ones may not be defined
// here.
#include "strings_kernels.h"

namespace zv {
namespace {

using Kernels = StringKernels<kBlockSize>;

// What longer characters begin with in some of the code sets that have these pairs.
template <PairRanges kPairs>
constexpr ByteRanges kSingleShifts =
    kPairs.leads.first[0] > 0x8F ? ByteRanges{{kSingleShift2}, {0x8F}, 1} : ByteRanges{};

// Text is looked through by as many bytes as a word has bits.
constexpr size_t kWordBlocks = 64 / kBlockSize;
using Word = std::array<ByteBlock, kWordBlocks>;
inline Word load(const Byte* text, size_t left) {
    return load_window_up_to<kWordBlocks>(text, left);
}

// Whether all of so many bytes are in a range.
template <size_t size, ByteRanges kRange>
bool are_all(const Byte* text) {
    ByteBlock most{};
#pragma GCC unroll(kBlockSize > 16 ? 8 : 1)
    for (size_t i = 0; i < size; i += kBlockSize) {
        const ByteBlock above_first = load_block(text + i) - kRange.first[0];
        most = most > above_first ? most : above_first;
    }
    return range_mask(most, 0, kRange.last[0] - kRange.first[0]) == kAllMarked;
}

} // namespace

template <>
bool Kernels::find(const Byte* text, size_t size, const Wanted& wanted, std::uint64_t* found) {
    std::uint64_t any = 0;
    bool is_first = true;
    // One after the other, each of which stays in registers.
    const auto add = [&](auto find) {
        for (size_t i = 0; i < size; i += 64)
            any |= found[i / 64] = find(text + i, size - i) | (is_first ? 0 : found[i / 64]);
        is_first = false;
    };
    const auto find_range = [](const Byte* bytes, size_t left, Wanted::Range range) {
        return find_in(load(bytes, left),
                       [=](ByteBlock block) { return range_mask(block, range.first, range.last); });
    };
    for (size_t k = 0; k < wanted.count; ++k)
        add([=, range = wanted.singles[k]](const Byte* bytes, size_t left) {
            return find_range(bytes, left, range);
        });
    if (wanted.firsts.first != 0)
        add([=, firsts = wanted.firsts, seconds = wanted.seconds](const Byte* bytes, size_t left) {
            return find_range(bytes, left, firsts) & find_range(bytes + 1, left, seconds);
        });
    return any != 0;
}

template <>
template <PairRanges kPairs>
Marked Kernels::mark_starts(const Byte* text, size_t size, Marked marked, std::uint64_t* starts) {
    using Trails = RangedBytes<kPairs.trails>;
    LeadWalkOf<64> walk(marked.next - marked.end);
    size_t i = marked.end;
    for (; i < size; i += 64) {
        const Word bytes = load(text + i, size - i);
        if (find_in(bytes, RangedBytes<kSingleShifts<kPairs>>::find) != 0)
            break;
        walk.enter(find_in(bytes, RangedBytes<kPairs.leads>::find));
        starts[i / 64] = ~(walk.behind_leads() & find_in(bytes, Trails::find));
    }
    const size_t end = std::min(i, size);
    const std::uint64_t carried = i > size ? walk.leads() >> (size % 64 - 1) : walk.carried();
    return {end, end + ((carried & 1) != 0 && Trails::has(text[end]))};
}

template <>
template <ByteRanges kLeads>
const Byte* Kernels::run_of_leads(const Byte* first, const Byte* p) {
    constexpr ptrdiff_t kAtOnce = 8 * kBlockSize;
    const bool has_block = static_cast<size_t>(p - first) >= kBlockSize;
    while (static_cast<size_t>(p - first) >= kBlockSize) {
        const Mask leads = RangedBytes<kLeads>::find(load_block(p - kBlockSize));
        if (leads != kAllMarked)
            return p - kBlockSize + std::bit_width(~leads & kAllMarked);
        p -= kBlockSize;
        while (kLeads.count == 1 && p - first >= kAtOnce && are_all<kAtOnce, kLeads>(p - kAtOnce))
            p -= kAtOnce;
    }
    const auto left = static_cast<size_t>(p - first);
    const ByteBlock front = has_block ? load_block(first) : load_front(first, left);
    const Mask leads = RangedBytes<kLeads>::find(front);
    return first + std::bit_width(~leads & first_bits(left));
}

template <>
template <PairRanges kPairs>
const Byte* Kernels::skip_well_formed(const Byte* p, size_t left) {
    LeadWalkOf<64> walk;
    for (; left != 0; p += 64, left -= 64) {
        const Word bytes = load(p, left);
        const std::uint64_t carried = walk.carried();
        walk.enter(find_in(bytes, RangedBytes<kPairs.leads>::find));
        const std::uint64_t behind = walk.behind_leads();
        const std::uint64_t firsts = find_in(bytes, RangedBytes<kPairs.firsts>::find);
        const std::uint64_t trails = find_in(bytes, RangedBytes<kPairs.trails>::find);
        const std::uint64_t well_formed = (behind & trails) | (~behind & firsts);
        if (well_formed == ~std::uint64_t{} && left >= 64)
            continue;
        const bool is_end = left < 64 && ~well_formed << (64 - left) == 0;
        return is_end ? p + left - (walk.leads() >> (left - 1) & 1) : p - carried;
    }
    return p - walk.carried();
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
