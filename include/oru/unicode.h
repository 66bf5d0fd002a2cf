/**
 * @file
 * oru/unicode.h - UTF-8/UTF-16 primitives, character properties, case mapping and normalization.
 *
 * Code points are unsigned 32-bit values; 0xFFFFFFFF is the "invalid" result
 * of the checked decoders.  A code point is a valid scalar value (accepted by
 * the checked encoders, decoders and validators) when it is at most 0x10FFFF,
 * not a surrogate (U+D800..U+DFFF), not one of U+FDD0..U+FDEF and not a
 * plane-final noncharacter (U+xxFFFE, U+xxFFFF).
 *
 * UTF-8 text is bytes; every UTF-8 length is a signed 32-bit byte count and a
 * negative length means "NUL-terminated" (with a null pointer: empty).
 * UTF-16 text is 16-bit units in host byte order; UTF-16 lengths are unsigned
 * unit counts with no NUL-terminated form.
 *
 * None of these functions allocates, locks, keeps state or returns an
 * oruResult, and none checks its pointers for null beyond the rule above.
 * Forward walks step by the lead byte alone (0x00-0xBF: 1 byte, 0xC0-0xDF: 2,
 * 0xE0-0xEF: 3, 0xF0-0xFF: 4) without validating, so a stray continuation
 * byte counts as a character of its own.
 */
#ifndef ORU_UNICODE_H
#define ORU_UNICODE_H

#include "oru/core.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Decoding one character (the bytes or units must be present) ---- */

/** The code point of the UTF-8 sequence at p, or 0xFFFFFFFF when the sequence
 * is overlong, has a bad continuation byte, a bad lead byte, or decodes to a
 * value that is not a valid scalar value (two-byte values are only checked
 * for being overlong).  Reads as many bytes as the lead byte announces. */
ORU_API uint32_t oruUTF8GetChar(const char* p);
/** @{ */
/** Unchecked decoders for inner loops that have classified the lead byte:
 * _oruUTF8GetChar1 decodes any sequence (an ASCII byte is itself; lead
 * 110xxxxx two bytes, 1110xxxx three, anything else four), _oruUTF8GetChar2
 * assumes a non-ASCII lead, _oruUTF8GetChar3 a lead of a 3- or 4-byte form.
 * Continuation bytes are not looked at, only their low six bits taken. */
ORU_API uint32_t _oruUTF8GetChar1(const char* p);
ORU_API uint32_t _oruUTF8GetChar2(const char* p);
ORU_API uint32_t _oruUTF8GetChar3(const char* p);
/** @} */
/** The code point at p (a unit or a high-low surrogate pair), or 0xFFFFFFFF
 * for an unpaired surrogate or a value that is not a valid scalar value. */
ORU_API uint32_t oruUTF16GetChar(const uint16_t* p);

/* ---- Encoding one character ---- */

/** Writes c as 1-4 bytes at p and returns the position after them; returns p
 * and writes nothing when c is not a valid scalar value. */
ORU_API char* oruUTF8PutChar(char* p, uint32_t c);
/** As oruUTF8PutChar, but writes only when the whole sequence fits before end
 * and always returns p plus the sequence length, so that a run over a too
 * small (even empty) buffer measures the size needed.  Returns p for a value
 * (negative included) that is not a valid scalar value. */
ORU_API char* oruUTF8SafePutChar(char* p, const char* end, int32_t c);
/** Writes c as one unit or a surrogate pair; p unchanged when rejected. */
ORU_API uint16_t* oruUTF16PutChar(uint16_t* p, uint32_t c);
/** Writes only what fits before end; returns p + 1 or p + 2 either way, p
 * when c is rejected. */
ORU_API uint16_t* oruUTF16SafePutChar(uint16_t* p, const uint16_t* end, uint32_t c);

/* ---- Navigation ---- */

/** The start of the character before p: one byte back, then back over
 * continuation bytes.  There is no lower bound. */
ORU_API const char* oruUTF8PrevChar(const char* p);
/** One unit back, then back over a whole run of low surrogates (the unit
 * reached need not be a high surrogate).  There is no lower bound. */
ORU_API const uint16_t* oruUTF16PrevChar(const uint16_t* p);
/** @{ */
/** The start of the next character after p (p + 1 and on, over continuation
 * bytes / low surrogates), or null when that reaches end. */
ORU_API const char* oruUTF8FindNextChar(const char* p, const char* end);
ORU_API const uint16_t* oruUTF16FindNextChar(const uint16_t* p, const uint16_t* end);
/** @} */
/** @{ */
/** The start of the character before p, not going below start: null when
 * p <= start, or when start is reached while still on a continuation byte /
 * low surrogate. */
ORU_API const char* oruUTF8FindPrevChar(const char* start, const char* p);
ORU_API const uint16_t* oruUTF16FindPrevChar(const uint16_t* start, const uint16_t* p);
/** @} */

/* ---- Counting and copying ---- */

/** @{ */
/** The number of whole characters (an incomplete final sequence is not
 * counted).  UTF-16 counts a high surrogate and the unit after it as one. */
ORU_API uint32_t oruUTF8CharCount(const char* s, int32_t len);
ORU_API uint32_t oruUTF16CharCount(const uint16_t* s, uint32_t len);
/** @} */

/**
 * Copies whole characters of src to dst and writes a zero byte behind them;
 * returns dst.  When dstSize is smaller than the source length, at most
 * dstSize - 1 bytes are copied, leaving room for the terminator.  When
 * dstSize is equal to or larger than the source length nothing is truncated
 * and the terminator goes behind the copied bytes, so with dstSize equal to
 * the source length it lands at dst[dstSize]: dst must then have
 * dstSize + 1 bytes.  At most maxChars characters are copied (0xFFFFFFFF: no
 * limit).  A dstSize of 0 with a non-empty source writes nothing; a null
 * src is empty.
 */
ORU_API char* oruUTF8Copy(char* dst, uint32_t dstSize, const char* src, int32_t srcLen,
                          uint32_t maxChars);
/** Copies whole characters, at most min(dstLen, srcLen) units and maxChars
 * characters; writes no terminator.  Returns dst. */
ORU_API uint16_t* oruUTF16Copy(uint16_t* dst, uint32_t dstLen, const uint16_t* src, uint32_t srcLen,
                               uint32_t maxChars);

/* ---- Validation ---- */

/** @{ */
/** 1 when the whole string is well-formed and every character a valid scalar
 * value, else 0.  When errPos is not null it receives the end of the last
 * wholly valid character: the end of the string when valid, the start of the
 * first bad sequence otherwise (the start of an empty string, result 1). */
ORU_API int oruUTF8Validate(const char* s, int32_t len, const char** errPos);
ORU_API int oruUTF16Validate(const uint16_t* s, uint32_t len, const uint16_t** errPos);
/** @} */

/* ---- Searching (lenient: nothing is validated) ---- */

/** @{ */
/** The first / last character equal to c, or null.  Characters are decoded
 * without checks; a sequence that would run past the end is never matched.
 * FindLastChar ignores continuation bytes (low surrogates) at the start and
 * an incomplete sequence at the end of the string. */
ORU_API const char* oruUTF8FindChar(const char* s, int32_t len, uint32_t c);
ORU_API const char* oruUTF8FindLastChar(const char* s, int32_t len, uint32_t c);
ORU_API const uint16_t* oruUTF16FindChar(const uint16_t* s, uint32_t len, uint32_t c);
ORU_API const uint16_t* oruUTF16FindLastChar(const uint16_t* s, uint32_t len, uint32_t c);
/** @} */

/* ---- Character properties (Unicode 4.1.0) ---- */

/** @{ */
/** General categories as returned by oruUniCharClass: 8 x major class (L 1,
 * M 2, N 3, P 4, S 5, Z 6, C 7) plus the minor index.  Initial and final
 * quotation marks share one value; 0 is "no character" (above U+10FFFF). */
#define ORU_UNI_NONE 0
#define ORU_UNI_LU 9  /**< uppercase letter */
#define ORU_UNI_LL 10 /**< lowercase letter */
#define ORU_UNI_LT 11 /**< titlecase letter */
#define ORU_UNI_LM 12 /**< modifier letter */
#define ORU_UNI_LO 13 /**< other letter */
#define ORU_UNI_MN 17 /**< non-spacing mark */
#define ORU_UNI_MC 18 /**< spacing combining mark */
#define ORU_UNI_ME 19 /**< enclosing mark */
#define ORU_UNI_ND 25 /**< decimal digit */
#define ORU_UNI_NL 26 /**< letter number */
#define ORU_UNI_NO 27 /**< other number */
#define ORU_UNI_PC 33 /**< connector punctuation */
#define ORU_UNI_PD 34 /**< dash punctuation */
#define ORU_UNI_PS 35 /**< open punctuation */
#define ORU_UNI_PE 36 /**< close punctuation */
#define ORU_UNI_PI 37 /**< initial quote */
#define ORU_UNI_PF 37 /**< final quote: the same value */
#define ORU_UNI_PO 39 /**< other punctuation */
#define ORU_UNI_SM 41 /**< math symbol */
#define ORU_UNI_SC 42 /**< currency symbol */
#define ORU_UNI_SK 43 /**< modifier symbol */
#define ORU_UNI_SO 44 /**< other symbol */
#define ORU_UNI_ZS 49 /**< space separator */
#define ORU_UNI_ZL 50 /**< line separator */
#define ORU_UNI_ZP 51 /**< paragraph separator */
#define ORU_UNI_CC 57 /**< control */
#define ORU_UNI_CF 58 /**< format */
#define ORU_UNI_CS 59 /**< surrogate */
#define ORU_UNI_CO 60 /**< private use */
#define ORU_UNI_CN 61 /**< unassigned, noncharacters included */
/** @} */

/** @{ */
/** Bits of oruUniCharProperties: the binary properties of the same names,
 * and five word-break classes. */
#define ORU_UNI_ALPHABETIC 0x00000100u
#define ORU_UNI_LOWERCASE 0x00000200u
#define ORU_UNI_UPPERCASE 0x00000400u
#define ORU_UNI_MATH 0x00000800u
#define ORU_UNI_GRAPHEME_BASE 0x00001000u
#define ORU_UNI_GRAPHEME_EXTEND 0x00002000u
#define ORU_UNI_ID_START 0x00004000u
#define ORU_UNI_ID_CONTINUE 0x00008000u
#define ORU_UNI_XID_START 0x00010000u
#define ORU_UNI_XID_CONTINUE 0x00020000u
#define ORU_UNI_WHITE_SPACE 0x00040000u
#define ORU_UNI_DASH 0x00080000u
#define ORU_UNI_HYPHEN 0x00100000u
#define ORU_UNI_QUOTATION_MARK 0x00200000u
#define ORU_UNI_HEX_DIGIT 0x00400000u
#define ORU_UNI_TERMINAL_PUNCTUATION 0x00800000u
#define ORU_UNI_STERM 0x01000000u
#define ORU_UNI_SOFT_DOTTED 0x02000000u
#define ORU_UNI_WB_KATAKANA 0x04000000u
#define ORU_UNI_WB_ALETTER 0x08000000u
#define ORU_UNI_WB_MIDLETTER 0x10000000u
#define ORU_UNI_WB_MIDNUM 0x20000000u
#define ORU_UNI_WB_NUMERIC 0x40000000u
/** @} */

/** The general category (ORU_UNI_* above); 0 above U+10FFFF. */
ORU_API uint32_t oruUniCharClass(uint32_t c);
/** The property bits (ORU_UNI_ALPHABETIC ... ORU_UNI_WB_NUMERIC); 0 above
 * U+10FFFF. */
ORU_API uint32_t oruUniCharProperties(uint32_t c);

/** @{ */
/** Predicates, each 0 or 1 (0 for every value above U+10FFFF).  Lower and
 * upper are the Lowercase and Uppercase properties, not the categories Ll and
 * Lu.  Printable means any category but C*; defined means any category but
 * Cn (private use and surrogates are defined). */
ORU_API unsigned oruUniCharIsAlphabetic(uint32_t c);
ORU_API unsigned oruUniCharIsLower(uint32_t c);
ORU_API unsigned oruUniCharIsUpper(uint32_t c);
ORU_API unsigned oruUniCharIsWhiteSpace(uint32_t c);
ORU_API unsigned oruUniCharIsHexDigit(uint32_t c);
ORU_API unsigned oruUniCharIsTitle(uint32_t c);
ORU_API unsigned oruUniCharIsDecimalDigit(uint32_t c);
ORU_API unsigned oruUniCharIsControl(uint32_t c);
ORU_API unsigned oruUniCharIsLetter(uint32_t c);
ORU_API unsigned oruUniCharIsMark(uint32_t c);
ORU_API unsigned oruUniCharIsNumber(uint32_t c);
ORU_API unsigned oruUniCharIsPunctuation(uint32_t c);
ORU_API unsigned oruUniCharIsSymbol(uint32_t c);
ORU_API unsigned oruUniCharIsSeparator(uint32_t c);
ORU_API unsigned oruUniCharIsLetterOrNumber(uint32_t c);
ORU_API unsigned oruUniCharIsLetterOrDecimalDigit(uint32_t c);
ORU_API unsigned oruUniCharIsPrintable(uint32_t c);
ORU_API unsigned oruUniCharIsDefined(uint32_t c);
/** @} */

/** 1 when c is a valid scalar value, else 0; does not consult the character
 * tables (an unassigned code point is valid, a noncharacter is not). */
ORU_API int oruUniCharValidate(int32_t c);
/** 0-9 for a decimal digit (category Nd), else 0xFFFFFFFF. */
ORU_API uint32_t oruUniCharDigitValue(uint32_t c);
/** 0-15 for 0-9, A-F, a-f and their fullwidth forms, else 0xFFFFFFFF. */
ORU_API uint32_t oruUniCharHexDigitValue(uint32_t c);

/* ---- Binary comparison (code-point order) ---- */

/** -1, 0 or 1 by code point; a proper prefix is smaller. */
ORU_API int32_t oruUCS4BinaryCompare(const uint32_t* lhs, uint32_t lhsLen, const uint32_t* rhs,
                                     uint32_t rhsLen);
/** -1, 0 or 1 by decoded code point, so that supplementary characters sort
 * after U+E000..U+FFFF as in UTF-8 and UCS-4.  An unpaired low surrogate is
 * a character of its own value; a high surrogate in the last unit is compared
 * as a raw unit. */
ORU_API int32_t oruUTF16BinaryCompare(const uint16_t* lhs, uint32_t lhsLen, const uint16_t* rhs,
                                      uint32_t rhsLen);
/** Byte order (which is code-point order for well-formed text): the byte
 * difference of the first differing bytes (negative or positive, not
 * normalised), else -1 / 1 for a proper prefix, 0 when equal. */
ORU_API int32_t oruUTF8BinaryCompare(const char* lhs, int32_t lhsLen, const char* rhs,
                                     int32_t rhsLen);

/* ---- Case mapping (Unicode 4.1.0) ---- */

/** @{ */
/** The simple (one-to-one) lower, upper and title case mapping of c from
 * UnicodeData; c itself when it has none or is above U+10FFFF. */
ORU_API uint32_t oruUniCharToLower(uint32_t c);
ORU_API uint32_t oruUniCharToUpper(uint32_t c);
ORU_API uint32_t oruUniCharToTitle(uint32_t c);
/** @} */

/** @{ */
/** Full string case mappings: lower case, upper case and case folding (full
 * folding, statuses C and F, no Turkic records).  Applies the special
 * casing records with their contexts (Final_Sigma, After_Soft_Dotted,
 * More_Above, Not_Before_Dot, After_I) and, for lower and upper, the Turkish,
 * Azeri and Lithuanian records when the language locale parameter
 * (ORU_LP_LANGUAGE, read once per call) is "tr", "az" or "lt".  The result
 * is put into canonical order.
 *
 * Each returns a new array allocated with oruMalloc, which the caller frees
 * with oruFree, and stores its length in *outLen (code points, UTF-16 units,
 * or UTF-8 bytes without the terminator); null on allocation failure.
 * UCS-4 and UTF-16: empty or null input returns null with *outLen 0; the
 * UTF-16 result has no terminator.  UTF-8: len < 0 means NUL-terminated;
 * the result is NUL-terminated; empty input returns an empty string, null
 * input returns null; outLen may be null.  Ill-formed UTF-8 or UTF-16
 * input becomes U+FFFD, one per offending byte or unit; UCS-4 values above
 * U+10FFFF are copied unchanged. */
ORU_API uint32_t* oruUCS4ToLower(const uint32_t* s, uint32_t len, uint32_t* outLen);
ORU_API uint32_t* oruUCS4ToUpper(const uint32_t* s, uint32_t len, uint32_t* outLen);
ORU_API uint32_t* oruUCS4Casefold(const uint32_t* s, uint32_t len, uint32_t* outLen);
ORU_API uint16_t* oruUTF16ToLower(const uint16_t* s, uint32_t len, uint32_t* outLen);
ORU_API uint16_t* oruUTF16ToUpper(const uint16_t* s, uint32_t len, uint32_t* outLen);
ORU_API uint16_t* oruUTF16Casefold(const uint16_t* s, uint32_t len, uint32_t* outLen);
ORU_API char* oruUTF8ToLower(const char* s, int32_t len, uint32_t* outLen);
ORU_API char* oruUTF8ToUpper(const char* s, int32_t len, uint32_t* outLen);
ORU_API char* oruUTF8Casefold(const char* s, int32_t len, uint32_t* outLen);
/** @} */

/* ---- Normalization (Unicode 4.1.0) ---- */

/** @{ */
/** Form selectors: bit 1 composes, bit 0 uses compatibility mappings. */
#define ORU_NFD 0u  /**< canonical decomposition */
#define ORU_NFKD 1u /**< compatibility decomposition */
#define ORU_NFC 2u  /**< canonical decomposition, then composition */
#define ORU_NFKC 3u /**< compatibility decomposition, then composition */
/** @} */

/** @{ */
/** The full decomposition of c (canonical only when canonicalOnly is
 * nonzero; Hangul syllables by arithmetic), written to out as far as whole
 * characters fit in capacity (code points, UTF-16 units, or UTF-8 bytes;
 * out may be null when capacity is 0).  Returns the length of the whole
 * decomposition in the same unit, 1 (or the encoded length of c) when c has
 * none: a result above capacity means call again with a larger buffer. */
ORU_API uint32_t oruUCS4Decompose(uint32_t c, int canonicalOnly, uint32_t* out, uint32_t capacity);
ORU_API uint32_t oruUTF16Decompose(uint32_t c, int canonicalOnly, uint16_t* out, uint32_t capacity);
ORU_API uint32_t oruUTF8Decompose(uint32_t c, int canonicalOnly, char* out, uint32_t capacity);
/** @} */

/** @{ */
/** Sorts the combining marks of s into canonical order in place (stable,
 * by combining class; characters of class 0 never move).  Ill-formed units
 * or bytes stay in place and nothing moves across them.  UTF-8: n < 0 means
 * NUL-terminated.  Null s does nothing.  The UTF-16 and UTF-8 forms work on
 * a decoded copy: when memory for it runs out, the text is left as it is
 * (UTF-8: from the first stretch between ill-formed bytes that could not be
 * sorted). */
ORU_API void oruUCS4CanonicalOrdering(uint32_t* s, uint32_t n);
ORU_API void oruUTF16CanonicalOrdering(uint16_t* s, uint32_t n);
ORU_API void oruUTF8CanonicalOrdering(char* s, int32_t n);
/** @} */

/** @{ */
/** Normalizes s to form (ORU_NFD, ORU_NFKD, ORU_NFC or ORU_NFKC; higher bits
 * are ignored).  Returns a new array allocated with oruMalloc (free with
 * oruFree) and its length in *outLen, with the same empty-input, null-input,
 * terminator and ill-formed-input rules as the case mappings above; null on
 * allocation failure.  Code points without data pass through unchanged. */
ORU_API uint32_t* oruUCS4Normalize(const uint32_t* s, uint32_t len, uint32_t form,
                                   uint32_t* outLen);
ORU_API uint16_t* oruUTF16Normalize(const uint16_t* s, uint32_t len, uint32_t form,
                                    uint32_t* outLen);
ORU_API char* oruUTF8Normalize(const char* s, int32_t len, uint32_t form, uint32_t* outLen);
/** @} */

#ifdef __cplusplus
}
#endif

#endif /* ORU_UNICODE_H */
