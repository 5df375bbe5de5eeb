// Whole files and records: a file converted against stdio with iconv, a currency list against the C
// library's string functions.
#include <iconv.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "bench.h"
#include "mbutil.h"
#include "zvosutil.h"

namespace bench {
namespace {

constexpr size_t kFileSize = 1024 * 1024;
constexpr size_t kCurrencies = 180; // about as many as there are

class File {
public:
    explicit File(const std::string& text) {
        const int descriptor = mkstemp(path_);
        if (descriptor < 0 ||
            write(descriptor, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
            fail("no temporary file");
        close(descriptor);
    }
    ~File() { unlink(path_); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    const char* path() const { return path_; }

private:
    char path_[sizeof P_tmpdir "/zvutil_bench.XXXXXX"] = P_tmpdir "/zvutil_bench.XXXXXX";
};

struct Files {
    File in{text_of("SJIS", kJapanese, kFileSize)};
    File out{""};
};

// The job as a host would write it.
void convert_file(const Files& files) {
    constexpr size_t kBlock = 65536;
    std::FILE* in = std::fopen(files.in.path(), "rb");
    std::FILE* out = std::fopen(files.out.path(), "wb");
    const iconv_t converter = iconv_open("EUC-JP", "SJIS");
    char text[kBlock];
    char converted[2 * kBlock];
    for (size_t left = 0, got; (got = std::fread(text + left, 1, kBlock - left, in)) != 0;) {
        char* in_at = text;
        char* out_at = converted;
        size_t room = sizeof converted;
        left += got;
        iconv(converter, &in_at, &left, &out_at, &room);
        std::fwrite(converted, 1, sizeof converted - room, out);
        std::memmove(text, in_at, left);
    }
    iconv_close(converter);
    std::fclose(in);
    std::fclose(out);
}

std::string currency_text() {
    std::string text = std::to_string(kCurrencies) + '\\';
    for (size_t i = 0; i < kCurrencies; ++i)
        text += {'C', static_cast<char>('A' + i / 26), static_cast<char>('A' + i % 26), '\\', '2',
                 '\\'};
    return text;
}

void load_with_strtok(const std::string& text) {
    std::string copy = text;
    char* rest = nullptr;
    const size_t count = std::strtoul(strtok_r(copy.data(), "\\", &rest), nullptr, 10);
    auto* details = static_cast<CurrencyDetail*>(std::calloc(count, sizeof(CurrencyDetail)));
    for (size_t i = 0; i < count; ++i) {
        std::strncpy(details[i].code, strtok_r(nullptr, "\\", &rest), 3);
        details[i].value = std::atoi(strtok_r(nullptr, "\\", &rest));
    }
    benchmark::DoNotOptimize(details);
    std::free(details);
}

} // namespace

void add_services() {
    const auto with_files = [](auto convert) {
        return [=] {
            return [=, files = std::make_shared<Files>()] {
                InitMbutilExt(ZV_EUC);
                convert(*files);
            };
        };
    };
    Row("services", "mbconvertfile2native_ex", "a file of prose", kFileSize, "byte")
        .measure("zvutil", with_files([](const Files& files) {
                     mbconvertfile2native_ex(files.in.path(), files.out.path(), 0, ZV_SJIS);
                 }))
        .measure("libc", with_files(convert_file));
    Row("services", "LoadCurrencyDetailList", "a list of currencies", kCurrencies, "record")
        .measure("zvutil",
                 [] {
                     InitMbutilExt(ZV_SJIS);
                     return [text = currency_text()] {
                         CurrencyDetailList list;
                         if (LoadCurrencyDetailList(text.c_str(), &list) != 0)
                             fail("LoadCurrencyDetailList");
                         std::free(list.details);
                     };
                 })
        .measure("libc", [] { return [text = currency_text()] { load_with_strtok(text); }; });
}

} // namespace bench
