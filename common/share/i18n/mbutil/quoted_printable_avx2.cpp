// Compiled for processors with AVX2: nothing that others run may be compiled here.
#include "quoted_printable_avx2.h"

#include <immintrin.h>

#include "../jaconv/kernels.h"

namespace zv {
namespace {

using SignedByteBlock [[gnu::vector_size(kBlockSize)]] = signed char;

__m128i load(const Byte* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}
void store(Byte* to, __m128i block) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), block);
}
__m256i as_block(ByteBlock bytes) {
    return std::bit_cast<__m256i>(bytes);
}

size_t count(std::uint64_t mask) {
    return static_cast<size_t>(__builtin_popcountll(mask));
}

// The bytes that are left of a text, zeros behind its end. The whole text is no shorter than this.
__m128i load_last(const Byte* end, size_t left) {
    constexpr size_t kSize = sizeof(__m128i);
    static constexpr struct Places {
        Byte places[2 * kSize];
        constexpr Places() : places() {
            for (unsigned i = 0; i < 2 * kSize; ++i)
                places[i] = static_cast<Byte>(i < kSize ? i : 0x80);
        }
    } kPlaces;
    const size_t taken = left < kSize ? kSize : left;
    return _mm_shuffle_epi8(load(end - taken), load(kPlaces.places + (taken - left)));
}
size_t left_behind(size_t left, size_t length) {
    return left < length ? 0 : left - length;
}
ByteBlock load_last_block(const Byte* end, size_t left) {
    return std::bit_cast<ByteBlock>(
        _mm256_set_m128i(load_last(end, left_behind(left, sizeof(__m128i))), load_last(end, left)));
}

// How four bytes are encoded, of which some are escaped: where each byte of the result stands in a
// block of these bytes, their high digits, their low digits and equals signs. The last byte is the
// length of the result.
struct QuadShuffles {
    static constexpr size_t kSize = 16;
    Byte rows[16 * kSize];
};
constexpr QuadShuffles make_quad_shuffles() {
    QuadShuffles shuffles{};
    for (unsigned escaped = 0; escaped < 16; ++escaped) {
        Byte* const row = shuffles.rows + escaped * QuadShuffles::kSize;
        Byte length = 0;
        for (unsigned i = 0; i < 4; ++i) {
            if ((escaped >> i & 1) == 0) {
                row[length++] = static_cast<Byte>(i);
                continue;
            }
            row[length++] = static_cast<Byte>(12 + i);
            row[length++] = static_cast<Byte>(4 + i);
            row[length++] = static_cast<Byte>(8 + i);
        }
        row[QuadShuffles::kSize - 1] = length;
    }
    return shuffles;
}
alignas(16) constexpr QuadShuffles kQuadShuffles = make_quad_shuffles();

// Writes one of the quads of a block and bytes that mean nothing behind it.
template <int n>
Byte* put_quad(Byte* out, __m128i quad, std::uint64_t escaped) {
    constexpr size_t kRow = QuadShuffles::kSize;
    static_assert(kRow == 1 << 4); // the masks of quads, too, are four bits
    const Byte* const row = kQuadShuffles.rows + ((escaped << 4) >> (4 * n) & (0xF * kRow));
    store(out, _mm_shuffle_epi8(quad, load(row)));
    return out + row[kRow - 1];
}

// Writes what becomes of a block; that of the first bytes counts.
Byte* encode_block(Byte* out, ByteBlock bytes, size_t length) {
    const auto plain = (std::bit_cast<SignedByteBlock>(bytes + 1) > 0x21) & (bytes != '=');
    const Mask escaped = ~high_bits(plain);
    const __m256i digits =
        _mm256_broadcastsi128_si256(load(reinterpret_cast<const Byte*>("0123456789ABCDEF")));
    const auto pairs = std::bit_cast<PairBlock>(bytes);
    const __m256i high =
        _mm256_shuffle_epi8(digits, as_block(std::bit_cast<ByteBlock>(pairs >> 4) & 0x0F));
    const __m256i low = _mm256_shuffle_epi8(digits, as_block(bytes & 0x0F));
    const __m256i signs = _mm256_set1_epi8('=');
    // Each half makes four quads.
    const __m256i front = _mm256_unpacklo_epi32(as_block(bytes), high);
    const __m256i front_rest = _mm256_unpacklo_epi32(low, signs);
    const __m256i back = _mm256_unpackhi_epi32(as_block(bytes), high);
    const __m256i back_rest = _mm256_unpackhi_epi32(low, signs);
    const __m256i quads[] = {
        _mm256_unpacklo_epi64(front, front_rest), _mm256_unpackhi_epi64(front, front_rest),
        _mm256_unpacklo_epi64(back, back_rest), _mm256_unpackhi_epi64(back, back_rest)};
    Byte* next = out;
    next = put_quad<0>(next, _mm256_castsi256_si128(quads[0]), escaped);
    next = put_quad<1>(next, _mm256_castsi256_si128(quads[1]), escaped);
    next = put_quad<2>(next, _mm256_castsi256_si128(quads[2]), escaped);
    next = put_quad<3>(next, _mm256_castsi256_si128(quads[3]), escaped);
    if (length > kBlockSize / 2) {
        next = put_quad<4>(next, _mm256_extracti128_si256(quads[0], 1), escaped);
        next = put_quad<5>(next, _mm256_extracti128_si256(quads[1], 1), escaped);
        next = put_quad<6>(next, _mm256_extracti128_si256(quads[2], 1), escaped);
        next = put_quad<7>(next, _mm256_extracti128_si256(quads[3], 1), escaped);
    }
    if (length == kBlockSize)
        return next;
    return out + length + 2 * count(escaped & ((Mask{1} << length) - 1));
}

using LongMask = std::uint64_t;

// The places of those of eight bytes that are kept, from a first one on.
struct KeptBytes {
    Byte places[256][8];
};
constexpr KeptBytes make_kept_bytes(unsigned first) {
    KeptBytes kept{};
    for (unsigned mask = 0; mask < 256; ++mask) {
        Byte* place = kept.places[mask];
        for (unsigned i = 0; i < 8; ++i) {
            if ((mask >> i & 1) != 0)
                *place++ = static_cast<Byte>(first + i);
        }
    }
    return kept;
}
constexpr KeptBytes kLowerKept = make_kept_bytes(0);
constexpr KeptBytes kUpperKept = make_kept_bytes(8);

// Differences below zero are zero.
ByteBlock less(ByteBlock bytes, int amount) {
    return std::bit_cast<ByteBlock>(
        _mm256_subs_epu8(as_block(bytes), _mm256_set1_epi8(static_cast<char>(amount))));
}

// Half a block of text to decode, and what its bytes are.
struct QuotedHalf {
    ByteBlock bytes;
    ByteBlock values;        // of the digits
    SignedByteBlock is_sign; // "="
    LongMask signs, digits, line_feeds, printable;

    explicit QuotedHalf(ByteBlock text) : bytes(text), is_sign(text == '=') {
        // Digits become 80 to 8F, all else stays below.
        const ByteBlock small_before = (bytes - 1) | ('a' ^ 'A');
        const ByteBlock decimal = less(bytes + (0xFF - '9'), 0xFF - 0x89);
        const ByteBlock letter = less(small_before + (0xFF - ('f' - 1)), 0xFF - 0x8F);
        const ByteBlock found = decimal > letter ? decimal : letter;
        values = found & 0x0F;
        signs = high_bits(is_sign);
        digits = high_bits(found);
        line_feeds = high_bits(bytes == '\n');
        printable = high_bits(std::bit_cast<SignedByteBlock>(bytes + 1) > 0x20);
    }

    // Puts what the two bytes behind each "=" mean in its place.
    ByteBlock decode(ByteBlock behind) const {
        const auto high = std::bit_cast<PairBlock>(later<1>(values, behind));
        const ByteBlock low = later<2>(values, behind);
        return is_sign ? std::bit_cast<ByteBlock>(high << 4) | low : bytes;
    }

private:
    // The block that begins so many bytes later.
    template <int bytes>
    static ByteBlock later(ByteBlock block, ByteBlock behind) {
        const auto middle = _mm256_permute2x128_si256(as_block(block), as_block(behind), 0x21);
        return std::bit_cast<ByteBlock>(_mm256_alignr_epi8(middle, as_block(block), bytes));
    }
};

// What becomes of a block of text. Its last two bytes may belong to an escape that begins before
// them, and come again at the front of the next block.
constexpr size_t kDecodedBytes = kDecodedBlock - 2;
struct DecodedBlock {
    ByteBlock front, back;
    LongMask kept;
    LongMask dropped_behind; // of the front of the next block
    LongMask end;            // marks what cannot be decoded here

    DecodedBlock(ByteBlock front_text, ByteBlock back_text, LongMask dropped) {
        const QuotedHalf first(front_text), second(back_text);
        const LongMask printable = first.printable | second.printable << kBlockSize;
        const LongMask digits = first.digits | second.digits << kBlockSize;
        const LongMask signs = (first.signs | second.signs << kBlockSize) & kCounts;
        const LongMask line_feeds = first.line_feeds | second.line_feeds << kBlockSize;
        const LongMask escapes = signs & digits >> 1 & digits >> 2;
        const LongMask soft_breaks = signs & line_feeds >> 1;
        const LongMask known = escapes | soft_breaks;
        const LongMask behind_signs = known << 1 | escapes << 2;
        kept = ~(soft_breaks | behind_signs | dropped) & kCounts;
        dropped_behind = behind_signs >> kDecodedBytes;
        end = (kept & ~printable) | (signs & ~known);
        front = first.decode(second.values);
        back = second.decode(second.values); // what stands behind it makes no difference
    }
    DecodedBlock(const Byte* text, LongMask dropped)
        : DecodedBlock(load_block(text), load_block(text + kBlockSize), dropped) {}

    // May write over two bytes of the next block where the output stands where the source does.
    Byte* put(Byte* out) const {
        return put_half(put_half(out, front, kept & 0xFFFFFFFF), back, kept >> kBlockSize);
    }

    // Writes what becomes of the first bytes, and nothing else.
    Byte* put_front(Byte* out, size_t length) const {
        Byte bytes[kDecodedBlock];
        store_block(bytes, front);
        store_block(bytes + kBlockSize, back);
        return put_kept(out, bytes, bytes + length, kept & ((LongMask{1} << length) - 1));
    }

private:
    static constexpr LongMask kCounts = (LongMask{1} << kDecodedBytes) - 1;

    static __m128i load_eight(const Byte* from) {
        return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from));
    }
    static __m128i choose_bytes(const Byte* eight, LongMask kept) {
        return _mm_shuffle_epi8(load_eight(eight), load_eight(kLowerKept.places[kept]));
    }
    static __m128i places_of(LongMask lower, LongMask upper) {
        const __m128d places = _mm_castsi128_pd(load_eight(kLowerKept.places[lower]));
        const auto* const others = reinterpret_cast<const double*>(kUpperKept.places[upper]);
        return _mm_castpd_si128(_mm_loadh_pd(places, others));
    }

    // By pointers, so that the loop is not unrolled: it runs once a text.
    [[gnu::noinline]] static Byte* put_kept(Byte* out, const Byte* bytes, const Byte* end,
                                            LongMask kept) {
        for (; end - bytes >= 8; bytes += 8, kept >>= 8) {
            _mm_storel_epi64(reinterpret_cast<__m128i*>(out), choose_bytes(bytes, kept & 0xFF));
            out += count(kept & 0xFF);
        }
        Byte rest[kBlockSize];
        store(rest, choose_bytes(bytes, kept));
        copy_short(out, rest, count(kept));
        return out + count(kept);
    }

    // Writes eight bytes at a time, of which those that are kept count.
    static Byte* put_half(Byte* out, ByteBlock bytes, LongMask kept) {
        const LongMask masks[] = {kept & 0xFF, kept >> 8 & 0xFF, kept >> 16 & 0xFF, kept >> 24};
        const __m256i places =
            _mm256_set_m128i(places_of(masks[2], masks[3]), places_of(masks[0], masks[1]));
        const __m256i chosen = _mm256_shuffle_epi8(as_block(bytes), places);
        const __m128i low = _mm256_castsi256_si128(chosen);
        const __m128i high = _mm256_extracti128_si256(chosen, 1);
        out = put_upper(put_lower(out, low, masks[0]), low, masks[1]);
        out = put_lower(out, high, masks[2]);
        return put_upper(out, high, masks[3]);
    }
    static Byte* put_lower(Byte* out, __m128i chosen, LongMask kept) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), chosen);
        return out + count(kept);
    }
    static Byte* put_upper(Byte* out, __m128i chosen, LongMask kept) {
        _mm_storeh_pi(reinterpret_cast<__m64*>(out), _mm_castsi128_ps(chosen));
        return out + count(kept);
    }
};

} // namespace

Converted wide_encode_quoted(Source source, Byte* out) {
    for (; source.left() >= kQuotedBlock; source.next += kQuotedBlock)
        out = encode_block(out, load_block(source.next), kQuotedBlock);
    if (source.next != source.end)
        out = encode_block(out, load_last_block(source.end, source.left()), source.left());
    return {source.end, out};
}

Converted wide_decode_quoted(Source source, Byte* out, const bool& is_last) {
    LongMask dropped = 0; // of the front of what is left, what belongs to an escape before it
    for (;;) {
        bool is_whole = source.left() >= kDecodedBlock;
        if (!is_whole && !is_last)
            return {source.next + count(dropped), out};
        DecodedBlock block(
            is_whole ? load_block(source.next) : load_last_block(source.end, source.left()),
            is_whole ? load_block(source.next + kBlockSize)
                     : load_last_block(source.end, left_behind(source.left(), kBlockSize)),
            dropped);
        if (block.end != 0) {
            const size_t length = static_cast<size_t>(__builtin_ctzll(block.end));
            return {source.next + length, block.put_front(out, length)};
        }
        if (!is_whole)
            return {source.next + kDecodedBytes + count(block.dropped_behind),
                    block.put_front(out, kDecodedBytes)};
        // A block is looked through while the one before is written: neither waits for the other.
        const Byte* const last = source.end - kDecodedBlock;
        for (;;) {
            source.next += kDecodedBytes;
            dropped = block.dropped_behind;
            is_whole = source.next <= last;
            const DecodedBlock next(is_whole ? source.next : last, dropped);
            if (!is_whole || next.end != 0)
                break;
            out = block.put(out);
            block = next;
        }
        out = block.put_front(out, kDecodedBytes);
    }
}

} // namespace zv
