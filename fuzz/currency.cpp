// Currency lists: any text gives what the model reads, and what was read survives being written.
#include <climits>
#include <vector>

#include "input.h"
#include "models/strings_model.h"
#include "zvosutil.h"

using fuzz::same;

namespace {

// A status and the records of a list.
using Currencies = std::pair<int, std::vector<std::pair<std::string, int>>>;

// The text cut at every separator that begins a character.
Currencies model(const std::string& text) {
    const Currencies malformed = {ZV_CURRENCY_MALFORMED, {}};
    std::vector<std::string> fields = {""};
    for (const std::string& character : test::characters(text)) {
        if (character == "\\")
            fields.emplace_back();
        else
            fields.back() += character;
    }
    const long long count = fields.size() < 2 ? -1 : atoll(fields[0].c_str());
    if (count < 0 || count >= std::ssize(fields) / 2)
        return malformed;
    Currencies loaded;
    for (size_t i = 1; i <= 2 * size_t(count); i += 2) {
        const long long value = atoll(fields[i + 1].c_str());
        if (fields[i].size() > 3 || value < INT_MIN || value > INT_MAX)
            return malformed;
        loaded.second.emplace_back(fields[i], value);
    }
    return loaded;
}

struct Loaded : CurrencyDetailList {
    explicit Loaded(const std::string& text) : CurrencyDetailList{1, &old}, source(text) {}
    ~Loaded() { free(details); }
    void load() { status = LoadCurrencyDetailList(source.data(), this); }
    Currencies records() const {
        Currencies all = {status, {}};
        for (uint32_t i = 0; i < count; ++i) {
            fuzz::require(details[i].code[3] == '\0', "codes are terminated");
            all.second.emplace_back(details[i].code, details[i].value);
        }
        return all;
    }
    CurrencyDetail old{}; // which loading leaves alone
    fuzz::Text source;
    int status = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    const int code_sets[] = {ZV_WESTERN, ZV_SJIS, ZV_EUC, ZV_BIG5, ZV_KSC_5601_87};
    InitMbutilExt(input.one_of(code_sets));
    // Some positions are the last ones that there are.
    const unsigned offset = input.byte(), start = offset < 248 ? offset : offset - 256;
    const unsigned missing = input.byte() % 8;
    const std::string text = input.text();
    Loaded list(text), poor(text);
    if (fuzz::without_its_memory([&] { poor.load(); }))
        same(poor.records(), Currencies{ZV_CURRENCY_NO_MEMORY, {}}, "without memory");
    list.load();
    same(list.details != nullptr, list.count != 0, "an empty list is no memory");
    same(list.records(), model(text), "LoadCurrencyDetailList");
    if (list.status != 0)
        return 0;

    std::string plain = std::to_string(list.count) + "\\";
    for (const auto& [code, value] : list.records().second)
        plain += code + "\\" + std::to_string(value) + "\\";
    const auto room = offset % 248 + static_cast<unsigned>(plain.size()) + 6 - missing;
    const bool fits = uint64_t{start} + 5 < room && uint64_t{start} + plain.size() < room;
    fuzz::Room buffer(room);
    const auto write = [&](const CurrencyDetailList* records, int status, const std::string& put) {
        unsigned position = start;
        std::string expected(room, '\0');
        if (!put.empty())
            expected.replace(start, put.size(), put);
        same(ZVCurrencyDetailListToText(records, &position, room, buffer.data()), status,
             "ZVCurrencyDetailListToText");
        same(std::string(buffer.data(), room), expected, "the text and nothing else");
        same(size_t{position}, start + put.size(), "position");
    };
    write(&list, fits ? 0 : ZV_CURRENCY_NO_ROOM, fits ? plain : "");
    write(nullptr, 0, "");
    // A code cut out of malformed text may swallow its separator when it stands by itself.
    Loaded again(plain);
    again.load();
    same(again.records(), model(plain), "read again");
    if (list.count != 0) {
        list.details[list.count - 1] = {{'C', 'O', 'D', 'E'}, -1}; // nothing terminates it
        write(&list, ZV_CURRENCY_NO_ROOM, "");
    }
    return 0;
}
