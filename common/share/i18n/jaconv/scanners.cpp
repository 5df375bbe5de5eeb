#include "scanners.h"

#include "jaconv.h"

namespace {

template <class Scanner>
int scan_given(const unsigned char* s, unsigned n) {
    return s == nullptr || n == 0 ? 0 : zv::scan<Scanner>(s, n);
}

} // namespace

int mblenInEUC(const unsigned char* s, unsigned n) {
    return scan_given<zv::EucScanner>(s, n);
}
int mblenInEUC_C(const unsigned char* s, unsigned n) {
    return scan_given<zv::GrPairScanner>(s, n);
}
int mblenInEUC_H(const unsigned char* s, unsigned n) {
    return scan_given<zv::EucTwScanner>(s, n);
}
int mblenInEUC_K(const unsigned char* s, unsigned n) {
    return scan_given<zv::GrPairScanner>(s, n);
}
int mblenInSJIS(const unsigned char* s, unsigned n) {
    return scan_given<zv::ShiftJisScanner>(s, n);
}
int mblenInGB(const unsigned char* s, unsigned n) {
    return scan_given<zv::GrPairScanner>(s, n);
}
int mblenInBIG5(const unsigned char* s, unsigned n) {
    return scan_given<zv::Big5Scanner>(s, n);
}
int mblenInKSC92(const unsigned char* s, unsigned n) {
    return scan_given<zv::Ksc92Scanner>(s, n);
}
int mblenInKSC87(const unsigned char* s, unsigned n) {
    return scan_given<zv::Ksc87Scanner>(s, n);
}
