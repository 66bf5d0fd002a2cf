// Directory listings: the end value, the dot entries, names that do not fit,
// and a large directory read whole against the set of names created.

#include "oru/file.h"

#include "file_test_support.h"

#include <cstdio>
#include <filesystem>
#include <set>
#include <string>

namespace {

class Dir : public ScratchDir {};

oruDir open_ok(const std::string& path) {
  oruDir dir = nullptr;
  EXPECT_EQ(oruOpenDir(path.c_str(), &dir), ORU_OK) << path;
  return dir;
}

TEST_F(Dir, EmptyDirectoryEndsAtOnceAndStaysAtTheEnd) {
  oruDir dir = open_ok(root_.string());
  char name[256] = "junk";
  EXPECT_EQ(oruReadDir(dir, name, sizeof name), 1);
  EXPECT_STREQ(name, "");
  strcpy(name, "junk");
  EXPECT_EQ(oruReadDir(dir, name, sizeof name), 1);
  EXPECT_STREQ(name, "");
  EXPECT_EQ(oruReadDir(dir, name, 0), ORU_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(oruCloseDir(dir), ORU_OK);
}

TEST_F(Dir, OneFile) {
  put("a", "");
  oruDir dir = open_ok(root_.string() + "/");  // a trailing separator is fine
  char name[256];
  EXPECT_EQ(oruReadDir(dir, name, sizeof name), ORU_OK);
  EXPECT_STREQ(name, "a");
  EXPECT_EQ(oruReadDir(dir, name, sizeof name), 1);
  EXPECT_EQ(oruCloseDir(dir), ORU_OK);
}

TEST_F(Dir, NamesThatDoNotFitAreLost) {
  put("abc", "");
  put("de", "");
  oruDir dir = open_ok(root_.string());
  char name[3];
  int tooSmall = 0;
  std::set<std::string> seen;
  oruResult result;
  while ((result = oruReadDir(dir, name, sizeof name)) != 1) {
    if (result == ORU_E_BUFFER_TOO_SMALL) {
      ++tooSmall;
    } else {
      ASSERT_EQ(result, ORU_OK);
      seen.insert(name);
    }
  }
  EXPECT_EQ(tooSmall, 1);
  EXPECT_EQ(seen, std::set<std::string>{"de"});
  EXPECT_EQ(oruCloseDir(dir), ORU_OK);

  // With room for nothing but the terminator every entry is lost, "." and
  // ".." too, since the length is checked before the dot test.
  dir = open_ok(root_.string());
  char one[1] = {'\0'};
  int lost = 0;
  while ((result = oruReadDir(dir, one, 1)) == ORU_E_BUFFER_TOO_SMALL) ++lost;
  EXPECT_EQ(result, 1);
  EXPECT_EQ(lost, 4);
  EXPECT_EQ(oruCloseDir(dir), ORU_OK);
}

TEST_F(Dir, ManyEntriesReadWhole) {
  std::set<std::string> created;
  for (int i = 0; i < 500; ++i) {
    std::string name = "entry" + std::to_string(i * 7919 % 100003);
    if (i % 10 == 0) {
      std::filesystem::create_directory(path(name));
    } else {
      put(name, "");
    }
    created.insert(name);
  }
  oruDir dir = open_ok(root_.string());
  std::set<std::string> listed;
  char name[256];
  oruResult result;
  while ((result = oruReadDir(dir, name, sizeof name)) == ORU_OK) {
    EXPECT_TRUE(listed.insert(name).second) << "twice: " << name;
  }
  EXPECT_EQ(result, 1);
  EXPECT_EQ(listed, created);
  EXPECT_EQ(oruCloseDir(dir), ORU_OK);
}

TEST_F(Dir, BadInput) {
  put("file", "");
  oruDir dir = nullptr;
#if defined(_WIN32)
  // The search for "file\*" fails as an invalid directory name
  // (ERROR_DIRECTORY), that for "missing\*" as a missing path.
  EXPECT_EQ(oruOpenDir(path("file").c_str(), &dir), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruOpenDir(path("missing").c_str(), &dir), ORU_E_PATH_NOT_FOUND);
#else
  EXPECT_EQ(oruOpenDir(path("file").c_str(), &dir), ORU_E_PATH_NOT_FOUND);
  EXPECT_EQ(oruOpenDir(path("missing").c_str(), &dir), ORU_E_NOT_FOUND);
#endif
  EXPECT_EQ(oruOpenDir(nullptr, &dir), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruOpenDir(root_.string().c_str(), nullptr), ORU_E_INVALID_ARG);
  char name[8];
  EXPECT_EQ(oruReadDir(nullptr, name, sizeof name), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruCloseDir(nullptr), ORU_E_INVALID_ARG);
  dir = open_ok(root_.string());
  EXPECT_EQ(oruReadDir(dir, nullptr, 8), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruCloseDir(dir), ORU_OK);  // closing with the first name unread
}

}  // namespace
