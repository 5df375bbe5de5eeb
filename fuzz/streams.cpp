// Sequences of calls on a stream over a real file, against the bytes of a second one.
#include <fcntl.h>
#include <sys/stat.h>

#include "input.h"
#include "models/stream_model.h"
#include "support/folder.h"

using fuzz::same;

namespace {

const struct Mode {
    const char* name;
    int access;
} kModes[] = {{"r", O_RDONLY},  {"r+", O_RDWR},    {"rb+", O_RDWR}, {"r+b", O_RDWR},
              {"w", O_WRONLY},  {"wb+", O_RDWR},   {"a", O_WRONLY}, {"ab+", O_RDWR},
              {"x+", O_RDONLY}, {"rw+", O_RDONLY}, {"+", O_RDONLY}, {"", O_RDONLY}};

// Opens what is not there.
void check_creation(const char* mode, const std::string& path) {
    const mode_t mask = umask(027);
    ZVFILE* stream = ZVfopen(path.c_str(), mode);
    umask(mask);
    struct stat status {};
    const bool creates = mode[0] == 'w' || mode[0] == 'a';
    same(stream != nullptr, creates, "whether a file is created");
    same(stat(path.c_str(), &status), creates ? 0 : -1, "whether there is one");
    same(status.st_mode & 0777, creates ? 0750 : 0, "its permissions");
    ZVfclose(stream);
    unlink(path.c_str());
}

test::StreamCall choose(fuzz::Input& input, int64_t base) {
    test::StreamCall call;
    call.operation = input.below(base == 0 ? 11 : 10); // going to the start would leave the base
    call.item = 1 + input.byte() % 9;
    call.count = input.byte() % 8 == 0 ? input.below(600) : input.byte() % 9;
    const unsigned seed = input.byte();
    for (size_t i = 0; i < call.bytes(); ++i)
        call.text += "a \n\x01\x80\xFE\xFF"[(i * i + seed * (i + 1)) % 7];
    call.c = static_cast<int>(input.below(400)) - 100;
    call.whence = input.byte() % 3;
    call.place = base + static_cast<int>(input.below(22000)) + (base == 0 ? -1000 : 1000);
    // From the start, a long of 32 bits reaches no further.
    if (call.whence == 0) call.place = std::min(call.place, test::kLastPosition);
    return call;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const test::Folder folder;
    static const std::string path = folder / "file", twin = folder / "twin";
    fuzz::Input input(data, size);
    const Mode& mode = input.one_of(kModes);
    fuzz::Text mode_name(mode.name);
    check_creation(mode_name.data(), folder / "created");
    // Either an ordinary file or one whose end lies at the last positions.
    const int64_t base = input.coin() && mode.name[0] != 'w' ? test::kLastPosition - 12000 : 0;
    const size_t length = input.below(19000);
    for (const std::string& name : {path, twin}) {
        const int file = open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        const std::string text = std::string(length, 'o') + "\nold";
        fuzz::require(pwrite(file, text.data(), text.size(), base) == ssize_t(text.size()), "file");
        close(file);
    }
    ZVFILE* stream = ZVfopen(path.c_str(), mode_name.data());
    test::StreamModel model{open(twin.c_str(), mode.access | (mode.name[0] == 'w' ? O_TRUNC : 0)),
                            mode.name[0] == 'a'};
    if (base != 0) {
        same(ZVfseek(stream, long(base), SEEK_SET), 0, "ZVfseek");
        model.seek(base);
    }
    for (int step = 0; !input.empty() && step < 100; ++step) {
        const test::StreamCall call = choose(input, base);
        fuzz::Room room(call.bytes());
        errno = 0;
        const auto [result, expected] = call.make(stream, model, room.data());
        same(result, expected, "result");
        same(errno, model.raised, "errno");
        long told = 0;
        same(ZVfgetpos(stream, &told), 0, "ZVfgetpos");
        same(told, model.position, "ZVfgetpos");
        same(ZVftell(stream), model.position, "ZVftell");
        same(ZVfeof(stream), static_cast<int>(model.at_end), "ZVfeof");
        same(ZVferror(stream), model.error, "ZVferror");
        model.taken.resize(call.bytes(), '#');
        same(std::string(room.data(), call.bytes()), model.taken, "what was read");
    }
    ZVfclose(stream);
    close(model.descriptor);
    same(test::content(path, base), test::content(twin, base), "the file");
    return 0;
}
