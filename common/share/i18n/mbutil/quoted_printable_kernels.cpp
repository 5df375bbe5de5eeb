// Compiled for vectors of 32 and of 64 bytes.
#include "quoted_printable_kernels.h"

#include "../jaconv/kernels.h"

#ifdef __AVX2__

namespace zv {
namespace {

// Encoding.

constexpr size_t kTokens = kBlockSize / 4; // in a block of them

// Four bytes for each of some bytes of a block: its escape, then itself.
template <size_t part>
ByteBlock make_tokens(ByteBlock bytes) {
    using Tokens [[gnu::vector_size(kBlockSize)]] = std::uint32_t;
    constexpr const char kDigits[] =
        "0123456789ABCDEF0123456789ABCDEF0123456789ABCDEF0123456789ABCDEF";
    const ByteBlock digits = load_block(as_bytes(kDigits));
    const ByteBlock copies = [=]<size_t... places>(std::index_sequence<places...>) {
        return __builtin_shufflevector(bytes, bytes, (part * kTokens + places / 4)...);
    }
    (std::make_index_sequence<kBlockSize>());
    const auto four = std::bit_cast<Tokens>(copies);
#ifdef __AVX512VBMI2__
    // The upper bits of a value do not matter to the permutation.
    const __m512i values = _mm512_srlv_epi16(std::bit_cast<__m512i>(four), _mm512_set1_epi32(4));
    const auto others = std::bit_cast<__m512i>((four & 0xFFFFFF00) | '=');
    return std::bit_cast<ByteBlock>(_mm512_mask_permutexvar_epi8(others, 0x6666666666666666, values,
                                                                 std::bit_cast<__m512i>(digits)));
#else
    // The high halves of products: the first two bytes moved down by four bits, the others by
    // eight.
    const __m256i moved =
        _mm256_mulhi_epu16(std::bit_cast<__m256i>(four), _mm256_set1_epi32(0x01001000));
    const __m256i values = _mm256_and_si256(moved, _mm256_set1_epi32(0x000F0F00));
    constexpr std::uint32_t kOthers = '0' << 24 | ('0' ^ '=');
    const auto others = std::bit_cast<ByteBlock>((four & 0xFF000000) ^ kOthers);
    const __m256i shuffled = _mm256_shuffle_epi8(std::bit_cast<__m256i>(digits), values);
    return std::bit_cast<ByteBlock>(shuffled) ^ others;
#endif
}

// Writes the escapes of those that are marked and the bytes themselves of the others.
[[gnu::always_inline]] inline Byte* put_tokens(Byte* out, ByteBlock tokens, Mask escaped) {
#ifdef __AVX512VBMI2__
    const Mask firsts = _pdep_u64(escaped, 0x1111111111111111);
    return put_kept_at_once(out, tokens, 0x8888888888888888 ^ ((firsts << 4) - firsts));
#else
    // Where the bytes of four tokens stand that are written: a row of 16 for each mask.
    static constexpr auto kPlaces = [] {
        std::array<Byte, 256> places{};
        for (unsigned mask = 0; mask < 16; ++mask) {
            size_t next = 16 * mask;
            for (unsigned i = 0; i < 16; ++i) {
                if (((mask >> i / 4 & 1) != 0) == (i % 4 < 3))
                    places[next++] = static_cast<Byte>(i);
            }
        }
        return places;
    }();
    const auto put_half = [&](__m128i half, Mask row) {
        const void* const places = kPlaces.data() + row;
        const __m128i kept =
            _mm_shuffle_epi8(half, _mm_loadu_si128(static_cast<const __m128i*>(places)));
        std::memcpy(out, &kept, sizeof kept);
        out += 4 + 2 * count_marked(row);
    };
    const __m256i all = std::bit_cast<__m256i>(tokens);
    put_half(_mm256_castsi256_si128(all), escaped << 4 & 0xF0);
    put_half(_mm256_extracti128_si256(all, 1), escaped & 0xF0);
    return out;
#endif
}

// Writes what becomes of a block; that of the first bytes counts.
[[gnu::always_inline]] inline Byte* encode_block(Byte* out, ByteBlock bytes, size_t length) {
    const Mask escaped = ~(range_mask(bytes, 0x21, 0x7E) & ~byte_mask(bytes, '='));
    Byte* next = out;
    next = put_tokens(next, make_tokens<0>(bytes), escaped);
    next = put_tokens(next, make_tokens<1>(bytes), escaped >> kTokens);
    if (length > kBlockSize / 2) {
        next = put_tokens(next, make_tokens<2>(bytes), escaped >> 2 * kTokens);
        next = put_tokens(next, make_tokens<3>(bytes), escaped >> 3 * kTokens);
    }
    return length == kBlockSize ? next
                                : out + length + 2 * count_marked(escaped & first_bits(length));
}

// Decoding.

// Sums above FF are FF.
ByteBlock more(const ByteBlock& bytes, int amount) {
#ifdef __AVX512VBMI2__
    return std::bit_cast<ByteBlock>(_mm512_adds_epu8(std::bit_cast<__m512i>(bytes),
                                                     _mm512_set1_epi8(static_cast<char>(amount))));
#else
    return std::bit_cast<ByteBlock>(_mm256_adds_epu8(std::bit_cast<__m256i>(bytes),
                                                     _mm256_set1_epi8(static_cast<char>(amount))));
#endif
}

// What digits mean, taken from 7F; all else becomes 80 or more.
ByteBlock classify_digits(const ByteBlock& bytes) {
    const ByteBlock decimal = more('9' - bytes, 0x7F - 9);
    // Joining the small letters moves what stands before them far away, if it is done a byte lower.
    const ByteBlock letter = more(('f' - 1) - ((bytes - 1) | ('a' ^ 'A')), 0x7F - 15);
    return decimal < letter ? decimal : letter;
}

// What becomes of a block of text that begins no later than an escape does: the second digit of an
// escape becomes what that means, "=" and the byte behind it, a first digit or a line feed, are
// left out.
struct DecodedBlock {
    Mask behind_signs, second_digits;
    Mask kept;
    Mask bad; // what cannot be decoded
    ByteBlock bytes;

    DecodedBlock() = default;
    explicit DecodedBlock(ByteBlock text) {
        const Mask signs = byte_mask(text, '=');
        behind_signs = signs << 1;
        kept = ~(signs | behind_signs);
        const ByteBlock digits = classify_digits(text);
        const Mask others = high_bits(digits);
        second_digits = (behind_signs & ~others) << 1;
        bad = (((behind_signs & ~byte_mask(text, '\n')) | second_digits) & others) |
              ~(range_mask(text, ' ', '~') | behind_signs);
        const ByteBlock values = digits & 0x0F;
        const ByteBlock firsts = std::bit_cast<ByteBlock>(as_pairs(values) << 4);
        const ByteBlock joined = ~(moved_on(firsts) | values);
        bytes = choose(second_digits, joined, 0, joined, text);
    }

    // How much can be decoded where something cannot.
    size_t count_good() const {
        const size_t first = count_before(bad);
        return first - (behind_signs >> first & 1) - 2 * (second_digits >> first & 1);
    }
};

// The length of a block without an escape or a soft line break that may go on behind its end. The
// next block waits for that, so it is not taken out of the masks.
size_t whole_length(const Byte* block) {
    return kBlockSize - 2 * (block[kBlockSize - 2] == '=') - (block[kBlockSize - 1] == '=');
}

using Kernels = QuotedPrintableKernels<kBlockSize>;

} // namespace

template <>
Byte* Kernels::encode(Source source, Byte* out, Byte* room) {
    return put_lines(source, out, room, [](Byte* end, Source chunk) {
        while (chunk.left() > kBlockSize) {
            end = encode_block(end, load_block(chunk.next), kBlockSize);
            chunk.next += kBlockSize;
        }
        return encode_block(end, load_up_to(chunk.next, chunk.left()), chunk.left());
    });
}

template <>
Converted Kernels::decode(Source source, Byte* out, bool is_last) {
    DecodedBlock before;
    bool has_before = false;
    while (source.left() >= kBlockSize || is_last) {
        // A block is looked through before the one before is written, which may reach into it.
        const DecodedBlock block(load_up_to(source.next, source.left()));
        if (block.bad != 0) { // the zeros behind the end are, too
            if (has_before)
                out = put_kept_alone(out, ByteBlock(before.bytes), before.kept);
            const size_t good = block.count_good();
            return {source.next + good,
                    put_kept_alone(out, ByteBlock(block.bytes), block.kept & first_bits(good))};
        }
        if (has_before)
            out = put_kept_at_once(out, before.bytes, before.kept);
        before = block;
        has_before = true;
        source.next += whole_length(source.next);
    }
    if (has_before)
        out = put_kept_alone(out, ByteBlock(before.bytes), before.kept);
    return {source.next, out};
}

} // namespace zv

#endif
