// Names of locales and of hosts, and digits, rewritten in the stated room.
#include <netdb.h>
#include <unistd.h>

#include "input.h"
#include "mbutil.h"
#include "models/strings_model.h"
#include "osutils.h"
#include "zvosutil.h"

using fuzz::convert_in_room, fuzz::same;

// The official names of this machine and of the host "other"; without one it is not found.
static std::string machine, other;
static const std::string node = [] {
    char name[65] = "";
    gethostname(name, 64);
    return std::string(name);
}();

static const std::string& official_name(const std::string& name) {
    static const std::string none;
    return name == node ? machine : name == "other" ? other : none;
}

// A resolver in place of the system's.
extern "C" int gethostbyname_r(const char* name, hostent* entry, char* buffer, size_t length,
                               hostent** found, int* error) {
    const std::string& official = official_name(name);
    *found = nullptr, *error = HOST_NOT_FOUND;
    if (official.size() >= length)
        return ERANGE;
    if (official.empty())
        return 0;
    *entry = {};
    entry->h_name = strcpy(buffer, official.c_str());
    *found = entry;
    return 0;
}

namespace {

bool same_name(const std::string& a, const std::string& b) {
    bool same = a.size() == b.size();
    for (size_t i = 0, step; same && i < a.size(); i += step) {
        step = static_cast<size_t>(mbbytesinchar(&a[i]));
        const auto small = [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; };
        same = step > 1 ? a.compare(i, step, b, i, step) == 0 : small(a[i]) == small(b[i]);
    }
    return same;
}

// Whether a name designates the server that is called so; the machine has that full name.
bool model_of_server(const std::string& name, const std::string& listed,
                     const std::string& configured, const std::string& full) {
    if (name.empty() || name == "*" || name[0] == '$')
        return false;
    const size_t dot = std::min(full.find('.'), full.size());
    const std::string domain = full.substr(dot);
    if (name == "@" || same_name(name, listed) || same_name(name, full))
        return true;
    if (!configured.empty() && same_name(name, configured))
        return true;
    if (!domain.empty() && configured.size() + domain.size() > 64)
        return false;
    if (!domain.empty() && !configured.empty() && same_name(name, configured + domain))
        return true;
    if (!domain.empty() && same_name(name, full.substr(0, dot)))
        return true;
    return !official_name(name).empty() && same_name(official_name(name), full);
}

void check_hosts(fuzz::Input& input) {
    machine = input.text(), other = input.text();
    const std::string configured = input.text().substr(0, 64), listed = input.text();
    const std::string name = input.coin() ? "other" : input.text();
    memset(serverNameFromConfig, 0, 65);
    memcpy(serverNameFromConfig, configured.data(), configured.size());
    const auto cut = [](const std::string& official) {
        return official.substr(0, test::boundary(official, 64));
    };
    const auto resolved = [](const std::string& official) {
        return !official.empty() && official.size() < 1024;
    };
    if (!resolved(machine))
        machine = "";
    if (!resolved(other))
        other = "";
    same(InitHostnameWithDomain(), !machine.empty(), "InitHostnameWithDomain");
    const std::string full = machine.empty() ? node : cut(machine);
    const std::string domain = full.substr(std::min(full.find('.'), full.size()));
    const bool fits = configured.empty() || configured.size() + domain.size() <= 64;

    fuzz::Room out(65);
    same(OSGetServerNameWithDomain(out.data()), fits, "OSGetServerNameWithDomain");
    same(out.text(), configured.empty() ? full : configured + (fits ? domain : ""), "server");
    same(OSGetRemoteHostnameWithDomain("other", out.data()), !other.empty(), "remote host");
    if (!other.empty())
        same(out.text(), cut(other), "OSGetRemoteHostnameWithDomain");
    const char* const names[] = {"none", listed.c_str()};
    const NameList list = {2, names};
    same(IsCurrentServerName(fuzz::Text(name).data(), &list),
         model_of_server(name, listed, configured, full) || same_name(name, "none"),
         "IsCurrentServerName");
    const bool known = !official_name(name).empty();
    same(OSCheckHostnameUsingAlias(name.c_str(), nullptr), known, "OSCheckHostnameUsingAlias");
    same(OSCheckHostnameUsingAlias(name.c_str(), listed.c_str()),
         listed.empty()       ? known
         : configured.empty() ? known && same_name(official_name(name), listed)
                              : name == configured,
         "OSCheckHostnameUsingAlias");
}

// What the current code set's text becomes on its way to another one.
void check_forms(int current, const std::string& text) {
    const auto room = 9 * text.size() + 9;
    const bool grows = current == ZV_SJIS || current == ZV_BIG5;
    std::string other_form(room, '\0');
    convertStrExt(text.c_str(), current, other_form.data(), current == ZV_SJIS ? ZV_EUC : ZV_EUC_H);
    same(MaxStringLengthOnWinAndUnix(text.c_str()),
         grows ? std::max(strlen(other_form.c_str()), text.size()) : text.size(), "both forms fit");
    int sum = 0;
    for (const char c : text)
        sum += static_cast<unsigned char>(c);
    same(AccumulateAsciiForStr(text.c_str()), sum, "of a locale without a converter");
}

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
    if (locale.size() < 90)
        same(corrected(name), name, "a corrected name stays");
    const std::string page = convert_in_room(SetCodePage, locale, 8, "SetCodePage");
    same(mbGetCodeSet(page.c_str()) == ZV_WESTERN, page == "WESTERN" || page == "UTF8", "page");
}

// A character that the table has becomes one byte, all others stay.
std::string model_of_numbers(const std::string& text, const MbToSbNumber* row) {
    std::string out;
    for (size_t i = 0, length; i < text.size(); i += length) {
        length = static_cast<size_t>(mbbytesinchar(&text[i]));
        const std::string character = text.substr(i, length);
        const MbToSbNumber* at = row;
        while (at->mb[0] != 0 && character != reinterpret_cast<const char*>(at->mb))
            ++at;
        out += at->mb[0] != 0 ? std::string(1, at->sb) : character;
    }
    return out;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const struct {
        int code_set;
        const MbToSbNumber* rows;
    } tables[] = {{ZV_SJIS, Mb2SbNumberTableInSJIS}, {ZV_EUC, Mb2SbNumberTableInEUC},
                  {ZV_GB, Mb2SbNumberTableInGB},     {ZV_KSC_5601_92, Mb2SbNumberTableInKSC92},
                  {ZV_BIG5, Mb2SbNumberTableInBIG5}, {ZV_EUC_H, Mb2SbNumberTableInEUC_H}};
    fuzz::Input input(data, size);
    const auto& table = input.one_of(tables);
    InitMbutilExt(table.code_set);
    check_locale(input.text());
    const std::string text = input.text();
    same(convert_in_room(ConvertMBNumberToSBNumber, text, text.size() + 1, "numbers"),
         model_of_numbers(text, table.rows), "ConvertMBNumberToSBNumber");
    check_forms(table.code_set, text);
    check_hosts(input);
    return 0;
}
