#ifndef ZVUTIL_MBUTIL_QUOTED_PRINTABLE_H
#define ZVUTIL_MBUTIL_QUOTED_PRINTABLE_H

#include <string_view>

#include "quoted_printable_kernels.h"

namespace zv {

// A text in quoted-printable, line by line, without its soft line breaks. The byte that fills a
// line ends it, with all three characters that it may take.
class EncodedLines {
public:
    static constexpr size_t kFullLine = 50;
    static constexpr size_t kLongestLine = kFullLine + 2;

    explicit EncodedLines(const char* text) : source_(text) {}
    EncodedLines(const EncodedLines&) = delete;
    EncodedLines& operator=(const EncodedLines&) = delete;

    // The next line, valid until the next call; empty at the end. Only the last is not full.
    // kLongestLine bytes may be copied from the start of a full one.
    std::string_view next() {
        if (left() < kFullLine && source_.left() != 0)
            encode_chunk();
        size_t length = left();
        // A token of three that begins before the full length ends one or two characters behind it.
        if (length >= kFullLine)
            length = kFullLine + (line_[kFullLine - 2] == '=' ? 1 : 0) +
                     (line_[kFullLine - 1] == '=' ? 2 : 0);
        line_ += length;
        return {line_ - length, length};
    }

private:
    // A chunk is encoded while the processor still looks for the ends of the lines before.
    static constexpr size_t kChunk = 256;
    static constexpr size_t kRoom = 3 * kChunk + 3 * kQuotedBlock;

    size_t left() const { return static_cast<size_t>(end_ - line_); }
    void encode_chunk();

    Source source_;
    // Lines are copied at their greatest length, and tokens are written in blocks, so bytes that
    // are none stand behind them.
    char buffer_[4 * kRoom];
    char* line_ = buffer_;
    char* end_ = buffer_;
};

} // namespace zv

#endif
