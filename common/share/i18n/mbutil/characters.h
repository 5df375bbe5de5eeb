#ifndef ZVUTIL_MBUTIL_CHARACTERS_H
#define ZVUTIL_MBUTIL_CHARACTERS_H

#include "current_code_set.h"
#include "strings_kernels.h"

namespace zv {

inline const char* as_text(const Byte* bytes) {
    return reinterpret_cast<const char*>(bytes);
}

// What string operations ask of a code set.
struct Characters {
    int longest;
    int (*announced)(Byte lead);
    int (*step)(const Byte* s);
    // Whether a byte begins a character wherever it stands.
    bool (*always_begins)(Byte byte);
    // The last boundary not beyond p, where `first` is one. Of what begins before p, so many bytes
    // may be looked at from p on; terminated text ends that by itself.
    const Byte* (*last_boundary)(const Byte* first, const Byte* p, size_t readable);
    // Where the run of regular lead bytes begins that ends at p, not before `first`.
    const Byte* (*run_before)(const Byte* first, const Byte* p);
    // As in StringKernels.
    MarkStarts* mark_starts;
    SkipWellFormed* skip_well_formed;

    const Byte* last_boundary_in(const Byte* first, const Byte* p) const {
        return last_boundary(first, p, static_cast<size_t>(longest));
    }
};
const Characters& characters_of(int code_set);
const Characters& current_characters();

// Terminated texts are looked through in parts of this many bytes, so that what is decided early
// needs no look at what is far behind it.
inline constexpr size_t kPart = 1024;

inline size_t part_of(const Byte* text, size_t most = kPart) {
    return strnlen(as_text(text), most);
}

// The bytes of a part that begin characters.
class Starts {
public:
    // Marks so many bytes, a part at most, and whether the one behind them, which is there as well,
    // begins a character. `next` is the first boundary; on return the first one from there on,
    // counted from there.
    void mark(const Characters& characters, const Byte* text, size_t size, size_t& next);

    // Of 64 bytes, the lowest bit for the first.
    std::uint64_t of_word(size_t i) const { return words_[i]; }
    // Those of them that are characters by themselves.
    std::uint64_t singles(size_t i) const {
        return words_[i] & (words_[i] >> 1 | words_[i + 1] << 63);
    }

private:
    std::uint64_t words_[kPart / 64 + 2];
};

// How many of the n bytes of a block, n at least 1, belong to whole characters: less than n when
// the block ends inside one. A malformed last byte counts as cut too, since a trail byte may
// follow.
size_t whole_characters(const char* block, size_t n, int code_set);

} // namespace zv

#endif
