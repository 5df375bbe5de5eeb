// Text read and written through the conversion: nothing is lost, cut or left behind.
#include <unistd.h>

#include "input.h"
#include "mbutil.h"
#include "models/strings_model.h"
#include "support/folder.h"

using fuzz::same, test::converted;

namespace {

const std::pair<int, int> kPairs[] = {
    {ZV_SJIS, ZV_EUC},   {ZV_EUC, ZV_SJIS},     {ZV_JIS, ZV_EUC},  {ZV_JIS, ZV_SJIS},
    {ZV_BIG5, ZV_EUC_H}, {ZV_EUC_H, ZV_BIG5},   {ZV_SJIS, ZV_JIS}, {ZV_EUC, ZV_JIS},
    {0, ZV_EUC},         {ZV_CP1251, ZV_8859_5}};

// Each line converted by itself, in pieces where the room is small.
void check_lines(FILE* stream, const std::string& text, int size, int from, int to) {
    const auto room = static_cast<size_t>(size) - 1;
    fuzz::Room line(room + 1);
    for (std::string_view left = text; room != 0 && !left.empty();) {
        const std::string raw = fuzz::take_line(left, room);
        const bool converts = from != 0 && mbIsMultiByte();
        same(mbfgets(line.data(), size, stream, from), line.data(), "mbfgets");
        same(line.text(), converts ? test::cut(converted(raw, from, to), room) : raw, "mbfgets");
    }
    same(room != 0 && mbfgets(line.data(), size, stream, from) != nullptr, false, "end of file");
}

// Blocks put together are the text, and none ends inside a character that there is room for.
void check_blocks(FILE* stream, const std::string& text, unsigned size) {
    fuzz::Room block(size + 1);
    for (size_t at = 0, whole = 1; whole != 0; at += whole) {
        whole = test::block_size(&text[at], text.size() - at, size);
        same(mbfreadstring(block.data(), size, stream), whole, "mbfreadstring");
        same(block.text(), text.substr(at, whole), "mbfreadstring");
    }
}

// A stream without positions, whose characters no marks separate either.
FILE* pipe_of(const std::string& text) {
    int ends[2];
    fuzz::require(pipe(ends) == 0 && write(ends[1], text.data(), text.size()) > 0, "pipe");
    close(ends[1]);
    return fdopen(ends[0], "r");
}

void check_written(const char* text, size_t size, int from, int to) {
    char* written = nullptr;
    size_t length = 0;
    FILE* const stream = open_memstream(&written, &length);
    fuzz::require(mbfputs(text, stream, from) >= 0, "mbfputs");
    fclose(stream);
    same(std::string(written, length),
         mbIsMultiByte() ? converted(text, to, from) : std::string(text, size), "mbfputs");
    free(written);
}

void check_file(std::string text, int from, int to) {
    // What needs several reads goes on over the ends of several writes.
    for (int i = 0; text.size() > 20000 && i < 3; ++i)
        text += text;
    static const test::Folder folder;
    static const std::string in = folder / "in", out = folder / "out";
    test::write_file(in, text);
    const bool supported = IsConversionSupport(from, to) != 0;
    same(mbconvertfile2native_ex(in.c_str(), out.c_str(), 0, from), supported,
         "mbconvertfile2native_ex");
    if (!supported)
        return;
    std::string expected = converted(text, from, to), actual = test::content(out);
    // A pair of JIS bytes above 7F can become a zero byte; the file goes on behind it.
    const auto is_high = [](char byte) { return (byte & 0x80) != 0; };
    if (from == ZV_JIS && std::ranges::any_of(text, is_high))
        actual.resize(expected.size());
    same(actual, expected, "one conversion");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    const auto [from, to] = input.one_of(kPairs);
    const unsigned room = 1 + input.byte() % 80, choice = input.byte();
    const std::string text = input.text_of_any_size();
    if (text.empty())
        return 0;
    // A long text as one line, or nearly.
    const size_t wide = text.size() > 1000 ? text.size() - 2 + input.chance(8) : 11 * room;
    const auto size_of_room = static_cast<unsigned>(choice % 2 == 0 ? room : wide);
    InitMbutilExt(to);
    fuzz::Text readable(text);
    if (choice / 2 % 4 == 0)
        return check_file(text, from, to), 0;
    if (choice / 2 % 4 == 1)
        return check_written(readable.data(), text.size(), from, to), 0;
    FILE* const stream =
        choice / 2 % 8 == 3 ? pipe_of(text) : fmemopen(readable.data(), text.size(), "r");
    if (choice / 2 % 4 == 2)
        check_lines(stream, text, static_cast<int>(size_of_room), from, to);
    else if (mbIsMultiByte())
        check_blocks(stream, text, size_of_room);
    fclose(stream);
    return 0;
}
