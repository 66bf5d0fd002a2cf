// Hostile catalogs: thousands of mutated images (flipped bytes, truncation,
// slots aimed at the last bytes, entries without their NUL) are validated
// and searched in buffers of their exact size, so that AddressSanitizer
// reports any read outside the image; a sample of them also goes through
// the library's loader as files.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "catalog_test_support.h"
#include "l10n/oru_catalog_format.h"
#include "oru/l10n.h"

namespace {

std::vector<std::string> keys_of(int n) {
  std::vector<std::string> keys;
  for (int i = 0; i < n; ++i) keys.push_back("key " + std::to_string(i));
  return keys;
}

std::string mutate(std::string b, std::mt19937& rng) {
  auto pick = [&](size_t n) { return n == 0 ? size_t{0} : static_cast<size_t>(rng() % n); };
  switch (rng() % 6) {
    case 0:  // random bytes anywhere
      for (int i = 0, n = 1 + static_cast<int>(rng() % 8); i < n; ++i) {
        b[pick(b.size())] = static_cast<char>(rng());
      }
      break;
    case 1:  // truncated, with a consistent size field and closing zeros
      b.resize(36 + pick(b.size() - 36));
      b[b.size() - 1] = b[b.size() - 2] = 0;
      put_be32(b, 8, static_cast<uint32_t>(b.size()));
      break;
    case 2:  // slots aimed at the last bytes
      for (size_t at = 32; at + 4 <= b.size() && at < 32 + 4 * size_t{get_be32(b, 12)}; at += 4) {
        if (rng() % 2) put_be32(b, at, static_cast<uint32_t>(b.size() - 2 + rng() % 3));
      }
      break;
    case 3:  // NULs removed: entries run into each other up to the end
      for (size_t i = 32 + 4 * size_t{get_be32(b, 12)}; i + 2 < b.size(); ++i) {
        if (b[i] == 0 && rng() % 2) b[i] = 'x';
      }
      break;
    case 4:  // a random slot count that stays a power of two
      put_be32(b, 12, 1u << (rng() % 32));
      break;
    default:  // random bytes only
      for (char& c : b) c = static_cast<char>(rng());
      break;
  }
  return b;
}

TEST(CatalogHostile, MutatedImagesStayInBounds) {
  std::mt19937 rng(20261123);
  catalog_pairs pairs;
  for (const std::string& k : keys_of(40)) pairs.emplace_back(k, "value of " + k);
  const std::string good = catalog_of(pairs);
  int accepted = 0;
  for (int round = 0; round < 4000; ++round) {
    std::string b = mutate(good, rng);
    // An exact-size heap copy: one byte further is outside the allocation.
    auto* img = static_cast<unsigned char*>(std::malloc(b.size()));
    ASSERT_NE(img, nullptr);
    std::memcpy(img, b.data(), b.size());
    if (oru_catalog_validate(img, b.size()) == nullptr) {
      ++accepted;
      for (const auto& [k, v] : pairs) {
        const char* t = oru_catalog_find(img, k.c_str());
        if (t != nullptr) {
          EXPECT_GE(t, reinterpret_cast<char*>(img));
          EXPECT_LT(t, reinterpret_cast<char*>(img) + b.size());
        }
      }
      oru_catalog_find(img, "");
      oru_catalog_find(img, "not there at all");
    }
    std::free(img);
  }
  EXPECT_GT(accepted, 500);  // the search itself was exercised
}

TEST(CatalogHostile, MutatedFilesThroughTheLoader) {
  std::mt19937 rng(7);
  catalog_pairs pairs;
  for (const std::string& k : keys_of(10)) pairs.emplace_back(k, "v");
  const std::string good = catalog_of(pairs);
  catalog_dir dir;
  ASSERT_NE(oruBindTextDomain("hostile", dir.path().c_str()), nullptr);
  for (int i = 0; i < 150; ++i) {
    std::string locale = "h" + std::to_string(i);
    dir.put(locale + ".UTF-8", "hostile", mutate(good, rng));
    for (const auto& [k, v] : pairs) {
      const char* got = oruDGetTextLC("hostile", locale.c_str(), k.c_str());
      EXPECT_TRUE(got == k.c_str() || got != nullptr);
    }
  }
}

}  // namespace
