package tam.oru.ieee754;

import java.math.BigDecimal;
import java.math.BigInteger;

/**
 * IEEE 754-2008 decimal128 numbers (binary integer significand encoding),
 * computed by the oru library.
 *
 * <p>The class has two layers.
 *
 * <p><b>Raw methods.</b> The static native methods take each decimal128
 * operand as two {@code long} parameters, the high 64-bit word (sign,
 * exponent) first, then the low word. Methods giving a decimal128 write it
 * into a caller-supplied {@code long[] res} of at least two elements:
 * {@code res[0]} receives the low word and {@code res[1]} the high word. An
 * array that is null or shorter than two elements is left alone. Arithmetic
 * rounds to nearest, ties to even. No raw method throws; IEEE status flags go
 * to the calling native thread's flag word, which Java cannot read. Predicates
 * answer {@code boolean} (the library's 0 or 1). {@link #toString(long, long)}
 * and {@link #parseString(long[], String)} are additions beyond the core set
 * of raw methods, behind {@link #toString()} and {@link #parse(String)}.
 *
 * <p><b>Values.</b> Instances are immutable and hold the two words. They
 * order by the IEEE total order ({@link #compareTo}), so {@code 1.0} and
 * {@code 1.00} are different (and unequal) values, as with
 * {@link BigDecimal#equals}; {@link #equals} and {@link #hashCode} agree with
 * that order.
 *
 * <p>Loading this class loads the native library with
 * {@code System.loadLibrary("oru")}.
 */
public final class Decimal128 implements Comparable<Decimal128> {
    static {
        System.loadLibrary("oru");
    }

    /** Rounding to nearest, ties to even (the mode of arithmetic). */
    public static final int ROUND_HALF_EVEN = 0;
    /** Rounding to nearest, ties away from zero. */
    public static final int ROUND_HALF_UP = 1;
    /** Rounding towards positive infinity. */
    public static final int ROUND_CEILING = 2;
    /** Rounding towards negative infinity. */
    public static final int ROUND_FLOOR = 3;
    /** Rounding towards zero. */
    public static final int ROUND_DOWN = 4;

    /** Values of {@link #fpClass}. */
    public static final int SIGNALING_NAN = 0, QUIET_NAN = 1, NEGATIVE_INFINITY = 2,
            NEGATIVE_NORMAL = 3, NEGATIVE_SUBNORMAL = 4, NEGATIVE_ZERO = 5, POSITIVE_ZERO = 6,
            POSITIVE_SUBNORMAL = 7, POSITIVE_NORMAL = 8, POSITIVE_INFINITY = 9;

    private static final int BIAS = 6176;
    private static final int MAX_BIASED_EXPONENT = 12287;
    private static final long SIGN = 0x8000000000000000L;
    private static final long HIGH_COEFFICIENT = 0x0001FFFFFFFFFFFFL;
    private static final BigInteger TEN_POW_34 = BigInteger.TEN.pow(34);
    private static final BigInteger LOW_MASK = BigInteger.ONE.shiftLeft(64).subtract(BigInteger.ONE);

    private final long high;
    private final long low;

    private Decimal128(long high, long low) {
        this.high = high;
        this.low = low;
    }

    private static Decimal128 of(long[] r) {
        return new Decimal128(r[1], r[0]);
    }

    // ---- raw methods ------------------------------------------------------

    public static native void add(long[] res, long xh, long xl, long yh, long yl);
    public static native void sub(long[] res, long xh, long xl, long yh, long yl);
    public static native void mul(long[] res, long xh, long xl, long yh, long yl);
    public static native void div(long[] res, long xh, long xl, long yh, long yl);
    public static native void remainder(long[] res, long xh, long xl, long yh, long yl);
    public static native void maxNum(long[] res, long xh, long xl, long yh, long yl);
    public static native void maxNumMag(long[] res, long xh, long xl, long yh, long yl);
    public static native void minNum(long[] res, long xh, long xl, long yh, long yl);
    public static native void minNumMag(long[] res, long xh, long xl, long yh, long yl);
    /** res = x * y + z with one rounding. */
    public static native void fusedMulAdd(long[] res, long xh, long xl, long yh, long yl, long zh,
            long zl);
    /**
     * x with the exponent of y.  The library rounds half-even whatever the
     * mode; pass {@link #ROUND_HALF_EVEN}.  The directed roundings are the
     * round methods (to an integral value).
     */
    public static native void quantize(long[] res, long xh, long xl, long yh, long yl, int mode);
    public static native void scaleB(long[] res, long xh, long xl, int n);
    public static native void sqrt(long[] res, long xh, long xl);
    public static native void nextUp(long[] res, long xh, long xl);
    public static native void nextDown(long[] res, long xh, long xl);
    public static native void roundCeiling(long[] res, long xh, long xl);
    public static native void roundDown(long[] res, long xh, long xl);
    public static native void roundFloor(long[] res, long xh, long xl);
    public static native void roundHalfEven(long[] res, long xh, long xl);
    public static native void roundHalfUp(long[] res, long xh, long xl);
    /** Correctly rounded from the exact binary value. */
    public static native void fromDouble(long[] res, double v);
    public static native void fromFloat(long[] res, float v);
    public static native void fromInt32(long[] res, int v);
    public static native void fromInt64(long[] res, long v);
    /** The IEEE class, one of the class constants. */
    public static native int fpClass(long xh, long xl);
    public static native boolean isCanonical(long xh, long xl);
    public static native boolean isNormal(long xh, long xl);
    public static native boolean isSubnormal(long xh, long xl);
    public static native int logB(long xh, long xl);
    /** Rounded half-even; NaN, infinity and overflow give Integer.MIN_VALUE. */
    public static native int toInt32(long xh, long xl);
    /** Rounded half-even; NaN, infinity and overflow give Long.MIN_VALUE. */
    public static native long toInt64(long xh, long xl);
    /** The decimal64 encoding of x, rounded half-even. */
    public static native long toDec64(long xh, long xl);
    public static native double toDouble(long xh, long xl);
    public static native float toFloat(long xh, long xl);
    public static native boolean quietEqual(long xh, long xl, long yh, long yl);
    public static native boolean quietGreater(long xh, long xl, long yh, long yl);
    public static native boolean quietGreaterEqual(long xh, long xl, long yh, long yl);
    public static native boolean quietLess(long xh, long xl, long yh, long yl);
    public static native boolean quietLessEqual(long xh, long xl, long yh, long yl);
    public static native boolean quietNotEqual(long xh, long xl, long yh, long yl);
    public static native boolean quietOrdered(long xh, long xl, long yh, long yl);
    public static native boolean quietUnordered(long xh, long xl, long yh, long yl);
    public static native boolean sameQuantum(long xh, long xl, long yh, long yl);
    /** Whether x comes before y or is y in the IEEE total order. */
    public static native boolean totalOrder(long xh, long xl, long yh, long yl);
    public static native boolean totalOrderMag(long xh, long xl, long yh, long yl);

    /**
     * Addition to the core raw methods: the scientific string form of x
     * ("1.50", "1.5E+3", "-0E-2", "Infinity", "NaN", "sNaN").
     */
    public static native String toString(long xh, long xl);

    /**
     * Addition to the core raw methods: reads the longest number at the start
     * of s (leading white space skipped), rounded half-even, into res.
     *
     * @return the number of characters read; 0 (and +0 in res) when s does
     *     not start with a number
     */
    public static native int parseString(long[] res, String s);

    // ---- values -----------------------------------------------------------

    /**
     * The value of two encoding words.
     *
     * @param high the high word (sign, combination field)
     * @param low the low word
     * @return the value
     */
    public static Decimal128 fromWords(long high, long low) {
        return new Decimal128(high, low);
    }

    /** @return the high word of the encoding */
    public long high() {
        return high;
    }

    /** @return the low word of the encoding */
    public long low() {
        return low;
    }

    /**
     * @param v an integer
     * @return v with exponent 0 (exact: a long has at most 19 digits)
     */
    public static Decimal128 valueOf(long v) {
        long[] r = new long[2];
        fromInt64(r, v);
        return of(r);
    }

    /**
     * @param v a double
     * @return the exact binary value rounded half-even to 34 digits; NaN
     *     becomes a quiet NaN, infinities stay infinite
     */
    public static Decimal128 valueOf(double v) {
        long[] r = new long[2];
        fromDouble(r, v);
        return of(r);
    }

    /**
     * Reads a decimal number: optional sign, digits with an optional point,
     * optional exponent, or "Infinity", "Inf" or "NaN" in any case. More than
     * 34 digits are rounded half-even.
     *
     * @param s the text, nothing before or after the number
     * @return the value
     * @throws NumberFormatException when s is not exactly one number
     */
    public static Decimal128 parse(String s) {
        if (s.isEmpty() || Character.isWhitespace(s.charAt(0))) {
            throw new NumberFormatException("not a decimal number: \"" + s + "\"");
        }
        long[] r = new long[2];
        if (parseString(r, s) != s.length()) {
            throw new NumberFormatException("not a decimal number: \"" + s + "\"");
        }
        return of(r);
    }

    /**
     * @return the scientific string form, which {@link #parse} reads back
     *     to the same value (NaN payloads and signalling NaNs aside)
     */
    @Override
    public String toString() {
        return toString(high, low);
    }

    public Decimal128 add(Decimal128 y) {
        long[] r = new long[2];
        add(r, high, low, y.high, y.low);
        return of(r);
    }

    public Decimal128 subtract(Decimal128 y) {
        long[] r = new long[2];
        sub(r, high, low, y.high, y.low);
        return of(r);
    }

    public Decimal128 multiply(Decimal128 y) {
        long[] r = new long[2];
        mul(r, high, low, y.high, y.low);
        return of(r);
    }

    public Decimal128 divide(Decimal128 y) {
        long[] r = new long[2];
        div(r, high, low, y.high, y.low);
        return of(r);
    }

    /** @return this * y + z, rounded once */
    public Decimal128 fma(Decimal128 y, Decimal128 z) {
        long[] r = new long[2];
        fusedMulAdd(r, high, low, y.high, y.low, z.high, z.low);
        return of(r);
    }

    public Decimal128 sqrt() {
        long[] r = new long[2];
        sqrt(r, high, low);
        return of(r);
    }

    /**
     * @return this with the exponent of y, rounded half-even; NaN when that
     *     needs more than 34 digits
     */
    public Decimal128 quantize(Decimal128 y) {
        long[] r = new long[2];
        quantize(r, high, low, y.high, y.low, ROUND_HALF_EVEN);
        return of(r);
    }

    /** @return this value rounded to the nearest double, ties to even */
    public double doubleValue() {
        return toDouble(high, low);
    }

    /** @return true for quiet and signalling NaNs */
    public boolean isNaN() {
        return (high & 0x7C00000000000000L) == 0x7C00000000000000L;
    }

    /** @return true for finite values (neither infinite nor NaN) */
    public boolean isFinite() {
        return (high & 0x7800000000000000L) != 0x7800000000000000L;
    }

    /**
     * Orders by the IEEE total order: -NaN, -Infinity, negative numbers,
     * -0, +0, positive numbers, +Infinity, +NaN; equal numbers with
     * different exponents order by exponent (1.0 before 1.00 for negative,
     * 1.00 before 1.0 for positive values).
     */
    @Override
    public int compareTo(Decimal128 y) {
        if (high == y.high && low == y.low) {
            return 0;
        }
        boolean le = totalOrder(high, low, y.high, y.low);
        boolean ge = totalOrder(y.high, y.low, high, low);
        return le == ge ? 0 : le ? -1 : 1;
    }

    /** Equal when neither comes before the other in the total order. */
    @Override
    public boolean equals(Object o) {
        return o instanceof Decimal128 && compareTo((Decimal128) o) == 0;
    }

    /**
     * Consistent with {@link #equals}: computed from the sign and, for
     * finite values, the exponent and the coefficient (a non-canonical
     * coefficient counting as zero); NaNs hash by sign and kind only.
     */
    @Override
    public int hashCode() {
        if (!isFinite()) {
            // Sign and kind: infinity, quiet or signalling NaN; the bits
            // below them do not change an infinity, and NaNs may collide.
            return Long.hashCode(high & (isNaN() ? 0xFE00000000000000L : 0xFC00000000000000L));
        }
        long coefficientHigh = (high >>> 61 & 3) == 3 ? 0 : high & HIGH_COEFFICIENT;
        long coefficientLow = (high >>> 61 & 3) == 3 ? 0 : low;
        if (coefficient(coefficientHigh, coefficientLow).compareTo(TEN_POW_34) >= 0) {
            coefficientHigh = 0;
            coefficientLow = 0;
        }
        return 31 * (31 * Long.hashCode(high & SIGN) + biasedExponent())
                + Long.hashCode(coefficientHigh ^ coefficientLow);
    }

    private int biasedExponent() {
        return (int) ((high >>> 61 & 3) == 3 ? high >>> 47 & 0x3FFF : high >>> 49 & 0x3FFF);
    }

    private static BigInteger coefficient(long coefficientHigh, long coefficientLow) {
        return BigInteger.valueOf(coefficientHigh)
                .shiftLeft(64)
                .or(BigInteger.valueOf(coefficientLow).and(LOW_MASK));
    }

    /**
     * The exact value as a BigDecimal, with the same scale (a negative zero
     * loses its sign).
     *
     * @return the value
     * @throws ArithmeticException for infinities and NaNs
     */
    public BigDecimal toBigDecimal() {
        if (!isFinite()) {
            throw new ArithmeticException(toString() + " has no BigDecimal value");
        }
        BigInteger c = (high >>> 61 & 3) == 3 ? BigInteger.ZERO
                                              : coefficient(high & HIGH_COEFFICIENT, low);
        if (c.compareTo(TEN_POW_34) >= 0) {
            c = BigInteger.ZERO;
        }
        BigDecimal v = new BigDecimal(c, BIAS - biasedExponent());
        return high < 0 ? v.negate() : v;
    }

    /**
     * The value of a BigDecimal: exact, with the same exponent, when the
     * unscaled value has at most 34 digits and the exponent -scale lies in
     * [-6176, 6111]; otherwise rounded half-even (to zero or infinity beyond
     * the range).
     *
     * @param v a number
     * @return the value
     */
    public static Decimal128 valueOf(BigDecimal v) {
        BigInteger u = v.unscaledValue();
        long e = -(long) v.scale() + BIAS;
        if (u.abs().compareTo(TEN_POW_34) < 0 && e >= 0 && e <= MAX_BIASED_EXPONENT) {
            BigInteger a = u.abs();
            long h = a.shiftRight(64).longValue() | e << 49 | (u.signum() < 0 ? SIGN : 0);
            return new Decimal128(h, a.longValue());
        }
        return parse(v.toString());
    }
}
