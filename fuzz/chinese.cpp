// Big5 and EUC-TW: the table's rows character by character, and the room.
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
    return 0;
}
