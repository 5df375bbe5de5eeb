#include <algorithm>
#include <string_view>

#include "../jaconv/japanese_codes.h"
#include "conversion.h"
#include "mbutil.h"
#include "scratch.h"

namespace zv {
namespace {

constexpr std::string_view kFold = "\n \t";
constexpr char kBase64[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr size_t kFullColumn = 72;
constexpr unsigned kLongestPiece = 20;

char* put(char* out, std::string_view text) {
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

// Writes encoded words that all open alike: "=?", the charset, the encoding, B for base64 or Q for
// quoted-printable.
class WordWriter {
public:
    WordWriter(char* out, std::string_view charset, std::string_view encoding) : out_(out) {
        put_text("=?");
        put_text(charset);
        put_text(encoding);
        opening_ = {out, static_cast<size_t>(out_ - out)};
    }

    // What stands on the line before the text of a first word.
    size_t opening_length() const { return opening_.size(); }

    void put_text(std::string_view text) { out_ = put(out_, text); }
    void begin_next() {
        put_text("?=");
        put_text(kFold);
        put_text(opening_);
    }
    char* finish() { return put(out_, "?="); }

private:
    char* out_;
    std::string_view opening_; // where the first word has it
};

// Writes JIS text, from its first escape sequence on, as base64 words. A word ends at the full
// column and before every escape sequence. Unless an escape sequence ends it at the end of a group
// of three bytes, the next word repeats the group that began the run, which is ESC $ B as a rule,
// so that each word can be read by itself.
class JisWordWriter {
public:
    // `column` is that of the first word on its line.
    JisWordWriter(char* out, size_t column, std::string_view charset)
        : words_(out, charset, "?B?"), column_(column + words_.opening_length()) {}

    char* write(Source jis) {
        while (jis.left() != 0) {
            const Source run = take_run(jis);
            put_run(run, jis.left() == 0);
        }
        return words_.finish();
    }

private:
    struct Digits {
        char text[4];
    };

    // An escape sequence and the text behind it.
    static Source take_run(Source& jis) {
        const void* next = std::memchr(jis.next + 1, kEscape, jis.left() - 1);
        const Byte* const begin = jis.next;
        jis.next = next != nullptr ? static_cast<const Byte*>(next) : jis.end;
        return {begin, static_cast<size_t>(jis.next - begin)};
    }

    void put_run(Source run, bool is_last) {
        if (!is_fresh_) {
            begin_next();
            has_run_start_ = false;
        }
        for (; run.left() >= 3; run.next += 3)
            put_group(to_base64(run.next[0], run.next[1], run.next[2]), 3, false);
        if (run.left() == 2)
            put_group(to_base64(run.next[0], run.next[1], 0), 2, !is_last);
        else if (run.left() == 1)
            put_group(to_base64(run.next[0], 0, 0), 1, !is_last);
    }

    static Digits to_base64(unsigned first, unsigned second, unsigned third) {
        return {{kBase64[first >> 2], kBase64[(first << 4 | second >> 4) & 63],
                 kBase64[(second << 2 | third >> 6) & 63], kBase64[third & 63]}};
    }

    // Writes a group of so many bytes; one cut short by an escape sequence ends its word.
    void put_group(Digits digits, size_t length, bool is_cut) {
        if (!has_run_start_)
            run_start_ = digits;
        has_run_start_ = true;
        if (length < 3)
            digits.text[3] = '=';
        if (length < 2)
            digits.text[2] = '=';
        put_digits(digits);
        is_fresh_ = is_cut || column_ >= kFullColumn;
        if (is_fresh_) {
            begin_next();
            put_digits(run_start_);
        }
    }
    void put_digits(const Digits& digits) {
        words_.put_text({digits.text, sizeof digits.text});
        column_ += sizeof digits.text;
    }
    void begin_next() {
        words_.begin_next();
        column_ = words_.opening_length() + 1;
    }

    WordWriter words_;
    size_t column_;
    Digits run_start_{};
    bool has_run_start_ = false;
    bool is_fresh_ = true; // the word holds nothing but what it repeats
};

// Writes JIS text: as it is up to the first escape sequence, in words from there on.
char* put_jis(char* out, std::string_view jis, std::string_view charset) {
    const size_t readable = std::min(jis.find(static_cast<char>(kEscape)), jis.size());
    out = put(out, {jis.data(), readable});
    if (readable == jis.size())
        return out;
    const Source encoded(as_bytes(jis.data()) + readable, jis.size() - readable);
    return JisWordWriter(out, readable, charset).write(encoded);
}

// Writes a subject piece by piece, each a text of its own that ends in single-byte mode.
char* put_japanese_subject(char* out, const char* subject, int code_set, std::string_view charset) {
    Scratch jis(converted_room(code_set, ZV_JIS, kLongestPiece)); // of which the stack has room
    while (*subject != '\0') {
        char piece[kLongestPiece + 1];
        const unsigned length = mbstrncpyi(piece, subject, kLongestPiece);
        piece[length] = '\0';
        subject += length;
        out = put_jis(out, convertStrExt(piece, code_set, jis.data(), ZV_JIS), charset);
        if (*subject != '\0')
            out = put(out, kFold);
    }
    return out;
}

char* put_quoted_subject(char* out, const char* subject, int code_set, int mail_code_set,
                         std::string_view charset) {
    // For the converted text, and for that encoded, four times as long at most.
    const size_t room = converted_room(code_set, mail_code_set, std::strlen(subject));
    constexpr size_t kGrowth = 4;
    Scratch scratch(room <= SIZE_MAX / (1 + kGrowth) ? (1 + kGrowth) * room : SIZE_MAX);
    if (!scratch)
        return out;
    const char* const text = convertStrExt(subject, code_set, scratch.data(), mail_code_set);
    const char* line = convertToQuotedPrintable(scratch.data() + room, text);
    if (*line == '\0')
        return out;
    WordWriter words(out, charset, "?Q?");
    while (const char* const feed = std::strchr(line, '\n')) {
        words.put_text({line, feed - 1}); // without the "=" of the soft line break
        line = feed + 2;
        if (*line == '\0')
            return words.finish();
        words.begin_next();
    }
    words.put_text(line);
    return words.finish();
}

} // namespace
} // namespace zv

char* convertSubjectToBase64(char* dst, const char* src, const char* charset) {
    const std::string_view jis = src;
    char* const end = zv::put_jis(dst, jis, charset);
    *end = '\0';
    return jis.find(static_cast<char>(zv::kEscape)) == std::string_view::npos ? dst : end;
}

char* convertSubjectForMail(char* dst, const char* subject, int mail_code_set, int code_set) {
    const char* charset = mbGetMIMECharset(mail_code_set);
    char* const end = mail_code_set == ZV_JIS
                          ? zv::put_japanese_subject(dst, subject, code_set, charset)
                          : zv::put_quoted_subject(dst, subject, code_set, mail_code_set, charset);
    *end = '\0';
    return dst;
}
