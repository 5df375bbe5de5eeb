// Quoted-printable text and subjects against GMime.
#include <gmime/gmime.h>

#include <vector>

#include "bench.h"
#include "mbutil.h"

namespace bench {
namespace {

// GMime's coder of quoted-printable texts of up to a length.
class Coder {
public:
    Coder(void (*init)(GMimeEncoding*, GMimeContentEncoding), size_t longest) {
        init(&encoding_, GMIME_CONTENT_ENCODING_QUOTEDPRINTABLE);
        out_.resize(g_mime_encoding_outlen(&encoding_, longest));
    }
    std::string_view operator()(const std::string& text) {
        g_mime_encoding_reset(&encoding_);
        const size_t length =
            g_mime_encoding_flush(&encoding_, text.data(), text.size(), out_.data());
        return {out_.data(), length};
    }

private:
    GMimeEncoding encoding_;
    std::string out_;
};

constexpr size_t kSizes[] = {48, 4 * 1024, 64 * 1024};

struct Language {
    const char* name;
    const char* charset;
    int code_set;
    std::string_view sample;
};

// Makes a coder of the library's: `room` is that of its output.
auto zvutil_coder(char* (*code)(char*, const char*), const std::string& text, size_t room) {
    return [=] {
        InitMbutilExt(ZV_WESTERN);
        return [=, out = Room(text, room)]() mutable { code(out.data(), text.c_str()); };
    };
}

auto gmime_coder(void (*init)(GMimeEncoding*, GMimeContentEncoding), const std::string& text) {
    return [=] {
        return [=, code = Coder(init, text.size())]() mutable {
            benchmark::DoNotOptimize(code(text));
        };
    };
}

// One line, as the decoder takes it; both sides decode what GMime has encoded.
void add_quoted_printable(const Language& language, size_t size) {
    std::string text = text_of(language.charset, language.sample, size);
    text.back() = '.';
    const size_t room = 4 * size + 1;
    const std::string encoded(Coder(g_mime_encoding_init_encode, size)(text));

    InitMbutilExt(ZV_WESTERN);
    std::string ours(room, '\0');
    ours = convertToQuotedPrintable(ours.data(), text.c_str());
    std::erase(ours, '\r'); // of the soft line breaks
    std::vector<char> decoded(room);
    if (Coder(g_mime_encoding_init_decode, ours.size())(ours) != text ||
        Coder(g_mime_encoding_init_decode, encoded.size())(encoded) != text ||
        convertFromQuotedPrintable(decoded.data(), encoded.c_str()) != text)
        fail(std::string("quoted-printable, ") + language.name);

    Row("mail", "convertToQuotedPrintable", language.name, size, "byte")
        .measure("zvutil", zvutil_coder(convertToQuotedPrintable, text, room))
        .measure("GMime", gmime_coder(g_mime_encoding_init_encode, text));
    Row("mail", "convertFromQuotedPrintable", language.name, size, "byte")
        .measure("zvutil", zvutil_coder(convertFromQuotedPrintable, encoded, room))
        .measure("GMime", gmime_coder(g_mime_encoding_init_decode, encoded));
}

// A subject of 60 bytes. GMime is handed it in UTF-8, in which it works, at no charge.
void add_subject(const Language& language, const char* mail_charset) {
    const std::string subject = text_of(language.charset, language.sample, 60);
    const std::string utf8 = convert(language.charset, "UTF-8", subject);
    const int code_set = language.code_set;
    const auto zvutil = [=] {
        InitMbutilExt(code_set);
        return [=, out = std::vector<char>(64 * subject.size() + 64)]() mutable {
            convertSubjectForMail(out.data(), subject.c_str(), mbGetCodeSetForMail(code_set),
                                  code_set);
        };
    };
    const auto gmime = [=] {
        return
            [=] { g_free(g_mime_utils_header_encode_text(nullptr, utf8.c_str(), mail_charset)); };
    };
    Row("mail", "convertSubjectForMail", language.name, 1, "call")
        .measure("zvutil", zvutil)
        .measure("GMime", gmime);
}

} // namespace

void add_mail() {
    for (const size_t size : kSizes) {
        add_quoted_printable({"Polish", "ISO-8859-2", ZV_8859_2, kPolish}, size);
        add_quoted_printable({"Russian", "ISO-8859-5", ZV_8859_5, kRussian}, size);
    }
    add_subject({"Japanese, EUC", "EUC-JP", ZV_EUC, kJapanese}, "iso-2022-jp");
    add_subject({"Japanese, SJIS", "SJIS", ZV_SJIS, kJapanese}, "iso-2022-jp");
    add_subject({"Polish, 1250", "CP1250", ZV_CP1250, kPolish}, "iso-8859-2");
}

} // namespace bench
