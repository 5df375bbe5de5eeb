// All converters: their rules, their room and the lengths told beforehand.
#include "input.h"
#include "models/big5_cns_model.h"
#include "models/japanese_model.h"

using fuzz::same, test::Direction;

namespace {

constexpr Direction kOthers[] = {{"big2euchx", big2euchx, ZV_BIG5, ZV_EUC_H, 2, 1, euchLength},
                                 {"euch2bigx", euch2bigx, ZV_EUC_H, ZV_BIG5, 1, 1, big5Length},
                                 {"c8859_5To1251x", c8859_5To1251x, ZV_8859_5, ZV_CP1251, 1, 1},
                                 {"c1251To8859_5x", c1251To8859_5x, ZV_CP1251, ZV_8859_5, 1, 1},
                                 {"c8859_2To1250x", c8859_2To1250x, ZV_8859_2, ZV_CP1250, 1, 1},
                                 {"c1250To8859_2x", c1250To8859_2x, ZV_CP1250, ZV_8859_2, 1, 1}};

// By the rules, by the rows of the master table, or byte by byte.
std::string model(const Direction& direction, const std::string& text) {
    static const test::Big5CnsModel big5_cns;
    if (direction.from <= ZV_SJIS)
        return test::japanese_model(direction, text);
    if (direction.from == ZV_BIG5)
        return big5_cns.euc_tw_of(text);
    if (direction.from == ZV_EUC_H)
        return big5_cns.big5_of(text);
    std::string out;
    for (const char c : text) {
        const char one[] = {c, '\0'};
        char converted[2];
        out += direction.convert(one, converted);
    }
    return out;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    const size_t which = input.below(12u);
    const Direction& direction = which < 6 ? test::kJapanese[which] : kOthers[which - 6];
    const std::string text = input.text_of_any_size(), expected = model(direction, text);
    const size_t promised = direction.growth * text.size() + direction.extra;
    fuzz::require(expected.size() < promised, direction.name);
    const auto dispatched = [&](const char* src, char* dst) {
        convertStrExt(src, direction.from, dst, direction.to);
    };
    // Two-byte codes that wrap give zero bytes, which end what a caller sees.
    const std::string seen = expected.c_str();
    same(fuzz::convert_in_room(direction.convert, text, expected.size() + 1, direction.name), seen,
         direction.name);
    same(fuzz::convert_in_room(dispatched, text, promised, "convertStrExt"), seen, "convertStrExt");
    fuzz::Text source(text);
    if (direction.length != nullptr) {
        int told = 0;
        fuzz::without_memory([&] { told = direction.length(source.data()); }, "length");
        same(told, expected.size(), "length");
    }
    if (which < 8)
        return 0;
    same(direction.convert(source.data(), source.data()), source.data(), "result");
    same(source.text(), seen, "in place");
    return 0;
}
