#include <cstdlib>
#include <cstring>

#include "osutils.h"

namespace zv {
namespace {

constexpr char kSystemCatalogues[] = "/usr/lib/locale/%L/LC_MESSAGES/%N";

bool is_missing(const char* value) {
    return value == nullptr || *value == '\0';
}

// Adds the system's catalogues behind the host's own. The environment keeps the block.
void append_system_catalogues(const char* own) {
    constexpr char kName[] = "NLSPATH=";
    const size_t size = sizeof kName + std::strlen(own) + sizeof kSystemCatalogues;
    char* entry = static_cast<char*>(std::malloc(size));
    if (entry == nullptr)
        return;
    char* end = stpcpy(stpcpy(entry, kName), own);
    *end++ = ':';
    std::memcpy(end, kSystemCatalogues, sizeof kSystemCatalogues);
    if (putenv(entry) != 0)
        std::free(entry);
}

} // namespace
} // namespace zv

void OSInitLanguage() {
    if (zv::is_missing(std::getenv("LANG")))
        setenv("LANG", "C", 1);
    const char* catalogues = std::getenv("NLSPATH");
    if (zv::is_missing(catalogues))
        setenv("NLSPATH", zv::kSystemCatalogues, 1);
    else
        zv::append_system_catalogues(catalogues);
}
