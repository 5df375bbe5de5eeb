// The Japanese converters: their rules and their room.
#include "input.h"
#include "models/japanese_model.h"

using fuzz::same;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    const auto& direction = input.one_of(test::kJapanese);
    const std::string text = input.text_of_any_size();
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
    return 0;
}
