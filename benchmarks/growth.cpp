// What the costs per byte of searches, steps back and tokenising become as the text grows, on texts
// made to lead a simple search into going over the same bytes again and again. What is looked for
// counts with the text: it may grow as well.
#include <string>

#include "bench.h"
#include "mbutil.h"

namespace bench {
namespace {

// Two lead bytes of a code set; each is a trail byte of it too.
struct CodeSet {
    const char* name;
    int id;
    char a;
    char b;
};

constexpr CodeSet kCodeSets[] = {
    {"EUC", ZV_EUC, '\xA4', '\xA5'},
    {"SJIS", ZV_SJIS, '\x8E', '\x8F'},
    {"BIG5", ZV_BIG5, '\xA4', '\xA5'},
};

constexpr size_t kSizes[] = {1024, 4 * 1024, 16 * 1024};

std::string repeated(std::string_view part, size_t size) {
    std::string text;
    while (text.size() + part.size() <= size)
        text += part;
    return text;
}

struct Texts {
    std::string text;
    std::string wanted; // a needle or a set of characters
};

// One character over and over, and half as many of it with another one behind them.
Texts almost(const CodeSet& c, size_t size) {
    return {repeated(std::string{c.a, c.a}, size),
            repeated(std::string{c.a, c.a}, size / 2) + c.a + c.b};
}

// A character whose bytes stand everywhere in the text, but never begin on a boundary.
Texts straddled(const CodeSet& c, size_t size) {
    return {repeated(std::string{c.a, c.b}, size), std::string{c.b, c.a}};
}

// A needle as above, but long.
Texts long_straddled(const CodeSet& c, size_t size) {
    Texts texts = straddled(c, size);
    texts.wanted = repeated(texts.wanted, size / 4);
    return texts;
}

// Characters that all begin as the text's only one does.
std::string likenesses(const CodeSet& c) {
    std::string set;
    for (char trail = '\xB0'; trail <= '\xFC'; ++trail)
        set += {c.a, trail};
    return set;
}
Texts look_alikes(const CodeSet& c, size_t size) {
    return {repeated(std::string{c.a, c.a}, size), likenesses(c)};
}
Texts many_look_alikes(const CodeSet& c, size_t size) {
    return {repeated(std::string{c.a, c.a}, size), repeated(likenesses(c), size / 4)};
}

// Tokens of one character.
Texts short_tokens(const CodeSet& c, size_t size) {
    return {repeated(std::string{c.a, c.a, ',', c.a, c.a, c.b, c.b}, size), {',', c.b, c.b}};
}

void find_byte(Texts& t) {
    benchmark::DoNotOptimize(mbstrchr(t.text.c_str(), t.wanted.front()));
}
void find_last_byte(Texts& t) {
    benchmark::DoNotOptimize(mbstrrchr(t.text.c_str(), t.wanted.front()));
}
void step_back(Texts& t) {
    benchmark::DoNotOptimize(mbidx(t.text.c_str(), static_cast<unsigned>(t.text.size() - 1)));
}
void find_first(Texts& t) {
    benchmark::DoNotOptimize(mbstrstr(t.text.c_str(), t.wanted.c_str()));
}
void find_last(Texts& t) {
    benchmark::DoNotOptimize(mbstrrstr(t.text.c_str(), t.wanted.c_str()));
}
void find_member(Texts& t) {
    benchmark::DoNotOptimize(mbstrpbrk(t.text.c_str(), t.wanted.c_str()));
}
void tokenise(Texts& t) {
    std::string text = t.text; // it is changed
    char* save;
    for (char* token = mbstrtok_r(text.data(), t.wanted.c_str(), &save); token != nullptr;)
        token = mbstrtok_r(nullptr, t.wanted.c_str(), &save);
}

struct Case {
    const char* operation;
    const char* text;
    void (*run)(Texts&);
    Texts (*make)(const CodeSet&, size_t);
};

constexpr Case kCases[] = {
    {"mbstrchr", "byte off boundaries", find_byte, straddled},
    {"mbstrrchr", "byte off boundaries", find_last_byte, straddled},
    {"mbidx", "lead bytes alone", step_back, almost},
    {"mbstrstr", "needle almost there", find_first, almost},
    {"mbstrstr", "needle off boundaries", find_first, straddled},
    {"mbstrstr", "long needle off boundaries", find_first, long_straddled},
    {"mbstrrstr", "needle almost there", find_last, almost},
    {"mbstrrstr", "needle off boundaries", find_last, straddled},
    {"mbstrpbrk", "set of look-alikes", find_member, look_alikes},
    {"mbstrpbrk", "set that grows too", find_member, many_look_alikes},
    {"mbstrtok_r", "short tokens", tokenise, short_tokens},
};

} // namespace

void add_growth() {
    for (const Case& attack : kCases) {
        for (const CodeSet& code_set : kCodeSets) {
            const std::string text = std::string(code_set.name) + ", " + attack.text;
            for (const size_t size : kSizes) {
                const Texts texts = attack.make(code_set, size);
                const size_t bytes = texts.text.size() + texts.wanted.size();
                Row("growth", attack.operation, text, size, "byte", bytes).measure("zvutil", [=] {
                    InitMbutilExt(code_set.id);
                    return [=, texts = texts]() mutable { attack.run(texts); };
                });
            }
        }
    }
}

} // namespace bench
