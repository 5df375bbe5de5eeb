// Compiled for each size of vectors: what processors run that have no wide ones may not be defined
// here.
#include "japanese_kernels.h"

#include <algorithm>
#include <functional>

#include "japanese_codes.h"
#include "japanese_pairs.h"
#include "katakana.h"

namespace zv {

// The JIS codes of the full-width characters of the half-width katakana; data alone, which all
// sizes may share.
inline constexpr auto kKatakanaInJis = [] {
    std::array<BytePair, std::size(kFullWidth)> codes{};
    BytePair* next = codes.data();
    for (const BytePair wide : kFullWidth) {
        const Code code = jis_from_shift_jis(wide.first, wide.second);
        *next++ = {static_cast<Byte>(code.first), static_cast<Byte>(code.second)};
    }
    return codes;
}();

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

ByteBlock unchanged(ByteBlock bytes) {
    return bytes;
}

template <class From>
Mask find_other_than_pairs(ByteBlock bytes) {
    return even_pairs(From::could_lead(bytes), From::could_trail(bytes)) ^ kAllMarked;
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

constexpr size_t kEscapeSize = 3;

Byte* switch_to(JisMode wanted, Byte* out, JisMode& mode) {
    if (mode == wanted)
        return out;
    std::memcpy(out, wanted == JisMode::two_byte ? "\x1B$B" : "\x1B(J", kEscapeSize);
    mode = wanted;
    return out + kEscapeSize;
}

// What stands where in a window, or in a block.
struct Marks {
    LongMask leads, trails; // of two-byte characters
    LongMask shifts;        // where EUC has a single shift, or JIS an escape sequence
    LongMask others;        // what is not converted; where a trail byte should be, that byte
};

template <class From, size_t Blocks>
inline Marks mark_pairs(const std::array<ByteBlock, Blocks>& bytes, LeadWalk& walk) {
    walk.enter(find_in(bytes, From::could_lead));
    const LongMask leads = walk.leads(), trails = walk.behind_leads();
    return {leads, trails, 0,
            (trails & ~find_in(bytes, From::could_trail)) |
                (find_in(bytes, not_ascii) & ~(leads | trails))};
}

// The directions: what they mark beside pairs, how they write what they marked, and a character of
// half-width katakana alone. `before` is what stands in the place before the first: a single shift,
// or into JIS a pair.

// Half-width katakana gain or lose the single shift before them.
struct ToEuc : ShiftJisToEucBytes {
    static constexpr bool kIntoJis = false;
    template <size_t Blocks>
    static Marks mark(const std::array<ByteBlock, Blocks>& bytes, LeadWalk& walk, LongMask) {
        Marks marks = mark_pairs<ToEuc>(bytes, walk);
        marks.shifts = find_in(bytes, could_be_katakana) & ~marks.trails;
        marks.others &= ~marks.shifts;
        return marks;
    }
    template <auto put_kept>
    static Byte* put(Byte* out, const ByteBlock& bytes, Mask taken, Mask shifts, JisMode&) {
        const auto both = interleave(ByteBlock{} + kSingleShift2, bytes);
        const auto kept = interleave_bits(shifts & taken, taken);
        return put_kept(put_kept(out, both[0], kept[0]), both[1], kept[1]);
    }
    static Byte* put_katakana(Byte* out, Byte katakana) {
        return put_pair(out, kSingleShift2, katakana);
    }
};

struct ToShiftJis : EucToShiftJisBytes {
    static constexpr bool kIntoJis = false;
    template <size_t Blocks>
    static Marks mark(const std::array<ByteBlock, Blocks>& bytes, LeadWalk& walk, LongMask before) {
        const LongMask gr = find_in(bytes, could_lead);
        const LongMask single_shifts = find_in(bytes, is_single_shift);
        walk.enter(gr | single_shifts);
        const LongMask leads = walk.leads(), trails = walk.behind_leads();
        const LongMask shifts = leads & single_shifts;
        const LongMask katakana = places_behind(shifts, before);
        return {leads & ~shifts, trails & ~katakana, shifts,
                (trails & ~gr) | (katakana & ~find_in(bytes, could_be_katakana)) |
                    (find_in(bytes, not_ascii) & ~(leads | trails))};
    }
    template <auto put_kept>
    static Byte* put(Byte* out, const ByteBlock& bytes, Mask taken, Mask shifts, JisMode&) {
        return put_kept(out, bytes, taken & ~shifts);
    }
    static Byte* put_katakana(Byte* out, Byte katakana) {
        *out = katakana;
        return out + 1;
    }
};

// Half-width katakana are left to others, since there are few; they become full-width.
template <class From>
struct IntoJis : From {
    static constexpr bool kIntoJis = true;
    template <size_t Blocks>
    static Marks mark(const std::array<ByteBlock, Blocks>& bytes, LeadWalk& walk, LongMask before) {
        Marks marks = mark_pairs<From>(bytes, walk);
        const LongMask pairs = marks.leads | marks.trails;
        marks.shifts = pairs ^ places_behind(pairs, before);
        return marks;
    }
    // Stores all that is left anew behind each escape sequence.
    template <auto>
    static Byte* put(Byte* out, const ByteBlock& bytes, Mask taken, Mask shifts, JisMode& mode) {
        const auto put_escape = [&](size_t at) {
            const bool in_pairs = mode == JisMode::two_byte;
            out =
                switch_to(in_pairs ? JisMode::single_byte : JisMode::two_byte, out + at, mode) - at;
        };
        if ((shifts & 1) != 0)
            put_escape(0);
        store_marked(out, bytes, taken);
        Mask left = shifts & taken & ~Mask{1};
        for (; left != 0; left &= left - 1) {
            put_escape(count_before(left));
            store_marked(out, bytes, taken & -(left & -left));
        }
        return out + count_marked(taken);
    }
    static Byte* put_katakana(Byte* out, Byte katakana) {
        const BytePair code = kKatakanaInJis[katakana - 0xA1];
        return put_pair(out, code.first, code.second);
    }
};
struct ShiftJisToJisBytes : ShiftJisToEucBytes {
    static ByteBlock convert_pairs(ByteBlock bytes) {
        return ShiftJisToEucBytes::convert_pairs(bytes) & 0x7F;
    }
    static ByteBlock lead(ByteBlock bytes, ByteBlock next) {
        return ShiftJisToEucBytes::lead(bytes, next) & 0x7F;
    }
    static ByteBlock trail(ByteBlock before, ByteBlock bytes) {
        return ShiftJisToEucBytes::trail(before, bytes) & 0x7F;
    }
};
struct EucToJisBytes : EucToShiftJisBytes {
    static ByteBlock convert_pairs(ByteBlock bytes) { return bytes & 0x7F; }
    static ByteBlock lead(ByteBlock bytes, ByteBlock) { return bytes & 0x7F; }
    static ByteBlock trail(ByteBlock, ByteBlock bytes) { return bytes & 0x7F; }
};

// Reads text run by run, each of one kind, and writes it.
class RunWriter {
public:
    RunWriter(Source source, Byte* out, JisMode mode) : source_(source), out_(out), mode_(mode) {}

    Converted converted() const { return {source_.next, out_}; }
    JisMode mode() const { return mode_; }

protected:
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

// Takes runs of ASCII, of pairs and of half-width katakana, which serves narrow vectors best.
template <class Direction>
class RunConverter : public RunWriter {
public:
    using RunWriter::RunWriter;

    // Stops at what is left to the rule.
    void convert() {
        while (source_.next != source_.end && take_run()) {
        }
    }

    // False where there are none.
    bool take_katakana() {
        constexpr size_t kSize = Direction::kKatakanaSize;
        const Byte* const start = source_.next;
        for (; source_.left() >= kSize && (kSize == 1 || *source_.next == kSingleShift2) &&
               in_range(source_.next[kSize - 1], 0xA1, 0xDF);
             source_.next += kSize) {
            switch_to(JisMode::two_byte);
            out_ = Direction::put_katakana(out_, source_.next[kSize - 1]);
        }
        return source_.next != start;
    }

private:
    // With so much left of the source a whole block may be stored, as half-width katakana of EUC
    // alone become shorter, in Shift-JIS by half.
    static constexpr size_t kSafe =
        Direction::kIntoJis || Direction::kKatakanaSize == 1 ? kBlockSize : 2 * kBlockSize;

    bool take_run() {
        if (*source_.next >= 0x80) {
            if (source_.left() < 2 || !Direction::is_pair(source_.next[0], source_.next[1]))
                return take_katakana();
            switch_to(JisMode::two_byte);
            take<find_other_than_pairs<Direction>, Direction::convert_pairs>();
            return true;
        }
        switch_to(JisMode::single_byte);
        // What follows a line end need not wait for a block.
        if (source_.left() > 1 && source_.next[1] >= 0x80)
            *out_++ = *source_.next++;
        else
            take<not_ascii, unchanged>();
        return true;
    }

    template <auto find_other, auto convert>
    void take() {
        while (source_.next != source_.end) {
            const size_t left = source_.left();
            const ByteBlock bytes = load_up_to(source_.next, left);
            const ByteBlock converted = convert(bytes);
            const Mask other = find_other(bytes);
            if (other == 0 && left >= kSafe) [[likely]] {
                store_block(out_, converted);
                step(kBlockSize);
                if constexpr (convert == unchanged)
                    take_windows<find_other, convert>(); // ASCII is often long
                continue;
            }
            const size_t plain = other != 0 ? count_before(other) : kBlockSize;
            const size_t taken = std::min(plain, left);
            if (left >= kSafe) [[likely]]
                store_block(out_, converted);
            else
                store_front(out_, converted, taken);
            step(taken);
            if (plain < kBlockSize)
                return;
        }
    }

    void step(size_t length) {
        source_.next += length;
        out_ += length;
    }

    void switch_to(JisMode mode) {
        if (Direction::kIntoJis)
            out_ = zv::switch_to(mode, out_, mode_);
    }
};

// What follows converts any mixture by windows, without a branch for a character.

JisMode mode_of() {
    return JisMode::single_byte;
}
JisMode mode_of(JisMode mode) {
    return mode;
}

template <class Direction>
inline Window convert_window(const Byte* text, const Window& bytes, const Marks& marks) {
    Window converted;
#pragma GCC unroll 4
    for (size_t i = 0; i < kBlocks; ++i) {
        const Byte* const at = text + i * kBlockSize;
        converted[i] =
            choose(mask_of_block(marks.leads, i), Direction::lead(bytes[i], load_block(at + 1)),
                   mask_of_block(marks.trails, i), Direction::trail(load_block(at - 1), bytes[i]),
                   bytes[i]);
    }
    return converted;
}

template <class Direction, auto put_kept>
inline Byte* put_window(Byte* out, const Window& converted, LongMask shifts, JisMode& mode) {
#pragma GCC unroll 4
    for (size_t i = 0; i < kBlocks; ++i)
        out = Direction::template put<put_kept>(out, converted[i], kAllMarked,
                                                mask_of_block(shifts, i), mode);
    return out;
}

// Converts windows of ASCII and pairs, of which a byte at least is converted and more than a window
// is left. Stops on a boundary, where a window may hold something else or the end is near.
template <class Direction, class... Mode>
[[gnu::noinline]] Converted convert_windows_of_pairs(Source source, Byte* out, Mode&... last_mode) {
    JisMode mode = mode_of(last_mode...);
    LeadWalk walk;
    LongMask shifts = 0;
    const auto go_on = [&](const Converted& front) {
        source.next = front.read;
        out = front.written;
    };
    while (source.left() > kWindow) {
        const Window bytes = load_window(source.next);
        const bool in_pairs = mode == JisMode::two_byte;
        if (walk.carried() == 0 && !in_pairs && find_in(bytes, not_ascii) == 0) {
            go_on(convert_windows<not_ascii, unchanged>(source, out));
            continue;
        }
        if (walk.carried() == 0 && in_pairs == Direction::kIntoJis &&
            find_in(bytes, find_other_than_pairs<Direction>) == 0) [[likely]] {
            if (Direction::kIntoJis) {
                go_on(convert_windows<find_other_than_pairs<Direction>, Direction::convert_pairs>(
                    source, out));
                continue;
            }
            store_window(out, bytes, Direction::convert_pairs);
            go_on({source.next + kWindow, out + kWindow});
            continue;
        }
        const LeadWalk before = walk;
        const Marks marks = Direction::kIntoJis ? Direction::mark(bytes, walk, in_pairs)
                                                : mark_pairs<Direction>(bytes, walk);
        if (marks.others != 0) {
            walk = before;
            break;
        }
        const Window converted = convert_window<Direction>(source.next, bytes, marks);
        source.next += kWindow;
        shifts = marks.shifts;
        if (shifts != 0) {
            out = put_window<Direction, put_kept_alone>(out, converted, shifts, mode);
        } else {
            store_window(out, converted, std::identity());
            out += kWindow;
        }
    }
    // A character that reaches into what follows is left.
    const LongMask cut = walk.carried();
    if ((shifts >> (kWindow - 1) & cut) != 0) {
        out -= kEscapeSize;
        mode = JisMode::single_byte;
    }
    ((last_mode = mode), ...);
    return {source.next - cut, out - cut};
}

// The same with half-width katakana in each window, far from the end.
template <class Direction>
[[gnu::noinline]] Converted convert_windows_with_katakana(Source source, Byte* out) {
    LeadWalk walk, before;
    Marks marks{};
    LongMask shift_before = 0;
    JisMode none = JisMode::single_byte;
    do {
        if (source.left() < 2 * kWindow + 2 * kOvershoot)
            break;
        const Window bytes = load_window(source.next);
        before = walk;
        marks = Direction::mark(bytes, walk, shift_before);
        if (marks.others != 0) {
            walk = before;
            break;
        }
        const Window converted = convert_window<Direction>(source.next, bytes, marks);
        out = put_window<Direction, put_kept>(out, converted, marks.shifts, none);
        shift_before = marks.shifts >> (kWindow - 1);
        source.next += kWindow;
    } while (marks.shifts != 0);
    return {source.next - walk.carried(), out - (walk.carried() & ~shift_before)};
}

// Where short texts of nothing but pairs are taken before all else, and not by convert_block().
template <class Direction>
constexpr bool kTakesShortPairs = kBlockSize == 32 || (kBlockSize == 64 && Direction::kIntoJis);

// Converts up to a block from a boundary on; nothing of what is left to the rule. Out of line,
// since the constants of a loop would cost too much where a block is the whole of most texts.
template <class Direction, class... Mode>
[[gnu::noinline]] Converted convert_block(Source source, Byte* out, Mode&... last_mode) {
    JisMode mode = mode_of(last_mode...);
    const bool in_pairs = mode == JisMode::two_byte;
    const size_t length = std::min(source.left(), kBlockSize);
    const ByteBlock bytes = load_up_to(source.next, length);
    const LongMask behind = ~first_long_bits(length);
    ByteBlock converted = bytes;
    size_t taken = length;
    Marks marks{};
    if (not_ascii(bytes) == 0) {
        marks.shifts = in_pairs;
    } else if (!kTakesShortPairs<Direction> &&
               (find_other_than_pairs<Direction>(bytes) & ~behind) == 0) {
        converted = Direction::convert_pairs(bytes);
    } else {
        LeadWalk walk;
        marks = Direction::mark(std::array{bytes}, walk, in_pairs);
        taken = count_before(marks.others | behind);
        if (taken != 0)
            taken -= walk.leads() >> (taken - 1) & 1;
        if (taken == 0)
            return {source.next, out};
        converted = choose(
            static_cast<Mask>(marks.leads), Direction::lead(bytes, moved_back(bytes)),
            static_cast<Mask>(marks.trails), Direction::trail(moved_on(bytes), bytes), bytes);
    }
    source.next += taken;
    const LongMask all = first_long_bits(taken);
    if ((marks.shifts & all) != 0) {
        out = Direction::template put<put_kept_alone>(out, converted, static_cast<Mask>(all),
                                                      static_cast<Mask>(marks.shifts), mode);
        ((last_mode = mode), ...);
        return {source.next, out};
    }
    if (taken == kBlockSize)
        store_block(out, converted);
    else
        store_front(out, converted, taken);
    return {source.next, out + taken};
}

template <class Direction, class... Mode>
[[gnu::noinline]] Converted convert_mixed(Source source, Byte* out, Mode&... mode) {
    // A window reads the byte before it. Behind half-width katakana that come soon after others,
    // blocks go on for a while.
    const Byte* windows_from = source.next + 1;
    const Byte* soon = source.next;
    for (;;) {
        Converted converted{source.next, out};
        if (source.left() > kWindow && source.next >= windows_from) {
            converted = convert_windows_of_pairs<Direction>(source, out, mode...);
            source.next = converted.read;
            if constexpr (!Direction::kIntoJis)
                converted = convert_windows_with_katakana<Direction>(source, converted.written);
            source.next = converted.read;
            out = converted.written;
        }
        if (source.next == source.end)
            break;
        converted = convert_block<Direction>(source, out, mode...);
        if (converted.read == source.next) {
            RunConverter<Direction> run(source, out, mode_of(mode...));
            if (!run.take_katakana())
                break;
            converted = run.converted();
            windows_from = converted.read < soon ? converted.read + kWindow : converted.read;
            soon = converted.read + kWindow;
            ((mode = run.mode()), ...);
        }
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

template <class Direction, class... Mode>
Converted convert(Source source, Byte* out, Mode&... mode) {
    if (kTakesShortPairs<Direction>) {
        const size_t length = source.left();
        const bool has_escape = Direction::kIntoJis && mode_of(mode...) == JisMode::single_byte;
        Byte* const start = out + (has_escape ? kEscapeSize : 0);
        if (length != 0 && length % 2 == 0 &&
            convert_short_text<find_other_than_pairs<Direction>, Direction::convert_pairs>(source,
                                                                                           start)) {
            (switch_to(JisMode::two_byte, out, mode), ...);
            return {source.end, start + length};
        }
    }
    if constexpr (kBlockSize == 64 || (kBlockSize == 32 && !Direction::kIntoJis)) {
        if (source.left() - 1 < kBlockSize) {
            const Converted converted = convert_block<Direction>(source, out, mode...);
            if (converted.read == source.end)
                return converted;
            source.next = converted.read;
            out = converted.written;
        }
        return convert_mixed<Direction>(source, out, mode...);
    } else {
        RunConverter<Direction> runs(source, out, mode_of(mode...));
        runs.convert();
        ((mode = runs.mode()), ...);
        return runs.converted();
    }
}

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
    return convert_text<convert<ToEuc>, not_ascii>(source, out);
}

template <>
Converted Kernels::euc_to_shift_jis(Source source, Byte* out) {
    return convert_text<convert<ToShiftJis>, not_ascii>(source, out);
}

template <>
Converted Kernels::shift_jis_to_jis(Source source, Byte* out, JisMode& mode) {
    return convert_text<convert<IntoJis<ShiftJisToJisBytes>, JisMode>, not_ascii>(source, out,
                                                                                  mode);
}

template <>
Converted Kernels::euc_to_jis(Source source, Byte* out, JisMode& mode) {
    return convert_text<convert<IntoJis<EucToJisBytes>, JisMode>, not_ascii>(source, out, mode);
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
