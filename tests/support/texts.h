#ifndef ZVUTIL_TESTS_TEXTS_H
#define ZVUTIL_TESTS_TEXTS_H

#include <cstdio>
#include <memory>
#include <random>
#include <string>
#include <string_view>

namespace test {

// A text of random length up to `longest`, of bytes taken from `alphabet`.
inline std::string random_text(std::mt19937& random, std::string_view alphabet, size_t longest) {
    std::string text(random() % (longest + 1), '\0');
    for (char& c : text) c = alphabet[random() % alphabet.size()];
    return text;
}

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
