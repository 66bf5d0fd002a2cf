// Test natives of tam.oru.JniTestHooks: they run the library's host-query
// adapters and exception helper against scripted queries, to reach the paths
// a real host cannot be made to take (long names, failing queries).

#include "jni/oru_jni_support.h"

#include <string>

namespace {

size_t g_name_length = 0;
oruResult g_failure = ORU_OK;
int g_remote = 0;
int g_calls = 0;

// A host name of g_name_length characters "a".."z" repeated, with the
// library's buffer convention, or g_failure when set.
oruResult scripted_hostname(char* buf, size_t size) {
  ++g_calls;
  if (ORU_FAILED(g_failure)) return g_failure;
  if (g_name_length >= size) return ORU_E_BUFFER_TOO_SMALL;
  for (size_t i = 0; i < g_name_length; ++i) buf[i] = static_cast<char>('a' + i % 26);
  buf[g_name_length] = '\0';
  return ORU_OK;
}

oruResult scripted_session(int* out) {
  ++g_calls;
  if (ORU_FAILED(g_failure)) return g_failure;
  *out = g_remote;
  return ORU_OK;
}

}  // namespace

extern "C" {

JNIEXPORT jstring JNICALL Java_tam_oru_JniTestHooks_hostname(JNIEnv* env, jclass, jint length,
                                                             jint failure) {
  g_name_length = static_cast<size_t>(length);
  g_failure = failure;
  g_calls = 0;
  return oru::jni::hostname(env, scripted_hostname);
}

JNIEXPORT jboolean JNICALL Java_tam_oru_JniTestHooks_remoteSession(JNIEnv* env, jclass, jint remote,
                                                                   jint failure) {
  g_remote = remote;
  g_failure = failure;
  g_calls = 0;
  return oru::jni::remote_session(env, scripted_session);
}

JNIEXPORT jint JNICALL Java_tam_oru_JniTestHooks_calls(JNIEnv*, jclass) { return g_calls; }

JNIEXPORT void JNICALL Java_tam_oru_JniTestHooks_throwResult(JNIEnv* env, jclass, jint code,
                                                             jstring message) {
  std::string text;
  if (message != nullptr) {
    const char* chars = env->GetStringUTFChars(message, nullptr);
    if (chars == nullptr) return;
    text = chars;
    env->ReleaseStringUTFChars(message, chars);
  }
  oru::jni::throw_result(env, code, message != nullptr ? text.c_str() : nullptr);
}
}
