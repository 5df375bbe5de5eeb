#include <algorithm>
#include <cctype>
#include <cstring>
#include <string_view>

#include "mbutil.h"
#include "osutils.h"
#include "platform/machine_query.h"
#include "share/i18n/mbutil/ascii.h"
#include "zvosutil.h"

char serverNameFromConfig[65];

namespace zv {
namespace {

constexpr unsigned kLongestName = 64;
using Name = char[kLongestName + 1];

Name hostname_with_domain;
Name hostname_no_domain;

// The official name of a host, null when the look-up fails. It stands in this object.
class OfficialName {
public:
    explicit OfficialName(const char* name) {
        int error;
        const hostent* found = OSGetHostByName(name, &entry_, buffer_, sizeof buffer_, &error);
        text_ = found != nullptr ? found->h_name : nullptr;
    }
    OfficialName(const OfficialName&) = delete;
    OfficialName& operator=(const OfficialName&) = delete;

    const char* text() const { return text_; }
    // Leaves out a character that the end of the room would cut.
    void copy_to(char* out) const {
        mbstrncpy(out, text_, kLongestName);
        out[kLongestName] = '\0';
    }

private:
    hostent entry_;
    char buffer_[1024];
    const char* text_;
};

void copy_name(char* out, std::string_view name) {
    std::memcpy(out, name.data(), name.size());
    out[name.size()] = '\0';
}

// Empty without a configured name. Never longer than a name, even if the host program forgot the
// terminator.
std::string_view configured_server_name() {
    return {serverNameFromConfig, strnlen(serverNameFromConfig, kLongestName)};
}

// From the first dot to the end; a dot is never part of a longer character.
std::string_view domain_of(std::string_view full_name) {
    full_name.remove_prefix(std::min(full_name.find('.'), full_name.size()));
    return full_name;
}

// The configured name with the domain behind it, or false with the configured name alone when both
// do not fit.
bool compose_server_name(char* out, std::string_view configured, std::string_view domain) {
    copy_name(out, configured);
    if (configured.size() + domain.size() > kLongestName)
        return false;
    copy_name(out + configured.size(), domain);
    return true;
}

// Host names know the letter case of ASCII whatever the locale; other letters follow it.
int fold(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x80 ? ascii_lower(c) : std::tolower(byte);
}

bool same_name(const char* name, std::string_view other) {
    const size_t length = std::strlen(name);
    if (length != other.size())
        return false;
    for (size_t i = 0, step; i < length; i += step) {
        step = static_cast<size_t>(mbbytesinchar(name + i));
        const bool same = step == 1 ? fold(name[i]) == fold(other[i])
                                    : std::memcmp(name + i, &other[i], step) == 0;
        if (!same)
            return false;
    }
    return true;
}

bool is_among(const char* name, const NameList& list) {
    return std::any_of(list.names, list.names + list.count,
                       [name](const char* other) { return same_name(name, other); });
}

} // namespace
} // namespace zv

int InitHostnameWithDomain() {
    zv::Name name;
    zv::query_machine(zv::MachineQuery::kNodeName, name);
    const zv::OfficialName official(name);
    if (official.text() != nullptr)
        official.copy_to(name);
    // Resolved aside and not stored again while it stays the same: readers never meet another name.
    if (std::strcmp(zv::hostname_with_domain, name) != 0)
        std::strcpy(zv::hostname_with_domain, name);
    return official.text() != nullptr;
}

int OSGetHostnameWithDomain(char* out) {
    if (zv::hostname_with_domain[0] == '\0' && InitHostnameWithDomain() == 0)
        return 0;
    zv::copy_name(out, zv::hostname_with_domain);
    return 1;
}

int OSGetRemoteHostnameWithDomain(const char* name, char* out) {
    const zv::OfficialName official(name);
    if (official.text() == nullptr)
        return 0;
    official.copy_to(out);
    return 1;
}

int OSGetServerNameWithDomain(char* out) {
    zv::Name full_name;
    if (OSGetHostnameWithDomain(full_name) == 0)
        return 0;
    const std::string_view configured = zv::configured_server_name();
    if (configured.empty()) {
        zv::copy_name(out, full_name);
        return 1;
    }
    return zv::compose_server_name(out, configured, zv::domain_of(full_name));
}

void InitHostnameNoDomain() {
    zv::query_machine(zv::MachineQuery::kNodeName, zv::hostname_no_domain);
}

void OSGetHostnameNoDomain(char* out) {
    if (zv::hostname_no_domain[0] == '\0')
        InitHostnameNoDomain();
    zv::copy_name(out, zv::hostname_no_domain);
}

void OSGetServerNameNoDomain(char* out) {
    const std::string_view configured = zv::configured_server_name();
    if (configured.empty())
        OSGetHostnameNoDomain(out);
    else
        zv::copy_name(out, configured);
}

int OSCheckHostnameUsingAlias(const char* name, const char* expected) {
    const bool expects_one = expected != nullptr && *expected != '\0';
    const std::string_view configured = zv::configured_server_name();
    if (expects_one && !configured.empty())
        return configured == name;
    const zv::OfficialName official(name);
    if (official.text() == nullptr)
        return 0;
    return !expects_one || zv::same_name(official.text(), expected);
}

int IsCurrentServerName(const char* name, const NameList* list) {
    if (name == nullptr || *name == '\0')
        return 0;
    if (std::strcmp(name, "@") == 0)
        return 1;
    if (std::strcmp(name, "*") == 0 || *name == '$')
        return 0;
    if (list != nullptr && zv::is_among(name, *list))
        return 1;
    const std::string_view configured = zv::configured_server_name();
    if (!configured.empty() && zv::same_name(name, configured))
        return 1;

    zv::Name full_name;
    if (OSGetHostnameWithDomain(full_name) == 0)
        return 0;
    if (zv::same_name(name, full_name))
        return 1;
    const std::string_view domain = zv::domain_of(full_name);
    if (!domain.empty()) {
        zv::Name server_name;
        if (!configured.empty()) {
            if (!zv::compose_server_name(server_name, configured, domain))
                return 0;
            if (zv::same_name(name, server_name))
                return 1;
        }
        if (zv::same_name(name, {full_name, static_cast<size_t>(domain.data() - full_name)}))
            return 1;
    }

    // All that is known here differs; the network may still know the name as this machine's.
    const zv::OfficialName official(name);
    return official.text() != nullptr && zv::same_name(official.text(), full_name);
}
