// The single-byte code pages: byte by byte, in place and in exact room.
#include "input.h"
#include "jaconv.h"
#include "mbutil.h"

using fuzz::same;

namespace {

const struct {
    int from, to;
    char* (*convert)(const char*, char*);
} kDirections[] = {{ZV_8859_5, ZV_CP1251, c8859_5To1251x},
                   {ZV_CP1251, ZV_8859_5, c1251To8859_5x},
                   {ZV_8859_2, ZV_CP1250, c8859_2To1250x},
                   {ZV_CP1250, ZV_8859_2, c1250To8859_2x}};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    const auto& [from, to, convert] = input.one_of(kDirections);
    const std::string text = input.text();
    std::string by_bytes;
    for (const char c : text) {
        const char one[] = {c, '\0'};
        char out[2];
        by_bytes += convert(one, out);
    }
    fuzz::Text in_place(text);
    same(convert(in_place.data(), in_place.data()), in_place.data(), "result");
    same(in_place.text(), by_bytes, "in place");
    same(fuzz::convert_in_room(convert, text, text.size() + 1, "converter"), by_bytes, "converter");
    const auto dispatched = [from = from, to = to](const char* src, char* dst) {
        convertStrExt(src, from, dst, to);
    };
    same(fuzz::convert_in_room(dispatched, text, text.size() + 1, "convertStrExt"), by_bytes,
         "convertStrExt");
    return 0;
}
