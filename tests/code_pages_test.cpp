#include <gtest/gtest.h>

#include <span>

#include "jaconv.h"
#include "support/oracle.h"

namespace {

using namespace test;

struct Direction {
    const char *from, *to;
    char* (*convert)(const char*, char*);
    std::span<const unsigned char> table; // of the bytes up from its first
    int table_first;
    bool to_windows;
    // The Windows characters that ISO lacks and that stand there as control codes, from 01 on.
    std::string controls;
};
const std::string kCyrillic = "\xA4\xA6\xA9\xAB\xAC\xAE\xB0\xB1\xB4\xB5\xB6\xB7\xBB\xA5";
const std::string kCentralEuropean = "\xA6\xA9\xAB\xAC\xAE\xB1\xB5\xB6\xB7\xBB";
const Direction kDirections[] = {
    {"ISO-8859-5", "CP1251", c8859_5To1251x, t8859_5To1251, 0xA0, true, kCyrillic},
    {"CP1251", "ISO-8859-5", c1251To8859_5x, t1251To8859_5, 0x80, false, kCyrillic},
    {"ISO-8859-2", "CP1250", c8859_2To1250x, t8859_2To1250, 0xA0, true, kCentralEuropean},
    {"CP1250", "ISO-8859-2", c1250To8859_2x, t1250To8859_2, 0x80, false, kCentralEuropean}};

// What iconv and the control codes make of a byte. The Windows code pages have no C1 control
// codes, only unassigned bytes, so that theirs stay as they are.
std::string converted(const Direction& d, int byte) {
    const std::string text(1, static_cast<char>(byte));
    if (d.to_windows && byte <= int(d.controls.size()))
        return {d.controls[size_t(byte) - 1]};
    const auto theirs = iconv_text(d.from, d.to, text);
    if (byte < 0xA0 && (d.to_windows || !theirs))
        return text;
    return theirs.value_or(std::string(1, static_cast<char>(d.controls.find(text) + 1)));
}

TEST(CodePages, AgreeWithIconv) {
    for (const Direction& d : kDirections) {
        for (int byte = 1; byte < 256; ++byte) {
            const std::string expected = converted(d, byte);
            char text[] = {char(byte), '\0'};
            EXPECT_EQ(d.convert(text, text), expected) << d.from << ' ' << byte;
            const auto row = static_cast<size_t>(byte - d.table_first);
            EXPECT_EQ(row < d.table.size() ? char(d.table[row]) : expected[0], expected[0])
                << d.from << ' ' << byte;
        }
    }
}

} // namespace
