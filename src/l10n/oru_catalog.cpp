// Message catalogs: domain bindings, the per-thread current domain, the
// process-wide catalog cache and the lookups.
//
// Two mutexes: the catalog mutex guards the cache, the binding mutex the
// binding list.  Loading a catalog reads its binding while holding the
// catalog mutex, so the order is always catalog mutex, then binding mutex.
// Bindings, cache nodes and images are never freed; lookups read images
// without a lock because an image never changes once published.
#include <atomic>
#include <cstdio>
#include <cstring>
#include <mutex>

#include "oru/file.h"
#include "oru/l10n.h"
#include "oru/thread.h"
#include "oru_catalog_format.h"
#include "oru_catalog_platform.h"

namespace {

constexpr const char* kDefaultDomain = "messages";
constexpr size_t kLocaleNameSize = 64;
constexpr size_t kPathSize = 1024;
constexpr uint32_t kBuckets = 128;

struct oru_binding {
  oru_binding* next;
  char* domain;
  char* directory;
};

struct oru_catalog_node {
  uint32_t hash;
  oru_catalog_node* next;
  char* locale;
  int32_t category;
  char* domain;
  char* path;            // null in a negative node
  unsigned char* image;  // null: the catalog does not exist
};

std::mutex g_setUpLock;  // guards the set-up until it has succeeded
std::atomic<bool> g_ready{false};
bool g_haveDomainKey = false;
oruTlsKey g_domainKey;
oruMutex g_catalogMutex = nullptr;
oruMutex g_bindingMutex = nullptr;
oru_binding* g_bindings = nullptr;
oru_catalog_node* g_cache[kBuckets];

// Makes the key and the two mutexes on first use.  A piece that cannot be
// made (out of memory) is tried again on the next call rather than leaving
// the catalogs unusable for good.
bool ready() {
  if (g_ready.load(std::memory_order_acquire)) return true;
  std::lock_guard<std::mutex> guard(g_setUpLock);
  if (g_ready.load(std::memory_order_relaxed)) return true;
  if (!g_haveDomainKey) g_haveDomainKey = oruTlsKeyCreate(&g_domainKey, oruFree) == ORU_OK;
  if (g_catalogMutex == nullptr) oruMutexInit(&g_catalogMutex);
  if (g_bindingMutex == nullptr) oruMutexInit(&g_bindingMutex);
  if (!g_haveDomainKey || g_catalogMutex == nullptr || g_bindingMutex == nullptr) return false;
  g_ready.store(true, std::memory_order_release);
  return true;
}

const char* const kCategoryNames[] = {"LC_COLLATE", "LC_CTYPE", "LC_MONETARY",
                                      "LC_NUMERIC", "LC_TIME",  "LC_MESSAGES"};

oru_binding* find_binding(const char* domain) {
  for (oru_binding* b = g_bindings; b != nullptr; b = b->next) {
    if (std::strcmp(b->domain, domain) == 0) return b;
  }
  return nullptr;
}

// Reads and validates the catalog at path; null when it is missing or bad,
// or (with *outOfMemory set) when memory ran out on the way.
unsigned char* read_catalog(const char* path, bool* outOfMemory) {
  oruFileInfo info{};
  info.mask = ORU_FINFO_BASIC;
  oruResult r = oruGetFileInfo(path, &info);
  if (r != ORU_OK) {
    *outOfMemory = r == ORU_E_OUT_OF_MEMORY;
    return nullptr;
  }
  if (info.size < ORU_CATALOG_MIN_SIZE || info.size > 0xFFFFFFFFu) return nullptr;
  size_t size = static_cast<size_t>(info.size);
  oruFile file = nullptr;
  r = oruOpenFile(path, ORU_OPEN_READ, &file);
  if (r != ORU_OK) {
    *outOfMemory = r == ORU_E_OUT_OF_MEMORY;
    return nullptr;
  }
  auto* image = static_cast<unsigned char*>(oruMalloc(size));
  *outOfMemory = image == nullptr;
  size_t got = 0;
  bool ok = image != nullptr && oruRead(file, image, size, &got) == ORU_OK && got == size &&
            oru_catalog_validate(image, size) == nullptr;
  oruClose(file);
  if (!ok) {
    oruFree(image);
    return nullptr;
  }
  return image;
}

// Builds the path of a catalog and loads it.  Called with the catalog mutex
// held; fills *pathOut with an own copy of the path on success.  Sets
// *outOfMemory when the answer null comes from memory running out.
unsigned char* load_catalog(const char* locale, int category, const char* domain, char** pathOut,
                            bool* outOfMemory) {
  if (category < 1 || category > 6) return nullptr;
  char path[kPathSize];
  oruMutexLock(&g_bindingMutex);
  oru_binding* b = find_binding(domain);
  const char* dir = b != nullptr ? b->directory : nullptr;
  int n = -1;
  if (dir != nullptr) {
    const char* sep = oru_catalog_path_separator();
    n = std::snprintf(path, sizeof path, "%s%s%s%s%s%s%s.mo", dir, sep, locale, sep,
                      kCategoryNames[category - 1], sep, domain);
  }
  oruMutexUnlock(&g_bindingMutex);
  if (n < 0 || static_cast<size_t>(n) >= kPathSize) return nullptr;
  unsigned char* image = read_catalog(path, outOfMemory);
  if (image == nullptr) return nullptr;
  *pathOut = oruStrDup(path);
  if (*pathOut == nullptr) {
    *outOfMemory = true;
    oruFree(image);
    return nullptr;
  }
  return image;
}

// The image of the catalog (locale, category, domain), or null when there
// is none; looks for a file only the first time a triple is asked for.
const unsigned char* find_catalog(const char* locale, int category, const char* domain) {
  uint32_t h = oru_catalog_hash(locale);
  h = h * 31u + static_cast<uint32_t>(category);
  h = oru_catalog_hash(domain, h);
  oru_catalog_node** bucket = &g_cache[h & (kBuckets - 1)];
  if (oruMutexLock(&g_catalogMutex) != ORU_OK) return nullptr;
  for (oru_catalog_node* n = *bucket; n != nullptr; n = n->next) {
    if (n->hash == h && n->category == category && std::strcmp(n->locale, locale) == 0 &&
        std::strcmp(n->domain, domain) == 0) {
      const unsigned char* image = n->image;
      oruMutexUnlock(&g_catalogMutex);
      return image;
    }
  }
  char* path = nullptr;
  bool outOfMemory = false;
  unsigned char* image = load_catalog(locale, category, domain, &path, &outOfMemory);
  if (outOfMemory) {
    // Not remembered as missing: the next lookup tries again.
    oruMutexUnlock(&g_catalogMutex);
    return nullptr;
  }
  auto* node = static_cast<oru_catalog_node*>(oruMalloc(sizeof(oru_catalog_node)));
  char* localeCopy = oruStrDup(locale);
  char* domainCopy = oruStrDup(domain);
  if (node == nullptr || localeCopy == nullptr || domainCopy == nullptr) {
    // Nothing is remembered; a loaded image is still answered this once
    // but would leak if kept unreferenced, so it is given up as well.
    oruFree(node);
    oruFree(localeCopy);
    oruFree(domainCopy);
    oruFree(path);
    oruFree(image);
    oruMutexUnlock(&g_catalogMutex);
    return nullptr;
  }
  *node = oru_catalog_node{h, *bucket, localeCopy, category, domainCopy, path, image};
  *bucket = node;
  oruMutexUnlock(&g_catalogMutex);
  return image;
}

bool read_param(uint32_t id, char* buffer) {
  return oruGetLocaleParam(id, 0, buffer, kLocaleNameSize) == ORU_OK && buffer[0] != '\0';
}

struct locale_parts {
  const char* language;
  const char* territory;  // null: none
  const char* charset;
};

// Writes language[_territory].charset into the 64-byte buffer `out`; false
// when it does not fit.  (Lookups are frequent: no printf here.)
bool locale_name(char* out, const locale_parts& parts) {
  size_t at = 0;
  auto append = [&](const char* text) {
    size_t n = std::strlen(text);
    if (n >= kLocaleNameSize - at) return false;
    std::memcpy(out + at, text, n);
    at += n;
    return true;
  };
  bool ok = append(parts.language) &&
            (parts.territory == nullptr || (append("_") && append(parts.territory))) &&
            append(".") && append(parts.charset);
  if (ok) out[at] = '\0';
  return ok;
}

}  // namespace

extern "C" {

ORU_API const char* oruBindTextDomain(const char* domain, const char* dirname) {
  if (!ready() || domain == nullptr || domain[0] == '\0') return nullptr;
  const char* result = nullptr;
  oruMutexLock(&g_bindingMutex);
  oru_binding* b = find_binding(domain);
  if (dirname == nullptr) {
    result = b != nullptr ? b->directory : nullptr;
  } else if (char* copy = oruStrDup(dirname); copy != nullptr) {
    if (b != nullptr) {
      oruFree(b->directory);
      b->directory = copy;
      result = copy;
    } else {
      auto* node = static_cast<oru_binding*>(oruMalloc(sizeof(oru_binding)));
      char* domainCopy = oruStrDup(domain);
      if (node != nullptr && domainCopy != nullptr) {
        *node = oru_binding{g_bindings, domainCopy, copy};
        g_bindings = node;
        result = copy;
      } else {
        oruFree(node);
        oruFree(domainCopy);
        oruFree(copy);
      }
    }
  }
  oruMutexUnlock(&g_bindingMutex);
  return result;
}

ORU_API const char* oruTextDomain(const char* domain) {
  if (!ready()) return kDefaultDomain;
  if (domain != nullptr) {
    if (domain[0] == '\0') {
      oruTlsSet(g_domainKey, nullptr);
    } else if (char* copy = oruStrDup(domain); copy != nullptr) {
      if (oruTlsSet(g_domainKey, copy) != ORU_OK) oruFree(copy);
    }
  }
  const char* current = static_cast<const char*>(oruTlsGet(g_domainKey));
  return current != nullptr ? current : kDefaultDomain;
}

ORU_API const char* oruDCGetTextLC(const char* domain, const char* locale, const char* msgid,
                                   int category) {
  if (msgid == nullptr) return nullptr;
  if (!ready()) return msgid;
  if (domain == nullptr) domain = kDefaultDomain;
  char charset[kLocaleNameSize];
  if (!read_param(ORU_LP_APP_CHARSET, charset)) return msgid;
  char name[kLocaleNameSize];
  const unsigned char* image = nullptr;
  if (locale != nullptr && locale[0] != '\0') {
    if (std::strlen(locale) >= kLocaleNameSize || !locale_name(name, {locale, nullptr, charset})) {
      return msgid;
    }
    image = find_catalog(name, category, domain);
  } else {
    // Parameters are read only as far as the candidates need them.
    char language[kLocaleNameSize];
    char territory[kLocaleNameSize];
    bool haveLanguage = read_param(ORU_LP_LANGUAGE, language);
    if (haveLanguage && read_param(ORU_LP_TERRITORY, territory) &&
        locale_name(name, {language, territory, charset})) {
      image = find_catalog(name, category, domain);
    }
    if (image == nullptr && haveLanguage && locale_name(name, {language, nullptr, charset})) {
      image = find_catalog(name, category, domain);
    }
    char fallback[kLocaleNameSize];
    if (image == nullptr && read_param(ORU_LP_FALLBACK_LANGUAGE, fallback) &&
        locale_name(name, {fallback, nullptr, charset})) {
      image = find_catalog(name, category, domain);
    }
  }
  if (image == nullptr) return msgid;
  const char* translation = oru_catalog_find(image, msgid);
  return translation != nullptr && translation[0] != '\0' ? translation : msgid;
}

ORU_API const char* oruGetText(const char* msgid) {
  return oruDCGetTextLC(oruTextDomain(nullptr), nullptr, msgid, ORU_LC_MESSAGES);
}

ORU_API const char* oruDGetText(const char* domain, const char* msgid) {
  return oruDCGetTextLC(domain, nullptr, msgid, ORU_LC_MESSAGES);
}

ORU_API const char* oruDGetTextLC(const char* domain, const char* locale, const char* msgid) {
  return oruDCGetTextLC(domain, locale, msgid, ORU_LC_MESSAGES);
}

ORU_API const char* oruDCGetText(const char* domain, const char* msgid, int category) {
  return oruDCGetTextLC(domain, nullptr, msgid, category);
}

}  // extern "C"
