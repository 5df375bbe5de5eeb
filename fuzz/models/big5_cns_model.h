#ifndef ZVUTIL_FUZZ_BIG5_CNS_MODEL_H
#define ZVUTIL_FUZZ_BIG5_CNS_MODEL_H

#include <map>
#include <span>
#include <string>

#include "jaconv.h"

namespace test {

inline bool is_high(int byte) {
    return byte >= 0xA1 && byte <= 0xFE;
}
inline std::string pair_of(int first, int second) {
    return {char(first), char(second)};
}

inline int order_of(int (*order)(const unsigned char*), int code) {
    const unsigned char bytes[] = {static_cast<unsigned char>(code >> 8),
                                   static_cast<unsigned char>(code)};
    return order(bytes);
}

inline std::string code_of(int (*function)(int, unsigned char*), int ordinal) {
    unsigned char code[2];
    function(ordinal, code);
    return pair_of(code[0], code[1]);
}

// The conversions character by character, with what the master table says of each.
struct Big5CnsModel {
    std::map<std::string, std::string> to_euc_tw, to_big5;

    Big5CnsModel() {
        for (const Big5CnsRange& row : std::span(Big5CnsTable, size_t(Big5CnsTableSize))) {
            int cns = order_of(CnsOrder, row.first_cns + 0x8080);
            const int last = order_of(Big5Order, row.last_big5);
            for (int big5 = order_of(Big5Order, row.first_big5); big5 <= last; ++big5) {
                const std::string code = code_of(Big5Code, big5);
                const std::string plain = code_of(CnsCode, cns++);
                const std::string shifted = pair_of(0x8E, 0xA0 + row.plane) + plain;
                to_euc_tw[code] = row.plane == 1 ? plain : shifted;
                to_big5.emplace(to_euc_tw[code], code);
                to_big5.emplace(shifted, code);
            }
        }
    }

    static std::string convert(const std::string& text, const auto& map, size_t shifted) {
        std::string out;
        for (size_t i = 0, size; i < text.size(); i += size) {
            size = text[i] == '\x8E' ? shifted : is_high(text[i] & 0xFF) ? 2 : 1;
            const std::string code = text.substr(i, size);
            const auto found = map.find(code);
            out += size == 1 || code.size() < size ? code
                   : found == map.end()            ? "??"
                                                   : found->second;
        }
        return out;
    }

    std::string euc_tw_of(const std::string& big5) const { return convert(big5, to_euc_tw, 1); }
    std::string big5_of(const std::string& euc_tw) const { return convert(euc_tw, to_big5, 4); }
};

} // namespace test

#endif
