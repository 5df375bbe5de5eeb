#include "japanese.h"

#include "jaconv.h"
#include "japanese_codes.h"
#include "japanese_kernels.h"
#include "katakana.h"
#include "kernel_choice.h"

namespace zv {
namespace {

constexpr bool is_line_end(Byte byte) {
    return byte == '\n' || byte == '\r';
}

Code jis_from_katakana(Byte half_width) {
    const BytePair wide = widen_katakana(half_width);
    return jis_from_shift_jis(wide.first, wide.second);
}

// Writes JIS text and keeps its shift state.
class JisWriter {
public:
    JisWriter(Byte* out, JisMode mode) : out_(out), mode_(mode) {}

    void put_code(Code jis) {
        switch_to(JisMode::two_byte);
        out_ = put_pair(out_, jis.first, jis.second);
    }
    void put_katakana(Byte half_width) { put_code(jis_from_katakana(half_width)); }
    void put_single(Byte byte) {
        switch_to(JisMode::single_byte);
        *out_++ = byte;
    }
    // A pair that is no character passes through in whatever mode the text is.
    void put_malformed(Byte first, Byte second) { out_ = put_pair(out_, first, second); }

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

// Steps over the escape sequence at the front of a source; false when the end cuts it short.
bool skip_escape(Source& source, JisMode& mode) {
    if (source.left() < 2)
        return false;
    const Byte kind = source.next[1];
    if (is_designation(kind)) {
        if (source.left() < 3)
            return false;
        source.next += 3;
    } else {
        source.next += 2;
    }
    mode = mode_behind_escape(kind);
    return true;
}

// The rules.

bool put_shift_jis_as_euc(Source& source, Byte*& out) {
    const Byte byte = *source.next;
    if (ShiftJisScanner::is_lead(byte)) {
        if (source.left() < 2)
            return false;
        const Byte trail = source.next[1];
        Code code = {byte, trail};
        if (ShiftJisScanner::is_trail(trail))
            code = euc_from_jis(jis_from_shift_jis(byte, trail));
        out = put_pair(out, code.first, code.second);
        source.next += 2;
        return true;
    }
    if (ShiftJisScanner::is_half_katakana(byte))
        *out++ = kSingleShift2;
    *out++ = byte;
    ++source.next;
    return true;
}

bool put_euc_as_shift_jis(Source& source, Byte*& out) {
    const Byte byte = *source.next;
    if (!is_gr(byte) && byte != kSingleShift2) {
        *out++ = byte;
        ++source.next;
        return true;
    }
    if (source.left() < 2)
        return false;
    const Byte trail = source.next[1];
    source.next += 2;
    if (byte == kSingleShift2 && ShiftJisScanner::is_half_katakana(trail)) {
        *out++ = trail;
        return true;
    }
    Code code = {byte, trail};
    if (is_gr(byte) && is_gr(trail))
        code = shift_jis_from_jis(jis_from_euc(byte, trail));
    out = put_pair(out, code.first, code.second);
    return true;
}

bool put_shift_jis_as_jis(Source& source, JisWriter& out) {
    const Byte byte = *source.next;
    if (ShiftJisScanner::is_lead(byte)) {
        if (source.left() < 2)
            return false;
        const Byte trail = source.next[1];
        if (ShiftJisScanner::is_trail(trail))
            out.put_code(jis_from_shift_jis(byte, trail));
        else
            out.put_malformed(byte, trail);
        source.next += 2;
        return true;
    }
    if (ShiftJisScanner::is_half_katakana(byte))
        out.put_katakana(byte);
    else
        out.put_single(byte);
    ++source.next;
    return true;
}

bool put_euc_as_jis(Source& source, JisWriter& out) {
    const Byte byte = *source.next;
    if (!is_gr(byte) && byte != kSingleShift2) {
        out.put_single(byte);
        ++source.next;
        return true;
    }
    if (source.left() < 2)
        return false;
    const Byte trail = source.next[1];
    if (is_gr(byte) && is_gr(trail))
        out.put_code(jis_from_euc(byte, trail));
    else if (byte == kSingleShift2 && ShiftJisScanner::is_half_katakana(trail))
        out.put_katakana(trail);
    else
        out.put_malformed(byte, trail);
    source.next += 2;
    return true;
}

// `encode` gives the two bytes of a code in the target encoding.
template <Code (*encode)(Code)>
bool decode_jis(Source& source, Byte*& out, JisMode& mode) {
    const Byte byte = *source.next;
    if (byte == kEscape)
        return skip_escape(source, mode);
    if (mode == JisMode::two_byte && !is_line_end(byte)) {
        if (source.left() < 2)
            return false;
        const Code code = encode({byte, source.next[1]});
        out = put_pair(out, code.first, code.second);
        source.next += 2;
        return true;
    }
    mode = JisMode::single_byte;
    *out++ = byte;
    ++source.next;
    return true;
}

// A rule of an encoder, bool(Source&, JisWriter&), as one of a converter.
template <bool (*rule)(Source&, JisWriter&)>
bool put_jis(Source& source, Byte*& out, JisMode& mode) {
    JisWriter writer(out, mode);
    const bool is_whole = rule(source, writer);
    out = writer.end();
    mode = writer.mode();
    return is_whole;
}

} // namespace

Converted shift_jis_to_euc(Source source, Byte* out) {
    const auto kernel = widest([]<int Size> { return JapaneseKernels<Size>::shift_jis_to_euc; });
    return convert_with(source, out, kernel, put_shift_jis_as_euc);
}

Converted euc_to_shift_jis(Source source, Byte* out) {
    const auto kernel = widest([]<int Size> { return JapaneseKernels<Size>::euc_to_shift_jis; });
    return convert_with(source, out, kernel, put_euc_as_shift_jis);
}

Converted shift_jis_to_jis(Source source, Byte* out, JisMode& mode) {
    const auto kernel = widest([]<int Size> { return JapaneseKernels<Size>::shift_jis_to_jis; });
    return convert_with(source, out, kernel, put_jis<put_shift_jis_as_jis>, mode);
}

Converted euc_to_jis(Source source, Byte* out, JisMode& mode) {
    const auto kernel = widest([]<int Size> { return JapaneseKernels<Size>::euc_to_jis; });
    return convert_with(source, out, kernel, put_jis<put_euc_as_jis>, mode);
}

Converted jis_to_shift_jis(Source source, Byte* out, JisMode& mode) {
    const auto kernel = widest([]<int Size> { return JapaneseKernels<Size>::jis_to_shift_jis; });
    return convert_with(source, out, kernel, decode_jis<shift_jis_from_jis>, mode);
}

Converted jis_to_euc(Source source, Byte* out, JisMode& mode) {
    const auto kernel = widest([]<int Size> { return JapaneseKernels<Size>::jis_to_euc; });
    return convert_with(source, out, kernel, decode_jis<euc_from_jis>, mode);
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
