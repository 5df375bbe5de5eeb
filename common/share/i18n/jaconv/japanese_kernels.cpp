// Compiled for each size of vectors: what processors run that have no wide ones may not be defined
// here.
#include "japanese_kernels.h"

#include <algorithm>
#include <functional>

#include "japanese_codes.h"
#include "japanese_pairs.h"

namespace zv {
namespace {

Mask is_single_shift(ByteBlock bytes) {
    return byte_mask(bytes, kSingleShift2);
}
Mask could_be_katakana(ByteBlock bytes) {
    return range_mask(bytes, 0xA1, 0xDF);
}
Mask not_ascii(ByteBlock bytes) {
    return high_bits(bytes);
}

// What stands where in a window, or in a block.
struct Marks {
    LongMask leads, trails; // of characters that are converted
    LongMask shifts;        // where EUC has a single shift
    LongMask malformed;
};

// Between Shift-JIS and EUC half-width katakana gain or lose the single shift before them.
struct ToEuc : ShiftJisToEucBytes {
    template <size_t Blocks>
    static Marks mark(const std::array<ByteBlock, Blocks>& bytes, LeadWalk& walk, LongMask) {
        walk.enter(find_in(bytes, could_lead));
        const LongMask leads = walk.leads(), trails = walk.behind_leads();
        const LongMask katakana = find_in(bytes, could_be_katakana) & ~trails;
        return {leads, trails, katakana,
                (trails & ~find_in(bytes, could_trail)) |
                    (find_in(bytes, not_ascii) & ~(leads | trails | katakana))};
    }
    template <auto put_kept>
    static Byte* put(Byte* out, const ByteBlock& bytes, Mask taken, Mask shifts) {
        const auto both = interleave(ByteBlock{} + kSingleShift2, bytes);
        const auto kept = interleave_bits(shifts & taken, taken);
        return put_kept(put_kept(out, both[0], kept[0]), both[1], kept[1]);
    }
};

struct ToShiftJis : EucToShiftJisBytes {
    template <size_t Blocks>
    static Marks mark(const std::array<ByteBlock, Blocks>& bytes, LeadWalk& walk,
                      LongMask shift_before) {
        const LongMask gr = find_in(bytes, could_lead);
        const LongMask single_shifts = find_in(bytes, is_single_shift);
        walk.enter(gr | single_shifts);
        const LongMask leads = walk.leads(), trails = walk.behind_leads();
        const LongMask shifts = leads & single_shifts;
        const LongMask katakana = places_behind(shifts, shift_before);
        return {leads & ~shifts, trails & ~katakana, shifts,
                (trails & ~gr) | (katakana & ~find_in(bytes, could_be_katakana)) |
                    (find_in(bytes, not_ascii) & ~(leads | trails))};
    }
    template <auto put_kept>
    static Byte* put(Byte* out, const ByteBlock& bytes, Mask taken, Mask shifts) {
        return put_kept(out, bytes, taken & ~shifts);
    }
};

template <class From>
Mask find_other_than_pairs(ByteBlock bytes) {
    return even_pairs(From::could_lead(bytes), From::could_trail(bytes)) ^ kAllMarked;
}

ByteBlock unchanged(ByteBlock bytes) {
    return bytes;
}

// Converts the windows at the front of a source in which nothing else is found. Out of line, so
// that shorter texts need not prepare for it.
template <auto find_other, auto convert>
[[gnu::noinline]] Converted convert_windows(Source source, Byte* out) {
    for (; source.left() >= kWindow; source.next += kWindow, out += kWindow) {
        const Window bytes = load_window(source.next);
        if (find_in(bytes, find_other) != 0)
            break;
        store_window(out, bytes, convert);
    }
    return {source.next, out};
}

// What follows converts ASCII, two-byte characters and half-width katakana in any mixture, without
// a branch for a character.

template <class Direction>
Window convert_window(const Byte* text, const Window& bytes, LongMask leads, LongMask trails) {
    Window converted;
#pragma GCC unroll 4
    for (size_t i = 0; i < kBlocks; ++i) {
        const Byte* const at = text + i * kBlockSize;
        converted[i] = choose(
            mask_of_block(leads, i), Direction::lead(bytes[i], load_block(at + 1)),
            mask_of_block(trails, i), Direction::trail(load_block(at - 1), bytes[i]), bytes[i]);
    }
    return converted;
}

// Converts windows of a source, of which a byte at least is converted and more than a window is
// left. Stops on a boundary, where a window may hold something malformed or the end is near.
template <class Direction>
[[gnu::noinline]] Converted convert_mixed_windows(Source source, Byte* out) {
    LeadWalk walk;
    LongMask shift_before = 0;
    for (; source.left() > kWindow; source.next += kWindow) {
        const Window bytes = load_window(source.next);
        const LongMask high = find_in(bytes, not_ascii);
        if ((high | walk.carried()) == 0) {
            store_window(out, bytes, std::identity());
            out += kWindow;
            continue;
        }
        const LeadWalk before = walk;
        const LongMask could_lead = find_in(bytes, Direction::could_lead);
        const LongMask could_trail = find_in(bytes, Direction::could_trail);
        walk.enter(could_lead);
        const LongMask leads = walk.leads(), trails = walk.behind_leads();
        const LongMask others = (trails & ~could_trail) | (high & ~(leads | trails));
        if ((others | shift_before) == 0) [[likely]] {
            store_window(out, convert_window<Direction>(source.next, bytes, leads, trails),
                         std::identity());
            out += kWindow;
            continue;
        }
        // With katakana, far from the end.
        walk = before;
        const Marks marks = Direction::mark(bytes, walk, shift_before);
        if (marks.malformed != 0 || source.left() < 2 * kWindow + 2 * kOvershoot) {
            walk = before;
            break;
        }
        const Window converted =
            convert_window<Direction>(source.next, bytes, marks.leads, marks.trails);
#pragma GCC unroll 4
        for (size_t i = 0; i < kBlocks; ++i)
            out = Direction::template put<put_kept>(out, converted[i], kAllMarked,
                                                    mask_of_block(marks.shifts, i));
        shift_before = marks.shifts >> (kWindow - 1);
    }
    // A character that reaches into what follows is left.
    return {source.next - walk.carried(), out - (walk.carried() & ~shift_before)};
}

template <class Direction>
ZVUTIL_WIDEST_INLINE Byte* put_front(Byte* out, const ByteBlock& converted, size_t length,
                                     Mask shifts) {
    const auto taken = static_cast<Mask>(first_long_bits(length));
    return Direction::template put<put_kept_alone>(out, converted, taken, shifts);
}

// Converts up to a block from a boundary on; nothing of what is left to the rule.
template <class Direction>
inline Converted convert_block(Source source, Byte* out) {
    const size_t length = std::min(source.left(), kBlockSize);
    const ByteBlock bytes = load_up_to(source.next, length);
    const LongMask all = first_long_bits(length);
    ByteBlock converted = bytes;
    size_t taken = length;
    const bool is_ascii = not_ascii(bytes) == 0;
    if (!is_ascii && (find_other_than_pairs<Direction>(bytes) & all) == 0) {
        converted = Direction::convert_pairs(bytes);
    } else if (!is_ascii) {
        LeadWalk walk;
        const Marks marks = Direction::mark(std::array{bytes}, walk, 0);
        converted = choose(
            static_cast<Mask>(marks.leads), Direction::lead(bytes, moved_back(bytes)),
            static_cast<Mask>(marks.trails), Direction::trail(moved_on(bytes), bytes), bytes);
        const LongMask malformed = marks.malformed & all;
        if (malformed != 0) [[unlikely]] {
            taken = count_before(malformed);
            taken -= static_cast<size_t>(walk.behind_leads() >> taken & 1);
        } else {
            taken -= static_cast<size_t>(walk.leads() >> (length - 1) & 1);
        }
        if (taken == 0)
            return {source.next, out};
        if (marks.shifts != 0)
            return {source.next + taken,
                    put_front<Direction>(out, converted, taken, static_cast<Mask>(marks.shifts))};
    }
    // What a lead byte at the end becomes has room: something will come of it.
    if (length == kBlockSize && taken + 1 >= kBlockSize)
        store_block(out, converted);
    else
        store_front(out, converted, taken);
    return {source.next + taken, out + taken};
}

// Where a block is the whole of most texts, the constants of a loop would cost too much.
template <class Direction>
[[gnu::noinline]] Converted convert_block_apart(Source source, Byte* out) {
    return convert_block<Direction>(source, out);
}

template <class Direction>
ZVUTIL_WIDEST_INLINE Converted convert_mixed(Source source, Byte* out) {
    while (source.next != source.end) {
        Converted converted = kBlockSize == 64 ? convert_block_apart<Direction>(source, out)
                                               : convert_block<Direction>(source, out);
        if (converted.read == source.next)
            break;
        source.next = converted.read;
        out = converted.written;
        if (source.left() <= kWindow)
            continue;
        if (kWindow == 64)
            converted = convert_mixed_windows<Direction>(source, out);
        else if (*source.next < 0x80)
            converted = convert_windows<not_ascii, unchanged>(source, out);
        source.next = converted.read;
        out = converted.written;
    }
    return {source.next, out};
}

// Converts a text of up to 64 bytes in which nothing else is found by its first and its last block,
// which is the same. False at others.
template <auto find_other, auto convert>
ZVUTIL_WIDEST_INLINE bool convert_short_text(Source source, Byte* out) {
    const size_t length = source.left();
    if (length > std::min(2 * kBlockSize, size_t{64}))
        return false;
    if (kBlockSize < 64 && length >= kBlockSize) {
        const ByteBlock first = load_block(source.next), last = load_block(source.end - kBlockSize);
        if ((find_other(first) | find_other(last)) != 0)
            return false;
        store_block(out, convert(first));
        store_block(out + length - kBlockSize, convert(last));
    } else {
        const ByteBlock bytes = load_front(source.next, length);
        const Mask found = find_other(bytes);
        if (found != 0 && count_before(found) < length)
            return false;
        store_front(out, convert(bytes), length);
    }
    return true;
}

// Reads text that a decoder or an encoder of JIS takes run by run, and writes it.
class RunWriter {
public:
    RunWriter(Source source, Byte* out, JisMode mode) : source_(source), out_(out), mode_(mode) {}

    Converted converted() const { return {source_.next, out_}; }
    JisMode mode() const { return mode_; }

protected:
    static constexpr size_t kEscapeSize = 3;

    // Takes windows in which a run goes on.
    template <auto find_other, auto convert>
    void take_windows() {
        const Converted front = convert_windows<find_other, convert>(source_, out_);
        source_.next = front.read;
        out_ = front.written;
    }

    Source source_;
    Byte* out_;
    JisMode mode_;
};

// What an encoder takes.
struct FromShiftJis : ShiftJisToEucBytes {
    static ByteBlock to_jis(ByteBlock bytes) { return convert_pairs(bytes) & 0x7F; }
    static constexpr auto put_katakana = put_shift_jis_katakana_as_jis;
};
struct FromEuc : EucToShiftJisBytes {
    static ByteBlock to_jis(ByteBlock bytes) { return bytes & 0x7F; }
    static constexpr auto put_katakana = put_euc_katakana_as_jis;
};

// Encodes ASCII, two-byte characters and half-width katakana. JIS text is never shorter, so a whole
// block may be stored wherever a whole block of the source is left.
template <class From>
class JisEncoder : public RunWriter {
public:
    using RunWriter::RunWriter;

    // Stops at what is left to the rule.
    void encode() {
        if (kBlockSize >= 32 && take_short_pairs())
            return;
        LeadWalk walk;
        for (const Byte* start = source_.next; start != source_.end;) {
            const auto length = std::min(static_cast<size_t>(source_.end - start), kWindow);
            const Window bytes = load_window_up_to(start, length);
            const LongMask high = find_in(bytes, not_ascii);
            LongMask pairs = 0, others = 0;
            if ((high | walk.carried()) != 0) {
                const LongMask could_lead = find_in(bytes, From::could_lead);
                const LongMask could_trail = find_in(bytes, From::could_trail);
                pairs = even_pairs(could_lead, could_trail);
                if (walk.carried() != 0 || pairs != first_long_bits(length)) {
                    walk.enter(could_lead);
                    pairs = walk.leads() | walk.behind_leads();
                    // Behind a short text stand zeros, which are no trail bytes.
                    others = (walk.behind_leads() & ~could_trail) | (high & ~pairs);
                }
            }
            const Byte* const stop = start + (others != 0 ? count_before(others) : length);
            const bool is_end = others != 0 || stop == source_.end;
            LongMask ends = (pairs ^ places_behind(pairs, in_pairs_)) & ((others & -others) - 1);
            // A run that goes on is taken with what follows, or else by windows.
            const bool is_long =
                ends == 0 && stop - source_.next >= static_cast<ptrdiff_t>(kWindow);
            while (ends != 0 || is_end || is_long) {
                take_run(ends != 0 ? start + count_before(ends) : stop);
                if (ends == 0)
                    break;
                in_pairs_ = !in_pairs_;
                ends &= ends - 1;
            }
            if (is_end) {
                if (!take_katakana())
                    return;
            } else if (!is_long) {
                start = stop;
                continue;
            } else if (in_pairs_) {
                take_windows<find_other_than_pairs<From>, From::to_jis>();
            } else {
                take_windows<not_ascii, unchanged>();
            }
            start = source_.next;
            walk = LeadWalk();
        }
    }

private:
    // Takes a short text of nothing but pairs.
    bool take_short_pairs() {
        const size_t length = source_.left();
        const size_t escape = mode_ == JisMode::two_byte ? 0 : kEscapeSize;
        if (length == 0 || length % 2 != 0 ||
            !convert_short_text<find_other_than_pairs<From>, From::to_jis>(source_, out_ + escape))
            return false;
        switch_to(JisMode::two_byte);
        source_.next = source_.end;
        out_ += length;
        return true;
    }

    // Takes the run up to an end. A character that reaches beyond the end is left.
    void take_run(const Byte* end) {
        const Byte* from = source_.next;
        if (in_pairs_ && (end - from) % 2 != 0) [[unlikely]]
            --end;
        source_.next = end;
        if (from == end)
            return;
        if (in_pairs_) {
            switch_to(JisMode::two_byte);
            put_run(from, end, From::to_jis);
        } else {
            switch_to(JisMode::single_byte);
            put_run(from, end, std::identity());
        }
    }
    template <class Convert>
    void put_run(const Byte* from, const Byte* end, Convert convert) {
        for (size_t taken; from != end; from += taken) {
            const auto left = static_cast<size_t>(source_.end - from);
            taken = std::min(static_cast<size_t>(end - from), kBlockSize);
            const ByteBlock converted = convert(load_up_to(from, left));
            if (left >= kBlockSize)
                store_block(out_, converted);
            else
                store_front(out_, converted, taken);
            out_ += taken;
        }
    }

    // Takes half-width katakana, as the rule does. False where there are none.
    bool take_katakana() {
        const size_t escape = mode_ == JisMode::two_byte ? 0 : kEscapeSize;
        const Converted converted = From::put_katakana(source_, out_ + escape);
        if (converted.read == source_.next)
            return false;
        switch_to(JisMode::two_byte);
        source_.next = converted.read;
        out_ = converted.written;
        in_pairs_ = true;
        return true;
    }

    void switch_to(JisMode mode) {
        if (mode_ == mode)
            return;
        std::memcpy(out_, mode == JisMode::two_byte ? "\x1B$B" : "\x1B(J", kEscapeSize);
        out_ += kEscapeSize;
        mode_ = mode;
    }

    bool in_pairs_ = false; // the run that is not taken yet
};

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

template <class From>
// NOLINTNEXTLINE(readability-non-const-parameter): a kernel has this type.
[[gnu::noinline]] Converted encode(Source source, Byte* out, JisMode& mode) {
    JisEncoder<From> encoder(source, out, mode);
    encoder.encode();
    mode = encoder.mode();
    return encoder.converted();
}

template <bool to_euc>
// NOLINTNEXTLINE(readability-non-const-parameter): a kernel has this type.
[[gnu::noinline]] Converted decode(Source source, Byte* out, JisMode& mode) {
    JisDecoder<to_euc> decoder(source, out, mode);
    decoder.decode();
    mode = decoder.mode();
    return decoder.converted();
}

// Converts by a function that takes the same, unless the text is short and nothing of it changes.
template <auto convert, auto changes, class... State>
Converted convert_text(Source source, Byte* out, State&... state) {
    if (kBlockSize > 16 && ((state == JisMode::single_byte) && ...) &&
        convert_short_text<changes, unchanged>(source, out)) [[likely]]
        return {source.end, out + source.left()};
    return convert(source, out, state...);
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
Converted Kernels::shift_jis_to_euc(Source source, Byte* out) {
    return convert_text<convert_mixed<ToEuc>, not_ascii>(source, out);
}

template <>
Converted Kernels::euc_to_shift_jis(Source source, Byte* out) {
    return convert_text<convert_mixed<ToShiftJis>, not_ascii>(source, out);
}

template <>
Converted Kernels::shift_jis_to_jis(Source source, Byte* out, JisMode& mode) {
    return convert_text<encode<FromShiftJis>, not_ascii>(source, out, mode);
}

template <>
Converted Kernels::euc_to_jis(Source source, Byte* out, JisMode& mode) {
    return convert_text<encode<FromEuc>, not_ascii>(source, out, mode);
}

template <>
Converted Kernels::jis_to_shift_jis(Source source, Byte* out, JisMode& mode) {
    return convert_text<decode_text<false>, is_escape>(source, out, mode);
}

template <>
Converted Kernels::jis_to_euc(Source source, Byte* out, JisMode& mode) {
    return convert_text<decode_text<true>, is_escape>(source, out, mode);
}

template <>
size_t Kernels::count_shift_jis_katakana(Source source) {
    size_t count = 0;
    LeadWalk walk;
    for (; source.next < source.end; source.next += kWindow) {
        const Window bytes = load_window_up_to(source.next, source.left());
        walk.enter(find_in(bytes, ShiftJisToEucBytes::could_lead));
        count += count_marked(find_in(bytes, could_be_katakana) & ~walk.behind_leads());
    }
    return count;
}

template <>
size_t Kernels::count_euc_katakana(Source source) {
    size_t count = 0;
    LeadWalk walk;
    LongMask shift_before = 0;
    for (; source.next < source.end; source.next += kWindow) {
        const Window bytes = load_window_up_to(source.next, source.left());
        const LongMask single_shifts = find_in(bytes, is_single_shift);
        walk.enter(find_in(bytes, EucToShiftJisBytes::could_lead) | single_shifts);
        const LongMask shifts = walk.leads() & single_shifts;
        if ((shifts | shift_before) != 0)
            count += count_marked(find_in(bytes, could_be_katakana) &
                                  places_behind(shifts, shift_before));
        shift_before = shifts >> (kWindow - 1);
    }
    return count;
}

} // namespace zv
