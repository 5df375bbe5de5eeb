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

static std::string official_name(const std::string& name) {
    return name == node ? machine : name == "other" ? other : "";
}

// A resolver in place of the system's.
extern "C" int gethostbyname_r(const char* name, hostent* entry, char* buffer, size_t length,
                               hostent** found, int* error) {
    const std::string official = official_name(name);
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
    return test::changed(a, tolower) == test::changed(b, tolower);
}

// Whether a name designates the server that is called so; the machine has that full name.
bool model_of_server(const std::string& name, const std::string& listed,
                     const std::string& configured, const std::string& full) {
    const auto is = [&](const std::string& other) { return same_name(name, other); };
    const std::string host = full.substr(0, full.find('.')), domain = full.substr(host.size());
    if (name.empty() || name[0] == '$' || is("*"))
        return false;
    if (is("@") || is("none") || is(listed) || is(configured) || is(full))
        return true;
    if (configured.size() + domain.size() > 64)
        return false;
    if (is(host) || (!configured.empty() && is(configured + domain)))
        return true;
    const std::string official = official_name(name);
    return !official.empty() && same_name(official, full);
}

void check_hosts(fuzz::Input& input) {
    machine = input.text(), other = input.text();
    const std::string configured = input.text().substr(0, 64), listed = input.text();
    const std::string name = input.coin() ? "other" : input.text();
    strcpy(serverNameFromConfig, configured.c_str());
    same(InitHostnameWithDomain(), !machine.empty(), "InitHostnameWithDomain");
    const std::string full = machine.empty() ? node : test::cut(machine, 64);
    const std::string domain = full.substr(std::min(full.find('.'), full.size()));
    const bool fits = configured.empty() || configured.size() + domain.size() <= 64;

    fuzz::Room out(65);
    same(OSGetServerNameWithDomain(out.data()), fits, "OSGetServerNameWithDomain");
    same(out.text(), configured.empty() ? full : configured + (fits ? domain : ""), "server");
    same(OSGetRemoteHostnameWithDomain("other", out.data()), !other.empty(), "remote host");
    if (!other.empty())
        same(out.text(), test::cut(other, 64), "OSGetRemoteHostnameWithDomain");
    const char* const names[] = {"none", listed.c_str()};
    const NameList list = {2, names};
    same(IsCurrentServerName(fuzz::Text(name).data(), &list),
         model_of_server(name, listed, configured, full), "IsCurrentServerName");
    const std::string official = official_name(name);
    const bool known = !official.empty();
    same(OSCheckHostnameUsingAlias(name.c_str(), nullptr), known, "OSCheckHostnameUsingAlias");
    same(OSCheckHostnameUsingAlias(name.c_str(), listed.c_str()),
         listed.empty()       ? known
         : configured.empty() ? known && same_name(official, listed)
                              : name == configured,
         "OSCheckHostnameUsingAlias");
}

// What the current code set's text becomes on its way to another one.
void check_forms(int current, const std::string& text) {
    const int other_form = current == ZV_SJIS ? ZV_EUC : ZV_EUC_H;
    same(MaxStringLengthOnWinAndUnix(text.c_str()),
         std::max(test::converted(text, current, other_form).size(), text.size()),
         "both forms fit");
    int sum = 0;
    for (const char c : text)
        sum += c & 0xFF;
    same(AccumulateAsciiForStr(text.c_str()), sum, "of a locale without a converter");
}

void check_locale(const std::string& locale) {
    const auto corrected = [](const std::string& name) {
        return convert_in_room(mbGetCorrectedLocaleForUnix, name, 2 * name.size() + 8, "locale");
    };
    const size_t dot = locale.find('.'), at = locale.find('@', dot == locale.npos ? 0 : dot);
    const std::string name = corrected(locale), language = locale.substr(0, std::min(dot, at));
    const std::string modifier = at == locale.npos ? "" : locale.substr(at);
    fuzz::require(name.starts_with(language), "the language stays");
    fuzz::require(name.ends_with(modifier), "the modifier stays");
    if (locale.size() < 90)
        same(corrected(name), name, "a corrected name stays");
    const std::string page = convert_in_room(SetCodePage, locale, 8, "SetCodePage");
    same(mbGetCodeSet(page.c_str()) == ZV_WESTERN, page == "WESTERN" || page == "UTF8", "page");
}

// A character that the table has becomes one byte, all others stay.
std::string model_of_numbers(const std::string& text, const MbToSbNumber* table) {
    std::string out;
    for (const std::string& character : test::characters(text)) {
        const MbToSbNumber* row = table;
        while (row->mb[0] != 0 && character != reinterpret_cast<const char*>(row->mb))
            ++row;
        out += row->mb[0] != 0 ? std::string(1, row->sb) : character;
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
