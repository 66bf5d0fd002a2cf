package tam.oru.ieee754;

import static org.junit.jupiter.api.Assertions.*;
import static tam.oru.ieee754.Decimal128.*;

import java.math.BigDecimal;
import java.math.BigInteger;
import java.math.MathContext;
import java.util.Random;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

class Decimal128Test {
    static final long ONE_HIGH = 0x3040000000000000L; // exponent 0, coefficient high bits 0

    static Decimal128 d(String s) {
        return Decimal128.parse(s);
    }

    /** Runs a raw method writing into res and reads the value back. */
    interface Raw {
        void run(long[] res);
    }

    static String raw(Raw op) {
        long[] res = new long[2];
        op.run(res);
        return Decimal128.fromWords(res[1], res[0]).toString();
    }

    @Test
    void argumentsHighFirstResultsLowFirst() {
        long[] res = new long[2];
        Decimal128.add(res, ONE_HIGH, 1, ONE_HIGH, 2);
        assertArrayEquals(new long[] {3, ONE_HIGH}, res);
        long[] longer = {7, 7, 7};
        Decimal128.fromInt64(longer, -5);
        assertArrayEquals(new long[] {5, 0xB040000000000000L, 7}, longer);
        assertEquals(5.0, Decimal128.toDouble(ONE_HIGH, 5));
        Decimal128 v = Decimal128.valueOf(12);
        assertEquals(ONE_HIGH, v.high());
        assertEquals(12, v.low());
    }

    @Test
    void shortOrMissingResultArrayIsLeftAlone() {
        long[] one = {42};
        Decimal128.add(one, ONE_HIGH, 1, ONE_HIGH, 2);
        assertArrayEquals(new long[] {42}, one);
        assertDoesNotThrow(() -> Decimal128.sqrt(null, ONE_HIGH, 4));
        assertDoesNotThrow(() -> Decimal128.parseString(null, "1"));
    }

    // Every raw method producing a decimal, with independently worked results.
    @Test
    void rawArithmetic() {
        Decimal128 a = d("1.5"), b = d("2.25"), ten = d("10"), three = d("3");
        long ah = a.high(), al = a.low(), bh = b.high(), bl = b.low();
        assertEquals("3.75", raw(r -> add(r, ah, al, bh, bl)));
        assertEquals("-0.75", raw(r -> sub(r, ah, al, bh, bl)));
        assertEquals("3.375", raw(r -> mul(r, ah, al, bh, bl)));
        assertEquals("0.6666666666666666666666666666666667", raw(r -> div(r, ah, al, bh, bl)));
        assertEquals("1", raw(r -> remainder(r, ten.high(), ten.low(), three.high(), three.low())));
        assertEquals("-1", raw(r -> remainder(r, d("11").high(), d("11").low(), three.high(),
                                   three.low())));
        Decimal128 nan = d("NaN"), m3 = d("-3"), two = d("2");
        assertEquals("1.5", raw(r -> maxNum(r, ah, al, nan.high(), nan.low())));
        assertEquals("1.5", raw(r -> minNum(r, nan.high(), nan.low(), ah, al)));
        assertEquals("2.25", raw(r -> maxNum(r, ah, al, bh, bl)));
        assertEquals("-3", raw(r -> maxNumMag(r, m3.high(), m3.low(), two.high(), two.low())));
        assertEquals("2", raw(r -> minNumMag(r, m3.high(), m3.low(), two.high(), two.low())));
        assertEquals("10", raw(r -> fusedMulAdd(r, two.high(), two.low(), three.high(), three.low(),
                                   d("4").high(), d("4").low())));
        Decimal128 x = d("2.345"), q = d("0.01");
        assertEquals("2.34", raw(r -> quantize(r, x.high(), x.low(), q.high(), q.low(),
                                     ROUND_HALF_EVEN)));
        // Quantize rounds half-even whatever the mode.
        assertEquals("2.34", raw(r -> quantize(r, x.high(), x.low(), q.high(), q.low(),
                                     ROUND_HALF_UP)));
        assertEquals("2.35", d("2.3451").quantize(q).toString());
        assertEquals("1.5E+3", raw(r -> scaleB(r, ah, al, 3)));
        assertEquals("4", raw(r -> sqrt(r, d("16").high(), d("16").low())));
        Decimal128 one = d("1");
        assertEquals("1.000000000000000000000000000000001", raw(r -> nextUp(r, one.high(), one.low())));
        assertEquals("0.9999999999999999999999999999999999",
                raw(r -> nextDown(r, one.high(), one.low())));
    }

    @ParameterizedTest
    @CsvSource({"2.5, 3, 2, 2, 2, 3", "-2.5, -2, -2, -3, -2, -3", "7.49, 8, 7, 7, 7, 7"})
    void rawRoundingToIntegral(String x, String ceil, String down, String floor, String halfEven,
            String halfUp) {
        long h = d(x).high(), l = d(x).low();
        assertEquals(ceil, raw(r -> roundCeiling(r, h, l)));
        assertEquals(down, raw(r -> roundDown(r, h, l)));
        assertEquals(floor, raw(r -> roundFloor(r, h, l)));
        assertEquals(halfEven, raw(r -> roundHalfEven(r, h, l)));
        assertEquals(halfUp, raw(r -> roundHalfUp(r, h, l)));
    }

    @Test
    void rawConversions() {
        // BigDecimal(double) and BigDecimal(float) are the exact binary values.
        for (double v : new double[] {0.1, -1e300, 5e-324, 123456.789, Math.PI}) {
            long[] r = new long[2];
            fromDouble(r, v);
            assertEquals(0, new BigDecimal(v).round(MathContext.DECIMAL128)
                                    .compareTo(Decimal128.fromWords(r[1], r[0]).toBigDecimal()));
            assertEquals(v, toDouble(r[1], r[0]));
        }
        long[] f = new long[2];
        fromFloat(f, 0.1f);
        assertEquals(0, new BigDecimal(0.1f).compareTo(Decimal128.fromWords(f[1], f[0]).toBigDecimal()));
        assertEquals(0.1f, toFloat(f[1], f[0]));
        assertEquals("-7", raw(r -> fromInt32(r, -7)));
        assertEquals("-9223372036854775808", raw(r -> fromInt64(r, Long.MIN_VALUE)));
        Decimal128 x = d("-3.5");
        assertEquals(-4, toInt32(x.high(), x.low()));
        assertEquals(2, toInt32(d("2.5").high(), d("2.5").low()));
        assertEquals(Integer.MIN_VALUE, toInt32(d("3E+9").high(), d("3E+9").low()));
        assertEquals(1_000_000_000_000_000_000L, toInt64(d("1E18").high(), d("1E18").low()));
        assertEquals(Long.MIN_VALUE, toInt64(d("NaN").high(), d("NaN").low()));
        // decimal64 1.5: biased exponent 397 above coefficient 15.
        assertEquals(397L << 53 | 15, toDec64(d("1.5").high(), d("1.5").low()));
    }

    @Test
    void rawClassification() {
        String[][] classes = {{"sNaN", "0"}, {"NaN", "1"}, {"-Infinity", "2"}, {"-1", "3"},
                {"-1E-6176", "4"}, {"-0", "5"}, {"0", "6"}, {"1E-6176", "7"}, {"1", "8"},
                {"Infinity", "9"}};
        for (String[] c : classes) {
            Decimal128 v = c[0].equals("sNaN") ? Decimal128.fromWords(0x7E00000000000000L, 0) : d(c[0]);
            assertEquals(Integer.parseInt(c[1]), fpClass(v.high(), v.low()), c[0]);
        }
        Decimal128 sub = d("1E-6176"), one = d("1");
        assertTrue(isCanonical(one.high(), one.low()));
        assertFalse(isCanonical(0x3041ED09BEAD87C0L, 0x378D8E6400000000L)); // coefficient 10^34
        assertTrue(isNormal(one.high(), one.low()));
        assertFalse(isNormal(sub.high(), sub.low()));
        assertTrue(isSubnormal(sub.high(), sub.low()));
        assertFalse(isSubnormal(one.high(), one.low()));
        assertEquals(4, logB(d("12345").high(), d("12345").low()));
        assertEquals(-6176, logB(sub.high(), sub.low()));
    }

    // x, y and the answers of the relations in the order of the columns.
    @ParameterizedTest
    @CsvSource({
        // x,    y,   eq,    gt,    ge,    lt,    le,    ne,    ord,   unord, sameQ, total, totalMag
        "1.0,   1,    true,  false, true,  false, true,  false, true,  false, false, true,  true",
        "1.00,  1.0,  true,  false, true,  false, true,  false, true,  false, false, true,  true",
        "2,     1,    false, true,  true,  false, false, true,  true,  false, true,  false, false",
        "-2,    1,    false, false, false, true,  true,  true,  true,  false, true,  true,  false",
        "NaN,   1,    false, false, false, false, false, true,  false, true,  false, false, false",
        "1,     NaN,  false, false, false, false, false, true,  false, true,  false, true,  true",
    })
    void rawRelations(String xs, String ys, boolean eq, boolean gt, boolean ge, boolean lt,
            boolean le, boolean ne, boolean ord, boolean unord, boolean sameQ, boolean total,
            boolean totalMag) {
        long xh = d(xs).high(), xl = d(xs).low(), yh = d(ys).high(), yl = d(ys).low();
        assertEquals(eq, quietEqual(xh, xl, yh, yl));
        assertEquals(gt, quietGreater(xh, xl, yh, yl));
        assertEquals(ge, quietGreaterEqual(xh, xl, yh, yl));
        assertEquals(lt, quietLess(xh, xl, yh, yl));
        assertEquals(le, quietLessEqual(xh, xl, yh, yl));
        assertEquals(ne, quietNotEqual(xh, xl, yh, yl));
        assertEquals(ord, quietOrdered(xh, xl, yh, yl));
        assertEquals(unord, quietUnordered(xh, xl, yh, yl));
        assertEquals(sameQ, sameQuantum(xh, xl, yh, yl));
        assertEquals(total, totalOrder(xh, xl, yh, yl));
        assertEquals(totalMag, totalOrderMag(xh, xl, yh, yl));
    }

    @Test
    void textRoundTripsAndRejectsJunk() {
        for (String s : new String[] {"0", "-0", "1.50", "1.5E+3", "-0.00", "0E+3", "Infinity",
                     "-Infinity", "NaN", "-NaN", "9.999999999999999999999999999999999E+6144",
                     "1E-6176", "-1.234E-6150"}) {
            assertEquals(s, d(s).toString());
        }
        assertEquals("1.234567890123456789012345678901235E+35",
                d("123456789012345678901234567890123456").toString()); // 36 digits, rounded
        long[] r = new long[2];
        assertEquals(2, parseString(r, "12abc"));
        assertEquals("12", Decimal128.fromWords(r[1], r[0]).toString());
        assertEquals(0, parseString(r, "abc"));
        assertEquals("sNaN", Decimal128.fromWords(0x7E00000000000000L, 0).toString());
        for (String bad : new String[] {"", " 1", "1 ", "1.2.3", "12abc", "--1", "1\u00e9", "\u0000"}) {
            assertThrows(NumberFormatException.class, () -> Decimal128.parse(bad), bad);
        }
    }

    @Test
    void orderEqualityAndHash() {
        assertNotEquals(d("1.0"), d("1.00"));
        assertTrue(d("1.00").compareTo(d("1.0")) < 0);
        assertTrue(d("-1.00").compareTo(d("-1.0")) > 0);
        assertTrue(d("-0").compareTo(d("0")) < 0);
        assertTrue(d("Infinity").compareTo(d("NaN")) < 0);
        assertEquals(d("2.5"), d("25E-1"));
        assertEquals(d("2.5").hashCode(), d("25E-1").hashCode());
        // A coefficient of 10^34 or more is read as zero with that exponent.
        Decimal128 nonCanonical = Decimal128.fromWords(0x3041ED09BEAD87C0L, 0x378D8E6400000000L);
        assertEquals(0, nonCanonical.compareTo(d("0")));
        assertEquals(d("0"), nonCanonical);
        assertEquals(d("0").hashCode(), nonCanonical.hashCode());
        Decimal128 oddInfinity = Decimal128.fromWords(0x7A00000000000000L, 5);
        assertEquals(d("Infinity"), oddInfinity);
        assertEquals(d("Infinity").hashCode(), oddInfinity.hashCode());
    }

    @Test
    void bigDecimalConversions() {
        BigDecimal big = new BigDecimal("-1234567890123456789012345678901234E-6176");
        assertEquals(big, Decimal128.valueOf(big).toBigDecimal());
        assertEquals(new BigDecimal("1.000000000000000000000000000000000E+40"),
                Decimal128.valueOf(new BigDecimal("1E+40").add(BigDecimal.ONE)).toBigDecimal());
        assertEquals("Infinity", Decimal128.valueOf(new BigDecimal("1E+7000")).toString());
        assertEquals("0E-6176", Decimal128.valueOf(new BigDecimal("1E-7000")).toString());
        assertThrows(ArithmeticException.class, () -> d("NaN").toBigDecimal());
        assertEquals("0.1000000000000000055511151231257827", Decimal128.valueOf(0.1).toString());
        assertEquals("-42", Decimal128.valueOf(-42L).toString());
        assertEquals(0.25, d("0.25").doubleValue());
    }

    /** A random operand: up to 34 digits, exponent in [-40, 40]. */
    static BigDecimal operand(Random rnd, boolean nonZero) {
        BigInteger c;
        do {
            c = new BigInteger(113, rnd).mod(BigInteger.TEN.pow(1 + rnd.nextInt(34)));
        } while (nonZero && c.signum() == 0);
        BigDecimal v = new BigDecimal(rnd.nextBoolean() ? c : c.negate(), rnd.nextInt(81) - 40);
        return v;
    }

    @Test
    void arithmeticAgreesWithBigDecimal() {
        MathContext mc = MathContext.DECIMAL128;
        Random rnd = new Random(20261123);
        for (int i = 0; i < 4000; ++i) {
            BigDecimal x = operand(rnd, false), y = operand(rnd, true), z = operand(rnd, false);
            Decimal128 dx = Decimal128.valueOf(x), dy = Decimal128.valueOf(y),
                       dz = Decimal128.valueOf(z);
            String ctx = x + ", " + y + ", " + z;
            assertEquals(x, dx.toBigDecimal(), ctx);
            assertEquals(x.toString(), dx.toString(), ctx);
            assertEquals(x.add(y, mc), dx.add(dy).toBigDecimal(), ctx);
            assertEquals(x.subtract(y, mc), dx.subtract(dy).toBigDecimal(), ctx);
            assertEquals(x.multiply(y, mc), dx.multiply(dy).toBigDecimal(), ctx);
            assertEquals(x.divide(y, mc), dx.divide(dy).toBigDecimal(), ctx);
            assertEquals(x.multiply(y).add(z, mc), dx.fma(dy, dz).toBigDecimal(), ctx);
            // BigDecimal's preferred scale for sqrt truncates where IEEE floors: values only.
            BigDecimal ax = x.abs();
            assertEquals(0, ax.sqrt(mc).compareTo(Decimal128.valueOf(ax).sqrt().toBigDecimal()), ctx);
        }
    }
}
