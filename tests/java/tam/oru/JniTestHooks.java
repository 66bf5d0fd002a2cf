package tam.oru;

/** Test natives running the library's JNI adapters on scripted queries. */
final class JniTestHooks {
    static {
        System.loadLibrary("oru");
        System.loadLibrary("oru_jni_test");
    }

    private JniTestHooks() {}

    /** getHostname's adapter over a host whose name has the given length. */
    static native String hostname(int length, int failure);

    /** isWTSRemoteSession's adapter over a scripted session query. */
    static native boolean remoteSession(int remote, int failure);

    /** How often the scripted query ran in the last call. */
    static native int calls();

    /** The exception helper (message null: the code-only constructor). */
    static native void throwResult(int code, String message);
}
