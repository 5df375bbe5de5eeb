// Conversions against their peers: glibc's iconv, ICU, and strlen + memcpy as the floor. Every
// benchmark converts the same text of the same size; compare the rows of one run by their ratio.
#include <benchmark/benchmark.h>
#include <iconv.h>
#include <unicode/ucnv.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "jaconv.h"

namespace {

struct Pair {
    const char* name;
    const char* from; // as iconv and ICU name it
    const char* to;
    char* (*convert)(const char*, char*);
    const char* sample; // UTF-8
};

constexpr const char* kProse = "庭の柿の木に小さな鳥がとまり、朝の光の中で静かに歌った。"
                               "私は窓を開け、Tokyo からの手紙をもう一度読んだ。\n";
constexpr const char* kKanji = "表示予定能力会議東京本社資料説明検討結果報告";
constexpr const char* kAscii = "A small bird sat on the old tree and sang in the morning light.\n";
constexpr const char* kHanzi = "清晨院子裡的老樹上停著一隻小鳥牠看了看我唱起歌來今天是個好日子";
constexpr const char* kCyrillic = "Ранним утром на старую яблоню села птица.\n";
constexpr const char* kPolish = "Wczesnym rankiem na starej jabłoni usiadł mały ptak.\n";

const Pair kPairs[] = {
    {"sjis_to_euc/prose", "SJIS", "EUC-JP", shift2eucx, kProse},
    {"sjis_to_euc/kanji", "SJIS", "EUC-JP", shift2eucx, kKanji},
    {"sjis_to_euc/ascii", "SJIS", "EUC-JP", shift2eucx, kAscii},
    {"euc_to_sjis/prose", "EUC-JP", "SJIS", euc2shiftx, kProse},
    {"euc_to_sjis/kanji", "EUC-JP", "SJIS", euc2shiftx, kKanji},
    {"sjis_to_jis/prose", "SJIS", "ISO-2022-JP", shift2jisx, kProse},
    {"euc_to_jis/prose", "EUC-JP", "ISO-2022-JP", euc2jisx, kProse},
    {"jis_to_sjis/prose", "ISO-2022-JP", "SJIS", jis2shiftx, kProse},
    {"jis_to_euc/prose", "ISO-2022-JP", "EUC-JP", jis2eucx, kProse},
    {"big5_to_euctw/hanzi", "BIG5", "EUC-TW", big2euchx, kHanzi},
    {"euctw_to_big5/hanzi", "EUC-TW", "BIG5", euch2bigx, kHanzi},
    {"8859_5_to_1251/prose", "ISO-8859-5", "CP1251", c8859_5To1251x, kCyrillic},
    {"1251_to_8859_5/prose", "CP1251", "ISO-8859-5", c1251To8859_5x, kCyrillic},
    {"8859_2_to_1250/prose", "ISO-8859-2", "CP1250", c8859_2To1250x, kPolish},
    {"1250_to_8859_2/prose", "CP1250", "ISO-8859-2", c1250To8859_2x, kPolish},
};

std::string with_iconv(iconv_t converter, std::string_view text) {
    std::string out(text.size() * 5 + 16, '\0');
    char* in_at = const_cast<char*>(text.data());
    size_t in_left = text.size();
    char* out_at = out.data();
    size_t out_left = out.size();
    if (iconv(converter, &in_at, &in_left, &out_at, &out_left) == static_cast<size_t>(-1) ||
        iconv(converter, nullptr, nullptr, &out_at, &out_left) == static_cast<size_t>(-1))
        abort();
    out.resize(out.size() - out_left);
    return out;
}

// The sample over and over, in the source encoding, of `size` bytes or a few less: whole
// characters, and closed where the encoding has a shift state.
std::string text_of(const Pair& pair, size_t size) {
    const iconv_t from_utf8 = iconv_open(pair.from, "UTF-8");
    std::vector<std::string_view> characters;
    for (const char* p = pair.sample; *p != '\0';) {
        const char* begin = p++;
        while ((*p & 0xC0) == 0x80)
            ++p;
        characters.emplace_back(begin, p - begin);
    }
    std::string utf8, text;
    for (size_t i = 0;; ++i) {
        utf8 += characters[i % characters.size()];
        // The whole text is encoded anew only near the end, where its exact size counts.
        if (utf8.size() * 3 < size)
            continue;
        std::string longer = with_iconv(from_utf8, utf8);
        if (longer.size() > size)
            break;
        text = std::move(longer);
        const size_t step = (size - text.size()) / 16;
        for (size_t k = 1; k < step; ++k)
            utf8 += characters[++i % characters.size()];
    }
    iconv_close(from_utf8);
    return text;
}

class Peer {
public:
    virtual ~Peer() = default;
    virtual void convert(const std::string& text, char* out, size_t room) = 0;
};

class Zvutil : public Peer {
public:
    explicit Zvutil(const Pair& pair) : convert_(pair.convert) {}
    void convert(const std::string& text, char* out, size_t) override {
        convert_(text.c_str(), out);
    }

private:
    char* (*convert_)(const char*, char*);
};

class Floor : public Peer {
public:
    explicit Floor(const Pair&) {}
    void convert(const std::string& text, char* out, size_t) override {
        memcpy(out, text.c_str(), strlen(text.c_str()) + 1);
    }
};

class Iconv : public Peer {
public:
    explicit Iconv(const Pair& pair) : converter_(iconv_open(pair.to, pair.from)) {}
    ~Iconv() override { iconv_close(converter_); }
    void convert(const std::string& text, char* out, size_t room) override {
        char* in_at = const_cast<char*>(text.data());
        size_t in_left = text.size();
        iconv(converter_, nullptr, nullptr, nullptr, nullptr);
        if (iconv(converter_, &in_at, &in_left, &out, &room) == static_cast<size_t>(-1))
            abort();
        iconv(converter_, nullptr, nullptr, &out, &room);
    }

private:
    iconv_t converter_;
};

class Icu : public Peer {
public:
    explicit Icu(const Pair& pair) {
        UErrorCode error = U_ZERO_ERROR;
        from_ = ucnv_open(pair.from, &error);
        to_ = ucnv_open(pair.to, &error);
        if (U_FAILURE(error))
            abort();
    }
    ~Icu() override {
        ucnv_close(from_);
        ucnv_close(to_);
    }
    void convert(const std::string& text, char* out, size_t room) override {
        UErrorCode error = U_ZERO_ERROR;
        const char* source = text.data();
        UChar pivot[1024];
        UChar* pivot_source = pivot;
        UChar* pivot_target = pivot;
        ucnv_convertEx(to_, from_, &out, out + room, &source, source + text.size(), pivot,
                       &pivot_source, &pivot_target, pivot + 1024, true, true, &error);
        if (U_FAILURE(error))
            abort();
    }

private:
    UConverter* from_;
    UConverter* to_;
};

template <class P>
void run(benchmark::State& state, const Pair* pair) {
    const std::string text = text_of(*pair, static_cast<size_t>(state.range(0)));
    std::vector<char> out(text.size() * 5 + 16);
    P peer(*pair);
    for (auto _ : state) {
        peer.convert(text, out.data(), out.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}

template <class P>
void register_peer(const Pair& pair, const char* peer) {
    const std::string name = std::string(pair.name) + "/" + peer;
    benchmark::RegisterBenchmark(name.c_str(), run<P>, &pair)->Arg(48)->Arg(64 * 1024);
}

} // namespace

int main(int argc, char** argv) {
    for (const Pair& pair : kPairs) {
        register_peer<Zvutil>(pair, "zvutil");
        register_peer<Iconv>(pair, "iconv");
        register_peer<Icu>(pair, "icu");
        register_peer<Floor>(pair, "strlen+memcpy");
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
