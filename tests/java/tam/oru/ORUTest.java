package tam.oru;

import static org.junit.jupiter.api.Assertions.*;

import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Locale;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.condition.EnabledOnOs;
import org.junit.jupiter.api.condition.OS;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class ORUTest {
    static final int E_FAIL = 0x80004005;
    static final int E_ACCESS_DENIED = 0x80070005;

    @Test
    @EnabledOnOs(OS.LINUX)
    void hostnameIsTheKernelsNodeNameLowerCased() throws Exception {
        String node = Files.readString(Path.of("/proc/sys/kernel/hostname"), StandardCharsets.UTF_8)
                              .strip();
        assertEquals(node.toLowerCase(Locale.ROOT), ORU.getHostname());
    }

    @Test
    @EnabledOnOs(OS.LINUX)
    void noRemoteSessionOnPosix() {
        assertFalse(ORU.isWTSRemoteSession());
    }

    // 63 characters fit the first 64-byte buffer; 64 need the second.
    @ParameterizedTest
    @ValueSource(ints = {0, 1, 63, 64, 127, 128, 300, 5000})
    void hostnameOfAnyLengthComesBackWhole(int length) {
        String name = JniTestHooks.hostname(length, 0);
        assertEquals(length, name.length());
        for (int i = 0; i < length; ++i) assertEquals('a' + i % 26, name.charAt(i));
        int buffers = 1;
        for (int size = 64; length >= size; size *= 2) ++buffers;
        assertEquals(buffers, JniTestHooks.calls());
    }

    @ParameterizedTest
    @ValueSource(ints = {E_FAIL, E_ACCESS_DENIED})
    void failingHostQueryThrowsItsCode(int code) {
        ORUException e = assertThrows(ORUException.class, () -> JniTestHooks.hostname(10, code));
        assertEquals(code, e.getResult());
        assertEquals(1, JniTestHooks.calls());
    }

    @Test
    void sessionQueryAnswersAndFails() {
        assertTrue(JniTestHooks.remoteSession(1, 0));
        assertFalse(JniTestHooks.remoteSession(0, 0));
        ORUException e = assertThrows(ORUException.class,
                () -> JniTestHooks.remoteSession(1, E_ACCESS_DENIED));
        assertEquals(E_ACCESS_DENIED, e.getResult());
    }

    @Test
    void exceptionHelperChoosesTheConstructor() {
        ORUException plain =
                assertThrows(ORUException.class, () -> JniTestHooks.throwResult(E_FAIL, null));
        assertEquals(E_FAIL, plain.getResult());
        assertEquals("oru result 0x80004005", plain.getMessage());
        ORUException empty =
                assertThrows(ORUException.class, () -> JniTestHooks.throwResult(E_FAIL, ""));
        assertEquals("oru result 0x80004005", empty.getMessage());
        ORUException withText = assertThrows(
                ORUException.class, () -> JniTestHooks.throwResult(E_ACCESS_DENIED, "denied \u00e9"));
        assertEquals(E_ACCESS_DENIED, withText.getResult());
        assertEquals("denied \u00e9", withText.getMessage());
    }
}
