#include "big5_cns.h"

#include <algorithm>

#include "big5_cns_kernels.h"
#include "big5_cns_tables.h"
#include "jaconv.h"
#include "kernel_choice.h"
#include "kernels.h"

namespace zv {
namespace {

constexpr size_t kShiftedSize = 4; // the shift, the plane and a pair
constexpr TextCode kUnknown = text_code(pair_code('?', '?'));

Byte* put_cns(Byte* out, TextCode cns) {
    if (cns == 0)
        return put_code(out, kUnknown);
    if (plane_of(cns) != 1)
        out = put_pair(out, kSingleShift2, 0xA0 + plane_of(cns));
    return put_code(out, cns | kHighBits);
}

Byte* put_big5(Byte* out, TextCode big5) {
    return put_code(out, big5 == 0 ? kUnknown : big5);
}

// Steps over EUC-TW text without characters of four bytes, perhaps beyond its end.
const Byte* skip_pairs(Source source) {
    LeadWalk leads;
    for (; source.next < source.end; source.next += kWindow) {
        const Window bytes = load_window_up_to(source.next, source.left());
        if (find_in(bytes, [](ByteBlock block) { return byte_mask(block, kSingleShift2); }) != 0)
            break;
        leads.enter(find_in(bytes, [](ByteBlock block) { return range_mask(block, 0xA1, 0xFE); }));
    }
    return source.next + leads.carried();
}

// The rules.

bool put_big5_as_euc_tw(Source& source, Byte*& out) {
    if (!is_gr(*source.next)) {
        *out++ = *source.next++;
        return true;
    }
    if (source.left() < kPairSize)
        return false;
    out = put_cns(out, kCnsOfBig5.find(source.next[0], source.next[1]));
    source.next += kPairSize;
    return true;
}

bool put_euc_tw_as_big5(Source& source, Byte*& out) {
    const Byte* const in = source.next;
    const bool shifted = *in == kSingleShift2;
    if (!shifted && !is_gr(*in)) {
        *out++ = *source.next++;
        return true;
    }
    const size_t size = shifted ? kShiftedSize : kPairSize;
    if (source.left() < size)
        return false;
    source.next += size;
    const unsigned plane = shifted ? in[1] - 0xA0u : 1;
    const bool known = in_range(plane, 1, kCnsPlanes);
    out = put_big5(out, known ? kBig5OfCns.find(in[size - 2], in[size - 1], plane) : 0);
    return true;
}

// Vectors of 32 bytes serve these kernels no better than those of 16.
Kernel<> big5_kernel() {
    return widest([]<int kSize> { return Big5Kernels < kSize == 64 ? 64 : 16 > ::big5_to_euc_tw; });
}
Kernel<> euc_tw_kernel() {
    return widest([]<int kSize> { return Big5Kernels < kSize == 64 ? 64 : 16 > ::euc_tw_to_big5; });
}

// Adds what a Big5 character grows by to a length.
bool measure_big5_as_euc_tw(Source& source, size_t& length) {
    if (!is_gr(*source.next)) {
        ++source.next;
        return true;
    }
    if (source.left() < kPairSize)
        return false;
    const TextCode cns = kCnsOfBig5.find(source.next[0], source.next[1]);
    length += cns != 0 && plane_of(cns) != 1 ? kShiftedSize - kPairSize : 0;
    source.next += kPairSize;
    return true;
}

} // namespace

Converted big5_to_euc_tw(Source source, Byte* out) {
    return convert_with(source, out, big5_kernel(), put_big5_as_euc_tw);
}

Converted euc_tw_to_big5(Source source, Byte* out) {
    return convert_with(source, out, euc_tw_kernel(), put_euc_tw_as_big5);
}

} // namespace zv

char* big2euchx(const char* src, char* dst) {
    const zv::Source source(src);
    zv::finish(zv::big5_to_euc_tw(source, zv::as_bytes(dst)), source);
    return dst;
}

char* euch2bigx(const char* src, char* dst) {
    const zv::Source source(src);
    zv::finish(zv::euc_tw_to_big5(source, zv::as_bytes(dst)), source);
    return dst;
}

int Big5ToCnsCodeConvert(const unsigned char* big5, unsigned char* cns) {
    if (Big5Order(big5) < 0)
        return -1;
    const zv::TextCode code = zv::kCnsOfBig5.find(big5[0], big5[1]);
    if (code == 0)
        return -1;
    zv::put_code(cns, code | zv::kHighBits);
    return 0;
}

int Big5Order(const unsigned char* big5) {
    return zv::is_gr(big5[0]) ? zv::big5_ordinal(big5[0], big5[1]) : -1;
}

int CnsOrder(const unsigned char* cns) {
    return zv::is_gr(cns[0]) ? zv::cns_ordinal(cns[0], cns[1]) : -1;
}

int Big5Code(int ordinal, unsigned char* big5) {
    zv::put_code(big5, zv::text_code(zv::big5_code(ordinal)));
    return 0;
}

int CnsCode(int ordinal, unsigned char* cns) {
    zv::put_code(cns, zv::text_code(zv::cns_code(ordinal)));
    return 0;
}

int euchLength(const char* s) {
    zv::Source source(s);
    size_t length = source.left();
    // Only what moves to another plane than the first grows, by two bytes. Behind it some
    // characters go by the rule, so that text full of it is rarely looked up twice.
    constexpr int kByRule = 8;
    constexpr size_t kPiece = 1024;
    zv::Byte converted[kPiece];
    while (source.next != source.end && length < INT_MAX) {
        const zv::Source piece(source.next, std::min(source.left(), kPiece));
        source.next = zv::big5_kernel()(piece, converted).read;
        for (int i = 0; i < kByRule && source.next != source.end; ++i) {
            if (!zv::measure_big5_as_euc_tw(source, length))
                return zv::saturated(length);
        }
    }
    return zv::saturated(length);
}

int big5Length(const char* s) {
    zv::Source source(s);
    size_t length = source.left();
    if (length / 2 >= INT_MAX)
        return INT_MAX; // it shrinks by half at most
    // Only four-byte characters shrink, by two bytes.
    const zv::Byte* next = zv::skip_pairs(source);
    while (source.end - next >= static_cast<ptrdiff_t>(zv::kShiftedSize)) {
        if (*next == zv::kSingleShift2) {
            length -= zv::kShiftedSize - zv::kPairSize;
            next += zv::kShiftedSize;
        } else {
            next += zv::is_gr(*next) ? zv::kPairSize : 1;
        }
    }
    return zv::saturated(length);
}
