// System information against the system's own answers (uname, the account
// database, the process file system) and child programs run from long
// paths.
#include <gtest/gtest.h>

#include <pwd.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "oru/system.h"
#include "system/oru_sysinfo_internal.h"
#include "tool_runner.h"

namespace {

using Query = oruResult (*)(char*, size_t);

// The buffer rule for a query whose answer is `text`: a size of
// strlen + 1 fits, strlen does not, and nothing is written past the size.
void expect_buffer_rule(Query query, const std::string& text) {
  char buf[300];
  std::memset(buf, 'X', sizeof buf);
  EXPECT_EQ(query(buf, text.size() + 1), ORU_OK);
  EXPECT_EQ(std::string(buf), text);
  EXPECT_EQ(query(buf, text.size()), ORU_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(query(buf, 0), ORU_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(query(nullptr, sizeof buf), ORU_E_INVALID_ARG);
}

std::string lower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

TEST(SystemInfo, HostnameIsTheLowerCasedNodeName) {
  struct utsname names;
  ASSERT_EQ(uname(&names), 0);
  expect_buffer_rule(oruGetHostname, lower(names.nodename));
  char buf[8];
  if (SIZE_MAX > UINT32_MAX) {
    EXPECT_EQ(oruGetHostname(buf, static_cast<size_t>(UINT32_MAX) + 1), ORU_E_INVALID_ARG);
  }
}

TEST(SystemInfo, ConstantsOfThisBuild) {
#if defined(__x86_64__) || defined(__aarch64__)
  expect_buffer_rule(oruGetArchitecture, "unknown");
#elif defined(__i386__)
  expect_buffer_rule(oruGetArchitecture, "i386");
#endif
#if defined(__linux__)
  expect_buffer_rule(oruGetSystemName, "Linux");
#endif
  EXPECT_EQ(oruGetSystemType(), ORU_SYSTEM_TYPE_POSIX);
  int answer = 7;
  EXPECT_EQ(oruIsWTSRemoteSession(&answer), ORU_OK);
  EXPECT_EQ(answer, 0);
  answer = 7;
  EXPECT_EQ(oruIsWindowsTerminalServer(&answer), ORU_OK);
  EXPECT_EQ(answer, 0);
  EXPECT_EQ(oruIsWTSRemoteSession(nullptr), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruIsWindowsTerminalServer(nullptr), ORU_E_INVALID_ARG);
}

TEST(SystemInfo, AccountDomainRules) {
  struct {
    const char* account;
    bool local;
    const char* nis;
    oruResult result;
    const char* domain;
  } const cases[] = {
      {"alice", true, nullptr, ORU_OK, "host"},
      {"alice", true, "nis.example", ORU_OK, "host"},
      {"alice", false, "nis.example", ORU_OK, "nis.example"},
      {"alice", false, "", ORU_E_DOMAINNAME, ""},
      {"alice", false, nullptr, ORU_E_DOMAINNAME, ""},
      {"alice@corp.example", false, nullptr, ORU_OK, "corp.example"},
      {"a@b@corp", true, nullptr, ORU_OK, "corp"},
      {"CORP\\alice", false, nullptr, ORU_OK, "CORP"},
      {"CORP\\a@x", false, nullptr, ORU_OK, "x"},
      {"alice@", true, nullptr, ORU_OK, "host"},  // empty qualifier
      {"\\alice", false, "nis", ORU_OK, "nis"},   // empty qualifier
  };
  for (const auto& c : cases) {
    char buf[64] = "";
    EXPECT_EQ(oru::sysinfo::account_domain(c.account, c.local, "host", c.nis, buf, sizeof buf),
              c.result)
        << c.account;
    if (c.result == ORU_OK) {
      EXPECT_STREQ(buf, c.domain) << c.account;
    }
  }
  char small[4];
  EXPECT_EQ(oru::sysinfo::account_domain("a@four", false, "", nullptr, small, sizeof small),
            ORU_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(oru::sysinfo::account_domain("a@thr", false, "", nullptr, small, sizeof small), ORU_OK);
}

// Whether the local account file lists the effective user under `name`.
bool listed_in_passwd_file(const std::string& name) {
  FILE* file = std::fopen("/etc/passwd", "r");
  if (file == nullptr) return false;
  bool found = false;
  while (struct passwd* entry = fgetpwent(file)) {
    if (name == entry->pw_name && entry->pw_uid == geteuid()) found = true;
  }
  std::fclose(file);
  return found;
}

TEST(SystemInfo, DomainOfTheEffectiveUser) {
  struct passwd* entry = getpwuid(geteuid());
  char buf[300];
  if (entry == nullptr) {
    EXPECT_EQ(oruGetDomainname(buf, sizeof buf), ORU_E_UNKNOWN_USER);
    return;
  }
  const std::string name = entry->pw_name;
  if (name.find_first_of("@\\") != std::string::npos || !listed_in_passwd_file(name)) {
    GTEST_SKIP() << "the effective user " << name << " is not a plain local account";
  }
  char host[300];
  ASSERT_EQ(oruGetHostname(host, sizeof host), ORU_OK);
  expect_buffer_rule(oruGetDomainname, host);
}

TEST(SystemInfo, ProgramNameAndPathFromTheSystem) {
  char exe[4096];
  ssize_t n = readlink("/proc/self/exe", exe, sizeof exe - 1);
  ASSERT_GT(n, 0);
  exe[n] = '\0';
  const char* path = oruGetProgramPath();
  ASSERT_NE(path, nullptr);
  EXPECT_STREQ(path, exe);
  const std::string base = std::strrchr(exe, '/') + 1;
  EXPECT_EQ(oruGetProgramName(), base);
  EXPECT_EQ(base, program_invocation_short_name);
  // Cached: the same pointers every time.
  EXPECT_EQ(oruGetProgramName(), oruGetProgramName());
  EXPECT_EQ(oruGetProgramPath(), path);

  // The fallback without /proc agrees, and both follow the size protocol.
  char buf[4096];
  const uint32_t length = oru::sysinfo::executable_path_from_loader(buf, sizeof buf);
  ASSERT_EQ(length, static_cast<uint32_t>(n));
  EXPECT_STREQ(buf, exe);
  for (auto* query : {oru::sysinfo::executable_path, oru::sysinfo::executable_path_from_loader}) {
    EXPECT_EQ(query(buf, length), length);  // no room for the terminator: cut
    EXPECT_EQ(query(buf, length + 1), length);
  }
}

std::string field(const std::string& output, const std::string& key) {
  const size_t at = output.find(key + " ");
  if (at == std::string::npos) return "<missing>";
  const size_t start = at + key.size() + 1;
  return output.substr(start, output.find('\n', start) - start);
}

TEST(SystemInfo, LongProgramPathInAChild) {
  scratch_dir dir;
  // A directory path of more than 300 bytes and a base name of 150.
  std::string deep = dir.path();
  for (int i = 0; i < 6; ++i) {
    deep += "/" + std::string(50, static_cast<char>('a' + i));
    ASSERT_EQ(mkdir(deep.c_str(), 0700), 0);
  }
  const std::string name = "probe_" + std::string(144, 'n');
  const std::string copy = deep + "/" + name;
  const run_result copied = run_program("cp", {SYSINFO_PROBE, copy}, dir.path());
  ASSERT_EQ(copied.status, 0) << copied.err;
  char* real = realpath(copy.c_str(), nullptr);
  ASSERT_NE(real, nullptr);
  const std::string canonical = real;
  std::free(real);
  ASSERT_GT(canonical.size(), 450u);

  const run_result r = run_program(copy, {}, dir.path());
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(field(r.out, "name"), name);
  EXPECT_EQ(field(r.out, "path"), canonical);

  // Started through a link, the program reports the file it runs from.
  const std::string link = deep + "/link";
  ASSERT_EQ(symlink(copy.c_str(), link.c_str()), 0);
  const run_result viaLink = run_program(link, {}, dir.path());
  EXPECT_EQ(field(viaLink.out, "name"), name);
  EXPECT_EQ(field(viaLink.out, "path"), canonical);
}

}  // namespace
