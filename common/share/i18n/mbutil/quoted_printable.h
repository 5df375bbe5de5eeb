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
    std::string_view next();

private:
    static constexpr size_t kChunk = 1024;

    size_t left() const { return static_cast<size_t>(end_ - line_); }
    void encode_chunk();

    Source source_;
    // A line that is not yet full, the tokens of a chunk, and bytes that are none: full lines are
    // copied at their greatest length, and tokens are written in blocks.
    char buffer_[kFullLine - 1 + 3 * kChunk + 3 * kQuotedBlock];
    char* line_ = buffer_;
    char* end_ = buffer_;
};

} // namespace zv

#endif
