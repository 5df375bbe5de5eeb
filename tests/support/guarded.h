#ifndef ZVUTIL_TESTS_GUARDED_H
#define ZVUTIL_TESTS_GUARDED_H

#include <cstddef>
#include <string>
#include <string_view>

namespace test {

// Memory whose last byte stands directly before an inaccessible page.
class GuardedRoom {
public:
    explicit GuardedRoom(size_t size);
    ~GuardedRoom();
    GuardedRoom(const GuardedRoom&) = delete;
    GuardedRoom& operator=(const GuardedRoom&) = delete;

    char* data() { return data_; }
    // The string that stands at the front of the room.
    std::string text() const { return data_; }

private:
    size_t capacity_;
    char* data_;
    char* end_;
};

// A string whose terminator is the last readable byte.
class GuardedText : public GuardedRoom {
public:
    explicit GuardedText(std::string_view text) : GuardedRoom(text.size() + 1) {
        data()[text.copy(data(), text.size())] = '\0';
    }
    const unsigned char* bytes() { return reinterpret_cast<const unsigned char*>(data()); }
};

// The result of a function (const char* source, char* output) that is given exactly `room` bytes.
std::string convert_guarded(auto convert, std::string_view text, size_t room) {
    GuardedText source(text);
    GuardedRoom output(room);
    convert(source.data(), output.data());
    return output.text();
}

} // namespace test

#endif
