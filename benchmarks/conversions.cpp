// The converters against glibc's iconv and ICU; strlen and memcpy of the source are the floor.
#include <iconv.h>
#include <unicode/ucnv.h>

#include <cstring>
#include <memory>
#include <span>

#include "bench.h"
#include "jaconv.h"

namespace bench {
namespace {

struct Conversion {
    const char* name;
    const char* from; // as iconv and ICU name it
    const char* to;
    char* (*convert)(const char*, char*);
};

struct Sample {
    const char* name;
    std::string_view text;
};

constexpr Conversion kJapaneseConversions[] = {
    {"shift2eucx", "SJIS", "EUC-JP", shift2eucx},
    {"euc2shiftx", "EUC-JP", "SJIS", euc2shiftx},
    {"shift2jisx", "SJIS", "ISO-2022-JP", shift2jisx},
    {"euc2jisx", "EUC-JP", "ISO-2022-JP", euc2jisx},
    {"jis2shiftx", "ISO-2022-JP", "SJIS", jis2shiftx},
    {"jis2eucx", "ISO-2022-JP", "EUC-JP", jis2eucx},
};
constexpr Conversion kChineseConversions[] = {
    {"big2euchx", "BIG5", "EUC-TW", big2euchx},
    {"euch2bigx", "EUC-TW", "BIG5", euch2bigx},
};
constexpr Conversion kRussianConversions[] = {
    {"c8859_5To1251x", "ISO-8859-5", "CP1251", c8859_5To1251x},
    {"c1251To8859_5x", "CP1251", "ISO-8859-5", c1251To8859_5x},
};
constexpr Conversion kPolishConversions[] = {
    {"c8859_2To1250x", "ISO-8859-2", "CP1250", c8859_2To1250x},
    {"c1250To8859_2x", "CP1250", "ISO-8859-2", c1250To8859_2x},
};

constexpr size_t kSizes[] = {48, 4 * 1024, 64 * 1024}; // a name, a letter, a document
constexpr size_t kFileSize = 16 * 1024 * 1024;

// A source text and room for its conversion, which a peer extends by its own state.
struct Texts {
    Texts(const Conversion& conversion, std::string_view sample, size_t size)
        : source(text_of(conversion.from, sample, size)), out(source, source.size() * 5 + 16) {}

    std::string source;
    Room out;
};

class Zvutil : Texts {
public:
    Zvutil(const Conversion& conversion, std::string_view sample, size_t size)
        : Texts(conversion, sample, size), convert_(conversion.convert) {}
    void operator()() { convert_(source.c_str(), out.data()); }

private:
    char* (*convert_)(const char*, char*);
};

class Iconv : Texts {
public:
    Iconv(const Conversion& conversion, std::string_view sample, size_t size)
        : Texts(conversion, sample, size),
          converter_(iconv_open(conversion.to, conversion.from), iconv_close) {}
    void operator()() {
        char* in_at = source.data();
        size_t in_left = source.size();
        char* out_at = out.data();
        size_t out_left = out.size();
        iconv(converter_.get(), nullptr, nullptr, nullptr, nullptr);
        if (iconv(converter_.get(), &in_at, &in_left, &out_at, &out_left) ==
            static_cast<size_t>(-1))
            fail("iconv");
        iconv(converter_.get(), nullptr, nullptr, &out_at, &out_left);
    }

private:
    std::unique_ptr<void, int (*)(iconv_t)> converter_;
};

class Icu : Texts {
public:
    Icu(const Conversion& conversion, std::string_view sample, size_t size)
        : Texts(conversion, sample, size), from_(open(conversion.from)), to_(open(conversion.to)) {}
    void operator()() {
        UErrorCode error = U_ZERO_ERROR;
        const char* in_at = source.data();
        char* out_at = out.data();
        UChar pivot[1024];
        UChar* pivot_source = pivot;
        UChar* pivot_target = pivot;
        ucnv_convertEx(to_.get(), from_.get(), &out_at, out_at + out.size(), &in_at,
                       in_at + source.size(), pivot, &pivot_source, &pivot_target, std::end(pivot),
                       true, true, &error);
        if (U_FAILURE(error))
            fail("ICU");
    }

private:
    using Converter = std::unique_ptr<UConverter, void (*)(UConverter*)>;
    static Converter open(const char* name) {
        UErrorCode error = U_ZERO_ERROR;
        return {ucnv_open(name, &error), ucnv_close};
    }

    Converter from_;
    Converter to_;
};

struct Floor : Texts {
    using Texts::Texts;
    void operator()() { std::memcpy(out.data(), source.c_str(), std::strlen(source.c_str()) + 1); }
};

template <class Peer>
auto maker(Conversion conversion, std::string_view sample, size_t size) {
    return [=] { return Peer(conversion, sample, size); };
}

void add(const Conversion& conversion, const Sample& sample, size_t size) {
    Row("conversions", conversion.name, sample.name, size, "byte")
        .measure("zvutil", maker<Zvutil>(conversion, sample.text, size))
        .measure("iconv", maker<Iconv>(conversion, sample.text, size))
        .measure("ICU", maker<Icu>(conversion, sample.text, size))
        .measure("strlen+memcpy", maker<Floor>(conversion, sample.text, size));
}

void require_same_result(const Conversion& conversion, const Sample& sample) {
    Texts texts(conversion, sample.text, 4 * 1024);
    conversion.convert(texts.source.c_str(), texts.out.data());
    if (bench::convert(conversion.to, "UTF-8", texts.out.data()) !=
        bench::convert(conversion.from, "UTF-8", texts.source))
        fail(std::string(conversion.name) + " and iconv differ");
}

// How long a text becomes, which the peers learn by converting it.
class Length : Texts {
public:
    Length(const Conversion& conversion, int (*length)(const char*), size_t size)
        : Texts(conversion, kJapanese, size), length_(length) {}
    void operator()() { benchmark::DoNotOptimize(length_(source.c_str())); }

private:
    int (*length_)(const char*);
};

void add_length(const char* name, int (*length)(const char*), const Conversion& conversion) {
    for (const size_t size : kSizes)
        Row("conversions", name, "prose", size, "byte")
            .measure("zvutil", [=] { return Length(conversion, length, size); })
            .measure("iconv", maker<Iconv>(conversion, kJapanese, size))
            .measure("ICU", maker<Icu>(conversion, kJapanese, size))
            .measure("strlen+memcpy", maker<Floor>(conversion, kJapanese, size));
}

// The first sample of the first conversion in the size of a large file too.
void add_all(std::span<const Conversion> conversions, std::initializer_list<Sample> samples) {
    for (const Conversion& conversion : conversions) {
        for (const Sample& sample : samples) {
            require_same_result(conversion, sample);
            for (const size_t size : kSizes)
                add(conversion, sample, size);
        }
    }
    add(conversions.front(), *samples.begin(), kFileSize);
}

} // namespace

void add_conversions() {
    add_all(kJapaneseConversions, {{"prose", kJapanese}, {"kanji", kKanji}, {"ASCII", kAscii}});
    add_all(kChineseConversions, {{"prose", kChinese}, {"hanzi", kHanzi}});
    add_all(kRussianConversions, {{"prose", kRussian}});
    add_all(kPolishConversions, {{"prose", kPolish}});
    for (const Conversion& conversion : {kJapaneseConversions[0], kJapaneseConversions[1]}) {
        require_same_result(conversion, {"katakana", kKatakana});
        for (const size_t size : kSizes)
            add(conversion, {"katakana", kKatakana}, size);
    }
    add_length("eucLength", eucLength, kJapaneseConversions[0]);
    add_length("shiftLength", shiftLength, kJapaneseConversions[1]);
    for (const Conversion& to_or_from_jis : {kJapaneseConversions[3], kJapaneseConversions[5]})
        add(to_or_from_jis, {"prose", kJapanese}, kFileSize);
}

} // namespace bench
