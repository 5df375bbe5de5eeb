#include "code_sets.h"

#include <stdio.h>
#include <strings.h>

#include "mbutil.h"

enum { LISTED = 28 };
/* Behind the listed names, other names of the same. */
static const char* const kNames[] = {
    "WESTERN", "JIS",         "EUC",         "SJIS",    "GB",     "EUC_C",  "BIG5",   "EUC_H",
    "EUC_K",   "KSC_5601_87", "KSC_5601_92", "8859_2",  "8859_3", "8859_4", "8859_5", "8859_6",
    "8859_7",  "8859_8",      "8859_9",      "8859_10", "1250",   "1251",   "1253",   "1254",
    "1255",    "1256",        "1257",        "1258",    "EUC_J",  "EUC_TW", "EUC_ZH"};

static const int kServed[][2] = {
    {ZV_JIS, ZV_EUC},       {ZV_JIS, ZV_SJIS},      {ZV_EUC, ZV_SJIS},      {ZV_EUC, ZV_JIS},
    {ZV_SJIS, ZV_EUC},      {ZV_SJIS, ZV_JIS},      {ZV_BIG5, ZV_EUC_H},    {ZV_EUC_H, ZV_BIG5},
    {ZV_8859_2, ZV_CP1250}, {ZV_CP1250, ZV_8859_2}, {ZV_8859_5, ZV_CP1251}, {ZV_CP1251, ZV_8859_5}};

bool find_code_set(const char* name, int* code_set) {
    for (size_t i = 0; i < sizeof kNames / sizeof *kNames; ++i) {
        if (strcasecmp(name, kNames[i]) == 0) {
            *code_set = mbGetCodeSet(kNames[i]);
            return true;
        }
    }
    for (const struct ConvToCharset* row = _ConvToCharsetTable; row->converter[0] != '\0'; ++row) {
        if (strcasecmp(name, row->charset) == 0 && name_of_code_set(row->code_set) != NULL) {
            *code_set = row->code_set;
            return true;
        }
    }
    return false;
}

const char* name_of_code_set(int code_set) {
    for (size_t i = 0; i < LISTED; ++i) {
        if (mbGetCodeSet(kNames[i]) == code_set)
            return kNames[i];
    }
    return NULL;
}

bool is_served(int from, int to) {
    for (size_t i = 0; i < sizeof kServed / sizeof *kServed; ++i) {
        if (kServed[i][0] == from && kServed[i][1] == to)
            return true;
    }
    return from == to;
}

void list_code_sets(void) {
    for (size_t i = 0; i < LISTED; ++i) {
        fputs(kNames[i], stdout);
        const char* separator = "  to ";
        for (size_t k = 0; k < LISTED; ++k) {
            if (i != k && is_served(mbGetCodeSet(kNames[i]), mbGetCodeSet(kNames[k]))) {
                printf("%s%s", separator, kNames[k]);
                separator = ", ";
            }
        }
        putchar('\n');
    }
}
