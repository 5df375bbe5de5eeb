#ifndef ZVUTIL_FUZZ_INPUT_H
#define ZVUTIL_FUZZ_INPUT_H

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ranges>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "memory.h"

namespace fuzz {

// All that was held against a model so far, as one number: on every machine the same inputs give
// the same. Addresses do not count.
inline constexpr uint64_t kPrime = 0x100000001B3; // as FNV-1a has it
inline constinit uint64_t digest = 0xCBF29CE484222325;
inline constinit bool digesting = false;

template <class Value>
void add_to_digest(const Value& value) {
    if (!digesting)
        return;
    if constexpr (std::is_same_v<Value, char>) {
        add_to_digest(static_cast<unsigned char>(value));
    } else if constexpr (std::is_integral_v<Value>) {
        digest = (digest ^ static_cast<uint64_t>(value)) * kPrime;
    } else if constexpr (std::ranges::sized_range<Value>) {
        add_to_digest(std::ranges::size(value));
        for (const auto& part : value)
            add_to_digest(part);
    }
}

// What the fuzzer made up, taken from the front: choices in bytes, texts up to a zero byte.
class Input {
public:
    Input(const uint8_t* data, size_t size) : left_(reinterpret_cast<const char*>(data), size) {
        for (const char c : left_)
            chances_ = (chances_ ^ static_cast<unsigned char>(c)) * kPrime;
    }

    bool empty() const { return left_.empty(); }
    // The next byte, 0 when all is used up.
    unsigned byte() {
        const unsigned byte = left_.empty() ? 0 : static_cast<uint8_t>(left_[0]);
        left_.remove_prefix(left_.empty() ? 0 : 1);
        return byte;
    }
    // A number below a bound of at most 65536.
    template <class Number>
    Number below(Number bound) {
        unsigned number = byte();
        if (bound > 256)
            number = number * 256 + byte();
        return static_cast<Number>(number % static_cast<unsigned>(bound));
    }
    bool coin() { return byte() % 2 != 0; }
    const auto& one_of(const auto& choices) { return choices[below(std::size(choices))]; }
    std::string text() {
        const std::string_view text = left_.substr(0, left_.find('\0'));
        left_.remove_prefix(std::min(text.size() + 1, left_.size()));
        return std::string(text);
    }
    // A number below a bound that hangs on every byte of the input: what is made out of an input
    // that is rare, and slow, is as seldom so as any other.
    size_t chance(size_t bound) {
        const uint64_t number = chances_ >> 16;
        chances_ *= kPrime;
        return static_cast<size_t>(number % bound);
    }
    // One in fifty is repeated to a size at which the library might begin to look anew.
    std::string text_of_any_size() {
        static constexpr size_t kSizes[] = {1023, 1024,  1025,  1026,  2048,  4097, 5440,
                                            5472, 16383, 16384, 16385, 22000, 50000};
        const std::string unit = text();
        if (unit.empty() || chance(50) != 0)
            return unit;
        const size_t most = kSizes[chance(std::size(kSizes))], size = most - chance(2) * chance(50);
        std::string all;
        while (all.size() < size)
            all.append(unit, 0, size - all.size());
        return all;
    }
    // Everything, zero bytes too.
    std::string rest() { return std::string(std::exchange(left_, {})); }

private:
    std::string_view left_;
    uint64_t chances_ = 0xCBF29CE484222325;
};

// Takes the next line off a text, with its end, or the piece of it that there is room for.
inline std::string take_line(std::string_view& left, size_t room) {
    const std::string_view piece = left.substr(0, room);
    const std::string_view line = piece.substr(0, std::min(piece.find('\n'), piece.size() - 1) + 1);
    left.remove_prefix(line.size());
    return std::string(line);
}

void print(const char* label, const auto& value) {
    std::fputs(label, stderr);
    if constexpr (std::is_integral_v<std::remove_cvref_t<decltype(value)>>)
        std::fprintf(stderr, "%lld", static_cast<long long>(value));
    else if constexpr (std::is_same_v<decltype(value), const std::string&>)
        for (const char c : value)
            std::fprintf(stderr, c >= ' ' && c < 0x7F ? "%c" : "\\x%02X", c & 0xFF);
}

// A property that does not hold ends the process: the input becomes a finding.
inline void require(bool holds, const char* property) {
    if (holds)
        return;
    std::fprintf(stderr, "\nDoes not hold: %s\n", property);
    abort();
}
inline const auto same = [](const auto& actual, const auto& expected, const char* property) {
    add_to_digest(actual);
    bool equal = false;
    if constexpr (requires { static_cast<long long>(actual), static_cast<long long>(expected); })
        equal = static_cast<long long>(actual) == static_cast<long long>(expected);
    else
        equal = actual == expected;
    if (!equal)
        print("\nactual:   ", actual), print("\nexpected: ", expected);
    require(equal, property);
};

// Runs what promises to take no memory.
void without_memory(auto action, const char* function) {
    if (without_its_memory(action))
        std::fputs("\nTakes memory", stderr), require(false, function);
}

// What a function (const char* source, char* output) writes into exactly that room.
std::string convert_in_room(auto convert, std::string_view text, size_t room,
                            const char* function) {
    Text source(text);
    Room output(room);
    without_memory([&] { convert(source.data(), output.data()); }, function);
    same(source.text(), text, function);
    return output.text();
}

} // namespace fuzz

#endif
