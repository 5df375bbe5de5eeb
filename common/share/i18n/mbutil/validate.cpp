#include <cctype>
#include <cstring>

#include "characters.h"

namespace {

using zv::Byte;

bool passes_printable(Byte byte) {
    const int printable = zv::current_is_multibyte() ? ismbcprint(byte) : std::isprint(byte);
    return printable != 0 || std::isspace(byte) != 0;
}

// Whether every character is well formed; the position of the first that is not goes to badpos.
int validate(const char* s, unsigned* badpos, int code_set) {
    const zv::Characters& characters = zv::characters_of(code_set);
    for (const char* p = s;;) {
        const char* const before = p;
        const Byte* const text = zv::as_bytes(p);
        p = zv::as_text(characters.skip_well_formed(text, zv::part_of(text)));
        if (p - before >= static_cast<ptrdiff_t>(zv::kPart / 2))
            continue;
        for (size_t n = 0; n < zv::kBlockSize; ++n) {
            if (*p == '\0')
                return 1;
            const int length = mblenExt(p, static_cast<unsigned>(characters.longest), code_set);
            if (length < 1) {
                *badpos = static_cast<unsigned>(p - s);
                return 0;
            }
            p += length;
        }
    }
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
