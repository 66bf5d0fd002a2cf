// Natives of tam.oru.ORU: the host queries.

#include "jni/oru_jni_support.h"
#include "oru/system.h"
#include "tam_oru_ORU.h"

extern "C" {

JNIEXPORT jstring JNICALL Java_tam_oru_ORU_getHostname(JNIEnv* env, jclass) {
  return oru::jni::hostname(env, oruGetHostname);
}

JNIEXPORT jboolean JNICALL Java_tam_oru_ORU_isWTSRemoteSession(JNIEnv* env, jclass) {
  return oru::jni::remote_session(env, oruIsWTSRemoteSession);
}
}
