#ifndef ZVUTIL_TESTS_TEXTS_H
#define ZVUTIL_TESTS_TEXTS_H

#include <cstdio>
#include <memory>
#include <string_view>

namespace test {

// A stream of its own that holds a text and stands at its start. Using it takes no memory.
using Stream = std::unique_ptr<FILE, int (*)(FILE*)>;
inline Stream stream_of(std::string_view text) {
    Stream stream(tmpfile(), fclose);
    setvbuf(stream.get(), nullptr, _IONBF, 0);
    fwrite(text.data(), 1, text.size(), stream.get());
    rewind(stream.get());
    return stream;
}

} // namespace test

#endif
