#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <climits>
#include <tuple>

#include "support/folder.h"
#include "support/guarded.h"
#include "support/texts.h"
#include "zvstdio.h"

namespace {

constexpr long kLast = INT_MAX;

struct Stream {
    ZVFILE* handle;
    ~Stream() { ZVfclose(handle); }
    operator ZVFILE*() const { return handle; }
};
Stream open_stream(const std::string& path, const char* mode) {
    return {ZVfopen(path.c_str(), test::GuardedText(mode).data())};
}

const struct Mode {
    const char* name;
    int access;
} kModes[] = {{"r", O_RDONLY},  {"r+", O_RDWR},    {"rb+", O_RDWR}, {"r+b", O_RDWR},
              {"w", O_WRONLY},  {"wb+", O_RDWR},   {"a", O_WRONLY}, {"ab+", O_RDWR},
              {"x+", O_RDONLY}, {"rw+", O_RDONLY}, {"+", O_RDONLY}, {"", O_RDONLY}};

// A descriptor with a position and pushed back bytes, the next one last.
struct Model {
    int descriptor;
    bool append;
    long position = 0, at_end = 0;
    int error = 0, raised = 0;
    std::string pushed = "", taken = "";

    long size() const { return lseek(descriptor, 0, SEEK_END); }
    bool fail(int number) { return error = raised = number, false; }
    bool take_byte() {
        if (position == kLast && size() > kLast) return fail(EOVERFLOW);
        char byte = 0;
        const ssize_t got = pushed.empty() ? pread(descriptor, &byte, 1, position) : 1;
        if (got < 0) return fail(errno);
        if (got == 0) return at_end = 1, false;
        if (!pushed.empty()) byte = pushed.back(), pushed.pop_back();
        return taken += byte, ++position, true;
    }
    long take(size_t most, int last) {
        const long start = position;
        while (taken.size() < most && (taken.empty() || taken.back() != last))
            if (!take_byte()) break;
        if (raised == EOVERFLOW) position = start;
        return long(taken.size());
    }
    long push(int c) { return pushed += char(c), --position, at_end = 0, c; }
    bool write(const std::string& text) {
        const long place = append ? size() : position, length = long(text.size());
        if (place < 0) return fail(EINVAL);
        pushed = "";
        if (place > kLast - length) return fail(EOVERFLOW);
        position = place;
        if (text.empty()) return false;
        if (pwrite(descriptor, text.data(), text.size(), place) < 0) return fail(errno);
        return position += length, true;
    }
    bool seek(long place) {
        if (place < 0 || place > kLast) return fail(place < 0 ? EINVAL : EOVERFLOW);
        return position = place, pushed = "", at_end = 0, true;
    }
};

TEST(Stream, RandomOperationsAgreeWithAModelInEveryMode) {
    std::mt19937 random(17);
    const test::Folder folder;
    const std::string path = folder / "file", twin = folder / "twin", created = folder / "created";
    struct stat status {};
    umask(027);
    for (size_t round = 0; round < 240; ++round) {
        const auto& [mode, access] = kModes[round / 2 % std::size(kModes)];
        const bool writes_anew = mode[0] == 'w', at_limit = round % 2 == 0 && !writes_anew;
        const long base = at_limit ? kLast - 12000 : 0;
        for (const std::string& name : {path, twin}) {
            test::write_file(name, "");
            ASSERT_EQ(truncate(name.c_str(), base), 0);
            std::ofstream(name, std::ios::app) << std::string(round * 80, 'o') << "\nold";
        }
        const bool creates = mode[0] == 'w' || mode[0] == 'a';
        EXPECT_EQ(open_stream(created, mode) != nullptr, creates) << mode;
        EXPECT_EQ(stat(created.c_str(), &status), creates ? 0 : -1);
        EXPECT_EQ(unlink(created.c_str()) == 0 ? status.st_mode & 0777 : 0750, 0750U);
        const Stream f = open_stream(path, mode);
        Model model{open(twin.c_str(), access | (writes_anew ? O_TRUNC : 0)), mode[0] == 'a'};
        for (int step = 0; step < 100; ++step) {
            const size_t item = 1 + random() % 9, count = random() % (step % 8 == 0 ? 3000 : 9);
            std::string text = test::random_text(random, "a \n\x01\x80\xFE\xFF", item * count);
            text.resize(item * count, 'e');
            const long n = long(text.size()), bases[] = {0, model.position, model.size()};
            const int c = int(random() % 400) - 100, whence = step == 0 ? 0 : int(random() % 3);
            const long place = base + long(random() % 22000) + (at_limit ? 1000 : -1000);
            test::GuardedRoom room(text.size());
            const size_t operation = step == 0 ? 0 : random() % (at_limit ? 10 : 11);
            long result = 0, expected = 0, told = 0;
            model.taken = "", model.raised = errno = 0;
            if (operation == 0) {
                result = ZVfseek(f, place - bases[whence], whence);
                expected = model.seek(place) ? 0 : -1;
            } else if (operation == 1) {
                result = ZVfputc(c, f);
                expected = model.write({char(c)}) ? c : -1;
            } else if (operation == 2) {
                result = ZVfputs(text.c_str(), f);
                expected = n != 0 && model.write(text) ? n : -1;
            } else if (operation == 3) {
                result = ZVfprintf(f, "%s", text.c_str());
                expected = n != 0 && model.write(text) ? n : 0;
            } else if (operation == 4) {
                result = long(ZVfwrite(text.data(), item, count, f));
                expected = model.write(text) ? long(count) : 0;
            } else if (operation == 5) {
                result = long(ZVfread(room.data(), item, count, f));
                expected = model.take(text.size(), 256) / long(item);
                if (model.raised != 0) expected = 0;
            } else if (operation == 6) {
                result = ZVfgets(room.data(), int(n), f) == room.data();
                expected = n > 1 && model.take(text.size() - 1, '\n') && model.raised != EOVERFLOW;
                model.taken.append(size_t(expected), '\0');
            } else if (operation == 7) {
                result = ZVfgetc(f);
                expected = model.take(1, 256) ? std::exchange(model.taken, "")[0] : -1;
            } else if (operation == 8 && model.pushed.size() < 4) {
                result = ZVungetc(c, f);
                expected = model.push(c);
            } else if (operation >= 9) {
                operation == 9 ? ZVclearerr(f) : ZVrewind(f);
                model.at_end = model.error = 0;
                if (operation == 10) model.seek(0);
            }
            ASSERT_EQ(std::pair(result, errno), std::pair(expected, model.raised)) << operation;
            ASSERT_EQ(ZVfgetpos(f, &told), 0);
            ASSERT_EQ(std::tuple(told, ZVfeof(f), ZVferror(f)),
                      std::tuple(model.position, model.at_end, model.error));
            ASSERT_EQ(ZVftell(f), model.position);
            model.taken.resize(text.size(), '#');
            ASSERT_EQ(std::string(room.data(), text.size()), model.taken);
        }
        ASSERT_EQ(test::content(path, base), test::content(twin, base));
        close(model.descriptor);
    }
}

TEST(Stream, TakesADescriptorOver) {
    const test::Folder folder;
    test::write_file(folder / "file", "0123456789");
    const int descriptor = open((folder / "file").c_str(), O_RDWR);
    lseek(descriptor, 4, SEEK_SET);
    const Stream stream{ZVfdopen(descriptor, "r+a")};
    EXPECT_EQ(ZVfgetc(stream), '4');
    for (const int room : {1 + 4, 4096}) {
        for (int i = 0; i < room; ++i) EXPECT_EQ(ZVungetc('p', stream), 'p');
        EXPECT_EQ(ZVungetc('p', stream), -1);
        EXPECT_EQ(ZVftell(stream), (room == 5 ? 1 : 11) - room);
        EXPECT_EQ(ZVfputc('x', stream), 'x') << "drops what was pushed back";
    }
    const int next = dup(descriptor);
    { const Stream closing{ZVfdopen(next, "r")}; }
    EXPECT_EQ(fcntl(next, F_GETFD), -1);
}

TEST(Stream, FailuresGiveTheirValuesAndErrno) {
    const auto with = [](int error, auto result) {
        return std::exchange(errno, 0) == error ? long(result) : 99;
    };
    const auto bad = [&](auto result) { return with(EBADF, result); };
    long position = 7;
    char s[16];
    alignas(16) static char no_stream[8192];
    errno = 0;
    for (ZVFILE* f : {static_cast<ZVFILE*>(nullptr), reinterpret_cast<ZVFILE*>(no_stream)}) {
        for (const long result :
             {bad(ZVfclose(f)), bad(ZVfgetc(f)), bad(ZVungetc('c', f)), bad(ZVfread(s, 0, 1, f)),
              bad(ZVfputc('c', f)), bad(ZVfputs("", f)), bad(ZVftell(f)), bad(ZVferror(f)),
              bad(ZVfgetpos(f, &position)), bad(ZVfseek(f, 0, 0)), bad(ZVfflush(f)),
              with(0, ZVfileno(f)), 6 - position})
            EXPECT_EQ(result, -1);
        for (const long result :
             {bad(!!ZVfgets(s, 1, f)), bad(ZVfwrite("c", 0, 1, f)), bad(ZVfprintf(f, "%s", "x")),
              bad(ZVfeof(f)), bad((ZVrewind(f), 0)), bad((ZVclearerr(f), 0))})
            EXPECT_EQ(result, 0);
    }
    const Stream full = open_stream("/dev/full", "w"), directory = open_stream("/", "r");
    EXPECT_EQ(with(ENOSPC, ZVfwrite("abc", 1, 3, full)), 0);
    EXPECT_EQ(with(EOVERFLOW, ZVfwrite(s, SIZE_MAX / 2, 3, full)), 0);
    EXPECT_EQ(with(EOVERFLOW, ZVfseek(directory, LONG_MAX, SEEK_SET)), -1);
    EXPECT_EQ(with(EISDIR, ZVfgetc(directory)), -1);
    EXPECT_EQ(with(EISDIR, ZVfread(s, 1, 8, directory)), 0);
    EXPECT_EQ(with(EISDIR, !!ZVfgets(s, 8, directory)), 0);
    EXPECT_EQ(ZVfeof(directory), 0);
    EXPECT_EQ(with(EISDIR, open_stream("/", "w") != nullptr), 0);
    EXPECT_EQ(with(EILSEQ, ZVfprintf(full, "%ls", L"\x7FFFFFFF")), -1);

    const test::Folder folder;
    const Stream stream = open_stream(folder / "file", "w");
    signal(SIGXFSZ, SIG_IGN);
    const rlimit small = {1000, RLIM_INFINITY}, large = {RLIM_INFINITY, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_EQ(ZVfwrite(std::string(5000, 'w').data(), 1, 5000, stream), 0U);
    setrlimit(RLIMIT_FSIZE, &large);
    EXPECT_EQ(ZVferror(stream), EFBIG);
    EXPECT_EQ(ZVftell(stream), 1000) << "what was written stays";
    EXPECT_EQ(ZVfflush(stream), 0);
}

TEST(Stream, PipesHaveNoPositions) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    const Stream reader{ZVfdopen(ends[0], "r")}, writer{ZVfdopen(ends[1], "w")};
    char s[8];
    EXPECT_EQ(ZVfgetc(reader), -1);
    EXPECT_EQ(ZVferror(reader), EAGAIN);
    EXPECT_EQ(ZVfputs("abcde", writer), 5);
    EXPECT_EQ(ZVfgetc(reader), 'a');
    EXPECT_EQ(ZVfseek(reader, 0, SEEK_CUR), -1);
    EXPECT_EQ(ZVferror(reader), ESPIPE);
    EXPECT_STREQ(ZVfgets(s, 8, reader), "bcde") << "the partial line";
    ZVrewind(reader);
    EXPECT_EQ(ZVferror(reader), 0);
    EXPECT_EQ(ZVfputs("xyz", writer), 3);
    EXPECT_EQ(ZVfread(s, 1, 4, reader), 0U) << "nothing, whatever was copied";
    EXPECT_EQ(ZVftell(reader), 8);
    EXPECT_EQ(ZVftell(writer) + ZVferror(writer), 8);
}

} // namespace
