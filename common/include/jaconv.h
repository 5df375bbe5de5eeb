/**
 * @file jaconv.h
 * @brief Scanners and converters: bytes in, bytes out, no current code set.
 *
 * Strings are zero-terminated byte strings in the code set that each function names. No function
 * here reads or changes process-wide state, or reads a source behind its terminator, whatever the
 * bytes are. Output areas belong to the caller and have the room that is stated. Pointers are not
 * NULL unless something is said of NULL. Byte values are hexadecimal.
 */
#ifndef ZVUTIL_JACONV_H
#define ZVUTIL_JACONV_H

#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/**
 * @defgroup zvutil_scanners Character scanners
 * @brief How long is the character at a pointer, and is it well formed? One scanner a code set.
 *
 * Each scanner looks at the n bytes at s (fewer if the character is shorter) and never behind a
 * zero byte. When n is smaller than the length that the first byte announces, only those n bytes
 * are examined and the full length is returned: a result above n means a valid beginning of a
 * longer character. Characters of one byte are 01-7F where nothing else is said.
 * @par Thread safety
 * Any number of threads at once.
 * @{
 */

/**
 * Scans one character of Japanese EUC.
 *
 * A character has 1 byte, 2 bytes (two of A1-FE; 8E and A1-DF) or 3 (8F and two of A1-FE).
 * @param s first byte of a character; may be NULL.
 * @param n number of bytes that may be looked at.
 * @return the length of the character, also when it is above @p n; 0 when @p s is NULL, @p n is 0
 *         or the first byte is zero; -1 when the bytes do not form a character.
 */
int mblenInEUC(const unsigned char* s, unsigned n);

/**
 * Scans one character of simplified Chinese in EUC form.
 *
 * A character has 1 byte or two of A1-FE.
 * @param s first byte of a character; may be NULL.
 * @param n number of bytes that may be looked at.
 * @return the length of the character, also when it is above @p n; 0 when @p s is NULL, @p n is 0
 *         or the first byte is zero; -1 when the bytes do not form a character.
 */
int mblenInEUC_C(const unsigned char* s, unsigned n);

/**
 * Scans one character of EUC-TW.
 *
 * A character has 1 byte, 2 bytes (A1-FE, then A1-FE or, as in Big5, 40-7E) or 4 (8E, plane byte
 * A2-B0, two of A1-FE).
 * @param s first byte of a character; may be NULL.
 * @param n number of bytes that may be looked at.
 * @return the length of the character, also when it is above @p n; 0 when @p s is NULL, @p n is 0
 *         or the first byte is zero; -1 when the bytes do not form a character.
 */
int mblenInEUC_H(const unsigned char* s, unsigned n);

/**
 * Scans one character of Korean EUC.
 *
 * A character has 1 byte or two of A1-FE.
 * @param s first byte of a character; may be NULL.
 * @param n number of bytes that may be looked at.
 * @return the length of the character, also when it is above @p n; 0 when @p s is NULL, @p n is 0
 *         or the first byte is zero; -1 when the bytes do not form a character.
 */
int mblenInEUC_K(const unsigned char* s, unsigned n);

/**
 * Scans one character of Shift-JIS.
 *
 * A character has 1 byte (01-7F; A1-DF, half-width katakana) or 2: 81-9F or E0-EF, then 40-FC.
 * @param s first byte of a character; may be NULL.
 * @param n number of bytes that may be looked at.
 * @return the length of the character, also when it is above @p n; 0 when @p s is NULL, @p n is 0
 *         or the first byte is zero; -1 when the bytes do not form a character.
 */
int mblenInSJIS(const unsigned char* s, unsigned n);

/**
 * Scans one character of GB 2312.
 *
 * A character has 1 byte or two of A1-FE.
 * @param s first byte of a character; may be NULL.
 * @param n number of bytes that may be looked at.
 * @return the length of the character, also when it is above @p n; 0 when @p s is NULL, @p n is 0
 *         or the first byte is zero; -1 when the bytes do not form a character.
 */
int mblenInGB(const unsigned char* s, unsigned n);

/**
 * Scans one character of Big5.
 *
 * A character has 1 byte, or a lead byte A1-FE with a trail byte 40-7E or A1-FE.
 * @param s first byte of a character; may be NULL.
 * @param n number of bytes that may be looked at.
 * @return the length of the character, also when it is above @p n; 0 when @p s is NULL, @p n is 0
 *         or the first byte is zero; -1 when the bytes do not form a character.
 */
int mblenInBIG5(const unsigned char* s, unsigned n);

/**
 * Scans one character of the KS C 5601-1992 form.
 *
 * A character has 1 byte or 2: 84-D3, D8-DE or E0-F9, then 41-7E or 81-FE.
 * @param s first byte of a character; may be NULL.
 * @param n number of bytes that may be looked at.
 * @return the length of the character, also when it is above @p n; 0 when @p s is NULL, @p n is 0
 *         or the first byte is zero; -1 when the bytes do not form a character.
 */
int mblenInKSC92(const unsigned char* s, unsigned n);

/**
 * Scans one character of the KS C 5601-1987 form.
 *
 * A character has 1 byte or 2: 81-FE, then 41-5A, 61-7A or 81-FE.
 * @param s first byte of a character; may be NULL.
 * @param n number of bytes that may be looked at.
 * @return the length of the character, also when it is above @p n; 0 when @p s is NULL, @p n is 0
 *         or the first byte is zero; -1 when the bytes do not form a character.
 */
int mblenInKSC87(const unsigned char* s, unsigned n);
/** @} */

/**
 * @defgroup zvutil_japanese Japanese converters
 * @brief Shift-JIS, Japanese EUC and 7-bit JIS (ISO-2022-JP).
 *
 * Bytes that form no character pass through unchanged; nothing is reported. A lead byte directly
 * before the terminator is written unchanged. Source and destination must not overlap.
 * @par Thread safety
 * Any number of threads at once.
 * @par Example
 * @snippet conversion.c japanese
 * @{
 */

/**
 * Turns a Shift-JIS code into the JIS X 0208 code of the same character, in place.
 * @param first  in: lead byte, 0-255; out: first byte of the JIS code.
 * @param second in: trail byte, 0-255; out: second byte of the JIS code.
 */
void sjis2jis(int* first, int* second);

/**
 * Turns a JIS X 0208 code into the Shift-JIS code of the same character, in place.
 * @param first  in: first byte of the JIS code, 0-255; out: lead byte.
 * @param second in: second byte of the JIS code, 0-255; out: trail byte.
 */
void jis2sjis(int* first, int* second);

/**
 * Converts Shift-JIS to Japanese EUC.
 *
 * Half-width katakana stay half-width (8E and the byte).
 * @param src Shift-JIS text.
 * @param dst receives the EUC text; room for twice the length of @p src plus 1 bytes.
 * @return @p dst.
 */
char* shift2eucx(const char* src, char* dst);

/**
 * Converts Japanese EUC to Shift-JIS.
 *
 * Shift-JIS has no three-byte characters: 8F passes through and the two bytes behind it are
 * converted as a pair.
 * @param src EUC text.
 * @param dst receives the Shift-JIS text; room for the length of @p src plus 1 bytes.
 * @return @p dst.
 */
char* euc2shiftx(const char* src, char* dst);

/**
 * Converts Shift-JIS to 7-bit JIS.
 *
 * Two-byte text stands between ESC $ B and ESC ( J and is closed before every line end and at the
 * end; half-width katakana become full-width, each by itself. ESC ( J names JIS X 0201: readers may
 * show every backslash and tilde behind it as yen sign and overline.
 * @param src Shift-JIS text.
 * @param dst receives the JIS text; room for five times the length of @p src plus 4 bytes.
 * @return @p dst.
 */
char* shift2jisx(const char* src, char* dst);

/**
 * Converts Japanese EUC to 7-bit JIS, in the form that shift2jisx() writes.
 *
 * That has no three-byte characters: 8F passes through, so the text is not 7-bit then, and the two
 * bytes behind it are converted as a pair.
 * @param src EUC text.
 * @param dst receives the JIS text; room for three times the length of @p src plus 4 bytes.
 * @return @p dst.
 */
char* euc2jisx(const char* src, char* dst);

/**
 * Converts 7-bit JIS to Shift-JIS.
 *
 * Two-byte mode begins behind ESC $ x or ESC K and ends with any other escape sequence or a line
 * end; all other bytes in it are taken for codes, two by two. Those from 80 have no place there:
 * the sums wrap, and a zero byte may come out, where a reader of strings sees the end. An escape
 * sequence cut by the terminator ends the text.
 * @param src JIS text.
 * @param dst receives the Shift-JIS text; room for the length of @p src plus 1 bytes.
 * @return @p dst.
 */
char* jis2shiftx(const char* src, char* dst);

/**
 * Converts 7-bit JIS to Japanese EUC; escape sequences and bytes from 80 as in jis2shiftx().
 * @param src JIS text.
 * @param dst receives the EUC text; room for the length of @p src plus 1 bytes.
 * @return @p dst.
 */
char* jis2eucx(const char* src, char* dst);

/**
 * Reads the rest of a JIS escape sequence, behind ESC and one byte.
 * @param text     in: address of the read position, just behind @p c; out: moved by one byte when
 *                 @p c is '$' or '(', but never beyond the terminator.
 * @param c        the byte that followed ESC.
 * @param two_byte in and out: the two-byte mode, 1 behind '$' and 'K', 0 behind all others.
 * @return 1 if the mode changed, else 0.
 */
int SkipESCSeq(const unsigned char** text, int c, int* two_byte);

/**
 * Counts the bytes of the EUC form of a Shift-JIS string.
 * @param s Shift-JIS text.
 * @return bytes, without the terminator; 2147483647 also for all that is longer.
 */
int eucLength(const char* s);

/**
 * Counts the bytes of the Shift-JIS form of an EUC string.
 * @param s Japanese EUC text.
 * @return bytes, without the terminator; 2147483647 also for all that is longer.
 */
int shiftLength(const char* s);

/**
 * Tells the length that the first byte of a Japanese EUC character announces.
 * @param s first byte of a character; may be NULL.
 * @return 1, 2 or 3 bytes; 0 for NULL and the empty string; -1 for a byte that begins nothing.
 */
int bytesInEucChar(const char* s);

/**
 * Tells the length that the first byte of a Shift-JIS character announces.
 * @param s first byte of a character; may be NULL.
 * @return 1 or 2 bytes; 0 for NULL and the empty string; -1 for a byte that begins nothing.
 */
int bytesInShiftChar(const char* s);
/** @} */

/**
 * @defgroup zvutil_katakana Katakana and detection
 * @brief Half-width katakana made full-width, and the encoding of Japanese files.
 *
 * @par Thread safety
 * Any number of threads at once; a stream by one thread at a time.
 * @par Example
 * @snippet conversion.c detect
 * @{
 */

/**
 * Widens a half-width katakana to the Shift-JIS code of its full-width character.
 * @param text     address of the read position, just behind the half-width byte; moved behind a
 *                 sound mark that was merged (1 byte in Shift-JIS, 2 in EUC), else left.
 * @param first    in: the half-width byte A1-DF (others stay); out: lead byte of the full-width
 *                 code.
 * @param second   out: trail byte of the full-width code; where @p first is no katakana, the byte
 *                 that might have been a sound mark, if one was read.
 * @param code_set #ZV_SJIS or #ZV_EUC to merge a sound mark that follows in that code set; any
 *                 other value looks at nothing behind the byte.
 */
void han2zen(const unsigned char** text, int* first, int* second, int code_set);

/**
 * Reads a stream and tells in which encoding its Japanese text is.
 *
 * Much EUC text fits both EUC and Shift-JIS; Shift-JIS text does as a rule only where it holds
 * nothing but half-width katakana. So take #ZV_EUC_OR_SJIS for EUC. EUC text with a three-byte
 * character passes for Shift-JIS unless something before it tells; so does Japanese text in UTF-8,
 * which is not recognised.
 * @param stream read from its current position until the answer is certain; neither rewound nor
 *               closed. A read error counts as the end of the file.
 * @return #ZV_JIS, #ZV_EUC, #ZV_SJIS; #ZV_EUC_OR_SJIS when all bytes fit both; 0 when nothing
 *         was found that tells (plain ASCII).
 */
int DetectJPCodeType(FILE* stream);
/** @} */

/**
 * @defgroup zvutil_big5 Big5 and EUC-TW
 * @brief Traditional Chinese: Big5 and the EUC form of CNS 11643.
 *
 * Characters that cannot be converted become two question marks; so does a lead byte together with
 * what follows it instead of its trail bytes, of which 8E has three, a line end too. A character
 * that the terminator cuts short is written unchanged. Source and destination must not overlap.
 * @par Thread safety
 * Any number of threads at once.
 * @par Example
 * @snippet conversion.c chinese
 * @{
 */

/** A run of Big5 characters and the run of CNS 11643 characters that it maps onto, in order. */
struct Big5CnsRange {
    int first_big5; /**< First Big5 character of the run. */
    int last_big5;  /**< Last Big5 character of the run, inclusive. */
    int first_cns;  /**< First CNS character of the run. */
    int last_cns;   /**< Last CNS character of the run, inclusive. */
    int plane;      /**< CNS plane, 1 to 4; 0 where the CNS numbers count through the planes. */
};

/** Counts the rows of each of the three range tables. */
extern const int Big5CnsTableSize;
/**
 * Pairs the runs of Big5 and CNS 11643, in codes: the master table.
 *
 * Big5 codes are first byte * 256 + second; CNS codes are in their 7-bit form.
 */
extern const struct Big5CnsRange Big5CnsTable[];
/**
 * Pairs the runs of Big5 and CNS 11643, in ordinals, ascending by Big5.
 *
 * The rows of #Big5CnsTable; Big5Order() and CnsOrder() within the plane give the ordinals.
 */
extern const struct Big5CnsRange Big5ToCnsTable[];
/**
 * Pairs the runs of Big5 and CNS 11643, in ordinals, ascending by CNS.
 *
 * The rows of #Big5CnsTable, CNS counted through the planes (8836 a plane). Where Big5 has a
 * character twice (C94A, DDFC), the row of the second lies within an earlier row.
 */
extern const struct Big5CnsRange CnsToBig5Table[];

/**
 * Converts Big5 to EUC-TW.
 *
 * Characters of plane 1 take two bytes, those of the other planes four.
 * @param src Big5 text.
 * @param dst receives the EUC-TW text; room for twice the length of @p src plus 1 bytes, or for
 *            euchLength() plus 1.
 * @return @p dst.
 */
char* big2euchx(const char* src, char* dst);

/**
 * Converts EUC-TW to Big5.
 *
 * Both the two-byte and the four-byte form of plane 1 are read.
 * @param src EUC-TW text.
 * @param dst receives the Big5 text; room for the length of @p src plus 1 bytes, or for
 *            big5Length() plus 1.
 * @return @p dst.
 */
char* euch2bigx(const char* src, char* dst);

/**
 * Converts one Big5 character to its row and cell of CNS 11643.
 *
 * The plane is not told.
 * @param big5 the two bytes of the character.
 * @param cns  receives exactly two bytes, A1-FE each, no terminator; untouched on failure.
 * @return 0, or -1 when the character is invalid or has no counterpart.
 */
int Big5ToCnsCodeConvert(const unsigned char* big5, unsigned char* cns);

/**
 * Numbers a Big5 character, row by row from 0, 157 cells a row.
 * @param big5 the two bytes of the character; the second is not read when the first is invalid.
 * @return the ordinal, or -1 when the bytes are no Big5 code.
 */
int Big5Order(const unsigned char* big5);

/**
 * Numbers an EUC-TW character within its plane, row by row from 0, 94 cells a row.
 * @param cns the two bytes of the character; the second is not read when the first is invalid.
 * @return the ordinal, or -1 when a byte lies outside A1-FE.
 */
int CnsOrder(const unsigned char* cns);

/**
 * Writes the Big5 code of an ordinal.
 * @param ordinal as Big5Order() gives it.
 * @param big5    receives exactly two bytes, no terminator.
 * @return 0.
 */
int Big5Code(int ordinal, unsigned char* big5);

/**
 * Writes the EUC-TW code of an ordinal within a plane.
 * @param ordinal as CnsOrder() gives it.
 * @param cns     receives exactly two bytes, no terminator.
 * @return 0.
 */
int CnsCode(int ordinal, unsigned char* cns);

/**
 * Counts the bytes of the EUC-TW form of a Big5 string.
 * @param s Big5 text.
 * @return bytes, without the terminator; 2147483647 also for all that is longer.
 */
int euchLength(const char* s);

/**
 * Counts the bytes of the Big5 form of an EUC-TW string.
 * @param s EUC-TW text.
 * @return bytes, without the terminator: 2 for each two- or four-byte character, else 1 a byte;
 *         also 1 a byte for a character that the terminator cuts short. 2147483647 also for all
 *         that is longer.
 */
int big5Length(const char* s);
/** @} */

/**
 * @defgroup zvutil_codepages ISO 8859 and Windows code pages
 * @brief Cyrillic (ISO 8859-5, 1251) and Central European (ISO 8859-2, 1250) text.
 *
 * Each byte becomes one byte. A Windows character that the ISO code page lacks keeps its byte
 * value (80-9F) or travels as a low control code (A0-BF): 01-0E in Cyrillic, 01-0A in Central
 * European text. The way back turns these control codes, tab and line feed among them, into
 * the Windows characters, so convert text without its line ends there.
 *
 * The destination may be the source itself.
 * @par Thread safety
 * Any number of threads at once.
 * @par Example
 * @snippet conversion.c cyrillic
 * @{
 */

/** Gives the 1251 byte of each ISO 8859-5 byte A0-FF. */
extern const unsigned char t8859_5To1251[96];
/** Gives the ISO 8859-5 byte of each 1251 byte 80-FF. */
extern const unsigned char t1251To8859_5[128];
/** Gives the 1250 byte of each ISO 8859-2 byte A0-BF. */
extern const unsigned char t8859_2To1250[32];
/** Gives the ISO 8859-2 byte of each 1250 byte 80-BF. */
extern const unsigned char t1250To8859_2[64];

/**
 * Converts ISO 8859-5 to code page 1251.
 * @param src ISO 8859-5 text.
 * @param dst receives the 1251 text; room for the length of @p src plus 1 bytes.
 * @return @p dst.
 */
char* c8859_5To1251x(const char* src, char* dst);

/**
 * Converts code page 1251 to ISO 8859-5.
 * @param src 1251 text.
 * @param dst receives the ISO 8859-5 text; room for the length of @p src plus 1 bytes.
 * @return @p dst.
 */
char* c1251To8859_5x(const char* src, char* dst);

/**
 * Converts ISO 8859-2 to code page 1250.
 * @param src ISO 8859-2 text.
 * @param dst receives the 1250 text; room for the length of @p src plus 1 bytes.
 * @return @p dst.
 */
char* c8859_2To1250x(const char* src, char* dst);

/**
 * Converts code page 1250 to ISO 8859-2.
 * @param src 1250 text.
 * @param dst receives the ISO 8859-2 text; room for the length of @p src plus 1 bytes.
 * @return @p dst.
 */
char* c1250To8859_2x(const char* src, char* dst);
/** @} */

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
