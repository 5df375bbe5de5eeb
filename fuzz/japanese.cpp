// The Japanese converters: their rules and their room, and the way back.
#include "input.h"
#include "models/japanese_model.h"

using fuzz::same;

// Whether all of a text is ASCII and two-byte characters that stand for themselves: of Shift-JIS,
// 7F is a second name of the trail byte 80. Control bytes would end two-byte text.
static bool is_plain(const std::string& text, int code_set) {
    for (size_t i = 0; i < text.size();) {
        const int length = mblenExt(&text[i], 4, code_set);
        const bool katakana = length == 1 && (text[i] & 0x80) != 0;
        const bool ss2 = code_set == ZV_EUC && (text[i] == '\x8E' || text[i] == '\x8F');
        if (length < 1 || katakana || ss2 || text[i] == '\x1B') return false;
        if (length == 2 && text[i + 1] == '\x7F') return false;
        i += static_cast<size_t>(length);
    }
    return true;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    const auto& direction = input.one_of(test::kJapanese);
    std::string text = input.text();
    if (text.size() % 50 == 49) text = fuzz::repeated(text, text.size());
    const std::string expected = test::japanese_model(direction, text);
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
    if (direction.convert == shift2eucx)
        same(eucLength(source.data()), expected.size(), "eucLength");
    if (direction.convert == euc2shiftx)
        same(shiftLength(source.data()), expected.size(), "shiftLength");
    if (direction.from == ZV_JIS || !is_plain(text, direction.from)) return 0;
    for (const auto& back : test::kJapanese) {
        if (back.from != direction.to || back.to != direction.from) continue;
        same(fuzz::convert_in_room(back.convert, expected, text.size() + 1, back.name), text,
             "there and back");
    }
    return 0;
}
