/*
 * A tour of the runtime core: how system errors become result codes and what
 * their texts are, and the locale-independent ASCII and byte-order helpers.
 */
#include <oru/oru.h>

#include <errno.h>
#include <stdio.h>
#include <string.h>

static void show_result(const char* origin, oruResult r) {
  const char* text = oruStrError(r);
  int length;
  if (text == NULL) text = "(no memory)";
  /* System messages of Win32 numbers end in "\r\n", as on Windows. */
  length = (int)strcspn(text, "\r\n");
  printf("  %-28s -> 0x%08x  %.*s\n", origin, (unsigned)r, length, text);
}

int main(void) {
  static const char* const words[] = {"Hello", "hELLO", "HELP", "_under", "apple", "Apple"};
  size_t i, j;

  if (oruInitialize() != ORU_OK) return 1;

  puts("System errors as oru results:");
  show_result("errno ENOENT", _oru_map_posix_error(ENOENT));
  show_result("errno ENOTDIR", _oru_map_posix_error(ENOTDIR));
  show_result("errno 99 (no name of ours)", _oru_map_posix_error(99));
  show_result("Win32 ERROR_ACCESS_DENIED", _oru_map_win32_error(5));
  show_result("errno EINVAL", _oru_map_posix_error(EINVAL));
  show_result("Win32 2403 (falls through)", _oru_map_win32_error(2403));
  show_result("Win32 0", _oru_map_win32_error(0));
  show_result("ORU_E_TIMEDOUT", ORU_E_TIMEDOUT);
  show_result("ORU_E_NO_DEVICE (no text)", ORU_E_NO_DEVICE);

  /* The comparison lower-cases A-Z and compares bytes: '_' (0x5F) sorts
   * before the lower-cased letters but after the upper-case ones, so this
   * is no sort order for text that mixes letters and punctuation. */
  puts("\nASCII case-insensitive comparison of lower-cased bytes, whatever the locale:");
  for (i = 0; i < sizeof words / sizeof words[0]; ++i) {
    for (j = i + 1; j < sizeof words / sizeof words[0]; ++j) {
      int c = oruASCIIStrCaseCmp(words[i], words[j], -1);
      printf("  %-7s %c %s\n", words[i], c < 0 ? '<' : c > 0 ? '>' : '=', words[j]);
    }
  }

  puts("\nCharacter classes (isPrint counts tab as printable):");
  printf("  isPrint('\\t')=%d isGraph(' ')=%d isAlpha(0xE9)=%d toUpper('q')=%c\n",
         oruASCIIisPrint('\t') != 0, oruASCIIisGraph(' ') != 0, oruASCIIisAlpha((char)0xE9) != 0,
         oruASCIIToUpper('q'));

  puts("\nByte order on this host:");
  printf("  oruBE2Host32(0x11223344) = 0x%08x\n", (unsigned)oruBE2Host32(0x11223344u));
  printf("  oruLE2Host32(0x11223344) = 0x%08x\n", (unsigned)oruLE2Host32(0x11223344u));
  return 0;
}
