#include "big5_cns_tables.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "jaconv.h"

// Which Big5 characters are which CNS 11643 characters. Where Big5 has a character twice, the row
// of the second is a run of one (C94A, DDFC) whose CNS character another run covers.
constexpr Big5CnsRange Big5CnsTable[] = {
    {0xA140, 0xA1F5, 0x2121, 0x2256, 1}, {0xA1F6, 0xA1F6, 0x2258, 0x2258, 1},
    {0xA1F7, 0xA1F7, 0x2257, 0x2257, 1}, {0xA1F8, 0xA2AE, 0x2259, 0x234E, 1},
    {0xA2AF, 0xA3BF, 0x2421, 0x2570, 1}, {0xA3C0, 0xA3E0, 0x4221, 0x4241, 1},
    {0xA440, 0xACFD, 0x4421, 0x5322, 1}, {0xACFE, 0xACFE, 0x5753, 0x5753, 1},
    {0xAD40, 0xAFCF, 0x5323, 0x5752, 1}, {0xAFD0, 0xBBC7, 0x5754, 0x6B4F, 1},
    {0xBBC8, 0xBE51, 0x6B51, 0x6F5B, 1}, {0xBE52, 0xBE52, 0x6B50, 0x6B50, 1},
    {0xBE53, 0xC1AA, 0x6F5C, 0x7534, 1}, {0xC1AB, 0xC2CA, 0x7536, 0x7736, 1},
    {0xC2CB, 0xC2CB, 0x7535, 0x7535, 1}, {0xC2CC, 0xC360, 0x7737, 0x782C, 1},
    {0xC361, 0xC3B8, 0x782E, 0x7863, 1}, {0xC3B9, 0xC3B9, 0x7865, 0x7865, 1},
    {0xC3BA, 0xC3BA, 0x7864, 0x7864, 1}, {0xC3BB, 0xC455, 0x7866, 0x7961, 1},
    {0xC456, 0xC456, 0x782D, 0x782D, 1}, {0xC457, 0xC67E, 0x7962, 0x7D4B, 1},
    {0xC6A1, 0xC6AA, 0x2621, 0x262A, 1}, {0xC6AB, 0xC6B4, 0x262B, 0x2634, 1},
    {0xC6B5, 0xC6BE, 0x2635, 0x263E, 1}, {0xC6BF, 0xC6C0, 0x2723, 0x2724, 1},
    {0xC6C1, 0xC6C1, 0x2726, 0x2726, 1}, {0xC6C2, 0xC6C2, 0x2728, 0x2728, 1},
    {0xC6C3, 0xC6C5, 0x272D, 0x272F, 1}, {0xC6C6, 0xC6C6, 0x2734, 0x2734, 1},
    {0xC6C7, 0xC6C7, 0x2737, 0x2737, 1}, {0xC6C8, 0xC6C8, 0x273A, 0x273A, 1},
    {0xC6C9, 0xC6C9, 0x273C, 0x273C, 1}, {0xC6CA, 0xC6CA, 0x2742, 0x2742, 1},
    {0xC6CB, 0xC6CB, 0x2747, 0x2747, 1}, {0xC6CC, 0xC6CC, 0x274E, 0x274E, 1},
    {0xC6CD, 0xC6CD, 0x2753, 0x2753, 1}, {0xC6CE, 0xC6CF, 0x2754, 0x2755, 1},
    {0xC6D0, 0xC6D1, 0x2759, 0x275A, 1}, {0xC6D2, 0xC6D2, 0x2761, 0x2761, 1},
    {0xC6D3, 0xC6D3, 0x2766, 0x2766, 1}, {0xC6D4, 0xC6D5, 0x2829, 0x282A, 1},
    {0xC6D6, 0xC6D6, 0x2863, 0x2863, 1}, {0xC6D7, 0xC6D7, 0x286C, 0x286C, 1},
    {0xC879, 0xC879, 0x2123, 0x2123, 4}, {0xC87B, 0xC87B, 0x2124, 0x2124, 4},
    {0xC87D, 0xC87D, 0x212A, 0x212A, 4}, {0xC8A2, 0xC8A2, 0x2152, 0x2152, 4},
    {0xC940, 0xC949, 0x2121, 0x212A, 2}, {0xC94A, 0xC94A, 0x4442, 0x4442, 1},
    {0xC94B, 0xC96B, 0x212B, 0x214B, 2}, {0xC96C, 0xC9BD, 0x214D, 0x217C, 2},
    {0xC9BE, 0xC9BE, 0x214C, 0x214C, 2}, {0xC9BF, 0xC9EC, 0x217D, 0x224C, 2},
    {0xC9ED, 0xCAF6, 0x224E, 0x2438, 2}, {0xCAF7, 0xCAF7, 0x224D, 0x224D, 2},
    {0xCAF8, 0xD6CB, 0x2439, 0x376E, 2}, {0xD6CC, 0xD6CC, 0x3E63, 0x3E63, 2},
    {0xD6CD, 0xD779, 0x3770, 0x387D, 2}, {0xD77A, 0xD77A, 0x3F6A, 0x3F6A, 2},
    {0xD77B, 0xDADE, 0x387E, 0x3E62, 2}, {0xDADF, 0xDADF, 0x376F, 0x376F, 2},
    {0xDAE0, 0xDBA6, 0x3E64, 0x3F69, 2}, {0xDBA7, 0xDDFB, 0x3F6B, 0x4423, 2},
    {0xDDFC, 0xDDFC, 0x4176, 0x4176, 2}, {0xDDFD, 0xE8A2, 0x4424, 0x554A, 2},
    {0xE8A3, 0xE975, 0x554C, 0x5721, 2}, {0xE976, 0xEB5A, 0x5723, 0x5A27, 2},
    {0xEB5B, 0xEBF0, 0x5A29, 0x5B3E, 2}, {0xEBF1, 0xEBF1, 0x554B, 0x554B, 2},
    {0xEBF2, 0xECDD, 0x5B3F, 0x5C69, 2}, {0xECDE, 0xECDE, 0x5722, 0x5722, 2},
    {0xECDF, 0xEDA9, 0x5C6A, 0x5D73, 2}, {0xEDAA, 0xEEEA, 0x5D75, 0x6038, 2},
    {0xEEEB, 0xEEEB, 0x642F, 0x642F, 2}, {0xEEEC, 0xF055, 0x6039, 0x6242, 2},
    {0xF056, 0xF056, 0x5D74, 0x5D74, 2}, {0xF057, 0xF0CA, 0x6243, 0x6336, 2},
    {0xF0CB, 0xF0CB, 0x5A28, 0x5A28, 2}, {0xF0CC, 0xF162, 0x6337, 0x642E, 2},
    {0xF163, 0xF16A, 0x6430, 0x6437, 2}, {0xF16B, 0xF16B, 0x6761, 0x6761, 2},
    {0xF16C, 0xF267, 0x6438, 0x6572, 2}, {0xF268, 0xF268, 0x6934, 0x6934, 2},
    {0xF269, 0xF2C2, 0x6573, 0x664C, 2}, {0xF2C3, 0xF374, 0x664E, 0x6760, 2},
    {0xF375, 0xF465, 0x6762, 0x6933, 2}, {0xF466, 0xF4B4, 0x6935, 0x6961, 2},
    {0xF4B5, 0xF4B5, 0x664D, 0x664D, 2}, {0xF4B6, 0xF4FC, 0x6962, 0x6A4A, 2},
    {0xF4FD, 0xF662, 0x6A4C, 0x6C51, 2}, {0xF663, 0xF663, 0x6A4B, 0x6A4B, 2},
    {0xF664, 0xF976, 0x6C52, 0x7165, 2}, {0xF977, 0xF9C3, 0x7167, 0x7233, 2},
    {0xF9C4, 0xF9C4, 0x7166, 0x7166, 2}, {0xF9C5, 0xF9C5, 0x7234, 0x7234, 2},
    {0xF9C6, 0xF9C6, 0x7240, 0x7240, 2}, {0xF9C7, 0xF9D1, 0x7235, 0x723F, 2},
    {0xF9D2, 0xF9D5, 0x7241, 0x7244, 2}, {0xF9D6, 0xF9D6, 0x4337, 0x4337, 3},
    {0xF9D7, 0xF9D7, 0x4F50, 0x4F50, 3}, {0xF9D8, 0xF9D8, 0x444E, 0x444E, 3},
    {0xF9D9, 0xF9D9, 0x504A, 0x504A, 3}, {0xF9DA, 0xF9DA, 0x2C5D, 0x2C5D, 3},
    {0xF9DB, 0xF9DB, 0x3D7E, 0x3D7E, 3}, {0xF9DC, 0xF9DC, 0x4B5C, 0x4B5C, 3},
};
constexpr int Big5CnsTableSize = std::size(Big5CnsTable);

namespace zv {
namespace {

constexpr int ordinal_of_big5(int code) {
    return big5_ordinal(static_cast<unsigned>(code) >> 8, static_cast<unsigned>(code) & 0xFF);
}
// The master table has CNS codes in their 7-bit form.
constexpr int ordinal_of_cns(int code) {
    const unsigned euc = static_cast<unsigned>(code) | 0x8080;
    return cns_ordinal(euc >> 8, euc & 0xFF);
}

struct Rows {
    Big5CnsRange row[Big5CnsTableSize];
};

constexpr Rows in_ordinals() {
    Rows rows{};
    for (int i = 0; i < Big5CnsTableSize; ++i) {
        const Big5CnsRange& codes = Big5CnsTable[i];
        rows.row[i] = {ordinal_of_big5(codes.first_big5), ordinal_of_big5(codes.last_big5),
                       ordinal_of_cns(codes.first_cns), ordinal_of_cns(codes.last_cns),
                       codes.plane};
    }
    return rows;
}

// Counts the CNS characters through the planes and orders the rows by them. Rows that begin with
// the same character keep their order.
constexpr Rows by_cns(Rows rows) {
    for (int i = 0; i < Big5CnsTableSize; ++i) {
        Big5CnsRange range = rows.row[i];
        const int before = (range.plane - 1) * kCnsPlaneSize;
        range.first_cns += before;
        range.last_cns += before;
        range.plane = 0;
        int place = i;
        for (; place > 0 && rows.row[place - 1].first_cns > range.first_cns; --place)
            rows.row[place] = rows.row[place - 1];
        rows.row[place] = range;
    }
    return rows;
}

constexpr Rows kBig5ToCns = in_ordinals();
constexpr Rows kCnsToBig5 = by_cns(kBig5ToCns);

} // namespace
} // namespace zv

// The exported tables are plain arrays, which no function can return.
#define TEN_ROWS(rows, i)                                                                          \
    rows.row[i], rows.row[i + 1], rows.row[i + 2], rows.row[i + 3], rows.row[i + 4],               \
        rows.row[i + 5], rows.row[i + 6], rows.row[i + 7], rows.row[i + 8], rows.row[i + 9]
#define ALL_ROWS(rows)                                                                             \
    TEN_ROWS(rows, 0), TEN_ROWS(rows, 10), TEN_ROWS(rows, 20), TEN_ROWS(rows, 30),                 \
        TEN_ROWS(rows, 40), TEN_ROWS(rows, 50), TEN_ROWS(rows, 60), TEN_ROWS(rows, 70),            \
        TEN_ROWS(rows, 80), TEN_ROWS(rows, 90), rows.row[100], rows.row[101], rows.row[102],       \
        rows.row[103], rows.row[104], rows.row[105]
constexpr Big5CnsRange Big5ToCnsTable[] = {ALL_ROWS(zv::kBig5ToCns)};
constexpr Big5CnsRange CnsToBig5Table[] = {ALL_ROWS(zv::kCnsToBig5)};
#undef ALL_ROWS
#undef TEN_ROWS

namespace zv {
namespace {

static_assert(Big5CnsTableSize == 106);
static_assert(std::size(Big5ToCnsTable) == Big5CnsTableSize);
static_assert(std::size(CnsToBig5Table) == Big5CnsTableSize);

constexpr int characters(const Big5CnsRange& range) {
    return range.last_big5 - range.first_big5 + 1;
}

// Every code exists, the Big5 codes rise, and a run has as many characters on both sides.
constexpr bool master_rows_fit() {
    int last = -1;
    for (int i = 0; i < Big5CnsTableSize; ++i) {
        const Big5CnsRange& codes = Big5CnsTable[i];
        const Big5CnsRange& range = Big5ToCnsTable[i];
        if (((codes.first_cns | codes.last_cns) & 0x8080) != 0 || range.first_cns < 0 ||
            range.last_cns < 0 || codes.plane < 1 || codes.plane > kCnsPlanes ||
            range.first_big5 <= last || range.last_big5 < range.first_big5 ||
            characters(range) != range.last_cns - range.first_cns + 1)
            return false;
        last = range.last_big5;
    }
    return true;
}
static_assert(master_rows_fit());
static_assert(Big5ToCnsTable[0].first_big5 == 0 && Big5ToCnsTable[0].first_cns == 0);
static_assert(Big5ToCnsTable[Big5CnsTableSize - 1].last_big5 == 13938);

constexpr bool plane_has(int plane, int rows, int total) {
    for (const Big5CnsRange& range : Big5ToCnsTable) {
        if (range.plane == plane) {
            --rows;
            total -= characters(range);
        }
    }
    return rows == 0 && total == 0;
}
static_assert(plane_has(1, 45, 5898) && plane_has(2, 50, 7651) && plane_has(3, 7, 7) &&
              plane_has(4, 4, 4));
static_assert(5898 + 7651 + 7 + 4 == 13560);

// The CNS characters rise, and what an earlier row covers is only the two that Big5 has twice.
constexpr bool cns_rows_fit() {
    int last = -1;
    int twice = 0;
    for (int i = 0; i < Big5CnsTableSize; ++i) {
        const Big5CnsRange& range = CnsToBig5Table[i];
        if (i > 0 && range.first_cns < CnsToBig5Table[i - 1].first_cns)
            return false;
        if (range.first_cns <= last) {
            const unsigned code = big5_code(range.first_big5);
            if ((code != 0xC94A && code != 0xDDFC) || characters(range) != 1)
                return false;
            ++twice;
        }
        last = std::max(last, range.last_cns);
    }
    return twice == 2;
}
static_assert(cns_rows_fit());

constexpr CnsOfBig5 make_cns_of_big5() {
    CnsOfBig5 map{};
    for (const Big5CnsRange& range : Big5ToCnsTable) {
        for (int i = 0; i < characters(range); ++i) {
            const unsigned big5 = big5_code(range.first_big5 + i);
            const TextCode cns = text_code(cns_code(range.first_cns + i));
            map.codes[CnsOfBig5::row(big5 >> 8) * CnsOfBig5::kColumns +
                      CnsOfBig5::column(big5 & 0xFF)] = mark_plane(cns, range.plane);
        }
    }
    return map;
}

constexpr Big5OfCns make_big5_of_cns() {
    Big5OfCns map{};
    unsigned rows = 0;
    for (; rows <= Big5OfCns::kLastRow; ++rows) {
        for (auto& of_plane : map.rows)
            of_plane[rows] = Big5OfCns::kLastRow;
        map.rows[0][rows] = static_cast<uint8_t>(rows);
    }
    for (const Big5CnsRange& range : CnsToBig5Table) {
        for (int i = 0; i < characters(range); ++i) {
            const unsigned cns = cns_code(range.first_cns % kCnsPlaneSize + i);
            uint8_t& row = map.rows[range.first_cns / kCnsPlaneSize][Big5OfCns::row(cns >> 8)];
            if (row == Big5OfCns::kLastRow)
                row = static_cast<uint8_t>(rows++);
            TextCode& code = map.codes[row * Big5OfCns::kColumns + Big5OfCns::column(cns & 0xFF)];
            if (code == 0) // the first of two stays
                code = text_code(big5_code(range.first_big5 + i));
        }
    }
    return map;
}

} // namespace

constexpr CnsOfBig5 kCnsOfBig5 = make_cns_of_big5();
constexpr Big5OfCns kBig5OfCns = make_big5_of_cns();

namespace {

// The ordinal of what stands in a run of a row.
template <class Runs>
constexpr int target_in_run(const Runs& runs, size_t place, int cell) {
    const bool second = cell >= runs.second_begin[place];
    const int lead = second ? runs.second_lead[place] : runs.first_lead[place];
    const int from = second ? runs.second_cell[place] : runs.first_cell[place];
    return (lead - 0xA1) * Runs::kTargetCells + ((cell + from) & 0xFF);
}

// Adds cells whose targets follow one another to a row, unless it has a gap before them or two runs
// already. Single cells are exceptions.
template <class Runs>
constexpr void add_cells(Runs& runs, size_t place, int begin, int end, int target) {
    if (runs.end[place] != begin)
        return;
    const auto lead = static_cast<uint8_t>(0xA1 + target / Runs::kTargetCells);
    const auto from = static_cast<uint8_t>(target % Runs::kTargetCells - begin);
    if (begin == 0) {
        runs.first_lead[place] = lead;
        runs.first_cell[place] = from;
        runs.second_begin[place] = kBig5Cells;
        for (auto& pair : runs.exceptions)
            pair[place] = kBig5Cells;
    } else if (target_in_run(runs, place, begin) != target) {
        if (end - begin == 1) {
            size_t i = 0;
            while (runs.exceptions[i][place] < begin - 1)
                ++i;
            if (runs.exceptions[i][place] == kBig5Cells)
                runs.exceptions[i][place] = static_cast<uint8_t>(begin);
        } else if (runs.second_begin[place] == kBig5Cells) {
            runs.second_begin[place] = static_cast<uint8_t>(begin);
            runs.second_lead[place] = lead;
            runs.second_cell[place] = from;
        } else {
            return;
        }
    }
    runs.end[place] = static_cast<uint8_t>(end);
}

// The places of rows, as the kernels have them.
constexpr unsigned place_of_big5_row(int row) {
    return static_cast<unsigned>(0xA1 + row) % CnsRunsOfBig5::kPlaces;
}
constexpr unsigned place_of_cns_row(int row) {
    const auto lead = static_cast<unsigned>(0xA1 + row);
    if (in_range(lead, 0xA5, 0xC3))
        return Big5RunsOfCns::kPlaces; // none
    return (lead < 0xC0 ? lead - 0xA1 : lead) % Big5RunsOfCns::kPlaces;
}

template <class Runs, class PlaceOf>
constexpr void add_run(Runs& runs, int cells, PlaceOf place_of, int first, int last, int target) {
    while (first <= last) {
        const int begin = first % cells, count = std::min(cells - begin, last + 1 - first);
        const unsigned place = place_of(first / cells);
        if (place < Runs::kPlaces)
            add_cells(runs, place, begin, begin + count, target);
        first += count;
        target += count;
    }
}

constexpr CnsRunsOfBig5 make_cns_runs() {
    CnsRunsOfBig5 runs{};
    for (const Big5CnsRange& range : Big5ToCnsTable) {
        if (range.plane == 1)
            add_run(runs, kBig5Cells, place_of_big5_row, range.first_big5, range.last_big5,
                    range.first_cns);
    }
    return runs;
}

constexpr Big5RunsOfCns make_big5_runs() {
    Big5RunsOfCns runs{};
    for (const Big5CnsRange& range : CnsToBig5Table) {
        if (range.last_cns < kCnsPlaneSize)
            add_run(runs, kCnsCells, place_of_cns_row, range.first_cns, range.last_cns,
                    range.first_big5);
    }
    return runs;
}

} // namespace

constexpr CnsRunsOfBig5 kCnsRunsOfBig5 = make_cns_runs();
constexpr Big5RunsOfCns kBig5RunsOfCns = make_big5_runs();

} // namespace zv
