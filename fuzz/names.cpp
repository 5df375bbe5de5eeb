// Names of locales, and digits, rewritten in the stated room.
#include "input.h"
#include "mbutil.h"

using fuzz::convert_in_room, fuzz::same;

namespace {

void check_locale(const std::string& locale) {
    const auto corrected = [](const std::string& name) {
        fuzz::Text source(name);
        fuzz::Room room(2 * name.size() + 8);
        mbGetCorrectedLocaleForUnix(source.data(), room.data());
        return room.text();
    };
    const size_t dot = std::min(locale.find('.'), locale.size());
    const size_t at = std::min(locale.find('@', dot < locale.size() ? dot : 0), locale.size());
    const std::string name = corrected(locale), language = locale.substr(0, std::min(dot, at));
    fuzz::require(name.starts_with(language), "the language stays");
    fuzz::require(name.ends_with(locale.substr(at)), "the modifier stays");
    if (locale.size() < 90) same(corrected(name), name, "a corrected name stays");
    const std::string page = convert_in_room(SetCodePage, locale, 8, "SetCodePage");
    same(mbGetCodeSet(page.c_str()) == ZV_WESTERN, page == "WESTERN" || page == "UTF8", "page");
}

// The ten digits come first and follow each other in every code set.
void check_digits(const MbToSbNumber* table, const char* zero) {
    for (int i = 0; i < 10; ++i) {
        const std::string digit = {zero[0], static_cast<char>(zero[1] + i)};
        same(std::string(reinterpret_cast<const char*>(table[i].mb)), digit, "full-width digit");
        same(table[i].sb, '0' + i, "ASCII digit");
    }
}

// A character that the table has becomes one byte, all others stay.
std::string model_of_numbers(const std::string& text, const MbToSbNumber* row) {
    std::string out;
    for (size_t i = 0, length; i < text.size(); i += length) {
        length = static_cast<size_t>(mbbytesinchar(&text[i]));
        const std::string character = text.substr(i, length);
        const MbToSbNumber* at = row;
        while (at->mb[0] != 0 && character != reinterpret_cast<const char*>(at->mb)) ++at;
        out += at->mb[0] != 0 ? std::string(1, at->sb) : character;
    }
    return out;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const struct {
        int code_set;
        const MbToSbNumber* rows;
        const char* zero;
    } tables[] = {{ZV_SJIS, Mb2SbNumberTableInSJIS, "\x82\x4F"},
                  {ZV_EUC, Mb2SbNumberTableInEUC, "\xA3\xB0"},
                  {ZV_GB, Mb2SbNumberTableInGB, "\xA3\xB0"},
                  {ZV_KSC_5601_92, Mb2SbNumberTableInKSC92, "\xA3\xB0"},
                  {ZV_BIG5, Mb2SbNumberTableInBIG5, "\xA2\xAF"},
                  {ZV_EUC_H, Mb2SbNumberTableInEUC_H, "\xA2\xAF"}};
    fuzz::Input input(data, size);
    const auto& table = input.one_of(tables);
    InitMbutilExt(table.code_set);
    check_digits(table.rows, table.zero);
    check_locale(input.text());
    const std::string text = input.text();
    same(convert_in_room(ConvertMBNumberToSBNumber, text, text.size() + 1, "numbers"),
         model_of_numbers(text, table.rows), "ConvertMBNumberToSBNumber");
    return 0;
}
