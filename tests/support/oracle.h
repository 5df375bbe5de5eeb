#ifndef ZVUTIL_TESTS_ORACLE_H
#define ZVUTIL_TESTS_ORACLE_H

#include <optional>
#include <string>
#include <string_view>

namespace test {

// What glibc's iconv makes of a text; nothing when it refuses it. Where there is no converter at
// all, it ends the test, skipped.
std::optional<std::string> iconv_text(const char* from, const char* to, std::string_view text);

// Runs a command line and gives what it wrote on standard output.
std::string output_of(const std::string& command);

} // namespace test

#endif
