// Compiled for processors with AVX2: nothing that others run may be compiled here.
#include "japanese_avx2.h"

#include "japanese_codes.h"
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

// Out of the way, so that a block is not prepared for it in memory.
[[gnu::noinline]] void store_last(Byte* to, ByteBlock block, size_t length) {
    store_front(to, block, length);
}

// Converts ASCII and two-byte characters in any mixture, without a branch for a character: in a run
// of bytes that could be lead bytes, leads and trails alternate from the run's first byte, or from
// its second where that is the trail byte of the block before.
template <class Bytes, size_t SafeLeft>
Converted convert_mixed(Source source, Byte* out) {
    ByteBlock before = {};
    SignedByteBlock was_lead = {};
    Mask carried = 0;
    while (source.left() > kBlockSize) {
        const ByteBlock bytes = load_block(source.next);
        const Mask could_lead = high_bits(Bytes::could_lead(bytes));
        if ((could_lead | carried) == 0 && high_bits(bytes) == 0) {
            store_block(out, bytes);
            source.next += kBlockSize;
            out += kBlockSize;
            continue;
        }
        const Mask leads = every_other(could_lead & ~carried);
        const SignedByteBlock is_lead = spread(leads);
        const SignedByteBlock is_trail =
            as_signed(earlier<1>(as_unsigned(was_lead), as_unsigned(is_lead)));
        const ByteBlock lead = Bytes::lead(bytes, load_block(source.next + 1));
        const ByteBlock trail = Bytes::trail(earlier<1>(before, bytes), bytes);
        const ByteBlock converted = choose(is_lead, lead, choose(is_trail, trail, bytes));
        const Mask not_plain = high_bits(choose(is_trail, ~as_unsigned(Bytes::could_trail(bytes)),
                                                bytes & ~as_unsigned(is_lead)));
        if (not_plain != 0) [[unlikely]] {
            size_t plain = count_before(not_plain);
            if (((leads << 1 | carried) >> plain & 1) != 0) { // with its lead byte
                if (plain == 0)
                    break;
                --plain;
            }
            if (source.left() >= SafeLeft)
                store_block(out, converted);
            else
                store_last(out, converted, plain);
            return {source.next + plain, out + plain};
        }
        store_block(out, converted);
        source.next += kBlockSize;
        out += kBlockSize;
        carried = leads >> (kBlockSize - 1);
        before = bytes;
        was_lead = is_lead;
    }
    // A character that reaches beyond the last block is left to the rule.
    return {source.next - carried, out - carried};
}

// The three bytes of an escape sequence as a number.
unsigned first_three(const Byte* text) {
    unsigned four;
    std::memcpy(&four, text, sizeof four);
    return four & 0xFFFFFF;
}
constexpr unsigned escape_sequence(unsigned second, unsigned third) {
    return kEscape | second << 8 | third << 16;
}

// Decodes JIS text with the escape sequences in use. Which of them follows is left to branches,
// which processors foresee, so that little waits for it.
template <class Pairs>
class JisDecoder {
public:
    JisDecoder(Byte* out, JisMode mode) : out_(out), mode_(mode) {}

    // Stops at what is not plain, or where less than a block is left.
    Source decode(Source source) {
        if (source.left() >= kWindowReach + kWindow)
            decode_windows(source);
        while (source.left() >= kReach &&
               (mode_ == JisMode::two_byte ? decode_pairs(source) : copy_single_bytes(source))) {
        }
        return source;
    }

    Byte* out() const { return out_; }
    JisMode mode() const { return mode_; }

private:
    static constexpr size_t kEscapeSequence = 3;
    // What stands between the pairs of two lines.
    static constexpr char kLineEnd[] = "\x1B(B\n\x1B$B";
    static constexpr size_t kLineEndLength = sizeof kLineEnd - 1;
    // A block and what may end its run behind it.
    static constexpr size_t kReach = kBlockSize + kLineEndLength;

    // The bytes of a window that end runs of pairs and of single bytes.
    static constexpr size_t kWindow = 2 * kBlockSize;
    // A window, and what may be read behind a run that ends in it.
    static constexpr size_t kWindowReach = kWindow + kReach;
    struct Window {
        const Byte* start;
        LongMask not_pairs, escapes;

        explicit Window(const Byte* text) : start(text) {
            const ByteBlock front = load_block(text);
            const ByteBlock back = load_block(text + kBlockSize);
            not_pairs = ~long_mask(Pairs::is_plain(front), Pairs::is_plain(back));
            // No byte of a pair is an escape.
            escapes = not_pairs != 0 ? long_mask(front == kEscape, back == kEscape) : 0;
        }
    };

    // Looks up in windows where runs end, ahead of them, so that no run waits for the one before.
    // Stops near the end of the source too.
    void decode_windows(Source& source) {
        Window window(source.next);
        bool goes_on;
        do {
            const bool pairs = mode_ == JisMode::two_byte;
            const Byte* const run = source.next;
            const Byte* from = run;
            LongMask ends = (pairs ? window.not_pairs : window.escapes) >> (from - window.start);
            while (ends == 0) {
                from = window.start + kWindow;
                take_blocks(source, from, pairs);
                if (static_cast<size_t>(source.end - from) < kWindowReach)
                    return;
                window = Window(from);
                ends = pairs ? window.not_pairs : window.escapes;
            }
            const Byte* const end = from + __builtin_ctzll(ends);
            take_blocks(source, end, pairs);
            const auto rest = static_cast<size_t>(end - source.next);
            if (!pairs) {
                put_single_bytes(source, rest);
                goes_on = end_single_bytes(source);
            } else {
                if (source.next != run)
                    end_run(source, rest / 2 * 2);
                else
                    put_short_run(source, rest / 2 * 2);
                goes_on = end_pairs(source);
            }
            if (source.next >= window.start + kWindow) {
                if (static_cast<size_t>(source.end - window.start) < kWindow + kWindowReach)
                    return;
                window = Window(window.start + kWindow);
            }
        } while (goes_on);
    }

    // Takes the whole blocks of a run that goes on to an end at least.
    void take_blocks(Source& source, const Byte* end, bool pairs) {
        while (static_cast<size_t>(end - source.next) >= kBlockSize) {
            const ByteBlock block = load_block(source.next);
            store_block(out_, pairs ? Pairs::convert(block) : block);
            out_ += kBlockSize;
            source.next += kBlockSize;
        }
    }

    // Decodes a run of pairs and steps over the escape sequence that ends it. False when it ends
    // otherwise, or near the end of the source.
    bool decode_pairs(Source& source) {
        const Byte* const run = source.next;
        Mask not_plain = high_bits(Pairs::not_plain(load_block(run)));
        while (not_plain == 0) {
            store_block(out_, Pairs::convert(load_block(source.next)));
            out_ += kBlockSize;
            source.next += kBlockSize;
            if (source.left() < kReach) {
                end_source(source);
                return false;
            }
            not_plain = high_bits(Pairs::not_plain(load_block(source.next)));
        }
        const size_t plain = count_before(not_plain) / 2 * 2;
        if (source.next != run)
            end_run(source, plain);
        else
            put_short_run(source, plain);
        return end_pairs(source);
    }

    // Steps over what ends a run of pairs and begins another run.
    bool end_pairs(Source& source) {
        if (std::memcmp(source.next, kLineEnd, kLineEndLength) == 0) {
            *out_++ = '\n';
            source.next += kLineEndLength;
            return true;
        }
        const unsigned escape = first_three(source.next);
        if (escape != escape_sequence('(', 'B') && escape != escape_sequence('(', 'J'))
            return false;
        mode_ = JisMode::single_byte;
        source.next += kEscapeSequence;
        end_single_bytes(source); // the next run is often empty
        return true;
    }

    void put_short_run(Source& source, size_t length) {
        store_front(out_, Pairs::convert(load_block(source.next)), length);
        out_ += length;
        source.next += length;
    }
    // Decodes the last bytes of a run, less than a block, by a block that begins in the one before.
    void end_run(Source& source, size_t length) {
        out_ += length;
        source.next += length;
        store_block(out_ - kBlockSize, Pairs::convert(load_block(source.next - kBlockSize)));
    }
    // The same where less than a block may be left of the source.
    void end_source(Source& source) {
        const size_t left = source.left() / 2 * 2;
        const size_t overlap = left < kBlockSize ? kBlockSize - left : 0;
        const Mask not_plain = high_bits(Pairs::not_plain(load_block(source.next - overlap)));
        const size_t plain = not_plain != 0 ? count_before(not_plain) / 2 * 2 : kBlockSize;
        end_run(source, plain - overlap);
    }

    // Copies a run of single bytes and steps over the escape sequence that ends it.
    bool copy_single_bytes(Source& source) {
        if (end_single_bytes(source))
            return true; // at the start of a text
        const ByteBlock block = load_block(source.next);
        const Mask escapes = high_bits(block == kEscape);
        if (escapes == 0) {
            store_block(out_, block);
            out_ += kBlockSize;
            source.next += kBlockSize;
            return true;
        }
        put_single_bytes(source, count_before(escapes));
        return end_single_bytes(source);
    }

    void put_single_bytes(Source& source, size_t length) {
        copy_short(out_, source.next, length);
        out_ += length;
        source.next += length;
    }
    bool end_single_bytes(Source& source) {
        if (first_three(source.next) != escape_sequence('$', 'B'))
            return false;
        mode_ = JisMode::two_byte;
        source.next += kEscapeSequence;
        return true;
    }

    Byte* out_;
    JisMode mode_;
};

template <class Pairs>
Converted decode_jis(JisDecoder<Pairs> decoder, Source source, JisMode& mode) {
    source = decoder.decode(source);
    mode = decoder.mode();
    return {source.next, decoder.out()};
}

} // namespace

Converted wide_shift_jis_to_euc(Source source, Byte* out) {
    return convert_mixed<ShiftJisToEucBytes, kSafeWhereNothingShrinks>(source, out);
}

Converted wide_euc_to_shift_jis(Source source, Byte* out) {
    return convert_mixed<EucToShiftJisBytes, kSafeFromEucToShiftJis>(source, out);
}

Converted wide_jis_to_shift_jis(Source source, Byte* out, JisMode& mode) {
    return decode_jis(JisDecoder<JisToShiftJisPairs>(out, mode), source, mode);
}

Converted wide_jis_to_euc(Source source, Byte* out, JisMode& mode) {
    return decode_jis(JisDecoder<JisToEucPairs>(out, mode), source, mode);
}

} // namespace zv
