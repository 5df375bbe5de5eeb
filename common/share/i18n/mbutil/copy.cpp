#include <cstring>

#include "characters.h"

namespace {

// Writes exactly n bytes of dst, as strncpy() does, but leaves out a character that n would cut.
unsigned copy_whole_characters(char* dst, const char* src, unsigned n) {
    size_t copied = strnlen(src, n);
    if (copied == n && n > 0 && src[n] != '\0') {
        const zv::Byte* const text = zv::as_bytes(src);
        const zv::Byte* const end = zv::current_characters().last_boundary_in(text, text + n);
        copied = static_cast<size_t>(end - text);
    }
    std::memcpy(dst, src, copied);
    std::memset(dst + copied, 0, n - copied);
    return static_cast<unsigned>(copied);
}

} // namespace

char* mbstrncpy(char* dst, const char* src, unsigned n) {
    if (!zv::current_is_multibyte())
        return std::strncpy(dst, src, n);
    if (dst != nullptr && src != nullptr)
        copy_whole_characters(dst, src, n);
    return dst;
}

unsigned mbstrncpyi(char* dst, const char* src, unsigned n) {
    zv::ensure_initialised();
    return dst == nullptr || src == nullptr ? 0 : copy_whole_characters(dst, src, n);
}
