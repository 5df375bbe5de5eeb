#ifndef ZVUTIL_FUZZ_STREAM_MODEL_H
#define ZVUTIL_FUZZ_STREAM_MODEL_H

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <string>
#include <utility>

#include "input.h"
#include "zvstdio.h"

namespace test {

inline constexpr int64_t kLastPosition = INT_MAX;

// A file in memory, with a position and pushed back bytes, the next one last.
struct StreamModel {
    std::string file; // its bytes from `origin` on
    int64_t origin;
    int access;
    bool append;
    int64_t position = 0, at_end = 0;
    int error = 0, raised = 0;
    std::string pushed = "", taken = "";

    int64_t size() const { return origin + int64_t(file.size()); }
    bool fail(int number) { return error = raised = number, false; }
    bool take_byte() {
        const bool from_file = pushed.empty();
        if (from_file && access == O_WRONLY)
            return fail(EBADF);
        if (from_file && position >= size())
            return at_end = 1, false;
        if (position == kLastPosition)
            return fail(EOVERFLOW);
        taken += from_file ? file[at(position)] : pushed.back();
        if (!from_file)
            pushed.pop_back();
        return ++position, true;
    }
    // Up to the last byte wanted; 256 is none.
    long take(size_t most, int last) {
        const int64_t start = position;
        while (taken.size() < most && take_byte() && taken.back() != last)
            continue;
        if (raised == EOVERFLOW)
            position = start;
        return long(taken.size());
    }
    long push(int c) { return pushed += char(c), --position, at_end = 0, c; }
    bool write(const std::string& text) {
        const int64_t place = append ? size() : position, length = int64_t(text.size());
        if (place < 0)
            return fail(EINVAL);
        pushed = "";
        if (place > kLastPosition - length)
            return fail(EOVERFLOW);
        position = place;
        if (text.empty())
            return false;
        if (access == O_RDONLY)
            return fail(EBADF);
        file.resize(std::max(file.size(), at(place) + text.size()));
        file.replace(at(place), text.size(), text);
        return position += length, true;
    }
    size_t at(int64_t place) const { return size_t(place - origin); }
    bool seek(int64_t place) {
        if (place < 0 || place > kLastPosition)
            return fail(place < 0 ? EINVAL : EOVERFLOW);
        return position = place, pushed = "", at_end = 0, true;
    }
};

// One call on a stream and on its model.
struct StreamCall {
    StreamCall(fuzz::Input& input, int64_t base) {
        operation = input.below(base == 0 ? 11 : 10); // going to the start would leave the base
        item = 1 + input.byte() % 9;
        count = input.byte() % 8 == 0 ? input.below(600u) : input.byte() % 9;
        static const std::string pattern = [] {
            std::string bytes;
            for (size_t i = 0; i < 8000; ++i)
                bytes += "a \n\x01\x80\xFE\xFF"[(i * i + i / 7) % 7];
            return bytes;
        }();
        text = pattern.substr(input.byte(), bytes());
        c = input.below(400) - 100;
        whence = input.below(4); // 3 is as good as SEEK_CUR
        place = base + input.below(13000) + (base == 0 ? -1000 : 1000);
        // Or where a write of so many bytes ends at the last position, or near it.
        if (base != 0 && input.byte() % 4 == 0)
            place = kLastPosition - static_cast<int>(bytes()) + input.below(5) - 2;
        if (whence == 0) // a long of 32 bits reaches no further
            place = std::min(place, kLastPosition);
    }
    size_t bytes() const { return item * count; }

    // Makes the call, with `room` for bytes() bytes. Gives its result and the model's.
    std::pair<long, long> make(ZVFILE* f, StreamModel& model, char* room) const {
        const long n = long(text.size());
        const int64_t bases[] = {0, model.position, model.size(), model.position};
        long result = 0, expected = 0;
        model.taken = "", model.raised = 0;
        if (operation == 0) {
            result = ZVfseek(f, long(place - bases[whence]), whence);
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
            result = long(ZVfread(room, item, count, f));
            expected = model.take(text.size(), 256) / long(item);
            if (model.raised != 0)
                expected = 0;
        } else if (operation == 6) {
            result = ZVfgets(room, int(n), f) == room;
            expected = n > 1 && model.take(text.size() - 1, '\n') && model.raised != EOVERFLOW;
            model.taken.append(size_t(expected), '\0');
        } else if (operation == 7) {
            result = ZVfgetc(f);
            expected = model.take(1, 256) ? static_cast<signed char>(model.taken[0]) : -1;
            model.taken = "";
        } else if (operation == 8) {
            result = ZVungetc(c, f);
            // There may be room for more than four.
            const bool refused = model.pushed.size() >= 4 && ZVftell(f) == model.position;
            expected = refused ? -1 : model.push(c);
        } else if (operation >= 9) {
            operation == 9 ? ZVclearerr(f) : ZVrewind(f);
            model.at_end = model.error = 0;
            if (operation == 10)
                model.seek(0);
        }
        return {result, expected};
    }

    int operation, c, whence;
    size_t item, count;
    std::string text; // of bytes() bytes without a zero
    int64_t place;    // where a long reaches from the start of the file
};

} // namespace test

#endif
