#include <cctype>
#include <cstring>
#include <type_traits>

#include "../jaconv/kernels.h"
#include "scanner_choice.h"

namespace {

using zv::Byte;

bool passes_printable(Byte byte) {
    return ismbcprint(byte) != 0 || std::isspace(byte) != 0;
}
bool passes_no_lower(Byte byte) {
    return std::islower(byte) == 0;
}
bool passes_no_upper(Byte byte) {
    return std::isupper(byte) == 0;
}
struct PassesAlways {
    constexpr bool operator()(Byte) const { return true; }
};
constexpr PassesAlways passes_always;

// Whether every character is well formed and every one-byte character passes; the position of the
// first that is not goes to badpos.
template <class Passes>
int validate(const char* s, unsigned* badpos, int code_set, Passes passes) {
    return zv::with_scanner(code_set, [&](auto scanner) {
        using Scanner = decltype(scanner);
        const Byte* text = zv::as_bytes(s);
        for (zv::Source rest(s); rest.next != rest.end;) {
            if constexpr (std::is_same_v<Passes, PassesAlways>) {
                if (*rest.next < 0x80) {
                    zv::skip_ascii(rest);
                    continue;
                }
            }
            const int length = zv::scan<Scanner>(rest.next, Scanner::kLongest);
            if (length < 1 || (length == 1 && !passes(*rest.next))) {
                *badpos = static_cast<unsigned>(rest.next - text);
                return 0;
            }
            rest.next += length;
        }
        return 1;
    });
}

template <class Passes>
int all_bytes_pass(const char* s, Passes passes) {
    for (const Byte* p = zv::as_bytes(s); *p != 0; ++p) {
        if (!passes(*p))
            return 0;
    }
    return 1;
}

int validate_single_byte(const char* s, int check) {
    switch (check) {
    case ZV_CHECK_PRINTABLE:
        return all_bytes_pass(s, [](Byte b) { return std::isprint(b) || std::isspace(b); });
    case ZV_CHECK_NO_LOWER:
        return all_bytes_pass(s, passes_no_lower);
    case ZV_CHECK_NO_UPPER:
        return all_bytes_pass(s, passes_no_upper);
    default:
        return 1;
    }
}

} // namespace

int mbvalidatestring(const char* s, unsigned* badpos, int code_set) {
    if (!zv::current_is_multibyte())
        return 1;
    if (s == nullptr || badpos == nullptr)
        return 0;
    return validate(s, badpos, code_set, passes_always);
}

int mbvalidatestringtype(const char* s, unsigned* badpos, int check) {
    zv::ensure_initialised();
    if (s == nullptr || badpos == nullptr)
        return 0;
    if (!zv::current_is_multibyte())
        return validate_single_byte(s, check);
    const int code_set = zv::current_code_set();
    switch (check) {
    case ZV_CHECK_PRINTABLE:
        return validate(s, badpos, code_set, passes_printable);
    case ZV_CHECK_NO_LOWER:
        return validate(s, badpos, code_set, passes_no_lower);
    case ZV_CHECK_NO_UPPER:
        return validate(s, badpos, code_set, passes_no_upper);
    default:
        return validate(s, badpos, code_set, passes_always);
    }
}
