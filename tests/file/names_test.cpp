// File information and times, the operations on names, the system-assisted
// paths, temporary names, permission failures and descriptor hygiene.  The
// checks against POSIX oracles have their Windows counterparts in
// names_win32_test.cpp.

#include "oru/file.h"

#include "file_test_support.h"

#if !defined(_WIN32)
#include <dirent.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>
#endif
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <iterator>
#include <set>
#include <string>
#include <thread>
#include <vector>

#if !defined(_WIN32)
extern char** environ;
#endif

namespace {

class Names : public ScratchDir {};

std::string hex8(uint32_t value) {
  char text[16];
  std::snprintf(text, sizeof text, "%08x", value);
  return text;
}

// Sets or (with null) removes an environment variable.
void set_environment(const char* name, const char* value) {
#if defined(_WIN32)
  _putenv_s(name, value != nullptr ? value : "");
#else
  if (value != nullptr) {
    setenv(name, value, 1);
  } else {
    unsetenv(name);
  }
#endif
}

#if defined(_WIN32)
// A directory on the way that is missing is a missing path on Windows.
const oruResult kMissingParent = ORU_E_PATH_NOT_FOUND;
#else
const oruResult kMissingParent = ORU_E_NOT_FOUND;
#endif

#if !defined(_WIN32)
struct stat stat_of(const std::string& path) {
  struct stat status = {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  return status;
}

TEST_F(Names, FileInfo) {
  put("f", "12345");
  oruFileInfo info = {};
  info.mask = 64;
  EXPECT_EQ(oruGetFileInfo(path("f").c_str(), &info), ORU_E_INVALID_ARG);
  info.mask = ORU_FINFO_RESERVED;
  EXPECT_EQ(oruGetFileInfo(path("f").c_str(), &info), ORU_OK);
  EXPECT_EQ(info.mask, 0u);

  info.mask = 63;
  ASSERT_EQ(oruGetFileInfo(path("f").c_str(), &info), ORU_OK);
  EXPECT_EQ(info.mask, 31u);
  EXPECT_EQ(info.type, 3u);
  EXPECT_EQ(info.size, 5u);
  struct stat status = stat_of(path("f"));
  EXPECT_EQ(info.mtime.sec, status.st_mtim.tv_sec);
  EXPECT_EQ(info.mtime.usec, status.st_mtim.tv_nsec / 1000);
  EXPECT_EQ(info.atime.sec, status.st_atim.tv_sec);
  struct statvfs volume = {};
  ASSERT_EQ(statvfs(path("f").c_str(), &volume), 0);
  EXPECT_EQ(info.blksize, volume.f_frsize);

  info.mask = 1;  // any of the four bits brings all four
  ASSERT_EQ(oruGetFileInfo(root_.string().c_str(), &info), ORU_OK);
  EXPECT_EQ(info.mask, 15u);
  EXPECT_EQ(info.type, 1u);
  info.mask = ORU_FINFO_BLKSIZE;  // relative: the current directory's volume
  ASSERT_EQ(oruGetFileInfo("anything", &info), ORU_OK);
  EXPECT_EQ(info.mask, 16u);

  info.mask = 31;
  EXPECT_EQ(oruGetFileInfo(path("missing").c_str(), &info), ORU_E_NOT_FOUND);
  EXPECT_EQ(info.mask, 0u);
  info.mask = 16;  // the volume query of a missing absolute path
  EXPECT_EQ(oruGetFileInfo(path("missing").c_str(), &info), ORU_E_NOT_FOUND);
  EXPECT_EQ(oruGetFileInfo(nullptr, &info), ORU_E_INVALID_ARG);
}

TEST_F(Names, FileTimes) {
  put("f", "x");
  std::string f = path("f");
  oruTimeVal access = {1000000000, 123456};
  oruTimeVal modified = {1500000000, 654321};
  ASSERT_EQ(oruSetFileTime(f.c_str(), &access, &modified), ORU_OK);
  struct stat status = stat_of(f);
  EXPECT_EQ(status.st_atim.tv_sec, 1000000000);
  EXPECT_EQ(status.st_atim.tv_nsec, 123456000);
  EXPECT_EQ(status.st_mtim.tv_sec, 1500000000);
  EXPECT_EQ(status.st_mtim.tv_nsec, 654321000);
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
  EXPECT_EQ(oruSetFileTime(root_.string().c_str(), &access, &access), ORU_OK);
  EXPECT_EQ(stat_of(root_.string()).st_atim.tv_sec, 1000000000);
  EXPECT_EQ(oruSetFileTime(path("missing").c_str(), &access, nullptr), ORU_E_NOT_FOUND);
}

TEST_F(Names, Touch) {
  std::string f = path("t");
  EXPECT_EQ(oruTouchFile(f.c_str(), 0), ORU_E_NOT_FOUND);
  time_t before = time(nullptr);
  ASSERT_EQ(oruTouchFile(f.c_str(), ORU_OPEN_CREATE), ORU_OK);
  EXPECT_EQ(std::filesystem::file_size(f), 0u);
  oruTimeVal old = {100, 0};
  ASSERT_EQ(oruSetFileTime(f.c_str(), &old, &old), ORU_OK);
  ASSERT_EQ(oruTouchFile(f.c_str(), 0), ORU_OK);
  EXPECT_GE(stat_of(f).st_mtim.tv_sec, before);
  EXPECT_GE(stat_of(f).st_atim.tv_sec, before);
  // Touching a directory fails although setting its times works.
  EXPECT_EQ(oruTouchFile(root_.string().c_str(), 0), ORU_E_IS_DIRECTORY);
}
#endif  // !_WIN32

TEST_F(Names, MoveRemoveAndDirectories) {
  put("a", "A");
  put("b", "B");
  ASSERT_EQ(oruCreateDirectory(path("d").c_str()), ORU_OK);
  EXPECT_EQ(oruCreateDirectory(path("d").c_str()), ORU_E_EXISTS);
  EXPECT_EQ(oruCreateDirectory(path("x/y").c_str()), kMissingParent);

  EXPECT_EQ(oruMoveFile(path("a").c_str(), path("b").c_str()), ORU_E_EXISTS);
  EXPECT_EQ(get("a"), "A");
  EXPECT_EQ(get("b"), "B");
  EXPECT_EQ(oruMoveFile(path("d").c_str(), path("e").c_str()), ORU_E_IS_DIRECTORY);
  EXPECT_EQ(oruMoveFile(path("none").c_str(), path("e").c_str()), ORU_E_NOT_FOUND);
  ASSERT_EQ(oruMoveFile(path("a").c_str(), path("d/c").c_str()), ORU_OK);
  EXPECT_FALSE(std::filesystem::exists(path("a")));
  EXPECT_EQ(get("d/c"), "A");

  EXPECT_EQ(oruRemoveFile(path("d").c_str()), ORU_E_IS_DIRECTORY);
  EXPECT_EQ(oruRemoveFile(path("none").c_str()), ORU_E_NOT_FOUND);
  EXPECT_EQ(oruRemoveDirectory(path("d").c_str()), ORU_E_DIR_NOT_EMPTY);
  ASSERT_EQ(oruRemoveFile(path("d/c").c_str()), ORU_OK);
  ASSERT_EQ(oruRemoveDirectory(path("d").c_str()), ORU_OK);
  EXPECT_EQ(oruRemoveDirectory(path("d").c_str()), ORU_E_NOT_FOUND);
#if defined(_WIN32)
  // Not a directory: ERROR_DIRECTORY, an invalid directory name.
  EXPECT_EQ(oruRemoveDirectory(path("b").c_str()), ORU_E_INVALID_ARG);
#else
  EXPECT_EQ(oruRemoveDirectory(path("b").c_str()), ORU_E_PATH_NOT_FOUND);  // not a directory
#endif
  EXPECT_EQ(oruMoveFile(nullptr, "x"), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruRemoveFile(nullptr), ORU_E_INVALID_ARG);
}

#if !defined(_WIN32)
TEST_F(Names, CurrentAndCanonicalPath) {
  char here[4096];
  ASSERT_NE(getcwd(here, sizeof here), nullptr);
  char out[4096];
  ASSERT_EQ(oruGetCurrentDirectory(out, sizeof out), ORU_OK);
  EXPECT_STREQ(out, here);
  EXPECT_EQ(oruGetCurrentDirectory(out, strlen(here)), ORU_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(oruGetCurrentDirectory(out, 0), ORU_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(oruGetCurrentDirectory(out, size_t{1} << 32), ORU_E_INVALID_ARG);

  put("real", "");
  std::filesystem::create_directory(path("sub"));
  std::filesystem::create_symlink(path("real"), path("sub/link"));
  std::string messy = path("sub/../sub//./link");
  char* oracle = realpath(messy.c_str(), nullptr);
  ASSERT_NE(oracle, nullptr);
  ASSERT_EQ(oruGetCanonicalPath(messy.c_str(), out, sizeof out), ORU_OK);
  EXPECT_STREQ(out, oracle);
  EXPECT_EQ(oruGetCanonicalPath(messy.c_str(), out, strlen(oracle)), ORU_E_BUFFER_TOO_SMALL);
  free(oracle);
  EXPECT_EQ(oruGetCanonicalPath(path("missing").c_str(), out, sizeof out), ORU_E_NOT_FOUND);
  EXPECT_EQ(oruGetCanonicalPath(path("real").c_str(), out, size_t{1} << 32), ORU_E_INVALID_ARG);
}

// Runs the helper in a new process; returns its pid and its lines.
pid_t run_child(const std::string& directory, std::vector<std::string>& lines) {
  int output[2];
  EXPECT_EQ(pipe(output), 0);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, output[1], 1);
  posix_spawn_file_actions_addclose(&actions, output[0]);
  pid_t pid = 0;
  char* argv[] = {const_cast<char*>(ORU_TEMPNAME_CHILD), const_cast<char*>(directory.c_str()),
                  nullptr};
  EXPECT_EQ(posix_spawn(&pid, argv[0], &actions, nullptr, argv, environ), 0);
  posix_spawn_file_actions_destroy(&actions);
  close(output[1]);
  std::string text;
  char buffer[256];
  ssize_t n;
  while ((n = read(output[0], buffer, sizeof buffer)) > 0) text.append(buffer, n);
  close(output[0]);
  int status = 0;
  EXPECT_EQ(waitpid(pid, &status, 0), pid);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  size_t start = 0, end;
  while ((end = text.find('\n', start)) != std::string::npos) {
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return pid;
}

TEST_F(Names, TempNamesOfAFreshProcessFollowItsId) {
  std::vector<std::string> lines;
  pid_t pid = run_child(root_.string(), lines);
  ASSERT_EQ(lines.size(), 3u);
  uint32_t start = static_cast<uint32_t>(pid) << 16;
  EXPECT_EQ(lines[0], path("t" + hex8(start) + ".s"));
  EXPECT_EQ(lines[1], path("t" + hex8(start + 1) + ".s"));
  EXPECT_EQ(lines[2], path("t" + hex8(start)));  // the directory counter is its own
  EXPECT_TRUE(std::filesystem::is_regular_file(lines[0]));
  EXPECT_TRUE(std::filesystem::is_directory(lines[2]));
  EXPECT_EQ((stat_of(lines[0]).st_mode & 0777), 0600u);
  EXPECT_EQ((stat_of(lines[2]).st_mode & 0777), 0700u);
}
#endif  // !_WIN32

TEST_F(Names, TempNamesSkipTakenNamesAndCheckRoomFirst) {
  char name[4096];
  std::string dir = root_.string();
  ASSERT_EQ(oruGetTempFileName(dir.c_str(), "p", nullptr, name, sizeof name), ORU_OK);
  std::string first = name;
  ASSERT_EQ(first.size(), dir.size() + 1 + 1 + 8);
  uint32_t value = static_cast<uint32_t>(std::stoul(first.substr(first.size() - 8), nullptr, 16));
  put("p" + hex8(value + 1), "taken");
  std::filesystem::create_directory(path("p" + hex8(value + 2)));
  ASSERT_EQ(oruGetTempFileName(dir.c_str(), "p", nullptr, name, sizeof name), ORU_OK);
  EXPECT_EQ(std::string(name), path("p" + hex8(value + 3)));
  EXPECT_EQ(get("p" + hex8(value + 1)), "taken");

  // directory + separator + prefix + 8 digits + suffix + terminator.
  size_t exact = dir.size() + 1 + 2 + 8 + 3 + 1;
  EXPECT_EQ(oruGetTempDirName((dir + kSep).c_str(), "ab", "suf", name, exact - 2),
            ORU_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(oruGetTempDirName(dir.c_str(), "ab", "suf", name, exact - 1), ORU_E_BUFFER_TOO_SMALL);
  ASSERT_EQ(oruGetTempDirName(dir.c_str(), "ab", "suf", name, exact), ORU_OK);
  EXPECT_TRUE(std::filesystem::is_directory(name));
  EXPECT_EQ(std::string(name).find(dir + kSep + "ab"), 0u);

  // TMPDIR stands in for a null directory.
  const char* saved = getenv("TMPDIR");
  std::string savedText = saved != nullptr ? saved : "";
  set_environment("TMPDIR", (dir + "/").c_str());
  ASSERT_EQ(oruGetTempFileName(nullptr, nullptr, nullptr, name, sizeof name), ORU_OK);
  EXPECT_EQ(std::string(name).rfind(dir + "/", 0), 0u);
  EXPECT_EQ(std::string(name).size(), dir.size() + 1 + 8);
  set_environment("TMPDIR", saved != nullptr ? savedText.c_str() : nullptr);
  EXPECT_EQ(oruGetTempFileName(path("missing").c_str(), nullptr, nullptr, name, sizeof name),
            kMissingParent);
  EXPECT_EQ(oruGetTempFileName(dir.c_str(), nullptr, nullptr, nullptr, 100), ORU_E_INVALID_ARG);
}

TEST_F(Names, TempNamesFromSeveralThreadsAreAllNew) {
  constexpr int kThreads = 4, kEach = 25;
  std::vector<std::string> names[kThreads];
  std::vector<std::thread> threads;
  std::string dir = root_.string();
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      char name[4096];
      for (int i = 0; i < kEach; ++i) {
        bool directory = i % 2 == 0;
        oruResult result = directory
                               ? oruGetTempDirName(dir.c_str(), "c", nullptr, name, sizeof name)
                               : oruGetTempFileName(dir.c_str(), "c", nullptr, name, sizeof name);
        if (result == ORU_OK) names[t].push_back(name);
      }
    });
  }
  for (auto& thread : threads) thread.join();
  std::set<std::string> all;
  for (const auto& list : names) {
    EXPECT_EQ(list.size(), size_t{kEach});
    all.insert(list.begin(), list.end());
  }
  EXPECT_EQ(all.size(), size_t{kThreads * kEach});
  EXPECT_EQ(static_cast<size_t>(std::distance(std::filesystem::directory_iterator(root_),
                                              std::filesystem::directory_iterator())),
            all.size());
}

#if !defined(_WIN32)
// Runs checks as an unprivileged user: in a child that drops root, or here.
template <typename Checks>
void as_unprivileged(const std::filesystem::path& root, Checks checks) {
  if (geteuid() != 0) {
    checks();
    return;
  }
  std::filesystem::permissions(root, std::filesystem::perms::all,
                               std::filesystem::perm_options::add);
  pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    if (setgid(65534) != 0 || setuid(65534) != 0) _exit(77);
    checks();
    _exit(::testing::Test::HasFailure() ? 1 : 0);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  if (WIFEXITED(status) && WEXITSTATUS(status) == 77) GTEST_SKIP() << "cannot drop root here";
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "child status " << status;
}

TEST_F(Names, PermissionFailuresAreAccessDenied) {
  put("secret", "s");
  std::filesystem::create_directory(path("locked"));
  put("locked/inner", "i");
  std::filesystem::permissions(path("secret"), std::filesystem::perms::none);
  std::filesystem::permissions(path("locked"), std::filesystem::perms::owner_read |
                                                   std::filesystem::perms::owner_exec |
                                                   std::filesystem::perms::others_read |
                                                   std::filesystem::perms::others_exec);
  std::string secret = path("secret"), locked = path("locked");
  as_unprivileged(root_, [&] {
    oruFile file = nullptr;
    EXPECT_EQ(oruOpenFile(secret.c_str(), ORU_OPEN_READ, &file), ORU_E_ACCESS_DENIED);
    EXPECT_EQ(oruTouchFile(secret.c_str(), 0), ORU_E_ACCESS_DENIED);
    EXPECT_EQ(oruCreateDirectory((locked + "/x").c_str()), ORU_E_ACCESS_DENIED);
    char name[4096];
    // Not retried forever: an unwritable directory is no name collision.
    EXPECT_EQ(oruGetTempFileName(locked.c_str(), nullptr, nullptr, name, sizeof name),
              ORU_E_ACCESS_DENIED);
    EXPECT_EQ(oruGetTempDirName(locked.c_str(), nullptr, nullptr, name, sizeof name),
              ORU_E_ACCESS_DENIED);
    EXPECT_EQ(oruRemoveFile((locked + "/inner").c_str()), ORU_E_ACCESS_DENIED);
    EXPECT_EQ(oruMoveFile((locked + "/inner").c_str(), (locked + "/moved").c_str()),
              ORU_E_ACCESS_DENIED);
  });
}

size_t open_descriptors() {
  size_t count = 0;
  DIR* fds = opendir("/proc/self/fd");
  if (fds == nullptr) return 0;
  while (readdir(fds) != nullptr) ++count;
  closedir(fds);
  return count;
}

TEST_F(Names, FailuresLeakNoDescriptors) {
  put("file", "x");
  std::string missing = path("missing"), file = path("file"), dir = root_.string();
  size_t before = open_descriptors();
  if (before == 0) GTEST_SKIP() << "no /proc/self/fd";
  char out[4096];
  oruFile handle = nullptr;
  oruDir listing = nullptr;
  for (int i = 0; i < 3000; ++i) {
    ASSERT_EQ(oruOpenFile(missing.c_str(), ORU_OPEN_READ, &handle), ORU_E_NOT_FOUND);
    ASSERT_EQ(oruOpenFile(dir.c_str(), ORU_OPEN_READ, &handle), ORU_E_ACCESS_DENIED);
    ASSERT_EQ(oruOpenFile(file.c_str(), ORU_OPEN_WRITE | ORU_OPEN_CREATE | ORU_OPEN_EXCL, &handle),
              ORU_E_EXISTS);
    ASSERT_EQ(oruOpenDir(missing.c_str(), &listing), ORU_E_NOT_FOUND);
    ASSERT_EQ(oruOpenDir(file.c_str(), &listing), ORU_E_PATH_NOT_FOUND);
    ASSERT_EQ(oruTouchFile(dir.c_str(), 0), ORU_E_IS_DIRECTORY);
    ASSERT_EQ(oruGetCanonicalPath(missing.c_str(), out, sizeof out), ORU_E_NOT_FOUND);
    ASSERT_EQ(oruGetTempFileName(missing.c_str(), nullptr, nullptr, out, sizeof out),
              ORU_E_NOT_FOUND);
  }
  EXPECT_EQ(open_descriptors(), before);
}

#endif  // !_WIN32

}  // namespace
