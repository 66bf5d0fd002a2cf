// The platform's iconv behind a small interface, so the codecs do not depend
// on where iconv comes from (the C library here, a loaded module elsewhere).
#ifndef ORU_SRC_TEXT_ORU_ICONV_H
#define ORU_SRC_TEXT_ORU_ICONV_H

#include <cstddef>

namespace oru_charset {

using oru_iconv_t = void*;

// Opens a conversion; returns 0 and the descriptor, or the errno value.
int oru_iconv_open(const char* toName, const char* fromName, oru_iconv_t* cd);
// One iconv step with iconv's argument conventions; returns 0 on complete
// conversion or the errno value (EILSEQ, EINVAL, E2BIG, EBADF, ...).
int oru_iconv(oru_iconv_t cd, const char** in, size_t* inLeft, char** out, size_t* outLeft);
void oru_iconv_close(oru_iconv_t cd);

}  // namespace oru_charset

#endif  // ORU_SRC_TEXT_ORU_ICONV_H
