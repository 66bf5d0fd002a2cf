package tam.oru;

/**
 * Host queries of the oru library.
 *
 * <p>Loading this class loads the native library with
 * {@code System.loadLibrary("oru")}: the directory holding {@code liboru.so}
 * (or {@code oru.dll}) must be on {@code java.library.path}, for example
 * {@code java -Djava.library.path=/usr/local/lib ...}.
 */
public final class ORU {
    static {
        System.loadLibrary("oru");
    }

    private ORU() {}

    /**
     * The computer's name, lower-cased (ASCII letters only), converted from
     * the application character set.
     *
     * @return the host name
     * @throws ORUException with the library's result code when the name
     *     cannot be read or converted ({@code ORU_E_OUT_OF_MEMORY},
     *     {@code 0x8007000E}, when no buffer can be had)
     */
    public static native String getHostname();

    /**
     * Whether the process runs in a remote (terminal services) session;
     * always false on POSIX systems.
     *
     * @return true for a remote session
     * @throws ORUException with the library's result code when the query
     *     fails
     */
    public static native boolean isWTSRemoteSession();
}
