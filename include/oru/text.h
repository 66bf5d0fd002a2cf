/**
 * @file
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

/** @{ */
/**
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
/** @} */

/** @{ */
/**
 * ASCII classification.  Each returns the class bits of the byte under the
 * function's mask: nonzero means true (the value is not normalised to 1).
 * Bytes 0x80-0xFF belong to no class.
 *
 * oruASCIIisPrint is true for every space character, tab, LF, VT, FF and CR
 * included, unlike the C library's isprint.
 */
ORU_API int oruASCIIisDigit(char c);  /**< 0-9 */
ORU_API int oruASCIIisXDigit(char c); /**< 0-9 A-F a-f */
ORU_API int oruASCIIisUpper(char c);  /**< A-Z */
ORU_API int oruASCIIisLower(char c);  /**< a-z */
ORU_API int oruASCIIisAlpha(char c);  /**< letters */
ORU_API int oruASCIIisAlNum(char c);  /**< letters and digits */
ORU_API int oruASCIIisSpace(char c);  /**< blank, tab, LF, VT, FF, CR */
ORU_API int oruASCIIisPunct(char c);  /**< the 32 graphic non-alphanumerics */
ORU_API int oruASCIIisCntrl(char c);  /**< 0x00-0x1F, 0x7F */
ORU_API int oruASCIIisGraph(char c);  /**< letters, digits, punctuation */
ORU_API int oruASCIIisPrint(char c);  /**< graph plus every space character */
/** @} */

/** @{ */
/** Case conversion of A-Z / a-z only; the result is the byte as 0..255. */
ORU_API int oruASCIIToLower(char c);
ORU_API int oruASCIIToUpper(char c);
/** @} */

/**
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

/*
 * Character-set registry.  Character sets are named by the names and
 * MIBenum numbers of the IANA character-set registry, plus the library's own
 * numbers 9001 "UCS-2BE", 9002 "UCS-2LE", 9003 "UCS-4BE" and 9004 "UCS-4LE".
 * The tables are compiled in; the functions allocate nothing, take no lock
 * and are reentrant.  Returned names point to constant data the caller never
 * frees.
 *
 * Names are matched ignoring ASCII case only: "latin1", "LATIN1" and
 * "ISO_8859-1:1987" find 4, while "latin-1", "UTF8" and "utf_8" are unknown.
 */

/** The MIBenum of a registered name or alias, or -1 when the name is unknown
 * (also for the empty string and a null pointer). */
ORU_API int32_t oruCSNameToMIBenum(const char* name);

/** The registry's primary name of a set ("ISO_8859-1:1987" for 4), or NULL
 * when the number is unknown. */
ORU_API const char* oruMIBenumToCSName(uint32_t mib);

/** The preferred MIME name of a set ("ISO-8859-1" for 4), else its primary
 * name, else NULL when the number is unknown. */
ORU_API const char* oruMIBenumToCSMIMEName(uint32_t mib);

/** Enumerates the registry for companion tools: the index-th name or alias
 * in lookup order (index from 0), its MIBenum in *mibOut when mibOut is not
 * NULL; NULL past the end. */
ORU_API const char* _oruCSNameAt(size_t index, uint32_t* mibOut);

/**
 * Text codecs.  A codec is an open conversion from one registered set to
 * another through the platform's iconv.  Sets without a converter in the
 * library's codec table, and pairs the platform's iconv refuses, give
 * ORU_E_NOT_SUPPORTED.  One thread uses a codec at a time.
 */
typedef struct oruTextCodecObject* oruTextCodec;

/** @{ */
/** oruConvertText2 flags. */
#define ORU_CONVERT_RESET 1u /**< reset the shift state before converting */
#define ORU_CONVERT_FLUSH 2u /**< end of input: finish the output's shift state */
/** @} */

/** Opens a codec from fromName to toName (names or aliases of the registry).
 * *codecOut is set to NULL first and receives the codec on success; close it
 * with oruCloseTextCodec.  Results: ORU_OK; ORU_E_INVALID_ARG (a null
 * argument or an unknown name); ORU_E_NOT_SUPPORTED (no converter);
 * ORU_E_OUT_OF_MEMORY; 0x96220000 | errno for another failure of iconv. */
ORU_API oruResult oruOpenTextCodec(const char* fromName, const char* toName,
                                   oruTextCodec* codecOut);

/** Closes and frees a codec.  ORU_OK, or ORU_E_INVALID_ARG for NULL. */
ORU_API oruResult oruCloseTextCodec(oruTextCodec codec);

/** Returns the codec to its initial state: the shift state, and for UTF-16
 * and UTF-32 the byte order a byte-order mark had chosen.  ORU_OK, or
 * ORU_E_INVALID_ARG for NULL. */
ORU_API oruResult oruResetTextCodec(oruTextCodec codec);

/** One conversion step with iconv's conventions: *inBuf, *inLeft and
 * *outBuf, *outLeft are advanced past what was read and written.  Results:
 * ORU_OK when all input was converted, or when only an incomplete sequence
 * remains at the end (left unconsumed); ORU_S_OUTPUT_FULL (a success code)
 * when the output is full: call again with more room;
 * ORU_E_ILLEGAL_SEQUENCE at an invalid or unconvertible sequence (*inBuf
 * points at it); ORU_E_INVALID_ARG for a null codec or a bad descriptor;
 * ORU_E_FAIL for any other failure of iconv. */
ORU_API oruResult oruConvertText(oruTextCodec codec, const char** inBuf, size_t* inLeft,
                                 char** outBuf, size_t* outLeft);

/** As oruConvertText, with flags: ORU_CONVERT_RESET resets the shift state
 * first; ORU_CONVERT_FLUSH marks the end of the input: after a complete
 * conversion the sequence returning the output to its initial shift state is
 * written (ORU_S_OUTPUT_FULL if it does not fit), and an incomplete sequence
 * at the end gives ORU_E_ILLEGAL_SEQUENCE instead of ORU_OK. */
ORU_API oruResult oruConvertText2(oruTextCodec codec, const char** inBuf, size_t* inLeft,
                                  char** outBuf, size_t* outLeft, uint32_t flags);

/** Allocator with realloc semantics: fn(NULL, n) allocates, fn(p, n) resizes,
 * fn(p, 0) frees.  Where one is taken, NULL selects oruRealloc/oruFree. */
typedef void* (*oruReallocFn)(void* pointer, size_t size);

/** Converts a whole string into a newly allocated buffer *out, terminated by
 * two zero bytes (so UTF-16 output is terminated too).
 *   src, srcLen: the input; srcLen (size_t)-1 means NUL-terminated.
 *   consumedOut, outLenOut (may be NULL): input bytes consumed, output bytes
 *   written (terminator excluded).
 *   reallocFn: allocates *out; the caller frees it with the same allocator
 *   (oruFree when reallocFn is NULL).
 * When the names are equal ignoring ASCII case the input is copied (up to
 * an embedded NUL, the rest zero-filled) without a conversion.  Otherwise
 * the conversion runs through a process-wide cache of the 16 most recently
 * used name pairs, under one mutex.  Malformed UTF-8 input is repaired: each
 * bad lead byte with its continuation bytes, a truncated final sequence
 * included, becomes one "?" in the target set, and so does a character the
 * target cannot encode when the source is UTF-8.
 * Results: ORU_OK; ORU_E_INVALID_ARG (null out, names, or src with a
 * nonzero length; unknown names); ORU_E_NOT_SUPPORTED; ORU_E_ILLEGAL_SEQUENCE
 * (invalid or unconvertible input from a set other than UTF-8);
 * ORU_E_OUT_OF_MEMORY; failures of the cache's mutex.  On failure *out is
 * NULL and nothing stays allocated. */
ORU_API oruResult oruConvertString(const void* src, size_t srcLen, const char* fromName,
                                   const char* toName, size_t* consumedOut, size_t* outLenOut,
                                   oruReallocFn reallocFn, char** out);

/** @{ */
/**
 * Application and system character sets.  The system set is locale
 * parameter ORU_LP_SYSTEM_CHARSET, the application set ORU_LP_APP_CHARSET
 * (see oru/l10n.h).  Each function takes the arguments of oruConvertString
 * without the names; srcLen with the top bit set ((size_t)-1) means a
 * NUL-terminated input.
 *
 * oruAppToSystemCS and oruSystemToAppCS copy the input unchanged when the
 * two sets' names are equal ignoring ASCII case (or are known to name the
 * same set through the overrides), and convert otherwise.
 * oruAppCSToUTF8 (also oruLocaleToUTF8) and oruUTF8ToAppCS (also
 * oruUTF8ToLocale) always go through oruConvertString; they also give
 * ORU_E_BUFFER_TOO_SMALL when the application set's name is 41 characters
 * or longer.  Results otherwise as oruConvertString.
 */
ORU_API oruResult oruAppToSystemCS(const void* src, size_t srcLen, size_t* consumedOut,
                                   size_t* outLenOut, oruReallocFn allocFn, char** out);
ORU_API oruResult oruSystemToAppCS(const void* src, size_t srcLen, size_t* consumedOut,
                                   size_t* outLenOut, oruReallocFn allocFn, char** out);
ORU_API oruResult oruAppCSToUTF8(const void* src, size_t srcLen, size_t* consumedOut,
                                 size_t* outLenOut, oruReallocFn allocFn, char** out);
ORU_API oruResult oruLocaleToUTF8(const void* src, size_t srcLen, size_t* consumedOut,
                                  size_t* outLenOut, oruReallocFn allocFn, char** out);
ORU_API oruResult oruUTF8ToAppCS(const void* src, size_t srcLen, size_t* consumedOut,
                                 size_t* outLenOut, oruReallocFn allocFn, char** out);
ORU_API oruResult oruUTF8ToLocale(const void* src, size_t srcLen, size_t* consumedOut,
                                  size_t* outLenOut, oruReallocFn allocFn, char** out);
/** @} */

#ifdef __cplusplus
}
#endif

#endif /* ORU_TEXT_H */
