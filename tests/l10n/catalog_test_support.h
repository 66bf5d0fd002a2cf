// Helpers of the catalog tests: a scratch directory tree and catalogs
// written by the library's catalog writer, or byte by byte for malformed
// ones.
#ifndef ORU_TESTS_L10N_CATALOG_TEST_SUPPORT_H
#define ORU_TESTS_L10N_CATALOG_TEST_SUPPORT_H

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "l10n/oru_catalog_writer.h"

// A fresh directory, removed with everything below it at the end.
class catalog_dir {
 public:
  catalog_dir() {
    // A name of its own: create_directory fails on one that exists.
    std::random_device seed;
    std::error_code ec;
    for (int attempt = 0; attempt < 100 && path_.empty(); ++attempt) {
      std::filesystem::path p =
          std::filesystem::temp_directory_path(ec) / ("oru-catalog-" + std::to_string(seed()));
      if (!ec && std::filesystem::create_directory(p, ec) && !ec) path_ = p.string();
    }
  }
  ~catalog_dir() {
    std::error_code ec;
    std::filesystem::remove_all(path_, ec);
  }
  catalog_dir(const catalog_dir&) = delete;
  catalog_dir& operator=(const catalog_dir&) = delete;
  const std::string& path() const { return path_; }

  // Writes bytes to DIR/locale/category/domain.mo.
  void put(const std::string& locale, const std::string& category, const std::string& domain,
           const std::string& bytes) const {
    std::filesystem::path p = std::filesystem::path(path_) / locale / category;
    std::filesystem::create_directories(p);
    std::ofstream(p / (domain + ".mo"), std::ios::binary) << bytes;
  }
  void put(const std::string& locale, const std::string& domain, const std::string& bytes) const {
    put(locale, "LC_MESSAGES", domain, bytes);
  }

 private:
  std::string path_;
};

using catalog_pairs = std::vector<std::pair<std::string, std::string>>;

inline std::string catalog_of(const catalog_pairs& pairs) { return oru_catalog_build(pairs); }

// Big-endian field writers for hand-made images.
inline void put_be32(std::string& s, size_t at, uint32_t v) {
  s[at] = static_cast<char>(v >> 24);
  s[at + 1] = static_cast<char>(v >> 16);
  s[at + 2] = static_cast<char>(v >> 8);
  s[at + 3] = static_cast<char>(v);
}
inline uint32_t get_be32(const std::string& s, size_t at) {
  auto b = [&](size_t i) { return static_cast<uint32_t>(static_cast<unsigned char>(s[at + i])); };
  return (b(0) << 24) | (b(1) << 16) | (b(2) << 8) | b(3);
}

// The msgid hash, written out independently of the library.
inline uint32_t msgid_hash(const std::string& s) {
  uint32_t h = 0;
  for (unsigned char c : s) h = h * 31u + c;
  return h;
}

#endif  // ORU_TESTS_L10N_CATALOG_TEST_SUPPORT_H
