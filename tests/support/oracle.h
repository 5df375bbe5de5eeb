#ifndef ZVUTIL_TESTS_ORACLE_H
#define ZVUTIL_TESTS_ORACLE_H

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace test {

// What glibc's iconv makes of a text; nothing when it refuses it. Where there is no converter at
// all, it ends the test, skipped.
std::optional<std::string> iconv_text(const char* from, const char* to, std::string_view text);

// Runs an action in a fresh process with LANG as its only locale variable and the test locales in
// reach, and gives what it returns (0 to 255), or -1 when it did not exit normally.
int in_fresh_locale(const char* lang, const std::function<int()>& action);

// Runs a command line and gives what it wrote on standard output.
std::string output_of(const std::string& command);

} // namespace test

#endif
