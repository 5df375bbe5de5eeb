#ifndef ZVUTIL_FUZZ_DIGEST_H
#define ZVUTIL_FUZZ_DIGEST_H

#include <cstdint>
#include <ranges>
#include <type_traits>

namespace fuzz {

// All that was held against a model so far, as one number (FNV-1a): on every machine the same
// inputs give the same. Addresses do not count.
inline constinit uint64_t digest = 0xCBF29CE484222325;
inline constinit bool digesting = false;

template <class Value>
void add_to_digest(const Value& value) {
    if (!digesting) return;
    if constexpr (std::is_same_v<Value, char>) {
        digest = (digest ^ static_cast<unsigned char>(value)) * 0x100000001B3;
    } else if constexpr (std::is_integral_v<Value>) {
        for (int shift = 0; shift < 64; shift += 8)
            add_to_digest(static_cast<char>(static_cast<uint64_t>(value) >> shift));
    } else if constexpr (std::ranges::sized_range<Value>) {
        add_to_digest(std::ranges::size(value));
        for (const auto& part : value) add_to_digest(part);
    }
}

} // namespace fuzz

#endif
