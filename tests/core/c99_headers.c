/* Every public header, included from a C99 translation unit compiled with
 * -pedantic-errors, and a few calls to show the declarations link. */
#include "oru/core.h"
#include "oru/decimal.h"
#include "oru/file.h"
#include "oru/hash.h"
#include "oru/l10n.h"
#include "oru/module.h"
#include "oru/oru.h"
#include "oru/system.h"
#include "oru/text.h"
#include "oru/thread.h"
#include "oru/time.h"
#include "oru/unicode.h"

int main(void) {
  char* copy;
  int ok;
  if (oruInitialize() != ORU_OK) return 1;
  copy = oruStrDup("c99");
  if (copy == NULL) return 1;
  ok = oruASCIIStrCaseCmp(copy, "C99", -1) == 0 && oruBE2Host16(0x1234) == 0x3412 &&
       ORU_FAILED(_oru_map_posix_error(2));
  oruFree(copy);
  return ok ? 0 : 1;
}
