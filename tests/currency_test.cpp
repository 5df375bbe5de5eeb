#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "mbutil.h"
#include "models/currency_model.h"
#include "support/guarded.h"
#include "support/texts.h"
#include "zvosutil.h"

namespace {

using test::currency_model, test::kMalformed;

test::LoadedCurrencies load(const std::string& text) {
    test::GuardedText source(text);
    CurrencyDetail none;
    CurrencyDetailList list = {99, &none};
    const int result = LoadCurrencyDetailList(source.data(), &list);
    EXPECT_EQ(list.details != nullptr, list.count > 0);
    test::LoadedCurrencies loaded = {result, {}};
    for (uint32_t i = 0; i < list.count; ++i)
        loaded.records.emplace_back(list.details[i].code, list.details[i].value);
    free(list.details);
    return loaded;
}

TEST(CurrencyText, AnyTextGivesAListOrAStatus) {
    std::mt19937 random(7);
    for (const int code_set : {int(ZV_WESTERN), int(ZV_SJIS)}) {
        InitMbutilExt(code_set);
        int lists = 0;
        for (int i = 0; i < 20000; ++i) {
            const std::string text = test::random_text(random, "12 -a\x83\\\\\\\\", 24);
            const test::LoadedCurrencies loaded = load(text);
            ASSERT_EQ(loaded, currency_model(text)) << text;
            lists += !loaded.records.empty();
        }
        EXPECT_GT(lists, 1000);
        for (const char* count : {"4294967295", "4294967297", "99999999999999999999", "-1", "2"})
            EXPECT_EQ(load(count + std::string("\\USD\\1\\")), kMalformed) << count;
        for (const char* value :
             {"1\\USD\\2147483648\\", "1\\U\\-2147483648y\\more", "1\\USDX\\1\\"})
            EXPECT_EQ(load(value), currency_model(value)) << value;
    }
}

TEST(CurrencyText, GoesThereAndBackInAnyRoom) {
    InitMbutilExt(ZV_SJIS);
    CurrencyDetail details[] = {
        {"USD", 2}, {"JPY", 0}, {"", -1}, {"\x83\\", INT_MAX}, {"E", INT_MIN}};
    for (uint32_t count = 0; count <= 5; ++count) {
        const CurrencyDetailList list = {count, details};
        std::string text = std::to_string(count) + "\\";
        for (uint32_t i = 0; i < count; ++i)
            (text += details[i].code) += '\\' + std::to_string(details[i].value) + '\\';
        EXPECT_EQ(load(text), currency_model(text));
        EXPECT_EQ(load(text).records.size(), count);
        for (const unsigned start : {0u, 10u, 75u, UINT_MAX, UINT_MAX - 5})
            for (unsigned size = 0; size < 80; ++size) {
                test::GuardedRoom room(size);
                unsigned position = start;
                const bool fits = start + 5ul < size && start + text.size() < size;
                std::string expected(size, '\0');
                if (fits) expected.replace(start, text.size(), text);
                ASSERT_EQ(ZVCurrencyDetailListToText(&list, &position, size, room.data()),
                          fits ? 0 : ZV_CURRENCY_NO_ROOM);
                ASSERT_EQ(std::string(room.data(), size), expected);
                ASSERT_EQ(position, fits ? start + text.size() : start);
                ASSERT_EQ(ZVCurrencyDetailListToText(nullptr, &position, size, room.data()), 0);
                ASSERT_EQ(std::string(room.data(), size), std::string(size, '\0'));
            }
    }
}

} // namespace
