// What the families of the benchmark suite share: texts, rows and their registration.
#ifndef ZVUTIL_BENCHMARKS_BENCH_H
#define ZVUTIL_BENCHMARKS_BENCH_H

#include <benchmark/benchmark.h>

#include <clocale>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

// Samples in UTF-8. East Asian prose mixes scripts and holds, in Shift-JIS and Big5, characters
// whose second byte is a backslash. The code page converters and quoted-printable take text
// without line ends.
inline constexpr std::string_view kAscii =
    "A small bird sat on the old tree and sang in the morning light.\n";
inline constexpr std::string_view kJapanese =
    "庭の柿の木に小さな鳥がとまり、朝の光の中で静かに歌った。"
    "私は窓を開け、Tokyo からの予定の手紙をもう一度読んだ。\n"
    "東京の本社で能力を表示するソフトの説明会がある。\n";
inline constexpr std::string_view kKanji =
    "表示予定能力会議東京本社資料説明検討結果報告庭木小鳥朝光窓開";
// Half-width katakana among kanji.
inline constexpr std::string_view kKatakana =
    "東京本社のﾌﾟﾛｸﾞﾗﾑ資料説明ﾃｽﾄ結果報告、ｱﾄﾞﾚｽ一覧とﾌｧｲﾙ名を表示する。";
inline constexpr std::string_view kChinese =
    "清晨，院子裡的老樹上停著一隻小鳥，牠看了看我，唱起歌來。"
    "我打開窗子，把 Taipei 寄來的信又讀了一遍，成功的人許下新的願望。\n";
inline constexpr std::string_view kHanzi =
    "清晨院子裡的老樹上停著一隻小鳥牠看了看我唱起歌來今天是個好日子";
inline constexpr std::string_view kRussian = "Ранним утром на старую яблоню села птица. ";
inline constexpr std::string_view kPolish =
    "Wczesnym rankiem na starej jabłoni usiadł mały ptak i zaśpiewał. ";

// A text in another of iconv's encodings, closed where that has a shift state.
std::string convert(const char* from, const char* to, std::string_view text);

// Exactly `size` bytes: the sample over and over in whole characters, filled up with spaces.
std::string text_of(const char* encoding, std::string_view sample, size_t size);

// Room for what is made of a text, half a page away from it: some processors copy ten times more
// slowly between addresses that are nearly equal within their pages, and malloc() picks those.
class Room {
public:
    Room(const std::string& text, size_t size);
    char* data() { return memory_.data() + offset_; }
    size_t size() const { return memory_.size() - offset_; }

private:
    std::vector<char> memory_;
    size_t offset_;
};

// Ends the run: a library or a peer does not do the job that is measured.
[[noreturn]] void fail(const std::string& what);

inline constexpr size_t kPage = 4096;

// Moves what is allocated in its life to other pages each time: some addresses collide in the
// first-level cache, and that shall spoil one repetition rather than all.
class OtherPages {
public:
    OtherPages() : pages_(kPage * (++count_ * 7 % 31)) {}

private:
    static inline size_t count_ = 0;
    std::vector<char> pages_;
};

// One row of the report: an operation on a text, done by the library and by its peers.
class Row {
public:
    // The size is in units: bytes, calls or items. An iteration counts as `work` of them, else as
    // the size.
    Row(const char* family, std::string_view operation, std::string_view text, size_t size,
        const char* unit, size_t work = 0);

    // Measures the callable that `make` returns; what `make` does itself is not measured.
    template <class Make>
    const Row& measure(const char* peer, Make make) const {
        const auto run = [*this, make](benchmark::State& state) {
            std::setlocale(LC_ALL, "C");
            const OtherPages elsewhere;
            auto work = make();
            for ([[maybe_unused]] auto iteration : state) {
                work();
                benchmark::ClobberMemory();
            }
            state.counters["units"] = static_cast<double>(work_);
            state.SetLabel(unit_);
        };
        benchmark::RegisterBenchmark((name_ + peer).c_str(), run);
        return *this;
    }

private:
    std::string name_; // "family/operation/text/size/"
    size_t work_;
    const char* unit_;
};

void add_conversions();
void add_strings();
void add_growth();
void add_mail();
void add_streams();
void add_list();
void add_services();

} // namespace bench

#endif
