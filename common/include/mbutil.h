/**
 * @file mbutil.h
 * @brief Text in the current code set: registry, strings, conversion, text I/O, mail.
 *
 * Strings are zero-terminated byte strings in the current code set where nothing else is said;
 * lengths and positions are bytes. Byte values are hexadecimal.
 *
 * Functions that use the current code set call InitMbutil() first when nothing has set it yet; do
 * that once on the main thread, before others start. From then on everything here may run in any
 * number of threads at once, except mbstrtok() and a switch of the code set.
 *
 * Output areas belong to the caller; where no size is passed, they have the room that is stated.
 * They do not overlap a source unless that is said. Pointers are not NULL unless something is said
 * of NULL.
 */
#ifndef ZVUTIL_MBUTIL_H
#define ZVUTIL_MBUTIL_H

#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/**
 * @defgroup zvutil_codesets Code sets
 * @brief Which encoding the host holds its text in, and the names of encodings and locales.
 *
 * The current code set is one for the whole process. A host sets it once, when it starts: from the
 * environment's locale with InitMbutil(), or from its own configuration with InitMbutilExt().
 * @par Thread safety
 * Any number of threads at once; InitMbutil() and InitMbutilExt() only while no other thread uses
 * the library.
 * @par Example
 * @snippet strings.c start
 * @{
 */

/** Code set identifiers; beside each the name that mbGetCodeSet() knows. */
enum {
    ZV_WESTERN = 0,      /**< "WESTERN": Western European single-byte text, the default. */
    ZV_8859_1 = 1,       /**< ISO 8859-1, in document names only. */
    ZV_8859_15 = 2,      /**< ISO 8859-15, in document names only. */
    ZV_JIS = 3,          /**< "JIS": 7-bit JIS (ISO-2022-JP). */
    ZV_EUC = 4,          /**< "EUC", "EUC_J": Japanese EUC. */
    ZV_SJIS = 5,         /**< "SJIS": Shift-JIS. */
    ZV_EUC_OR_SJIS = 6,  /**< Japanese text that fits both, see DetectJPCodeType(). */
    ZV_GB = 7,           /**< "GB": simplified Chinese, GB 2312. */
    ZV_EUC_C = 8,        /**< "EUC_C", "EUC_ZH": simplified Chinese in EUC form. */
    ZV_BIG5 = 9,         /**< "BIG5": traditional Chinese. */
    ZV_EUC_H = 10,       /**< "EUC_H", "EUC_TW": traditional Chinese, EUC-TW. */
    ZV_KSC_5601_87 = 11, /**< "KSC_5601_87": Korean. */
    ZV_KSC_5601_92 = 12, /**< "KSC_5601_92": Korean. */
    ZV_EUC_K = 13,       /**< "EUC_K": Korean EUC. */
    ZV_8859_2 = 14,      /**< "8859_2". */
    ZV_8859_3 = 15,      /**< "8859_3". */
    ZV_8859_4 = 16,      /**< "8859_4". */
    ZV_8859_5 = 17,      /**< "8859_5". */
    ZV_8859_6 = 18,      /**< "8859_6". */
    ZV_8859_7 = 19,      /**< "8859_7". */
    ZV_8859_8 = 20,      /**< "8859_8". */
    ZV_8859_9 = 21,      /**< "8859_9". */
    ZV_8859_10 = 22,     /**< "8859_10". */
    ZV_CP1250 = 23,      /**< "1250". */
    ZV_CP1251 = 24,      /**< "1251". */
    ZV_CP1253 = 25,      /**< "1253". */
    ZV_CP1254 = 26,      /**< "1254". */
    ZV_CP1255 = 27,      /**< "1255". */
    ZV_CP1256 = 28,      /**< "1256". */
    ZV_CP1257 = 29,      /**< "1257". */
    ZV_CP1258 = 30,      /**< "1258". */
    ZV_CP874 = 40,       /**< Thai, in document names only. */
    ZV_ISO_2022_CN = 41, /**< In document names only. */
    ZV_ISO_2022_KR = 42, /**< In document names only. */
    ZV_UTF_16 = 64,      /**< In document names only. */
    ZV_UTF_8 = 65        /**< In document names only. */
};

/** Tells whether the current code set has been set: 1 or 0. */
extern unsigned char MBUTIL_Initialized;
/** Tells whether the current code set is multibyte: 1 or 0; 1 before it has been set. */
extern unsigned char MBUTIL_I_Am_MultiByte;
/** Tells whether the current code set is Japanese (#ZV_JIS, #ZV_EUC, #ZV_SJIS): 1 or 0. */
extern unsigned char MBUTIL_I_Am_Japanese;

/**
 * Adopts the environment's locale for the whole process and makes its code set the current one.
 *
 * The beginning of the locale's name decides, letter case aside: "ja" and "jpn" give #ZV_EUC, "ko"
 * #ZV_EUC_K, "zh_TW" #ZV_EUC_H, other "zh" #ZV_EUC_C, all others #ZV_WESTERN. What follows, such as
 * ".UTF-8", is not looked at: in ja_JP.UTF-8 text is taken for Japanese EUC. A host that holds its
 * text in any other encoding names its code set with InitMbutilExt().
 *
 * Calls setlocale(LC_ALL, ""). A locale that the system cannot load leaves the earlier one, as a
 * rule "C", and that one decides. Where the categories differ, LC_CTYPE does.
 * @return the current code set before the call.
 * @par Thread safety
 * Only while no other thread uses the library or the locale.
 */
int InitMbutil(void);

/**
 * Makes a code set the current one; text that the host holds is not converted.
 * @param code_set any integer; one that is not known counts as single-byte text.
 * @return the current code set before the call.
 * @par Thread safety
 * Only while no other thread uses the library.
 */
int InitMbutilExt(int code_set);

/** Tells whether the current code set is multibyte. @return 1 or 0. */
unsigned char mbIsMultiByte(void);

/** Tells whether the current code set is Japanese. @return 1 or 0. */
unsigned char mbIsJapanese(void);

/**
 * Finds the code set that a name stands for.
 *
 * It knows the names beside the identifiers, in upper case, anywhere in @p name: "SJIS" before
 * "JIS", any other "EUC" is Japanese, any "GB" is #ZV_GB. The names of other systems may mislead:
 * "SHIFT_JIS" gives #ZV_JIS, "EUC-TW" and "EUC-KR" give #ZV_EUC, "Big5", "ISO-8859-2" and
 * "ISO-2022-JP" #ZV_WESTERN.
 * @param name ASCII text; may be NULL.
 * @return the code set; #ZV_WESTERN for everything unknown, which cannot be told from a Western
 *         name.
 */
int mbGetCodeSet(const char* name);

/**
 * Finds the code set of the process locale, which it does not change.
 *
 * The locale is "C" until InitMbutil() or the host adopts another. Its name decides as for
 * InitMbutil(), with these differences: "zh_TW.BIG5" gives #ZV_BIG5, "zh.GBK" #ZV_EUC_C, other
 * "zh" but "zh_TW" #ZV_GB, and some European languages #ZV_8859_2, #ZV_8859_4, #ZV_8859_5,
 * #ZV_8859_7 and #ZV_8859_9; "jpn" is not known.
 * @return the code set; #ZV_WESTERN for everything unknown.
 */
int mbGetLocaleCodeSet(void);

/**
 * Writes the name of the code set of a locale.
 * @param locale a locale name, ASCII.
 * @param name   receives the name for mbGetCodeSet() of the code set that mbGetLocaleCodeSet()
 *               gives in that locale; room for 8 bytes. The locale "UTF-8" alone gives "UTF8",
 *               which mbGetCodeSet() does not know.
 */
void SetCodePage(const char* locale, char* name);

/**
 * Rewrites a locale name so that its code set part names the matching Windows code page.
 *
 * "de_DE.ISO8859-15@euro" becomes "de_DE.cp1252@euro"; code sets other than ISO 8859 stay, as do
 * its parts 3, 6 and 8 and names without "-" or "_" before the part, such as "iso88591"; parts 10
 * to 16 but 13 count as 1. A name without a code set part gets the code page of the process locale,
 * or itself again where that has none: "ja" becomes "ja.cp1252" in the locale "C" and "ja.ja" in a
 * Japanese one.
 * @param locale a locale name, ASCII; of 100 bytes or more it is copied unchanged.
 * @param out    receives the name; room for the length of @p locale twice, plus 8 bytes. May be
 *               @p locale.
 */
void mbGetCorrectedLocaleForUnix(const char* locale, char* out);

/**
 * Tells whether two code sets belong to the same East Asian language.
 * @param a a code set.
 * @param b a code set.
 * @return 1 if both are Japanese, both Korean or both Chinese; else 0, also for equal others.
 */
int sameLanguage(int a, int b);
/** @} */

/**
 * @defgroup zvutil_characters Character length and validity
 * @brief How long is the character at a pointer, in the current or in a given code set?
 *
 * The names that end in Ext or type take the code set as an argument; the others use the current
 * one. The scanners behind them are those of @ref zvutil_scanners.
 * @par Thread safety
 * Any number of threads at once, once the current code set has been set.
 * @par Example
 * @snippet strings.c walk
 * @{
 */

/**
 * Scans one character of a code set, as the scanners of jaconv.h do.
 * @param s        first byte of a character; may be NULL.
 * @param n        number of bytes that may be looked at.
 * @param code_set code set of the text.
 * @return the length of the character; 0 at the end of the text; -1 for malformed bytes; always 1
 *         for a code set without multibyte characters and for #ZV_JIS.
 */
int mblenExt(const char* s, unsigned n, int code_set);

/**
 * Scans one character of the current code set, as mblenExt() does.
 * @param s first byte of a character; may be NULL.
 * @param n number of bytes that may be looked at.
 * @return the length of the character; 0 at the end of the text; -1 for malformed bytes; always 1
 *         in a single-byte code set and in #ZV_JIS.
 */
int mb_mblen(const char* s, unsigned n);

/**
 * Tells whether a byte begins a character of more than one byte.
 * @param byte     0-255; a negative value never does.
 * @param code_set code set of the text.
 * @return 1 or 0.
 */
int isleadbyteExt(int byte, int code_set);

/**
 * Tells whether a byte begins a character of more than one byte of the current code set.
 * @param byte 0-255; a negative value never does.
 * @return 1 or 0.
 */
int mb_isleadbyte(int byte);

/**
 * Tells how many bytes the longest character of a code set has.
 * @param code_set a code set.
 * @return 1 to 4.
 */
int mbmaxcharlenExt(int code_set);

/** Tells how many bytes the longest character of the current code set has. @return 1 to 4. */
int mbmaxcharlen(void);

/**
 * Tells whether a byte is a one-byte character of Shift-JIS.
 * @param byte 0-255.
 * @return 1 for 00-7F and A1-DF; else 0.
 */
int ismbcprintInSJIS(int byte);

/**
 * Tells whether a byte counts as printable in the current code set.
 * @param byte 0-255.
 * @return 1 for 00-7F (control bytes too) and, in Shift-JIS, A1-DF; else 0.
 */
int ismbcprint(int byte);

/**
 * Tells how far a walk through text steps.
 * @param s        first byte of a character; may be NULL.
 * @param code_set code set of the text.
 * @return the length of the character; 1 at the terminator, for malformed bytes and for NULL.
 */
int mbbytesinchartype(const char* s, int code_set);

/**
 * Tells how far a walk through text of the current code set steps.
 * @param s first byte of a character; may be NULL.
 * @return the length of the character; 1 at the terminator, for malformed bytes and for NULL.
 */
int mbbytesinchar(const char* s);
/** @} */

/**
 * @defgroup zvutil_strings Multibyte strings
 * @brief The standard string functions, never splitting a character.
 *
 * In a single-byte code set most of these are the C library's own functions. A pointer that may be
 * NULL in a multibyte code set crashes them there. A malformed byte counts as a character of one
 * byte. Letter case follows the process locale.
 * @par Thread safety
 * Any number of threads at once, once the current code set has been set; of mbstrtok() one caller
 * in the whole process.
 * @par Example
 * @snippet strings.c search
 * @{
 */

/**
 * Finds the last character boundary that is not beyond a position.
 * @param s        text in @p code_set.
 * @param n        a position in bytes.
 * @param code_set code set of @p s.
 * @return the boundary: at most @p n and the length of @p s. @p n itself when the current code set
 *         is single-byte, whatever @p code_set is. Does not initialise the current code set.
 */
unsigned mbidxtype(const char* s, unsigned n, int code_set);

/**
 * Finds the last character boundary of the current code set that is not beyond a position.
 * @param s text.
 * @param n a position in bytes.
 * @return the boundary: at most @p n and the length of @p s. @p n itself when the current code set
 *         is single-byte.
 */
unsigned mbidx(const char* s, unsigned n);

/**
 * Finds the character behind the one at a position.
 * @param s   text.
 * @param idx a position within @p s.
 * @return the position of the next character, or 0 when there is none.
 */
unsigned mbnextidx(const char* s, unsigned idx);

/**
 * Finds the character behind the one at a position, as a pointer.
 * @param s   text.
 * @param idx a position within @p s.
 * @return the next character in @p s, or NULL when there is none.
 */
char* mbnextchar(const char* s, unsigned idx);

/**
 * Copies a string into a bounded area, leaving out a character that would be cut.
 * @param dst receives exactly @p n bytes, zero-filled; terminated only when @p src is shorter or a
 *            character was left out. May be NULL in a multibyte code set: nothing is copied then.
 * @param src text; may be NULL in a multibyte code set: nothing is copied then.
 * @param n   bytes to write.
 * @return @p dst.
 */
char* mbstrncpy(char* dst, const char* src, unsigned n);

/**
 * Copies a string into a bounded area as mbstrncpy() does, and counts.
 * @param dst receives exactly @p n bytes, as from mbstrncpy(); may be NULL.
 * @param src text; may be NULL.
 * @param n   bytes to write.
 * @return the bytes of @p src copied; 0 when a pointer is NULL.
 */
unsigned mbstrncpyi(char* dst, const char* src, unsigned n);

/**
 * Compares two strings without regard to the case of one-byte characters.
 *
 * A longer character orders after a shorter one; bytes compare as signed values.
 * @param a text; may be NULL in a multibyte code set.
 * @param b text; may be NULL in a multibyte code set.
 * @return -1, 0 or 1 (0 when a pointer is NULL); strcasecmp()'s result in a single-byte code set.
 */
int mbstricmp(const char* a, const char* b);

/**
 * Compares the first bytes of two strings without regard to the case of one-byte characters.
 *
 * Bytes compare as unsigned values.
 * @param a text; may be NULL in a multibyte code set.
 * @param b text; may be NULL in a multibyte code set.
 * @param n bytes to compare; a multibyte character that begins before @p n is compared whole.
 * @return negative, 0 or positive; 0 when a pointer is NULL.
 */
int mbstrnicmp(const char* a, const char* b, unsigned n);

/**
 * Compares the first characters of two strings, case kept.
 *
 * Bytes compare as unsigned values. In a single-byte code set only the first bytes are compared, as
 * signed values.
 * @param a text; may be NULL in a multibyte code set.
 * @param b text; may be NULL in a multibyte code set.
 * @param n bytes to cover; not looked at in a single-byte code set.
 * @return negative, 0 or positive; in a multibyte code set 0 when @p a or @p n ends, whatever @p b
 *         still holds, and when a pointer is NULL.
 */
int mbcharcmp(const char* a, const char* b, unsigned n);

/**
 * Turns a one-byte character to upper case, in place.
 * @param p the character; a longer one stays as it is.
 * @return the length of the character.
 */
int mbtoupper(char* p);

/**
 * Turns a one-byte character to lower case, in place.
 * @param p the character; a longer one stays as it is.
 * @return the length of the character.
 */
int mbtolower(char* p);

/**
 * Turns all one-byte characters to upper case, in place.
 * @param s text; may be NULL.
 * @return the length of @p s, modulo 4294967296; 0 for NULL.
 */
unsigned mbstrtoupper(char* s);

/**
 * Turns all one-byte characters to lower case, in place.
 * @param s text; may be NULL.
 * @return the length of @p s, modulo 4294967296; 0 for NULL.
 */
unsigned mbstrtolower(char* s);

/**
 * Finds the first character that begins with a byte.
 *
 * The byte is passed as a signed value, a byte from 80 as a negative one. Cast it to `signed char`,
 * since plain char is unsigned on some processors.
 * @param s text; may be NULL in a multibyte code set.
 * @param c -128 to 127. In a multibyte code set any other value, and 0, finds nothing; in a
 *          single-byte one its low 8 bits count and 0 finds the terminator, as with strchr().
 * @return the character in @p s, or NULL.
 */
char* mbstrchr(const char* s, int c);

/**
 * Finds the first character that begins with a byte; the same as mbstrchr().
 * @param s text; may be NULL in a multibyte code set.
 * @param c as for mbstrchr().
 * @return the character in @p s, or NULL.
 */
char* mbstrchrEncr(const char* s, int c);

/**
 * Finds the last character that begins with a byte.
 * @param s text; may be NULL in a multibyte code set.
 * @param c as for mbstrchr().
 * @return the character in @p s, or NULL.
 */
char* mbstrrchr(const char* s, int c);

/**
 * Finds the first occurrence of a string that consists of whole characters.
 * @param hay    the text searched; may be NULL in a multibyte code set.
 * @param needle the text looked for; may be NULL in a multibyte code set.
 * @return the occurrence in @p hay; @p hay when @p needle is empty or NULL; NULL when there is none
 *         or @p hay is NULL.
 */
char* mbstrstr(const char* hay, const char* needle);

/**
 * Finds the last occurrence of a string that consists of whole characters.
 * @param hay    the text searched; may be NULL.
 * @param needle the text looked for; may be NULL.
 * @return the occurrence in @p hay; @p hay when @p needle is NULL; NULL when there is none, when
 *         @p needle is empty or @p hay is NULL.
 */
char* mbstrrstr(const char* hay, const char* needle);

/**
 * Finds the first character of a string that belongs to a set.
 * @param s   text; may be NULL in a multibyte code set.
 * @param set the characters looked for, as a string; may be NULL in a multibyte code set. A
 *            malformed byte in it stands for all characters that begin with that byte.
 * @return the character in @p s, or NULL.
 */
char* mbstrpbrk(const char* s, const char* set);

/**
 * Counts the bytes before the first character that belongs to a set.
 * @param s   text.
 * @param set as for mbstrpbrk().
 * @return bytes, modulo 4294967296; all of @p s when no character belongs to the set.
 */
unsigned mbstrcspn(const char* s, const char* set);

/**
 * Cuts a string into tokens.
 *
 * Unlike strtok(), a multibyte code set skips one leading delimiter only, and only on the first
 * call; two delimiters in a row give an empty token, and so does one at the end.
 * @param s          the string, which is changed (the first byte of each delimiter becomes zero);
 *                   NULL to go on, before a first string only in a multibyte code set.
 * @param delimiters the characters that separate tokens, as a string; may be NULL in a multibyte
 *                   code set: the rest of the string is the token then.
 * @return the next token, inside the string; NULL when there is none and for an empty string.
 * @par Thread safety
 * One tokenisation at a time in the whole process; mbstrtok_r() has no such limit.
 */
char* mbstrtok(char* s, const char* delimiters);

/**
 * Cuts a string into tokens as mbstrtok() does, its position kept by the caller.
 * @param s          the string, which is changed; NULL to go on.
 * @param delimiters as for mbstrtok().
 * @param save       set by the call with @p s, used by the calls with NULL. Where it is NULL before
 *                   a call with NULL, that gives NULL in a multibyte code set only.
 * @return the next token, inside the string; NULL when there is none and for an empty string.
 * @par Thread safety
 * Any number of threads at once, each with a @p save of its own.
 */
char* mbstrtok_r(char* s, const char* delimiters, char** save);

/**
 * Checks that a string is well formed in a code set.
 * @param s        text in @p code_set; may be NULL.
 * @param badpos   receives the position of the first malformed character, modulo 4294967296;
 *                 untouched otherwise.
 * @param code_set code set of @p s.
 * @return 1 if it is, or whatever the pointers are if the current code set is single-byte; 0 if not
 *         or a pointer is NULL.
 */
int mbvalidatestring(const char* s, unsigned* badpos, int code_set);

/** Checks of mbvalidatestringtype(); one-byte characters must pass them. */
enum {
    /** White space or printable, in a multibyte code set as ismbcprint() has it. */
    ZV_CHECK_PRINTABLE = 104,
    ZV_CHECK_NO_LOWER = 105, /**< No lower-case letter. */
    ZV_CHECK_NO_UPPER = 106  /**< No upper-case letter. */
};

/**
 * Checks that a string is well formed in the current code set and passes a check.
 * @param s      text; may be NULL.
 * @param badpos receives the position of the first bad character, modulo 4294967296, in a multibyte
 *               code set only.
 * @param check  #ZV_CHECK_PRINTABLE, #ZV_CHECK_NO_LOWER, #ZV_CHECK_NO_UPPER; any other value asks
 *               for nothing more.
 * @return 1 or 0; 0 when a pointer is NULL.
 */
int mbvalidatestringtype(const char* s, unsigned* badpos, int check);
/** @} */

/**
 * @defgroup zvutil_conversion Conversion and text streams
 * @brief One call for every pair of code sets, and lines and files read and written through it.
 *
 * The streams are stdio streams. Line ends are neither added, removed nor translated; a zero byte
 * hides the rest of its line. The converters behind these functions are those of
 * @ref zvutil_japanese, @ref zvutil_big5 and @ref zvutil_codepages, whose pages say what becomes of
 * bytes that they cannot convert.
 * @par Thread safety
 * Any number of threads at once, once the current code set has been set; a stream by one thread at
 * a time.
 * @par Example
 * @snippet conversion.c convert
 * @{
 */

/**
 * Converts a string from one code set into another.
 * @param src  text in the code set @p from.
 * @param from code set of @p src.
 * @param dst  receives the text in the code set @p to, not overlapping @p src. Room: into #ZV_JIS
 *             five times the length of @p src plus 4 bytes from #ZV_SJIS and three times plus 4
 *             from #ZV_EUC; twice plus 1 from #ZV_SJIS to #ZV_EUC and from #ZV_BIG5 to #ZV_EUC_H;
 *             the length plus 1 otherwise.
 * @param to   code set of the result.
 * @return @p dst. A pair that no converter serves is copied.
 */
char* convertStrExt(const char* src, int from, char* dst, int to);

/**
 * Tells whether mbconvertfile2native_ex() converts a pair of code sets.
 * @param from code set of the file.
 * @param to   code set of the result.
 * @return 1 for #ZV_SJIS and #ZV_EUC, #ZV_BIG5 and #ZV_EUC_H, both ways, and for #ZV_JIS to
 *         #ZV_SJIS or #ZV_EUC; else 0.
 */
int IsConversionSupport(int from, int to);

/**
 * Converts a string from the current code set into another; copies in a single-byte code set.
 * @param dst receives the text; room as for convertStrExt(). May be NULL.
 * @param src text; may be NULL.
 * @param to  code set of the result.
 * @return 1, also where no converter serves the pair; 0 when a pointer is NULL.
 */
int mbconvertnativestring(char* dst, const char* src, int to);

/**
 * Converts Japanese text from its UNIX form to its Windows form.
 *
 * Converts Japanese EUC to Shift-JIS when the current code set is one of the two, and copies
 * otherwise. Does not initialise the current code set.
 * @param src text; may be NULL.
 * @param dst receives the text; room for the length of @p src plus 1 bytes. May be NULL.
 * @return @p dst; NULL when a pointer is NULL.
 */
char* UnixCodingToWindowsCodingExt(const char* src, char* dst);

/**
 * Converts Japanese text from its Windows form to its UNIX form.
 *
 * Converts Shift-JIS to Japanese EUC when the current code set is one of the two, and copies
 * otherwise. Does not initialise the current code set.
 * @param src text; may be NULL.
 * @param dst receives the text; room for twice the length of @p src plus 1 bytes. May be NULL.
 * @return @p dst; NULL when a pointer is NULL.
 */
char* WindowsCodingToUnixCodingExt(const char* src, char* dst);

/**
 * Tells the length of the longer of the two forms, UNIX and Windows, of a string.
 *
 * The forms are Shift-JIS and Japanese EUC, or Big5 and EUC-TW; text of any other current code set
 * has one form. Does not initialise the current code set; cannot fail.
 * @param s text.
 * @return bytes, without the terminator; 2147483647 also for all that is longer.
 */
int MaxStringLengthOnWinAndUnix(const char* s);

/** A full-width digit or mark of two bytes and the ASCII character that replaces it. */
struct MbToSbNumber {
    unsigned char mb[3]; /**< The two bytes, zero-terminated; empty in the row that ends a table. */
    char sb;             /**< The ASCII character. */
};

/** Lists the full-width digits and marks of Shift-JIS. */
extern const struct MbToSbNumber Mb2SbNumberTableInSJIS[];
/** Lists the full-width digits and marks of Japanese EUC. */
extern const struct MbToSbNumber Mb2SbNumberTableInEUC[];
/** Lists the full-width digits and marks of GB 2312. */
extern const struct MbToSbNumber Mb2SbNumberTableInGB[];
/** Lists the full-width digits and marks of KS C 5601-1992. */
extern const struct MbToSbNumber Mb2SbNumberTableInKSC92[];
/** Lists the full-width digits and marks of Big5. */
extern const struct MbToSbNumber Mb2SbNumberTableInBIG5[];
/** Lists the full-width digits and marks of EUC-TW. */
extern const struct MbToSbNumber Mb2SbNumberTableInEUC_H[];

/**
 * Replaces full-width digits and a few marks by their ASCII counterparts.
 *
 * Text of a code set that has none of the tables above is copied.
 * @param src text in the current code set.
 * @param dst receives the text; room for the length of @p src plus 1 bytes.
 * @return 0.
 */
int ConvertMBNumberToSBNumber(const char* src, char* dst);

/**
 * Adds up the bytes of a string.
 * @param s text; may be NULL.
 * @return the low 32 bits of the sum of the unsigned bytes, which may be negative beyond 8 MiB; 0
 *         for NULL and the empty string; -1 when there is no memory.
 */
int AccumulateAsciiForStr(const char* s);

/**
 * Reads a line, as fgets() does, and converts it into the current code set.
 *
 * A longer line is read in pieces of size - 1 bytes, wherever these end, and each piece is
 * converted by itself: a character that is cut so comes out wrong, and a piece of #ZV_JIS begins in
 * single-byte mode. So choose a size above that of the longest line. Nothing is converted when the
 * current code set is single-byte; getLine() converts then too.
 * @param buf      receives the line, terminated; what does not fit after the conversion is dropped,
 *                 in whole characters. May be NULL.
 * @param size     room of @p buf in bytes, at least 2: 1 reads nothing and never meets the end.
 * @param stream   the file.
 * @param code_set code set of the file; 0 for no conversion.
 * @return @p buf; NULL at the end of the file, on a read error and when @p buf is NULL; NULL also
 *         without memory, with the line as it was read in @p buf.
 */
char* mbfgets(char* buf, int size, FILE* stream, int code_set);

/**
 * Converts a string from the current code set and writes it, as fputs() does.
 *
 * Nothing is converted when the current code set is single-byte.
 * @param s        text; may be NULL: nothing is written then.
 * @param stream   the file.
 * @param code_set code set of the file; 0 for no conversion.
 * @return the result of fputs(), negative with errno on a write error; 0 for a NULL @p s; -1 when
 *         there is no memory.
 */
int mbfputs(const char* s, FILE* stream, int code_set);

/**
 * Reads a block of text that does not end inside a character of the current code set.
 *
 * The bytes of a cut character are given back to the stream, for the next call, by positioning or
 * by push-back; where the stream takes neither, the block ends inside the character.
 * @param buf    receives the text and, in a multibyte code set, a terminator; room for size + 1
 *               bytes.
 * @param size   bytes to read, at least 1; at least 4 so that every character fits. 2147483647 are
 *               read at most.
 * @param stream the file.
 * @return bytes kept in @p buf; 0 at the end of the file, on an error before any byte, and every
 *         time that the next character does not fit in @p size.
 */
int mbfreadstring(char* buf, unsigned size, FILE* stream);

/**
 * Converts a file into the current code set.
 *
 * The result is that of one conversion of the whole text, however long it is. A zero byte ends the
 * text of the block of 21000 bytes that it stands in.
 * @param source      path of the file to read.
 * @param destination path of the file to write; never the source itself, also by a link.
 * @param append      nonzero to write behind what @p destination holds, 0 to replace it.
 * @param code_set    code set of the source.
 * @return 1; 0 with nothing touched when IsConversionSupport() refuses the pair, when both paths
 *         lead to one file, or when the source cannot be opened (errno tells); 0 when the
 *         destination cannot be opened (errno tells) or there is no memory (it may be empty then).
 *         Read errors, that of a directory too, and write errors are not told.
 */
int mbconvertfile2native_ex(const char* source, const char* destination, char append, int code_set);
/** @} */

/**
 * @defgroup zvutil_mime MIME charset names
 * @brief The charset names of mail headers and documents, and which code set mail is written in.
 *
 * @par Thread safety
 * Any number of threads at once, once the current code set has been set.
 * @par Example
 * @snippet mail.c names
 * @{
 */

/**
 * Finds the code set of a charset name of a mail header, without regard to case.
 *
 * It knows the names that mbGetMIMECharset() gives, and "iso-2022-cn-gb", "iso-2022-cn-ext" and
 * "iso-2022-cn-bg5". Many names of mail from elsewhere are not among them ("shift_jis", "euc-jp",
 * "big5", "gb2312", "euc-kr", "windows-1251", "utf-8"): who reads such mail needs a table of its
 * own in front of this one.
 * @param name ASCII text; may be NULL.
 * @return the code set; #ZV_WESTERN for everything unknown, which cannot be told from a Western
 *         name.
 */
int mbGetMIMECodeSet(const char* name);

/**
 * Names the charset of a code set for mail headers.
 *
 * Not every reader knows these names, or takes the bytes that go with them for what they are:
 * "iso-2022-cn" for #ZV_GB and #ZV_BIG5, "iso-2022-kr" for #ZV_KSC_5601_87 and #ZV_KSC_5601_92,
 * "cp-1253" and the like for code pages. SetCharset() gives the names of documents.
 * @param code_set a code set, as a rule one of mbGetCodeSetForMail().
 * @return a constant of the library, never NULL; "iso-8859-1" for all that have no name,
 *         #ZV_EUC_C, #ZV_EUC_H and #ZV_EUC_K among them.
 */
const char* mbGetMIMECharset(int code_set);

/**
 * Chooses the code set in which mail is written.
 * @param code_set code set of the text.
 * @return #ZV_JIS for Japanese text, the ISO 8859 code set for #ZV_CP1250 and #ZV_CP1251,
 *         @p code_set itself for #ZV_GB and all that follow up to #ZV_CP1258, else #ZV_WESTERN.
 */
int mbGetCodeSetForMail(int code_set);

/**
 * Chooses between two code sets for stored data.
 * @param first  a code set.
 * @param second a code set.
 * @return @p second when both form one of the pairs #ZV_EUC/#ZV_SJIS, #ZV_EUC_H/#ZV_GB,
 *         #ZV_EUC_C/#ZV_BIG5, #ZV_EUC_K/#ZV_KSC_5601_92, #ZV_CP1251/#ZV_8859_5; else @p first.
 */
int mbGetCodeSetForData(int first, int second);

/**
 * Names the content transfer encoding of a code set for mail headers.
 * @param code_set a code set.
 * @return a constant of the library: "7bit" for #ZV_JIS, "8bit" for all others.
 */
const char* getTransferEncodingFromCodeSet(int code_set);

/** A row of the document charset table; both names are zero-padded. */
struct ConvToCharset {
    char converter[10]; /**< Name of a converter; empty in the row that ends the table. */
    char charset[22];   /**< Charset name for documents. */
    int code_set;       /**< The code set. */
};

/** Lists the charset names for documents; the first row of a code set decides. */
extern const struct ConvToCharset _ConvToCharsetTable[];

/**
 * Names the charset of a code set for documents.
 * @param charset  receives the name, or an empty string when there is none; room for 22 bytes.
 * @param code_set a code set.
 */
void SetCharset(char* charset, int code_set);
/** @} */

/**
 * @defgroup zvutil_mail Quoted-printable and subjects
 * @brief Mail bodies and subject lines.
 *
 * In every function here the output area comes first. Soft line breaks are those of
 * quoted-printable: a "=" at the end of a line joins the next to it.
 * @par Thread safety
 * Any number of threads at once, once the current code set has been set; a stream by one thread at
 * a time.
 * @par Example
 * @snippet mail.c subject
 * @{
 */

/**
 * Encodes text as quoted-printable.
 *
 * Line ends are encoded too; the result has soft line breaks alone, one behind every 50 or more
 * characters. They are written as "=", LF, CR, in this order, which decoders do not read as one:
 * convertFromQuotedPrintable() stops there, others keep the CR. Before the text is sent, make each
 * LF, CR in it CR, LF; before getLine() is to read it, LF alone.
 * @param dst receives ASCII text. Room: with E = three times the length of @p src, E plus 3 bytes
 *            for every 50 of E, plus 1.
 * @param src text.
 * @return @p dst.
 */
char* convertToQuotedPrintable(char* dst, const char* src);

/**
 * Decodes one line of quoted-printable text.
 *
 * The line ends at its terminator, CR or LF, which is not copied; a text of several lines is
 * decoded line by line. "=" and CR or LF are dropped and the line goes on behind them, so that "=",
 * CR, LF ends it; "=" before the terminator is dropped, too. Bytes that have no place in such text
 * are dropped; "=" and a byte that is no hexadecimal digit stay, of "=" and a single digit the
 * digit and what follows it, a line end too: then the line goes on behind it. "=00" becomes a zero
 * byte, where a reader of strings sees the end.
 * @param dst receives the decoded bytes; room for the length of @p src plus 1 bytes. May be @p src.
 * @param src the line.
 * @return @p dst.
 */
char* convertFromQuotedPrintable(char* dst, const char* src);

/**
 * Writes 7-bit JIS text as base64 encoded words.
 *
 * What stands before the first ESC stays as it is. Words end before every ESC and where a line
 * reaches column 72; the next word stands behind LF, space, TAB. A long run of two-byte text may
 * end so between the two bytes of a character, which few readers put together: pass it in pieces,
 * as convertSubjectForMail() does.
 * @param dst     receives ASCII text. Each byte of @p src becomes at most four digits and a new
 *                word; a safe room is (length of @p src + 1) * (length of @p charset + 18).
 * @param src     7-bit JIS text.
 * @param charset charset name for the words, ASCII.
 * @return the terminator of @p dst when a word was written; @p dst when @p src holds no ESC.
 */
char* convertSubjectToBase64(char* dst, const char* src, const char* charset);

/**
 * Writes a subject as encoded words for a mail header.
 *
 * The words are base64 for #ZV_JIS, quoted-printable for all other mail code sets. Lines are joined
 * by LF, space, TAB.
 *
 * A Japanese subject is cut into pieces of at most 20 bytes, each on lines of its own; what is
 * ASCII at the front of a piece stays as it is, and half-width katakana become full-width. So
 * remove line ends first, since one that stays would end the header and begin another; ASCII that
 * looks like an encoded word is decoded by readers. The one piece long enough for its word to end
 * inside a character is 20 half-width katakana of Shift-JIS. In quoted-printable words "?" and "_"
 * stand as they are, and a reader may misread them.
 * @param dst           receives ASCII text. A safe room is 64 times the length of @p subject plus
 *                      64 bytes.
 * @param subject       text in the code set @p code_set, without line ends.
 * @param mail_code_set as mbGetCodeSetForMail() gives it.
 * @param code_set      the current code set, but not #ZV_JIS, whose text would be cut anywhere:
 *                      convert that to #ZV_EUC first.
 * @return @p dst; an empty string for an empty subject and without memory.
 */
char* convertSubjectForMail(char* dst, const char* subject, int mail_code_set, int code_set);

/** Transfer kinds of getLine(); any other value reads plain lines. */
enum {
    ZV_TRANSFER_QUOTED_PRINTABLE = 3, /**< Soft line breaks and escapes are undone. */
    ZV_TRANSFER_NOTHING = 4           /**< Nothing is read, the output area stays as it is. */
};

/**
 * Reads a logical line of mail, undoes its transfer encoding and converts it.
 *
 * Longer lines are read in pieces of size - 1 bytes, wherever these end, as by mbfgets(); a
 * quoted-printable piece whose last byte but one is "=" is continued by the next. Lines end in LF:
 * a soft line break before CR, LF is dropped, but the next line is one of its own. The line end is
 * converted too: into #ZV_CP1250 and #ZV_CP1251 it becomes another character, see
 * @ref zvutil_codepages.
 * @param dst    receives the line, terminated; what does not fit is dropped, in whole characters of
 *               the current code set. May be NULL.
 * @param size   room of @p dst in bytes, at least 2: 1 reads nothing and never meets the end.
 * @param stream the mail.
 * @param from   code set of the stream's text.
 * @param kind   transfer kind. A quoted-printable line always ends in LF, also at the end of file.
 * @param wanted code set of the result.
 * @return @p dst; NULL at the end of the file (also where a continued line misses its
 *         continuation), on a read error, without memory, when @p size is below 1, or when @p dst
 *         is NULL.
 */
char* getLine(char* dst, int size, FILE* stream, int from, int kind, int wanted);
/** @} */

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
