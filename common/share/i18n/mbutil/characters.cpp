#include "characters.h"

#include "../jaconv/kernel_choice.h"
#include "scanner_choice.h"

namespace zv {
namespace {

// Most runs are short.
template <ByteRanges kLeads>
[[gnu::noinline]] const Byte* run_before(const Byte* first, const Byte* p) {
    constexpr ptrdiff_t kNear = 128;
    const Byte* const near = p - first > kNear ? p - kNear : first;
    const Byte* const run = StringKernels<16>::run_of_leads<kLeads>(near, p);
    if (run == first || run != near)
        return run;
    return widest([]<int Size> { return StringKernels<Size>::template run_of_leads<kLeads>; })(
        first, run);
}

// A byte that cannot be a trail byte begins a character. Any other does behind an even number of
// lead bytes, since these pair up; longer characters end such a run.
template <class Scanner>
const Byte* last_boundary(const Byte* first, const Byte* p, size_t readable) {
    using Roles = ByteRoles<Scanner>;
    if (p == first || !ByteClass<Roles::is_trail>::has(*p))
        return p;
    const Byte* run = run_before<kPairsOf<Scanner>.leads>(first, p);
    if (run != first && ByteClass<Roles::is_irregular>::has(run[-1])) {
        const Byte* const lead = run - 1;
        const auto before = static_cast<size_t>(p - lead);
        const auto length =
            static_cast<size_t>(std::max(scan<Scanner>(lead, before + readable), 1));
        if (length > before)
            return lead;
        run = lead + length;
    }
    return p - (p - run) % 2;
}

template <PairRanges kPairs>
Marked mark_starts(const Byte* text, size_t size, Marked marked, std::uint64_t* starts) {
    return widest([]<int Size> { return StringKernels<Size>::template mark_starts<kPairs>; })(
        text, size, marked, starts);
}

template <PairRanges kPairs>
const Byte* skip_well_formed(const Byte* p, size_t left) {
    return widest([]<int Size> { return StringKernels<Size>::template skip_well_formed<kPairs>; })(
        p, left);
}

template <class Scanner>
constexpr Characters kCharacters = {
    Scanner::kLongest,
    Scanner::announced,
    step<Scanner>,
    [](Byte byte) { return !ByteClass<ByteRoles<Scanner>::is_trail>::has(byte); },
    last_boundary<Scanner>,
    run_before<kPairsOf<Scanner>.leads>,
    mark_starts<kPairsOf<Scanner>>,
    skip_well_formed<kPairsOf<Scanner>>,
};

} // namespace

const Characters& characters_of(int code_set) {
    return with_scanner(
        code_set, [](auto scanner) -> const Characters& { return kCharacters<decltype(scanner)>; });
}

const Characters& current_characters() {
    return characters_of(current_code_set());
}

void Starts::mark(const Characters& characters, const Byte* text, size_t size, size_t& next) {
    Marked marked{0, next};
    while (marked.end < size) {
        if (marked.next <= marked.end + 1)
            marked = characters.mark_starts(text, size, marked, words_);
        if (marked.end == size)
            break;
        words_[marked.end / 64] = 0;
        marked.end = std::min(marked.end + 64, size);
        for (size_t& i = marked.next; i < marked.end;
             i += static_cast<size_t>(characters.step(text + i)))
            words_[i / 64] |= std::uint64_t{1} << i % 64;
    }
    next = marked.next - size;
    std::uint64_t* const last = words_ + size / 64;
    const std::uint64_t behind = std::uint64_t{1} << size % 64;
    last[0] = (size % 64 == 0 ? 0 : last[0] & (behind - 1)) | (next == 0 ? behind : 0);
    last[1] = 0;
}

size_t whole_characters(const char* block, size_t n, int code_set) {
    const Byte* const text = as_bytes(block);
    const Byte* const last = characters_of(code_set).last_boundary(text, text + n - 1, 1);
    const auto start = static_cast<size_t>(last - text);
    const size_t left = n - start;
    const int length = mblenExt(block + start, static_cast<unsigned>(left), code_set);
    return length < 0 || static_cast<size_t>(length) > left ? start : n;
}

} // namespace zv
