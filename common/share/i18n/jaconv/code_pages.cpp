#include "code_page_kernels.h"
#include "jaconv.h"
#include "kernel_choice.h"

namespace {

using zv::CodePageKernels;

// Every byte is read before it is written, so dst may be src.
template <class Kernel>
char* convert(const char* src, char* dst, Kernel kernel) {
    *kernel(zv::Source(src), zv::as_bytes(dst)) = 0;
    return dst;
}

} // namespace

char* c8859_5To1251x(const char* src, char* dst) {
    return convert(src, dst, zv::widest([]<int Size> {
                       return CodePageKernels<Size>::iso_5_to_windows_1251;
                   }));
}

char* c1251To8859_5x(const char* src, char* dst) {
    return convert(src, dst, zv::widest([]<int Size> {
                       return CodePageKernels<Size>::windows_1251_to_iso_5;
                   }));
}

char* c8859_2To1250x(const char* src, char* dst) {
    return convert(src, dst, zv::widest([]<int Size> {
                       return CodePageKernels<Size>::iso_2_to_windows_1250;
                   }));
}

char* c1250To8859_2x(const char* src, char* dst) {
    return convert(src, dst, zv::widest([]<int Size> {
                       return CodePageKernels<Size>::windows_1250_to_iso_2;
                   }));
}
