// Whole-string conversion with a cache of open codecs.
//
// The cache is a most-recently-used list of at most 16 codecs, one per pair of
// names as the callers spelled them.  One mutex guards the list and every
// conversion through it: a codec carries shift state, so two threads must
// never run the same one at once, and a lock per call is cheaper than an
// iconv_open per call.

#include "core/oru_internal.h"
#include "oru/text.h"
#include "oru/thread.h"

#include <atomic>
#include <cstring>
#include <mutex>

namespace {

constexpr unsigned kCacheCapacity = 16;

struct CacheNode {
  CacheNode* next;
  CacheNode* prev;
  uint32_t hash;
  char* fromName;
  char* toName;
  oruTextCodec codec;
};

struct CodecCache {
  CacheNode* head = nullptr;
  CacheNode* tail = nullptr;
  unsigned count = 0;
  oruMutex mutex = nullptr;
};

CodecCache cache;
std::mutex cacheSetUpLock;  // guards the making of cache.mutex
std::atomic<bool> cacheReady{false};

// Makes the cache's mutex on first use; when that fails (out of memory) the
// failure is reported and the next call tries again.
oruResult prepare_cache() {
  if (cacheReady.load(std::memory_order_acquire)) return ORU_OK;
  std::lock_guard<std::mutex> guard(cacheSetUpLock);
  if (cacheReady.load(std::memory_order_relaxed)) return ORU_OK;
  oruResult r = oruMutexInit(&cache.mutex);
  if (ORU_SUCCEEDED(r)) cacheReady.store(true, std::memory_order_release);
  return r;
}

uint32_t lower_ascii(unsigned char c) { return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c; }

uint32_t hash_names(const char* from, const char* to) {
  uint32_t h = 0;
  for (const char* p = from; *p; ++p) h = h * 15 + lower_ascii(static_cast<unsigned char>(*p));
  for (const char* p = to; *p; ++p) h = h * 15 + lower_ascii(static_cast<unsigned char>(*p));
  return h;
}

bool same_name(const char* a, const char* b) { return oruASCIIStrCaseCmp(a, b, -1) == 0; }

void unlink_node(CacheNode* n) {
  if (n->prev)
    n->prev->next = n->next;
  else
    cache.head = n->next;
  if (n->next)
    n->next->prev = n->prev;
  else
    cache.tail = n->prev;
  n->next = n->prev = nullptr;
}

void push_front(CacheNode* n) {
  n->prev = nullptr;
  n->next = cache.head;
  if (cache.head) cache.head->prev = n;
  cache.head = n;
  if (cache.tail == nullptr) cache.tail = n;
}

// Finds or opens the codec for the pair and moves it to the front.  Called
// with the mutex held.
oruResult acquire_codec(const char* fromName, const char* toName, CacheNode** nodeOut) {
  uint32_t h = hash_names(fromName, toName);
  for (CacheNode* n = cache.head; n != nullptr; n = n->next) {
    if (n->hash == h && same_name(n->fromName, fromName) && same_name(n->toName, toName)) {
      unlink_node(n);
      push_front(n);
      *nodeOut = n;
      return ORU_OK;
    }
  }
  char* fromCopy = oruStrDup(fromName);
  char* toCopy = oruStrDup(toName);
  if (fromCopy == nullptr || toCopy == nullptr) {
    oruFree(fromCopy);
    oruFree(toCopy);
    return ORU_E_OUT_OF_MEMORY;
  }
  oruTextCodec codec = nullptr;
  oruResult r = oruOpenTextCodec(fromCopy, toCopy, &codec);
  if (ORU_FAILED(r)) {
    oruFree(fromCopy);
    oruFree(toCopy);
    return r;
  }
  CacheNode* node;
  if (cache.count >= kCacheCapacity) {
    node = cache.tail;
    unlink_node(node);
    oruFree(node->fromName);
    oruFree(node->toName);
    oruCloseTextCodec(node->codec);
  } else {
    node = static_cast<CacheNode*>(oruCalloc(1, sizeof(CacheNode)));
    if (node == nullptr) {
      oruCloseTextCodec(codec);
      oruFree(fromCopy);
      oruFree(toCopy);
      return ORU_E_OUT_OF_MEMORY;
    }
    ++cache.count;
  }
  node->hash = h;
  node->fromName = fromCopy;
  node->toName = toCopy;
  node->codec = codec;
  push_front(node);
  *nodeOut = node;
  return ORU_OK;
}

// Output buffer of `capacity` bytes plus room for a two-byte terminator.
struct Output {
  oruReallocFn alloc;
  char* data = nullptr;
  size_t capacity = 0;
  size_t used = 0;

  bool grow(size_t remaining) {
    size_t extra = remaining + remaining / 4 + 8;
    if (remaining > SIZE_MAX / 2 || capacity > SIZE_MAX - 2 - extra) return false;
    char* p = static_cast<char*>(alloc(data, capacity + extra + 2));
    if (p == nullptr) return false;
    data = p;
    capacity += extra;
    return true;
  }
};

// Runs the codec over [*in, *in + *inLeft) into out, growing it while the
// codec reports a full buffer.
oruResult convert_into(oruTextCodec codec, const char** in, size_t* inLeft, Output& out,
                       uint32_t flags) {
  for (;;) {
    char* dst = out.data + out.used;
    size_t room = out.capacity - out.used;
    oruResult r = oruConvertText2(codec, in, inLeft, &dst, &room, flags);
    out.used = static_cast<size_t>(dst - out.data);
    if (r != ORU_S_OUTPUT_FULL) return r;
    if (!out.grow(*inLeft)) return ORU_E_OUT_OF_MEMORY;
    // The reset, if asked for, is done; a repeated flush is harmless.
    flags &= ~static_cast<uint32_t>(ORU_CONVERT_RESET);
  }
}

void* default_realloc(void* p, size_t n) {
  if (n == 0) {
    oruFree(p);
    return nullptr;
  }
  return oruRealloc(p, n);
}

}  // namespace

extern "C" {

ORU_API oruResult oruConvertString(const void* src, size_t srcLen, const char* fromName,
                                   const char* toName, size_t* consumedOut, size_t* outLenOut,
                                   oruReallocFn reallocFn, char** out) {
  if (out == nullptr) return ORU_E_INVALID_ARG;
  *out = nullptr;
  if (fromName == nullptr || toName == nullptr || (src == nullptr && srcLen != 0))
    return ORU_E_INVALID_ARG;
  const char* text = static_cast<const char*>(src);
  if (srcLen == SIZE_MAX) srcLen = std::strlen(text);
  oruReallocFn alloc = reallocFn != nullptr ? reallocFn : default_realloc;

  if (same_name(fromName, toName)) {
    // Two zero bytes at the end, as behind every converted result.
    if (srcLen > SIZE_MAX - 2) return ORU_E_OUT_OF_MEMORY;
    char* copy = static_cast<char*>(alloc(nullptr, srcLen + 2));
    if (copy == nullptr) return ORU_E_OUT_OF_MEMORY;
    if (srcLen != 0) std::strncpy(copy, text, srcLen);
    copy[srcLen] = '\0';
    copy[srcLen + 1] = '\0';
    if (consumedOut) *consumedOut = srcLen;
    if (outLenOut) *outLenOut = srcLen;
    *out = copy;
    return ORU_OK;
  }

  oruResult r = prepare_cache();
  if (ORU_FAILED(r)) return r;
  r = oruMutexLock(&cache.mutex);
  if (ORU_FAILED(r)) return r;

  CacheNode* node = nullptr;
  r = acquire_codec(fromName, toName, &node);
  if (ORU_FAILED(r)) {
    oruMutexUnlock(&cache.mutex);
    return r;
  }
  oruTextCodec codec = node->codec;
  bool repairUTF8 = same_name(node->fromName, "UTF-8");

  Output buf{alloc};
  if (srcLen > (SIZE_MAX - 10) / 5 * 4) {
    oruMutexUnlock(&cache.mutex);
    return ORU_E_OUT_OF_MEMORY;
  }
  buf.capacity = srcLen + srcLen / 4 + 8;
  buf.data = static_cast<char*>(alloc(nullptr, buf.capacity + 2));
  if (buf.data == nullptr) {
    oruMutexUnlock(&cache.mutex);
    return ORU_E_OUT_OF_MEMORY;
  }

  const char* in = text;
  size_t inLeft = srcLen;
  r = convert_into(codec, &in, &inLeft, buf, ORU_CONVERT_RESET | ORU_CONVERT_FLUSH);
  while (r != ORU_OK) {
    if (r == ORU_E_ILLEGAL_SEQUENCE && repairUTF8) {
      // A question mark in the target set stands for the bad sequence: its
      // lead byte and the continuation bytes that follow it.
      const char* mark = "?";
      size_t markLeft = 1;
      r = convert_into(codec, &mark, &markLeft, buf, 0);
      if (ORU_FAILED(r)) break;
      ++in;
      --inLeft;
      while (inLeft > 0 && (static_cast<unsigned char>(*in) & 0xC0) == 0x80) {
        ++in;
        --inLeft;
      }
      r = convert_into(codec, &in, &inLeft, buf, ORU_CONVERT_FLUSH);
    } else {
      break;
    }
  }
  if (r != ORU_OK) {
    alloc(buf.data, 0);
    oruMutexUnlock(&cache.mutex);
    return r;
  }
  buf.data[buf.used] = '\0';
  buf.data[buf.used + 1] = '\0';
  if (consumedOut) *consumedOut = srcLen - inLeft;
  if (outLenOut) *outLenOut = buf.used;
  *out = buf.data;
  oruMutexUnlock(&cache.mutex);
  return ORU_OK;
}

}  // extern "C"
