#include "../../../platform/letter_case.h"

#include "characters.h"

namespace {

using zv::Byte;
using zv::LetterCase;

int change_one(char* s, LetterCase change) {
    Byte* const p = zv::as_bytes(s);
    const int length = zv::current_characters().step(p);
    if (length == 1)
        *p = static_cast<Byte>(change(*p));
    return length;
}

unsigned change_all(char* s, LetterCase change) {
    zv::ensure_initialised();
    if (s == nullptr)
        return 0;
    Byte* p = zv::as_bytes(s);
    for (; zv::in_range(*p, 1, 0x7F); ++p)
        *p = static_cast<Byte>(change(*p));
    const Byte* const end = p + std::strlen(s + (p - zv::as_bytes(s)));
    zv::Starts starts;
    size_t next = 0;
    for (size_t size = 0; p != end; p += size) {
        size = std::min(static_cast<size_t>(end - p), zv::kPart);
        starts.mark(zv::current_characters(), p, size, next);
        for (size_t i = 0; i < size; i += 64) {
            // Run by run.
            for (std::uint64_t left = starts.singles(i / 64); left != 0;) {
                const auto first = static_cast<size_t>(std::countr_zero(left));
                const auto count = static_cast<size_t>(std::countr_one(left >> first));
                for (Byte* single = p + i + first; single != p + i + first + count; ++single)
                    *single = static_cast<Byte>(change(*single));
                left &= left + (std::uint64_t{1} << first);
            }
        }
    }
    return static_cast<unsigned>(end - zv::as_bytes(s));
}

} // namespace

int mbtoupper(char* p) {
    return change_one(p, LetterCase::upper());
}
int mbtolower(char* p) {
    return change_one(p, LetterCase::lower());
}
unsigned mbstrtoupper(char* s) {
    return change_all(s, LetterCase::upper());
}
unsigned mbstrtolower(char* s) {
    return change_all(s, LetterCase::lower());
}
