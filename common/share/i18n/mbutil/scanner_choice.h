#ifndef ZVUTIL_MBUTIL_SCANNER_CHOICE_H
#define ZVUTIL_MBUTIL_SCANNER_CHOICE_H

#include "../jaconv/scanners.h"
#include "current_code_set.h"

namespace zv {

// Calls `use` with the scanner of a code set. Operations pick it once a call, so that their walk
// is compiled for each scanner and its byte rules inline.
template <class Use>
constexpr decltype(auto) with_scanner(int code_set, Use&& use) {
    switch (code_set) {
    case ZV_EUC:
        return use(EucScanner());
    case ZV_SJIS:
        return use(ShiftJisScanner());
    case ZV_GB:
    case ZV_EUC_C:
    case ZV_EUC_K:
        return use(GrPairScanner());
    case ZV_BIG5:
        return use(Big5Scanner());
    case ZV_EUC_H:
        return use(EucTwScanner());
    case ZV_KSC_5601_87:
        return use(Ksc87Scanner());
    case ZV_KSC_5601_92:
        return use(Ksc92Scanner());
    default:
        return use(SingleByteScanner());
    }
}

template <class Use>
decltype(auto) with_current_scanner(Use&& use) {
    return with_scanner(current_code_set(), use);
}

} // namespace zv

#endif
