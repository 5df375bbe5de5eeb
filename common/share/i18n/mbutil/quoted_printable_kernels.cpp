// Compiled for vectors of 32 bytes. Wider ones would gain nothing: encoding waits for the ends of
// the lines.
#include "quoted_printable_kernels.h"

#include "../jaconv/kernels.h"

#ifdef __AVX2__

namespace zv {
namespace {

// One bit for each byte of two blocks.
LongMask long_mask(auto front, auto back) {
    return high_bits(front) | LongMask{high_bits(back)} << kBlockSize;
}

// The block that begins so many bytes earlier.
template <size_t bytes>
ByteBlock earlier(ByteBlock before, ByteBlock block) {
    return [=]<size_t... places>(std::index_sequence<places...>) {
        return __builtin_shufflevector(before, block, (kBlockSize - bytes + places)...);
    }
    (std::make_index_sequence<kBlockSize>());
}

__m128i load(const Byte* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}
void store(Byte* to, __m128i block) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), block);
}
__m256i as_block(ByteBlock bytes) {
    return std::bit_cast<__m256i>(bytes);
}

// The bytes that are left of a text, zeros behind its end, from a place on that may lie behind it.
ByteBlock load_last_block(Source text, size_t from) {
    return from < text.left() ? load_up_to(text.next + from, text.left() - from) : ByteBlock{};
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
Byte* put_quad(Byte* out, __m128i quad, Mask escaped) {
    constexpr size_t kRow = QuadShuffles::kSize;
    static_assert(kRow == 1 << 4); // the masks of quads, too, are four bits
    const Byte* const row = kQuadShuffles.rows + (std::rotr(escaped, 4 * n - 4) & (0xF * kRow));
    store(out, _mm_shuffle_epi8(quad, load(row)));
    return out + row[kRow - 1];
}

// Writes what becomes of a block; that of the first bytes counts.
[[gnu::always_inline]] inline Byte* encode_block(Byte* out, ByteBlock bytes, size_t length) {
    const auto plain = (as_signed(bytes + 1) > 0x21) & (bytes != '=');
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
    return out + length + 2 * count_marked(escaped & ((Mask{1} << length) - 1));
}

// Sums above FF are FF.
ByteBlock more(ByteBlock bytes, int amount) {
    return std::bit_cast<ByteBlock>(
        _mm256_adds_epu8(as_block(bytes), _mm256_set1_epi8(static_cast<char>(amount))));
}

// What digits mean, taken from 7F; all else becomes 80 or more.
ByteBlock classify_digits(ByteBlock bytes) {
    const ByteBlock decimal = more('9' - bytes, 0x7F - 9);
    // Joining the small letters moves what stands before them far away, if it is done a byte lower.
    const ByteBlock letter = more(('f' - 1) - ((bytes - 1) | ('a' ^ 'A')), 0x7F - 15);
    return decimal < letter ? decimal : letter;
}

// A first digit of that class as the high half of a byte, with the bits flipped that the class of a
// second digit flips back.
struct HighHalves {
    Byte bytes[16];
};
constexpr HighHalves make_high_halves() {
    HighHalves halves{};
    for (unsigned value = 0; value < 16; ++value)
        halves.bytes[0xF - value] = static_cast<Byte>(value << 4 ^ 0x7F);
    return halves;
}
alignas(16) constexpr HighHalves kHighHalves = make_high_halves();
ByteBlock combine_digits(ByteBlock first, ByteBlock second) {
    const __m256i halves = _mm256_broadcastsi128_si256(load(kHighHalves.bytes));
    return std::bit_cast<ByteBlock>(_mm256_shuffle_epi8(halves, as_block(first))) ^ second;
}

// Half a block of text, and the same where it begins one byte and two bytes earlier.
struct QuotedText {
    ByteBlock bytes, one_before, two_before;

    // Of a text that begins no later than two bytes before.
    explicit QuotedText(const Byte* text)
        : bytes(load_block(text)), one_before(load_block(text - 1)),
          two_before(load_block(text - 2)) {}
    QuotedText(ByteBlock before, ByteBlock text)
        : bytes(text), one_before(earlier<1>(before, text)), two_before(earlier<2>(before, text)) {}
};

// What becomes of half a block of text: the second digit of an escape becomes what the escape
// means. Each "=" and the byte behind it, which is the first digit or a line feed, are to be left
// out.
struct DecodedHalf {
    ByteBlock bytes;
    ByteBlock digits; // of the text, as classified
    SignedByteBlock is_sign, is_behind_sign, is_second_digit;
    ByteBlock bad; // where it is 80 or more

    DecodedHalf(QuotedText text, ByteBlock digits_before)
        : digits(classify_digits(text.bytes)), is_sign(text.bytes == '='),
          is_behind_sign(text.one_before == '=') {
        const ByteBlock first_digits = earlier<1>(digits_before, digits);
        const ByteBlock second = as_unsigned(text.two_before == '=') & ~first_digits;
        is_second_digit = as_signed(second);
        bytes = is_second_digit < 0 ? combine_digits(first_digits, digits) : text.bytes;
        const ByteBlock is_line_feed = as_unsigned(text.bytes == '\n');
        const ByteBlock is_unprintable = more(text.bytes - ' ', 0x7F - ('~' - ' '));
        bad = (is_behind_sign ? digits & ~is_line_feed : is_unprintable) | (second & digits);
    }
};

// What becomes of a block of text.
class DecodedBlock {
public:
    DecodedBlock(const DecodedHalf& front, const DecodedHalf& back, LongMask sign_before)
        : front_(front.bytes), back_(back.bytes), digits_(back.digits),
          signs_(long_mask(front.is_sign, back.is_sign)),
          kept_(~((signs_ << 1 | sign_before) | signs_)), bad_(high_bits(front.bad | back.bad)) {}

    // The block that follows.
    DecodedBlock next(const Byte* text) const {
        const DecodedHalf front(QuotedText(text), digits_);
        const DecodedHalf back(QuotedText(text + kBlockSize), front.digits);
        return {front, back, signs_ >> (kDecodedBlock - 1)};
    }

    bool is_bad() const { return bad_ != 0; }

    // The length without an escape or a soft line break that may go on behind the end.
    size_t finished() const {
        constexpr LongMask kLast = LongMask{1} << (kDecodedBlock - 1);
        return kDecodedBlock - ((signs_ & kLast) != 0 ? 1 : (signs_ & kLast >> 1) != 0 ? 2 : 0);
    }

    // Writes no more bytes than the block has.
    Byte* put(Byte* out) const {
        out = put_kept_at_once(out, front_, static_cast<Mask>(kept_));
        return put_kept_at_once(out, back_, static_cast<Mask>(kept_ >> kBlockSize));
    }

    // Writes what becomes of the first bytes, and nothing else.
    Byte* put_front(Byte* out, size_t length) const {
        if (length == 0)
            return out;
        Byte bytes[kDecodedBlock];
        const LongMask kept = kept_ & first_long_bits(length);
        put_kept(put_kept(bytes, front_, static_cast<Mask>(kept)), back_,
                 static_cast<Mask>(kept >> kBlockSize));
        std::memcpy(out, bytes, count_marked(kept));
        return out + count_marked(kept);
    }

private:
    ByteBlock front_, back_;
    ByteBlock digits_; // of the second half
    LongMask signs_, kept_;
    Mask bad_;
};

// Decodes as much as can be of a block of text where something cannot, or of what is left of a
// text. What can be decoded may end before this block, in an escape that the block before drops.
[[gnu::noinline]] Converted decode_front(Source text, Byte* out, const ByteBlock& before) {
    const ByteBlock bytes = load_last_block(text, 0);
    const DecodedHalf front({before, bytes}, classify_digits(before));
    const DecodedHalf back({bytes, load_last_block(text, kBlockSize)}, front.digits);
    const DecodedBlock block(front, back, high_bits(before == '=') >> (kBlockSize - 1));

    const int found = __builtin_ctzll(long_mask(front.bad, back.bad));
    ptrdiff_t bad = found;
    if ((long_mask(front.is_behind_sign, back.is_behind_sign) >> found & 1) != 0)
        bad -= 1;
    else if ((long_mask(front.is_second_digit, back.is_second_digit) >> found & 1) != 0)
        bad -= 2;
    return {text.next + bad, bad < 0 ? out : block.put_front(out, static_cast<size_t>(bad))};
}

} // namespace

Byte* wide_encode_quoted(Source source, Byte* out) {
    for (; source.left() >= kQuotedBlock; source.next += kQuotedBlock)
        out = encode_block(out, load_block(source.next), kQuotedBlock);
    if (source.next != source.end)
        out = encode_block(out, load_front(source.next, source.left()), source.left());
    return out;
}

Converted wide_decode_quoted(Source source, Byte* out, bool is_last) {
    ByteBlock before = {};
    if (source.left() >= kDecodedBlock) {
        const ByteBlock bytes = load_block(source.next);
        const DecodedHalf front({before, bytes}, before);
        const DecodedHalf back(QuotedText(source.next + kBlockSize), front.digits);
        DecodedBlock block(front, back, 0);
        if (!block.is_bad()) {
            // A block is looked through while the one before is written: neither waits for the
            // other.
            for (;;) {
                source.next += kDecodedBlock;
                if (source.left() < kDecodedBlock)
                    break;
                const DecodedBlock next = block.next(source.next);
                if (next.is_bad())
                    break;
                out = block.put(out);
                block = next;
            }
            before = load_block(source.next - kBlockSize);
            // What may be read again is not written over.
            out = block.put_front(out, block.finished());
            if (source.left() < kDecodedBlock && !is_last)
                return {source.next - kDecodedBlock + block.finished(), out};
        }
    } else if (!is_last) {
        return {source.next, out};
    }
    return decode_front(source, out, before);
}

} // namespace zv

#endif
