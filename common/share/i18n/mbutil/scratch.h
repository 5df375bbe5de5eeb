#ifndef ZVUTIL_MBUTIL_SCRATCH_H
#define ZVUTIL_MBUTIL_SCRATCH_H

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace zv {

// Working memory of one call: on the stack for short texts, one block of the heap otherwise.
// False when there is no memory.
class Scratch {
public:
    explicit Scratch(size_t size)
        : data_(size <= kOnStack ? stack_ : static_cast<char*>(std::malloc(size))),
          size_(std::max(size, kOnStack)) {}
    ~Scratch() {
        if (data_ != stack_)
            std::free(data_);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    explicit operator bool() const { return data_ != nullptr; }
    char* data() { return data_; }

    // Makes room for at least `size` bytes and keeps what is there. False, with everything as it
    // was, when there is no memory. Doubling keeps repeated growth linear.
    bool grow(size_t size) {
        if (size <= size_)
            return true;
        size = std::max(size, 2 * size_);
        void* block = std::realloc(data_ == stack_ ? nullptr : data_, size);
        if (block == nullptr)
            return false;
        if (data_ == stack_)
            std::memcpy(block, stack_, kOnStack);
        data_ = static_cast<char*>(block);
        size_ = size;
        return true;
    }

private:
    static constexpr size_t kOnStack = 1024;

    char* data_;
    size_t size_;
    char stack_[kOnStack];
};

} // namespace zv

#endif
