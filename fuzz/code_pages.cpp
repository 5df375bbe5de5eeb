// The single-byte code pages: byte by byte, in place, in exact room, and there and back.
#include "input.h"
#include "jaconv.h"
#include "mbutil.h"

using fuzz::same;

namespace {

using Convert = char* (*)(const char*, char*);
const struct {
    int iso, windows;
    Convert to_windows, to_iso;
    char last_control; // of those that stand for Windows characters in ISO text
} kPairs[] = {{ZV_8859_5, ZV_CP1251, c8859_5To1251x, c1251To8859_5x, 0x0E},
              {ZV_8859_2, ZV_CP1250, c8859_2To1250x, c1250To8859_2x, 0x0A}};

std::string converted(Convert convert, const std::string& text) {
    fuzz::Text in_place(text);
    same(convert(in_place.data(), in_place.data()), in_place.data(), "result");
    same(fuzz::convert_in_room(convert, text, text.size() + 1, "converter"), in_place.text(),
         "in place");
    std::string by_bytes;
    for (const char c : text) {
        const char one[] = {c, '\0'};
        char out[2];
        by_bytes += convert(one, out);
    }
    same(in_place.text(), by_bytes, "byte by byte");
    return by_bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    const auto& pair = input.one_of(kPairs);
    const std::string text = input.text(), windows = converted(pair.to_windows, text);
    const std::string iso = converted(pair.to_iso, text), back = converted(pair.to_windows, iso);
    const auto dispatched = [&](const char* src, char* dst) {
        convertStrExt(src, pair.windows, dst, pair.iso);
    };
    same(fuzz::convert_in_room(dispatched, text, text.size() + 1, "convertStrExt"), iso,
         "convertStrExt");
    for (size_t i = 0; i < text.size(); ++i) {
        const bool control = text[i] > 0 && text[i] <= pair.last_control;
        same(back[i], control ? windows[i] : text[i], "Windows characters come back");
    }
    return 0;
}
