#include <gtest/gtest.h>

#include <cstring>

#include "faults/faults.h"
#include "mbutil.h"

namespace {

using namespace test;

TEST(MailLines, NothingIsReadWithoutRoomOrTransfer) {
    InitMbutilExt(ZV_EUC);
    char room[] = "kept";
    EXPECT_EQ(getLine(room, 5, nullptr, ZV_EUC, ZV_TRANSFER_NOTHING, ZV_EUC), room);
    EXPECT_EQ(getLine(room, 0, nullptr, ZV_EUC, 0, ZV_EUC), nullptr);
    EXPECT_EQ(getLine(nullptr, 5, nullptr, ZV_EUC, 0, ZV_EUC), nullptr);
    EXPECT_STREQ(room, "kept");
    FILE* const zeros = fopen("/dev/zero", "r");
    EXPECT_STREQ(getLine(room, 1, zeros, ZV_EUC, 0, ZV_EUC), "");
    fclose(zeros);
}

TEST(MailLines, FillTheirRoomWhereTheStackIsFull) {
    InitMbutilExt(ZV_EUC);
    const auto read_line = [](std::string text, size_t size, int kind, int wanted) {
        std::string room(size, '#');
        FILE* const stream = fmemopen(text.data(), text.size(), "r");
        EXPECT_TRUE(getLine(room.data(), int(size), stream, ZV_EUC, kind, wanted)) << size;
        fclose(stream);
        return std::string(room.c_str());
    };
    for (size_t size = 990; size < 1040; ++size) {
        const std::string text(size - 1, 'x');
        EXPECT_EQ(read_line(text, size, 0, ZV_EUC), text);
        EXPECT_EQ(read_line(text, size, ZV_TRANSFER_QUOTED_PRINTABLE, ZV_EUC), text);
    }
    // What grows most into JIS: characters of one byte between those of two, at both ends as well.
    std::string text = "\xB0\xA1", line = "\x1B$B0!\x1B(J";
    for (int i = 0; i < 400; ++i)
        text += "x\xB0\xA1", line += "x\x1B$B0!\x1B(J";
    EXPECT_EQ(read_line(text, 4000, 0, ZV_JIS), line);
}

TEST(MailMemory, IsTakenForLongTextsAlone) {
    InitMbutilExt(ZV_SJIS);
    std::string text, line, out(20000, '#');
    // A line in many parts that grows into JIS as much as text can.
    for (; text.size() < 6000; text += "=B1a=\n")
        line += "\x1B$B%\"\x1B(Ja";
    const std::string subject(9000, 'x');
    FILE* const stream = tmpfile();
    setvbuf(stream, nullptr, _IONBF, 0);
    fputs((text + "\n").c_str(), stream);
    rewind(stream);
    const auto read_line = [&](int size) {
        return getLine(out.data(), size, stream, ZV_SJIS, ZV_TRANSFER_QUOTED_PRINTABLE, ZV_JIS) !=
               nullptr;
    };
    EXPECT_TRUE(read_line(20000));
    EXPECT_EQ(out.c_str(), line + '\n');
    // Each line of 50 is a word with 20 characters around it, of which the last lacks the fold.
    EXPECT_EQ(strlen(convertSubjectForMail(out.data(), subject.c_str(), ZV_8859_2, ZV_8859_2)),
              180U * (50 + 20) - 3);
    const auto short_texts = [&] {
        convertSubjectForMail(out.data(), "a short one", ZV_8859_2, ZV_8859_2);
        convertSubjectForMail(out.data(), subject.c_str() + 8000, ZV_JIS, ZV_SJIS);
        return fseek(stream, -6, SEEK_END) == 0 && read_line(80);
    };
    EXPECT_EQ(with_fault(1, short_texts), std::pair(true, false));
    const auto long_subject = [&] {
        return *convertSubjectForMail(out.data(), subject.c_str(), ZV_8859_2, ZV_8859_2) != '\0';
    };
    EXPECT_EQ(with_fault(1, long_subject), std::pair(false, true));
    EXPECT_EQ(with_fault(2, long_subject), std::pair(true, false)) << "takes two blocks";
    fclose(stream);
}

} // namespace
