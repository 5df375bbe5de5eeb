#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "../jaconv/big5_cns.h"
#include "../jaconv/japanese.h"
#include "characters.h"
#include "conversion.h"

namespace {

using zv::Byte;

constexpr size_t kBlockSize = 21000;
constexpr size_t kReadSize = 16 * kBlockSize;
constexpr size_t kWriteSize = size_t{256} * 1024;

// An open file, read and written by many blocks at once.
class File {
public:
    File(const char* path, int flags) : descriptor_(open(path, flags | O_CLOEXEC, 0666)) {}
    ~File() {
        if (is_open())
            close(descriptor_);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    bool is_open() const { return descriptor_ != -1; }
    int descriptor() const { return descriptor_; }
    // Gives less than the size at the end of the file, and where it cannot be read.
    size_t read(char* to, size_t size) const {
        size_t done = 0;
        for (ssize_t got = 1; got != 0 && done < size;) {
            got = ::read(descriptor_, to + done, size - done);
            if (got > 0)
                done += static_cast<size_t>(got);
            else if (got < 0 && errno != EINTR)
                break;
        }
        return done;
    }
    // Leaves out what cannot be written.
    void write(const Byte* from, const Byte* end) const {
        while (from != end) {
            const ssize_t written = ::write(descriptor_, from, static_cast<size_t>(end - from));
            if (written > 0)
                from += written;
            else if (written == 0 || errno != EINTR)
                return;
        }
    }

private:
    int descriptor_;
};

// Also when it cannot be told.
bool may_be_same_file(const File& a, const File& b) {
    struct stat first;
    struct stat second;
    return fstat(a.descriptor(), &first) != 0 || fstat(b.descriptor(), &second) != 0 ||
           (first.st_dev == second.st_dev && first.st_ino == second.st_ino);
}

// Converts a file by blocks. What a block's end cuts short begins the next block and the shift
// state is carried over, so the result is that of one conversion of the whole text.
class BlockConversion {
public:
    BlockConversion(int from, int to)
        : from_(from), to_(to), block_room_(zv::converted_room(from, to, kBlockSize)) {}
    ~BlockConversion() { std::free(room_); }
    BlockConversion(const BlockConversion&) = delete;
    BlockConversion& operator=(const BlockConversion&) = delete;

    bool allocate() {
        room_ = static_cast<char*>(std::malloc(kReadSize + kWriteSize + block_room_));
        return room_ != nullptr;
    }

    void run(const File& source, const File& destination) {
        char* const text_room = room_;
        Byte* const out_room = zv::as_bytes(room_) + kReadSize;
        Byte* out = out_room;
        const char* block = text_room;
        size_t unread = 0;
        for (bool more = true; more;) {
            if (unread < kBlockSize) {
                std::memmove(text_room, block, unread);
                unread += source.read(text_room + unread, kReadSize - unread);
                block = text_room;
            }
            const size_t size = std::min(unread, kBlockSize);
            more = size == kBlockSize;
            const size_t consumed = convert_block({block, size}, more, out);
            block += consumed;
            unread -= consumed;
            if (out >= out_room + kWriteSize || !more) {
                destination.write(out_room, out);
                out = out_room;
            }
        }
    }

private:
    // Writes the converted text and steps over it. Gives how much of the block is done with.
    size_t convert_block(std::string_view block, bool more, Byte*& out) {
        const zv::Source text(zv::as_bytes(block.data()), strnlen(block.data(), block.size()));
        const zv::Converted converted = convert(text, out);
        if (text.left() == block.size() && more) {
            out = converted.written;
            return static_cast<size_t>(converted.read - text.next);
        }
        out = finish(converted, text);
        if (text.left() == block.size() || !more)
            return block.size();
        // A zero byte ends the block's text; what is behind it is not converted.
        mode_ = zv::JisMode::single_byte;
        return zv::whole_characters(block.data(), block.size(), from_);
    }

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
    size_t block_room_;
    zv::JisMode mode_ = zv::JisMode::single_byte;
    char* room_ = nullptr;
};

} // namespace

int mbconvertfile2native_ex(const char* source, const char* destination, char append,
                            int code_set) {
    const int current = zv::current_code_set();
    if (IsConversionSupport(code_set, current) == 0)
        return 0;
    const File in(source, O_RDONLY);
    if (!in.is_open())
        return 0;
    // Emptied only when it is known to be another file than the source.
    const File out(destination, O_WRONLY | O_CREAT | (append != 0 ? O_APPEND : 0));
    if (!out.is_open() || may_be_same_file(in, out))
        return 0;
    if (append == 0)
        (void)!ftruncate(out.descriptor(), 0);
    BlockConversion conversion(code_set, current);
    if (!conversion.allocate())
        return 0;
    conversion.run(in, out);
    return 1;
}
