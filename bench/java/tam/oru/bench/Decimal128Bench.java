package tam.oru.bench;

import java.math.BigDecimal;
import java.math.MathContext;
import java.util.Random;
import tam.oru.ieee754.Decimal128;

/**
 * Decimal128 add and multiply through JNI against BigDecimal with
 * MathContext.DECIMAL128, after warm-up, on the same operands.  Prints the
 * time per operation and the ratio oru / BigDecimal.  The raw rows call the
 * natives into one reused array, so they show the JNI call itself without
 * the allocation of the value class.
 */
public final class Decimal128Bench {
    private static final int N = 1024;
    private static long sink;

    private interface Loop {
        long run(int rounds);
    }

    private static double nsPerOp(Loop loop, int rounds) {
        for (int i = 0; i < 5; ++i) sink += loop.run(rounds); // warm-up
        double best = Double.MAX_VALUE;
        for (int i = 0; i < 5; ++i) {
            long t0 = System.nanoTime();
            sink += loop.run(rounds);
            best = Math.min(best, (System.nanoTime() - t0) / (double) rounds / N);
        }
        return best;
    }

    public static void main(String[] args) {
        int rounds = args.length > 0 ? Integer.parseInt(args[0]) : 2000;
        Random rnd = new Random(1);
        BigDecimal[] bx = new BigDecimal[N], by = new BigDecimal[N];
        Decimal128[] dx = new Decimal128[N], dy = new Decimal128[N];
        for (int i = 0; i < N; ++i) {
            // Typical money-like operands: up to 12 digits, 2 to 6 decimals.
            bx[i] = BigDecimal.valueOf(rnd.nextLong() % 1_000_000_000_000L, 2 + rnd.nextInt(5));
            by[i] = BigDecimal.valueOf(rnd.nextLong() % 1_000_000_000_000L, 2 + rnd.nextInt(5));
            dx[i] = Decimal128.valueOf(bx[i]);
            dy[i] = Decimal128.valueOf(by[i]);
        }
        MathContext mc = MathContext.DECIMAL128;
        long[] res = new long[2];
        double oruAdd = nsPerOp(r -> {
            long s = 0;
            for (int k = 0; k < r; ++k)
                for (int i = 0; i < N; ++i) s += dx[i].add(dy[i]).low();
            return s;
        }, rounds);
        double rawAdd = nsPerOp(r -> {
            long s = 0;
            for (int k = 0; k < r; ++k)
                for (int i = 0; i < N; ++i) {
                    Decimal128.add(res, dx[i].high(), dx[i].low(), dy[i].high(), dy[i].low());
                    s += res[0];
                }
            return s;
        }, rounds);
        double bigAdd = nsPerOp(r -> {
            long s = 0;
            for (int k = 0; k < r; ++k)
                for (int i = 0; i < N; ++i) s += bx[i].add(by[i], mc).scale();
            return s;
        }, rounds);
        double oruMul = nsPerOp(r -> {
            long s = 0;
            for (int k = 0; k < r; ++k)
                for (int i = 0; i < N; ++i) s += dx[i].multiply(dy[i]).low();
            return s;
        }, rounds);
        double rawMul = nsPerOp(r -> {
            long s = 0;
            for (int k = 0; k < r; ++k)
                for (int i = 0; i < N; ++i) {
                    Decimal128.mul(res, dx[i].high(), dx[i].low(), dy[i].high(), dy[i].low());
                    s += res[0];
                }
            return s;
        }, rounds);
        double bigMul = nsPerOp(r -> {
            long s = 0;
            for (int k = 0; k < r; ++k)
                for (int i = 0; i < N; ++i) s += bx[i].multiply(by[i], mc).scale();
            return s;
        }, rounds);
        // A native that does almost nothing: the cost of the JNI call alone.
        double rawClass = nsPerOp(r -> {
            long s = 0;
            for (int k = 0; k < r; ++k)
                for (int i = 0; i < N; ++i) s += Decimal128.fpClass(dx[i].high(), dx[i].low());
            return s;
        }, rounds);
        System.out.printf("%-28s %8s %8s%n", "operation", "ns/op", "ratio");
        System.out.printf("%-28s %8.1f %8s%n", "Decimal128.fpClass (raw)", rawClass, "-");
        System.out.printf("%-28s %8.1f %8.2f%n", "Decimal128.add", oruAdd, oruAdd / bigAdd);
        System.out.printf("%-28s %8.1f %8.2f%n", "Decimal128.add (raw)", rawAdd, rawAdd / bigAdd);
        System.out.printf("%-28s %8.1f %8s%n", "BigDecimal.add DECIMAL128", bigAdd, "1.00");
        System.out.printf("%-28s %8.1f %8.2f%n", "Decimal128.multiply", oruMul, oruMul / bigMul);
        System.out.printf("%-28s %8.1f %8.2f%n", "Decimal128.mul (raw)", rawMul, rawMul / bigMul);
        System.out.printf("%-28s %8.1f %8s%n", "BigDecimal.multiply DEC128", bigMul, "1.00");
        if (sink == 42) System.out.println();
    }
}
