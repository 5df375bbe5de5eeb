#ifndef ZVUTIL_FUZZ_CURRENCY_MODEL_H
#define ZVUTIL_FUZZ_CURRENCY_MODEL_H

#include <climits>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "mbutil.h"
#include "zvosutil.h"

namespace test {

using CurrencyRecords = std::vector<std::pair<std::string, int>>;
struct LoadedCurrencies {
    int result;
    CurrencyRecords records;
    bool operator==(const LoadedCurrencies&) const = default;
};
inline const LoadedCurrencies kMalformed = {ZV_CURRENCY_MALFORMED, {}};

// The same from the text cut at every separator that begins a character.
inline LoadedCurrencies currency_model(const std::string& text) {
    std::vector<std::string> fields;
    for (size_t i = 0, begin = 0; i < text.size(); i += size_t(mbbytesinchar(&text[i])))
        if (text[i] == '\\') fields.push_back(text.substr(begin, i - begin)), begin = i + 1;
    const long long count = fields.empty() ? -1 : atoll(fields[0].c_str());
    if (count < 0 || count >= (std::ssize(fields) + 1) / 2) return kMalformed;
    LoadedCurrencies loaded = {0, {}};
    for (size_t i = 1; i <= 2 * size_t(count); i += 2) {
        const long long value = atoll(fields[i + 1].c_str());
        if (fields[i].size() > 3 || value < INT_MIN || value > INT_MAX) return kMalformed;
        loaded.records.emplace_back(fields[i], value);
    }
    return loaded;
}

} // namespace test

#endif
