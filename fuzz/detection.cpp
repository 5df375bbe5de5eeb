// Detection of Japanese encodings, against a table of what pairs of bytes tell.
#include "input.h"
#include "models/japanese_model.h"

using test::between;

namespace {

constexpr int kSame = -1, kEnd = -1;
// What a first byte and the one behind it tell; other pairs tell nothing.
const struct {
    int first, last, second_first, second_last, answer;
} kPairs[] = {{0x1B, 0x1B, 'K', 'K', ZV_JIS},           {0x8E, 0x8E, 0x40, 0x7E, ZV_SJIS},
              {0x8E, 0x8E, 0x80, 0xA0, ZV_SJIS},        {0x8E, 0x8E, 0xE0, 0xFC, ZV_SJIS},
              {0x8E, 0x8E, 0xA1, 0xDF, ZV_EUC_OR_SJIS}, {0xA1, 0xDF, kEnd, 0x9F, ZV_SJIS},
              {0xA1, 0xDF, 0xA1, 0xEF, ZV_EUC_OR_SJIS}, {0xA1, 0xDF, 0xF0, 0xFE, ZV_EUC},
              {0xE0, 0xEF, 0x40, 0x7E, ZV_SJIS},        {0xE0, 0xEF, 0x80, 0xA0, ZV_SJIS},
              {0xE0, 0xEF, 0xA1, 0xFC, ZV_EUC_OR_SJIS}, {0xE0, 0xEF, 0xFD, 0xFE, ZV_EUC}};

bool is_shift_jis_alone(int byte) {
    return between(byte, 0x81, 0x9F) && byte != 0x8E;
}

struct Model {
    const std::string& text;
    size_t at = 0;
    int last = 0; // byte read

    int next() { return last = at < text.size() ? text[at++] & 0xFF : kEnd; }
    int after(int first, int second) {
        int answer = kSame;
        for (const auto& pair : kPairs)
            if (between(first, pair.first, pair.last) &&
                between(second, pair.second_first, pair.second_last))
                answer = pair.answer;
        if (first == 0x1B && second == '$')
            return between(next(), '@', 'B') && last != 'A' ? 3 : kSame;
        // A katakana before one of these begins a run in which every byte may tell.
        if (!between(first, 0xA1, 0xDF) || !between(second, 0xE0, 0xEF))
            return answer;
        for (; second >= 0x40 && answer == ZV_EUC_OR_SJIS; second = next())
            answer = is_shift_jis_alone(second)    ? ZV_SJIS
                     : between(second, 0xFD, 0xFE) ? ZV_EUC
                                                   : answer;
        return answer;
    }
    int run() {
        int answer = 0;
        while ((answer == 0 || answer == ZV_EUC_OR_SJIS) && last != kEnd) {
            const int byte = next();
            const bool pairs = byte == 0x1B || byte == 0x8E || between(byte, 0xA1, 0xEF);
            const int told = is_shift_jis_alone(byte)    ? ZV_SJIS
                             : between(byte, 0xF0, 0xFE) ? ZV_EUC
                             : pairs                     ? after(byte, next())
                                                         : kSame;
            answer = told == kSame ? answer : told;
        }
        return answer;
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text = fuzz::Input(data, size).rest();
    if (text.empty())
        return 0; // fmemopen() takes no empty text
    fuzz::Text readable(text);
    FILE* stream = fmemopen(readable.data(), text.size(), "r");
    Model model{text};
    fuzz::same(DetectJPCodeType(stream), model.run(), "DetectJPCodeType");
    fuzz::same(ftell(stream), static_cast<long>(model.at), "what is read");
    fclose(stream);
    return 0;
}
