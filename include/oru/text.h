/*
 * oru/text.h - character sets, text conversion, byte order and ASCII helpers.
 *
 * The byte-order and ASCII functions are pure: no state, no allocation, no
 * failure, and they never consult the C library's locale, so file formats,
 * protocol fields and ASCII keywords behave the same under every locale.
 */
#ifndef ORU_TEXT_H
#define ORU_TEXT_H

#include "oru/core.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Byte order.  The library is built for little-endian hosts: the big-endian
 * conversions reverse the bytes, the little-endian ones return the value
 * unchanged.  Each pair (to host / from host) is one function with two names.
 */
ORU_API uint16_t oruBE2Host16(uint16_t value);
ORU_API uint16_t oruHost2BE16(uint16_t value);
ORU_API uint32_t oruBE2Host32(uint32_t value);
ORU_API uint32_t oruHost2BE32(uint32_t value);
ORU_API uint64_t oruBE2Host64(uint64_t value);
ORU_API uint64_t oruHost2BE64(uint64_t value);
ORU_API uint16_t oruLE2Host16(uint16_t value);
ORU_API uint16_t oruHost2LE16(uint16_t value);
ORU_API uint32_t oruLE2Host32(uint32_t value);
ORU_API uint32_t oruHost2LE32(uint32_t value);
ORU_API uint64_t oruLE2Host64(uint64_t value);
ORU_API uint64_t oruHost2LE64(uint64_t value);

/*
 * ASCII classification.  Each returns the class bits of the byte under the
 * function's mask: nonzero means true (the value is not normalised to 1).
 * Bytes 0x80-0xFF belong to no class.
 *
 * oruASCIIisPrint is true for every space character, tab, LF, VT, FF and CR
 * included, unlike the C library's isprint.
 */
ORU_API int oruASCIIisDigit(char c);  /* 0-9 */
ORU_API int oruASCIIisXDigit(char c); /* 0-9 A-F a-f */
ORU_API int oruASCIIisUpper(char c);  /* A-Z */
ORU_API int oruASCIIisLower(char c);  /* a-z */
ORU_API int oruASCIIisAlpha(char c);  /* letters */
ORU_API int oruASCIIisAlNum(char c);  /* letters and digits */
ORU_API int oruASCIIisSpace(char c);  /* blank, tab, LF, VT, FF, CR */
ORU_API int oruASCIIisPunct(char c);  /* the 32 graphic non-alphanumerics */
ORU_API int oruASCIIisCntrl(char c);  /* 0x00-0x1F, 0x7F */
ORU_API int oruASCIIisGraph(char c);  /* letters, digits, punctuation */
ORU_API int oruASCIIisPrint(char c);  /* graph plus every space character */

/* Case conversion of A-Z / a-z only; the result is the byte as 0..255. */
ORU_API int oruASCIIToLower(char c);
ORU_API int oruASCIIToUpper(char c);

/*
 * Compares two strings ignoring ASCII case over at most n bytes; a negative n
 * compares up to the terminator.  Returns the difference of the first
 * differing bytes.  Two bytes are case-folded only when they differ in bit
 * 0x20, so letters compare raw against "[", "\\", "]", "^" and "_": "A" sorts
 * before "_" while "a" sorts after it.  At a terminator the raw bytes are
 * compared.
 *
 * This makes it an equality test that ignores case, not a total order for
 * sorting: across letters and punctuation it is not even transitive
 * ("Hello" < "_under", yet "hello" > "_under" while "Hello" equals
 * "hello").  Use it as a sort comparator only for strings of letters and
 * digits.
 */
ORU_API int oruASCIIStrCaseCmp(const char* a, const char* b, int64_t n);

#ifdef __cplusplus
}
#endif

#endif /* ORU_TEXT_H */
