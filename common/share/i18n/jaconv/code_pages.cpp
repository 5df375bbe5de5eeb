#include "code_page_tables.h"
#include "code_pages_avx2.h"
#include "jaconv.h"
#include "kernels.h"

namespace {

using zv::Byte;
using zv::ByteBlock;

// Where most of a text moves by one distance or not at all, a block of nothing else needs no table.
struct Iso5ToWindows1251Kernel {
    static ByteBlock not_plain(ByteBlock bytes) {
        return std::bit_cast<ByteBlock>((bytes < 0x0F) | ((bytes > 0x9F) & (bytes < 0xB0)) |
                                        (bytes > 0xEF));
    }
    static ByteBlock convert(ByteBlock bytes) {
        return bytes + (std::bit_cast<ByteBlock>(bytes > 0x9F) & 0x10);
    }
};

struct Windows1251ToIso5Kernel {
    static ByteBlock not_plain(ByteBlock bytes) {
        return std::bit_cast<ByteBlock>((bytes > 0x7F) & (bytes < 0xC0));
    }
    static ByteBlock convert(ByteBlock bytes) {
        return bytes - (std::bit_cast<ByteBlock>(bytes > 0x7F) & 0x10);
    }
};

struct Iso2ToWindows1250Kernel {
    static ByteBlock not_plain(ByteBlock bytes) {
        return std::bit_cast<ByteBlock>((bytes < 0x0B) | ((bytes > 0x9F) & (bytes < 0xC0)));
    }
    static ByteBlock convert(ByteBlock bytes) { return bytes; }
};

struct Windows1250ToIso2Kernel {
    static ByteBlock not_plain(ByteBlock bytes) {
        return std::bit_cast<ByteBlock>((bytes > 0x7F) & (bytes < 0xC0));
    }
    static ByteBlock convert(ByteBlock bytes) { return bytes; }
};

// Every byte is read before it is written, so dst may be src.
template <class Kernel>
char* convert(const zv::ByteMap& map, const char* src, char* dst, zv::Kernel wide = nullptr) {
    zv::Source source(src);
    Byte* out = zv::as_bytes(dst);
    if (wide != nullptr && zv::has_avx2()) {
        const zv::Converted converted = wide(source, out);
        source.next = converted.read;
        out = converted.written;
    }
    for (; source.left() >= zv::kBlockSize; source.next += zv::kBlockSize, out += zv::kBlockSize) {
        const ByteBlock block = zv::load_block(source.next);
        if (zv::high_bits(Kernel::not_plain(block)) == 0) {
            zv::store_block(out, Kernel::convert(block));
            continue;
        }
#pragma GCC unroll 16
        for (size_t i = 0; i < zv::kBlockSize; ++i)
            out[i] = map.target[source.next[i]];
    }
    while (source.next != source.end)
        *out++ = map.target[*source.next++];
    *out = 0;
    return dst;
}

} // namespace

char* c8859_5To1251x(const char* src, char* dst) {
    return convert<Iso5ToWindows1251Kernel>(zv::kIso5ToWindows1251, src, dst);
}

char* c1251To8859_5x(const char* src, char* dst) {
    return convert<Windows1251ToIso5Kernel>(zv::kWindows1251ToIso5, src, dst);
}

char* c8859_2To1250x(const char* src, char* dst) {
    return convert<Iso2ToWindows1250Kernel>(zv::kIso2ToWindows1250, src, dst,
                                            zv::wide_iso_2_to_windows_1250);
}

char* c1250To8859_2x(const char* src, char* dst) {
    return convert<Windows1250ToIso2Kernel>(zv::kWindows1250ToIso2, src, dst,
                                            zv::wide_windows_1250_to_iso_2);
}
