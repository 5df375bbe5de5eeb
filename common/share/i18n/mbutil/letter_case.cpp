#include "../../../platform/letter_case.h"

#include "../jaconv/character_blocks.h"
#include "scanner_choice.h"

namespace {

using zv::Byte;
using zv::LetterCase;

template <class Scanner>
size_t change_character(Byte* p, LetterCase change) {
    const int length = zv::step<Scanner>(p);
    if (length == 1)
        *p = static_cast<Byte>(change(*p));
    return static_cast<size_t>(length);
}

int change_one(char* p, LetterCase change) {
    return zv::with_current_scanner([&](auto scanner) {
        return static_cast<int>(change_character<decltype(scanner)>(zv::as_bytes(p), change));
    });
}

template <class Scanner>
void change_text(Byte* p, const Byte* end, LetterCase change) {
    const auto change_single = [=](Byte& single) { single = static_cast<Byte>(change(single)); };
    while (p != end) {
        zv::BlockWalk<Scanner> walk;
        for (; static_cast<size_t>(end - p) >= zv::kBlockSize; p += zv::kBlockSize) {
            const bool behind_lead = walk.carried() != 0;
            if (!walk.enter(zv::load_block(p)))
                break;
            if (behind_lead && (walk.starts() & 1) != 0)
                change_single(p[-1]); // it is no lead byte
            for (zv::Mask left = walk.singles(); left != 0; left &= left - 1)
                change_single(p[zv::count_before(left)]);
        }
        p -= walk.carried();
        for (size_t n = 0; n < zv::kBlockSize && p != end; ++n)
            p += change_character<Scanner>(p, change);
    }
}

unsigned change_all(char* s, LetterCase change) {
    zv::ensure_initialised();
    if (s == nullptr)
        return 0;
    const size_t length = std::strlen(s);
    zv::with_current_scanner([&](auto scanner) {
        change_text<decltype(scanner)>(zv::as_bytes(s), zv::as_bytes(s) + length, change);
    });
    return static_cast<unsigned>(length);
}

} // namespace

int mbtoupper(char* p) {
    return change_one(p, LetterCase::upper());
}
int mbtolower(char* p) {
    return change_one(p, LetterCase::lower());
}
unsigned mbstrtoupper(char* s) {
    return change_all(s, LetterCase::upper());
}
unsigned mbstrtolower(char* s) {
    return change_all(s, LetterCase::lower());
}
