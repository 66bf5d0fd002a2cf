package tam.oru;

/**
 * A failure reported by the oru library, carrying the library's result code
 * (an {@code oruResult}, a negative {@code int} for failures).
 *
 * <p>The class is unchecked, like {@link java.io.UncheckedIOException}: the
 * host queries fail only when the system itself fails, which callers rarely
 * can handle where the call is made.
 */
public class ORUException extends RuntimeException {
    private static final long serialVersionUID = 1L;

    /** The library's result code. */
    private final int result;

    /**
     * An exception for a result code, with the text
     * {@code "oru result 0x8xxxxxxx"} as its message.
     *
     * @param result the library's result code
     */
    public ORUException(int result) {
        super(String.format("oru result 0x%08x", result));
        this.result = result;
    }

    /**
     * An exception for a result code with a message of its own.
     *
     * @param result the library's result code
     * @param message the message
     */
    public ORUException(int result, String message) {
        super(message);
        this.result = result;
    }

    /**
     * The library's result code.
     *
     * @return the code this exception was created with
     */
    public int getResult() {
        return result;
    }
}
