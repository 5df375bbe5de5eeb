#include <gtest/gtest.h>

#include <set>
#include <string>

#include "jaconv.h"
#include "support/guarded.h"
#include "support/oracle.h"

namespace {

using Converter = char* (*)(const char*, char*);

std::string one(int byte) { return {static_cast<char>(byte)}; }

struct Pair {
    const char* iso;
    const char* windows;
    Converter to_windows;
    Converter to_iso;
    // The control codes from 01 to this one stand for Windows characters.
    int last_control;
    // The C1 positions where Windows has a character that ISO has elsewhere.
    std::set<int> moved;
};
const Pair kPairs[] = {
    {"ISO-8859-5",
     "CP1251",
     c8859_5To1251x,
     c1251To8859_5x,
     0x0E,
     {0x80, 0x81, 0x83, 0x8A, 0x8C, 0x8D, 0x8E, 0x8F, 0x90, 0x9A, 0x9C, 0x9D, 0x9E, 0x9F}},
    {"ISO-8859-2",
     "CP1250",
     c8859_2To1250x,
     c1250To8859_2x,
     0x0A,
     {0x8A, 0x8C, 0x8D, 0x8E, 0x8F, 0x9A, 0x9C, 0x9D, 0x9E, 0x9F}},
};

std::string convert(Converter converter, const std::string& text) {
    return test::convert_guarded(converter, text, text.size() + 1);
}

TEST(CodePages, AgreeWithIconv) {
    for (const Pair& pair : kPairs) {
        SCOPED_TRACE(pair.iso);
        int shared = 0;
        for (int byte = 0x20; byte < 256; ++byte) {
            const auto windows = test::iconv_text(pair.iso, pair.windows, one(byte));
            const auto iso = test::iconv_text(pair.windows, pair.iso, one(byte));
            // The Windows code pages have no C1 control codes, only unassigned bytes.
            if (windows && (byte < 0x80 || byte >= 0xA0)) {
                EXPECT_EQ(convert(pair.to_windows, one(byte)), *windows) << byte;
                ++shared;
            }
            if (iso || byte < 0xA0) {
                EXPECT_EQ(convert(pair.to_iso, one(byte)), iso.value_or(one(byte))) << byte;
            }
        }
        EXPECT_EQ(shared, 96 + 96);
    }
}

TEST(CodePages, ThereAndBack) {
    for (const Pair& pair : kPairs) {
        SCOPED_TRACE(pair.iso);
        for (int byte = 1; byte < 256; ++byte) {
            const std::string text = one(byte);
            EXPECT_EQ(convert(pair.to_windows, convert(pair.to_iso, text)) == text,
                      byte > pair.last_control)
                << byte;
            EXPECT_EQ(convert(pair.to_iso, convert(pair.to_windows, text)) == text,
                      pair.moved.count(byte) == 0)
                << byte;
        }
    }
}

TEST(CodePages, ControlCodes) {
    const std::string controls = "\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0A\x0B\x0C\x0D\x0E\x0F";
    EXPECT_EQ(convert(c8859_5To1251x, controls),
              "\xA4\xA6\xA9\xAB\xAC\xAE\xB0\xB1\xB4\xB5\xB6\xB7\xBB\xA5\x0F");
    EXPECT_EQ(convert(c8859_2To1250x, controls),
              "\xA6\xA9\xAB\xAC\xAE\xB1\xB5\xB6\xB7\xBB\x0B\x0C\x0D\x0E\x0F");
    EXPECT_EQ(convert(c1251To8859_5x, controls), controls);
    EXPECT_EQ(convert(c1250To8859_2x, controls), controls);
}

TEST(CodePages, InPlaceAtEveryLength) {
    for (const Converter converter :
         {c8859_5To1251x, c1251To8859_5x, c8859_2To1250x, c1250To8859_2x}) {
        std::string expected;
        for (int length = 0; length < 256; ++length) {
            std::string text;
            for (int byte = 256 - length; byte < 256; ++byte) text += one(byte);
            if (length > 0) expected = convert(converter, text.substr(0, 1)) + expected;
            EXPECT_EQ(convert(converter, text), expected);
            test::GuardedText in_place(text);
            EXPECT_EQ(converter(in_place.data(), in_place.data()), in_place.data());
            EXPECT_EQ(in_place.text(), expected);
        }
    }
}

} // namespace
