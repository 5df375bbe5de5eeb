// The string operations against the same job done by walking from character to character with
// mbrlen in a real locale of the code set, and against what the C library does for bytes. Nothing
// that is looked for is found, so that every operation sees its whole text.
#include <strings.h>

#include <cctype>
#include <climits>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <memory>
#include <vector>

#include "bench.h"
#include "jaconv.h"
#include "mbutil.h"

namespace bench {
namespace {

struct CodeSet {
    const char* name;
    int id;
    const char* encoding;
    const char* locale;
    std::string_view prose;
    std::string_view needle; // begins as words of the prose do
    std::string_view set;    // as frequent in its first bytes as punctuation is
};

// Hiragana alone. Their trail bytes are no ASCII, so that no search meets a false candidate, and in
// EUC every byte could be a lead byte.
constexpr std::string_view kHiragana = "ことばはみじかくてよるのそらはひろいとかれはしずかにいった";

constexpr CodeSet kCodeSets[] = {
    {"EUC", ZV_EUC, "EUC-JP", "ja_JP.eucJP", kJapanese, "東京都庁", "？！；"},
    {"SJIS", ZV_SJIS, "SJIS", "ja_JP.SJIS", kJapanese, "東京都庁", "？！；"},
    {"BIG5", ZV_BIG5, "BIG5", "zh_TW.BIG5", kChinese, "小鳥樹上", "？！；"},
};
// For searches, and for what letter case means to.
constexpr CodeSet kHiraganaTexts[] = {
    {"EUC hiragana", ZV_EUC, "EUC-JP", "ja_JP.eucJP", kHiragana, "とり", "？！；"},
    {"SJIS hiragana", ZV_SJIS, "SJIS", "ja_JP.SJIS", kHiragana, "とり", "？！；"},
};
constexpr CodeSet kAsciiText = {"SJIS ASCII", ZV_SJIS, "SJIS",  "ja_JP.SJIS",
                                kAscii,       "birch", "？！；"};

constexpr size_t kNotFound = static_cast<size_t>(-1);
constexpr size_t kSizes[] = {48, 4 * 1024};
constexpr char kByte = '\\';

// What the operations work on. Makes the code set current and its locale the process's.
struct Texts {
    Texts(const CodeSet& code_set, size_t size)
        : id(code_set.id), text(text_of(code_set.encoding, code_set.prose, size)),
          needle(convert("UTF-8", code_set.encoding, code_set.needle)),
          set(convert("UTF-8", code_set.encoding, code_set.set)), same(text), out(text, size + 1) {
        std::string prose(code_set.prose);
        for (char& c : prose)
            c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        upper = text_of(code_set.encoding, prose, size);
        InitMbutilExt(id);
        if (std::setlocale(LC_CTYPE, code_set.locale) == nullptr)
            fail(std::string("no locale ") + code_set.locale);
    }
    // An area one byte too small for the text.
    unsigned room() const { return static_cast<unsigned>(text.size() - 1); }
    size_t offset(const char* found) const {
        return found == nullptr ? kNotFound : static_cast<size_t>(found - text.c_str());
    }

    int id;
    std::string text;
    std::string upper;
    std::string needle;
    std::string set;
    std::string same;
    Room out;
};

// The jobs by mbrlen.
namespace walk {

struct Character {
    std::string_view bytes;
    bool well_formed;
};

// The character at p; a malformed byte counts as one.
Character character_at(const char* p, const char* end) {
    std::mbstate_t state{};
    const size_t length = std::mbrlen(p, static_cast<size_t>(end - p), &state);
    if (length > MB_LEN_MAX)
        return {{p, 1}, false};
    return {{p, length}, true};
}

// The first character for which visit() returns true, or null.
template <class Visit>
const char* find_character(const char* s, Visit visit) {
    const char* end = s + std::strlen(s);
    while (s != end) {
        const Character character = character_at(s, end);
        if (visit(character))
            return s;
        s += character.bytes.size();
    }
    return nullptr;
}

const char* malformed(const char* s) {
    return find_character(s, [](const Character& c) { return !c.well_formed; });
}

size_t boundary(const char* s, size_t n) {
    const char* const limit = s + n;
    const char* cut = find_character(
        s, [=](const Character& c) { return c.bytes.data() + c.bytes.size() > limit; });
    return cut == nullptr ? std::strlen(s) : static_cast<size_t>(cut - s);
}

const char* first(const char* s, char byte) {
    return find_character(s, [=](const Character& c) { return c.bytes.front() == byte; });
}

const char* last(const char* s, char byte) {
    const char* found = nullptr;
    find_character(s, [&](const Character& c) {
        if (c.bytes.front() == byte)
            found = c.bytes.data();
        return false;
    });
    return found;
}

const char* string(const char* s, const char* needle) {
    const size_t length = std::strlen(needle);
    return find_character(
        s, [=](const Character& c) { return std::strncmp(c.bytes.data(), needle, length) == 0; });
}

const char* member(const char* s, const char* set) {
    std::vector<std::string_view> members;
    find_character(set, [&](const Character& c) {
        members.push_back(c.bytes);
        return false;
    });
    return find_character(s, [&](const Character& c) {
        for (const std::string_view candidate : members) {
            if (candidate == c.bytes)
                return true;
        }
        return false;
    });
}

void copy(char* dst, const char* src, size_t n) {
    const size_t length = boundary(src, n);
    std::memcpy(dst, src, length);
    std::memset(dst + length, 0, n - length);
}

int lower(char c) {
    return std::tolower(static_cast<unsigned char>(c));
}

const MbToSbNumber* number_table(int code_set) {
    return code_set == ZV_EUC    ? Mb2SbNumberTableInEUC
           : code_set == ZV_SJIS ? Mb2SbNumberTableInSJIS
                                 : Mb2SbNumberTableInBIG5;
}

size_t narrow_numbers(char* dst, const char* src, const MbToSbNumber* table) {
    char* out = dst;
    find_character(src, [&](const Character& c) {
        const MbToSbNumber* row = table;
        while (row->mb[0] != 0 && c.bytes != reinterpret_cast<const char*>(row->mb))
            ++row;
        const std::string_view written(row->mb[0] != 0 ? std::string_view(&row->sb, 1) : c.bytes);
        out += written.copy(out, written.size());
        return false;
    });
    *out = '\0';
    return static_cast<size_t>(out - dst);
}

size_t lower_all(char* s) {
    find_character(s, [](const Character& c) {
        if (c.bytes.size() == 1)
            *const_cast<char*>(c.bytes.data()) = static_cast<char>(lower(c.bytes.front()));
        return false;
    });
    return std::strlen(s);
}

int compare(const char* a, const char* b) {
    const char* const end_of_a = a + std::strlen(a);
    const char* const end_of_b = b + std::strlen(b);
    while (a != end_of_a && b != end_of_b) {
        const std::string_view in_a = character_at(a, end_of_a).bytes;
        const std::string_view in_b = character_at(b, end_of_b).bytes;
        const int order = in_a.size() == 1 && in_b.size() == 1
                              ? lower(in_a.front()) - lower(in_b.front())
                              : in_a.compare(in_b);
        if (order != 0)
            return order;
        a += in_a.size();
        b += in_b.size();
    }
    return (a != end_of_a) - (b != end_of_b);
}

} // namespace walk

struct Operation {
    const char* name;
    size_t (*zvutil)(Texts&);
    size_t (*mbrlen)(Texts&);    // gives the same result
    size_t (*c_library)(Texts&); // does the same for bytes, as far as there is such a function
    enum { search, comparison, other } kind = other;
};

size_t copy_all(Texts& t) {
    std::memcpy(t.out.data(), t.text.c_str(), std::strlen(t.text.c_str()));
    return 0;
}

size_t compare_bytes(Texts& t) {
    return strncasecmp(t.text.c_str(), t.upper.c_str(), t.room()) != 0;
}

constexpr Operation kOperations[] = {
    {"mbvalidatestring",
     [](Texts& t) -> size_t {
         unsigned bad;
         return mbvalidatestring(t.text.c_str(), &bad, t.id) == 1 ? kNotFound : bad;
     },
     [](Texts& t) { return t.offset(walk::malformed(t.text.c_str())); }, nullptr},
    {"mbidx", [](Texts& t) -> size_t { return mbidx(t.text.c_str(), t.room()); },
     [](Texts& t) { return walk::boundary(t.text.c_str(), t.room()); },
     [](Texts& t) { return strnlen(t.text.c_str(), t.room()); }, Operation::search},
    {"mbnextidx", [](Texts& t) -> size_t { return mbnextidx(t.text.c_str(), t.room() - 2); },
     [](Texts& t) {
         const size_t start = walk::boundary(t.text.c_str(), t.room() - 2);
         const char* const p = t.text.c_str() + start;
         return start + walk::character_at(p, t.text.c_str() + t.text.size()).bytes.size();
     },
     [](Texts& t) { return strnlen(t.text.c_str(), t.room()); }},
    {"mbstrchr", [](Texts& t) { return t.offset(mbstrchr(t.text.c_str(), kByte)); },
     [](Texts& t) { return t.offset(walk::first(t.text.c_str(), kByte)); },
     [](Texts& t) { return t.offset(std::strchr(t.text.c_str(), '\1')); }, Operation::search},
    {"mbstrrchr", [](Texts& t) { return t.offset(mbstrrchr(t.text.c_str(), kByte)); },
     [](Texts& t) { return t.offset(walk::last(t.text.c_str(), kByte)); },
     [](Texts& t) { return t.offset(std::strrchr(t.text.c_str(), '\1')); }, Operation::search},
    {"mbstrstr", [](Texts& t) { return t.offset(mbstrstr(t.text.c_str(), t.needle.c_str())); },
     [](Texts& t) { return t.offset(walk::string(t.text.c_str(), t.needle.c_str())); },
     [](Texts& t) { return t.offset(std::strstr(t.text.c_str(), t.needle.c_str())); },
     Operation::search},
    {"mbstrpbrk", [](Texts& t) { return t.offset(mbstrpbrk(t.text.c_str(), t.set.c_str())); },
     [](Texts& t) { return t.offset(walk::member(t.text.c_str(), t.set.c_str())); },
     [](Texts& t) { return t.offset(std::strpbrk(t.text.c_str(), "\1\2\3")); }, Operation::search},
    {"mbstrncpy",
     [](Texts& t) -> size_t {
         return static_cast<unsigned char>(
             mbstrncpy(t.out.data(), t.text.c_str(), t.room())[t.room() - 1]);
     },
     [](Texts& t) -> size_t {
         walk::copy(t.out.data(), t.text.c_str(), t.room());
         return static_cast<unsigned char>(t.out.data()[t.room() - 1]);
     },
     nullptr},
    {"mbstricmp",
     [](Texts& t) -> size_t { return mbstricmp(t.text.c_str(), t.upper.c_str()) != 0; },
     [](Texts& t) -> size_t { return walk::compare(t.text.c_str(), t.upper.c_str()) != 0; },
     compare_bytes, Operation::comparison},
    {"mbstrnicmp",
     [](Texts& t) -> size_t { return mbstrnicmp(t.text.c_str(), t.upper.c_str(), t.room()) != 0; },
     [](Texts& t) -> size_t { return walk::compare(t.text.c_str(), t.upper.c_str()) != 0; },
     compare_bytes, Operation::comparison},
    {"mbcharcmp",
     [](Texts& t) -> size_t { return mbcharcmp(t.text.c_str(), t.same.c_str(), t.room()) != 0; },
     [](Texts& t) -> size_t { return walk::compare(t.text.c_str(), t.same.c_str()) != 0; },
     compare_bytes},
    {"ConvertMBNumberToSBNumber",
     [](Texts& t) -> size_t {
         ConvertMBNumberToSBNumber(t.text.c_str(), t.out.data());
         return std::strlen(t.out.data());
     },
     [](Texts& t) {
         return walk::narrow_numbers(t.out.data(), t.text.c_str(), walk::number_table(t.id));
     },
     nullptr},
    {"mbstrtolower", [](Texts& t) -> size_t { return mbstrtolower(t.same.data()); },
     [](Texts& t) { return walk::lower_all(t.same.data()); }, nullptr, Operation::comparison},
};

auto maker(const CodeSet& code_set, size_t size, size_t (*operation)(Texts&)) {
    return [=, &code_set] {
        return [texts = Texts(code_set, size), operation]() mutable {
            benchmark::DoNotOptimize(operation(texts));
        };
    };
}

void add(const CodeSet& code_set, const Operation& operation, size_t size) {
    Texts texts(code_set, size);
    if (operation.zvutil(texts) != operation.mbrlen(texts))
        fail(std::string(operation.name) + " and the walk differ in " + code_set.name);
    const bool has_counterpart = operation.c_library != nullptr;
    Row("strings", operation.name, code_set.name, size, "byte")
        .measure("zvutil", maker(code_set, size, operation.zvutil))
        .measure("mbrlen", maker(code_set, size, operation.mbrlen))
        .measure(has_counterpart ? "C library" : "strlen+memcpy",
                 maker(code_set, size, has_counterpart ? operation.c_library : copy_all));
}

// The streams over a text, each by the library and by the function of stdio that it stands on.
struct Reading {
    const char* name;
    const char* peer;
    size_t (*zvutil)(FILE*, std::string& room);
    size_t (*stdio)(FILE*, std::string& room);
};

constexpr Reading kReadings[] = {
    {"mbfreadstring", "fread",
     [](FILE* f, std::string& room) -> size_t {
         const auto size = static_cast<unsigned>(room.size() - 1);
         return static_cast<size_t>(mbfreadstring(room.data(), size, f));
     },
     [](FILE* f, std::string& room) { return std::fread(room.data(), 1, room.size() - 1, f); }},
    {"DetectJPCodeType", "fgetc",
     [](FILE* f, std::string&) -> size_t { return static_cast<size_t>(DetectJPCodeType(f)); },
     [](FILE* f, std::string&) -> size_t {
         while (std::fgetc(f) != EOF) {
         }
         return 0;
     }},
};

void add(const Reading& reading) {
    constexpr size_t kSize = 64 * 1024;
    const auto make = [](auto read) {
        return [=] {
            InitMbutilExt(ZV_SJIS);
            const std::string text = text_of("SJIS", kAscii, kSize);
            const std::shared_ptr<FILE> stream(std::tmpfile(), std::fclose);
            if (std::fwrite(text.data(), 1, kSize, stream.get()) != kSize)
                fail("no temporary file");
            return [=, room = std::string(kSize, '\0')]() mutable {
                std::rewind(stream.get());
                benchmark::DoNotOptimize(read(stream.get(), room));
            };
        };
    };
    Row("strings", reading.name, "SJIS ASCII", kSize, "byte")
        .measure("zvutil", make(reading.zvutil))
        .measure(reading.peer, make(reading.stdio));
}

} // namespace

void add_strings() {
    for (const Reading& reading : kReadings)
        add(reading);
    for (const Operation& operation : kOperations) {
        for (const size_t size : kSizes) {
            for (const CodeSet& code_set : kCodeSets)
                add(code_set, operation, size);
            if (operation.kind == Operation::comparison)
                add(kAsciiText, operation, size);
            for (const CodeSet& code_set : kHiraganaTexts) {
                if (operation.kind == Operation::search)
                    add(code_set, operation, size);
            }
        }
    }
}

} // namespace bench
