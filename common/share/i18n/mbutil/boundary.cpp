#include "boundary.h"

namespace zv {

const Byte* last_boundary_in(const Byte* first, const Byte* p, int code_set) {
    return with_scanner(code_set,
                        [&](auto scanner) { return last_boundary<decltype(scanner)>(first, p); });
}

size_t whole_characters(const char* block, size_t n, int code_set) {
    return with_scanner(code_set, [&](auto scanner) {
        using Scanner = decltype(scanner);
        const Byte* const text = as_bytes(block);
        const Byte* const last = last_boundary<Scanner>(text, text + n - 1, 1);
        const auto start = static_cast<size_t>(last - text);
        const size_t left = n - start;
        const int length = scan<Scanner>(last, left);
        return length < 0 || static_cast<size_t>(length) > left ? start : n;
    });
}

} // namespace zv
