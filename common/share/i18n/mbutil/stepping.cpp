#include "characters.h"

namespace {

unsigned boundary_not_beyond(const char* s, unsigned n, const zv::Characters& characters) {
    const zv::Byte* const text = zv::as_bytes(s);
    return static_cast<unsigned>(characters.last_boundary_in(text, text + strnlen(s, n)) - text);
}

} // namespace

unsigned mbidxtype(const char* s, unsigned n, int code_set) {
    // Read without initialising: a host may ask before the code set is known.
    return MBUTIL_I_Am_MultiByte == 0 ? n : boundary_not_beyond(s, n, zv::characters_of(code_set));
}

unsigned mbidx(const char* s, unsigned n) {
    return zv::current_is_multibyte() ? boundary_not_beyond(s, n, zv::current_characters()) : n;
}

unsigned mbnextidx(const char* s, unsigned idx) {
    if (!zv::current_is_multibyte())
        return s[idx] == '\0' || s[idx + 1] == '\0' ? 0 : idx + 1;
    const unsigned start = boundary_not_beyond(s, idx, zv::current_characters());
    if (s[start] == '\0')
        return 0;
    const unsigned next = start + static_cast<unsigned>(mbbytesinchar(s + start));
    return s[next] == '\0' ? 0 : next;
}

char* mbnextchar(const char* s, unsigned idx) {
    const unsigned next = mbnextidx(s, idx);
    return next == 0 ? nullptr : const_cast<char*>(s) + next;
}
