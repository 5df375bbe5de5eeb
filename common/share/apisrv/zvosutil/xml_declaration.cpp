#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>

#include "mbutil.h"
#include "zvosutil.h"

namespace {

constexpr unsigned kHeadLength = 80;
// The new attribute takes at most 33 bytes, so a document grows by less than this.
constexpr size_t kGrowth = 80;

// The names under which clients know these code sets.
struct DocumentName {
    char charset[11];
    char written[13];
};
constexpr DocumentName kDocumentNames[] = {
    {"iso-8859-1", "windows-1252"}, {"iso-8859-2", "windows-1250"}, {"iso-8859-4", "windows-1257"},
    {"iso-8859-5", "windows-1251"}, {"iso-8859-7", "windows-1253"},
};

// Positions in a document.
struct EncodingAttribute {
    size_t begin;
    size_t end; // behind its closing quote
    size_t declaration_end;
};

const char* find_behind(const char* text, const char* mark) {
    const char* found = text != nullptr ? mbstrstr(text, mark) : nullptr;
    return found != nullptr ? found + std::strlen(mark) : nullptr;
}

std::optional<EncodingAttribute> find_encoding(const char* document) {
    char head[kHeadLength + 1];
    mbstrncpy(head, document, kHeadLength);
    head[kHeadLength] = '\0';
    if (mbstrstr(head, "?xml version=") == nullptr)
        return std::nullopt;
    const char* begin = mbstrstr(head, "encoding=");
    const char* end = find_behind(find_behind(begin, "\""), "\"");
    const char* declaration_end = find_behind(end, "?>");
    if (declaration_end == nullptr)
        return std::nullopt;
    const auto position = [&](const char* p) { return static_cast<size_t>(p - head); };
    return EncodingAttribute{position(begin), position(end), position(declaration_end)};
}

void name_for_documents(char (&name)[50], int code_set) {
    SetCharset(name, code_set);
    for (const DocumentName& row : kDocumentNames) {
        if (std::strcmp(name, row.charset) == 0) {
            std::strcpy(name, row.written);
            return;
        }
    }
}

char* append(char* out, std::string_view text) {
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

} // namespace

void SetEncodingForXMLDoc(const char* document, int code_set, char** result) {
    *result = nullptr;
    if (document == nullptr)
        return;
    const std::optional<EncodingAttribute> encoding = find_encoding(document);
    if (!encoding)
        return;
    char name[50];
    name_for_documents(name, code_set);

    const std::string_view text = document;
    // All of the block is the caller's to read: zero behind the text.
    char* out = static_cast<char*>(std::calloc(text.size() + kGrowth, 1));
    if (out == nullptr)
        return;
    *result = out;
    out = append(out, {document, encoding->begin});
    out = append(out, "encoding=\"");
    out = append(out, name);
    out = append(out, "\"");
    out = append(out, {document + encoding->end, encoding->declaration_end - encoding->end});
    std::string_view rest = text;
    rest.remove_prefix(encoding->declaration_end);
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
    append(out, rest);
}
