#ifndef ZVUTIL_JACONV_JAPANESE_RUNS_H
#define ZVUTIL_JACONV_JAPANESE_RUNS_H

#include <algorithm>
#include <cstring>

#include "japanese.h"
#include "kernels.h"

namespace zv {
inline namespace ZVUTIL_LANES {

// What the kernels of the Japanese converters share: runs of one kind, and texts of one.

inline Mask not_ascii(ByteBlock bytes) {
    return high_bits(bytes);
}

inline ByteBlock unchanged(ByteBlock bytes) {
    return bytes;
}

// Converts the windows at the front of a source in which nothing else is found. Out of line, so
// that shorter texts need not prepare for it; of each file, so that callers see what it leaves in
// registers.
template <auto find_other, auto convert>
[[gnu::noinline]] static Converted convert_windows(Source source, Byte* out) {
    for (; source.left() >= kWindow; source.next += kWindow, out += kWindow) {
        const Window bytes = load_window(source.next);
        if (find_in(bytes, find_other) != 0)
            break;
        store_window(out, bytes, convert);
    }
    return {source.next, out};
}

inline constexpr size_t kEscapeSize = 3;

inline Byte* switch_to(JisMode wanted, Byte* out, JisMode& mode) {
    if (mode == wanted)
        return out;
    std::memcpy(out, wanted == JisMode::two_byte ? "\x1B$B" : "\x1B(J", kEscapeSize);
    mode = wanted;
    return out + kEscapeSize;
}

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

// Converts by a function that takes the same, unless the text is short and nothing of it changes.
template <auto convert, auto changes, class... State>
Converted convert_text(Source source, Byte* out, State&... state) {
    if (kBlockSize > 16 && ((state == JisMode::single_byte) && ...) &&
        convert_short_text<changes, unchanged>(source, out)) [[likely]]
        return {source.end, out + source.left()};
    return convert(source, out, state...);
}

} // namespace ZVUTIL_LANES
} // namespace zv

#endif
