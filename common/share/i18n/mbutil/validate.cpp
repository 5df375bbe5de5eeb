#include <cctype>
#include <cstring>
#include <type_traits>

#include "character_search.h"
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

template <class Pairs>
[[gnu::noinline]] const Byte* skip_well_formed_part(const Byte* p) {
    constexpr size_t kWide = 128; // what wide blocks leave over costs more
    const size_t left = zv::part_of(p);
    return left >= kWide && zv::vector_size() >= zv::kWideVectors
               ? zv::wide_skip_well_formed<Pairs>(p, left)
               : zv::skip_well_formed<Pairs>(p, left);
}

// Whether every character is well formed; the position of the first that is not goes to badpos.
int validate(const char* s, unsigned* badpos, int code_set) {
    return zv::with_scanner(code_set, [&](auto scanner) {
        using Scanner = decltype(scanner);
        const Byte* text = zv::as_bytes(s);
        for (const Byte* p = text;;) {
            const Byte* const before = p;
            p = skip_well_formed_part<zv::PairsOf<Scanner>>(p);
            if (p - before >= static_cast<ptrdiff_t>(zv::kPart / 2))
                continue;
            for (size_t n = 0; n < zv::kBlockSize; ++n) {
                if (*p == 0)
                    return 1;
                const int length = zv::scan<Scanner>(p, Scanner::kLongest);
                if (length < 1) {
                    *badpos = static_cast<unsigned>(p - text);
                    return 0;
                }
                p += length;
            }
        }
    });
}

// The same where every one-byte character is to pass a check too.
int validate_checked(const char* s, unsigned* badpos, bool (*passes)(Byte)) {
    const auto longest = static_cast<unsigned>(mbmaxcharlen());
    for (const char* p = s; *p != 0;) {
        const int length = mb_mblen(p, longest);
        if (length < 1 || (length == 1 && !passes(static_cast<Byte>(*p)))) {
            *badpos = static_cast<unsigned>(p - s);
            return 0;
        }
        p += length;
    }
    return 1;
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
    return validate(s, badpos, code_set);
}

int mbvalidatestringtype(const char* s, unsigned* badpos, int check) {
    zv::ensure_initialised();
    if (s == nullptr || badpos == nullptr)
        return 0;
    if (!zv::current_is_multibyte())
        return validate_single_byte(s, check);
    switch (check) {
    case ZV_CHECK_PRINTABLE:
        return validate_checked(s, badpos, passes_printable);
    case ZV_CHECK_NO_LOWER:
        return validate_checked(s, badpos, passes_no_lower);
    case ZV_CHECK_NO_UPPER:
        return validate_checked(s, badpos, passes_no_upper);
    default:
        return validate(s, badpos, zv::current_code_set());
    }
}
