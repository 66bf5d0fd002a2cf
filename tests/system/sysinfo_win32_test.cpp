// System information on Windows against other ways of asking the system:
// the NetBIOS computer name, the account behind the process token, the
// C runtime's program path, version verification, and child programs
// started by short and by long paths.
#include <gtest/gtest.h>

#include <windows.h>

#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "oru/core.h"
#include "oru/system.h"
#include "system/oru_sysinfo_internal.h"

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

// A file of the build: programs and oru.dll all lie beside the test
// program, where Windows finds the DLL.
std::filesystem::path beside_this_program(const char* name) {
  char self[MAX_PATH * 4];
  DWORD length = GetModuleFileNameA(nullptr, self, sizeof self);
  EXPECT_GT(length, 0u);
  return std::filesystem::path(std::string(self, length)).parent_path() / name;
}

std::string lower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

TEST(SystemInfo, HostnameIsTheLowerCasedComputerName) {
  char name[MAX_COMPUTERNAME_LENGTH * 4];
  DWORD length = sizeof name;
  ASSERT_TRUE(GetComputerNameExA(ComputerNameNetBIOS, name, &length));
  expect_buffer_rule(oruGetHostname, lower(name));
  char buf[8];
  EXPECT_EQ(oruGetHostname(buf, static_cast<size_t>(UINT32_MAX) + 1), ORU_E_INVALID_ARG);
}

TEST(SystemInfo, ConstantsOfThisBuild) {
  // The architecture names stop at the four historic ones.
#if defined(__x86_64__) || defined(__aarch64__)
  expect_buffer_rule(oruGetArchitecture, "unknown");
#elif defined(__i386__)
  expect_buffer_rule(oruGetArchitecture, "i386");
#endif
  expect_buffer_rule(oruGetSystemName, "Windows");
  EXPECT_EQ(oruGetSystemType(), ORU_SYSTEM_TYPE_WINDOWS);

  // A terminal server is a system whose product suite has terminal
  // services, which the version check can confirm on its own.
  OSVERSIONINFOEXA wanted = {};
  wanted.dwOSVersionInfoSize = sizeof wanted;
  wanted.wSuiteMask = VER_SUITE_TERMINAL;
  const bool terminal = VerifyVersionInfoA(&wanted, VER_SUITENAME,
                                           VerSetConditionMask(0, VER_SUITENAME, VER_AND)) != 0;
  int answer = 7;
  EXPECT_EQ(oruIsWindowsTerminalServer(&answer), ORU_OK);
  EXPECT_EQ(answer, terminal ? 1 : 0);
  answer = 7;
  EXPECT_EQ(oruIsWTSRemoteSession(&answer), ORU_OK);
  EXPECT_EQ(answer, terminal && GetSystemMetrics(SM_REMOTESESSION) != 0 ? 1 : 0);
  EXPECT_EQ(oruIsWTSRemoteSession(nullptr), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruIsWindowsTerminalServer(nullptr), ORU_E_INVALID_ARG);
}

// The domain of the account the process token names, asked by its
// security identifier rather than by the user name.
std::string token_domain() {
  HANDLE token = nullptr;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) return "<no token>";
  std::vector<BYTE> user(512);
  DWORD size = 0;
  std::string domain = "<no user>";
  if (GetTokenInformation(token, TokenUser, user.data(), static_cast<DWORD>(user.size()), &size)) {
    char name[512], referenced[512];
    DWORD nameSize = sizeof name, referencedSize = sizeof referenced;
    SID_NAME_USE use;
    if (LookupAccountSidA(nullptr, reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid, name,
                          &nameSize, referenced, &referencedSize, &use)) {
      domain = referenced;
    }
  }
  CloseHandle(token);
  return domain;
}

TEST(SystemInfo, DomainOfTheEffectiveUser) {
  const std::string domain = token_domain();
  ASSERT_NE(domain[0], '<') << domain;
  expect_buffer_rule(oruGetDomainname, domain);
}

TEST(SystemInfo, ProgramNameAndPathFromTheSystem) {
  const char* runtimePath = _pgmptr;  // the C runtime's record
  ASSERT_NE(runtimePath, nullptr);
  char exe[MAX_PATH * 4];
  ASSERT_GT(GetLongPathNameA(runtimePath, exe, sizeof exe), 0u);
  const char* path = oruGetProgramPath();
  ASSERT_NE(path, nullptr);
  EXPECT_STREQ(path, exe);
  const std::string base = std::filesystem::path(exe).filename().string();
  EXPECT_EQ(oruGetProgramName(), base);
  EXPECT_EQ(base.substr(base.size() - 4), ".exe");
  // Cached: the same pointers every time.
  EXPECT_EQ(oruGetProgramName(), oruGetProgramName());
  EXPECT_EQ(oruGetProgramPath(), path);

  // The long form of a short spelling, in a fresh buffer.
  char shortPath[MAX_PATH * 4];
  ASSERT_GT(GetShortPathNameA(exe, shortPath, sizeof shortPath), 0u);
  char* expanded = oru::sysinfo::long_form(oruStrDup(shortPath));
  ASSERT_NE(expanded, nullptr);
  EXPECT_STREQ(expanded, exe);
  oruFree(expanded);

  // The module-file-name protocol: a cut path answers the buffer size.
  char buf[MAX_PATH * 4];
  const uint32_t length = oru::sysinfo::executable_path(buf, sizeof buf);
  ASSERT_GT(length, 0u);
  EXPECT_EQ(oru::sysinfo::executable_path(buf, length), length);
  EXPECT_EQ(oru::sysinfo::executable_path(buf, length + 1), length);
}

struct RunResult {
  bool started = false;
  DWORD status = 1;
  std::string out;
};

// Runs a program with its standard output in a file of `dir`.
RunResult run_program(const std::string& program, const std::filesystem::path& dir) {
  RunResult result;
  const std::string output = (dir / "output.txt").string();
  SECURITY_ATTRIBUTES inherit = {sizeof inherit, nullptr, TRUE};
  HANDLE out = CreateFileA(output.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherit, CREATE_ALWAYS,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
  if (out == INVALID_HANDLE_VALUE) return result;
  STARTUPINFOA startup = {};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = out;
  startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  PROCESS_INFORMATION child = {};
  std::string command = "\"" + program + "\"";
  result.started = CreateProcessA(program.c_str(), command.data(), nullptr, nullptr, TRUE, 0,
                                  nullptr, nullptr, &startup, &child) != 0;
  CloseHandle(out);
  if (!result.started) return result;
  WaitForSingleObject(child.hProcess, INFINITE);
  GetExitCodeProcess(child.hProcess, &result.status);
  CloseHandle(child.hProcess);
  CloseHandle(child.hThread);
  std::FILE* file = std::fopen(output.c_str(), "rb");
  if (file != nullptr) {
    char chunk[512];
    size_t n;
    while ((n = std::fread(chunk, 1, sizeof chunk, file)) > 0) result.out.append(chunk, n);
    std::fclose(file);
  }
  return result;
}

std::string field(const std::string& output, const std::string& key) {
  const size_t at = output.find(key + " ");
  if (at == std::string::npos) return "<missing>";
  const size_t start = at + key.size() + 1;
  size_t end = output.find('\n', start);
  if (end != std::string::npos && end > start && output[end - 1] == '\r') --end;
  return output.substr(start, end - start);
}

class ProgramCopies : public ::testing::Test {
 protected:
  void SetUp() override {
    char temp[MAX_PATH * 4];
    ASSERT_GT(GetTempPathA(sizeof temp, temp), 0u);
    ASSERT_GT(GetLongPathNameA(temp, temp, sizeof temp), 0u);
    dir_ = std::filesystem::path(temp) / ("oru_sysinfo_" + std::to_string(GetCurrentProcessId()));
    std::filesystem::create_directories(dir_);
  }
  void TearDown() override {
    std::error_code ignored;
    std::filesystem::remove_all(dir_, ignored);
  }
  // The probe, with the library beside it, copied into `where` as `name`.
  std::string copy_probe(const std::filesystem::path& where, const std::string& name) {
    std::filesystem::create_directories(where);
    std::filesystem::copy_file(beside_this_program(SYSINFO_PROBE), where / name,
                               std::filesystem::copy_options::overwrite_existing);
    const std::filesystem::path library = beside_this_program(ORU_LIBRARY_NAME);
    if (std::filesystem::exists(library)) {
      std::filesystem::copy_file(library, where / library.filename(),
                                 std::filesystem::copy_options::overwrite_existing);
    }
    return (where / name).string();
  }
  std::filesystem::path dir_;
};

TEST_F(ProgramCopies, StartedByItsShortNameTheProgramReportsItsLongPath) {
  const std::string name = "sysinfo probe with a long name.exe";
  const std::string copy = copy_probe(dir_ / "a directory with a long name", name);
  char shortPath[MAX_PATH * 4];
  ASSERT_GT(GetShortPathNameA(copy.c_str(), shortPath, sizeof shortPath), 0u);
  if (std::strchr(shortPath, '~') == nullptr) GTEST_SKIP() << "no short names here";
  const RunResult r = run_program(shortPath, dir_);
  ASSERT_TRUE(r.started);
  ASSERT_EQ(r.status, 0u);
  EXPECT_EQ(field(r.out, "path"), copy);
  // The name is the base name of the module file name as the system
  // recorded it: Windows keeps the short spelling the program was started
  // with, Wine records the long one.
  const std::string reported = field(r.out, "name");
  EXPECT_TRUE(reported == std::filesystem::path(shortPath).filename().string() || reported == name)
      << reported;
}

TEST_F(ProgramCopies, ProgramPathLongerThanTheFirstBuffer) {
  // 258 bytes: past the first 256-byte buffer, within what CreateProcess
  // accepts.
  const std::string name = "probe_" + std::string(90, 'n') + ".exe";
  const size_t directory = 258 - dir_.string().size() - 2 - name.size();
  ASSERT_LT(directory, 250u);
  const std::string copy = copy_probe(dir_ / std::string(directory, 'd'), name);
  ASSERT_EQ(copy.size(), 258u);
  const RunResult r = run_program(copy, dir_);
  ASSERT_TRUE(r.started);
  ASSERT_EQ(r.status, 0u);
  EXPECT_EQ(field(r.out, "name"), name);
  EXPECT_EQ(field(r.out, "path"), copy);
}

}  // namespace
