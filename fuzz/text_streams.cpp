// Text read and written through the conversion: nothing is lost, cut or left behind.
#include <unistd.h>

#include <cstdio>

#include "input.h"
#include "mbutil.h"
#include "models/strings_model.h"
#include "support/folder.h"

using fuzz::same;

namespace {

const std::pair<int, int> kPairs[] = {
    {ZV_SJIS, ZV_EUC},   {ZV_EUC, ZV_SJIS},     {ZV_JIS, ZV_EUC},  {ZV_JIS, ZV_SJIS},
    {ZV_BIG5, ZV_EUC_H}, {ZV_EUC_H, ZV_BIG5},   {ZV_SJIS, ZV_JIS}, {ZV_EUC, ZV_JIS},
    {0, ZV_EUC},         {ZV_CP1251, ZV_8859_5}};

std::string converted(const std::string& text, int from, int to) {
    std::string out(5 * text.size() + 4, '\0');
    return convertStrExt(text.c_str(), from, out.data(), to);
}

// Each line converted by itself, in pieces where the room is small.
void check_lines(FILE* stream, const std::string& text, int size, int from, int to) {
    const auto room = static_cast<size_t>(size) - 1;
    fuzz::Room line(room + 1);
    for (size_t at = 0; room != 0 && at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
        const std::string raw = text.substr(at, std::min(end - at, room));
        std::string wanted = raw;
        if (from != 0 && mbIsMultiByte()) {
            wanted = converted(raw, from, to);
            wanted.resize(test::boundary(wanted, room));
        }
        same(mbfgets(line.data(), size, stream, from), line.data(), "mbfgets");
        same(line.text(), wanted, "mbfgets");
        at += raw.size();
    }
    same(room != 0 && mbfgets(line.data(), size, stream, from) != nullptr, false, "end of file");
}

// Blocks put together are the text, and none ends inside a character that there is room for.
void check_blocks(FILE* stream, std::string text, unsigned size) {
    fuzz::Room block(size + 1);
    for (size_t whole = 1; whole != 0; text.erase(0, whole)) {
        whole = test::block_size(text, size);
        same(mbfreadstring(block.data(), size, stream), whole, "mbfreadstring");
        same(block.text(), text.substr(0, whole), "mbfreadstring");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const test::Folder folder;
    static const std::string in = folder / "in", out = folder / "out";
    fuzz::Input input(data, size);
    const auto [from, to] = input.one_of(kPairs);
    const int room = 1 + static_cast<int>(input.byte() % 80);
    // Repeated so often, a text fills several blocks of a file.
    const size_t times = input.byte() % 8 == 0 ? input.below(4000) : 0;
    const std::string text = input.text();
    if (text.empty()) return 0;
    InitMbutilExt(to);
    fuzz::Text readable(text);
    FILE* stream = fmemopen(readable.data(), text.size(), "r");
    check_lines(stream, text, room, from, to);
    rewind(stream);
    int ends[2];
    fuzz::require(pipe(ends) == 0 && write(ends[1], text.data(), text.size()) > 0, "pipe");
    close(ends[1]);
    FILE* const from_pipe = fdopen(ends[0], "r");
    // What has no end marks for characters has no blocks either.
    for (FILE* source : {stream, from_pipe}) {
        const auto wide = static_cast<unsigned>(times % 4 == 3 ? 11 * room : room);
        if (mbIsMultiByte()) check_blocks(source, text, wide);
        fclose(source);
    }
    char* written = nullptr;
    size_t length = 0;
    stream = open_memstream(&written, &length);
    fuzz::require(mbfputs(readable.data(), stream, from) >= 0, "mbfputs");
    fclose(stream);
    same(std::string(written, length), mbIsMultiByte() ? converted(text, to, from) : text,
         "mbfputs");
    free(written);

    std::string whole;
    for (size_t i = 0; i <= times && whole.size() < 70000; ++i) whole += text;
    test::write_file(in, whole);
    same(mbconvertfile2native_ex(in.c_str(), out.c_str(), 0, from), IsConversionSupport(from, to),
         "mbconvertfile2native_ex");
    std::string expected = converted(whole, from, to), actual = test::content(out);
    // A pair of JIS bytes above 7F can become a zero byte; the file goes on behind it.
    const auto is_high = [](char byte) { return (byte & 0x80) != 0; };
    if (from == ZV_JIS && std::ranges::any_of(text, is_high)) actual.resize(expected.size());
    if (IsConversionSupport(from, to)) same(actual, expected, "one conversion");
    return 0;
}
