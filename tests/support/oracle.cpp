#include "support/oracle.h"

#include <iconv.h>

#include <cstdio>
#include <cstdlib>

namespace test {

std::optional<std::string> iconv_text(const char* from, const char* to, std::string_view text) {
#ifdef ZVUTIL_NO_CONVERTERS
    std::puts("[  SKIPPED ] Skipped: " ZVUTIL_NO_CONVERTERS);
    std::exit(0);
#endif
    const iconv_t converter = iconv_open(to, from);
    if (converter == reinterpret_cast<iconv_t>(-1))
        return std::nullopt;
    std::string out(text.size() * 8 + 16, '\0');
    char *in_at = const_cast<char*>(text.data()), *out_at = out.data();
    size_t in_left = text.size(), out_left = out.size();
    const bool converted =
        iconv(converter, &in_at, &in_left, &out_at, &out_left) != static_cast<size_t>(-1) &&
        iconv(converter, nullptr, nullptr, &out_at, &out_left) != static_cast<size_t>(-1);
    iconv_close(converter);
    if (!converted)
        return std::nullopt;
    out.resize(out.size() - out_left);
    return out;
}

std::string output_of(const std::string& command) {
    std::string text;
    FILE* pipe = popen(command.c_str(), "r");
    char buffer[4096];
    for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        text.append(buffer, n);
    pclose(pipe);
    return text;
}

} // namespace test
