#include <gtest/gtest.h>

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "support/failing_allocation.h"
#include "support/guarded.h"
#include "support/temporary_file.h"
#include "zvstdio.h"

namespace {

using test::TemporaryFile;

struct Close {
    void operator()(ZVFILE* stream) const { ZVfclose(stream); }
};
using Stream = std::unique_ptr<ZVFILE, Close>;

Stream open_stream(const TemporaryFile& file, const char* mode) {
    return Stream(ZVfopen(file.path(), mode));
}

// What one operation shows of itself.
struct Outcome {
    long result;
    std::string data;
    long position;
    int at_end;
    int error;
    bool operator==(const Outcome&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Outcome& o) {
    return out << o.result << " '" << testing::PrintToString(o.data) << "' at " << o.position
               << " end " << o.at_end << " error " << o.error;
}

enum Operation { getc, ungetc, read, gets, write, puts, seek_set, seek_by, seek_end, rewind };

struct Step {
    Operation operation;
    long number; // a byte, a size or an offset
    long items;
    std::string text;
};

Outcome run(ZVFILE* stream, const Step& step) {
    Outcome o{};
    const auto size = static_cast<size_t>(step.number);
    const auto items = static_cast<size_t>(step.items);
    switch (step.operation) {
    case getc:
        o.result = ZVfgetc(stream);
        break;
    case ungetc:
        o.result = ZVungetc(static_cast<int>(step.number), stream);
        break;
    case read: {
        test::GuardedRoom room(size * items);
        o.result = static_cast<long>(ZVfread(room.data(), size, items, stream));
        o.data.assign(room.data(), size * items);
        break;
    }
    case gets: {
        test::GuardedRoom room(size);
        o.result = ZVfgets(room.data(), static_cast<int>(size), stream) == room.data();
        o.data.assign(room.data(), size);
        break;
    }
    case write:
        o.result = static_cast<long>(ZVfwrite(step.text.data(), 1, step.text.size(), stream));
        break;
    case puts:
        o.result = ZVfputs(step.text.c_str(), stream);
        break;
    case seek_set:
    case seek_end:
    case seek_by:
        o.result = ZVfseek(stream, step.number,
                           step.operation == seek_set   ? SEEK_SET
                           : step.operation == seek_end ? SEEK_END
                                                        : SEEK_CUR);
        break;
    case rewind:
        ZVrewind(stream);
        break;
    }
    return {o.result, o.data, ZVftell(stream), ZVfeof(stream), ZVferror(stream)};
}

// A file as a byte array with a position; bytes pushed back lie in front of the rest of the file.
struct Model {
    std::string file;
    bool append;
    long position = 0;
    int at_end = 0;
    int error = 0;
    std::string pushed = ""; // the next one last
    long ahead = 0;          // bytes read or pushed back and not consumed
    long front_room = 0;     // bytes that can be pushed back before them

    int next() {
        if (ahead == 0) {
            ahead = std::clamp<long>(static_cast<long>(file.size()) - position, 0, 4096);
            front_room = 4;
        }
        if (ahead == 0) {
            at_end = 1;
            return -1;
        }
        const char byte = pushed.empty() ? file[static_cast<size_t>(position)] : pushed.back();
        if (!pushed.empty())
            pushed.pop_back();
        ++position;
        --ahead;
        ++front_room;
        return static_cast<unsigned char>(byte);
    }
    long push(long c) {
        if (ahead == 0)
            front_room = 4096;
        if (front_room == 0)
            return -1;
        pushed.push_back(static_cast<char>(c));
        --front_room;
        ++ahead;
        --position;
        at_end = 0;
        return c;
    }
    long move(long place) {
        if (place < 0) {
            error = EINVAL;
            return -1;
        }
        position = place;
        pushed.clear();
        ahead = 0;
        return 0;
    }
    long put(const std::string& text) {
        if (move(append ? static_cast<long>(file.size()) : position) != 0)
            return 0;
        const auto place = static_cast<size_t>(position);
        if (!text.empty() && file.size() < place + text.size())
            file.resize(place + text.size());
        file.replace(place < file.size() ? place : file.size(), text.size(), text);
        position += static_cast<long>(text.size());
        return static_cast<long>(text.size());
    }

    Outcome run(const Step& step) {
        Outcome o{};
        const auto length = static_cast<size_t>(step.number * step.items);
        switch (step.operation) {
        case getc:
            o.result = static_cast<signed char>(next());
            break;
        case ungetc:
            o.result = push(step.number);
            break;
        case read:
            for (int c; o.data.size() < length && (c = next()) >= 0;)
                o.data.push_back(static_cast<char>(c));
            o.result = step.number == 0 ? 0 : static_cast<long>(o.data.size()) / step.number;
            o.data.resize(length, '#');
            break;
        case gets:
            for (int c = 0; c != '\n' && o.data.size() + 1 < length && (c = next()) >= 0;)
                o.data.push_back(static_cast<char>(c));
            o.result = !o.data.empty();
            if (o.result != 0)
                o.data.push_back('\0');
            o.data.resize(length, '#');
            break;
        case write:
            o.result = put(step.text);
            break;
        case puts:
            o.result =
                step.text.empty() || put(step.text) == 0 ? -1 : static_cast<long>(step.text.size());
            break;
        case seek_set:
        case seek_end:
        case seek_by:
            o.result = move(step.number + (step.operation == seek_set   ? 0
                                           : step.operation == seek_end ? long(file.size())
                                                                        : position));
            if (o.result == 0)
                at_end = 0;
            break;
        case rewind:
            at_end = error = 0;
            move(0);
            break;
        }
        return {o.result, o.data, position, at_end, error};
    }
};

class Dice {
public:
    explicit Dice(unsigned seed) : random_(seed) {}
    long below(long n) { return static_cast<long>(random_() % static_cast<unsigned long>(n)); }
    // Mostly small, now and then up to `most`.
    long size(long most) { return below(1 + below(4) * below(4) * most / 9); }
    std::string text(long length) {
        std::string text;
        const long newlines = below(3) == 0 ? 6000 : 40;
        while (static_cast<long>(text.size()) < length)
            text.push_back(below(newlines) == 0 ? '\n' : static_cast<char>(1 + below(255)));
        return text;
    }

private:
    std::mt19937 random_;
};

class AgainstModel : public testing::TestWithParam<const char*> {};

TEST_P(AgainstModel, RandomOperationsAgreeStepByStep) {
    Dice dice(17);
    for (int round = 0; round < 20; ++round) {
        Model model{dice.text(dice.below(20000)), GetParam()[0] == 'a'};
        TemporaryFile file(model.file);
        const Stream stream = open_stream(file, GetParam());
        for (int i = 0; i < 600; ++i) {
            Step step{static_cast<Operation>(dice.below(rewind + 1)), dice.size(6000), 1, ""};
            if (step.operation == getc || step.operation == ungetc)
                step.number = dice.below(400) - 100;
            else if (step.operation == read && dice.below(2) == 0)
                step = {read, dice.below(9), dice.size(900), ""};
            else if (step.operation == write || step.operation == puts)
                step.text = dice.text(dice.size(900));
            else if (step.operation == seek_set || step.operation == seek_end)
                step.number = dice.below(22000) - (step.operation == seek_end ? 21000 : 1000);
            else if (step.operation == seek_by)
                step.number -= 3000;
            const long repeats = step.operation <= ungetc ? dice.below(12) : 1;
            for (long n = 0; n < repeats; ++n)
                ASSERT_EQ(run(stream.get(), step), model.run(step))
                    << "round " << round << " step " << i << " operation " << step.operation;
        }
        ASSERT_EQ(file.contents(), model.file);
    }
}
INSTANTIATE_TEST_SUITE_P(Modes, AgainstModel, testing::Values("r+", "a+"));

TEST(StreamOpen, ModeSelectsAccessAndPlaceOfWrites) {
    const struct {
        const char* mode;
        int access;
        const char* after_write; // of "Z" into "0123"
    } cases[] = {
        {"r", O_RDONLY, "0123"},  {"r+", O_RDWR, "Z123"},    {"rb+", O_RDWR, "Z123"},
        {"r+b", O_RDWR, "Z123"},  {"rw+", O_RDONLY, "0123"}, {"w", O_WRONLY, "Z"},
        {"wb", O_WRONLY, "Z"},    {"w+", O_RDWR, "Z"},       {"a", O_WRONLY, "0123Z"},
        {"ab+", O_RDWR, "0123Z"}, {"x+", O_RDONLY, "0123"},  {"", O_RDONLY, "0123"},
        {"b+", O_RDONLY, "0123"}, {"+", O_RDONLY, "0123"},
    };
    umask(027);
    for (const auto& c : cases) {
        TemporaryFile file("0123");
        Stream stream = open_stream(file, test::GuardedText(c.mode).data());
        EXPECT_EQ(ZVftell(stream.get()), 0);
        EXPECT_EQ(fcntl(ZVfileno(stream.get()), F_GETFL) & (O_ACCMODE | O_APPEND), c.access)
            << c.mode;
        errno = 0;
        EXPECT_EQ(ZVfputc('Z', stream.get()), c.access == O_RDONLY ? -1 : 'Z');
        EXPECT_EQ(errno, c.access == O_RDONLY ? EBADF : 0);
        EXPECT_EQ(ZVferror(stream.get()), errno);
        EXPECT_EQ(file.contents(), c.after_write) << c.mode;

        unlink(file.path());
        stream = open_stream(file, c.mode);
        struct stat status {};
        const bool creates = c.mode[0] == 'w' || c.mode[0] == 'a';
        EXPECT_EQ(stream != nullptr, creates) << c.mode;
        EXPECT_EQ(stat(file.path(), &status), creates ? 0 : -1);
        EXPECT_EQ(status.st_mode & 0777, creates ? 0750U : 0U);
    }
    EXPECT_EQ(ZVfopen("/", "w"), nullptr);
    EXPECT_EQ(errno, EISDIR);
}

TEST(StreamOpen, DescriptorKeepsItsOffsetAndIsClosedWithTheStream) {
    for (const bool append : {false, true}) {
        TemporaryFile file("0123456789");
        const int descriptor = open(file.path(), O_RDWR);
        lseek(descriptor, 4, SEEK_SET);
        Stream stream(ZVfdopen(descriptor, append ? "r+a" : "w"));
        EXPECT_EQ(ZVfileno(stream.get()), descriptor);
        EXPECT_EQ(ZVftell(stream.get()), 0);
        EXPECT_EQ(ZVfgetc(stream.get()), '4');
        EXPECT_EQ(ZVfputs("ab", stream.get()), 2);
        EXPECT_EQ(ZVftell(stream.get()), append ? 12 : 3);
        EXPECT_EQ(file.contents(), append ? "0123456789ab" : "0ab3456789");
        EXPECT_EQ(ZVfclose(stream.release()), 0);
        EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
    }
}

TEST(StreamOpen, AppendsBehindWhatOthersAppended) {
    TemporaryFile file("old ");
    const Stream one = open_stream(file, "a");
    const Stream other = open_stream(file, "a");
    for (long i = 0; i < 2; ++i) {
        EXPECT_EQ(ZVfputs("one ", one.get()), 4);
        EXPECT_EQ(ZVftell(one.get()), 8 + i * 10);
        EXPECT_EQ(ZVfputs("other ", other.get()), 6);
        EXPECT_EQ(ZVftell(other.get()), 14 + i * 10);
    }
    EXPECT_EQ(file.contents(), "old one other one other ");
}

TEST(StreamHandle, InvalidOnesGiveFailureValuesAndEbadf) {
    static char s[4];
    static long position = 7;
    const struct {
        long expected;
        long (*call)(ZVFILE*);
    } cases[] = {
        {-1, [](ZVFILE* f) -> long { return ZVfclose(f); }},
        {-1, [](ZVFILE* f) -> long { return ZVfgetc(f); }},
        {-1, [](ZVFILE* f) -> long { return ZVungetc('c', f); }},
        {-1, [](ZVFILE* f) -> long { return static_cast<long>(ZVfread(s, 0, 1, f)); }},
        {0, [](ZVFILE* f) -> long { return ZVfgets(s, 1, f) != nullptr; }},
        {0, [](ZVFILE* f) -> long { return static_cast<long>(ZVfwrite("c", 0, 1, f)); }},
        {0, [](ZVFILE* f) -> long { return ZVfprintf(f, "%s", "x"); }},
        {-1, [](ZVFILE* f) -> long { return ZVfputc('c', f); }},
        {-1, [](ZVFILE* f) -> long { return ZVfputs("", f); }},
        {-1, [](ZVFILE* f) -> long { return ZVftell(f); }},
        {-1, [](ZVFILE* f) -> long { return ZVfgetpos(f, &position); }},
        {-1, [](ZVFILE* f) -> long { return ZVfseek(f, 0, SEEK_SET); }},
        {-1, [](ZVFILE* f) -> long { return ZVferror(f); }},
        {-1, [](ZVFILE* f) -> long { return ZVfflush(f); }},
        {0, [](ZVFILE* f) -> long { return ZVfeof(f); }},
        {0, [](ZVFILE* f) -> long { return ZVrewind(f), 0; }},
        {0, [](ZVFILE* f) -> long { return ZVclearerr(f), 0; }},
    };
    alignas(16) static char no_stream[8192];
    for (ZVFILE* invalid : {static_cast<ZVFILE*>(nullptr), reinterpret_cast<ZVFILE*>(no_stream)}) {
        for (const auto& c : cases) {
            errno = 0;
            EXPECT_EQ(c.call(invalid), c.expected) << &c - cases;
            EXPECT_EQ(errno, EBADF) << &c - cases;
        }
        errno = 0;
        EXPECT_EQ(ZVfileno(invalid), -1);
        EXPECT_EQ(errno, 0);
    }
    EXPECT_EQ(position, 7);
}

TEST(StreamRead, BytesComeBackSigned) {
    TemporaryFile file("\x7F\xE9\xFF");
    const Stream stream = open_stream(file, "r");
    for (const int expected : {127, -23, -1}) {
        EXPECT_EQ(ZVfgetc(stream.get()), expected);
        EXPECT_EQ(ZVfeof(stream.get()), 0);
    }
    EXPECT_EQ(ZVfgetc(stream.get()), -1);
    EXPECT_EQ(ZVfeof(stream.get()), 1);
    EXPECT_EQ(ZVungetc(-1, stream.get()), -1);
    EXPECT_EQ(ZVfeof(stream.get()), 0);
    long position = 0;
    EXPECT_EQ(ZVfgetpos(stream.get(), &position), 0);
    EXPECT_EQ(position, 2);
    EXPECT_EQ(ZVfgetc(stream.get()), -1);
    EXPECT_EQ(ZVftell(stream.get()), 3) << "the pushed byte was there";
}

TEST(StreamRead, PushbackRoomIsExact) {
    for (const size_t size : {3U, 4096U, 9000U}) {
        TemporaryFile file(std::string(size, 'f'));
        const Stream stream = open_stream(file, "r");
        EXPECT_EQ(ZVfgetc(stream.get()), 'f');
        for (int c = '1'; c <= '5'; ++c)
            EXPECT_EQ(ZVungetc(c, stream.get()), c);
        EXPECT_EQ(ZVungetc('6', stream.get()), -1);
        EXPECT_EQ(ZVftell(stream.get()), -4);
        char line[8];
        EXPECT_STREQ(ZVfgets(line, sizeof line, stream.get()), "54321ff");

        // An empty buffer takes the first byte as its fifth-last one.
        EXPECT_EQ(ZVfseek(stream.get(), 0, SEEK_END), 0);
        int pushed = 0;
        while (ZVungetc('x', stream.get()) == 'x')
            ++pushed;
        EXPECT_EQ(pushed, 4092 + 4);
    }
}

constexpr long kLast = INT32_MAX;

TEST(StreamLimits, NothingPassesTheLastPosition) {
    TemporaryFile file;
    ASSERT_EQ(truncate(file.path(), kLast + 100), 0);
    static char s[10000];
    const struct {
        long start;
        long failure;
        long (*call)(ZVFILE*);
    } cases[] = {
        {kLast, -1, [](ZVFILE* f) -> long { return ZVfgetc(f); }},
        {kLast - 9, 0, [](ZVFILE* f) { return static_cast<long>(ZVfread(s, 5, 2, f)); }},
        {kLast - 9000, 0, [](ZVFILE* f) { return static_cast<long>(ZVfread(s, 9001, 1, f)); }},
        {kLast - 9000, 0, [](ZVFILE* f) -> long { return ZVfgets(s, 9002, f) != nullptr; }},
        {kLast - 9, 0, [](ZVFILE* f) { return static_cast<long>(ZVfwrite(s, 5, 2, f)); }},
        {5, 0, [](ZVFILE* f) { return static_cast<long>(ZVfwrite(s, SIZE_MAX / 2, 3, f)); }},
        {kLast, 0, [](ZVFILE* f) -> long { return ZVfprintf(f, "x"); }},
        {kLast, -1, [](ZVFILE* f) -> long { return ZVfputs("x", f); }},
        {5, -1, [](ZVFILE* f) -> long { return ZVfseek(f, kLast + 1, SEEK_SET); }},
        {5, -1, [](ZVFILE* f) -> long { return ZVfseek(f, kLast - 4, SEEK_CUR); }},
        {5, -1, [](ZVFILE* f) -> long { return ZVfseek(f, LONG_MAX, SEEK_CUR); }},
        {5, -1, [](ZVFILE* f) -> long { return ZVfseek(f, -99, SEEK_END); }},
    };
    const Stream stream = open_stream(file, "r+");
    const Stream appending = open_stream(file, "a+");
    for (const auto& c : cases) {
        EXPECT_EQ(ZVfseek(stream.get(), c.start, SEEK_SET), 0);
        ZVclearerr(stream.get());
        errno = 0;
        EXPECT_EQ(c.call(stream.get()), c.failure) << &c - cases;
        EXPECT_EQ(errno, EOVERFLOW) << &c - cases;
        EXPECT_EQ(ZVferror(stream.get()), EOVERFLOW) << &c - cases;
        EXPECT_EQ(ZVftell(stream.get()), c.start) << &c - cases;
        EXPECT_EQ(lseek(ZVfileno(stream.get()), 0, SEEK_CUR), c.start) << &c - cases;
    }
    EXPECT_EQ(ZVfgetc(appending.get()), 0);
    EXPECT_EQ(ZVfputc('x', appending.get()), -1);
    EXPECT_EQ(ZVferror(appending.get()), EOVERFLOW);
    EXPECT_EQ(ZVftell(appending.get()), 1);
    EXPECT_EQ(ZVfseek(appending.get(), -100, SEEK_END), 0);

    // What ends at the last position works, and there the end of the file is still told.
    ASSERT_EQ(truncate(file.path(), kLast), 0);
    EXPECT_EQ(ZVfseek(stream.get(), -9000, SEEK_END), 0);
    EXPECT_EQ(ZVfread(s, 1, 8995, stream.get()), 8995U);
    EXPECT_EQ(ZVfputs("abcde", stream.get()), 5);
    EXPECT_EQ(ZVftell(stream.get()), kLast);
    EXPECT_EQ(ZVfread(s, 1, 5, stream.get()), 0U);
    EXPECT_EQ(ZVfeof(stream.get()), 1);
    EXPECT_EQ(ZVfseek(stream.get(), -5, SEEK_CUR), 0);
    EXPECT_STREQ(ZVfgets(s, 100, stream.get()), "abcde");
}

TEST(StreamWrite, FormatsTextsOfAnyLength) {
    for (const int length : {1, 16383, 16384, 20000}) {
        TemporaryFile file;
        const Stream stream = open_stream(file, "w");
        EXPECT_EQ(ZVfprintf(stream.get(), "%*d", length, 7), length);
        EXPECT_EQ(file.contents(), std::string(static_cast<size_t>(length - 1), ' ') + "7");
    }
    TemporaryFile file("0123");
    const Stream stream = open_stream(file, "a+");
    EXPECT_EQ(ZVfprintf(stream.get(), "%s", ""), 0);
    EXPECT_EQ(ZVfprintf(stream.get(), "%ls", L"\x7FFFFFFF"), -1);
    EXPECT_EQ(ZVftell(stream.get()), 0) << "nothing was positioned";
    EXPECT_EQ(file.contents(), "0123");
}

TEST(StreamWrite, FailureKeepsWhatWasWritten) {
    const Stream full(ZVfopen("/dev/full", "w"));
    EXPECT_EQ(ZVfwrite("abc", 1, 3, full.get()), 0U);
    EXPECT_EQ(ZVferror(full.get()), ENOSPC);

    TemporaryFile file("0123456789");
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small = {1000, limit.rlim_max};
    signal(SIGXFSZ, SIG_IGN);
    const Stream stream = open_stream(file, "r+");
    EXPECT_EQ(ZVfgetc(stream.get()), '0');
    EXPECT_EQ(ZVungetc('x', stream.get()), 'x');
    EXPECT_EQ(ZVfgetc(stream.get()), 'x');
    setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_EQ(ZVfwrite(std::string(5000, 'w').data(), 1, 5000, stream.get()), 0U);
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(ZVferror(stream.get()), EFBIG);
    EXPECT_EQ(ZVftell(stream.get()), 1000);
    EXPECT_EQ(file.contents(), "0" + std::string(999, 'w'));
    EXPECT_EQ(ZVfgetc(stream.get()), -1) << "the read-ahead is gone";
    EXPECT_EQ(ZVfeof(stream.get()), 1);
    EXPECT_EQ(ZVfputs("end", stream.get()), 3);
    EXPECT_EQ(ZVfeof(stream.get()), 1) << "writes leave it alone";
    EXPECT_EQ(ZVferror(stream.get()), EFBIG) << "kept until it is cleared";
    ZVclearerr(stream.get());
    EXPECT_EQ(ZVferror(stream.get()) + ZVfeof(stream.get()), 0);

    const Stream reader = open_stream(file, "r");
    EXPECT_EQ(ZVfgetc(reader.get()), '0');
    EXPECT_EQ(ZVfputs("x", reader.get()), -1);
    EXPECT_EQ(ZVferror(reader.get()), EBADF);
    EXPECT_EQ(lseek(ZVfileno(reader.get()), 0, SEEK_CUR), 1);
    EXPECT_EQ(ZVfgetc(reader.get()), 'w');
}

TEST(StreamRead, DirectoryGivesErrors) {
    const Stream directory(ZVfopen("/", "r"));
    char s[8];
    const auto fails = [&](auto result, decltype(result) failure) {
        EXPECT_EQ(result, failure);
        EXPECT_EQ(ZVferror(directory.get()), EISDIR);
        EXPECT_EQ(ZVfeof(directory.get()), 0);
        ZVrewind(directory.get());
        EXPECT_EQ(ZVferror(directory.get()), 0);
    };
    fails(ZVfgetc(directory.get()), -1);
    fails(ZVfread(s, 1, 8, directory.get()), size_t{0});
    fails(ZVfgets(s, 8, directory.get()), nullptr);
}

struct Pipe {
    Stream reader;
    Stream writer;

    Pipe() {
        int ends[2];
        if (pipe(ends) != 0)
            abort();
        reader.reset(ZVfdopen(ends[0], "r"));
        writer.reset(ZVfdopen(ends[1], "w"));
    }
};

TEST(StreamPipe, PositionCountsBytes) {
    Pipe pipe;
    EXPECT_EQ(ZVfputs("one\ntwo\n", pipe.writer.get()), 8);
    EXPECT_EQ(ZVfprintf(pipe.writer.get(), "%d", 3), 1);
    EXPECT_EQ(ZVftell(pipe.writer.get()), 9);
    EXPECT_EQ(ZVferror(pipe.writer.get()), 0);
    pipe.writer.reset();
    char s[8];
    EXPECT_STREQ(ZVfgets(s, 8, pipe.reader.get()), "one\n");
    EXPECT_EQ(ZVfseek(pipe.reader.get(), 0, SEEK_CUR), -1);
    EXPECT_EQ(ZVferror(pipe.reader.get()), ESPIPE);
    EXPECT_EQ(ZVfread(s, 2, 4, pipe.reader.get()), 2U) << "a failed positioning changes nothing";
    EXPECT_EQ(ZVftell(pipe.reader.get()), 9);
    EXPECT_EQ(ZVfseek(pipe.reader.get(), 0, SEEK_SET), -1);
    EXPECT_EQ(ZVfeof(pipe.reader.get()), 1);
    ZVrewind(pipe.reader.get());
    EXPECT_EQ(ZVftell(pipe.reader.get()), 9);
    EXPECT_EQ(ZVfeof(pipe.reader.get()) + ZVferror(pipe.reader.get()), 0);
}

// Interrupts the process every few milliseconds; system calls are not restarted.
class Interruptions {
public:
    Interruptions() {
        struct sigaction action {};
        action.sa_handler = [](int) { count_ = count_ + 1; };
        sigaction(SIGALRM, &action, nullptr);
        set(3000);
    }
    ~Interruptions() { set(0); }
    int count() const { return count_; }

private:
    static void set(suseconds_t period) {
        const itimerval timer = {{0, period}, {0, period}};
        setitimer(ITIMER_REAL, &timer, nullptr);
    }
    static inline volatile sig_atomic_t count_ = 0;
};

TEST(StreamInterrupted, ReadsFailAndGoOnLater) {
    Pipe pipe;
    const Interruptions interruptions;
    char s[8];
    EXPECT_EQ(ZVfgetc(pipe.reader.get()), -1);
    EXPECT_EQ(ZVferror(pipe.reader.get()), EINTR);
    EXPECT_EQ(ZVfeof(pipe.reader.get()), 0);
    ZVclearerr(pipe.reader.get());
    EXPECT_EQ(ZVfputs("abcde", pipe.writer.get()), 5);
    EXPECT_EQ(ZVfgetc(pipe.reader.get()), 'a');
    EXPECT_STREQ(ZVfgets(s, 8, pipe.reader.get()), "bcde") << "the partial line";
    EXPECT_EQ(ZVferror(pipe.reader.get()), EINTR);
    EXPECT_EQ(ZVfgets(s, 8, pipe.reader.get()), nullptr);
    EXPECT_EQ(ZVfputs("xyz", pipe.writer.get()), 3);
    EXPECT_EQ(ZVfread(s, 1, 4, pipe.reader.get()), 0U) << "nothing, whatever was copied";
    EXPECT_EQ(ZVftell(pipe.reader.get()), 8);
}

TEST(StreamInterrupted, WritesGoOn) {
    Pipe pipe;
    std::string text(300000, ' ');
    for (size_t i = 0; i < text.size(); ++i)
        text[i] = static_cast<char>(i * 7 / 11);
    const pid_t child = fork();
    if (child == 0) {
        usleep(50000); // The writer is interrupted while the pipe is full.
        std::string got(text.size(), '#');
        _exit(ZVfread(got.data(), text.size(), 1, pipe.reader.get()) == 1 && got == text ? 0 : 1);
    }
    const Interruptions interruptions;
    EXPECT_EQ(ZVfwrite(text.data(), 3, text.size() / 3, pipe.writer.get()), text.size() / 3);
    EXPECT_GT(interruptions.count(), 0);
    EXPECT_EQ(ZVferror(pipe.writer.get()), 0);
    int status = -1;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR)
        ;
    EXPECT_EQ(status, 0);
}

TEST(StreamMemory, EachFailingAllocationLeavesEverythingAsItWas) {
    TemporaryFile file("kept");
    const std::string text(16384, 't');
    const Stream appending = open_stream(file, "a");
    const int descriptor = open("/dev/null", O_RDONLY);
    const auto next_descriptor = [] {
        const int next = dup(STDERR_FILENO);
        close(next);
        return next;
    };
    const int next = next_descriptor();
    const long blocks = test::live_blocks();
    int failures = 0;
    const auto failed = [&](auto result) {
        EXPECT_FALSE(result);
        EXPECT_EQ(errno, ENOMEM);
        EXPECT_EQ(test::live_blocks(), blocks);
        EXPECT_EQ(next_descriptor(), next);
        EXPECT_EQ(file.contents(), "kept");
        ++failures;
    };
    ZVfclose(
        test::after_each_failing_allocation([&] { return ZVfdopen(descriptor, "r"); }, failed));
    EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
    const int again = open("/dev/null", O_RDONLY);
    ASSERT_EQ(again, descriptor);
    EXPECT_EQ(test::after_each_failing_allocation(
                  [&] { return ZVfprintf(appending.get(), "%s", text.c_str()); }, failed),
              16384);
    ASSERT_EQ(truncate(file.path(), 4), 0);
    ZVfclose(
        test::after_each_failing_allocation([&] { return ZVfopen(file.path(), "w"); }, failed));
    EXPECT_EQ(file.contents(), "");
    EXPECT_EQ(test::live_blocks(), blocks);
    EXPECT_EQ(failures, 3);
    close(again);
}

} // namespace
