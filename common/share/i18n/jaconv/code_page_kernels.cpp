// Compiled for each size of vectors: what processors run that have no wide ones may not be defined
// here.
#include "code_page_kernels.h"

#include "code_page_tables.h"
#include "kernels.h"

namespace zv {
namespace {

// A conversion moves most bytes by one distance or not at all. The others stand in a few rows of
// sixteen, by their first bytes.
template <const ByteMap& Map, Byte... Rows>
struct Unmoved {
    static constexpr const ByteMap& kMap = Map;
    [[maybe_unused]] static constexpr std::array kRows = {Rows...};
    static ByteBlock move(ByteBlock bytes) { return bytes; }
    static bool has_row(ByteBlock bytes) {
        return high_bits((((bytes & 0xF0) == Rows) | ...)) != 0;
    }
};
ByteBlock as_block(auto marks) {
    return std::bit_cast<ByteBlock>(marks);
}
struct Iso5ToWindows1251 : Unmoved<kIso5ToWindows1251, 0x00, 0xA0, 0xF0> {
    static ByteBlock move(ByteBlock bytes) { return bytes + (as_block(bytes > 0x9F) & 0x10); }
};
struct Windows1251ToIso5 : Unmoved<kWindows1251ToIso5, 0x80, 0x90, 0xA0, 0xB0> {
    static ByteBlock move(ByteBlock bytes) { return bytes - (as_block(bytes > 0x7F) & 0x10); }
};
using Iso2ToWindows1250 = Unmoved<kIso2ToWindows1250, 0x00, 0xA0, 0xB0>;
using Windows1250ToIso2 = Unmoved<kWindows1250ToIso2, 0x80, 0x90, 0xA0, 0xB0>;

#if defined(__AVX512VBMI2__)
// Looks all bytes up in four registers.
template <class Direction>
class Converter {
public:
    ByteBlock operator()(ByteBlock bytes) const {
        const __m512i places = std::bit_cast<__m512i>(bytes);
        const __m512i low = _mm512_permutex2var_epi8(quarters_[0], places, quarters_[1]);
        const __m512i high = _mm512_permutex2var_epi8(quarters_[2], places, quarters_[3]);
        return std::bit_cast<ByteBlock>(
            _mm512_mask_mov_epi8(low, _mm512_movepi8_mask(places), high));
    }

private:
    static __m512i quarter(size_t i) {
        return std::bit_cast<__m512i>(load_block(Direction::kMap.target + i * kBlockSize));
    }
    __m512i quarters_[4] = {quarter(0), quarter(1), quarter(2), quarter(3)};
};
#elif defined(__AVX2__)
// Looks the rows up, each at once, as what distinguishes their targets from the moved bytes.
template <class Direction>
class Converter {
public:
    Converter() {
        for (size_t row = 0; row < kRows; ++row) {
            const Byte first = Direction::kRows[row];
            const auto* const targets = Direction::kMap.target + first;
            const __m256i copies = _mm256_broadcastsi128_si256(
                _mm_loadu_si128(reinterpret_cast<const __m128i*>(targets)));
            constexpr ByteBlock kPlaces = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15,
                                           0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
            differences_[row] = std::bit_cast<ByteBlock>(copies) ^ Direction::move(kPlaces + first);
        }
    }
    ByteBlock operator()(ByteBlock bytes) const {
        ByteBlock converted = Direction::move(bytes);
#pragma GCC unroll 4
        for (size_t row = 0; row < kRows; ++row) {
            // For bytes outside the row the sum is 80 and more, which a shuffle answers with zero.
            const __m256i place = _mm256_adds_epu8(
                std::bit_cast<__m256i>(bytes ^ Direction::kRows[row]), _mm256_set1_epi8(0x70));
            converted ^= std::bit_cast<ByteBlock>(
                _mm256_shuffle_epi8(std::bit_cast<__m256i>(differences_[row]), place));
        }
        return converted;
    }

private:
    static constexpr size_t kRows = Direction::kRows.size();
    ByteBlock differences_[kRows];
};
#endif

template <class Direction>
Byte* convert_bytes(Source source, Byte* out) {
#ifdef __AVX2__
    const Converter<Direction> converter;
    for (; source.left() >= kBlockSize; source.next += kBlockSize, out += kBlockSize)
        store_block(out, converter(load_block(source.next)));
    const size_t left = source.left();
    store_front(out, converter(load_front(source.next, left)), left);
    return out + left;
#else
    // Byte by byte, where a row is met.
    for (; source.left() >= kBlockSize; source.next += kBlockSize, out += kBlockSize) {
        const ByteBlock bytes = load_block(source.next);
        if (!Direction::has_row(bytes)) {
            store_block(out, Direction::move(bytes));
            continue;
        }
#pragma GCC unroll 16
        for (size_t i = 0; i < kBlockSize; ++i)
            out[i] = Direction::kMap.target[source.next[i]];
    }
    while (source.next != source.end)
        *out++ = Direction::kMap.target[*source.next++];
    return out;
#endif
}

using Kernels = CodePageKernels<kBlockSize>;

} // namespace

template <>
Byte* Kernels::iso_5_to_windows_1251(Source source, Byte* out) {
    return convert_bytes<Iso5ToWindows1251>(source, out);
}

template <>
Byte* Kernels::windows_1251_to_iso_5(Source source, Byte* out) {
    return convert_bytes<Windows1251ToIso5>(source, out);
}

template <>
Byte* Kernels::iso_2_to_windows_1250(Source source, Byte* out) {
    return convert_bytes<Iso2ToWindows1250>(source, out);
}

template <>
Byte* Kernels::windows_1250_to_iso_2(Source source, Byte* out) {
    return convert_bytes<Windows1250ToIso2>(source, out);
}

} // namespace zv
