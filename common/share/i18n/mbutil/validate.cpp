#include <cctype>
#include <cstring>

#include "../jaconv/kernel_choice.h"
#include "characters.h"
#include "scanner_choice.h"

namespace {

using zv::Byte;

bool passes_printable(Byte byte) {
    const int printable = zv::current_is_multibyte() ? ismbcprint(byte) : std::isprint(byte);
    return printable != 0 || std::isspace(byte) != 0;
}

template <zv::PairRanges kPairs>
[[gnu::noinline]] const Byte* skip_well_formed_part(const Byte* p) {
    constexpr size_t kWide = 128; // what wide blocks leave over costs more
    const size_t left = zv::part_of(p);
    const auto skip = [&]<int Size> {
        return zv::StringKernels<Size>::template skip_well_formed<kPairs>;
    };
    return (left < kWide ? skip.template operator()<16>() : zv::widest(skip))(p, left);
}

// Whether every character is well formed; the position of the first that is not goes to badpos.
int validate(const char* s, unsigned* badpos, int code_set) {
    return zv::with_scanner(code_set, [&](auto scanner) {
        using Scanner = decltype(scanner);
        const Byte* text = zv::as_bytes(s);
        for (const Byte* p = text;;) {
            const Byte* const before = p;
            p = skip_well_formed_part<zv::kPairsOf<Scanner>>(p);
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

// What a check asks of one-byte characters; null where it asks nothing.
auto check_of(int check) -> bool (*)(Byte) {
    switch (check) {
    case ZV_CHECK_PRINTABLE:
        return passes_printable;
    case ZV_CHECK_NO_LOWER:
        return [](Byte byte) { return std::islower(byte) == 0; };
    case ZV_CHECK_NO_UPPER:
        return [](Byte byte) { return std::isupper(byte) == 0; };
    default:
        return nullptr;
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
    bool (*const passes)(Byte) = check_of(check);
    unsigned unused; // without multibyte characters no position is told
    if (!zv::current_is_multibyte())
        return passes == nullptr || validate_checked(s, &unused, passes);
    return passes == nullptr ? validate(s, badpos, zv::current_code_set())
                             : validate_checked(s, badpos, passes);
}
