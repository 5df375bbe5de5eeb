// Compiled for processors with AVX2: nothing that others run may be compiled here.
#include "code_pages_avx2.h"

#include <immintrin.h>

#include "code_page_tables.h"

namespace zv {
namespace {

// What distinguishes the targets of sixteen bytes, which begin with `first`, from these bytes.
__m256i differences(const ByteMap& map, int first) {
    const __m128i low_digits = _mm_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
    const __m128i bytes = _mm_or_si128(low_digits, _mm_set1_epi8(static_cast<char>(first)));
    __m128i targets;
    std::memcpy(&targets, map.target + first, sizeof targets);
    return _mm256_broadcastsi128_si256(_mm_xor_si128(targets, bytes));
}

// Converts by a map that leaves all bytes as they are but for three or four rows of sixteen, each
// of which is looked up at once.
template <int... FirstOfRow>
Converted convert_rows(const ByteMap& map, Source source, Byte* out) {
    struct Row {
        __m256i first;
        __m256i differences;
    };
    const Row rows[] = {
        {_mm256_set1_epi8(static_cast<char>(FirstOfRow)), differences(map, FirstOfRow)}...};
    // For bytes outside the row the sum is 80 and more, which a shuffle answers with zero.
    const __m256i beyond_row = _mm256_set1_epi8(0x70);
    for (; source.left() >= kWideBlockSize; source.next += kWideBlockSize, out += kWideBlockSize) {
        __m256i block;
        std::memcpy(&block, source.next, sizeof block);
        __m256i converted = block;
        for (const Row& row : rows) {
            const __m256i place = _mm256_adds_epu8(_mm256_xor_si256(block, row.first), beyond_row);
            converted = _mm256_xor_si256(converted, _mm256_shuffle_epi8(row.differences, place));
        }
        std::memcpy(out, &converted, sizeof converted);
    }
    return {source.next, out};
}

} // namespace

Converted wide_iso_2_to_windows_1250(Source source, Byte* out) {
    return convert_rows<0x00, 0xA0, 0xB0>(kIso2ToWindows1250, source, out);
}

Converted wide_windows_1250_to_iso_2(Source source, Byte* out) {
    return convert_rows<0x80, 0x90, 0xA0, 0xB0>(kWindows1250ToIso2, source, out);
}

} // namespace zv
