#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <span>
#include <string_view>

#include "mbutil.h"
#include "zvosutil.h"

namespace {

constexpr char kSeparator = '\\';
constexpr unsigned kLongestCode = sizeof(CurrencyDetail::code) - 1;
// Lists up to here are parsed once, into the stack.
constexpr size_t kRecordsOnStack = 256;

// Writes fields while they fit.
class FieldWriter {
public:
    FieldWriter(char* out, size_t room) : out_(out), room_(room) {}

    bool put(std::string_view field) {
        if (field.size() >= room_)
            return false;
        std::memcpy(out_, field.data(), field.size());
        out_[field.size()] = kSeparator;
        out_ += field.size() + 1;
        room_ -= field.size() + 1;
        return true;
    }
    // Of up to 32 bits and a sign. Not with std::to_chars(), whose tables are larger than all this.
    bool put_number(int64_t number) {
        char digits[std::numeric_limits<uint32_t>::digits10 + 2];
        char* const stop = digits + sizeof digits;
        char* first = stop;
        auto left = static_cast<uint32_t>(number < 0 ? -number : number);
        do {
            *--first = static_cast<char>('0' + left % 10);
            left /= 10;
        } while (left != 0);
        if (number < 0)
            *--first = '-';
        return put({first, static_cast<size_t>(stop - first)});
    }
    char* end() const { return out_; }

private:
    char* out_;
    size_t room_;
};

bool put_list(FieldWriter& out, const CurrencyDetailList& list) {
    bool fits = out.put_number(list.count);
    for (uint32_t i = 0; fits && i < list.count; ++i) {
        const CurrencyDetail& detail = list.details[i];
        const size_t code_length = strnlen(detail.code, sizeof detail.code);
        // Without its terminator a code would be refused when it is read back.
        fits = code_length <= kLongestCode && out.put({detail.code, code_length}) &&
               out.put_number(detail.value);
    }
    return fits;
}

const char* find_separator(const char* text) {
    return mbstrchr(text, kSeparator);
}

// Reads the record that begins a text and gives what follows it; null when there is none.
const char* read_record(const char* text, CurrencyDetail& record) {
    const char* code_end = find_separator(text);
    if (code_end == nullptr || static_cast<size_t>(code_end - text) > kLongestCode)
        return nullptr;
    // Stops at the separator at the latest, which is no digit.
    char* digits_end;
    const long long value = std::strtoll(code_end + 1, &digits_end, 10);
    const char* value_end = *digits_end == kSeparator ? digits_end : find_separator(digits_end);
    if (value_end == nullptr || value != static_cast<int32_t>(value))
        return nullptr;
    record = {{}, static_cast<int32_t>(value)};
    mbstrncpy(record.code, text, static_cast<unsigned>(code_end - text));
    return value_end + 1;
}

// Reads records until the span is full. Gives what follows them, null when there are fewer.
const char* read_records(const char* text, std::span<CurrencyDetail> records) {
    for (auto record = records.begin(); record != records.end() && text != nullptr; ++record)
        text = read_record(text, *record);
    return text;
}

// Bounded by the text, whatever its count says.
bool holds_records(const char* text, size_t count) {
    CurrencyDetail record;
    for (; count > 0 && text != nullptr; --count)
        text = read_record(text, record);
    return text != nullptr;
}

} // namespace

int ZVCurrencyDetailListToText(const CurrencyDetailList* list, unsigned* position, unsigned size,
                               char* buffer) {
    std::fill_n(buffer, size, '\0');
    if (list == nullptr)
        return 0;
    if (uint64_t{*position} + 5 >= size)
        return ZV_CURRENCY_NO_ROOM;
    // The last byte stays for the terminator.
    FieldWriter out(buffer + *position, size - *position - 1);
    if (!put_list(out, *list)) {
        std::fill(buffer + *position, out.end(), '\0');
        return ZV_CURRENCY_NO_ROOM;
    }
    *position = static_cast<unsigned>(out.end() - buffer);
    return 0;
}

int LoadCurrencyDetailList(const char* text, CurrencyDetailList* list) {
    *list = {0, nullptr};
    const char* separator = find_separator(text);
    if (separator == nullptr)
        return ZV_CURRENCY_MALFORMED;
    const long long announced = std::strtoll(text, nullptr, 10);
    if (announced < 0 || announced > UINT32_MAX)
        return ZV_CURRENCY_MALFORMED;
    const auto count = static_cast<size_t>(announced);
    // Nothing is allocated for a list that does not come whole.
    CurrencyDetail first[kRecordsOnStack];
    const size_t on_stack = std::min(count, kRecordsOnStack);
    const char* rest = read_records(separator + 1, {first, on_stack});
    if (rest == nullptr || !holds_records(rest, count - on_stack))
        return ZV_CURRENCY_MALFORMED;
    if (count == 0)
        return 0;
    auto* details = static_cast<CurrencyDetail*>(std::calloc(count, sizeof(CurrencyDetail)));
    if (details == nullptr)
        return ZV_CURRENCY_NO_MEMORY;
    std::copy_n(first, on_stack, details);
    read_records(rest, {details + on_stack, count - on_stack});
    *list = {static_cast<uint32_t>(count), details};
    return 0;
}
