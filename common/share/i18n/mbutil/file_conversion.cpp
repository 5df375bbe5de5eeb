#include <cstdio>
#include <cstdlib>

#include "../jaconv/big5_cns.h"
#include "../jaconv/japanese.h"
#include "boundary.h"
#include "conversion.h"

namespace {

using zv::Byte;

constexpr size_t kBlockSize = 21000;

// Converts a file by blocks. What a block's end cuts short is carried to the front of the next
// block and so is the shift state, so the result is that of one conversion of the whole text.
class BlockConversion {
public:
    BlockConversion(int from, int to) : from_(from), to_(to) {}
    ~BlockConversion() { std::free(block_); }
    BlockConversion(const BlockConversion&) = delete;
    BlockConversion& operator=(const BlockConversion&) = delete;

    bool allocate() {
        const size_t room = zv::converted_room(from_, to_, kBlockSize);
        block_ = static_cast<char*>(std::malloc(kBlockSize + room));
        return block_ != nullptr;
    }

    void run(std::FILE* source, std::FILE* destination) {
        Byte* out = zv::as_bytes(block_) + kBlockSize;
        size_t carried = 0;
        bool more = true;
        while (more) {
            const size_t got =
                carried + std::fread(block_ + carried, 1, kBlockSize - carried, source);
            more = got == kBlockSize;
            const zv::Source text(zv::as_bytes(block_), strnlen(block_, got));
            zv::Converted converted = convert(text, out);
            size_t consumed = static_cast<size_t>(converted.read - text.next);
            if (text.left() < got) {
                // A zero byte ends the block's text; what is behind it is not converted.
                converted.written = finish(converted, text);
                mode_ = zv::JisMode::single_byte;
                consumed = more ? zv::whole_characters(block_, got, from_) : got;
            } else if (!more) {
                converted.written = finish(converted, text);
            }
            std::fwrite(out, 1, static_cast<size_t>(converted.written - out), destination);
            carried = got - consumed;
            std::memmove(block_, block_ + consumed, carried);
        }
    }

private:
    zv::Converted convert(const zv::Source& text, Byte* out) {
        switch (from_) {
        case ZV_SJIS:
            return zv::shift_jis_to_euc(text, out);
        case ZV_EUC:
            return zv::euc_to_shift_jis(text, out);
        case ZV_BIG5:
            return zv::big5_to_euc_tw(text, out);
        case ZV_EUC_H:
            return zv::euc_tw_to_big5(text, out);
        default:
            return to_ == ZV_SJIS ? zv::jis_to_shift_jis(text, out, mode_)
                                  : zv::jis_to_euc(text, out, mode_);
        }
    }

    Byte* finish(const zv::Converted& converted, const zv::Source& text) const {
        return from_ == ZV_JIS ? zv::finish_from_jis(converted, text) : zv::finish(converted, text);
    }

    int from_;
    int to_;
    zv::JisMode mode_ = zv::JisMode::single_byte;
    char* block_ = nullptr;
};

} // namespace

int mbconvertfile2native_ex(const char* source, const char* destination, char append,
                            int code_set) {
    const int current = zv::current_code_set();
    if (IsConversionSupport(code_set, current) == 0)
        return 0;
    std::FILE* in = std::fopen(source, "rb");
    if (in == nullptr)
        return 0;
    std::FILE* out = std::fopen(destination, append != 0 ? "ab" : "wb");
    if (out == nullptr) {
        std::fclose(in);
        return 0;
    }
    BlockConversion conversion(code_set, current);
    const bool allocated = conversion.allocate();
    if (allocated)
        conversion.run(in, out);
    std::fclose(in);
    std::fclose(out);
    return allocated;
}
