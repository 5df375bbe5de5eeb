// Compiled for each size of vectors: what processors run that have no wide ones may not be defined
// here.
#include "japanese_kernels.h"

#include <functional>

#include "japanese_directions.h"

namespace zv {
namespace {

template <class From>
Mask find_other_than_pairs(ByteBlock bytes) {
    return even_pairs(From::could_lead(bytes), From::could_trail(bytes)) ^ kAllMarked;
}

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
            take<not_ascii, unchanged, true>();
        return true;
    }

    template <auto find_other, auto convert, bool often_long = false>
    void take() {
        while (source_.next != source_.end) {
            const size_t left = source_.left();
            const ByteBlock bytes = load_up_to(source_.next, left);
            const ByteBlock converted = convert(bytes);
            const Mask other = find_other(bytes);
            if (other == 0 && left >= kSafe) [[likely]] {
                store_block(out_, converted);
                step(kBlockSize);
                if constexpr (often_long)
                    take_windows<find_other, convert>();
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

// Converts windows of ASCII and pairs, of which a byte at least is converted. Stops on a boundary,
// where a window may hold something else or the end is near: a byte is left, and into JIS two,
// since an escape sequence may stand for a while before a lead byte that is left behind.
template <class Direction, class... Mode>
[[gnu::noinline]] Converted convert_windows_of_pairs(Source source, Byte* out, Mode&... last_mode) {
    JisMode mode = mode_of(last_mode...);
    LeadWalk walk;
    LongMask shifts = 0;
    const auto go_on = [&](const Converted& front) {
        source.next = front.read;
        out = front.written;
    };
    while (source.left() > kWindow + (Direction::kIntoJis ? 1 : 0)) {
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
