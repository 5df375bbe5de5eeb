#include <cstdlib>
#include <cstring>

#include "osutils.h"

namespace zv {
namespace {

constexpr char kSystemCatalogues[] = "/usr/lib/locale/%L/LC_MESSAGES/%N";

bool is_missing(const char* value) {
    return value == nullptr || *value == '\0';
}

// Adds the system's catalogues behind the host's own.
void append_system_catalogues(const char* own) {
    char* both = static_cast<char*>(std::malloc(std::strlen(own) + 1 + sizeof kSystemCatalogues));
    if (both == nullptr)
        return;
    char* end = stpcpy(both, own);
    *end++ = ':';
    std::memcpy(end, kSystemCatalogues, sizeof kSystemCatalogues);
    setenv("NLSPATH", both, 1);
    std::free(both);
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
