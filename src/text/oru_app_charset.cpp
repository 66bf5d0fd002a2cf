// Conversions between the application character set, the system character
// set and UTF-8 (locale parameters 6 and 4).

#include "core/oru_internal.h"
#include "l10n/oru_locale_internal.h"
#include "oru/l10n.h"
#include "oru/text.h"

#include <cstring>
#include <new>
#include <string>

using namespace oru_l10n;

namespace {

constexpr size_t kNameBuffer = 41;  // names of up to 40 characters

// The override of id if set, else the derived system set; false when the
// name does not fit the name buffer.
bool charset_name(uint32_t id, char (&buf)[kNameBuffer]) {
  std::string derived;
  const char* name = oru_locale_override(id);
  if (name == nullptr) {
    try {
      derived = oru_derive_system_charset(false);
    } catch (const std::bad_alloc&) {
      return false;
    }
    name = derived.c_str();
  }
  size_t len = std::strlen(name);
  if (len >= kNameBuffer) return false;
  std::memcpy(buf, name, len + 1);
  return true;
}

// Whether the application and system sets differ; fills both names.
bool charsets_differ(char (&app)[kNameBuffer], char (&sys)[kNameBuffer]) {
  if (oruCSConversionNeeded == 0) return false;
  if (!charset_name(ORU_LP_APP_CHARSET, app)) return false;
  if (!charset_name(ORU_LP_SYSTEM_CHARSET, sys)) return false;
  return oruASCIIStrCaseCmp(app, sys, -1) != 0;
}

oruResult copy_string(const void* src, size_t srcLen, size_t* consumedOut, size_t* outLenOut,
                      oruReallocFn allocFn, char** out) {
  const char* text = static_cast<const char*>(src);
  if (static_cast<int64_t>(srcLen) < 0) srcLen = std::strlen(text);
  if (consumedOut) *consumedOut = srcLen;
  if (outLenOut) *outLenOut = srcLen;
  char* copy =
      static_cast<char*>(allocFn != nullptr ? allocFn(nullptr, srcLen + 1) : oruMalloc(srcLen + 1));
  if (copy == nullptr) return ORU_E_OUT_OF_MEMORY;
  if (srcLen != 0) std::memcpy(copy, text, srcLen);
  copy[srcLen] = '\0';
  *out = copy;
  return ORU_OK;
}

oruResult app_system(bool toSystem, const void* src, size_t srcLen, size_t* consumedOut,
                     size_t* outLenOut, oruReallocFn allocFn, char** out) {
  if (out == nullptr) return ORU_E_INVALID_ARG;
  *out = nullptr;
  if (src == nullptr && srcLen != 0) return ORU_E_INVALID_ARG;
  char app[kNameBuffer], sys[kNameBuffer];
  if (!charsets_differ(app, sys))
    return copy_string(src, srcLen, consumedOut, outLenOut, allocFn, out);
  if (static_cast<int64_t>(srcLen) < 0) srcLen = SIZE_MAX;
  return oruConvertString(src, srcLen, toSystem ? app : sys, toSystem ? sys : app, consumedOut,
                          outLenOut, allocFn, out);
}

oruResult app_utf8(bool toUTF8, const void* src, size_t srcLen, size_t* consumedOut,
                   size_t* outLenOut, oruReallocFn allocFn, char** out) {
  if (out == nullptr) return ORU_E_INVALID_ARG;
  *out = nullptr;
  char app[kNameBuffer];
  oruResult r = oruGetLocaleParam(ORU_LP_APP_CHARSET, 0, app, sizeof app);
  if (ORU_FAILED(r)) return r;
  if (static_cast<int64_t>(srcLen) < 0) srcLen = SIZE_MAX;
  return oruConvertString(src, srcLen, toUTF8 ? app : "UTF-8", toUTF8 ? "UTF-8" : app, consumedOut,
                          outLenOut, allocFn, out);
}

}  // namespace

extern "C" {

ORU_API oruResult oruAppToSystemCS(const void* src, size_t srcLen, size_t* consumedOut,
                                   size_t* outLenOut, oruReallocFn allocFn, char** out) {
  return app_system(true, src, srcLen, consumedOut, outLenOut, allocFn, out);
}

ORU_API oruResult oruSystemToAppCS(const void* src, size_t srcLen, size_t* consumedOut,
                                   size_t* outLenOut, oruReallocFn allocFn, char** out) {
  return app_system(false, src, srcLen, consumedOut, outLenOut, allocFn, out);
}

ORU_API oruResult oruAppCSToUTF8(const void* src, size_t srcLen, size_t* consumedOut,
                                 size_t* outLenOut, oruReallocFn allocFn, char** out) {
  return app_utf8(true, src, srcLen, consumedOut, outLenOut, allocFn, out);
}

ORU_API oruResult oruUTF8ToAppCS(const void* src, size_t srcLen, size_t* consumedOut,
                                 size_t* outLenOut, oruReallocFn allocFn, char** out) {
  return app_utf8(false, src, srcLen, consumedOut, outLenOut, allocFn, out);
}

ORU_API oruResult oruLocaleToUTF8(const void* src, size_t srcLen, size_t* consumedOut,
                                  size_t* outLenOut, oruReallocFn allocFn, char** out)
    ORU_ALIAS(oruAppCSToUTF8);

ORU_API oruResult oruUTF8ToLocale(const void* src, size_t srcLen, size_t* consumedOut,
                                  size_t* outLenOut, oruReallocFn allocFn, char** out)
    ORU_ALIAS(oruUTF8ToAppCS);

}  // extern "C"
