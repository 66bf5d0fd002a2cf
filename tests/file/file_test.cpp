// File handles: open flags, reading and writing, seeking, positional I/O,
// pipes and byte-range locks between handles and processes.

#include "oru/file.h"

#include "file_test_support.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>
#endif
#include <atomic>
#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>

namespace {

class File : public ScratchDir {};

#if defined(_WIN32)
// All ones is the pseudo handle of the process itself on Windows, which
// closes without complaint: a value no handle table hands out instead.
const oruFile kBadHandle = reinterpret_cast<oruFile>(intptr_t{0x7FFFFFF0});
#else
const oruFile kBadHandle = reinterpret_cast<oruFile>(intptr_t{-1});
#endif

// Whether a handle would be inherited by programs the process starts.
bool inherited(oruFile file) {
#if defined(_WIN32)
  DWORD flags = 0;
  EXPECT_TRUE(GetHandleInformation(static_cast<HANDLE>(file), &flags));
  return (flags & HANDLE_FLAG_INHERIT) != 0;
#else
  return (fcntl(static_cast<int>(reinterpret_cast<intptr_t>(file)), F_GETFD) & FD_CLOEXEC) == 0;
#endif
}

oruFile open_ok(const std::string& path, int flags) {
  oruFile file = nullptr;
  EXPECT_EQ(oruOpenFile(path.c_str(), flags, &file), ORU_OK) << path;
  return file;
}

TEST_F(File, OpenFlagsAndDispositions) {
  enum Before { kMissing, kExisting };
  struct {
    int flags;
    Before before;
    oruResult result;
    const char* after;  // content afterwards, null when there is no file
  } cases[] = {
      {ORU_OPEN_CREATE, kMissing, ORU_E_INVALID_ARG, nullptr},
      {0, kExisting, ORU_E_INVALID_ARG, "old"},
      {ORU_OPEN_READ, kMissing, ORU_E_NOT_FOUND, nullptr},
      {ORU_OPEN_READ, kExisting, ORU_OK, "old"},
      {ORU_OPEN_READ | ORU_OPEN_EXCL, kExisting, ORU_OK, "old"},
      {ORU_OPEN_WRITE | ORU_OPEN_CREATE, kMissing, ORU_OK, ""},
      {ORU_OPEN_WRITE | ORU_OPEN_CREATE, kExisting, ORU_OK, "old"},
      {ORU_OPEN_WRITE | ORU_OPEN_CREATE | ORU_OPEN_EXCL, kExisting, ORU_E_EXISTS, "old"},
      {ORU_OPEN_WRITE | ORU_OPEN_CREATE | ORU_OPEN_EXCL, kMissing, ORU_OK, ""},
      {ORU_OPEN_WRITE | ORU_OPEN_TRUNC, kExisting, ORU_OK, ""},
      {ORU_OPEN_WRITE | ORU_OPEN_TRUNC, kMissing, ORU_E_NOT_FOUND, nullptr},
      {ORU_OPEN_READ | ORU_OPEN_TRUNC, kExisting, ORU_E_INVALID_ARG, "old"},
      {ORU_OPEN_READ | ORU_OPEN_WRITE | ORU_OPEN_CREATE | ORU_OPEN_TRUNC, kExisting, ORU_OK, ""},
  };
  int index = 0;
  for (const auto& c : cases) {
    std::string name = "f" + std::to_string(index++);
    if (c.before == kExisting) put(name, "old");
    oruFile file = nullptr;
    EXPECT_EQ(oruOpenFile(path(name).c_str(), c.flags, &file), c.result) << c.flags;
    if (c.result == ORU_OK) {
      EXPECT_FALSE(inherited(file));
      EXPECT_EQ(oruClose(file), ORU_OK);
    }
    ASSERT_EQ(std::filesystem::exists(path(name)), c.after != nullptr) << c.flags;
    if (c.after != nullptr) {
      EXPECT_EQ(get(name), c.after) << c.flags;
    }
  }
  oruFile file = nullptr;
  EXPECT_EQ(oruOpenFile(root_.string().c_str(), ORU_OPEN_READ, &file), ORU_E_ACCESS_DENIED);
  EXPECT_EQ(oruOpenFile(root_.string().c_str(), ORU_OPEN_WRITE, &file), ORU_E_ACCESS_DENIED);
#if defined(_WIN32)
  // The missing part is a directory on the way (ERROR_PATH_NOT_FOUND).
  EXPECT_EQ(oruOpenFile(path("no/such").c_str(), ORU_OPEN_READ, &file), ORU_E_PATH_NOT_FOUND);
#else
  EXPECT_EQ(oruOpenFile(path("no/such").c_str(), ORU_OPEN_READ, &file), ORU_E_NOT_FOUND);
#endif
  EXPECT_EQ(oruOpenFile(nullptr, ORU_OPEN_READ, &file), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruOpenFile(path("x").c_str(), ORU_OPEN_READ | ORU_OPEN_CREATE, nullptr),
            ORU_E_INVALID_ARG);
  EXPECT_EQ(oruClose(kBadHandle), ORU_E_HANDLE);
}

TEST_F(File, ReadWriteAndSeek) {
  oruFile file = open_ok(path("rw"), ORU_OPEN_READ | ORU_OPEN_WRITE | ORU_OPEN_CREATE);
  size_t n = 99;
  ASSERT_EQ(oruWrite(file, "hello world", 11, &n), ORU_OK);
  EXPECT_EQ(n, 11u);
  EXPECT_EQ(oruWrite(file, "", 0, nullptr), ORU_OK);
  uint64_t position = 0;
  ASSERT_EQ(oruSeek(file, ORU_SEEK_SET, 6, &position), ORU_OK);
  EXPECT_EQ(position, 6u);
  char buffer[32] = {};
  ASSERT_EQ(oruRead(file, buffer, sizeof buffer, &n), ORU_OK);
  EXPECT_EQ(std::string(buffer, n), "world");
  ASSERT_EQ(oruRead(file, buffer, sizeof buffer, &n), ORU_OK);  // end of file
  EXPECT_EQ(n, 0u);
  ASSERT_EQ(oruSeek(file, ORU_SEEK_END, -5, &position), ORU_OK);
  EXPECT_EQ(position, 6u);
  ASSERT_EQ(oruSeek(file, ORU_SEEK_CUR, -2, nullptr), ORU_OK);
  ASSERT_EQ(oruRead(file, buffer, 3, &n), ORU_OK);
  EXPECT_EQ(std::string(buffer, n), "o w");
  EXPECT_EQ(oruSeek(file, 0, 0, &position), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruSeek(file, 4, 0, &position), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruSeek(file, ORU_SEEK_SET, -1, &position), ORU_E_INVALID_ARG);
  // Position 0xFFFFFFFF is a position like any other.
  ASSERT_EQ(oruSeek(file, ORU_SEEK_SET, 0xFFFFFFFF, &position), ORU_OK);
  EXPECT_EQ(position, 0xFFFFFFFFu);

  ASSERT_EQ(oruSeekAndWrite(file, 0, "J", 1, nullptr), ORU_OK);
  ASSERT_EQ(oruSeekAndWrite(file, 20, "!", 1, &n), ORU_OK);
  EXPECT_EQ(n, 1u);
  ASSERT_EQ(oruSeekAndRead(file, 0, buffer, sizeof buffer, &n), ORU_OK);
  EXPECT_EQ(std::string(buffer, n), std::string("Jello world\0\0\0\0\0\0\0\0\0!", 21));
  ASSERT_EQ(oruSeekAndRead(file, 100, buffer, sizeof buffer, &n), ORU_OK);
  EXPECT_EQ(n, 0u);
  EXPECT_EQ(oruRead(file, buffer, 1, nullptr), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruSeekAndRead(file, 0, buffer, 1, nullptr), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruRead(file, nullptr, 1, &n), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruSeekAndRead(file, UINT64_MAX, buffer, 1, &n), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruClose(file), ORU_OK);
  EXPECT_EQ(std::filesystem::file_size(path("rw")), 21u);

  // A handle opened for reading only refuses writes: the system says so
  // as a bad descriptor on POSIX systems, as access denied on Windows.
  file = open_ok(path("rw"), ORU_OPEN_READ);
#if defined(_WIN32)
  EXPECT_EQ(oruWrite(file, "x", 1, &n), ORU_E_ACCESS_DENIED);
#else
  EXPECT_EQ(oruWrite(file, "x", 1, &n), ORU_E_HANDLE);
#endif
  EXPECT_EQ(oruClose(file), ORU_OK);
}

TEST_F(File, CountsOf32BitsAndMoreAreRefusedBeforeTheSystemCall) {
  // On a handle that is not open a system call would give ORU_E_HANDLE.
  oruFile bad = kBadHandle;
  char byte = 0;
  size_t n = 7;
  for (uint64_t count : {uint64_t{1} << 32, (uint64_t{1} << 32) + 1, uint64_t{SIZE_MAX}}) {
    size_t c = static_cast<size_t>(count);
    EXPECT_EQ(oruRead(bad, &byte, c, &n), ORU_E_INVALID_ARG);
    EXPECT_EQ(oruWrite(bad, &byte, c, &n), ORU_E_INVALID_ARG);
    EXPECT_EQ(oruSeekAndRead(bad, 0, &byte, c, &n), ORU_E_INVALID_ARG);
    EXPECT_EQ(oruSeekAndWrite(bad, 0, &byte, c, &n), ORU_E_INVALID_ARG);
  }
  EXPECT_EQ(n, 7u);
  EXPECT_EQ(oruRead(bad, &byte, 1, &n), ORU_E_HANDLE);
  EXPECT_EQ(oruRead(bad, &byte, 0, &n), ORU_E_HANDLE);  // a count of 0 asks the system too
  EXPECT_EQ(oruWrite(bad, nullptr, 0, &n), ORU_E_HANDLE);
  EXPECT_EQ(oruSeekAndWrite(bad, 0, &byte, 1, &n), ORU_E_HANDLE);
}

TEST(FilePipe, ReadingAPipeWhoseWriterClosedIsEndOfFile) {
#if defined(_WIN32)
  HANDLE ends[2];
  ASSERT_TRUE(CreatePipe(&ends[0], &ends[1], nullptr, 0));
  oruFile reader = ends[0];
  oruFile writer = ends[1];
#else
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  oruFile reader = reinterpret_cast<oruFile>(static_cast<intptr_t>(ends[0]));
  oruFile writer = reinterpret_cast<oruFile>(static_cast<intptr_t>(ends[1]));
#endif
  ASSERT_EQ(oruWrite(writer, "abc", 3, nullptr), ORU_OK);
  ASSERT_EQ(oruClose(writer), ORU_OK);
  char buffer[16];
  size_t n = 0;
  ASSERT_EQ(oruRead(reader, buffer, sizeof buffer, &n), ORU_OK);  // what is there
  EXPECT_EQ(std::string(buffer, n), "abc");
  n = 5;
  EXPECT_EQ(oruRead(reader, buffer, sizeof buffer, &n), ORU_OK);
  EXPECT_EQ(n, 0u);
  n = 5;
  EXPECT_EQ(oruSeekAndRead(reader, 1234, buffer, sizeof buffer, &n), ORU_OK);
  EXPECT_EQ(n, 0u);
  EXPECT_EQ(oruClose(reader), ORU_OK);
}

TEST_F(File, LocksBelongToTheHandle) {
  put("lock", "0123456789");
  oruFile a = open_ok(path("lock"), ORU_OPEN_READ | ORU_OPEN_WRITE);
  oruFile b = open_ok(path("lock"), ORU_OPEN_READ | ORU_OPEN_WRITE);
  const int kTry = ORU_LOCK_NONBLOCK;
  const int kTryEx = ORU_LOCK_NONBLOCK | ORU_LOCK_EXCLUSIVE;

  ASSERT_EQ(oruLockFile(a, kTryEx, 0, 10), ORU_OK);
  EXPECT_EQ(oruLockFile(b, kTry, 5, 1), ORU_E_AGAIN);
  EXPECT_EQ(oruLockFile(b, kTryEx, 9, 100), ORU_E_AGAIN);
  EXPECT_EQ(oruLockFile(b, kTryEx | ORU_LOCK_ALL, 500, 1), ORU_E_AGAIN);
  EXPECT_EQ(oruLockFile(b, kTryEx, 10, 10), ORU_OK);  // adjacent ranges do not meet
  EXPECT_EQ(oruLockFile(b, kTryEx, 3, 0), ORU_OK);    // no bytes, no conflict
  ASSERT_EQ(oruUnlockFile(a, 0, 0, 10), ORU_OK);
  EXPECT_EQ(oruLockFile(b, kTryEx, 0, 10), ORU_OK);
#if defined(_WIN32)
  // Windows unlocks exactly the ranges that were locked, one by one.
  EXPECT_NE(oruUnlockFile(b, ORU_LOCK_ALL, 0, 0), ORU_OK);
  ASSERT_EQ(oruUnlockFile(b, 0, 10, 10), ORU_OK);
  ASSERT_EQ(oruUnlockFile(b, 0, 0, 10), ORU_OK);
#else
  ASSERT_EQ(oruUnlockFile(b, ORU_LOCK_ALL, 0, 0), ORU_OK);
#endif

  // Shared locks share; an exclusive one waits for them.
  ASSERT_EQ(oruLockFile(a, ORU_LOCK_ALL, 0, 0), ORU_OK);
  EXPECT_EQ(oruLockFile(b, ORU_LOCK_ALL | kTry, 0, 0), ORU_OK);
  EXPECT_EQ(oruLockFile(b, ORU_LOCK_ALL | kTryEx, 0, 0), ORU_E_AGAIN);
  ASSERT_EQ(oruUnlockFile(b, ORU_LOCK_ALL, 0, 0), ORU_OK);
  // Offsets beyond 2^63 are refused; a huge length reaches to the end.
  EXPECT_EQ(oruLockFile(b, kTry, UINT64_MAX, 1), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruUnlockFile(a, ORU_LOCK_ALL, 0, 0), ORU_OK);
  ASSERT_EQ(oruLockFile(a, kTryEx, 100, UINT64_MAX), ORU_OK);
  EXPECT_EQ(oruLockFile(b, kTry, uint64_t{1} << 62, 1), ORU_E_AGAIN);

#if !defined(_WIN32)
  // An exclusive lock needs write access, a shared one read access.
  oruFile readOnly = open_ok(path("lock"), ORU_OPEN_READ);
  EXPECT_EQ(oruLockFile(readOnly, kTryEx, 0, 1), ORU_E_HANDLE);
  EXPECT_EQ(oruClose(readOnly), ORU_OK);
#endif

  // Closing the handle releases its locks.
  EXPECT_EQ(oruClose(a), ORU_OK);
  EXPECT_EQ(oruLockFile(b, kTryEx | ORU_LOCK_ALL, 0, 0), ORU_OK);
  EXPECT_EQ(oruClose(b), ORU_OK);
}

// A blocking lock waits for the holder to let go.  Another handle in
// another thread stands for the other process on Windows, where locks
// belong to handles and processes are not forked.
TEST_F(File, BlockingLockWaitsForTheHolder) {
  put("lock", "0123456789");
  std::string name = path("lock");
  oruFile mine = open_ok(name, ORU_OPEN_READ | ORU_OPEN_WRITE);
  oruFile theirs = open_ok(name, ORU_OPEN_READ | ORU_OPEN_WRITE);
  ASSERT_EQ(oruLockFile(mine, ORU_LOCK_EXCLUSIVE, 2, 4), ORU_OK);
  EXPECT_EQ(oruLockFile(theirs, ORU_LOCK_NONBLOCK, 5, 1), ORU_E_AGAIN);
  EXPECT_EQ(oruLockFile(theirs, ORU_LOCK_NONBLOCK, 6, 1), ORU_OK);
  std::atomic<int> stage{0};
  oruResult blocked = ORU_E_UNEXPECTED;
  std::thread waiter([&] {
    stage = 1;
    blocked = oruLockFile(theirs, ORU_LOCK_EXCLUSIVE, 0, 3);
    stage = 2;
  });
  while (stage.load() == 0) std::this_thread::yield();
  EXPECT_EQ(stage.load(), 1);  // it must not have the lock yet
  ASSERT_EQ(oruUnlockFile(mine, 0, 2, 4), ORU_OK);
  waiter.join();
  EXPECT_EQ(blocked, ORU_OK);
  EXPECT_EQ(oruClose(theirs), ORU_OK);
  EXPECT_EQ(oruClose(mine), ORU_OK);
}

TEST_F(File, LocksHoldAgainstAnotherProcess) {
#if defined(_WIN32)
  GTEST_SKIP() << "needs fork; locks of other handles are checked by the tests above";
#else
  put("lock", "0123456789");
  std::string name = path("lock");
  oruFile mine = open_ok(name, ORU_OPEN_READ | ORU_OPEN_WRITE);
  ASSERT_EQ(oruLockFile(mine, ORU_LOCK_EXCLUSIVE, 2, 4), ORU_OK);
  int report[2];
  ASSERT_EQ(pipe(report), 0);
  pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    // The child's own handle: a non-blocking try fails, a blocking lock
    // returns once the parent lets go.
    close(report[0]);
    oruFile theirs = nullptr;
    if (oruOpenFile(name.c_str(), ORU_OPEN_READ | ORU_OPEN_WRITE, &theirs) != ORU_OK) _exit(2);
    if (oruLockFile(theirs, ORU_LOCK_NONBLOCK, 5, 1) != ORU_E_AGAIN) _exit(3);
    if (oruLockFile(theirs, ORU_LOCK_NONBLOCK, 6, 1) != ORU_OK) _exit(4);
    if (write(report[1], "t", 1) != 1) _exit(5);
    if (oruLockFile(theirs, ORU_LOCK_EXCLUSIVE, 0, 3) != ORU_OK) _exit(6);
    if (write(report[1], "l", 1) != 1) _exit(7);
    _exit(0);
  }
  close(report[1]);
  char got = 0;
  ASSERT_EQ(read(report[0], &got, 1), 1);
  EXPECT_EQ(got, 't');
  // The child is now blocked or about to be: it must not have the lock yet.
  struct pollfd ready = {report[0], POLLIN, 0};
  EXPECT_EQ(poll(&ready, 1, 0), 0);
  ASSERT_EQ(oruUnlockFile(mine, 0, 2, 4), ORU_OK);
  ASSERT_EQ(read(report[0], &got, 1), 1);
  EXPECT_EQ(got, 'l');
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  close(report[0]);
  EXPECT_EQ(oruClose(mine), ORU_OK);
#endif
}

}  // namespace
