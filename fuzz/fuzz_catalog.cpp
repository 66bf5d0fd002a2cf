// The catalog loader on random and mutated catalog files.  Every input is
// validated and searched in memory by the format code the loader uses;
// one input in eight also goes through the real lookup path (written to a
// catalog file under a temporary directory, found by oruDCGetTextLC), and
// the answers of the two must agree.
//
// Input: one selector byte, then the catalog image.
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_check.h"
#include "oru/core.h"
#include "oru/file.h"
#include "oru/l10n.h"
#include "oru_catalog_format.h"

namespace {

constexpr const char* kDomain = "fuzz";
std::string g_root;  // the temporary directory the catalogs are bound to
unsigned long g_serial = 0;

// Draws a fresh temporary directory name and binds the domain to it.  The
// directory exists only while an input goes through the real path, so
// nothing is left behind however the process ends.
bool setup() {
  char dir[1024];
  if (oruGetTempDirName(nullptr, "oru-fuzz-catalog-", "", dir, sizeof dir) != ORU_OK) return false;
  g_root = dir;
  FUZZ_CHECK(oruRemoveDirectory(dir) == ORU_OK);
  FUZZ_CHECK(oruBindTextDomain(kDomain, dir) != nullptr);
  FUZZ_CHECK(oruSetLocaleParam(ORU_LP_APP_CHARSET, "UTF-8") == ORU_OK);
  return true;
}

// The strings an image holds: every NUL-terminated run after the header
// (at most 64), plus a few that are never there.
std::vector<std::string> candidate_msgids(const unsigned char* image, size_t size) {
  std::vector<std::string> ids = {"", "x", "Hello", "\xC3\xA9"};
  size_t i = ORU_CATALOG_HEADER_SIZE < size ? ORU_CATALOG_HEADER_SIZE : size;
  while (i < size && ids.size() < 68) {
    size_t j = i;
    while (j < size && image[j] != 0) ++j;
    if (j > i) ids.emplace_back(reinterpret_cast<const char*>(image) + i, j - i);
    i = j + 1;
  }
  return ids;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool ready = setup();
  FUZZ_CHECK(ready);
  if (size == 0) return 0;
  const bool realPath = (data[0] & 7) == 0;
  const uint8_t* file = data + 1;
  const size_t fileSize = size - 1;

  // In memory: validate an aligned copy, then look every candidate up.
  std::vector<uint32_t> aligned((fileSize + 3) / 4 + 1);
  auto* image = reinterpret_cast<unsigned char*>(aligned.data());
  if (fileSize != 0) std::memcpy(image, file, fileSize);
  const char* why = oru_catalog_validate(image, fileSize);
  const std::vector<std::string> ids =
      candidate_msgids(reinterpret_cast<const unsigned char*>(file), fileSize);
  std::vector<const char*> found(ids.size(), nullptr);
  if (why == nullptr) {
    for (size_t k = 0; k < ids.size(); ++k) {
      found[k] = oru_catalog_find(image, ids[k].c_str());
      if (found[k] != nullptr) {
        // The translation lies inside the image and ends there.
        const char* begin = reinterpret_cast<const char*>(image);
        FUZZ_CHECK(found[k] > begin && found[k] < begin + fileSize);
        FUZZ_CHECK(std::memchr(found[k], 0, static_cast<size_t>(begin + fileSize - found[k])) !=
                   nullptr);
      }
    }
  }
  if (!realPath) return 0;

  // Through the library: a new locale directory for every input, since a
  // catalog once looked for is kept for the life of the process.
  const std::string locale = "l" + std::to_string(++g_serial);
  const std::string localeDir = g_root + "/" + locale + ".UTF-8";
  const std::string categoryDir = localeDir + "/LC_MESSAGES";
  const std::string path = categoryDir + "/" + kDomain + ".mo";
  FUZZ_CHECK(oruCreateDirectory(g_root.c_str()) == ORU_OK);
  FUZZ_CHECK(oruCreateDirectory(localeDir.c_str()) == ORU_OK);
  FUZZ_CHECK(oruCreateDirectory(categoryDir.c_str()) == ORU_OK);
  oruFile f = nullptr;
  FUZZ_CHECK(oruOpenFile(path.c_str(), ORU_OPEN_WRITE | ORU_OPEN_CREATE | ORU_OPEN_TRUNC, &f) ==
             ORU_OK);
  FUZZ_CHECK(oruWrite(f, file, fileSize, nullptr) == ORU_OK);
  FUZZ_CHECK(oruClose(f) == ORU_OK);
  for (size_t k = 0; k < ids.size(); ++k) {
    const char* msgid = ids[k].c_str();
    const char* got = oruDCGetTextLC(kDomain, locale.c_str(), msgid, ORU_LC_MESSAGES);
    // The translation when there is a non-empty one, else the msgid itself.
    if (found[k] != nullptr && found[k][0] != '\0') {
      FUZZ_CHECK(got != msgid && std::strcmp(got, found[k]) == 0);
    } else {
      FUZZ_CHECK(got == msgid);
    }
    // Other categories find nothing.
    FUZZ_CHECK(oruDCGetTextLC(kDomain, locale.c_str(), msgid, ORU_LC_TIME) == msgid);
  }
  FUZZ_CHECK(oruRemoveFile(path.c_str()) == ORU_OK);
  FUZZ_CHECK(oruRemoveDirectory(categoryDir.c_str()) == ORU_OK);
  FUZZ_CHECK(oruRemoveDirectory(localeDir.c_str()) == ORU_OK);
  FUZZ_CHECK(oruRemoveDirectory(g_root.c_str()) == ORU_OK);
  // Remembered: the file is gone, the answers stay.
  for (size_t k = 0; k < ids.size() && k < 8; ++k) {
    const char* msgid = ids[k].c_str();
    const char* got = oruDCGetTextLC(kDomain, locale.c_str(), msgid, ORU_LC_MESSAGES);
    FUZZ_CHECK((found[k] != nullptr && found[k][0] != '\0') ? std::strcmp(got, found[k]) == 0
                                                            : got == msgid);
  }
  return 0;
}
