// Compiled for each size of vectors: what processors run that have no wide ones may not be defined
// here.
#include "japanese_codes.h"
#include "japanese_kernels.h"
#include "japanese_pairs.h"
#include "japanese_runs.h"

namespace zv {
namespace {

// What may end a run of pairs: line ends, the escape and what is no JIS, from 80 on. 7F is none
// either, but the arithmetic is the same.
Mask could_end_pairs(ByteBlock bytes) {
    return range_mask(bytes, 0x80, 0x20);
}
Mask is_escape(ByteBlock bytes) {
    return byte_mask(bytes, kEscape);
}

// Decodes text with the escape sequences in use. Which of them follows is left to branches, which
// processors foresee, so that little waits for it. An escape sequence leaves nothing, so nothing is
// written ahead.
template <bool to_euc>
class JisDecoder : public RunWriter {
public:
    using RunWriter::RunWriter;

    // Takes a short text of nothing but pairs, between the escape sequences that belong to it.
    bool take_short_pairs() {
        const size_t length = source_.left() - 2 * kEscapeSize;
        if (mode_ != JisMode::single_byte || length - 1 >= 2 * kBlockSize || length % 2 != 0 ||
            !begins_pairs(load_number<std::uint32_t>(source_.next)) ||
            !ends_pairs(load_number<std::uint32_t>(source_.end - kEscapeSize - 1) >> 8) ||
            !convert_short_text<could_end_pairs, convert<JisMode::two_byte>>(
                Source(source_.next + kEscapeSize, length), out_))
            return false;
        source_.next = source_.end;
        out_ += length;
        return true;
    }

    // Looks up in windows where runs end, ahead of them, so that no run waits for the one before.
    void decode() {
        if (mode_ == JisMode::single_byte)
            begin_pairs(); // most texts begin so
        const Byte* start = run_ = source_.next;
        while (source_.next != source_.end) {
            const auto length = std::min(static_cast<size_t>(source_.end - start), kWindow);
            const Window bytes = load_window_up_to(start, length);
            // Behind a short text stand zeros.
            const LongMask behind = length < kWindow ? kAllOfWindow << length : 0;
            LongMask not_pairs = find_in(bytes, could_end_pairs);
            LongMask escapes = find_in(bytes, is_escape) | behind;
            if (start < source_.next) [[unlikely]] {
                not_pairs &= ~LongMask{} << (source_.next - start);
                escapes &= ~LongMask{} << (source_.next - start);
            }
            if (!take_runs(start, not_pairs, escapes))
                return;
            start += kWindow;
            if (start - source_.next >= static_cast<ptrdiff_t>(kWindow)) {
                if (mode_ == JisMode::two_byte)
                    take_windows<could_end_pairs, convert<JisMode::two_byte>>();
                else
                    take_windows<is_escape, unchanged>();
                start = source_.next;
            }
        }
    }

private:
    template <JisMode mode>
    static ByteBlock convert(ByteBlock bytes) {
        if (mode == JisMode::single_byte)
            return bytes;
        return to_euc ? bytes | 0x80 : ToShiftJisBytes<0>::convert_pairs(bytes);
    }

    // Takes a run up to its end. With a whole block of it before them, its last bytes go by a block
    // that begins there. A run after this one waits for its end alone.
    template <JisMode mode>
    void take_run(const Byte* end) {
        const Byte* from = source_.next;
        if (mode == JisMode::two_byte && (end - from) % 2 != 0) [[unlikely]]
            --end;
        for (; static_cast<size_t>(end - from) >= kBlockSize; from += kBlockSize) {
            store_block(out_, convert<mode>(load_block(from)));
            out_ += kBlockSize;
        }
        source_.next = end;
        const auto length = static_cast<size_t>(end - from);
        if (length == 0)
            return; // some processors take long to store nothing under a mask
        out_ += length;
        if (kBlockSize < 64 && from != run_)
            store_block(out_ - kBlockSize, convert<mode>(load_block(end - kBlockSize)));
        else
            store_front(out_ - length,
                        convert<mode>(load_up_to(from, static_cast<size_t>(source_.end - from))),
                        length);
    }

    // Takes the runs that end in a window. False at the end and at what is left to the rule.
    bool take_runs(const Byte* start, LongMask not_pairs, LongMask escapes) {
        for (;; run_ = source_.next) {
            if (mode_ == JisMode::two_byte) {
                if (not_pairs == 0)
                    return true;
                take_run<JisMode::two_byte>(start + count_before(not_pairs));
                if (!end_pairs(not_pairs, escapes))
                    return false;
            } else {
                if (source_.next == source_.end)
                    return false;
                if (escapes == 0)
                    return true;
                take_run<JisMode::single_byte>(start + count_before(escapes));
                if (!begin_pairs())
                    return false;
                not_pairs &= ~(escapes ^ (escapes - 1));
                escapes &= escapes - 1;
            }
        }
    }

    // Step over what ends a run and begins another one. False at anything else. What is stepped
    // over is no longer marked.
    bool begin_pairs() {
        if (!begins_pairs(load_word(source_.next, source_.left())))
            return false;
        mode_ = JisMode::two_byte;
        source_.next += kEscapeSize;
        return true;
    }
    bool end_pairs(LongMask& not_pairs, LongMask& escapes) {
        const std::uint64_t next = load_word(source_.next, source_.left());
        if (!ends_pairs(next))
            return false;
        not_pairs &= not_pairs - 1;
        escapes &= escapes - 1;
        const bool line_end = begins_with(next >> 24, "\n\x1B$B");
        if (line_end) {
            *out_++ = '\n';
            ++source_.next;
            not_pairs &= not_pairs - 1;
        }
        if (line_end || begins_pairs(next >> 24)) {
            source_.next += 2 * kEscapeSize;
            not_pairs &= not_pairs - 1;
            escapes &= escapes - 1;
        } else {
            source_.next += kEscapeSize;
            mode_ = JisMode::single_byte;
        }
        return true;
    }
    static bool begins_pairs(std::uint64_t next) { return begins_with(next, "\x1B$B"); }
    // ESC ( B and ESC ( J mean the same; between them lies one bit.
    static bool ends_pairs(std::uint64_t next) {
        return begins_with(next | ('B' ^ 'J') << 16, "\x1B(J");
    }
    // Up to four bytes.
    template <size_t size>
    static bool begins_with(std::uint64_t next, const char (&sequence)[size]) {
        std::uint32_t wanted = 0;
        for (size_t i = 0; i + 1 < size; ++i)
            wanted |= static_cast<std::uint32_t>(sequence[i]) << 8 * i;
        return static_cast<std::uint32_t>(next) << 8 * (5 - size) == wanted << 8 * (5 - size);
    }

    const Byte* run_ = nullptr; // where it begins
};

// The conversions of any text, out of line so that short ones need not prepare for them.

template <bool to_euc>
// NOLINTNEXTLINE(readability-non-const-parameter): a kernel has this type.
[[gnu::noinline]] Converted decode(Source source, Byte* out, JisMode& mode) {
    JisDecoder<to_euc> decoder(source, out, mode);
    decoder.decode();
    mode = decoder.mode();
    return decoder.converted();
}

template <bool to_euc>
Converted decode_text(Source source, Byte* out, JisMode& mode) {
    JisDecoder<to_euc> decoder(source, out, mode);
    return kBlockSize >= 32 && decoder.take_short_pairs() ? decoder.converted()
                                                          : decode<to_euc>(source, out, mode);
}

using Kernels = JapaneseKernels<kBlockSize>;

} // namespace

template <>
Converted Kernels::jis_to_shift_jis(Source source, Byte* out, JisMode& mode) {
    return convert_text<decode_text<false>, is_escape>(source, out, mode);
}

template <>
Converted Kernels::jis_to_euc(Source source, Byte* out, JisMode& mode) {
    return convert_text<decode_text<true>, is_escape>(source, out, mode);
}

} // namespace zv
