#include "quoted_printable.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

#include "current_code_set.h"

namespace zv {
namespace {

constexpr char kDigits[] = "0123456789ABCDEF";

// The plain bytes reach up to 7E, without "=". The encoder escapes the space, the decoder copies
// it.
constexpr unsigned kFirstUnescaped = 0x21;
constexpr unsigned kFirstCopied = 0x20;

constexpr size_t kBlock = sizeof(std::uint64_t);
constexpr std::uint64_t kOnes = 0x0101010101010101;
constexpr std::uint64_t kHighBits = 0x80 * kOnes;

template <unsigned first>
constexpr bool is_plain(unsigned byte) {
    return in_range(byte, first, 0x7E) && byte != '=';
}

// Sets the high bit of each plain byte of a block, and no other bit.
template <unsigned first>
constexpr std::uint64_t find_plain(std::uint64_t block) {
    const std::uint64_t low = block & ~kHighBits;
    const std::uint64_t at_least_first = low + (0x80 - first) * kOnes;
    const std::uint64_t is_7f = low + kOnes;
    const std::uint64_t is_other = (low ^ '=' * kOnes) + 0x7F * kOnes;
    return at_least_first & is_other & ~is_7f & ~block & kHighBits;
}

// How many bytes at the front of a block are marked so.
constexpr size_t count_front(std::uint64_t marks) {
    const std::uint64_t others = ~marks & kHighBits;
    const int bits = std::endian::native == std::endian::little ? std::countr_zero(others)
                                                                : std::countl_zero(others);
    return static_cast<size_t>(bits) / 8;
}

// What a byte is written as, itself or "=" and two digits, and behind that, as the last of four
// bytes in memory, its length.
using Token = std::uint32_t;
constexpr Token make_token(unsigned byte) {
    using Bytes = std::array<unsigned char, sizeof(Token)>;
    if (is_plain<kFirstUnescaped>(byte))
        return std::bit_cast<Token>(Bytes{static_cast<Byte>(byte), 0, 0, 1});
    const auto digit = [](unsigned value) { return static_cast<Byte>(kDigits[value]); };
    return std::bit_cast<Token>(Bytes{'=', digit(byte >> 4), digit(byte & 15), 3});
}
constexpr size_t length_of(Token token) {
    return std::endian::native == std::endian::little ? token >> 24 : token & 0xFF;
}
constexpr std::array<Token, 256> make_tokens() {
    std::array<Token, 256> tokens{};
    for (unsigned byte = 0; byte < tokens.size(); ++byte)
        tokens[byte] = make_token(byte);
    return tokens;
}
constexpr std::array<Token, 256> kTokens = make_tokens();

// Writes all four bytes of a token, so that its length decides nothing but where the next begins.
inline char* put(char* out, Token token) {
    std::memcpy(out, &token, sizeof token);
    return out + length_of(token);
}

char* put_tokens(char* out, const Byte* bytes, size_t length) {
    const Byte* const end = bytes + length;
    if (has_avx2()) {
        const Converted converted = wide_encode_quoted({bytes, length}, as_bytes(out));
        bytes = converted.read;
        out = reinterpret_cast<char*>(converted.written);
    }
    // Blocks of one kind are common: words of ASCII, and code sets whose bytes all lie above 7E.
    for (; end - bytes >= static_cast<ptrdiff_t>(kBlock); bytes += kBlock) {
        std::uint64_t block;
        std::memcpy(&block, bytes, kBlock);
        const std::uint64_t plain = find_plain<kFirstUnescaped>(block);
        if (plain == kHighBits) {
            std::memcpy(out, &block, kBlock);
            out += kBlock;
        } else if (plain == 0) {
            for (size_t i = 0; i < kBlock; ++i)
                put(out + 3 * i, kTokens[bytes[i]]);
            out += 3 * kBlock;
        } else {
            Token tokens[kBlock];
            for (size_t i = 0; i < kBlock; ++i)
                tokens[i] = kTokens[bytes[i]];
            for (const Token token : tokens)
                out = put(out, token);
        }
    }
    while (bytes != end)
        out = put(out, kTokens[*bytes++]);
    return out;
}

} // namespace

// Moves the line that is not yet full to the front and encodes a chunk behind it.
void EncodedLines::encode_chunk() {
    const size_t length = std::min(source_.left(), kChunk);
    if (line_ != buffer_) {
        std::memmove(buffer_, line_, left());
        end_ = buffer_ + left();
        line_ = buffer_;
    }
    end_ = put_tokens(end_, source_.next, length);
    source_.next += length;
}

std::string_view EncodedLines::next() {
    if (left() < kFullLine && source_.left() != 0)
        encode_chunk();
    size_t length = left();
    // A token of three that begins before the full length ends one or two characters behind it.
    if (length >= kFullLine)
        length = kFullLine + (line_[kFullLine - 2] == '=' ? 1 : 0) +
                 (line_[kFullLine - 1] == '=' ? 2 : 0);
    line_ += length;
    return {line_ - length, length};
}

namespace {

constexpr std::array<signed char, 256> make_digit_values() {
    std::array<signed char, 256> values{};
    values.fill(-1);
    for (int value = 0; value < 16; ++value) {
        const auto digit = static_cast<unsigned char>(kDigits[value]);
        values[digit] = static_cast<signed char>(value);
        values[digit | 0x20] = static_cast<signed char>(value); // the small letter
    }
    return values;
}
constexpr std::array<signed char, 256> kDigitValues = make_digit_values();

constexpr bool is_line_end(Byte byte) {
    return byte == '\n' || byte == '\r';
}

// Decodes one line. Writes nothing ahead of what it has read, so that a text may be decoded where
// it stands.
class LineDecoder {
public:
    LineDecoder(const char* line, char* out) : next_(as_bytes(line)), out_(as_bytes(out)) {
        find_end();
    }

    void decode() {
        for (;;) {
            decode_blocks();
            copy_plain();
            if (*next_ == '=')
                decode_escapes();
            else if (*next_ == '\t')
                *out_++ = *next_++;
            else if (*next_ != '\0' && !is_line_end(*next_))
                ++next_; // such a byte has no place here
            else
                break;
        }
        *out_ = '\0';
    }

private:
    // The line ends at the first LF that is not part of a soft line break, as a rule: an escape of
    // one digit may take that too.
    void find_end() {
        for (end_ = next_;; ++end_) {
            end_ = as_bytes(strchrnul(reinterpret_cast<const char*>(end_), '\n'));
            if (*end_ == '\0' || end_ == next_ || end_[-1] != '=')
                break;
        }
    }

    void decode_blocks() {
        if (next_ > end_)
            find_end();
        if (!has_avx2())
            return;
        const Converted converted =
            wide_decode_quoted({next_, static_cast<size_t>(end_ - next_)}, out_);
        if (converted.read - next_ != converted.written - out_)
            ensure_initialised(); // there were digits
        next_ = converted.read;
        out_ = converted.written;
    }

    // Copies a run of plain bytes.
    void copy_plain() {
        while (end_ - next_ >= static_cast<ptrdiff_t>(kBlock)) {
            std::uint64_t block;
            std::memcpy(&block, next_, kBlock);
            const std::uint64_t plain = find_plain<kFirstCopied>(block);
            if (plain != kHighBits)
                return take(count_front(plain));
            std::memcpy(out_, &block, kBlock);
            next_ += kBlock;
            out_ += kBlock;
        }
        while (is_plain<kFirstCopied>(*next_))
            *out_++ = *next_++;
    }
    void take(size_t length) {
        copy_short(out_, next_, length);
        next_ += length;
        out_ += length;
    }

    void decode_escapes() {
        ensure_initialised(); // digits are compared as text is
        do
            decode_escape();
        while (*next_ == '=');
    }

    // Takes "=" and what belongs to it, up to the terminator at most.
    void decode_escape() {
        const Byte first = next_[1];
        const int high = kDigitValues[first];
        if (high < 0) {
            ++next_;
            if (is_line_end(first)) {
                ++next_;
            } else if (first != '\0') {
                out_ = put_pair(out_, '=', first);
                ++next_;
            }
            return;
        }
        const Byte second = next_[2];
        const int low = kDigitValues[second];
        next_ += 2;
        *out_++ = low < 0 ? first : static_cast<Byte>(16 * high + low);
        if (second != '\0') {
            ++next_;
            if (low < 0)
                *out_++ = second;
        }
    }

    const Byte* next_;
    const Byte* end_;
    Byte* out_;
};

} // namespace
} // namespace zv

char* convertToQuotedPrintable(char* dst, const char* src) {
    zv::EncodedLines lines(src);
    char* out = dst;
    for (std::string_view line = lines.next(); !line.empty(); line = lines.next()) {
        if (line.size() < zv::EncodedLines::kFullLine) {
            std::memcpy(out, line.data(), line.size());
            out += line.size();
            break;
        }
        // At a fixed length; the soft line break covers what is too much.
        std::memcpy(out, line.data(), zv::EncodedLines::kLongestLine);
        out += line.size();
        std::memcpy(out, "=\n\r", 3);
        out += 3;
    }
    *out = '\0';
    return dst;
}

char* convertFromQuotedPrintable(char* dst, const char* src) {
    zv::LineDecoder(src, dst).decode();
    return dst;
}
