#include <gtest/gtest.h>

#include <cstring>

#include "faults/faults.h"
#include "mbutil.h"
#include "models/mail_model.h"
#include "support/guarded.h"
#include "support/texts.h"

namespace {

TEST(MailLines, NothingIsReadWithoutRoomOrTransfer) {
    InitMbutilExt(ZV_EUC);
    char room[] = "kept";
    EXPECT_EQ(getLine(room, 5, nullptr, ZV_EUC, ZV_TRANSFER_NOTHING, ZV_EUC), room);
    EXPECT_FALSE(getLine(room, 0, nullptr, ZV_EUC, 0, ZV_EUC) ||
                 getLine(nullptr, 5, nullptr, ZV_EUC, 0, ZV_EUC));
    EXPECT_STREQ(room, "kept");
    EXPECT_STREQ(getLine(room, 1, test::stream_of("ab").get(), ZV_EUC, 0, ZV_EUC), "");
}

TEST(QuotedPrintable, ALongLineIsReadInPieces) {
    InitMbutilExt(ZV_EUC);
    const auto decode = [](const char* src, char* dst) { convertFromQuotedPrintable(dst, src); };
    for (const char* const unit : {"=C4=\n=e9 x", "=41=4=zy=\r=\t"}) {
        std::string mixed;
        while (mixed.size() < 200) mixed += unit;
        // The first piece ends at every place in it, the second behind.
        for (size_t first = 2048 - 100; first <= 2048; ++first) {
            const std::string text = std::string(first, 'x') + mixed + std::string(5000, 'y');
            EXPECT_EQ(test::convert_guarded(decode, text, text.size() + 1),
                      test::model_of_decoder(text));
        }
    }
}

TEST(MailMemory, IsTakenForLongTextsAlone) {
    InitMbutilExt(ZV_SJIS);
    std::string text, line, out(20000, '#');
    // A line in many parts that grows into JIS as much as text can.
    for (; text.size() < 6000; text += "=B1a=\n") line += "\x1B$B%\"\x1B(Ja";
    const std::string subject(9000, 'x');
    const test::Stream stream = test::stream_of(text + "\n");
    const auto read_line = [&](int size) {
        return getLine(out.data(), size, stream.get(), ZV_SJIS, ZV_TRANSFER_QUOTED_PRINTABLE,
                       ZV_JIS) != nullptr;
    };
    EXPECT_TRUE(read_line(20000));
    EXPECT_EQ(out.c_str(), line + '\n');
    // Each line of 50 is a word with 20 characters around it, of which the last lacks the fold.
    EXPECT_EQ(strlen(convertSubjectForMail(out.data(), subject.c_str(), ZV_8859_2, ZV_8859_2)),
              180U * (50 + 20) - 3);
    const auto short_texts = [&] {
        convertSubjectForMail(out.data(), "a short one", ZV_8859_2, ZV_8859_2);
        convertSubjectForMail(out.data(), subject.c_str() + 8000, ZV_JIS, ZV_SJIS);
        return fseek(stream.get(), -6, SEEK_END) == 0 && read_line(80);
    };
    EXPECT_EQ(test::with_fault(1, short_texts), std::pair(true, false));
}

} // namespace
