#include <cstdio>

#include "jaconv.h"
#include "mbutil.h"

namespace {

constexpr int kUndecided = 0;
constexpr int kEscape = 0x1B;

bool between(int byte, int first, int last) {
    return byte >= first && byte <= last;
}

// Lead bytes of Shift-JIS that are nothing in EUC; 8E is the single shift there.
bool is_shift_jis_only(int byte) {
    return between(byte, 0x81, 0x9F) && byte != 0x8E;
}

// Reads a stream by bytes and remembers the last one, which tells whether the end has been met. The
// stream is locked once for all of them.
class Detector {
public:
    explicit Detector(std::FILE* stream) : stream_(stream) { flockfile(stream); }
    ~Detector() { funlockfile(stream_); }
    Detector(const Detector&) = delete;
    Detector& operator=(const Detector&) = delete;

    int run() {
        while ((answer_ == kUndecided || answer_ == ZV_EUC_OR_SJIS) && last_ != EOF) {
            const int byte = read_past_ascii();
            if (byte == kEscape)
                after_escape();
            else if (is_shift_jis_only(byte))
                answer_ = ZV_SJIS;
            else if (byte == 0x8E)
                after_single_shift();
            else if (between(byte, 0xA1, 0xDF))
                after_katakana_or_kanji();
            else if (between(byte, 0xF0, 0xFE))
                answer_ = ZV_EUC;
            else if (between(byte, 0xE0, 0xEF))
                after_common_lead();
        }
        return answer_;
    }

private:
    int read() { return last_ = getc_unlocked(stream_); }

    // The next byte that may tell something.
    int read_past_ascii() {
        int byte;
        do {
            byte = getc_unlocked(stream_);
        } while (between(byte, 0, 0x7F) && byte != kEscape);
        return last_ = byte;
    }

    void after_escape() {
        const int c = read();
        if (c == 'K') {
            answer_ = ZV_JIS;
        } else if (c == '$') {
            const int final_byte = read();
            if (final_byte == 'B' || final_byte == '@')
                answer_ = ZV_JIS;
        }
    }

    void after_single_shift() {
        const int trail = read();
        if (between(trail, 0x40, 0x7E) || between(trail, 0x80, 0xA0) || between(trail, 0xE0, 0xFC))
            answer_ = ZV_SJIS;
        else if (between(trail, 0xA1, 0xDF))
            answer_ = ZV_EUC_OR_SJIS;
    }

    // A half-width katakana of Shift-JIS, or the first byte of an EUC character.
    void after_katakana_or_kanji() {
        const int second = read();
        if (between(second, 0xF0, 0xFE))
            answer_ = ZV_EUC;
        else if (between(second, 0xA1, 0xDF))
            answer_ = ZV_EUC_OR_SJIS;
        else if (between(second, 0xE0, 0xEF))
            follow_run(second);
        else if (second <= 0x9F)
            answer_ = ZV_SJIS;
    }

    // Two readings of the text are open here; the bytes of the run settle it, if any does.
    void follow_run(int byte) {
        answer_ = ZV_EUC_OR_SJIS;
        while (byte >= 0x40 && answer_ == ZV_EUC_OR_SJIS) {
            if (is_shift_jis_only(byte))
                answer_ = ZV_SJIS;
            else if (between(byte, 0xFD, 0xFE))
                answer_ = ZV_EUC;
            byte = read();
        }
    }

    // A lead byte of both encodings.
    void after_common_lead() {
        const int trail = read();
        if (between(trail, 0x40, 0x7E) || between(trail, 0x80, 0xA0))
            answer_ = ZV_SJIS;
        else if (between(trail, 0xFD, 0xFE))
            answer_ = ZV_EUC;
        else if (between(trail, 0xA1, 0xFC))
            answer_ = ZV_EUC_OR_SJIS;
    }

    std::FILE* stream_;
    int last_ = 0;
    int answer_ = kUndecided;
};

} // namespace

int DetectJPCodeType(FILE* stream) {
    return Detector(stream).run();
}
