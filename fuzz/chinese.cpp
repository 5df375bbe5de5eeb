// Big5 and EUC-TW: the table's rows character by character, the room, and the way back.
#include "input.h"
#include "models/big5_cns_model.h"

using fuzz::same;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const test::Big5CnsModel model;
    const std::string text = fuzz::Input(data, size).text();
    const std::string euc_tw = model.euc_tw_of(text), big5 = model.big5_of(text);
    fuzz::require(euc_tw.size() <= 2 * text.size() && big5.size() <= text.size(), "stated room");
    same(fuzz::convert_in_room(big2euchx, text, euc_tw.size() + 1, "big2euchx"), euc_tw,
         "big2euchx");
    same(fuzz::convert_in_room(euch2bigx, text, big5.size() + 1, "euch2bigx"), big5, "euch2bigx");
    fuzz::Text source(text);
    fuzz::without_memory(
        [&] {
            same(euchLength(source.data()), euc_tw.size(), "euchLength");
            same(big5Length(source.data()), big5.size(), "big5Length");
        },
        "lengths");
    // Two characters have a second code, and what cannot be converted leaves question marks; 8E
    // passes to EUC-TW unchanged, where it announces four bytes.
    bool comes_back = text.find_first_of("?\x8E") == text.npos && euc_tw.find('?') == text.npos;
    for (const char* second : {"\xC9\x4A", "\xDD\xFC"})
        comes_back = comes_back && text.find(second) == text.npos;
    if (comes_back)
        same(fuzz::convert_in_room(euch2bigx, euc_tw, text.size() + 1, "euch2bigx"), text,
             "there and back");
    return 0;
}
