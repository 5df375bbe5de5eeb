// The benchmark suite: every family, the library and its peers, in one program and one run.
#include "bench.h"

#include <glib.h>
#include <gmime/gmime.h>
#include <gnu/libc-version.h>
#include <iconv.h>
#include <unicode/uvernum.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace bench {
namespace {

bool begins_character(char utf8) {
    return (static_cast<unsigned char>(utf8) & 0xC0) != 0x80;
}

// The longest beginning of the sample that fits.
std::string prefix_of(const char* encoding, std::string_view sample, size_t room) {
    for (size_t end = sample.size() - 1; end > 0; --end) {
        if (!begins_character(sample[end]))
            continue;
        std::string text = convert("UTF-8", encoding, sample.substr(0, end));
        if (text.size() <= room)
            return text;
    }
    return {};
}

} // namespace

std::string convert(const char* from, const char* to, std::string_view text) {
    const iconv_t converter = iconv_open(to, from);
    std::string out(text.size() * 5 + 16, '\0');
    char* in_at = const_cast<char*>(text.data());
    size_t in_left = text.size();
    char* out_at = out.data();
    size_t out_left = out.size();
    if (iconv(converter, &in_at, &in_left, &out_at, &out_left) == static_cast<size_t>(-1) ||
        iconv(converter, nullptr, nullptr, &out_at, &out_left) == static_cast<size_t>(-1))
        fail(std::string("iconv from ") + from + " to " + to);
    iconv_close(converter);
    out.resize(out.size() - out_left);
    return out;
}

std::string text_of(const char* encoding, std::string_view sample, size_t size) {
    const std::string whole = convert("UTF-8", encoding, sample);
    std::string text;
    text.reserve(size);
    while (text.size() + whole.size() <= size)
        text += whole;
    text += prefix_of(encoding, sample, size - text.size());
    text.resize(size, ' ');
    return text;
}

Room::Room(const std::string& text, size_t size) : memory_(size + kPage) {
    const auto place = reinterpret_cast<uintptr_t>(text.data()) + kPage / 2;
    offset_ = (place - reinterpret_cast<uintptr_t>(memory_.data())) % kPage;
}

void fail(const std::string& what) {
    std::fprintf(stderr, "zvutil_bench: %s\n", what.c_str());
    std::exit(1);
}

Row::Row(const char* family, std::string_view operation, std::string_view text, size_t size,
         const char* unit, size_t work)
    : name_(std::string(family) + '/' + std::string(operation) + '/' + std::string(text) + '/' +
            std::to_string(size) + '/'),
      work_(work != 0 ? work : size), unit_(unit) {}

} // namespace bench

int main(int argc, char** argv) {
    setenv("LOCPATH", ZVUTIL_BENCH_LOCALES, 1);
    g_mime_init();
    bench::add_conversions();
    bench::add_strings();
    bench::add_growth();
    bench::add_mail();
    bench::add_streams();
    bench::add_list();
    bench::add_services();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
#ifdef __clang__
    benchmark::AddCustomContext("compiler", "Clang " __clang_version__);
#else
    benchmark::AddCustomContext("compiler", "GCC " __VERSION__);
#endif
    benchmark::AddCustomContext("glibc", gnu_get_libc_version());
    benchmark::AddCustomContext("ICU", U_ICU_VERSION);
    benchmark::AddCustomContext("GMime", std::to_string(GMIME_MAJOR_VERSION) + '.' +
                                             std::to_string(GMIME_MINOR_VERSION) + '.' +
                                             std::to_string(GMIME_MICRO_VERSION));
    benchmark::AddCustomContext("GLib", std::to_string(GLIB_MAJOR_VERSION) + '.' +
                                            std::to_string(GLIB_MINOR_VERSION) + '.' +
                                            std::to_string(GLIB_MICRO_VERSION));
    benchmark::RunSpecifiedBenchmarks();
}
