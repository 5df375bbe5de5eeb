#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <climits>
#include <tuple>

#include "models/stream_model.h"
#include "support/folder.h"
#include "support/guarded.h"
#include "support/texts.h"
#include "zvstdio.h"

namespace {

using test::kLastPosition;

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

TEST(Stream, RandomOperationsAgreeWithAModelInEveryMode) {
    std::mt19937 random(17);
    const test::Folder folder;
    const std::string path = folder / "file", twin = folder / "twin", created = folder / "created";
    struct stat status {};
    umask(027);
    for (size_t round = 0; round < 240; ++round) {
        const auto& [mode, access] = kModes[round / 2 % std::size(kModes)];
        const bool writes_anew = mode[0] == 'w', at_limit = round % 2 == 0 && !writes_anew;
        const long base = at_limit ? kLastPosition - 12000 : 0;
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
        test::StreamModel model{open(twin.c_str(), access | (writes_anew ? O_TRUNC : 0)),
                                mode[0] == 'a'};
        for (int step = 0; step < 100; ++step) {
            test::StreamCall call;
            call.item = 1 + random() % 9, call.count = random() % (step % 8 == 0 ? 3000 : 9);
            call.text = test::random_text(random, "a \n\x01\x80\xFE\xFF", call.bytes());
            call.text.resize(call.bytes(), 'e');
            call.c = int(random() % 400) - 100, call.whence = step == 0 ? 0 : int(random() % 3);
            call.place = base + long(random() % 22000) + (at_limit ? 1000 : -1000);
            call.operation = step == 0 ? 0 : random() % (at_limit ? 10 : 11);
            test::GuardedRoom room(call.text.size());
            long told = 0;
            errno = 0;
            const auto [result, expected] = call.make(f, model, room.data());
            ASSERT_EQ(std::pair(result, errno), std::pair(expected, model.raised))
                << call.operation;
            ASSERT_EQ(ZVfgetpos(f, &told), 0);
            ASSERT_EQ(std::tuple(told, ZVfeof(f), ZVferror(f)),
                      std::tuple(model.position, model.at_end, model.error));
            ASSERT_EQ(ZVftell(f), model.position);
            model.taken.resize(call.bytes(), '#');
            ASSERT_EQ(std::string(room.data(), call.bytes()), model.taken);
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
    EXPECT_EQ(ZVfseek(stream, kLastPosition, SEEK_SET), 0);
    EXPECT_EQ(with(EBADF, ZVfgetc(stream)), -1) << "not readable, wherever it stands";
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
