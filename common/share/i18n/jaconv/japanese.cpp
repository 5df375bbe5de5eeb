#include "japanese.h"

#include "jaconv.h"
#include "japanese_avx2.h"
#include "japanese_codes.h"
#include "japanese_pairs.h"
#include "katakana.h"
#include "scanners.h"

namespace zv {
namespace {

constexpr bool is_line_end(Byte byte) {
    return byte == '\n' || byte == '\r';
}

// Converts the well-formed character at the front of the source, whose converted code is given, and
// the run of plain ones that it may begin.
template <class Pairs>
Byte* convert_run(Source& source, Byte* out, Code code) {
    const Byte* before = source.next;
    out = convert_run<Pairs>(source, out);
    if (source.next != before)
        return out;
    source.next += 2;
    return put_pair(out, code.first, code.second);
}

// Writes JIS text and keeps its shift state.
class JisWriter {
public:
    JisWriter(Byte* out, JisMode mode) : out_(out), mode_(mode) {}

    template <class Pairs>
    void put_run(Source& source, Code jis) {
        switch_to(JisMode::two_byte);
        out_ = convert_run<Pairs>(source, out_, jis);
    }
    void put_katakana(Byte half_width) {
        const BytePair wide = widen_katakana(half_width);
        const Code jis = jis_from_shift_jis(wide.first, wide.second);
        switch_to(JisMode::two_byte);
        out_ = put_pair(out_, jis.first, jis.second);
    }
    void put_single(Byte byte) {
        switch_to(JisMode::single_byte);
        *out_++ = byte;
    }
    // A pair that is no character passes through in whatever mode the text is.
    void put_malformed(Source& source) {
        out_ = put_pair(out_, source.next[0], source.next[1]);
        source.next += 2;
    }
    void put_ascii_run(Source& source) {
        switch_to(JisMode::single_byte);
        out_ = copy_ascii(source, out_);
    }

    Byte* end() const { return out_; }
    JisMode mode() const { return mode_; }

    void switch_to(JisMode mode) {
        if (mode_ == mode)
            return;
        mode_ = mode;
        std::memcpy(out_, mode == JisMode::two_byte ? "\x1B$B" : "\x1B(J", 3);
        out_ += 3;
    }

private:
    Byte* out_;
    JisMode mode_;
};

// Ends a conversion into JIS: a lone lead byte is written unchanged, in single-byte mode.
void finish_jis(Converted converted, const Source& source, JisMode mode) {
    JisWriter out(converted.written, mode);
    out.switch_to(JisMode::single_byte);
    finish({converted.read, out.end()}, source);
}

// Steps over the escape sequence at the front of a source; false when the end cuts it short. Which
// it is is left to branches, which processors foresee, since all that follows waits for its length.
bool skip_escape(Source& source, JisMode& mode) {
    if (source.left() < 2)
        return false;
    const Byte kind = source.next[1];
    if (is_designation(kind)) [[likely]] {
        if (source.left() < 3)
            return false;
        source.next += 3;
    } else {
        source.next += 2;
    }
    mode = mode_behind_escape(kind);
    return true;
}

// Copies JIS text in single-byte mode up to an escape sequence or the end.
Byte* copy_to_escape(Source& source, Byte* out) {
    // Most runs are short, and the most frequent one is a line end.
    if (source.left() >= kBlockSize) {
        if (source.next[1] == kEscape) {
            *out++ = *source.next++;
            return out;
        }
        const ByteBlock block = load_block(source.next);
        if (const Mask escapes = high_bits(block == kEscape); escapes != 0) {
            const size_t run = count_before(escapes);
            copy_short(out, source.next, run);
            source.next += run;
            return out + run;
        }
    }
    const void* escape = std::memchr(source.next, kEscape, source.left());
    const Byte* run_end = escape != nullptr ? static_cast<const Byte*>(escape) : source.end;
    const size_t run = static_cast<size_t>(run_end - source.next);
    std::memcpy(out, source.next, run);
    source.next = run_end;
    return out + run;
}

// Reads JIS text; `encode` gives the two bytes of a code in the target encoding.
template <class Pairs, class Encode>
Converted decode_jis(Source source, Byte* out, JisMode& mode, Encode encode, JisKernel kernel) {
    WideKernel<JisMode> wide(kernel);
    while (source.next != source.end) {
        out = wide.run(source, out, mode);
        if (source.next == source.end)
            break;
        const Byte byte = *source.next;
        if (byte == kEscape) {
            if (!skip_escape(source, mode))
                break;
        } else if (mode == JisMode::single_byte) {
            out = copy_to_escape(source, out);
        } else if (is_line_end(byte)) {
            mode = JisMode::single_byte;
        } else {
            if (source.left() < 2)
                break;
            out = convert_run<Pairs>(source, out, encode({byte, source.next[1]}));
        }
    }
    return {source.next, out};
}

} // namespace

Converted shift_jis_to_euc(Source source, Byte* out) {
    WideKernel<> wide(wide_shift_jis_to_euc);
    while (source.next != source.end) {
        out = wide.run(source, out);
        const Byte byte = *source.next;
        if (byte < 0x80) {
            out = copy_ascii(source, out);
        } else if (ShiftJisScanner::is_lead(byte)) {
            if (source.left() < 2)
                break;
            const Byte trail = source.next[1];
            if (ShiftJisScanner::is_trail(trail)) {
                const Code jis = jis_from_shift_jis(byte, trail);
                out = convert_run<ShiftJisToEucPairs>(source, out, euc_from_jis(jis));
            } else {
                out = put_pair(out, byte, trail);
                source.next += 2;
            }
        } else {
            if (ShiftJisScanner::is_half_katakana(byte))
                *out++ = kSingleShift2;
            *out++ = byte;
            ++source.next;
        }
    }
    return {source.next, out};
}

Converted euc_to_shift_jis(Source source, Byte* out) {
    WideKernel<> wide(wide_euc_to_shift_jis);
    while (source.next != source.end) {
        out = wide.run(source, out);
        const Byte byte = *source.next;
        if (byte < 0x80) {
            out = copy_ascii<kSafeFromEucToShiftJis>(source, out);
        } else if (is_gr(byte)) {
            if (source.left() < 2)
                break;
            const Byte trail = source.next[1];
            if (is_gr(trail)) {
                const Code code = shift_jis_from_jis(jis_from_euc(byte, trail));
                out = convert_run<EucToShiftJisPairs>(source, out, code);
            } else {
                out = put_pair(out, byte, trail);
                source.next += 2;
            }
        } else if (byte == kSingleShift2) {
            if (source.left() < 2)
                break;
            const Byte trail = source.next[1];
            if (!ShiftJisScanner::is_half_katakana(trail))
                *out++ = byte;
            *out++ = trail;
            source.next += 2;
        } else {
            *out++ = byte;
            ++source.next;
        }
    }
    return {source.next, out};
}

Converted shift_jis_to_jis(Source source, Byte* out, JisMode& mode) {
    JisWriter jis(out, mode);
    while (source.next != source.end) {
        const Byte byte = *source.next;
        if (byte < 0x80) {
            jis.put_ascii_run(source);
        } else if (ShiftJisScanner::is_lead(byte)) {
            if (source.left() < 2)
                break;
            const Byte trail = source.next[1];
            if (ShiftJisScanner::is_trail(trail))
                jis.put_run<ShiftJisToJisPairs>(source, jis_from_shift_jis(byte, trail));
            else
                jis.put_malformed(source);
        } else {
            if (ShiftJisScanner::is_half_katakana(byte))
                jis.put_katakana(byte);
            else
                jis.put_single(byte);
            ++source.next;
        }
    }
    mode = jis.mode();
    return {source.next, jis.end()};
}

Converted euc_to_jis(Source source, Byte* out, JisMode& mode) {
    JisWriter jis(out, mode);
    while (source.next != source.end) {
        const Byte byte = *source.next;
        if (byte < 0x80) {
            jis.put_ascii_run(source);
        } else if (is_gr(byte) || byte == kSingleShift2) {
            if (source.left() < 2)
                break;
            const Byte trail = source.next[1];
            if (is_gr(byte) && is_gr(trail)) {
                jis.put_run<EucToJisPairs>(source, jis_from_euc(byte, trail));
            } else if (byte == kSingleShift2 && ShiftJisScanner::is_half_katakana(trail)) {
                jis.put_katakana(trail);
                source.next += 2;
            } else {
                jis.put_malformed(source);
            }
        } else {
            jis.put_single(byte);
            ++source.next;
        }
    }
    mode = jis.mode();
    return {source.next, jis.end()};
}

Converted jis_to_shift_jis(Source source, Byte* out, JisMode& mode) {
    return decode_jis<JisToShiftJisPairs>(source, out, mode, shift_jis_from_jis,
                                          wide_jis_to_shift_jis);
}

Converted jis_to_euc(Source source, Byte* out, JisMode& mode) {
    return decode_jis<JisToEucPairs>(source, out, mode, euc_from_jis, wide_jis_to_euc);
}

Byte* finish_from_jis(Converted converted, const Source& source) {
    if (converted.read != source.end && *converted.read == kEscape)
        converted.read = source.end;
    return finish(converted, source);
}

} // namespace zv

char* shift2eucx(const char* src, char* dst) {
    const zv::Source source(src);
    zv::finish(zv::shift_jis_to_euc(source, zv::as_bytes(dst)), source);
    return dst;
}

char* euc2shiftx(const char* src, char* dst) {
    const zv::Source source(src);
    zv::finish(zv::euc_to_shift_jis(source, zv::as_bytes(dst)), source);
    return dst;
}

char* shift2jisx(const char* src, char* dst) {
    const zv::Source source(src);
    zv::JisMode mode = zv::JisMode::single_byte;
    const zv::Converted converted = zv::shift_jis_to_jis(source, zv::as_bytes(dst), mode);
    zv::finish_jis(converted, source, mode);
    return dst;
}

char* euc2jisx(const char* src, char* dst) {
    const zv::Source source(src);
    zv::JisMode mode = zv::JisMode::single_byte;
    const zv::Converted converted = zv::euc_to_jis(source, zv::as_bytes(dst), mode);
    zv::finish_jis(converted, source, mode);
    return dst;
}

char* jis2shiftx(const char* src, char* dst) {
    const zv::Source source(src);
    zv::JisMode mode = zv::JisMode::single_byte;
    zv::finish_from_jis(zv::jis_to_shift_jis(source, zv::as_bytes(dst), mode), source);
    return dst;
}

char* jis2eucx(const char* src, char* dst) {
    const zv::Source source(src);
    zv::JisMode mode = zv::JisMode::single_byte;
    zv::finish_from_jis(zv::jis_to_euc(source, zv::as_bytes(dst), mode), source);
    return dst;
}
