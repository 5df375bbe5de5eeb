#ifndef ZVUTIL_JACONV_WIDE_KERNEL_H
#define ZVUTIL_JACONV_WIDE_KERNEL_H

#include "../../../platform/processor.h"
#include "bytes.h"

namespace zv {

// Wide kernels need more than a block of source.
inline constexpr size_t kWideBlockSize = 32;

// Converts plain characters at the front of the source, whole blocks as long as it can. All is
// passed in registers.
using Kernel = Converted (*)(Source, Byte* out);

// Runs the wide kernel of a conversion ahead of its rule, where the processor has one. Text that is
// rarely plain is left to the rule for a while, since a block that is given up costs more than a
// character by the rule.
template <class... State>
class WideKernel {
public:
    using Function = Converted (*)(Source, Byte* out, State&...);

    explicit WideKernel(Function kernel) : kernel_(has_avx2() ? kernel : nullptr) {}

    Byte* run(Source& source, Byte* out, State&... state) {
        if (kernel_ == nullptr || source.left() <= kWideBlockSize || source.next < resume_)
            return out;
        const Byte* const before = source.next;
        const Converted converted = kernel_(source, out, state...);
        source.next = converted.read;
        if (source.next < before + kWideBlockSize / 2)
            resume_ = source.next + 2 * kWideBlockSize;
        return converted.written;
    }

private:
    Function kernel_;
    const Byte* resume_ = nullptr;
};

} // namespace zv

#endif
