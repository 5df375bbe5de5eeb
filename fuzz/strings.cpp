// Scanners and string operations in every code set, against the plainest statements of them.
#include "input.h"
#include "models/character_rules.h"
#include "models/strings_model.h"

using fuzz::same;

// The characters at a few positions, as each of the code sets sees them.
static void check_scanners(const std::string& s, unsigned n) {
    fuzz::Text text(s);
    for (size_t i = 0; i <= s.size(); ++i) {
        const std::string rest = s.substr(i, 4);
        const char* at = text.data() + i;
        for (const auto& rules : test::kRules) {
            const int length = n == 0 ? 0 : test::length_by_rules(rules, rest, n);
            const int step = std::max(test::length_by_rules(rules, rest, 4), 1);
            const bool lead = test::length_by_rules(rules, rest, 1) > 1;
            same(rules.scanner(text.bytes() + i, n), length, "scanner");
            same(mblenExt(at, n, rules.code_set), length, "mblenExt");
            same(mbbytesinchartype(at, rules.code_set), step, "mbbytesinchartype");
            same(isleadbyteExt(*at & 0xFF, rules.code_set), lead, "isleadbyteExt");
        }
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    const int code_set = input.one_of(test::kCodeSets);
    const unsigned choice = input.byte(), n = choice % 6;
    const size_t position = input.below(size_t{65536}), shape = position + size;
    std::string s = input.text_of_any_size(), part = input.text();
    InitMbutilExt(code_set);
    if (shape % 7 == 6) // no ASCII
        for (char& c : s)
            c |= '\x80';
    if (shape % 3 == 2 && !s.empty()) {
        const std::string taken = s.substr(position % s.size(), 1 + position % 40 * (n + 1));
        part = n % 2 == 0 ? taken : taken + part;
    }
    using Properties = test::StringProperties<fuzz::Text, fuzz::Room>;
    const size_t last = s.size() + (mbIsMultiByte() ? 2 : 0);
    switch (choice / 6 % 5) { // one a time, so that more texts come to each
    case 0:
        check_scanners(s.substr(position % (s.size() + 1), 16), n);
        Properties::boundaries(s, std::min(position % 1000, last), same);
        return Properties::boundaries(s, last, same), 0;
    case 1:
        return Properties::searches(s, part, same), 0;
    case 2: // each token takes a look at the whole set
        part.resize(std::min(part.size(), 1 + 10000 / (s.size() + 1)));
        return Properties::delimiters(s, part, same), 0;
    case 3:
        return Properties::comparisons(s, part, same), 0;
    default:
        return Properties::changes(s, part, code_set, same), 0;
    }
}
