// The encoding declaration of documents, cut and joined as strings.
#include <map>

#include "input.h"
#include "models/strings_model.h"
#include "zvosutil.h"

namespace {

// The document with the code set declared; what was not found gives the text "".
std::string model(const std::string& document, const std::string& charset) {
    const std::string head = test::cut(document, 80);
    const auto behind = [&](size_t from, const std::string& mark) {
        if (from == head.npos)
            return from;
        const long at = test::Characters(head.substr(from)).find_text(mark, false);
        return at < 0 ? head.npos : from + static_cast<size_t>(at) + mark.size();
    };
    const size_t attribute = behind(0, "encoding="), value = behind(attribute, "\"");
    const size_t end = behind(value, "\""), declaration = behind(end, "?>");
    if (declaration == head.npos || behind(0, "?xml version=") == head.npos)
        return "";
    const size_t rest = std::min(document.find_first_not_of(' ', declaration), document.size());
    return document.substr(0, attribute) + "\"" + charset + "\"" +
           document.substr(end, declaration - end) + document.substr(rest);
}

std::string charset_of(int code_set) {
    char name[22];
    SetCharset(name, code_set);
    static const std::map<std::string, std::string> windows = {{"iso-8859-1", "windows-1252"},
                                                               {"iso-8859-2", "windows-1250"},
                                                               {"iso-8859-4", "windows-1257"},
                                                               {"iso-8859-5", "windows-1251"},
                                                               {"iso-8859-7", "windows-1253"}};
    return windows.contains(name) ? windows.at(name) : name;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    InitMbutilExt(input.one_of(test::kCodeSets));
    const int code_set = input.below(70);
    // A document of any size begins with a declaration, or with a part of one.
    const std::string head = input.text(), text = head + input.text_of_any_size();
    std::string expected = model(text, charset_of(code_set));
    fuzz::Text document(text);
    char* result = document.data();
    const auto declare = [&] { SetEncodingForXMLDoc(document.data(), code_set, &result); };
    if (fuzz::without_its_memory(declare))
        fuzz::same(result, nullptr, "without memory");
    free(result);
    declare();
    fuzz::same(document.text(), text, "the document stays");
    fuzz::same(result != nullptr, !expected.empty(), "whether a declaration is found");
    // All of the block is there to be read, zero behind the text.
    expected.resize(text.size() + 80);
    if (result != nullptr)
        fuzz::same(std::string(result, expected.size()), expected, "SetEncodingForXMLDoc");
    free(result);
    SetEncodingForXMLDoc(nullptr, code_set, &result);
    fuzz::same(result, nullptr, "no document");
    return 0;
}
