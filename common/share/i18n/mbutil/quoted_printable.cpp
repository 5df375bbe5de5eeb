#include "quoted_printable_kernels.h"

#include <array>
#include <bit>

#include "../jaconv/kernel_choice.h"
#include "current_code_set.h"
#include "mbutil.h"

namespace zv {
namespace {

// A kernel for the processor's vectors, or null where the rules serve.
template <class Type, class Kernel>
Type* wide(Kernel kernel) {
    return widest([=]<int Size> {
        if constexpr (Size < 32)
            return static_cast<Type*>(nullptr);
        else
            return static_cast<Type*>(kernel(QuotedPrintableKernels<Size>()));
    });
}

constexpr Byte kDigits[] = "0123456789ABCDEF";

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
constexpr auto kTokens = [] {
    using Bytes = std::array<Byte, sizeof(Token)>;
    std::array<Token, 256> tokens{};
    for (unsigned byte = 0; byte != tokens.size(); ++byte) {
        const Bytes plain{static_cast<Byte>(byte), 0, 0, 1};
        const Bytes escape{'=', kDigits[byte >> 4], kDigits[byte & 15], 3};
        tokens[byte] = std::bit_cast<Token>(is_plain<kFirstUnescaped>(byte) ? plain : escape);
    }
    return tokens;
}();

// Writes all of a token, so that its length decides nothing but where the next begins.
inline Byte* put(Byte* out, Token token) {
    std::memcpy(out, &token, sizeof token);
    return out + (std::endian::native == std::endian::little ? token >> 24 : token & 0xFF);
}

Byte* put_tokens(Byte* out, Source source) {
    // Blocks of one kind are common: words of ASCII, and code sets whose bytes all lie above 7E.
    for (; source.left() >= kBlock; source.next += kBlock) {
        std::uint64_t block;
        std::memcpy(&block, source.next, kBlock);
        const std::uint64_t plain = find_plain<kFirstUnescaped>(block);
        if (plain == kHighBits) {
            std::memcpy(out, &block, kBlock);
            out += kBlock;
        } else if (plain == 0) {
            for (size_t i = 0; i < kBlock; ++i)
                put(out + 3 * i, kTokens[source.next[i]]);
            out += 3 * kBlock;
        } else {
            for (size_t i = 0; i < kBlock; ++i)
                out = put(out, kTokens[source.next[i]]);
        }
    }
    while (source.next != source.end)
        out = put(out, kTokens[*source.next++]);
    return out;
}

// By the rules. Out of line, so that the size of the room is out of sight.
[[gnu::noinline]] Byte* encode(Source source, Byte* out, Byte* room) {
    return put_lines(source, out, room, put_tokens);
}

// What digits mean, and -1 for all else.
constexpr auto kDigitValues = [] {
    std::array<signed char, 256> values{};
    values.fill(-1);
    for (signed char value = 0; value < 16; ++value) {
        values[kDigits[value]] = value;
        values[kDigits[value] | 0x20] = value; // the small letter
    }
    return values;
}();

constexpr bool is_line_end(Byte byte) {
    return byte == '\n' || byte == '\r';
}

// Decodes one line. Writes nothing ahead of what it has read, so that a text may be decoded where
// it stands.
class LineDecoder {
public:
    LineDecoder(const char* line, char* out) : text_(as_bytes(line), 0), out_(as_bytes(out)) {}

    void decode() {
        for (;;) {
            decode_blocks();
            copy_plain();
            const Byte byte = *text_.next;
            if (byte == '=')
                decode_escapes();
            else if (byte == '\t')
                *out_++ = *text_.next++;
            else if (byte != '\0' && !is_line_end(byte))
                ++text_.next; // such a byte has no place here
            else
                break;
        }
        *out_ = '\0';
    }

private:
    // Makes sure that a block of text is known, or its end. The line may stand at the front of a
    // long text, so that is looked through in pieces that grow with what has been read.
    void look_ahead() {
        text_.end = std::max(text_.end, text_.next);
        if (text_.left() >= kQuotedBlock || is_at_end())
            return;
        text_.end += strnlen(reinterpret_cast<const char*>(text_.end), piece_);
        piece_ *= 2;
    }
    bool is_at_end() const { return *text_.end == '\0'; }

    void decode_blocks() {
        const Byte* const next = text_.next;
        const Byte* const out = out_;
        bool is_last;
        do {
            look_ahead();
            is_last = is_at_end();
            run_kernel(is_last);
        } while (!is_last && text_.left() < kQuotedBlock);
        if (text_.next - next != out_ - out)
            ensure_initialised(); // there were digits
    }

    // Text that is rarely decoded is left to the rules for a while, since a block that is given up
    // costs more than a byte by them.
    void run_kernel(bool is_last) {
        constexpr size_t kMostOfBlock = kQuotedBlock / 2;
        if (kernel_ == nullptr || text_.left() <= kMostOfBlock || text_.next < resume_)
            return;
        const Byte* const before = text_.next;
        const Converted converted = kernel_(text_, out_, is_last);
        text_.next = converted.read;
        out_ = converted.written;
        if (text_.next < before + kMostOfBlock / 2)
            resume_ = text_.next + kQuotedBlock;
    }

    // Copies a run of plain bytes.
    void copy_plain() {
        for (;;) {
            look_ahead();
            while (text_.left() >= kBlock) {
                std::uint64_t block;
                std::memcpy(&block, text_.next, kBlock);
                const std::uint64_t plain = find_plain<kFirstCopied>(block);
                if (plain != kHighBits)
                    return take(count_front(plain));
                std::memcpy(out_, &block, kBlock);
                text_.next += kBlock;
                out_ += kBlock;
            }
            if (is_at_end())
                break;
        }
        while (is_plain<kFirstCopied>(*text_.next))
            *out_++ = *text_.next++;
    }
    void take(size_t length) {
        copy_short(out_, text_.next, length);
        text_.next += length;
        out_ += length;
    }

    void decode_escapes() {
        ensure_initialised(); // digits are compared as text is
        do
            decode_escape();
        while (*text_.next == '=');
    }

    // Takes "=" and what belongs to it, up to the terminator at most.
    void decode_escape() {
        const Byte first = text_.next[1];
        const int high = kDigitValues[first];
        if (high < 0) {
            ++text_.next;
            if (is_line_end(first)) {
                ++text_.next;
            } else if (first != '\0') {
                out_ = put_pair(out_, '=', first);
                ++text_.next;
            }
            return;
        }
        const Byte second = text_.next[2];
        const int low = kDigitValues[second];
        text_.next += 2;
        *out_++ = low < 0 ? first : static_cast<Byte>(16 * high + low);
        if (second != '\0') {
            ++text_.next;
            if (low < 0)
                *out_++ = second;
        }
    }

    Source text_; // as far as it is known
    size_t piece_ = 2048;
    Byte* out_;
    using Kernel = Converted(Source, Byte*, bool);
    Kernel* const kernel_ = wide<Kernel>([](auto kernels) { return kernels.decode; });
    const Byte* resume_ = nullptr;
};

} // namespace
} // namespace zv

char* convertToQuotedPrintable(char* dst, const char* src) {
    using Encode = zv::Byte*(zv::Source, zv::Byte*, zv::Byte*);
    constexpr size_t kWorthwhile = 16;
    const zv::Source source(src);
    Encode* encode = nullptr;
    if (source.left() >= kWorthwhile)
        encode = zv::wide<Encode>([](auto kernels) { return kernels.encode; });
    if (encode == nullptr)
        encode = zv::encode;
    zv::Byte room[zv::kLinesRoom];
    *encode(source, zv::as_bytes(dst), room) = '\0';
    return dst;
}

char* convertFromQuotedPrintable(char* dst, const char* src) {
    zv::LineDecoder(src, dst).decode();
    return dst;
}
