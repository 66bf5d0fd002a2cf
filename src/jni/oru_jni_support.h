// Shared pieces of the Java natives: the exception helper, the result-array
// store and the host queries written against a replaceable query function,
// so that a test library can drive the failure paths with the same code.
#ifndef ORU_JNI_SUPPORT_H
#define ORU_JNI_SUPPORT_H

#include "oru/core.h"
#include "oru/decimal.h"
#include "oru/text.h"

#include <jni.h>

#include <cstdint>

namespace oru::jni {

// Throws tam.oru.ORUException(code) or, with a non-empty message,
// ORUException(code, message).  Any failing step (class or constructor not
// found, string or object not created) ends the attempt quietly; the virtual
// machine then has its own exception pending.
inline void throw_result(JNIEnv* env, oruResult code, const char* message) {
  jclass cls = env->FindClass("tam/oru/ORUException");
  if (cls == nullptr) return;
  jvalue args[2];
  args[0].i = code;
  jmethodID ctor;
  if (message != nullptr && message[0] != '\0') {
    ctor = env->GetMethodID(cls, "<init>", "(ILjava/lang/String;)V");
    if (ctor == nullptr) return;
    args[1].l = env->NewStringUTF(message);
    if (args[1].l == nullptr) return;
  } else {
    ctor = env->GetMethodID(cls, "<init>", "(I)V");
    if (ctor == nullptr) return;
  }
  jobject exception = env->NewObjectA(cls, ctor, args);
  if (exception == nullptr) return;
  env->Throw(static_cast<jthrowable>(exception));
}

// A decimal128 argument arrives high word first.
inline oruDec128 dec128(jlong high, jlong low) {
  oruDec128 d;
  d.w[0] = static_cast<uint64_t>(low);
  d.w[1] = static_cast<uint64_t>(high);
  return d;
}

// A decimal128 result leaves low word first: res[0] low, res[1] high.  The
// array is pinned only now that the library call is done, since a critical
// region must not last across anything that might block.  A null or short
// array, or a failed pin, leaves it alone.
inline void store(JNIEnv* env, jlongArray res, const oruDec128& value) {
  if (res == nullptr || env->GetArrayLength(res) < 2) return;
  auto* words = static_cast<jlong*>(env->GetPrimitiveArrayCritical(res, nullptr));
  if (words == nullptr) return;
  words[0] = static_cast<jlong>(value.w[0]);
  words[1] = static_cast<jlong>(value.w[1]);
  env->ReleasePrimitiveArrayCritical(res, words, 0);
}

using HostnameQuery = oruResult (*)(char* buf, size_t size);
using SessionQuery = oruResult (*)(int* out);

// The host name as a Java string: the buffer starts at 64 bytes and doubles
// while the query finds it too small, then the name goes from the
// application character set to UTF-8.  Host names are ASCII in practice, so
// standard UTF-8 and JNI's modified UTF-8 agree on them.
inline jstring hostname(JNIEnv* env, HostnameQuery query) {
  size_t size = 64;
  auto* buf = static_cast<char*>(oruMalloc(size));
  if (buf == nullptr) {
    throw_result(env, ORU_E_OUT_OF_MEMORY, nullptr);
    return nullptr;
  }
  oruResult r;
  while ((r = query(buf, size)) == ORU_E_BUFFER_TOO_SMALL) {
    auto* bigger = size <= SIZE_MAX / 2 ? static_cast<char*>(oruRealloc(buf, size * 2)) : nullptr;
    if (bigger == nullptr) {
      oruFree(buf);
      throw_result(env, ORU_E_OUT_OF_MEMORY, nullptr);
      return nullptr;
    }
    buf = bigger;
    size *= 2;
  }
  if (ORU_FAILED(r)) {
    oruFree(buf);
    throw_result(env, r, nullptr);
    return nullptr;
  }
  char* utf8 = nullptr;
  r = oruAppCSToUTF8(buf, static_cast<size_t>(-1), nullptr, nullptr, nullptr, &utf8);
  oruFree(buf);
  if (ORU_FAILED(r)) {
    throw_result(env, r, nullptr);
    return nullptr;
  }
  jstring name = env->NewStringUTF(utf8);
  oruFree(utf8);
  return name;
}

inline jboolean remote_session(JNIEnv* env, SessionQuery query) {
  int remote = 0;
  oruResult r = query(&remote);
  if (ORU_FAILED(r)) {
    throw_result(env, r, nullptr);
    return JNI_FALSE;
  }
  return remote != 0 ? JNI_TRUE : JNI_FALSE;
}

}  // namespace oru::jni

#endif
