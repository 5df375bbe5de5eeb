#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <string_view>

#include "configuration_file.h"
#include "osutils.h"

namespace zv {
namespace {

constexpr size_t kLongestPath = 255;
// A cache is empty while its first byte is zero.
using Path = char[kLongestPath + 1];

Path zv_install_path;
Path config_path;
Path config_file;
Path db_config_file;
Path audit_config_file;
Path zvq_dir_file;
Path zv_server_db_path;
Path monitor_config_file;

constexpr std::string_view kSeparator = "/";
constexpr std::string_view kConfigDirectory = "/conf";
constexpr std::string_view kLongestFileName = "zvaudit.conf";

// With these, every path that is composed from a directory fits.
constexpr size_t kLongestConfigPath = kLongestPath - kSeparator.size() - kLongestFileName.size();
constexpr size_t kLongestInstallPath = kLongestConfigPath - kConfigDirectory.size();

// Composes a path whole, or leaves it as it is and answers false when it does not fit.
bool compose(Path& path, std::initializer_list<std::string_view> parts) {
    size_t length = 0;
    for (const std::string_view part : parts)
        length += part.size();
    if (length > kLongestPath)
        return false;
    char* end = path;
    for (const std::string_view part : parts) {
        std::memmove(end, part.data(), part.size()); // a part may be the path itself
        end += part.size();
    }
    *end = '\0';
    return true;
}

// Empty when the variable is absent or too long.
std::string_view environment_setting(const char* name, size_t longest) {
    const char* value = std::getenv(name);
    if (value == nullptr || strnlen(value, longest + 1) > longest)
        return {};
    return value;
}

std::string_view configured_directory() {
    return environment_setting("ZVCONFIGDIR", kLongestConfigPath);
}

const char* in_config_directory(Path& path, std::string_view file_name) {
    if (path[0] == '\0')
        compose(path, {OSGetZVConfigPath(), kSeparator, file_name});
    return path;
}

} // namespace
} // namespace zv

void SetZVInstallPath(const char* directory) {
    if (directory == nullptr || *directory == '\0')
        return;
    const std::string_view install_path = directory;
    if (zv::configured_directory().empty() && install_path.size() > zv::kLongestInstallPath)
        return;
    if (!zv::compose(zv::zv_install_path, {install_path}))
        return;
    for (char* cache : {zv::config_path, zv::config_file, zv::db_config_file, zv::audit_config_file,
                        zv::zv_server_db_path})
        *cache = '\0';
    OSGetZVInstallPath();
    OSGetZVConfigPath();
    OSGetServerConfigPath();
    OSGetDBConfigPath();
    OSGetServerDbPath();
}

const char* OSGetZVInstallPath() {
    if (zv::zv_install_path[0] == '\0')
        zv::compose(zv::zv_install_path, {"/usr/zv"});
    return zv::zv_install_path;
}

const char* OSGetZVConfigPath() {
    if (zv::config_path[0] == '\0') {
        const std::string_view configured = zv::configured_directory();
        if (!configured.empty())
            zv::compose(zv::config_path, {configured});
        else
            zv::compose(zv::config_path, {OSGetZVInstallPath(), zv::kConfigDirectory});
    }
    return zv::config_path;
}

const char* OSGetServerConfigPath() {
    return zv::in_config_directory(zv::config_file, "zv.conf");
}

const char* OSGetDBConfigPath() {
    return zv::in_config_directory(zv::db_config_file, "zvdb.conf");
}

const char* OSGetAuditConfigPath() {
    return zv::in_config_directory(zv::audit_config_file, zv::kLongestFileName);
}

const char* OSGetZVQDirectory() {
    return zv::in_config_directory(zv::zvq_dir_file, "zv");
}

const char* OSGetServerDbPath() {
    if (zv::zv_server_db_path[0] == '\0') {
        char value[zv::kLongestSetting + 1];
        zv::read_setting(OSGetServerConfigPath(), "Server-directory:", value);
        if (value[0] == '\0' || !zv::compose(zv::zv_server_db_path, {value, zv::kSeparator}))
            zv::compose(zv::zv_server_db_path, {"./"});
    }
    return zv::zv_server_db_path;
}

void GetLineFromServerConfigFileDup(const char* key, char* value) {
    zv::read_setting(OSGetServerConfigPath(), key, value);
}

const char* OSGetZVMonitorConfigFile(const void*) {
    if (zv::monitor_config_file[0] == '\0') {
        const std::string_view configured =
            zv::environment_setting("ZVMCONFIGFILE", zv::kLongestPath);
        zv::compose(zv::monitor_config_file,
                    {configured.empty() ? "../conf/zvmonitor.conf" : configured});
    }
    return zv::monitor_config_file;
}

void OSGetDirSeparator(char* out) {
    std::strcpy(out, zv::kSeparator.data());
}

void OSGetEol(char* out) {
    std::strcpy(out, "\n");
}

int InitializeSrvUtil() {
    if (InitHostnameWithDomain() == 0)
        return 0;
    InitHostnameNoDomain();
    OSGetZVConfigPath();
    OSGetServerConfigPath();
    OSGetZVInstallPath();
    OSGetDBConfigPath();
    OSGetZVQDirectory();
    OSGetServerDbPath();
    return 1;
}

void TerminateSrvUtil() {}
