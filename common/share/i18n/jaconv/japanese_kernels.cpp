// Compiled for each size of vectors: what processors run that have no wide ones may not be defined
// here.
#include "japanese_kernels.h"

#include <algorithm>
#include <functional>

#include "japanese_codes.h"
#include "japanese_pairs.h"
#include "katakana.h"

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
    static Byte* put(Byte* out, ByteBlock bytes, Mask taken, Mask shifts) {
        // What is not taken stands behind.
        put_marked(out, bytes, shifts, kSingleShift2);
        return out + count_marked(taken) + count_marked(shifts & taken);
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
    static Byte* put(Byte* out, ByteBlock bytes, Mask taken, Mask shifts) {
        return put_kept(out, bytes, taken & ~shifts);
    }
};

// Converts ASCII, two-byte characters and half-width katakana in any mixture, without a branch for
// a character.
template <class Direction>
class MixedConversion {
public:
    MixedConversion(Source source, Byte* out) : source_(source), out_(out) {}

    Converted convert() {
        do {
            if (kWindow == 64 && source_.left() > kWindow)
                convert_windows();
        } while (source_.next != source_.end && convert_block() && source_.next != source_.end);
        return {source_.next, out_};
    }

private:
    // Stops on a boundary, where a window may hold something malformed or the end is near.
    void convert_windows() {
        LeadWalk walk;
        LongMask shift_before = 0;
        const Byte* const start = source_.next;
        for (; source_.left() > kWindow; source_.next += kWindow) {
            const Window bytes = load_window(source_.next);
            const LongMask high = find_in(bytes, not_ascii);
            if ((high | walk.carried()) == 0) {
                put_window(bytes);
                continue;
            }
            const LeadWalk before = walk;
            const LongMask could_lead = find_in(bytes, Direction::could_lead);
            const LongMask could_trail = find_in(bytes, Direction::could_trail);
            walk.enter(could_lead);
            const LongMask leads = walk.leads(), trails = walk.behind_leads();
            const LongMask others = (trails & ~could_trail) | (high & ~(leads | trails));
            const bool is_first = source_.next == start;
            if ((others | shift_before) == 0) [[likely]] {
                put_window(convert_window(bytes, is_first, leads, trails));
                continue;
            }
            // With katakana, far from the end.
            walk = before;
            const Marks marks = Direction::mark(bytes, walk, shift_before);
            if (marks.malformed != 0 || source_.left() < 2 * kWindow + 2 * kOvershoot) {
                walk = before;
                break;
            }
            const Window converted = convert_window(bytes, is_first, marks.leads, marks.trails);
#pragma GCC unroll 4
            for (size_t i = 0; i < kBlocks; ++i)
                out_ =
                    Direction::put(out_, converted[i], kAllMarked, mask_of_block(marks.shifts, i));
            shift_before = marks.shifts >> (kWindow - 1);
        }
        // A character that reaches into what follows is left.
        source_.next -= walk.carried();
        out_ -= walk.carried() & ~shift_before;
    }

    void put_window(const Window& blocks) {
        store_window(out_, blocks, std::identity());
        out_ += kWindow;
    }

    Window convert_window(const Window& bytes, bool is_first, LongMask leads,
                          LongMask trails) const {
        Window converted;
#pragma GCC unroll 4
        for (size_t i = 0; i < kBlocks; ++i) {
            const Byte* const at = source_.next + i * kBlockSize;
            const ByteBlock before = is_first && i == 0 ? moved_on(bytes[i]) : load_block(at - 1);
            converted[i] =
                choose(mask_of_block(leads, i), Direction::lead(bytes[i], load_block(at + 1)),
                       mask_of_block(trails, i), Direction::trail(before, bytes[i]), bytes[i]);
        }
        return converted;
    }

    // Converts up to a block from a boundary on. False at what is left to the rule.
    bool convert_block() {
        const size_t length = std::min(source_.left(), kBlockSize);
        const ByteBlock bytes = load_up_to(source_.next, length);
        const LongMask all = first_long_bits(length);
        if (not_ascii(bytes) == 0)
            return put_plain(bytes, length);
        if (even_pairs<LongMask>(Direction::could_lead(bytes), Direction::could_trail(bytes)) ==
            all)
            return put_plain(Direction::convert_pairs(bytes), length);
        LeadWalk walk;
        const Marks marks = Direction::mark(std::array{bytes}, walk, 0);
        const LongMask malformed = marks.malformed & all;
        size_t taken = length;
        if (malformed != 0) [[unlikely]] {
            taken = count_before(malformed);
            taken -= static_cast<size_t>(walk.behind_leads() >> taken & 1);
        } else if ((walk.leads() >> (length - 1) & 1) != 0) {
            taken = length - 1;
        }
        const ByteBlock converted = choose(
            static_cast<Mask>(marks.leads), Direction::lead(bytes, moved_back(bytes)),
            static_cast<Mask>(marks.trails), Direction::trail(moved_on(bytes), bytes), bytes);
        if (marks.shifts != 0) {
            out_ = put_front(out_, converted, taken, static_cast<Mask>(marks.shifts));
        } else {
            // What a lead byte at the end becomes has room: something will come of it.
            if (malformed == 0 && length == kBlockSize)
                store_block(out_, converted);
            else
                store_front(out_, converted, taken);
            out_ += taken;
        }
        source_.next += taken;
        return malformed == 0 && taken != 0;
    }

    bool put_plain(ByteBlock converted, size_t length) {
        if (length == kBlockSize)
            store_block(out_, converted);
        else
            store_front(out_, converted, length);
        out_ += length;
        source_.next += length;
        return true;
    }

    [[gnu::noinline]] static Byte* put_front(Byte* out, const ByteBlock& converted, size_t length,
                                             Mask shifts) {
        if (length == 0)
            return out;
        Byte result[2 * kBlockSize + kOvershoot];
        const auto taken = static_cast<Mask>(first_long_bits(length));
        const Byte* const end = Direction::put(result, converted, taken, shifts);
        const Byte* from = result;
        if constexpr (kBlockSize == 64) { // the compiler's copy of such a size is slow to begin
            for (; end - from >= 64; from += kBlockSize, out += kBlockSize)
                store_block(out, load_block(from));
            copy_front(out, from, static_cast<size_t>(end - from));
        } else {
            std::memcpy(out, from, static_cast<size_t>(end - from));
        }
        return out + (end - from);
    }

    Source source_;
    Byte* out_;
};

// Reads text that a decoder or an encoder of JIS takes run by run, and writes it.
class RunWriter {
public:
    RunWriter(Source source, Byte* out, JisMode mode) : source_(source), out_(out), mode_(mode) {}

    Converted converted() const { return {source_.next, out_}; }
    JisMode mode() const { return mode_; }

protected:
    static constexpr size_t kEscapeSize = 3;

    Source source_;
    Byte* out_;
    JisMode mode_;
};

// What an encoder takes from Shift-JIS and from EUC.
struct Katakana {
    LongMask bytes, malformed;
};
struct FromShiftJis : ShiftJisToEucBytes {
    static constexpr size_t kKatakanaSize = 1;
    static Katakana enter(LeadWalk& walk, const Window& bytes, LongMask leads, LongMask&) {
        walk.enter(leads);
        return {find_in(bytes, could_be_katakana) & ~walk.behind_leads(), 0};
    }
    static constexpr auto to_jis = [](ByteBlock bytes) { return convert_pairs(bytes) & 0x7F; };
};
struct FromEuc : EucToShiftJisBytes {
    static constexpr size_t kKatakanaSize = 2;
    static Katakana enter(LeadWalk& walk, const Window& bytes, LongMask leads,
                          LongMask& shift_before) {
        const LongMask single_shifts = find_in(bytes, is_single_shift);
        walk.enter(leads | single_shifts);
        const LongMask shifts = walk.leads() & single_shifts;
        const LongMask behind = places_behind(shifts, shift_before);
        shift_before = shifts >> (kWindow - 1);
        return {shifts | behind, behind & ~find_in(bytes, could_be_katakana)};
    }
    static constexpr auto to_jis = [](ByteBlock bytes) { return bytes & 0x7F; };
};

// Encodes ASCII, two-byte characters and half-width katakana. JIS text is never shorter, so a whole
// block may be stored wherever a whole block of the source is left.
template <class From>
class JisEncoder : public RunWriter {
public:
    using RunWriter::RunWriter;

    // Stops at what is left to the rule.
    void encode() {
        LeadWalk walk;
        LongMask shift_before = 0;
        bool goes_on = true;
        for (const Byte* start = source_.next; goes_on && start != source_.end;) {
            const auto length = std::min(static_cast<size_t>(source_.end - start), kWindow);
            const Window bytes = load_window_up_to(start, length);
            start += length;
            const LongMask high = find_in(bytes, not_ascii);
            if ((high | walk.carried()) == 0) {
                switch_to(JisMode::single_byte);
                put_window(bytes, length, std::identity());
                continue;
            }
            const LongMask could_lead = find_in(bytes, From::could_lead);
            const LongMask could_trail = find_in(bytes, From::could_trail);
            if (walk.carried() == 0 &&
                even_pairs(could_lead, could_trail) == first_long_bits(length)) {
                switch_to(JisMode::two_byte);
                put_window(bytes, length, From::to_jis);
                continue;
            }
            Katakana katakana = From::enter(walk, bytes, could_lead, shift_before);
            const LongMask leads = walk.leads() & ~katakana.bytes;
            const LongMask trails = walk.behind_leads() & ~katakana.bytes;
            // Behind a short text stand zeros, which are no trail bytes.
            const LongMask others = katakana.malformed | (leads & ~could_lead) |
                                    (trails & ~could_trail) |
                                    (high & ~(leads | trails | katakana.bytes));
            const LongMask pairs = leads | trails;
            size_t end = length;
            if (others != 0) {
                end = count_before(others);
                goes_on = false;
            }
            put_runs(start - length, start - length + end, pairs, katakana.bytes);
        }
    }

private:
    // Takes what stands before an end in a window, runs of one kind at a time. A character that
    // reaches beyond the end is left.
    void put_runs(const Byte* start, const Byte* end, LongMask pairs, LongMask katakana) {
        const Byte* at = start;
        while (at < end) {
            const bool is_pairs = (pairs & 1) != 0, is_katakana = (katakana & 1) != 0;
            const LongMask others = is_pairs ? ~pairs : is_katakana ? ~katakana : pairs | katakana;
            const auto left = static_cast<size_t>(end - at);
            const size_t run = others == 0 ? left : std::min(left, count_before(others));
            at += run;
            const auto length = static_cast<size_t>(at - source_.next);
            if (is_pairs) {
                if (length > 1)
                    put_run(JisMode::two_byte, length & ~size_t{1}, From::to_jis);
            } else if (is_katakana) {
                put_katakana(length);
            } else {
                put_run(JisMode::single_byte, length, std::identity());
            }
            pairs >>= run % kWindow;
            katakana >>= run % kWindow;
        }
    }

    void switch_to(JisMode mode) {
        if (mode_ == mode)
            return;
        std::memcpy(out_, mode == JisMode::two_byte ? "\x1B$B" : "\x1B(J", kEscapeSize);
        out_ += kEscapeSize;
        mode_ = mode;
    }

    template <class Convert>
    void put_window(const Window& bytes, size_t length, Convert convert) {
        if (length == kWindow) {
            store_window(out_, bytes, convert);
        } else {
#pragma GCC unroll 4
            for (size_t i = 0; i < kBlocks; ++i) {
                const size_t at = i * kBlockSize;
                if (at >= length)
                    break;
                if (length - at >= kBlockSize)
                    store_block(out_ + at, convert(bytes[i]));
                else
                    store_front(out_ + at, convert(bytes[i]), length - at);
            }
        }
        source_.next += length;
        out_ += length;
    }

    void put_katakana(size_t length) {
        for (; length >= From::kKatakanaSize; length -= From::kKatakanaSize) {
            switch_to(JisMode::two_byte);
            source_.next += From::kKatakanaSize;
            const BytePair wide = widen_katakana(source_.next[-1]);
            const Code code = jis_from_shift_jis(wide.first, wide.second);
            out_ = put_pair(out_, code.first, code.second);
        }
    }

    template <class Convert>
    void put_run(JisMode mode, size_t length, Convert convert) {
        switch_to(mode);
        while (source_.left() >= kBlockSize) {
            store_block(out_, convert(load_block(source_.next)));
            const size_t taken = std::min(length, kBlockSize);
            source_.next += taken;
            out_ += taken;
            length -= taken;
            if (length == 0)
                return;
        }
        store_front(out_, convert(load_front(source_.next, source_.left())), length);
        source_.next += length;
        out_ += length;
    }
};

// Bytes below 21 may be line ends or the escape, those from 80 on, which are negative, are no JIS.
// 7F is none either, but the arithmetic is the same.
constexpr auto is_pair_byte = [](ByteBlock bytes) { return range_mask(bytes, 0x21, 0x7F); };
constexpr auto is_escape = [](ByteBlock bytes) { return byte_mask(bytes, kEscape); };

// Decodes text with the escape sequences in use. Which of them follows is left to branches, which
// processors foresee, so that little waits for it. An escape sequence leaves nothing, so nothing is
// written ahead.
class JisDecoder : public RunWriter {
public:
    JisDecoder(Source source, Byte* out, JisMode mode, bool to_euc)
        : RunWriter(source, out, mode), to_euc_(to_euc) {}

    // Looks up in windows where runs end, ahead of them, so that no run waits for the one before.
    void decode() {
        if (mode_ == JisMode::single_byte)
            end_single_bytes(); // most texts begin so
        const Byte* run = source_.next;
        for (const Byte* start = run; source_.next != source_.end;) {
            const Ends window = find_ends(start);
            for (;;) {
                const bool pairs = mode_ == JisMode::two_byte;
                const Byte* const from = std::max(run, start);
                const LongMask ends =
                    (pairs ? window.of_pairs : window.of_single_bytes) >> (from - start);
                if (ends == 0) {
                    start += kWindow;
                    if (run < start - kWindow) {
                        take_long_run(pairs);
                        start = source_.next;
                    }
                    break;
                }
                take_rest(run, from + count_before(ends), pairs);
                if (!(pairs ? end_pairs() : end_single_bytes()))
                    return;
                run = source_.next;
                if (run == source_.end)
                    return;
                if (run >= start + kWindow) {
                    start += kWindow;
                    break;
                }
            }
        }
    }

private:
    // What stands between the pairs of two lines.
    static constexpr char kLineEnd[] = "\x1B(B\n\x1B$B";
    static constexpr size_t kLineEndSize = sizeof kLineEnd - 1;

    ByteBlock convert_pairs(ByteBlock bytes) const {
        return to_euc_ ? bytes | 0x80 : ToShiftJisBytes<0>::convert_pairs(bytes);
    }

    // The bytes of a window that end runs of pairs and of single bytes, and the end of the text.
    struct Ends {
        LongMask of_pairs, of_single_bytes;
    };
    Ends find_ends(const Byte* start) const {
        const size_t length = std::min(static_cast<size_t>(source_.end - start), kWindow);
        const Window bytes = load_window_up_to(start, length);
        const LongMask behind = length < kWindow ? kAllOfWindow << length : 0;
        return {~find_in(bytes, is_pair_byte) & kAllOfWindow, find_in(bytes, is_escape) | behind};
    }

    // Takes the windows of a run in which nothing is found that could end it.
    template <class Find, class Convert>
    void take_windows(Find find, LongMask found, Convert convert) {
        while (source_.left() >= kWindow) {
            const Window bytes = load_window(source_.next);
            if (find_in(bytes, find) != found)
                return;
            store_window(out_, bytes, convert);
            source_.next += kWindow;
            out_ += kWindow;
        }
    }
    void take_long_run(bool pairs) {
        if (pairs)
            take_windows(is_pair_byte, kAllOfWindow,
                         [this](ByteBlock bytes) { return convert_pairs(bytes); });
        else
            take_windows(is_escape, 0, std::identity());
    }
    // Takes the last bytes of a run, less than a window. With a whole block before them, the last
    // ones go by a block that begins there.
    void take_rest(const Byte* run, const Byte* end, bool pairs) {
        const auto convert = [this, pairs](ByteBlock bytes) {
            return pairs ? convert_pairs(bytes) : bytes;
        };
        while (static_cast<size_t>(end - source_.next) >= kBlockSize) {
            store_block(out_, convert(load_block(source_.next)));
            out_ += kBlockSize;
            source_.next += kBlockSize;
        }
        auto length = static_cast<size_t>(end - source_.next);
        if (pairs)
            length -= length % 2;
        if (length == 0)
            return; // some processors take long to store nothing under a mask
        out_ += length;
        source_.next += length;
        if (source_.next - length != run)
            store_block(out_ - kBlockSize, convert(load_block(source_.next - kBlockSize)));
        else if (pairs)
            store_front(out_ - length,
                        convert_pairs(load_up_to(source_.next - length, source_.left() + length)),
                        length);
        else
            copy_front(out_ - length, source_.next - length, length);
    }

    bool has_escape(const char* sequence) const {
        return source_.left() >= kEscapeSize &&
               std::memcmp(source_.next, sequence, kEscapeSize) == 0;
    }
    // Steps over what ends a run of pairs and begins another run. False at anything else.
    bool end_pairs() {
        if (source_.left() >= kLineEndSize &&
            std::memcmp(source_.next, kLineEnd, kLineEndSize) == 0) {
            *out_++ = '\n';
            source_.next += kLineEndSize;
            return true;
        }
        if (!has_escape("\x1B(B") && !has_escape("\x1B(J"))
            return false;
        mode_ = JisMode::single_byte;
        source_.next += kEscapeSize;
        end_single_bytes(); // the next run is often empty
        return true;
    }
    bool end_single_bytes() {
        if (!has_escape("\x1B$B"))
            return false;
        mode_ = JisMode::two_byte;
        source_.next += kEscapeSize;
        return true;
    }

    const bool to_euc_;
};

template <class From>
Converted encode(JisEncoder<From> encoder, JisMode& mode) {
    encoder.encode();
    mode = encoder.mode();
    return encoder.converted();
}

[[gnu::noinline]] Converted decode(Source source, Byte* out, JisMode& mode, bool to_euc) {
    JisDecoder decoder(source, out, mode, to_euc);
    decoder.decode();
    mode = decoder.mode();
    return decoder.converted();
}

using Kernels = JapaneseKernels<kBlockSize>;

} // namespace

template <>
Converted Kernels::shift_jis_to_euc(Source source, Byte* out) {
    return MixedConversion<ToEuc>(source, out).convert();
}

template <>
Converted Kernels::euc_to_shift_jis(Source source, Byte* out) {
    return MixedConversion<ToShiftJis>(source, out).convert();
}

template <>
Converted Kernels::shift_jis_to_jis(Source source, Byte* out, JisMode& mode) {
    return encode(JisEncoder<FromShiftJis>(source, out, mode), mode);
}

template <>
Converted Kernels::euc_to_jis(Source source, Byte* out, JisMode& mode) {
    return encode(JisEncoder<FromEuc>(source, out, mode), mode);
}

template <>
Converted Kernels::jis_to_shift_jis(Source source, Byte* out, JisMode& mode) {
    return decode(source, out, mode, false);
}

template <>
Converted Kernels::jis_to_euc(Source source, Byte* out, JisMode& mode) {
    return decode(source, out, mode, true);
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
