#ifndef ZVUTIL_TESTS_GUARDED_H
#define ZVUTIL_TESTS_GUARDED_H

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace test {

// Memory whose last byte stands directly before an inaccessible page. Where it takes whole pages,
// its first byte stands directly behind another one.
class GuardedRoom {
public:
    explicit GuardedRoom(size_t size)
        : unused_(unused((std::max(size, size_t{1}) + page() - 1) / page() * page())) {
        end_ = unused_.back();
        unused_.pop_back();
        // What a function must write itself, such as a terminator, is not there by chance.
        data_ = static_cast<char*>(memset(end_ - size, '#', size));
    }
    ~GuardedRoom() { unused_.push_back(end_); }
    GuardedRoom(const GuardedRoom&) = delete;
    GuardedRoom& operator=(const GuardedRoom&) = delete;

    char* data() { return data_; }
    // The string that stands at the front of the room.
    std::string text() const { return data_; }

private:
    static size_t page() {
        static const auto size = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        return size;
    }

    // The ends of the mappings of a size that this thread does not use, one at least: making one
    // takes far longer than most tests' calls.
    static std::vector<char*>& unused(size_t capacity) {
        static thread_local std::map<size_t, std::vector<char*>> all;
        std::vector<char*>& ends = all[capacity];
        if (!ends.empty())
            return ends;
        void* mapping =
            mmap(nullptr, capacity + 2 * page(), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapping == MAP_FAILED)
            abort();
        char* const first = static_cast<char*>(mapping) + page();
        if (mprotect(first, capacity, PROT_READ | PROT_WRITE) != 0)
            abort();
        ends.push_back(first + capacity);
        return ends;
    }

    std::vector<char*>& unused_;
    char *end_, *data_;
};

// A string whose terminator is the last readable byte.
class GuardedText : public GuardedRoom {
public:
    explicit GuardedText(std::string_view text) : GuardedRoom(text.size() + 1) {
        data()[text.copy(data(), text.size())] = '\0';
    }
    const unsigned char* bytes() { return reinterpret_cast<const unsigned char*>(data()); }
};

// Address space that is the same piece of memory over and over, filled with a byte; writing to it
// changes all of them where they share it (MAP_SHARED, MAP_PRIVATE).
inline constexpr size_t kPiece = 2 << 20;
inline char* repeated_piece(size_t size, char byte, int sharing) {
    const int flags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, both = PROT_READ | PROT_WRITE;
    const int piece = memfd_create("piece", 0);
    const std::string bytes(kPiece, byte);
    if (write(piece, bytes.data(), kPiece) != ssize_t{kPiece})
        abort();
    auto* const start = static_cast<char*>(mmap(nullptr, size, PROT_NONE, flags, -1, 0));
    for (size_t at = 0; at < size; at += kPiece)
        if (mmap(start + at, kPiece, both, sharing | MAP_FIXED, piece, 0) != start + at)
            abort();
    close(piece);
    return start;
}

// The result of a function (const char* source, char* output) that is given exactly `room` bytes.
std::string convert_guarded(auto convert, std::string_view text, size_t room) {
    GuardedText source(text);
    GuardedRoom output(room);
    convert(source.data(), output.data());
    return output.text();
}

} // namespace test

#endif
