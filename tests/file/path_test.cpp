// The text operations on paths: the documented examples, tables of tricky
// inputs, in-place use, and a randomized comparison with a small model.

#include "oru/file.h"

#include <gtest/gtest.h>

#if defined(_WIN32)
#include <direct.h>
#else
#include <unistd.h>
#endif
#include <algorithm>
#include <climits>
#include <random>
#include <string>
#include <vector>

namespace {

// Tests spell paths with '\'; the library joins with the platform's
// separator, and on POSIX systems a single leading '/' is a root as well.
#if defined(_WIN32)
const std::string kSep = "\\";
constexpr bool kSlashRoot = false;
#else
const std::string kSep = "/";
constexpr bool kSlashRoot = true;
#endif

std::string call(oruResult (*fn)(const char*, char*, size_t), const std::string& path,
                 oruResult expected = ORU_OK) {
  char out[512];
  EXPECT_EQ(fn(path.c_str(), out, sizeof out), expected) << path;
  return expected == ORU_OK ? std::string(out) : std::string();
}

std::string join(const std::string& base, const std::string& name) {
  char out[512];
  EXPECT_EQ(oruAppendToPath(base.c_str(), name.c_str(), out, sizeof out), ORU_OK);
  return out;
}

// ---- A small model, written independently of the library's loops. ----

bool sep(char c) { return c == '\\' || c == '/'; }
bool letter(char c) { return (c | 0x20) >= 'a' && (c | 0x20) <= 'z'; }
bool unc(const std::string& s) { return s.size() >= 2 && sep(s[0]) && s[1] == s[0]; }
bool drive(const std::string& s) { return s.size() >= 2 && letter(s[0]) && s[1] == ':'; }

int model_is_absolute(const std::string& s) {
  return unc(s) || (drive(s) && s.size() >= 3 && sep(s[2])) ||
         (kSlashRoot && !s.empty() && s[0] == '/');
}

long model_root(const std::string& s) {
  if (drive(s) && s.size() >= 3 && sep(s[2])) return 3;
  if (unc(s)) {
    size_t server = s.find_first_of("\\/", 2);
    if (server != std::string::npos && server > 2) {
      if (server + 1 == s.size()) return static_cast<long>(server + 1);
      size_t share = s.find_first_of("\\/", server + 1);
      return share == std::string::npos ? static_cast<long>(s.size())
                                        : static_cast<long>(share + 1);
    }
  }
  return kSlashRoot && !s.empty() && s[0] == '/' ? 1 : -1;
}

std::string model_basename(const std::string& s) {
  size_t last = s.find_last_of("\\/");
  return last == std::string::npos ? s : s.substr(last + 1);
}

std::string model_join(const std::string& base, const std::string& name) {
  return base + (!base.empty() && !sep(base.back()) ? kSep : "") + name;
}

// Without a UNC prefix: strip the last name and the run of separators before
// it; a bare root keeps one separator.
std::string model_dirname_plain(const std::string& s, bool atStart) {
  size_t last = s.find_last_of("\\/");
  if (last == std::string::npos) return atStart && drive(s) ? s.substr(0, 2) : ".";
  size_t run = last;
  while (run > 0 && sep(s[run - 1])) --run;
  if (run == 0) return s.substr(0, 1);
  if (atStart && drive(s) && run == 2) return s.substr(0, 3);
  return s.substr(0, run);
}

std::string model_dirname(const std::string& s) {
  if (!unc(s)) return model_dirname_plain(s, true);
  size_t last = s.find_last_of("\\/");
  while (last > 1 && sep(s[last - 1])) --last;
  size_t first = s.find_first_of("\\/", 2);
  if (first == std::string::npos || first == last) return s;
  size_t after = s.find_first_not_of("\\/", first);
  size_t runEnd = (after == std::string::npos ? s.size() : after) - 1;
  return s.substr(0, first) + model_dirname_plain(s.substr(runEnd), false);
}

// Components after the root: runs of separators keep their first, leading
// dots of a component are peeled one at a time ("." and a separator vanish,
// ".." and a separator go up), what is left stays.
std::string model_normalize(const std::string& s) {
  long root = model_root(s);
  if (root < 0) return "<none>";
  std::vector<std::string> kept;
  size_t i = static_cast<size_t>(root);
  while (i < s.size()) {
    if (sep(s[i])) {
      ++i;
      continue;
    }
    size_t end = s.find_first_of("\\/", i);
    std::string name = s.substr(i, end == std::string::npos ? std::string::npos : end - i);
    std::string separator = end == std::string::npos ? "" : s.substr(end, 1);
    i = end == std::string::npos ? s.size() : end + 1;
    for (;;) {
      if (name == "." || (name == ".." && separator.empty())) {
        name.clear();
        break;
      }
      if (name == "..") {
        if (!kept.empty()) kept.pop_back();
        name.clear();
        break;
      }
      if (name[0] != '.') break;
      name.erase(0, 1);
    }
    if (!name.empty()) kept.push_back(name + separator);
  }
  std::string out = s.substr(0, static_cast<size_t>(root));
  for (const std::string& part : kept) out += part;
  return out;
}

std::string cwd() {
  char buffer[4096];
#if defined(_WIN32)
  EXPECT_NE(_getcwd(buffer, sizeof buffer), nullptr);
#else
  EXPECT_NE(getcwd(buffer, sizeof buffer), nullptr);
#endif
  return buffer;
}

// ---- Tests ----

TEST(Path, AbsoluteTest) {
  struct {
    const char* path;
    int absolute;
  } cases[] = {{"\\\\x", 1},         {"//x", 1},      {"C:/x", 1},        {"z:\\", 1},
               {"\\x", 0},           {"C:x", 0},      {"\\/x", 0},        {"", 0},
               {"1:\\x", 0},         {"\xC3:\\x", 0}, {"/x", kSlashRoot}, {"/", kSlashRoot},
               {"/\\x", kSlashRoot}, {"a", 0},        {"C:", 0}};
  for (const auto& c : cases) EXPECT_EQ(oruIsAbsolutePath(c.path), c.absolute) << c.path;
  EXPECT_EQ(oruIsAbsolutePath(nullptr), 0);
}

TEST(Path, Join) {
  EXPECT_EQ(join("", "a"), "a");
  EXPECT_EQ(join("C:\\", "a"), "C:\\a");
  EXPECT_EQ(join("C:\\d", "a"), "C:\\d" + kSep + "a");
  EXPECT_EQ(join("d/", "\\\\abs"), "d/\\\\abs");
  EXPECT_EQ(join("d", ""), "d" + kSep);
  // The length check counts the separator and the terminator.
  char out[5];
  EXPECT_EQ(oruAppendToPath("ab", "c", out, 5), ORU_OK);
  EXPECT_EQ(oruAppendToPath("ab", "cd", out, 5), ORU_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(oruAppendToPath(nullptr, "a", out, 5), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruAppendToPath("a", nullptr, out, 5), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruAppendToPath("a", "b", nullptr, 5), ORU_E_INVALID_ARG);
}

TEST(Path, BasenameAndDirname) {
  struct {
    const char* path;
    const char* base;
    const char* dir;
  } cases[] = {
      {"dir\\", "", "dir"},
      {"file", "file", "."},
      {"", "", "."},
      {"C:\\", "", "C:\\"},
      {"C:\\a", "a", "C:\\"},
      {"C:a", "C:a", "C:"},
      {"C:", "C:", "C:"},
      {"\\a", "a", "\\"},
      {"/a/b//c", "c", "/a/b"},
      {"a\\\\b", "b", "a"},
      {"/\\a", "a", "/"},
      {"C:\\\\a", "a", "C:\\"},
      {"\\\\server\\share", "share", "\\\\server\\share"},
      {"\\\\server\\share\\dir\\file", "file", "\\\\server\\share\\dir"},
      {"\\\\server\\\\\\share\\x", "x", "\\\\server\\share"},
      {"\\\\server\\share\\", "", "\\\\server\\share"},
      {"\\\\server\\\\", "", "\\\\server\\\\"},
      {"\\\\", "", "\\\\"},
      {"//s/h/d", "d", "//s/h"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(call(oruGetBasename, c.path), c.base) << c.path;
    EXPECT_EQ(call(oruGetDirname, c.path), c.dir) << c.path;
  }
  char small[2];
  EXPECT_EQ(oruGetBasename("ab", small, 2), ORU_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(oruGetDirname("abc\\d", small, 2), ORU_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(oruGetDirname("x", small, 1), ORU_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(oruGetDirname("x", small, 2), ORU_OK);
  EXPECT_EQ(oruGetBasename(nullptr, small, 2), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruGetDirname("a", nullptr, 2), ORU_E_INVALID_ARG);
}

TEST(Path, InPlace) {
  char buffer[64] = "\\\\server\\share\\dir\\file";
  ASSERT_EQ(oruGetDirname(buffer, buffer, sizeof buffer), ORU_OK);
  EXPECT_STREQ(buffer, "\\\\server\\share\\dir");
  ASSERT_EQ(oruGetBasename(buffer, buffer, sizeof buffer), ORU_OK);
  EXPECT_STREQ(buffer, "dir");
  ASSERT_EQ(oruAppendToPath(buffer, "x", buffer, sizeof buffer), ORU_OK);  // out is base
  EXPECT_EQ(std::string(buffer), "dir" + kSep + "x");
  char name[64] = "leaf";
  ASSERT_EQ(oruAppendToPath("root", name, name, sizeof name), ORU_OK);  // out is name
  EXPECT_EQ(std::string(name), "root" + kSep + "leaf");
  char both[64] = "ab";
  ASSERT_EQ(oruAppendToPath(both, both, both, sizeof both), ORU_OK);
  EXPECT_EQ(std::string(both), "ab" + kSep + "ab");
  // A base inside the output, and an output starting inside the path.
  char shifted[64] = "xxbase";
  ASSERT_EQ(oruAppendToPath(shifted + 2, "n", shifted, sizeof shifted), ORU_OK);
  EXPECT_EQ(std::string(shifted), "base" + kSep + "n");
  char inner[64] = "a/b/c/d";
  ASSERT_EQ(oruGetDirname(inner, inner + 2, sizeof inner - 2), ORU_OK);
  EXPECT_STREQ(inner + 2, "a/b/c");
}

TEST(Path, AbsolutePathDotRules) {
  struct {
    const char* path;
    const char* absolute;
  } cases[] = {
      {"C:\\a\\.\\b\\..\\c", "C:\\a\\c"},
      {"C:\\a\\.git", "C:\\a\\git"},
      {"C:\\..\\x", "C:\\x"},
      {"C:\\a\\..", "C:\\a\\"},
      {"C:\\a\\.", "C:\\a\\"},
      {"C:\\a\\..b", "C:\\a\\b"},
      {"C:\\a\\...\\b", "C:\\b"},
      {"C:\\a\\b.\\c..", "C:\\a\\b.\\c.."},
      {"C:/a//\\b", "C:/a/b"},
      {"C:\\\\\\a", "C:\\a"},
      {"\\\\srv\\sh\\a\\..\\..\\b", "\\\\srv\\sh\\b"},
      {"\\\\srv\\sh", "\\\\srv\\sh"},
      {"//srv/", "//srv/"},
  };
  for (const auto& c : cases) EXPECT_EQ(call(oruGetAbsolutePath, c.path), c.absolute) << c.path;
#if !defined(_WIN32)
  // A single leading '/' is a root on POSIX systems only.
  EXPECT_EQ(call(oruGetAbsolutePath, "/a/./b/../../.."), "/");
  EXPECT_EQ(call(oruGetAbsolutePath, "/..a/.b/c"), "/a/b/c");
#endif

  // Relative, drive-relative and rooted Windows forms go under the current
  // directory as they stand.
  std::string here = cwd();
  EXPECT_EQ(call(oruGetAbsolutePath, "a/./b"), here + kSep + "a/b");
  EXPECT_EQ(call(oruGetAbsolutePath, "C:x"), here + kSep + "C:x");
  EXPECT_EQ(call(oruGetAbsolutePath, "\\x"), here + kSep + "x");
  EXPECT_EQ(call(oruGetAbsolutePath, ""), here + kSep);
  // Two equal separators with no server name are absolute but no UNC root;
  // on POSIX systems the first is the root.
  EXPECT_EQ(call(oruGetAbsolutePath, "///x", kSlashRoot ? ORU_OK : ORU_E_INVALID_ARG),
            kSlashRoot ? "/x" : "");

  char out[8];
  EXPECT_EQ(oruGetAbsolutePath("C:\\abcde", out, sizeof out), ORU_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(oruGetAbsolutePath("C:\\abcd", out, sizeof out), ORU_OK);
  EXPECT_EQ(oruGetAbsolutePath(nullptr, out, sizeof out), ORU_E_INVALID_ARG);
  // A long relative path makes the join buffer grow.
  std::string deep(3000, 'x');
  std::vector<char> big(8192);
  ASSERT_EQ(oruGetAbsolutePath(deep.c_str(), big.data(), big.size()), ORU_OK);
  EXPECT_EQ(std::string(big.data()), here + kSep + deep);
}

TEST(Path, MatchesModelOnRandomInputs) {
  const char* tokens[] = {"\\",      "/",     ".",  "..",       "a", "bc",  "C:",   "x:",
                          "\\\\srv", "//srv", "~1", "\xC3\xA9", ":", "...", "\\\\", "//"};
  std::mt19937 random(20240611);
  std::string here = cwd();
  for (int round = 0; round < 20000; ++round) {
    std::string path;
    int count = static_cast<int>(random() % 9);
    for (int i = 0; i < count; ++i) path += tokens[random() % (sizeof tokens / sizeof *tokens)];
    SCOPED_TRACE(path);

    ASSERT_EQ(oruIsAbsolutePath(path.c_str()), model_is_absolute(path));
    ASSERT_EQ(call(oruGetBasename, path), model_basename(path));
    ASSERT_EQ(call(oruGetDirname, path), model_dirname(path));
    std::vector<char> buffer(path.begin(), path.end());
    buffer.resize(path.size() + 2);  // room for "." after ""
    ASSERT_EQ(oruGetDirname(buffer.data(), buffer.data(), buffer.size()), ORU_OK);
    ASSERT_EQ(std::string(buffer.data()), model_dirname(path));
    // One byte short of the result fails.
    std::string dir = model_dirname(path);
    ASSERT_EQ(oruGetDirname(path.c_str(), buffer.data(), dir.size()), ORU_E_BUFFER_TOO_SMALL);

    std::string other = tokens[random() % (sizeof tokens / sizeof *tokens)];
    ASSERT_EQ(join(path, other), model_join(path, other));
    std::vector<char> joined(path.size() + other.size() + 2);
    std::copy(path.begin(), path.end(), joined.begin());
    ASSERT_EQ(oruAppendToPath(joined.data(), other.c_str(), joined.data(), joined.size()), ORU_OK);
    ASSERT_EQ(std::string(joined.data()), model_join(path, other));

    std::string full = model_is_absolute(path) ? path : model_join(here, path);
    std::string expected = model_normalize(full);
    char out[512];
    oruResult result = oruGetAbsolutePath(path.c_str(), out, sizeof out);
    if (expected == "<none>") {
      ASSERT_EQ(result, ORU_E_INVALID_ARG);
    } else {
      ASSERT_EQ(result, ORU_OK);
      ASSERT_EQ(std::string(out), expected);
    }
  }
}

}  // namespace
