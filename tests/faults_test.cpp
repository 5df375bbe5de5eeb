#include <fcntl.h>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "faults/faults.h"
#include "jaconv.h"
#include "mbutil.h"
#include "osutils.h"
#include "support/folder.h"

namespace {

using namespace test;

enum Result { kWrong, kFailed, kDone };
Result either(bool done) {
    return done ? kDone : kFailed;
}

// What the operations work on, as it is before each of them. They allocate nothing themselves.
struct Ground {
    const Folder folder;
    const std::string in = folder / "in", out = folder / "out", config = folder / "conf/zv.conf",
                      swept = folder / "swept", base = folder / "", kana,
                      line = std::string(20000, 'l');
    char room[60000];

    Ground() : kana(6000, '\xB1') {
        std::filesystem::create_directory(folder / "conf");
        std::filesystem::create_directory(swept);
        const std::string key = "Server-directory: ", filler(30000, '\n');
        write_file(config, key + "/old\n" + filler + key + "/db\n");
        // The second line is one in many parts, which takes memory.
        write_file(in, "first\n" + repeated("=B1a=\n", 1000) + "\n" +
                           repeated(kana.substr(0, 700) + "\x93\x8C\n", 25));
        setenv("TMPDIR", base.c_str(), 1);
    }
    void lay_out() {
        InitMbutilExt(ZV_EUC);
        write_file(out, "before\n");
        for (const char* name : {"/a.tmp", "/b.tmp", "/c"})
            write_file(swept + name, "");
        memset(room, 0, sizeof room);
    }
};

// Closes a stream, errno kept.
template <auto close>
struct Closer {
    void operator()(auto* stream) const {
        const int error = errno;
        close(stream);
        errno = error;
    }
};
using ZvStream = std::unique_ptr<ZVFILE, Closer<ZVfclose>>;
using StandardStream = std::unique_ptr<FILE, Closer<fclose>>;

// What an action makes of the input.
Result reading(const Ground& g, auto action) {
    const StandardStream in(fopen(g.in.c_str(), "r"));
    return either(in != nullptr && action(in.get()));
}

// Reads a stream to its end by lines, blocks and bytes.
Result read_all(ZVFILE* stream, char* to) {
    for (int turn = 0; !ZVfeof(stream); ++turn) {
        if (turn % 3 == 0 && ZVfgets(to, 5000, stream))
            to += strlen(to);
        if (turn % 3 == 1)
            to += ZVfread(to, 1, 4700, stream);
        const int c = turn % 3 == 2 ? ZVfgetc(stream) : -1;
        if (c != -1)
            *to++ = char(c);
        errno = ZVferror(stream);
        if (errno != 0)
            return kFailed;
    }
    return kDone;
}

Result write_and_read(const ZvStream& owner, const Ground& g, char* to) {
    ZVFILE* const stream = owner.get();
    const int length = int(g.line.size());
    const bool written = stream != nullptr &&
                         ZVfprintf(stream, "%s\n", g.line.c_str()) == length + 1 &&
                         ZVfputc('c', stream) == 'c' && ZVfputs("some\n", stream) == 5 &&
                         ZVfwrite(g.kana.data(), 3, 2000, stream) == 2000;
    if (written && ZVftell(stream) != length + 6007)
        return kWrong;
    if (!written || ZVfseek(stream, -6000, SEEK_CUR) != 0 || ZVfseek(stream, 0, SEEK_SET) != 0)
        return kFailed;
    return read_all(stream, to);
}

enum Promise : unsigned {
    kUnchanged = 0, // a failure leaves the files as they were
    kBeginning = 1, // or the beginning of what there should be
    kSilent = 2,    // nor is it told
    kNoReason = 4,  // errno does not tell the reason
    kNoRetry = 8,   // signals are told as errors
    kPrivate = 16,  // no program that the process executes has the descriptors
    kGoesOn = 32,   // behind an interruption, as if there had been none
};

const struct Operation {
    const char* name;
    unsigned promise;
    Result (*run)(Ground&);
} kOperations[] = {
    {"stream write", kBeginning,
     [](Ground& g) { return write_and_read(ZvStream(ZVfopen(g.out.c_str(), "w+")), g, g.room); }},
    {"temporary stream", kUnchanged | kPrivate,
     [](Ground& g) { return write_and_read(ZvStream(OSTmpZVFile()), g, g.room); }},
    {"temporary files", kUnchanged | kPrivate,
     [](Ground& g) {
         char* const name = OSTmpName("abc");
         const bool named = name != nullptr && strncmp(name, g.base.c_str(), g.base.size()) == 0;
         free(name);
         if (!named || !StandardStream(OSTmpFile()))
             return kFailed;
         const int fd = OSTmpFileFd();
         if (fd == -1)
             return kFailed;
         const ZvStream stream(ZVfdopen(fd, "w+"));
         if (!stream)
             close(fd);
         return either(stream != nullptr);
     }},
    {"locked append", kUnchanged,
     [](Ground& g) { return either(OSAppendLineToFile(g.out.c_str(), g.line.c_str()) == 0); }},
    {"line search", kUnchanged,
     [](Ground& g) {
         const int number = OSFindLineInFile(g.in.c_str(), "first\n");
         return number == 1 ? kDone : number == -1 ? kFailed : kWrong;
     }},
    {"locks and status", kUnchanged,
     [](Ground& g) {
         const ZvStream stream(ZVfopen(g.out.c_str(), "r+"));
         return either(stream && OSLockZVFile(stream.get(), ZV_LOCK_WRITE, 1) &&
                       OSFileSize(g.out.c_str()) == 7 && OSZVFileModifiedTime(stream.get()) > 0 &&
                       OSZVFileTruncate(stream.get(), 7) && OSUnLockZVFile(stream.get()));
     }},
    {"sweep", kSilent, [](Ground& g) { return either(OSRemoveFiles(g.swept.c_str(), "*.tmp")); }},
    {"configuration", kNoReason | kNoRetry | kPrivate,
     [](Ground& g) {
         SetZVInstallPath(g.base.c_str());
         strcpy(g.room, OSGetServerDbPath());
         return strcmp(g.room, "./") == 0 ? kFailed : kDone;
     }},
    {"lines read", kNoReason | kNoRetry,
     [](Ground& g) {
         return reading(g, [&](FILE* in) {
             // Lines that fit on the stack, and some that take memory.
             for (char* to = g.room; mbfgets(to, 2000, in, ZV_SJIS); to += strlen(to))
                 ;
             return feof(in) && !ferror(in);
         });
     }},
    {"lines written", kBeginning | kNoRetry,
     [](Ground& g) {
         InitMbutilExt(ZV_SJIS);
         FILE* const file = fopen(g.out.c_str(), "w");
         if (file == nullptr)
             return kFailed;
         const bool put = mbfputs(g.kana.c_str(), file, ZV_JIS) >= 0;
         return either((fclose(file) == 0) & put);
     }},
    {"blocks read", kNoReason | kNoRetry,
     [](Ground& g) {
         InitMbutilExt(ZV_SJIS);
         return reading(g, [&](FILE* in) {
             for (char* to = g.room; int got = mbfreadstring(to, 999, in);)
                 to += got;
             return !ferror(in);
         });
     }},
    {"file conversion", kSilent | kPrivate | kGoesOn,
     [](Ground& g) {
         return either(mbconvertfile2native_ex(g.in.c_str(), g.out.c_str(), 1, ZV_SJIS));
     }},
    {"mail line", kNoReason | kNoRetry,
     [](Ground& g) {
         InitMbutilExt(ZV_SJIS);
         return reading(g, [&](FILE* in) {
             return getLine(g.room, 2000, in, ZV_SJIS, 0, ZV_JIS) &&
                    getLine(g.room, 2000, in, ZV_SJIS, ZV_TRANSFER_QUOTED_PRINTABLE, ZV_JIS);
         });
     }},
    {"subject", kNoReason,
     [](Ground& g) {
         convertSubjectForMail(g.room, g.line.data() + 12000, ZV_8859_2, ZV_8859_2);
         return either(*g.room != '\0');
     }},
    {"byte sum", kNoReason,
     [](Ground& g) {
         const int sum = AccumulateAsciiForStr(g.kana.c_str());
         return sum == -1 ? kFailed : sum == 6000 * 0xB1 ? kDone : kWrong;
     }},
};

constexpr unsigned kAll =
    kMemory | kOpen | kRead | kWrite | kSeek | kLock | kUnlock | kStatus | kSync;
constexpr Fault kFaults[] = {
    kNoMemory,
    {"no memory from there on", kMemory, ENOMEM, kForever},
    {"no more files", kOpen, EMFILE, kForever},
    {"no files without names", kOpen, EOPNOTSUPP},
    {"read error", kRead, EIO},
    {"interrupted read", kRead, EINTR},
    {"short reads", kRead, 0, kForever},
    {"end of a disk", kRead, EIO, kForever, true},
    {"write error", kWrite, EIO},
    {"interrupted write", kWrite, EINTR, 3},
    {"short writes", kWrite, 0, kForever},
    {"full disk", kWrite, ENOSPC, kForever, true},
    {"seek error", kSeek, EIO},
    {"no lock", kLock, ENOLCK, kForever},
    {"interrupted lock", kLock, EINTR, 3},
    {"no unlocking", kUnlock, ENOLCK},
    {"no status", kStatus, EIO},
    {"no truncation", kTruncate, EIO},
    {"no synchronisation", kSync, EIO},
    {"broken disk", kAll, EIO, kForever},
};

struct Outcome {
    Result result = kWrong;
    int error = 0;
    bool met = false;
    std::string out, room;
};

long open_descriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

Outcome attempt(const Operation& operation, Ground& ground, int nth, const Fault& fault) {
    ground.lay_out();
    const long descriptors = open_descriptors(), blocks = live_blocks();
    const long inherited = inherited_descriptors();
    Outcome outcome;
    inject(nth, fault);
    outcome.result = operation.run(ground);
    outcome.error = errno;
    outcome.met = inject(0);
    EXPECT_EQ(operation.promise & kPrivate ? inherited_descriptors() : inherited, inherited);
    EXPECT_EQ(live_blocks(), blocks);
    EXPECT_EQ(open_descriptors(), descriptors);
    outcome.out = content(ground.out);
    outcome.room = ground.room;
    return outcome;
}

void judge(const Operation& operation, const Fault& fault, const Outcome& is,
           const Outcome& whole) {
    const bool told = is.result == kFailed;
    EXPECT_NE(is.result, kWrong);
    EXPECT_LE(told, is.met) << "no failure without a fault";
    EXPECT_GE(told, is.met && fault.calls == kUnlock) << "a lock that stays is told";
    const bool retried = fault.error == 0 || (fault.error == EINTR && (fault.calls & kRead) == 0 &&
                                              (operation.promise & kNoRetry) == 0);
    EXPECT_LE(told, !retried);
    const bool gives_reason = told && (operation.promise & kNoReason) == 0;
    EXPECT_EQ(gives_reason ? is.error : fault.error, fault.error);
    const bool silent = (operation.promise & kSilent) != 0;
    const std::string before = "before\n";
    if (!told && (!silent || ((operation.promise & kGoesOn) && fault.error == EINTR))) {
        EXPECT_EQ(is.room, whole.room);
        EXPECT_EQ(is.out, whole.out);
    } else if (silent) {
        EXPECT_TRUE(is.out.starts_with(before)) << is.out;
    } else if (operation.promise & kBeginning) {
        EXPECT_EQ(is.out, is.out == before ? before : whole.out.substr(0, is.out.size()));
    } else {
        // When no more than the unlocking failed, the work has been done.
        EXPECT_EQ(is.out, is.out != before && (fault.calls & kUnlock) ? whole.out : before);
    }
}

TEST(Faults, AreToldAndLeaveNothingBehind) {
    Ground ground;
    for (const Operation& operation : kOperations) {
        const Outcome whole = attempt(operation, ground, 0, kNoMemory);
        ASSERT_EQ(whole.result, kDone) << operation.name;
        int met = 0;
        for (const Fault& fault : kFaults) {
            bool more = true;
            for (int nth = 1; more; ++nth, met += more) {
                SCOPED_TRACE(std::string(operation.name) + ": " + fault.name + " " +
                             std::to_string(nth));
                const Outcome outcome = attempt(operation, ground, nth, fault);
                judge(operation, fault, outcome, whole);
                more = outcome.met;
            }
        }
        EXPECT_GT(met, 0) << operation.name;
    }
}

TEST(Faults, TextThatIsNotConvertedTakesNoMemory) {
    Ground ground;
    ground.lay_out();
    const Fault none = {"no memory", kMemory, ENOMEM, kForever};
    const auto check = [&](int current, int code_set) {
        InitMbutilExt(current);
        const StandardStream file(fopen(ground.out.c_str(), "w+"));
        const auto put = [&] { return mbfputs(ground.line.c_str(), file.get(), code_set) >= 0; };
        EXPECT_TRUE(with_fault(1, put, none).first) << current;
        rewind(file.get());
        const auto get = [&] { return mbfgets(ground.room, 30000, file.get(), code_set); };
        EXPECT_EQ(with_fault(1, get, none).first, ground.room) << current;
        EXPECT_EQ(ground.room, ground.line) << current;
    };
    check(ZV_SJIS, 0);
    check(ZV_8859_2, ZV_EUC);
}

} // namespace
