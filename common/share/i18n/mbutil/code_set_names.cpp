#include <cstring>
#include <string_view>

#include "ascii.h"
#include "locale_code_set.h"
#include "mbutil.h"
#include "platform/locale_query.h"

namespace zv {
namespace {

// Names are recognised as substrings, so the order decides: the longer name of a family first.
struct CodeSetName {
    char name[12];
    int code_set;
};
constexpr CodeSetName kCodeSetNames[] = {
    {"EUC_H", ZV_EUC_H},
    {"EUC_TW", ZV_EUC_H},
    {"EUC_C", ZV_EUC_C},
    {"EUC_ZH", ZV_EUC_C},
    {"EUC_K", ZV_EUC_K},
    {"EUC", ZV_EUC},
    {"SJIS", ZV_SJIS},
    {"JIS", ZV_JIS},
    {"GB", ZV_GB},
    {"BIG5", ZV_BIG5},
    {"KSC_5601_87", ZV_KSC_5601_87},
    {"KSC_5601_92", ZV_KSC_5601_92},
    {"1250", ZV_CP1250},
    {"1251", ZV_CP1251},
    {"1253", ZV_CP1253},
    {"1254", ZV_CP1254},
    {"1255", ZV_CP1255},
    {"1256", ZV_CP1256},
    {"1257", ZV_CP1257},
    {"1258", ZV_CP1258},
    {"8859_2", ZV_8859_2},
    {"8859_3", ZV_8859_3},
    {"8859_4", ZV_8859_4},
    {"8859_5", ZV_8859_5},
    {"8859_6", ZV_8859_6},
    {"8859_7", ZV_8859_7},
    {"8859_8", ZV_8859_8},
    {"8859_9", ZV_8859_9},
    {"8859_10", ZV_8859_10},
};

// What a locale's name says of its text, by prefix. The first match decides.
struct LocaleRow {
    char prefix[11];
    char name[8];
    int code_set;
};
constexpr LocaleRow kWesternLocale = {"", "WESTERN", ZV_WESTERN};
constexpr LocaleRow kLocales[] = {
    {"cz", "8859_2", ZV_8859_2},     {"cs", "8859_2", ZV_8859_2},   {"hu", "8859_2", ZV_8859_2},
    {"pl", "8859_2", ZV_8859_2},     {"hr", "8859_2", ZV_8859_2},   {"ro", "8859_2", ZV_8859_2},
    {"sh", "8859_2", ZV_8859_2},     {"sl", "8859_2", ZV_8859_2},   {"sq", "8859_2", ZV_8859_2},
    {"sk", "8859_2", ZV_8859_2},     {"ru", "8859_5", ZV_8859_5},   {"bg", "8859_5", ZV_8859_5},
    {"mk", "8859_5", ZV_8859_5},     {"sr", "8859_5", ZV_8859_5},   {"el", "8859_7", ZV_8859_7},
    {"tr", "8859_9", ZV_8859_9},     {"et", "8859_4", ZV_8859_4},   {"lt", "8859_4", ZV_8859_4},
    {"lv", "8859_4", ZV_8859_4},     {"ja", "EUC", ZV_EUC},         {"ko", "EUC_K", ZV_EUC_K},
    {"zh_TW.BIG5", "BIG5", ZV_BIG5}, {"zh_TW", "EUC_H", ZV_EUC_H},  {"zh.GBK", "EUC_C", ZV_EUC_C},
    {"zh", "GB2312", ZV_GB},         {"UTF-8", "UTF8", ZV_WESTERN},
};

// What InitMbutil() makes of the same names; it knows no European languages.
constexpr LocaleRow kNativeLocales[] = {
    {"ja", "", ZV_EUC},      {"jpn", "", ZV_EUC},  {"ko", "", ZV_EUC_K},
    {"zh_tw", "", ZV_EUC_H}, {"zh", "", ZV_EUC_C},
};

template <size_t N>
const LocaleRow& find_locale(const LocaleRow (&rows)[N], const char* locale) {
    for (const LocaleRow& row : rows) {
        if (starts_with_ignoring_case(locale, row.prefix))
            return row;
    }
    return kWesternLocale;
}

template <size_t N>
int code_set_of_process_locale(const LocaleRow (&rows)[N]) {
    char name[64]; // prefixes decide, so a cut name does no harm
    query_locale(name);
    return find_locale(rows, name[0] == '/' ? name + 1 : name).code_set;
}

// NOLINTNEXTLINE(readability-redundant-string-init): an empty view would have no terminator.
constexpr std::string_view kNoCodePage = "";

// The Windows code page of a part of ISO 8859, by the number at the end of its name.
struct Iso8859Part {
    char suffix[4];
    char code_page[7];
};
constexpr Iso8859Part kIso8859Parts[] = {
    {"-13", "cp1257"}, {"_13", "cp1257"}, {"-4", "cp1257"}, {"_4", "cp1257"}, {"-2", "cp1250"},
    {"_2", "cp1250"},  {"-5", "cp1251"},  {"_5", "cp1251"}, {"-7", "cp1253"}, {"_7", "cp1253"},
    {"-9", "cp1254"},  {"_9", "cp1254"},  {"-1", "cp1252"}, {"_1", "cp1252"},
};

bool contains(std::string_view text, const char* part) {
    return text.find(part) != std::string_view::npos;
}

std::string_view code_page_of(std::string_view code_set) {
    if (!contains(code_set, "8859"))
        return kNoCodePage;
    for (const Iso8859Part& part : kIso8859Parts) {
        if (contains(code_set, part.suffix))
            return part.code_page;
    }
    return kNoCodePage;
}

std::string_view code_page_of_process_locale() {
    switch (mbGetLocaleCodeSet()) {
    case ZV_8859_2:
        return "cp1250";
    case ZV_8859_4:
        return "cp1257";
    case ZV_8859_5:
        return "cp1251";
    case ZV_8859_7:
        return "cp1253";
    case ZV_8859_9:
        return "cp1254";
    case ZV_WESTERN:
    case ZV_8859_1:
    case ZV_8859_15:
        return "cp1252";
    default:
        return kNoCodePage;
    }
}

char* append(char* out, std::string_view text) {
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

} // namespace

int native_code_set_of_locale() {
    return code_set_of_process_locale(kNativeLocales);
}

} // namespace zv

int mbGetCodeSet(const char* name) {
    if (name == nullptr || std::strstr(name, "WESTERN") != nullptr)
        return ZV_WESTERN;
    for (const zv::CodeSetName& known : zv::kCodeSetNames) {
        if (std::strstr(name, known.name) != nullptr)
            return known.code_set;
    }
    return ZV_WESTERN;
}

int mbGetLocaleCodeSet() {
    return zv::code_set_of_process_locale(zv::kLocales);
}

void SetCodePage(const char* locale, char* name) {
    std::strcpy(name, zv::find_locale(zv::kLocales, locale).name);
}

void mbGetCorrectedLocaleForUnix(const char* locale, char* out) {
    constexpr size_t kLongestName = 99;
    const size_t size = std::strlen(locale) + 1;
    std::memmove(out, locale, size);
    if (size > kLongestName + 1)
        return;
    char name[kLongestName + 1]; // the output may be the locale itself
    std::memcpy(name, out, size);
    const char* dot = std::strchr(name, '.');
    std::string_view code_set = dot != nullptr ? dot + 1 : name;
    const char* at = std::strchr(code_set.data(), '@');
    const std::string_view modifier = at != nullptr ? at : "";
    code_set.remove_suffix(modifier.size());

    const std::string_view code_page =
        dot != nullptr ? zv::code_page_of(code_set) : zv::code_page_of_process_locale();
    const std::string_view language =
        dot != nullptr ? std::string_view(name, static_cast<size_t>(dot - name)) : code_set;
    out = zv::append(out, language);
    out = zv::append(out, ".");
    out = zv::append(out, code_page.empty() ? code_set : code_page);
    *zv::append(out, modifier) = '\0';
}
