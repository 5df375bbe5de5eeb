// Compiled for processors with AVX2: nothing that others run may be compiled here.
#include "japanese_avx2.h"

#include "japanese_pairs.h"

namespace zv {
namespace {

static_assert(kBlockSize == kWideBlockSize);

// The bytes that are marked are all ones, the others zero.
SignedByteBlock spread(Mask mask) {
    using Masks [[gnu::vector_size(kBlockSize)]] = Mask;
    constexpr ByteBlock kBits = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128,
                                 1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};
    const ByteBlock copies = std::bit_cast<ByteBlock>(Masks{} + mask);
    const ByteBlock eights =
        __builtin_shufflevector(copies, copies, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 18,
                                18, 18, 18, 18, 18, 18, 18, 19, 19, 19, 19, 19, 19, 19, 19);
    return (eights & kBits) == kBits;
}

// The block that begins a byte earlier.
ByteBlock one_earlier(ByteBlock before, ByteBlock bytes) {
    return __builtin_shufflevector(before, bytes, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40, 41, 42,
                                   43, 44, 45, 46, 47, 48, 49, 50, 51, 52, 53, 54, 55, 56, 57, 58,
                                   59, 60, 61, 62);
}

// Converts ASCII and two-byte characters in any mixture, without a branch for a character: in a run
// of bytes that could be lead bytes, leads and trails alternate from the run's first byte, or from
// its second where that is the trail byte of the block before.
template <class Bytes, size_t SafeLeft>
Converted convert_mixed(Source source, Byte* out) {
    ByteBlock before = {};
    Mask carried = 0;
    while (source.left() > kBlockSize) {
        const ByteBlock bytes = load_block(source.next);
        const Mask high = high_bits(bytes);
        if ((high | carried) == 0) {
            store_block(out, bytes);
            source.next += kBlockSize;
            out += kBlockSize;
            continue;
        }
        const Mask leads = every_other(high_bits(Bytes::could_lead(bytes)) & ~carried);
        const Mask trails = leads << 1 | carried;
        const Mask bad_trails = trails & ~high_bits(Bytes::could_trail(bytes));
        const Mask not_plain = (high & ~leads & ~trails) | bad_trails;
        const ByteBlock lead = Bytes::lead(bytes, load_block(source.next + 1));
        const ByteBlock trail = Bytes::trail(one_earlier(before, bytes), bytes);
        const ByteBlock converted =
            choose(spread(leads), lead, choose(spread(trails), trail, bytes));
        if (not_plain != 0) [[unlikely]] {
            size_t plain = count_before(not_plain);
            if ((bad_trails >> plain & 1) != 0) {
                if (plain == 0)
                    break;
                --plain;
            }
            if (source.left() >= SafeLeft)
                store_block(out, converted);
            else
                store_front(out, converted, plain);
            return {source.next + plain, out + plain};
        }
        store_block(out, converted);
        source.next += kBlockSize;
        out += kBlockSize;
        carried = leads >> (kBlockSize - 1);
        before = bytes;
    }
    // A character that reaches beyond the last block is left to the rule.
    return {source.next - carried, out - carried};
}

template <class Pairs>
Converted convert_pairs(Source source, Byte* out) {
    out = convert_run<Pairs>(source, out);
    return {source.next, out};
}

} // namespace

Converted wide_shift_jis_to_euc(Source source, Byte* out) {
    return convert_mixed<ShiftJisToEucBytes, kSafeWhereNothingShrinks>(source, out);
}

Converted wide_euc_to_shift_jis(Source source, Byte* out) {
    return convert_mixed<EucToShiftJisBytes, kSafeFromEucToShiftJis>(source, out);
}

Converted wide_jis_to_shift_jis(Source source, Byte* out) {
    return convert_pairs<JisToShiftJisPairs>(source, out);
}

Converted wide_jis_to_euc(Source source, Byte* out) {
    return convert_pairs<JisToEucPairs>(source, out);
}

} // namespace zv
