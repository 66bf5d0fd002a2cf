/**
 * @file
 * oru/decimal.h - IEEE 754-2008 decimal floating point (BID encoding).
 *
 * Three interchange widths in the binary integer decimal encoding, where the
 * coefficient is a plain binary integer:
 *
 *   width  digits  exponent q (value = c x 10^q)  largest finite
 *   32      7      -101 .. 90                     9.999999E96
 *   64     16      -398 .. 369                    9.999999999999999E384
 *   128    34      -6176 .. 6111                  (10^34 - 1)E6111
 *
 * decimal32 is a storage width only.  decimal64 travels by value as a 64-bit
 * integer holding the encoding; decimal128 as a 16-byte object (low 64-bit
 * word first) passed by pointer.  decimal128 functions take the result
 * pointer first, copy their operands before use (so the result may point at
 * an operand; no alignment beyond 8 bytes is needed) and return that pointer.
 *
 * Non-canonical encodings are accepted everywhere: a coefficient above the
 * maximum (every large-form decimal128 encoding among them) reads as zero,
 * a NaN payload of p digits or more reads as zero.  Results are always
 * canonical, except for the pure bit operations Negate, Abs and CopySign.
 *
 * Nothing here fails or returns an error code.  Exceptions raise sticky
 * per-thread status flags (ORU_DEC_INVALID ...), read and changed with
 * oruDecTestFlags and its companions.  Every rounded operation rounds to
 * nearest, ties to even, unless it takes a rounding mode.  All functions
 * may be called from any number of threads at once.
 */
#ifndef ORU_DECIMAL_H
#define ORU_DECIMAL_H

#include "oru/core.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A decimal32 in the BID encoding. */
typedef uint32_t oruDec32;
/** A decimal64 in the BID encoding. */
typedef uint64_t oruDec64;
/** A decimal128 in the BID encoding, as two 64-bit words. */
typedef struct oruDec128 {
  uint64_t w[2]; /**< w[0] the low word, w[1] the high word (sign, exponent) */
} oruDec128;

/** Classes returned by oruDec64Class and oruDec128Class. */
typedef enum oruDecClass {
  ORU_DEC_SIGNALING_NAN = 0,      /**< a signalling NaN */
  ORU_DEC_QUIET_NAN = 1,          /**< a quiet NaN */
  ORU_DEC_NEGATIVE_INFINITY = 2,  /**< -infinity */
  ORU_DEC_NEGATIVE_NORMAL = 3,    /**< a negative normal number */
  ORU_DEC_NEGATIVE_SUBNORMAL = 4, /**< a negative subnormal number */
  ORU_DEC_NEGATIVE_ZERO = 5,      /**< -0 */
  ORU_DEC_POSITIVE_ZERO = 6,      /**< +0 */
  ORU_DEC_POSITIVE_SUBNORMAL = 7, /**< a positive subnormal number */
  ORU_DEC_POSITIVE_NORMAL = 8,    /**< a positive normal number */
  ORU_DEC_POSITIVE_INFINITY = 9   /**< +infinity */
} oruDecClass;

/** @{ */
/** Status flags (bits of the int the flag functions take and return). */
#define ORU_DEC_INVALID 1        /**< invalid operation */
#define ORU_DEC_DIVIDE_BY_ZERO 2 /**< division by zero */
#define ORU_DEC_OVERFLOW 4       /**< overflow */
#define ORU_DEC_UNDERFLOW 8      /**< underflow */
#define ORU_DEC_INEXACT 16       /**< inexact result */
/** @} */

/** @{ */
/** Rounding directions for the mode arguments of Round, RoundExact and
 * Quantize.  RoundExact and Quantize round half-even for every one of
 * these values; the directions are honoured by Round (and the five named
 * rounding functions). */
#define ORU_DEC_ROUND_HALF_EVEN 0 /**< to nearest, ties to even */
#define ORU_DEC_ROUND_HALF_UP 1   /**< to nearest, ties away from zero */
#define ORU_DEC_ROUND_CEILING 2   /**< toward +infinity */
#define ORU_DEC_ROUND_FLOOR 3     /**< toward -infinity */
#define ORU_DEC_ROUND_DOWN 4      /**< toward zero */
/** @} */

/** @{ */
/**
 * Constants: smallest positive normal (MIN, 1 x 10^emin), largest finite
 * (MAX), 10^(1-p) (EPSILON), +infinity, +quiet NaN and +signalling NaN with
 * payload 0, smallest positive subnormal (SUBNORMAL_MIN, 1 x 10^qmin).
 * Finite ones use the shortest coefficient.
 */
ORU_API extern const oruDec32 oruDEC32_MIN;
ORU_API extern const oruDec32 oruDEC32_MAX;
ORU_API extern const oruDec32 oruDEC32_EPSILON;
ORU_API extern const oruDec32 oruDEC32_INFINITY;
ORU_API extern const oruDec32 oruDEC32_QUIET_NAN;
ORU_API extern const oruDec32 oruDEC32_SIGNALING_NAN;
ORU_API extern const oruDec32 oruDEC32_SUBNORMAL_MIN;
ORU_API extern const oruDec64 oruDEC64_MIN;
ORU_API extern const oruDec64 oruDEC64_MAX;
ORU_API extern const oruDec64 oruDEC64_EPSILON;
ORU_API extern const oruDec64 oruDEC64_INFINITY;
ORU_API extern const oruDec64 oruDEC64_QUIET_NAN;
ORU_API extern const oruDec64 oruDEC64_SIGNALING_NAN;
ORU_API extern const oruDec64 oruDEC64_SUBNORMAL_MIN;
ORU_API extern const oruDec128 oruDEC128_MIN;
ORU_API extern const oruDec128 oruDEC128_MAX;
ORU_API extern const oruDec128 oruDEC128_EPSILON;
ORU_API extern const oruDec128 oruDEC128_INFINITY;
ORU_API extern const oruDec128 oruDEC128_QUIET_NAN;
ORU_API extern const oruDec128 oruDEC128_SIGNALING_NAN;
ORU_API extern const oruDec128 oruDEC128_SUBNORMAL_MIN;
/** @} */

/*
 * Status flags of the calling thread.  Each thread has its own, all clear
 * when it starts; operations only ever raise them.  Arguments and results
 * are ORU_DEC_* flag bits; bits above ORU_DEC_INEXACT are ignored.
 */

/** Raises the given flags. */
ORU_API void oruDecRaiseFlags(int flags);
/** Clears the given flags. */
ORU_API void oruDecLowerFlags(int flags);
/** Returns those flags of mask that are raised (0 when none). */
ORU_API int oruDecTestFlags(int mask);
/** Returns all raised flags; changes nothing. */
ORU_API int oruDecSaveFlags(void);
/** For every flag in mask, sets it to the state of that bit in flags;
 * flags outside mask are left alone. */
ORU_API void oruDecRestoreFlags(int flags, int mask);
/** Returns all raised flags, then clears those in mask. */
ORU_API int _oruDecSaveAndLowerFlags(int mask);
/** Returns all raised flags, then does oruDecRestoreFlags(flags, mask). */
ORU_API int _oruDecGetAndRestoreFlags(int flags, int mask);

/** @{ */
/**
 * Classification (no flags).  Class gives an oruDecClass value; the
 * predicates return 1 or 0.  IsCanonical: the encoding is canonical.
 * IsFinite: zero, subnormal or normal.  IsNormal: non-zero with adjusted
 * exponent at least emin.  IsSubnormal: non-zero below the smallest normal.
 * IsZero: either zero, a non-canonical coefficient included.  IsSignMinus:
 * the sign bit, for every kind of value.
 */
ORU_API int oruDec64Class(oruDec64 x);
ORU_API int oruDec64IsCanonical(oruDec64 x);
ORU_API int oruDec64IsFinite(oruDec64 x);
ORU_API int oruDec64IsInfinite(oruDec64 x);
ORU_API int oruDec64IsNaN(oruDec64 x);
ORU_API int oruDec64IsNormal(oruDec64 x);
ORU_API int oruDec64IsSignMinus(oruDec64 x);
ORU_API int oruDec64IsSubnormal(oruDec64 x);
ORU_API int oruDec64IsZero(oruDec64 x);
ORU_API int oruDec128Class(const oruDec128* x);
ORU_API int oruDec128IsCanonical(const oruDec128* x);
ORU_API int oruDec128IsFinite(const oruDec128* x);
ORU_API int oruDec128IsInfinite(const oruDec128* x);
ORU_API int oruDec128IsNaN(const oruDec128* x);
ORU_API int oruDec128IsNormal(const oruDec128* x);
ORU_API int oruDec128IsSignMinus(const oruDec128* x);
ORU_API int oruDec128IsSubnormal(const oruDec128* x);
ORU_API int oruDec128IsZero(const oruDec128* x);
/** @} */

/** @{ */
/**
 * Sign bit operations (exact, no flags, NaNs included, the rest of the
 * encoding untouched): Negate flips the sign, Abs clears it, CopySign gives
 * x with the sign of y.
 */
ORU_API oruDec64 oruDec64Negate(oruDec64 x);
ORU_API oruDec64 oruDec64Abs(oruDec64 x);
ORU_API oruDec64 oruDec64CopySign(oruDec64 x, oruDec64 y);
ORU_API oruDec128* oruDec128Negate(oruDec128* res, const oruDec128* x);
ORU_API oruDec128* oruDec128Abs(oruDec128* res, const oruDec128* x);
ORU_API oruDec128* oruDec128CopySign(oruDec128* res, const oruDec128* x, const oruDec128* y);
/** @} */

/** @{ */
/**
 * Arithmetic.  Each computes the exact result and rounds it once, half-even
 * unless a mode is taken, to 16 or 34 digits and the exponent range.  A
 * signalling NaN operand raises invalid and comes back quieted (the first in
 * operand order wins), else a quiet NaN operand comes back; invalid
 * operations give the positive quiet NaN.  Overflow gives infinity with
 * overflow and inexact; an inexact result below the smallest normal raises
 * underflow and inexact.
 *
 * Add, Sub: x + y, x - y; exact results keep the smaller exponent; an exact
 *   zero is +0 unless both terms are negative zeros.  Invalid: inf - inf.
 * Mul: x * y, preferred exponent qx + qy.  Invalid: 0 * inf.
 * Div: x / y, preferred exponent qx - qy.  Invalid: 0/0, inf/inf;
 *   divide-by-zero: finite non-zero / 0 gives infinity.
 * FusedMulAdd: x * y + z with one rounding.  Invalid: 0 * inf, inf - inf.
 * Sqrt: preferred exponent floor(qx / 2); sqrt(-0) = -0.  Invalid: x < 0.
 * Remainder: x - n * y, n the integer nearest x / y (ties to even), always
 *   exact, exponent min(qx, qy).  Invalid: y = 0 or x infinite.
 * Quantize: x with y's exponent.  Always rounds half-even (see the modes).
 *   Invalid: more than p digits needed, or exactly one operand infinite.
 * ScaleB: x * 10^n.
 * LogB: the exponent of the most significant digit, q + digits - 1, as an
 *   int; 0 and NaN give INT_MIN, infinity INT_MAX, all with invalid.
 * RoundHalfEven, RoundHalfUp (ties away), RoundCeiling, RoundFloor,
 *   RoundDown: to an integral value (exponent 0 when x had a negative one),
 *   never inexact.  Round picks one of them by mode (unknown modes pick
 *   half-even).  RoundExact rounds half-even and raises inexact when the
 *   value changes.
 * NextUp, NextDown: the neighbour toward +inf / -inf, no flags but invalid
 *   for a signalling NaN.  NextAfter: the neighbour of x toward y (y itself
 *   when they are equal), overflow/underflow and inexact when stepping to
 *   infinity or below the smallest normal.
 * Increment, Decrement: x = x + 1 or x - 1 in place, flags as Add.
 * SameQuantum: 1 when both are finite with equal exponents, both infinite,
 *   or both NaN; else 0; no flags.
 */
ORU_API oruDec64 oruDec64Add(oruDec64 x, oruDec64 y);
ORU_API oruDec64 oruDec64Sub(oruDec64 x, oruDec64 y);
ORU_API oruDec64 oruDec64Mul(oruDec64 x, oruDec64 y);
ORU_API oruDec64 oruDec64Div(oruDec64 x, oruDec64 y);
ORU_API oruDec64 oruDec64FusedMulAdd(oruDec64 x, oruDec64 y, oruDec64 z);
ORU_API oruDec64 oruDec64Sqrt(oruDec64 x);
ORU_API oruDec64 oruDec64Remainder(oruDec64 x, oruDec64 y);
ORU_API oruDec64 oruDec64Quantize(oruDec64 x, oruDec64 y, int mode);
ORU_API oruDec64 oruDec64ScaleB(oruDec64 x, int n);
ORU_API int oruDec64LogB(oruDec64 x);
ORU_API oruDec64 oruDec64RoundHalfEven(oruDec64 x);
ORU_API oruDec64 oruDec64RoundHalfUp(oruDec64 x);
ORU_API oruDec64 oruDec64RoundCeiling(oruDec64 x);
ORU_API oruDec64 oruDec64RoundFloor(oruDec64 x);
ORU_API oruDec64 oruDec64RoundDown(oruDec64 x);
ORU_API oruDec64 oruDec64Round(oruDec64 x, int mode);
ORU_API oruDec64 oruDec64RoundExact(oruDec64 x, int mode);
ORU_API oruDec64 oruDec64NextUp(oruDec64 x);
ORU_API oruDec64 oruDec64NextDown(oruDec64 x);
ORU_API oruDec64 oruDec64NextAfter(oruDec64 x, oruDec64 y);
ORU_API void oruDec64Increment(oruDec64* x);
ORU_API void oruDec64Decrement(oruDec64* x);
ORU_API int oruDec64SameQuantum(oruDec64 x, oruDec64 y);

ORU_API oruDec128* oruDec128Add(oruDec128* res, const oruDec128* x, const oruDec128* y);
ORU_API oruDec128* oruDec128Sub(oruDec128* res, const oruDec128* x, const oruDec128* y);
ORU_API oruDec128* oruDec128Mul(oruDec128* res, const oruDec128* x, const oruDec128* y);
ORU_API oruDec128* oruDec128Div(oruDec128* res, const oruDec128* x, const oruDec128* y);
ORU_API oruDec128* oruDec128FusedMulAdd(oruDec128* res, const oruDec128* x, const oruDec128* y,
                                        const oruDec128* z);
ORU_API oruDec128* oruDec128Sqrt(oruDec128* res, const oruDec128* x);
ORU_API oruDec128* oruDec128Remainder(oruDec128* res, const oruDec128* x, const oruDec128* y);
ORU_API oruDec128* oruDec128Quantize(oruDec128* res, const oruDec128* x, const oruDec128* y,
                                     int mode);
ORU_API oruDec128* oruDec128ScaleB(oruDec128* res, const oruDec128* x, int n);
ORU_API int oruDec128LogB(const oruDec128* x);
ORU_API oruDec128* oruDec128RoundHalfEven(oruDec128* res, const oruDec128* x);
ORU_API oruDec128* oruDec128RoundHalfUp(oruDec128* res, const oruDec128* x);
ORU_API oruDec128* oruDec128RoundCeiling(oruDec128* res, const oruDec128* x);
ORU_API oruDec128* oruDec128RoundFloor(oruDec128* res, const oruDec128* x);
ORU_API oruDec128* oruDec128RoundDown(oruDec128* res, const oruDec128* x);
ORU_API oruDec128* oruDec128Round(oruDec128* res, const oruDec128* x, int mode);
ORU_API oruDec128* oruDec128RoundExact(oruDec128* res, const oruDec128* x, int mode);
ORU_API oruDec128* oruDec128NextUp(oruDec128* res, const oruDec128* x);
ORU_API oruDec128* oruDec128NextDown(oruDec128* res, const oruDec128* x);
ORU_API oruDec128* oruDec128NextAfter(oruDec128* res, const oruDec128* x, const oruDec128* y);
ORU_API void oruDec128Increment(oruDec128* x);
ORU_API void oruDec128Decrement(oruDec128* x);
ORU_API int oruDec128SameQuantum(const oruDec128* x, const oruDec128* y);
/** @} */

/** @{ */
/**
 * Comparisons; predicates return 1 or 0.  Numeric comparison: 1E1 equals
 * 10E0 and +0 equals -0.  The Quiet predicates raise invalid only for a
 * signalling NaN operand, the Signaling ones for any NaN operand; with a
 * NaN operand only NotEqual and Unordered are true.
 *
 * TotalOrder: the IEEE 754-2008 totalOrder predicate (x before or the same
 * as y): -qNaN, -sNaN, -inf, negative numbers, -0, +0, positive numbers,
 * +inf, +sNaN, +qNaN; equal values by exponent; NaNs by payload.
 * TotalOrderMag: TotalOrder of the absolute values.  Neither raises flags.
 *
 * MinNum, MaxNum: the smaller / larger operand; when exactly one is a NaN,
 * the other (with invalid when the NaN signals); two NaNs give a NaN as in
 * arithmetic.  Operands that compare equal are told apart by TotalOrder
 * (Min(+0, -0) is -0; Max(1E1, 10E0) is 1E1).  MinNumMag, MaxNumMag
 * compare magnitudes first, equal magnitudes falling back to MinNum/MaxNum.
 */
ORU_API int oruDec64QuietEqual(oruDec64 x, oruDec64 y);
ORU_API int oruDec64QuietNotEqual(oruDec64 x, oruDec64 y);
ORU_API int oruDec64QuietGreater(oruDec64 x, oruDec64 y);
ORU_API int oruDec64QuietGreaterEqual(oruDec64 x, oruDec64 y);
ORU_API int oruDec64QuietLess(oruDec64 x, oruDec64 y);
ORU_API int oruDec64QuietLessEqual(oruDec64 x, oruDec64 y);
ORU_API int oruDec64QuietOrdered(oruDec64 x, oruDec64 y);
ORU_API int oruDec64QuietUnordered(oruDec64 x, oruDec64 y);
ORU_API int oruDec64SignalingGreater(oruDec64 x, oruDec64 y);
ORU_API int oruDec64SignalingGreaterEqual(oruDec64 x, oruDec64 y);
ORU_API int oruDec64SignalingLess(oruDec64 x, oruDec64 y);
ORU_API int oruDec64SignalingLessEqual(oruDec64 x, oruDec64 y);
ORU_API int oruDec64TotalOrder(oruDec64 x, oruDec64 y);
ORU_API int oruDec64TotalOrderMag(oruDec64 x, oruDec64 y);
ORU_API oruDec64 oruDec64MinNum(oruDec64 x, oruDec64 y);
ORU_API oruDec64 oruDec64MaxNum(oruDec64 x, oruDec64 y);
ORU_API oruDec64 oruDec64MinNumMag(oruDec64 x, oruDec64 y);
ORU_API oruDec64 oruDec64MaxNumMag(oruDec64 x, oruDec64 y);

ORU_API int oruDec128QuietEqual(const oruDec128* x, const oruDec128* y);
ORU_API int oruDec128QuietNotEqual(const oruDec128* x, const oruDec128* y);
ORU_API int oruDec128QuietGreater(const oruDec128* x, const oruDec128* y);
ORU_API int oruDec128QuietGreaterEqual(const oruDec128* x, const oruDec128* y);
ORU_API int oruDec128QuietLess(const oruDec128* x, const oruDec128* y);
ORU_API int oruDec128QuietLessEqual(const oruDec128* x, const oruDec128* y);
ORU_API int oruDec128QuietOrdered(const oruDec128* x, const oruDec128* y);
ORU_API int oruDec128QuietUnordered(const oruDec128* x, const oruDec128* y);
ORU_API int oruDec128SignalingGreater(const oruDec128* x, const oruDec128* y);
ORU_API int oruDec128SignalingGreaterEqual(const oruDec128* x, const oruDec128* y);
ORU_API int oruDec128SignalingLess(const oruDec128* x, const oruDec128* y);
ORU_API int oruDec128SignalingLessEqual(const oruDec128* x, const oruDec128* y);
ORU_API int oruDec128TotalOrder(const oruDec128* x, const oruDec128* y);
ORU_API int oruDec128TotalOrderMag(const oruDec128* x, const oruDec128* y);
ORU_API oruDec128* oruDec128MinNum(oruDec128* res, const oruDec128* x, const oruDec128* y);
ORU_API oruDec128* oruDec128MaxNum(oruDec128* res, const oruDec128* x, const oruDec128* y);
ORU_API oruDec128* oruDec128MinNumMag(oruDec128* res, const oruDec128* x, const oruDec128* y);
ORU_API oruDec128* oruDec128MaxNumMag(oruDec128* res, const oruDec128* x, const oruDec128* y);
/** @} */

/**
 * Reading decimal numbers from text.
 *
 * oruDecParser is an incremental parser, fed one character at a time and
 * owned by the caller (no heap memory).  One parser serves every width: the
 * precision given to oruDecParseInit (7, 16 or 34) picks it, and the value is
 * taken out at the end with that width's ParseGetValue.  Accepted text: an
 * optional sign followed directly by digits, or a leading "." (always the
 * full stop); group separators between integer digits; the configured
 * decimal point after digits; an exponent "E"/"e" with an optional sign and
 * at least one digit, read up to 9999; "inf", "infinity", "nan" and
 * "nan(payload)" in any case (the payload is not kept; "sNaN" is refused).
 * Digits beyond the precision are rounded half-even, an exact tie being
 * decided by the parity of the eighth stored digit.
 */
typedef struct oruDecParser {
  uint32_t decimalPoint;   /**< the decimal-point character */
  uint32_t groupSeparator; /**< the digit-grouping character, 0 for none */
  uint8_t state;           /**< 0 .. 10; 10 is the error / finished state */
  uint8_t precision;       /**< 7, 16 or 34 */
  uint8_t count;           /**< coefficient digits stored, or letters matched */
  uint8_t flags;           /**< rounding information, sign, seen-markers */
  int32_t scale;           /**< stored digits after the point less dropped integer digits */
  int32_t exponent;        /**< explicit exponent magnitude; 0x7FFFFFFF for infinity */
  uint32_t digits[5];      /**< coefficient digits, eight to a word, most significant first */
} oruDecParser;

/** @{ */
/** Results of oruDecParseNextChar: bit 0 says that the text read so far is a
 * number, bit 1 that the caller is to stop feeding. */
#define ORU_DEC_PARSE_MORE 0  /**< accepted; not (yet) a number */
#define ORU_DEC_PARSE_VALID 1 /**< accepted; the text so far is a number */
#define ORU_DEC_PARSE_ERROR 2 /**< rejected; everything after is rejected too */
#define ORU_DEC_PARSE_END 3   /**< accepted; the number is complete */
/** @} */

/**
 * The number-format record shared by the parser (which reads only the
 * decimalPoint and groupSeparator fields, low byte for narrow text) and the
 * formatting functions.
 *
 *   style       ORU_DEC_STYLE_*.
 *   digits      fixed and scientific: digits after the point; general:
 *               significant digits (0 means 1); engineering: significant
 *               digits.  Negative: as many as the value needs (no rounding).
 *   decimalPoint, groupSeparator
 *               the characters (groupSeparator 0: no grouping).
 *   groupSize   integer digits per group, counted from the point (0: 3).
 *   rounding    ORU_DEC_ROUND_* used when digits are dropped.
 *   showPlus    non-zero: a "+" before non-negative numbers.
 */
typedef struct oruDecNumberFormat {
  uint32_t style;          /**< ORU_DEC_STYLE_* */
  int32_t digits;          /**< digits after the point or significant digits */
  uint32_t decimalPoint;   /**< the decimal point character */
  uint32_t groupSeparator; /**< the group separator character, 0 for none */
  uint32_t groupSize;      /**< integer digits per group (0: 3) */
  int32_t rounding;        /**< ORU_DEC_ROUND_* used when digits are dropped */
  uint32_t showPlus;       /**< non-zero: a "+" before non-negative numbers */
} oruDecNumberFormat;

#define ORU_DEC_STYLE_FIXED 0       /**< ddd.ddd, like format(x, ".Nf") */
#define ORU_DEC_STYLE_SCIENTIFIC 1  /**< d.dddE+n, like format(x, ".NE") */
#define ORU_DEC_STYLE_ENGINEERING 2 /**< exponent a multiple of three */
#define ORU_DEC_STYLE_GENERAL 3     /**< fixed or scientific by exponent, like ".NG" */

/** Initialises parser for precision 7, 16 or 34 with the given decimal point
 * (non-zero) and group separator (0 for none); bit 0 of skipSpace lets
 * leading white space be skipped.  Returns 0, or -1 (parser in the error
 * state) for a zero decimal point or another precision. */
ORU_API int oruDecParseInit(oruDecParser* parser, uint32_t precision, char decimalPoint,
                            char groupSeparator, int skipSpace);
/** The same with 16-bit characters. */
ORU_API int oruDecParseInitW(oruDecParser* parser, uint32_t precision, uint16_t decimalPoint,
                             uint16_t groupSeparator, int skipSpace);
/** Feeds one narrow character (taken as unsigned); returns ORU_DEC_PARSE_*. */
ORU_API int oruDecParseNextChar(oruDecParser* parser, char c);
/** Feeds one 16-bit character; returns ORU_DEC_PARSE_*. */
ORU_API int oruDecParseNextWChar(oruDecParser* parser, uint16_t wc);
/** @{ */
/** The value read so far, rounded half-even to the width, with the flags of
 * the rounding.  A parser of another precision gives the positive quiet NaN;
 * text with no digit gives +infinity after "inf", else the quiet NaN; the
 * sign applies to every value. */
ORU_API oruDec32 oruDec32ParseGetValue(const oruDecParser* parser);
ORU_API oruDec64 oruDec64ParseGetValue(const oruDecParser* parser);
ORU_API oruDec128* oruDec128ParseGetValue(oruDec128* res, const oruDecParser* parser);
/** @} */
/** @{ */
/** Reads the longest number at the start of the NUL-terminated str (leading
 * white space skipped).  format may be null (point ".", no grouping).
 * *end (when end is not null) receives str plus the length read; text that
 * is not a number gives +0 and *end == str; a format with decimal point 0
 * reads nothing. */
ORU_API oruDec32 oruDec32ParseString(const oruDecNumberFormat* format, const char* str,
                                     const char** end);
ORU_API oruDec64 oruDec64ParseString(const oruDecNumberFormat* format, const char* str,
                                     const char** end);
ORU_API oruDec128* oruDec128ParseString(oruDec128* res, const oruDecNumberFormat* format,
                                        const char* str, const char** end);
/** @} */

/** @{ */
/**
 * Writing decimal numbers as text.
 *
 * ToString writes the to-scientific-string form of the General Decimal
 * Arithmetic rules ("1.50", "1.5E+3", "-0E-2", "Infinity", "-NaN",
 * "NaN123", "sNaN") with its terminating NUL into buf, which holds size
 * bytes.  Returns ORU_OK, ORU_E_INVALID_ARG for a null buf, or
 * ORU_E_BUFFER_TOO_SMALL (buf then holds "" when size > 0) when size is below
 * the text's length plus one; *length (when not null) receives the text's
 * length without the NUL in every case but the null buf.  A buffer of the
 * width's ORU_DECnn_STRING_MAX bytes always suffices.  Parsing the text back
 * gives the same encoding for every canonical non-NaN value.
 */
#define ORU_DEC32_STRING_MAX 16  /**< buffer size for any decimal32 */
#define ORU_DEC64_STRING_MAX 26  /**< buffer size for any decimal64 */
#define ORU_DEC128_STRING_MAX 45 /**< buffer size for any decimal128 */
ORU_API oruResult oruDec32ToString(oruDec32 x, char* buf, size_t size, size_t* length);
ORU_API oruResult oruDec64ToString(oruDec64 x, char* buf, size_t size, size_t* length);
ORU_API oruResult oruDec128ToString(const oruDec128* x, char* buf, size_t size, size_t* length);
/** @} */

/** @{ */
/**
 * Conversions.  Flags as in arithmetic: widening is exact; narrowing rounds
 * half-even with overflow, underflow and inexact.  NaN payloads are kept
 * when they fit the target, else become 0; a signalling NaN is quieted and
 * raises invalid.
 */
ORU_API oruDec64 oruDec32ToDec64(oruDec32 x);
ORU_API oruDec128* oruDec32ToDec128(oruDec128* res, oruDec32 x);
ORU_API oruDec128* oruDec64ToDec128(oruDec128* res, oruDec64 x);
ORU_API oruDec32 oruDec64ToDec32(oruDec64 x);
ORU_API oruDec32 oruDec128ToDec32(const oruDec128* x);
ORU_API oruDec64 oruDec128ToDec64(const oruDec128* x);
/** @} */

/** @{ */
/**
 * Integers.  From: exact with exponent 0 when the integer fits the
 * precision, else rounded half-even with inexact.  To: rounded to the
 * nearest integer, ties to even, without inexact; a NaN, an infinity or a
 * value whose rounded result does not fit raises invalid and returns the
 * type's minimum (signed: INT32_MIN, INT64_MIN) or maximum (unsigned:
 * UINT32_MAX, UINT64_MAX).  Negative values that round to 0 give 0.
 */
ORU_API oruDec32 oruDec32FromInt32(int32_t v);
ORU_API oruDec32 oruDec32FromUInt32(uint32_t v);
ORU_API oruDec32 oruDec32FromInt64(int64_t v);
ORU_API oruDec32 oruDec32FromUInt64(uint64_t v);
ORU_API oruDec64 oruDec64FromInt32(int32_t v);
ORU_API oruDec64 oruDec64FromUInt32(uint32_t v);
ORU_API oruDec64 oruDec64FromInt64(int64_t v);
ORU_API oruDec64 oruDec64FromUInt64(uint64_t v);
ORU_API oruDec128* oruDec128FromInt32(oruDec128* res, int32_t v);
ORU_API oruDec128* oruDec128FromUInt32(oruDec128* res, uint32_t v);
ORU_API oruDec128* oruDec128FromInt64(oruDec128* res, int64_t v);
ORU_API oruDec128* oruDec128FromUInt64(oruDec128* res, uint64_t v);
ORU_API int32_t oruDec32ToInt32(oruDec32 x);
ORU_API uint32_t oruDec32ToUInt32(oruDec32 x);
ORU_API int64_t oruDec32ToInt64(oruDec32 x);
ORU_API uint64_t oruDec32ToUInt64(oruDec32 x);
ORU_API int32_t oruDec64ToInt32(oruDec64 x);
ORU_API uint32_t oruDec64ToUInt32(oruDec64 x);
ORU_API int64_t oruDec64ToInt64(oruDec64 x);
ORU_API uint64_t oruDec64ToUInt64(oruDec64 x);
ORU_API int32_t oruDec128ToInt32(const oruDec128* x);
ORU_API uint32_t oruDec128ToUInt32(const oruDec128* x);
ORU_API int64_t oruDec128ToInt64(const oruDec128* x);
ORU_API uint64_t oruDec128ToUInt64(const oruDec128* x);
/** @} */

/** @{ */
/**
 * Binary floating point.  Both directions are correctly rounded, ties to
 * even, from the exact value: a double or float to a decimal with inexact,
 * underflow (and, for decimal32, overflow) as for any rounded result; a
 * decimal to double or float with inexact, overflow (to infinity) and
 * underflow (tiny and inexact).  Infinities map to infinities with their
 * sign; NaNs to quiet NaNs with their sign and payload 0, a signalling NaN
 * raising invalid.  Zeros keep their sign and get exponent 0.
 */
ORU_API oruDec32 oruDoubleToDec32(double v);
ORU_API oruDec64 oruDoubleToDec64(double v);
ORU_API oruDec128* oruDoubleToDec128(oruDec128* res, double v);
ORU_API oruDec32 oruFloatToDec32(float v);
ORU_API oruDec64 oruFloatToDec64(float v);
ORU_API oruDec128* oruFloatToDec128(oruDec128* res, float v);
ORU_API double oruDec32ToDouble(oruDec32 x);
ORU_API double oruDec64ToDouble(oruDec64 x);
ORU_API double oruDec128ToDouble(const oruDec128* x);
ORU_API float oruDec32ToFloat(oruDec32 x);
ORU_API float oruDec64ToFloat(oruDec64 x);
ORU_API float oruDec128ToFloat(const oruDec128* x);
/** @} */

/** @{ */
/**
 * Formatting under a number-format record (null: general style, all
 * digits, point ".", no grouping).  Fixed, scientific and general styles
 * lay out digits as Python's format(Decimal(x), code) does for the format codes
 * ".Nf", ".NE" and ".NG" (digits < 0: no precision; groupSeparator ","
 * with groupSize 3: the "," option; showPlus: the "+" option), rounding by
 * the record's direction instead of the context's; engineering shows
 * `digits` significant digits (all when negative) and an exponent that is
 * a multiple of three.  The value is never limited by the width, so fixed
 * text of a large exponent is long.  Infinities are "Infinity", NaNs "NaN"
 * or "sNaN" without payload, each with its sign.  Buffer convention as for
 * ToString (size counts characters, NUL included); no flags are raised.
 */
ORU_API oruResult oruDec32FormatString(oruDec32 x, const oruDecNumberFormat* format, char* buf,
                                       size_t size, size_t* length);
ORU_API oruResult oruDec64FormatString(oruDec64 x, const oruDecNumberFormat* format, char* buf,
                                       size_t size, size_t* length);
ORU_API oruResult oruDec128FormatString(const oruDec128* x, const oruDecNumberFormat* format,
                                        char* buf, size_t size, size_t* length);
ORU_API oruResult oruDec32FormatWString(oruDec32 x, const oruDecNumberFormat* format, uint16_t* buf,
                                        size_t size, size_t* length);
ORU_API oruResult oruDec64FormatWString(oruDec64 x, const oruDecNumberFormat* format, uint16_t* buf,
                                        size_t size, size_t* length);
ORU_API oruResult oruDec128FormatWString(const oruDec128* x, const oruDecNumberFormat* format,
                                         uint16_t* buf, size_t size, size_t* length);
/** @} */

#ifdef __cplusplus
}
#endif

#endif /* ORU_DECIMAL_H */
