#ifndef ZVUTIL_JACONV_KERNEL_CHOICE_H
#define ZVUTIL_JACONV_KERNEL_CHOICE_H

#include "../../../platform/processor.h"
#include "bytes.h"

namespace zv {

// The kernel for the widest vectors of the processor, of those that `kernel` gives for a size.
template <class Kernel>
inline auto widest(Kernel kernel) {
#ifdef ZVUTIL_WIDE_KERNELS
    switch (vector_size()) {
    case 64:
        return kernel.template operator()<64>();
    case 32:
        return kernel.template operator()<32>();
    default:
        break;
    }
#endif
    return kernel.template operator()<16>();
}

template <class... State>
using Kernel = Converted (*)(Source, Byte* out, State&... state);

// Converts by a rule for one character, bool(Source&, Byte*& out, State&...), which gives false
// where the end of the source cuts that short, and a kernel that runs ahead of it,
// Converted(Source, Byte* out). Text that is rarely plain is left to the rule for a while, since a
// kernel that stops at once costs more than a character by the rule.
template <class Rule, class... State>
[[gnu::noinline]] Converted convert_rest(Source source, Byte* out, Kernel<State...> kernel,
                                         Rule rule, State&... state) {
    constexpr ptrdiff_t kWorthwhile = 16;
    constexpr size_t kPause = 64;
    const Byte* resume = source.next;
    while (source.next != source.end && rule(source, out, state...)) {
        if (source.next < resume)
            continue;
        const Converted converted = kernel(source, out, state...);
        if (converted.read - source.next < kWorthwhile)
            resume = source.left() < kPause ? source.end : source.next + kPause;
        source.next = converted.read;
        out = converted.written;
    }
    return {source.next, out};
}

template <class Rule, class... State>
inline Converted convert_with(Source source, Byte* out, Kernel<State...> kernel, Rule rule,
                              State&... state) {
    const Converted converted = kernel(source, out, state...);
    if (converted.read == source.end) [[likely]]
        return converted;
    source.next = converted.read;
    return convert_rest(source, converted.written, kernel, rule, state...);
}

} // namespace zv

#endif
