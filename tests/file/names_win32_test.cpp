// The Windows side of the name tests: file information and times against
// the C runtime and the handle interface, short (8.3) and true-case names,
// the component-by-component fallbacks, temporary names of a fresh process,
// the read-only attribute and handle hygiene.

#include "oru/file.h"

#include "file/oru_file_win32.h"
#include "file_test_support.h"

#include <sys/stat.h>
#include <windows.h>

#include <cctype>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

namespace {

class WinNames : public ScratchDir {
 protected:
  void SetUp() override {
    ScratchDir::SetUp();
    // The scratch directory as the system spells it in full, long form.
    char full[MAX_PATH * 4];
    ASSERT_GT(GetLongPathNameA(root_.string().c_str(), full, sizeof full), 0u);
    root_ = full;
  }
};

// 100-ns units since 1601 into an oruTimeVal, by the documented rule.
oruTimeVal time_val(const FILETIME& time) {
  int64_t units = static_cast<int64_t>((uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime);
  int64_t since1970 = units - 116444736000000000;
  return {static_cast<int32_t>(since1970 / 10000000),
          static_cast<int32_t>(since1970 % 10000000 / 10)};
}

// The times as a handle reports them: access, then write.
void handle_times(const std::string& path, FILETIME* access, FILETIME* written) {
  HANDLE handle = CreateFileA(path.c_str(), FILE_READ_ATTRIBUTES,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                              OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  ASSERT_NE(handle, INVALID_HANDLE_VALUE) << path;
  EXPECT_TRUE(GetFileTime(handle, nullptr, access, written));
  CloseHandle(handle);
}

std::string short_name(const std::string& path) {
  char out[MAX_PATH * 4];
  DWORD length = GetShortPathNameA(path.c_str(), out, sizeof out);
  EXPECT_GT(length, 0u) << path;
  return length > 0 && length < sizeof out ? std::string(out) : std::string();
}

std::string upper(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

// A program of the build: they all lie beside the test program (and
// beside oru.dll), where Windows finds the DLL.
std::string beside_this_program(const char* name) {
  char self[MAX_PATH * 4];
  DWORD length = GetModuleFileNameA(nullptr, self, sizeof self);
  EXPECT_GT(length, 0u);
  return (std::filesystem::path(std::string(self, length)).parent_path() / name).string();
}

std::string hex8(uint32_t value) {
  char text[16];
  std::snprintf(text, sizeof text, "%08x", value);
  return text;
}

TEST_F(WinNames, FileInfo) {
  put("f", "12345");
  std::string f = path("f");
  oruFileInfo info = {};
  info.mask = 64;
  EXPECT_EQ(oruGetFileInfo(f.c_str(), &info), ORU_E_INVALID_ARG);
  info.mask = ORU_FINFO_RESERVED;
  EXPECT_EQ(oruGetFileInfo(f.c_str(), &info), ORU_OK);
  EXPECT_EQ(info.mask, 0u);

  info.mask = ORU_FINFO_BASIC | ORU_FINFO_RESERVED;
  ASSERT_EQ(oruGetFileInfo(f.c_str(), &info), ORU_OK);
  EXPECT_EQ(info.mask, 15u);
  EXPECT_EQ(info.type, 3u);
  EXPECT_EQ(info.size, 5u);
  struct _stat64 status = {};
  ASSERT_EQ(_stat64(f.c_str(), &status), 0);
  EXPECT_EQ(info.mtime.sec, status.st_mtime);
  FILETIME access, written;
  handle_times(f, &access, &written);
  EXPECT_EQ(info.mtime.usec, time_val(written).usec);
  EXPECT_EQ(info.atime.sec, time_val(access).sec);

  // The allocation unit of the volume: that of its root, asked directly.
  DWORD sectors = 0, bytes = 0, freeClusters = 0, clusters = 0;
  std::string volume = root_.string().substr(0, 3);
  ASSERT_TRUE(GetDiskFreeSpaceA(volume.c_str(), &sectors, &bytes, &freeClusters, &clusters));
  info.mask = ORU_FINFO_BLKSIZE;
  ASSERT_EQ(oruGetFileInfo(root_.string().c_str(), &info), ORU_OK);
  EXPECT_EQ(info.mask, 16u);
  EXPECT_EQ(info.blksize, sectors * bytes);
  // The volume query takes the whole absolute path, which must then name a
  // directory: a file is an invalid directory name.  The basic group is
  // filled before that.
  info.mask = 31;
  EXPECT_EQ(oruGetFileInfo(f.c_str(), &info), ORU_E_INVALID_ARG);
  EXPECT_EQ(info.mask, 15u);
  info.mask = ORU_FINFO_BLKSIZE;  // relative: the current directory's volume
  ASSERT_EQ(oruGetFileInfo("anything", &info), ORU_OK);
  EXPECT_EQ(info.mask, 16u);
  info.mask = ORU_FINFO_BLKSIZE;  // a server without a share has no root
  EXPECT_EQ(oruGetFileInfo("\\\\server", &info), ORU_E_INVALID_ARG);

  info.mask = 1;  // any of the four bits brings all four
  ASSERT_EQ(oruGetFileInfo(root_.string().c_str(), &info), ORU_OK);
  EXPECT_EQ(info.mask, 15u);
  EXPECT_EQ(info.type, 1u);
  info.mask = 31;
  EXPECT_EQ(oruGetFileInfo(path("missing").c_str(), &info), ORU_E_NOT_FOUND);
  EXPECT_EQ(info.mask, 0u);
  EXPECT_EQ(oruGetFileInfo(nullptr, &info), ORU_E_INVALID_ARG);
}

TEST_F(WinNames, FileTimes) {
  put("f", "x");
  std::string f = path("f");
  oruTimeVal accessed = {1000000000, 123456};
  oruTimeVal modified = {1500000000, 654321};
  ASSERT_EQ(oruSetFileTime(f.c_str(), &accessed, &modified), ORU_OK);
  FILETIME access, written;
  handle_times(f, &access, &written);
  EXPECT_EQ(time_val(access).sec, 1000000000);
  EXPECT_EQ(time_val(access).usec, 123456);
  EXPECT_EQ(time_val(written).sec, 1500000000);
  EXPECT_EQ(time_val(written).usec, 654321);
  // A null time stays; a time before 1970 comes back truncated toward zero.
  oruTimeVal early = {-2, 500000};
  ASSERT_EQ(oruSetFileTime(f.c_str(), nullptr, &early), ORU_OK);
  oruFileInfo info = {};
  info.mask = ORU_FINFO_BASIC;
  ASSERT_EQ(oruGetFileInfo(f.c_str(), &info), ORU_OK);
  EXPECT_EQ(info.atime.sec, 1000000000);
  EXPECT_EQ(info.atime.usec, 123456);
  EXPECT_EQ(info.mtime.sec, -1);
  EXPECT_EQ(info.mtime.usec, -500000);
  // Directories take times too; missing paths do not.
  ASSERT_EQ(oruSetFileTime(root_.string().c_str(), &accessed, &accessed), ORU_OK);
  handle_times(root_.string(), &access, &written);
  EXPECT_EQ(time_val(written).sec, 1000000000);
  EXPECT_EQ(oruSetFileTime(path("missing").c_str(), &accessed, nullptr), ORU_E_NOT_FOUND);
}

TEST_F(WinNames, Touch) {
  std::string f = path("t");
  EXPECT_EQ(oruTouchFile(f.c_str(), 0), ORU_E_NOT_FOUND);
  int64_t before = static_cast<int64_t>(time(nullptr));
  ASSERT_EQ(oruTouchFile(f.c_str(), ORU_OPEN_CREATE), ORU_OK);
  EXPECT_EQ(std::filesystem::file_size(f), 0u);
  oruTimeVal old = {100, 0};
  ASSERT_EQ(oruSetFileTime(f.c_str(), &old, &old), ORU_OK);
  ASSERT_EQ(oruTouchFile(f.c_str(), 0), ORU_OK);
  FILETIME access, written;
  handle_times(f, &access, &written);
  EXPECT_GE(time_val(written).sec, before);
  EXPECT_GE(time_val(access).sec, before);
  // Touching a directory is refused (it is opened as a file), although
  // setting its times works.
  EXPECT_EQ(oruTouchFile(root_.string().c_str(), 0), ORU_E_ACCESS_DENIED);
}

TEST_F(WinNames, CurrentDirectoryInLongForm) {
  char here[MAX_PATH * 4];
  ASSERT_GT(GetCurrentDirectoryA(sizeof here, here), 0u);
  char out[MAX_PATH * 4];
  ASSERT_EQ(oruGetCurrentDirectory(out, sizeof out), ORU_OK);
  EXPECT_STREQ(out, here);
  EXPECT_EQ(oruGetCurrentDirectory(out, strlen(here)), ORU_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(oruGetCurrentDirectory(out, 0), ORU_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(oruGetCurrentDirectory(out, size_t{1} << 32), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruGetCurrentDirectory(nullptr, 10), ORU_E_INVALID_ARG);

  // Entered by its short name, the directory is reported by its long one.
  std::string longDir = path("a directory with a long name");
  std::filesystem::create_directory(longDir);
  std::string shortDir = short_name(longDir);
  if (shortDir.find('~') == std::string::npos) GTEST_SKIP() << "no short names here";
  ASSERT_TRUE(SetCurrentDirectoryA(shortDir.c_str()));
  oruResult result = oruGetCurrentDirectory(out, sizeof out);
  ASSERT_TRUE(SetCurrentDirectoryA(here));
  ASSERT_EQ(result, ORU_OK);
  EXPECT_EQ(std::string(out), longDir);
}

TEST_F(WinNames, CanonicalPath) {
  std::filesystem::create_directory(path("Sub Directory"));
  put("Sub Directory\\Real File.txt", "");
  std::string real = path("Sub Directory\\Real File.txt");
  char out[MAX_PATH * 4];
  struct {
    std::string path;
    const char* what;
  } const spellings[] = {
      {path("Sub Directory/../Sub Directory//./Real File.txt"), "messy"},
      {upper(real), "upper case"},
      {short_name(real), "short names"},
  };
  for (const auto& spelling : spellings) {
    ASSERT_EQ(oruGetCanonicalPath(spelling.path.c_str(), out, sizeof out), ORU_OK) << spelling.what;
    EXPECT_EQ(std::string(out), real) << spelling.what;
  }
  ASSERT_EQ(oruGetCanonicalPath(path("Sub Directory").c_str(), out, sizeof out), ORU_OK);
  EXPECT_EQ(std::string(out), path("Sub Directory"));
  EXPECT_EQ(oruGetCanonicalPath(real.c_str(), out, real.size()), ORU_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(oruGetCanonicalPath(path("missing").c_str(), out, sizeof out), ORU_E_NOT_FOUND);
  EXPECT_EQ(oruGetCanonicalPath(real.c_str(), out, size_t{1} << 32), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruGetCanonicalPath(nullptr, out, sizeof out), ORU_E_INVALID_ARG);
}

// The component walks that stand in for the long-name and final-path
// services of older systems.
TEST_F(WinNames, FallbacksThroughTheDirectorySearch) {
  std::filesystem::create_directory(path("Long Directory Name"));
  put("Long Directory Name\\Long File Name.txt", "");
  std::string real = path("Long Directory Name\\Long File Name.txt");
  std::string shortPath = short_name(real);
  char out[MAX_PATH * 4];

  ASSERT_EQ(oru::file::long_name_by_search(shortPath.c_str(), out, sizeof out), ORU_OK);
  EXPECT_EQ(std::string(out), real);
  std::string slashes = shortPath;
  for (char& c : slashes) c = c == '\\' ? '/' : c;
  ASSERT_EQ(oru::file::long_name_by_search((slashes + "//").c_str(), out, sizeof out), ORU_OK);
  EXPECT_EQ(std::string(out), real + "\\");
  EXPECT_EQ(oru::file::long_name_by_search(shortPath.c_str(), out, real.size()),
            ORU_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(oru::file::long_name_by_search(path("missing\\x").c_str(), out, sizeof out),
            ORU_E_NOT_FOUND);
  EXPECT_EQ(oru::file::long_name_by_search(path("*").c_str(), out, sizeof out), ORU_E_INVALID_ARG);
  // Prefixes are kept as written.
  ASSERT_EQ(oru::file::long_name_by_search("\\\\server\\share", out, sizeof out), ORU_OK);
  EXPECT_STREQ(out, "\\\\server\\share");

  // The true-case walk upper-cases the drive and keeps what it cannot find.
  std::string lower = real;
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  ASSERT_EQ(oru::file::true_case_path((lower + "\\more").c_str(), out, sizeof out), ORU_OK);
  EXPECT_EQ(std::string(out), real + "\\more");
  EXPECT_EQ(oru::file::true_case_path(lower.c_str(), out, real.size()), ORU_E_BUFFER_TOO_SMALL);

  // The entry points the library looks up exist on every system it runs on.
  EXPECT_NE(oru::file::get_long_path_name(), nullptr);
  EXPECT_NE(oru::file::get_final_path_name_by_handle(), nullptr);
}

TEST_F(WinNames, TempNamesOfAFreshProcessFollowItsId) {
  std::string output = path("child.txt");
  SECURITY_ATTRIBUTES inherit = {sizeof inherit, nullptr, TRUE};
  HANDLE out = CreateFileA(output.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherit, CREATE_ALWAYS,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
  ASSERT_NE(out, INVALID_HANDLE_VALUE);
  STARTUPINFOA startup = {};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = out;
  startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  PROCESS_INFORMATION child = {};
  std::string command =
      "\"" + beside_this_program(ORU_TEMPNAME_CHILD) + "\" \"" + root_.string() + "\"";
  ASSERT_TRUE(CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                             &startup, &child));
  CloseHandle(out);
  WaitForSingleObject(child.hProcess, INFINITE);
  DWORD status = 1;
  GetExitCodeProcess(child.hProcess, &status);
  CloseHandle(child.hProcess);
  CloseHandle(child.hThread);
  EXPECT_EQ(status, 0u);

  std::string text = get("child.txt");
  std::vector<std::string> lines;
  size_t start = 0, end;
  while ((end = text.find('\n', start)) != std::string::npos) {
    lines.push_back(text.substr(start, end - start));
    if (!lines.back().empty() && lines.back().back() == '\r') lines.back().pop_back();
    start = end + 1;
  }
  ASSERT_EQ(lines.size(), 3u) << text;
  uint32_t first = static_cast<uint32_t>(child.dwProcessId) << 16;
  EXPECT_EQ(lines[0], path("t" + hex8(first) + ".s"));
  EXPECT_EQ(lines[1], path("t" + hex8(first + 1) + ".s"));
  EXPECT_EQ(lines[2], path("t" + hex8(first)));  // the directory counter is its own
  EXPECT_TRUE(std::filesystem::is_regular_file(lines[0]));
  EXPECT_TRUE(std::filesystem::is_directory(lines[2]));
}

TEST_F(WinNames, TempNamesWithoutTmpdirGoToTheSystemDirectory) {
  const char* saved = getenv("TMPDIR");
  std::string savedText = saved != nullptr ? saved : "";
  _putenv_s("TMPDIR", "");
  char name[MAX_PATH * 4];
  oruResult result = oruGetTempFileName(nullptr, "oru", ".tmp", name, sizeof name);
  if (saved != nullptr) _putenv_s("TMPDIR", savedText.c_str());
  ASSERT_EQ(result, ORU_OK);
  std::filesystem::path created = name;
  EXPECT_TRUE(std::filesystem::is_regular_file(created));
  std::filesystem::remove(created);
  char system[MAX_PATH * 4];
  ASSERT_GT(GetTempPathA(sizeof system, system), 0u);
  ASSERT_GT(GetLongPathNameA(system, system, sizeof system), 0u);
  EXPECT_EQ(std::string(name).rfind(system, 0), 0u) << name;
  EXPECT_EQ(std::string(name).size(), strlen(system) + 3 + 8 + 4);
}

TEST_F(WinNames, ReadOnlyFilesAreAccessDenied) {
  put("secret", "s");
  std::string secret = path("secret");
  ASSERT_TRUE(SetFileAttributesA(secret.c_str(), FILE_ATTRIBUTE_READONLY));
  oruFile file = nullptr;
  EXPECT_EQ(oruOpenFile(secret.c_str(), ORU_OPEN_READ, &file), ORU_OK);
  EXPECT_EQ(oruClose(file), ORU_OK);
  EXPECT_EQ(oruRemoveFile(secret.c_str()), ORU_E_ACCESS_DENIED);
  oruResult write = oruOpenFile(secret.c_str(), ORU_OPEN_WRITE, &file);
  if (write == ORU_OK) oruClose(file);
  oruResult touch = oruTouchFile(secret.c_str(), 0);
  SetFileAttributesA(secret.c_str(), FILE_ATTRIBUTE_NORMAL);
  EXPECT_EQ(oruRemoveFile(secret.c_str()), ORU_OK);
  // Wine keeps the attribute as a Unix mode, which does not stop root.
  if (write == ORU_OK) GTEST_SKIP() << "the read-only attribute does not stop writers here";
  EXPECT_EQ(write, ORU_E_ACCESS_DENIED);
  EXPECT_EQ(touch, ORU_E_ACCESS_DENIED);
}

// A measure of the handles the process holds: their count, or where the
// system does not count them (Wine answers 0), the value of a fresh handle,
// which takes the lowest free slot of the table and so moves up when
// handles leak.
uintptr_t handle_measure() {
  DWORD count = 0;
  if (GetProcessHandleCount(GetCurrentProcess(), &count) && count > 0) return count;
  HANDLE probe = CreateEventA(nullptr, FALSE, FALSE, nullptr);
  EXPECT_NE(probe, nullptr);
  CloseHandle(probe);
  return reinterpret_cast<uintptr_t>(probe);
}

TEST_F(WinNames, FailuresLeakNoHandles) {
  put("file", "x");
  std::string missing = path("missing"), file = path("file"), dir = root_.string();
  char out[MAX_PATH * 4];
  oruFile handle = nullptr;
  oruDir listing = nullptr;
  uintptr_t before = handle_measure();
  for (int i = 0; i < 300; ++i) {
    ASSERT_EQ(oruOpenFile(missing.c_str(), ORU_OPEN_READ, &handle), ORU_E_NOT_FOUND);
    ASSERT_EQ(oruOpenFile(dir.c_str(), ORU_OPEN_READ, &handle), ORU_E_ACCESS_DENIED);
    ASSERT_EQ(oruOpenFile(file.c_str(), ORU_OPEN_WRITE | ORU_OPEN_CREATE | ORU_OPEN_EXCL, &handle),
              ORU_E_EXISTS);
    ASSERT_EQ(oruOpenDir(missing.c_str(), &listing), ORU_E_PATH_NOT_FOUND);
    ASSERT_EQ(oruTouchFile(dir.c_str(), 0), ORU_E_ACCESS_DENIED);
    ASSERT_EQ(oruSetFileTime(missing.c_str(), nullptr, nullptr), ORU_E_NOT_FOUND);
    ASSERT_EQ(oruGetCanonicalPath(file.c_str(), out, 4), ORU_E_BUFFER_TOO_SMALL);
    ASSERT_EQ(oruGetTempFileName(missing.c_str(), nullptr, nullptr, out, sizeof out),
              ORU_E_PATH_NOT_FOUND);
  }
  EXPECT_EQ(handle_measure(), before);
}

}  // namespace
