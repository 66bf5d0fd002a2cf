// Natives of tam.oru.ieee754.Decimal128: each unpacks its (high, low)
// operands, calls the decimal128 function of the same meaning and stores or
// returns its result.  The adapters differ only in shape, so they are
// stamped out by the macros below, one line per method.

#include "jni/oru_jni_support.h"
#include "tam_oru_ieee754_Decimal128.h"

using oru::jni::dec128;
using oru::jni::store;

#define ORU_JNI_NAME(method) Java_tam_oru_ieee754_Decimal128_##method

// res = f(x, y)
#define ORU_JNI_BINARY(method, fn)                                                            \
  JNIEXPORT void JNICALL ORU_JNI_NAME(method)(JNIEnv * env, jclass, jlongArray res, jlong xh, \
                                              jlong xl, jlong yh, jlong yl) {                 \
    const oruDec128 x = dec128(xh, xl), y = dec128(yh, yl);                                   \
    oruDec128 r;                                                                              \
    fn(&r, &x, &y);                                                                           \
    store(env, res, r);                                                                       \
  }

// res = f(x)
#define ORU_JNI_UNARY(method, fn)                                                             \
  JNIEXPORT void JNICALL ORU_JNI_NAME(method)(JNIEnv * env, jclass, jlongArray res, jlong xh, \
                                              jlong xl) {                                     \
    const oruDec128 x = dec128(xh, xl);                                                       \
    oruDec128 r;                                                                              \
    fn(&r, &x);                                                                               \
    store(env, res, r);                                                                       \
  }

// res = f(v) for a Java primitive v
#define ORU_JNI_FROM(method, fn, jtype)                                                        \
  JNIEXPORT void JNICALL ORU_JNI_NAME(method)(JNIEnv * env, jclass, jlongArray res, jtype v) { \
    oruDec128 r;                                                                               \
    fn(&r, v);                                                                                 \
    store(env, res, r);                                                                        \
  }

// f(x) returned as a Java primitive
#define ORU_JNI_QUERY(method, fn, jtype)                                              \
  JNIEXPORT jtype JNICALL ORU_JNI_NAME(method)(JNIEnv*, jclass, jlong xh, jlong xl) { \
    const oruDec128 x = dec128(xh, xl);                                               \
    return static_cast<jtype>(fn(&x));                                                \
  }

// a 0-or-1 predicate of x
#define ORU_JNI_TEST(method, fn)                                                         \
  JNIEXPORT jboolean JNICALL ORU_JNI_NAME(method)(JNIEnv*, jclass, jlong xh, jlong xl) { \
    const oruDec128 x = dec128(xh, xl);                                                  \
    return fn(&x) != 0 ? JNI_TRUE : JNI_FALSE;                                           \
  }

// a 0-or-1 relation of x and y
#define ORU_JNI_RELATION(method, fn)                                                             \
  JNIEXPORT jboolean JNICALL ORU_JNI_NAME(method)(JNIEnv*, jclass, jlong xh, jlong xl, jlong yh, \
                                                  jlong yl) {                                    \
    const oruDec128 x = dec128(xh, xl), y = dec128(yh, yl);                                      \
    return fn(&x, &y) != 0 ? JNI_TRUE : JNI_FALSE;                                               \
  }

extern "C" {

ORU_JNI_BINARY(add, oruDec128Add)
ORU_JNI_BINARY(sub, oruDec128Sub)
ORU_JNI_BINARY(mul, oruDec128Mul)
ORU_JNI_BINARY(div, oruDec128Div)
ORU_JNI_BINARY(remainder, oruDec128Remainder)
ORU_JNI_BINARY(maxNum, oruDec128MaxNum)
ORU_JNI_BINARY(maxNumMag, oruDec128MaxNumMag)
ORU_JNI_BINARY(minNum, oruDec128MinNum)
ORU_JNI_BINARY(minNumMag, oruDec128MinNumMag)

ORU_JNI_UNARY(sqrt, oruDec128Sqrt)
ORU_JNI_UNARY(nextUp, oruDec128NextUp)
ORU_JNI_UNARY(nextDown, oruDec128NextDown)
ORU_JNI_UNARY(roundCeiling, oruDec128RoundCeiling)
ORU_JNI_UNARY(roundDown, oruDec128RoundDown)
ORU_JNI_UNARY(roundFloor, oruDec128RoundFloor)
ORU_JNI_UNARY(roundHalfEven, oruDec128RoundHalfEven)
ORU_JNI_UNARY(roundHalfUp, oruDec128RoundHalfUp)

ORU_JNI_FROM(fromDouble, oruDoubleToDec128, jdouble)
ORU_JNI_FROM(fromFloat, oruFloatToDec128, jfloat)
ORU_JNI_FROM(fromInt32, oruDec128FromInt32, jint)
ORU_JNI_FROM(fromInt64, oruDec128FromInt64, jlong)

ORU_JNI_QUERY(fpClass, oruDec128Class, jint)
ORU_JNI_QUERY(logB, oruDec128LogB, jint)
ORU_JNI_QUERY(toInt32, oruDec128ToInt32, jint)
ORU_JNI_QUERY(toInt64, oruDec128ToInt64, jlong)
ORU_JNI_QUERY(toDec64, oruDec128ToDec64, jlong)
ORU_JNI_QUERY(toDouble, oruDec128ToDouble, jdouble)
ORU_JNI_QUERY(toFloat, oruDec128ToFloat, jfloat)

ORU_JNI_TEST(isCanonical, oruDec128IsCanonical)
ORU_JNI_TEST(isNormal, oruDec128IsNormal)
ORU_JNI_TEST(isSubnormal, oruDec128IsSubnormal)

ORU_JNI_RELATION(quietEqual, oruDec128QuietEqual)
ORU_JNI_RELATION(quietGreater, oruDec128QuietGreater)
ORU_JNI_RELATION(quietGreaterEqual, oruDec128QuietGreaterEqual)
ORU_JNI_RELATION(quietLess, oruDec128QuietLess)
ORU_JNI_RELATION(quietLessEqual, oruDec128QuietLessEqual)
ORU_JNI_RELATION(quietNotEqual, oruDec128QuietNotEqual)
ORU_JNI_RELATION(quietOrdered, oruDec128QuietOrdered)
ORU_JNI_RELATION(quietUnordered, oruDec128QuietUnordered)
ORU_JNI_RELATION(sameQuantum, oruDec128SameQuantum)
ORU_JNI_RELATION(totalOrder, oruDec128TotalOrder)
ORU_JNI_RELATION(totalOrderMag, oruDec128TotalOrderMag)

JNIEXPORT void JNICALL ORU_JNI_NAME(fusedMulAdd)(JNIEnv* env, jclass, jlongArray res, jlong xh,
                                                 jlong xl, jlong yh, jlong yl, jlong zh, jlong zl) {
  const oruDec128 x = dec128(xh, xl), y = dec128(yh, yl), z = dec128(zh, zl);
  oruDec128 r;
  oruDec128FusedMulAdd(&r, &x, &y, &z);
  store(env, res, r);
}

JNIEXPORT void JNICALL ORU_JNI_NAME(quantize)(JNIEnv* env, jclass, jlongArray res, jlong xh,
                                              jlong xl, jlong yh, jlong yl, jint mode) {
  const oruDec128 x = dec128(xh, xl), y = dec128(yh, yl);
  oruDec128 r;
  oruDec128Quantize(&r, &x, &y, mode);
  store(env, res, r);
}

JNIEXPORT void JNICALL ORU_JNI_NAME(scaleB)(JNIEnv* env, jclass, jlongArray res, jlong xh, jlong xl,
                                            jint n) {
  const oruDec128 x = dec128(xh, xl);
  oruDec128 r;
  oruDec128ScaleB(&r, &x, n);
  store(env, res, r);
}

// The scientific string form; ASCII, so modified UTF-8 is plain UTF-8 here.
JNIEXPORT jstring JNICALL ORU_JNI_NAME(toString)(JNIEnv* env, jclass, jlong xh, jlong xl) {
  const oruDec128 x = dec128(xh, xl);
  char text[ORU_DEC128_STRING_MAX];
  if (ORU_FAILED(oruDec128ToString(&x, text, sizeof text, nullptr))) return nullptr;
  return env->NewStringUTF(text);
}

// Reads the number at the start of s into res and answers the count of
// characters read.  The parser stops at the first non-ASCII character, so
// the count of bytes read equals the count of UTF-16 characters.
JNIEXPORT jint JNICALL ORU_JNI_NAME(parseString)(JNIEnv* env, jclass, jlongArray res, jstring s) {
  oruDec128 r = dec128(0x3040000000000000, 0);  // +0, the answer for no number
  jint read = 0;
  if (s != nullptr) {
    const char* text = env->GetStringUTFChars(s, nullptr);
    if (text == nullptr) return 0;  // OutOfMemoryError pending
    const char* end = text;
    oruDec128ParseString(&r, nullptr, text, &end);
    read = static_cast<jint>(end - text);
    env->ReleaseStringUTFChars(s, text);
  }
  store(env, res, r);
  return read;
}
}
