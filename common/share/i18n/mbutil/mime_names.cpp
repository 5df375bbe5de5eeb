#include <cstring>

#include "ascii.h"
#include "current_code_set.h"

namespace zv {
namespace {

// The charset names of mail headers; the first of a code set is the one that is written.
struct MimeName {
    char name[16];
    int code_set;
};
constexpr MimeName kMimeNames[] = {
    {"iso-2022-jp", ZV_JIS},    {"iso-2022-cn", ZV_GB},       {"iso-2022-cn-gb", ZV_GB},
    {"iso-2022-cn-ext", ZV_GB}, {"iso-2022-cn-bg5", ZV_BIG5}, {"iso-2022-kr", ZV_KSC_5601_92},
    {"cp-1250", ZV_CP1250},     {"cp-1251", ZV_CP1251},       {"cp-1253", ZV_CP1253},
    {"cp-1254", ZV_CP1254},     {"cp-1255", ZV_CP1255},       {"cp-1256", ZV_CP1256},
    {"cp-1257", ZV_CP1257},     {"cp-1258", ZV_CP1258},       {"iso-8859-2", ZV_8859_2},
    {"iso-8859-3", ZV_8859_3},  {"iso-8859-4", ZV_8859_4},    {"iso-8859-5", ZV_8859_5},
    {"iso-8859-6", ZV_8859_6},  {"iso-8859-7", ZV_8859_7},    {"iso-8859-8", ZV_8859_8},
    {"iso-8859-9", ZV_8859_9},  {"iso-8859-10", ZV_8859_10},
};

// Code sets between which stored data may move.
struct Pair {
    int a, b;
    constexpr bool holds(int code_set) const { return code_set == a || code_set == b; }
};
constexpr Pair kDataPairs[] = {{ZV_EUC, ZV_SJIS},
                               {ZV_EUC_H, ZV_GB},
                               {ZV_EUC_C, ZV_BIG5},
                               {ZV_EUC_K, ZV_KSC_5601_92},
                               {ZV_CP1251, ZV_8859_5}};

// The code set whose name a code set without a name of its own is written under.
int named_alike(int code_set) {
    switch (code_set) {
    case ZV_BIG5:
        return ZV_GB;
    case ZV_KSC_5601_87:
        return ZV_KSC_5601_92;
    default:
        return code_set;
    }
}

} // namespace
} // namespace zv

int mbGetMIMECodeSet(const char* name) {
    if (name == nullptr || *name == '\0')
        return ZV_WESTERN;
    // Names are compared as text is: whoever reads a mail header has a code set from here on.
    zv::ensure_initialised();
    for (const zv::MimeName& known : zv::kMimeNames) {
        if (zv::equals_ignoring_case(name, known.name))
            return known.code_set;
    }
    return ZV_WESTERN;
}

const char* mbGetMIMECharset(int code_set) {
    const int named = zv::named_alike(code_set);
    for (const zv::MimeName& known : zv::kMimeNames) {
        if (known.code_set == named)
            return known.name;
    }
    return "iso-8859-1";
}

int mbGetCodeSetForMail(int code_set) {
    switch (code_set) {
    case ZV_JIS:
    case ZV_EUC:
    case ZV_SJIS:
    case ZV_EUC_OR_SJIS:
        return ZV_JIS;
    case ZV_CP1250:
        return ZV_8859_2;
    case ZV_CP1251:
        return ZV_8859_5;
    default:
        return code_set >= ZV_GB && code_set <= ZV_CP1258 ? code_set : ZV_WESTERN;
    }
}

int mbGetCodeSetForData(int first, int second) {
    for (const zv::Pair& pair : zv::kDataPairs) {
        if (pair.holds(first) && pair.holds(second))
            return second;
    }
    return first;
}

const char* getTransferEncodingFromCodeSet(int code_set) {
    return code_set == ZV_JIS ? "7bit" : "8bit";
}

void SetCharset(char* charset, int code_set) {
    for (const ConvToCharset* row = _ConvToCharsetTable; row->converter[0] != '\0'; ++row) {
        if (row->code_set == code_set) {
            std::strcpy(charset, row->charset);
            return;
        }
    }
    charset[0] = '\0';
}
