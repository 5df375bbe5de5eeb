#include "encodings.h"

#include <iconv.h>
#include <stdio.h>
#include <string.h>
#include <strings.h>

#include "mbutil.h"
#include "messages.h"

static const struct {
    struct encoding encoding;
    const char* aliases;
} kEncodings[] = {
    {{"WESTERN", "ISO-8859-1", ZV_WESTERN},
     "iso-8859-1 iso8859-1 8859_1 latin1 windows-1252 cp1252"},
    {{"JIS", "ISO-2022-JP", ZV_JIS}, "iso-2022-jp iso2022jp csiso2022jp"},
    {{"EUC", "EUC-JP", ZV_EUC}, "euc_j euc-jp eucjp ujis x-euc-jp"},
    {{"SJIS", "SJIS", ZV_SJIS},
     "shift_jis shift-jis shiftjis x-sjis ms_kanji cp932 windows-31j ms932"},
    {{"GB", "GB2312", ZV_GB}, "gb2312"},
    {{"EUC_C", "EUC-CN", ZV_EUC_C}, "euc_zh euc-cn euccn"},
    {{"BIG5", "BIG5", ZV_BIG5}, "big-5 x-big5 csbig5 cp950 ms950"},
    {{"EUC_H", "EUC-TW", ZV_EUC_H}, "euc_tw euc-tw euctw x-euc-tw"},
    {{"EUC_K", "EUC-KR", ZV_EUC_K}, "euc-kr euckr"},
    {{"KSC_5601_87", "UHC", ZV_KSC_5601_87}, "uhc cp949 ms949"},
    {{"KSC_5601_92", "JOHAB", ZV_KSC_5601_92}, "johab cp1361"},
    {{"8859_2", "ISO-8859-2", ZV_8859_2}, "iso-8859-2 iso8859-2 latin2"},
    {{"8859_3", "ISO-8859-3", ZV_8859_3}, "iso-8859-3 iso8859-3 latin3"},
    {{"8859_4", "ISO-8859-4", ZV_8859_4}, "iso-8859-4 iso8859-4 latin4"},
    {{"8859_5", "ISO-8859-5", ZV_8859_5}, "iso-8859-5 iso8859-5 cyrillic"},
    {{"8859_6", "ISO-8859-6", ZV_8859_6}, "iso-8859-6 iso8859-6 arabic"},
    {{"8859_7", "ISO-8859-7", ZV_8859_7}, "iso-8859-7 iso8859-7 greek"},
    {{"8859_8", "ISO-8859-8", ZV_8859_8}, "iso-8859-8 iso8859-8 hebrew"},
    {{"8859_9", "ISO-8859-9", ZV_8859_9}, "iso-8859-9 iso8859-9 latin5"},
    {{"8859_10", "ISO-8859-10", ZV_8859_10}, "iso-8859-10 iso8859-10 latin6"},
    {{"1250", "CP1250", ZV_CP1250}, "cp1250 cp-1250 windows-1250 x-cp1250"},
    {{"1251", "CP1251", ZV_CP1251}, "cp1251 cp-1251 windows-1251 x-cp1251"},
    {{"1253", "CP1253", ZV_CP1253}, "cp1253 cp-1253 windows-1253"},
    {{"1254", "CP1254", ZV_CP1254}, "cp1254 cp-1254 windows-1254"},
    {{"1255", "CP1255", ZV_CP1255}, "cp1255 cp-1255 windows-1255"},
    {{"1256", "CP1256", ZV_CP1256}, "cp1256 cp-1256 windows-1256"},
    {{"1257", "CP1257", ZV_CP1257}, "cp1257 cp-1257 windows-1257"},
    {{"1258", "CP1258", ZV_CP1258}, "cp1258 cp-1258 windows-1258"},
    {{"UTF-8", "UTF-8", NO_CODE_SET}, "utf8 cp65001"},
    {{"UTF-16", "UTF-16", NO_CODE_SET}, "utf16"},
    {{"ASCII", "ASCII", NO_CODE_SET}, "us-ascii"},
};
enum { ENCODINGS = sizeof kEncodings / sizeof *kEncodings, LONGEST_NAME = 64 };

/* Aliases that mean another table to iconv(3): with the vendor's characters, for instance. */
static const char* const kOwnTables[][2] = {
    {"windows-1252", "CP1252"}, {"cp1252", "CP1252"}, {"cp932", "CP932"}, {"windows-31j", "CP932"},
    {"ms932", "CP932"},         {"cp950", "CP950"},   {"ms950", "CP950"}};

static const int kServed[][2] = {
    {ZV_JIS, ZV_EUC},       {ZV_JIS, ZV_SJIS},      {ZV_EUC, ZV_SJIS},      {ZV_EUC, ZV_JIS},
    {ZV_SJIS, ZV_EUC},      {ZV_SJIS, ZV_JIS},      {ZV_BIG5, ZV_EUC_H},    {ZV_EUC_H, ZV_BIG5},
    {ZV_8859_2, ZV_CP1250}, {ZV_CP1250, ZV_8859_2}, {ZV_8859_5, ZV_CP1251}, {ZV_CP1251, ZV_8859_5}};

/* Cuts the next alias off a list. Gives where the rest begins, NULL when there was none. */
static const char* next_alias(const char* list, char alias[LONGEST_NAME]) {
    list += strspn(list, " ");
    const size_t length = strcspn(list, " ");
    snprintf(alias, LONGEST_NAME, "%.*s", (int)length, list);
    return length > 0 ? list + length : NULL;
}

static void use_own_table(const char* alias, struct encoding* encoding) {
    for (size_t i = 0; i < sizeof kOwnTables / sizeof *kOwnTables; ++i) {
        if (strcmp(alias, kOwnTables[i][0]) == 0)
            encoding->name = encoding->iconv = kOwnTables[i][1];
    }
}

static bool find_listed(const char* name, struct encoding* encoding) {
    char alias[LONGEST_NAME];
    for (size_t i = 0; i < ENCODINGS; ++i) {
        *encoding = kEncodings[i].encoding;
        if (strcasecmp(name, encoding->name) == 0)
            return true;
        for (const char* list = kEncodings[i].aliases; (list = next_alias(list, alias)) != NULL;) {
            if (strcasecmp(name, alias) == 0) {
                use_own_table(alias, encoding);
                return true;
            }
        }
    }
    return false;
}

/* A suffix would make iconv(3) lose characters without a word. */
static bool has_suffix(const char* name) {
    const char* slashes = strstr(name, "//");
    return slashes != NULL && slashes[2] != '\0';
}

static bool iconv_knows(const char* name) {
    iconv_t converter = iconv_open("UTF-8", name);
    if (converter == (iconv_t)-1)
        return false;
    iconv_close(converter);
    return true;
}

static char lower(char c) {
    return (char)(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c);
}

size_t name_distance(const char* a, const char* b) {
    size_t row[LONGEST_NAME + 1];
    const size_t length = strlen(b) < LONGEST_NAME ? strlen(b) : LONGEST_NAME;
    for (size_t k = 0; k <= length; ++k)
        row[k] = k;
    for (; *a != '\0'; ++a) {
        size_t diagonal = row[0]++;
        for (size_t k = 1; k <= length; ++k) {
            const size_t exchanged = diagonal + (lower(*a) != lower(b[k - 1]));
            diagonal = row[k];
            const size_t shorter = row[k] < row[k - 1] ? row[k] : row[k - 1];
            row[k] = exchanged < shorter + 1 ? exchanged : shorter + 1;
        }
    }
    return row[length];
}

/* The smallest distance between a name and any name of a listed encoding. */
static size_t distance_to(const char* name, size_t index) {
    size_t nearest = name_distance(name, kEncodings[index].encoding.name);
    char alias[LONGEST_NAME];
    for (const char* list = kEncodings[index].aliases; (list = next_alias(list, alias)) != NULL;) {
        const size_t next = name_distance(name, alias);
        nearest = next < nearest ? next : nearest;
    }
    return nearest;
}

static bool complain_of_name(const char* name) {
    char near[256] = "";
    size_t used = 0;
    size_t nearest = 3; /* what is further off resembles nothing */
    if (has_suffix(name))
        return complain("'%s': no suffix but --skip or --substitute says what becomes of lost "
                        "characters",
                        name);
    for (size_t i = 0; i < ENCODINGS; ++i) {
        const size_t next = distance_to(name, i);
        nearest = next < nearest ? next : nearest;
    }
    for (size_t i = 0; i < ENCODINGS && nearest < strlen(name); ++i) {
        if (distance_to(name, i) == nearest && used < sizeof near - 16)
            used +=
                (size_t)snprintf(near + used, sizeof near - used, "%s%s",
                                 used > 0 ? ", " : "; near to it: ", kEncodings[i].encoding.name);
    }
    return complain("unknown encoding '%s'%s (zvconv --list and iconv -l show them)", name, near);
}

bool know_encoding(const char* name, struct encoding* encoding) {
    if (find_listed(name, encoding))
        return true;
    if (*name == '\0' || has_suffix(name) || !iconv_knows(name)) /* no name: the locale's */
        return false;
    *encoding = (struct encoding){name, name, NO_CODE_SET};
    return true;
}

bool find_encoding(const char* name, struct encoding* encoding) {
    return know_encoding(name, encoding) || complain_of_name(name);
}

struct encoding encoding_of(int code_set) {
    size_t i = 0;
    while (i < ENCODINGS - 1 && kEncodings[i].encoding.code_set != code_set)
        ++i;
    return kEncodings[i].encoding;
}

bool library_serves(int from, int to) {
    for (size_t i = 0; i < sizeof kServed / sizeof *kServed; ++i) {
        if (kServed[i][0] == from && kServed[i][1] == to)
            return true;
    }
    return from == to && from != NO_CODE_SET;
}

unsigned unit_of(const struct encoding* encoding) {
    static const char* const kWide[] = {"UTF-16", "UTF16",   "UCS-2",
                                        "UCS2",   "UNICODE", "ISO-10646/UCS2"};
    static const char* const kWider[] = {"UTF-32", "UTF32",   "UCS-4",
                                         "UCS4",   "WCHAR_T", "ISO-10646"};
    for (size_t i = 0; i < sizeof kWide / sizeof *kWide; ++i) {
        if (strncasecmp(encoding->iconv, kWide[i], strlen(kWide[i])) == 0)
            return 2;
    }
    for (size_t i = 0; i < sizeof kWider / sizeof *kWider; ++i) {
        if (strncasecmp(encoding->iconv, kWider[i], strlen(kWider[i])) == 0)
            return 4;
    }
    return 1;
}

bool is_unicode(const struct encoding* encoding) {
    return strncasecmp(encoding->iconv, "UTF", 3) == 0 || unit_of(encoding) > 1;
}

void list_encodings(void) {
    for (size_t i = 0; i < ENCODINGS; ++i) {
        const struct encoding* from = &kEncodings[i].encoding;
        printf("%s  to ", from->name);
        for (size_t k = 0; k < ENCODINGS; ++k) {
            const struct encoding* to = &kEncodings[k].encoding;
            if (i != k && library_serves(from->code_set, to->code_set))
                printf("%s, ", to->name);
        }
        fputs(strcmp(from->name, "UTF-8") == 0 ? "all; also" : "UTF-8; also", stdout);
        printf(" %s\n", kEncodings[i].aliases);
    }
}
