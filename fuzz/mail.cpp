// Quoted-printable, subjects and lines of mail: the rules and the room.
#include <optional>

#include "input.h"
#include "models/mail_model.h"
#include "models/strings_model.h"

using fuzz::same;

namespace {

void check_quoted_printable(const std::string& text) {
    const auto encode = [](const char* src, char* dst) { convertToQuotedPrintable(dst, src); };
    const auto decode = [](const char* src, char* dst) { convertFromQuotedPrintable(dst, src); };
    const std::string model = test::model_of_encoder(text);
    const size_t promised = 3 * text.size() + 3 * (3 * text.size() / 50) + 1;
    fuzz::require(model.size() < promised, "stated room of convertToQuotedPrintable");
    const std::string encoded = fuzz::convert_in_room(encode, text, model.size() + 1, "encode");
    same(encoded, model, "convertToQuotedPrintable");
    for (const std::string& line : {text, encoded}) {
        const std::string decoded = fuzz::convert_in_room(decode, line, line.size() + 1, "decode");
        same(decoded, test::model_of_decoder(line), "convertFromQuotedPrintable");
        fuzz::Text in_place(line);
        decode(in_place.data(), in_place.data());
        same(in_place.text(), decoded, "decoding in place");
    }
}

void check_subject(const std::string& text, int mail_code_set, int code_set) {
    const std::string model = test::model_of_subject(text, mail_code_set, code_set);
    fuzz::require(model.size() < 64 * text.size() + 64, "stated room of convertSubjectForMail");
    fuzz::Text source(text);
    fuzz::Room room(model.size() + 1);
    same(convertSubjectForMail(room.data(), source.data(), mail_code_set, code_set), room.data(),
         "result");
    same(room.text(), model, "convertSubjectForMail");
}

void check_base64(const std::string& text, const std::string& charset) {
    const std::string model = test::model_of_base64_words(text, charset);
    fuzz::require(model.size() < (text.size() + 1) * (charset.size() + 18), "stated room");
    const auto encode = [&](const char* src, char* dst) {
        const bool plain = text.find('\x1B') == text.npos;
        same(convertSubjectToBase64(dst, src, charset.c_str()), dst + (plain ? 0 : model.size()),
             "end of the words");
    };
    same(fuzz::convert_in_room(encode, text, model.size() + 1, "convertSubjectToBase64"), model,
         "convertSubjectToBase64");
}

// The next line of a mail, as getLine() gives it in a room of that size; nothing at the end.
std::optional<std::string> model_of_line(std::string_view& left, size_t size, int from, bool quoted,
                                         int wanted) {
    std::string raw, text;
    do {
        if (left.empty())
            return std::nullopt;
        raw = fuzz::take_line(left, size - 1);
        text += quoted ? test::model_of_decoder(raw) : raw;
    } while (quoted && raw.size() > 1 && raw[raw.size() - 2] == '=');
    return test::cut(test::converted(quoted ? text + "\n" : text, from, wanted), size - 1);
}

void check_lines(const std::string& text, size_t size, int from, int wanted) {
    if (text.empty())
        return; // fmemopen() takes no empty text
    fuzz::Text bytes(text);
    for (const int kind : {0, int{ZV_TRANSFER_QUOTED_PRINTABLE}}) {
        FILE* stream = fmemopen(bytes.data(), text.size(), "r");
        fuzz::Room room(size);
        std::string_view left = text;
        for (bool more = true; more;) {
            const auto line = model_of_line(left, size, from, kind != 0, wanted);
            more = getLine(room.data(), int(size), stream, from, kind, wanted) != nullptr;
            same(more, line.has_value(), "getLine");
            if (more)
                same(room.text(), *line, "getLine");
        }
        fclose(stream);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    const int code_sets[] = {ZV_EUC, ZV_SJIS, ZV_BIG5, ZV_EUC_H, ZV_8859_2, ZV_CP1251, ZV_WESTERN};
    const int mail_code_sets[] = {ZV_JIS, ZV_8859_2, ZV_8859_5, ZV_EUC_H};
    const int code_set = input.one_of(code_sets), mail_code_set = input.one_of(mail_code_sets);
    size_t room = 2 + input.byte();
    const std::string charset(input.byte() % 90, 'c'), text = input.text_of_any_size();
    // A long text as one line, or nearly.
    if (text.size() > 1000 && input.chance(2) == 0)
        room = text.size() - 2 + input.chance(8);
    InitMbutilExt(code_set);
    check_quoted_printable(text);
    check_base64(text, charset);
    check_subject(text, mail_code_set, code_set);
    check_lines(text, room, mail_code_set, code_set);
    return 0;
}
