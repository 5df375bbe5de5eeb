// Expects setlocale() to write a mixed locale as the names of its categories with semicolons
// between, the character type first, each with "LC_...=" in front (glibc) or without (musl).
#ifndef ZVUTIL_PLATFORM_LOCALE_QUERY_H
#define ZVUTIL_PLATFORM_LOCALE_QUERY_H

#include <span>

namespace zv {

// Makes the environment's locale the process's, for all categories. A locale that the C library
// cannot load leaves the earlier one.
void adopt_environment_locale();

// Writes the name of the process locale, terminated and cut at the end of `name`. A locale that
// differs by category is given as "/", then the categories' names joined by "/", the character
// type first.
void query_locale(std::span<char> name);

} // namespace zv

#endif
