// A scratch directory per test, made and removed with the standard library
// so that the checks do not lean on the code under test.
#ifndef ORU_TESTS_FILE_FILE_TEST_SUPPORT_H
#define ORU_TESTS_FILE_FILE_TEST_SUPPORT_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

class ScratchDir : public ::testing::Test {
 protected:
  void SetUp() override {
#if defined(_WIN32)
    // No mkdtemp: a random name, created new.
    std::random_device seed;
    std::mt19937 random(seed());
    for (int attempt = 0; attempt < 100 && root_.empty(); ++attempt) {
      std::filesystem::path candidate = std::filesystem::temp_directory_path() /
                                        ("oru_file_" + std::to_string(random() % 1000000000));
      if (std::filesystem::create_directory(candidate)) root_ = candidate;
    }
    ASSERT_FALSE(root_.empty());
#else
    std::string pattern = (std::filesystem::temp_directory_path() / "oru_file_XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    root_ = pattern;
#endif
  }
  void TearDown() override {
    std::error_code ignored;
    std::filesystem::permissions(root_, std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::add, ignored);
    std::filesystem::remove_all(root_, ignored);
  }
  std::string path(const std::string& name) const { return (root_ / name).string(); }
  void put(const std::string& name, const std::string& content) const {
    std::ofstream(path(name), std::ios::binary) << content;
  }
  std::string get(const std::string& name) const {
    std::ifstream in(path(name), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }

  std::filesystem::path root_;
};

// The separator the library writes when it joins names.
#if defined(_WIN32)
inline const std::string kSep = "\\";
#else
inline const std::string kSep = "/";
#endif

#endif  // ORU_TESTS_FILE_FILE_TEST_SUPPORT_H
