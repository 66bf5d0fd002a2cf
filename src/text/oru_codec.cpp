// Text codecs: an open iconv conversion between two registered sets.

#include "core/oru_internal.h"
#include "oru/text.h"
#include "text/oru_charset_tables.h"
#include "text/oru_iconv.h"

#include <cerrno>
#include <cstdlib>

using namespace oru_charset;

struct oruTextCodecObject {
  uint32_t fromMIB;
  uint32_t toMIB;
  oru_iconv_t cd;
  const char* fromIconv;
  const char* toIconv;
};

namespace {

// UTF-16 and UTF-32 (MIBenum 1015, 1017) read their byte order from a
// byte-order mark at the start of the first conversion only, and iconv's
// reset does not forget it; these codecs are reopened to start afresh.
bool reads_byte_order_mark(uint32_t mib) { return mib == 1015 || mib == 1017; }

// Returns the codec to its initial state.  Reopening can fail only for
// want of resources; the old descriptor, reset, is kept then.
void reset(oruTextCodecObject* codec) {
  if (reads_byte_order_mark(codec->fromMIB) || reads_byte_order_mark(codec->toMIB)) {
    oru_iconv_t fresh = nullptr;
    if (oru_iconv_open(codec->toIconv, codec->fromIconv, &fresh) == 0) {
      oru_iconv_close(codec->cd);
      codec->cd = fresh;
      return;
    }
  }
  oru_iconv(codec->cd, nullptr, nullptr, nullptr, nullptr);
}

oruResult map_iconv_errno(int err) {
  switch (err) {
    case 0:
    case EINVAL:  // an incomplete sequence left unconsumed at the end
      return ORU_OK;
    case EILSEQ:
      return ORU_E_ILLEGAL_SEQUENCE;
    case EBADF:
      return ORU_E_INVALID_ARG;
    case E2BIG:
      return ORU_S_OUTPUT_FULL;
    default:
      return ORU_E_FAIL;
  }
}

}  // namespace

extern "C" {

ORU_API oruResult oruOpenTextCodec(const char* fromName, const char* toName,
                                   oruTextCodec* codecOut) {
  if (codecOut == nullptr) return ORU_E_INVALID_ARG;
  *codecOut = nullptr;
  if (fromName == nullptr || toName == nullptr) return ORU_E_INVALID_ARG;
  int32_t from = oruCSNameToMIBenum(fromName);
  int32_t to = oruCSNameToMIBenum(toName);
  if (from < 0 || to < 0) return ORU_E_INVALID_ARG;
  const char* fromIconv = oru_charset_iconv_name(static_cast<uint32_t>(from));
  const char* toIconv = oru_charset_iconv_name(static_cast<uint32_t>(to));
  if (fromIconv == nullptr || toIconv == nullptr) return ORU_E_NOT_SUPPORTED;
  oru_iconv_t cd = nullptr;
  int err = oru_iconv_open(toIconv, fromIconv, &cd);
  if (err == EINVAL) return ORU_E_NOT_SUPPORTED;
  if (err == ENOMEM) return ORU_E_OUT_OF_MEMORY;
  if (err != 0) return static_cast<oruResult>(0x96220000u | static_cast<uint32_t>(err));
  auto* codec = static_cast<oruTextCodecObject*>(oruCalloc(1, sizeof(oruTextCodecObject)));
  if (codec == nullptr) {
    oru_iconv_close(cd);
    return ORU_E_OUT_OF_MEMORY;
  }
  codec->fromMIB = static_cast<uint32_t>(from);
  codec->toMIB = static_cast<uint32_t>(to);
  codec->cd = cd;
  codec->fromIconv = fromIconv;
  codec->toIconv = toIconv;
  *codecOut = codec;
  return ORU_OK;
}

ORU_API oruResult oruCloseTextCodec(oruTextCodec codec) {
  if (codec == nullptr) return ORU_E_INVALID_ARG;
  oru_iconv_close(codec->cd);
  oruFree(codec);
  return ORU_OK;
}

ORU_API oruResult oruResetTextCodec(oruTextCodec codec) {
  if (codec == nullptr) return ORU_E_INVALID_ARG;
  reset(codec);
  return ORU_OK;
}

ORU_API oruResult oruConvertText2(oruTextCodec codec, const char** inBuf, size_t* inLeft,
                                  char** outBuf, size_t* outLeft, uint32_t flags) {
  if (codec == nullptr) return ORU_E_INVALID_ARG;
  if (flags & ORU_CONVERT_RESET) reset(codec);
  int err = oru_iconv(codec->cd, inBuf, inLeft, outBuf, outLeft);
  if (flags & ORU_CONVERT_FLUSH) {
    if (err == EINVAL) return ORU_E_ILLEGAL_SEQUENCE;
    // Only a complete conversion may end the output's shift state.
    if (err == 0) err = oru_iconv(codec->cd, nullptr, nullptr, outBuf, outLeft);
  }
  return map_iconv_errno(err);
}

ORU_API oruResult oruConvertText(oruTextCodec codec, const char** inBuf, size_t* inLeft,
                                 char** outBuf, size_t* outLeft) {
  return oruConvertText2(codec, inBuf, inLeft, outBuf, outLeft, 0);
}

}  // extern "C"
