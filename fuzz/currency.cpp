// Currency lists: any text gives what the model reads, and what was read survives being written.
#include <climits>
#include <vector>

#include "input.h"
#include "mbutil.h"
#include "zvosutil.h"

using fuzz::same;

namespace {

struct LoadedCurrencies {
    int result;
    std::vector<std::pair<std::string, int>> records;
    bool operator==(const LoadedCurrencies&) const = default;
};
const LoadedCurrencies kMalformed = {ZV_CURRENCY_MALFORMED, {}};

// The same from the text cut at every separator that begins a character.
LoadedCurrencies model(const std::string& text) {
    std::vector<std::string> fields;
    for (size_t i = 0, begin = 0; i < text.size(); i += size_t(mbbytesinchar(&text[i])))
        if (text[i] == '\\')
            fields.push_back(text.substr(begin, i - begin)), begin = i + 1;
    const long long count = fields.empty() ? -1 : atoll(fields[0].c_str());
    if (count < 0 || count >= (std::ssize(fields) + 1) / 2)
        return kMalformed;
    LoadedCurrencies loaded = {0, {}};
    for (size_t i = 1; i <= 2 * size_t(count); i += 2) {
        const long long value = atoll(fields[i + 1].c_str());
        if (fields[i].size() > 3 || value < INT_MIN || value > INT_MAX)
            return kMalformed;
        loaded.records.emplace_back(fields[i], value);
    }
    return loaded;
}

struct Loaded : CurrencyDetailList {
    explicit Loaded(const std::string& text, bool without_memory = false) {
        fuzz::Text source(text);
        const auto load = [&] { status = LoadCurrencyDetailList(source.data(), this); };
        if (!without_memory)
            load();
        else if (fuzz::without_its_memory(load))
            same(status, ZV_CURRENCY_NO_MEMORY, "without memory"), same(count, 0, "no records");
    }
    ~Loaded() { free(details); }
    LoadedCurrencies records() const {
        LoadedCurrencies all = {status, {}};
        for (uint32_t i = 0; i < count; ++i) {
            fuzz::require(details[i].code[3] == '\0', "codes are terminated");
            all.records.emplace_back(details[i].code, details[i].value);
        }
        return all;
    }
    int status;
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
    Loaded list(text);
    const LoadedCurrencies read = list.records();
    same(list.details != nullptr, list.count != 0, "an empty list is no memory");
    fuzz::require(read == model(text), "LoadCurrencyDetailList");
    const Loaded poor(text, true);
    if (list.status != 0)
        return 0;

    std::string plain = std::to_string(list.count) + "\\";
    for (const auto& [code, value] : read.records)
        plain += code + "\\" + std::to_string(value) + "\\";
    const auto room = offset % 248 + static_cast<unsigned>(plain.size()) + 6 - missing;
    const bool fits = uint64_t{start} + 5 < room && uint64_t{start} + plain.size() < room;
    fuzz::Room buffer(room);
    unsigned position = start;
    const int status = ZVCurrencyDetailListToText(&list, &position, room, buffer.data());
    std::string expected(room, '\0');
    if (fits)
        expected.replace(start, plain.size(), plain);
    same(status, fits ? 0 : ZV_CURRENCY_NO_ROOM, "ZVCurrencyDetailListToText");
    same(std::string(buffer.data(), room), expected, "the text and nothing else");
    same(size_t{position}, fits ? start + plain.size() : start, "position");
    same(ZVCurrencyDetailListToText(nullptr, &position, room, buffer.data()), 0, "no list");
    same(std::string(buffer.data(), room), std::string(room, '\0'), "no list");
    // A code cut out of malformed text may swallow its separator when it stands by itself.
    if (fits)
        fuzz::require(Loaded(plain).records() == model(plain), "read again");
    if (list.count == 0)
        return 0;
    memcpy(list.details[list.count - 1].code, "CODE", 4);
    position = start;
    same(ZVCurrencyDetailListToText(&list, &position, room, buffer.data()), ZV_CURRENCY_NO_ROOM,
         "a code without its terminator");
    same(std::string(buffer.data(), room), std::string(room, '\0'), "nothing written");
    same(position, start, "position");
    return 0;
}
