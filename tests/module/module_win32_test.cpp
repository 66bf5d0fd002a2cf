// Loading, version resources, backtraces and the module list on Windows.
// The system's own answers are the oracles: GetModuleHandleExA and
// K32GetModuleInformation for where a DLL is mapped, the sample's version
// resource (sample_version.rc) for its attributes.
#include <gtest/gtest.h>
#include <windows.h>
// After windows.h, which it needs.
#include <psapi.h>

#include <cstring>
#include <fstream>
#include <string>

#include "module_test_support.h"

namespace {

// Wine's debug-help library reads the sample's DWARF; Windows' reads only
// PDB files, so there the source lines are simply absent.
bool under_wine() {
  HMODULE ntdll = GetModuleHandleA("ntdll.dll");
  return ntdll != nullptr && GetProcAddress(ntdll, "wine_get_version") != nullptr;
}

// Where the system has the module holding address mapped.
MODULEINFO system_module_of(const void* address) {
  MODULEINFO info{};
  HMODULE module = nullptr;
  if (GetModuleHandleExA(
          GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
          static_cast<LPCSTR>(address), &module)) {
    K32GetModuleInformation(GetCurrentProcess(), module, &info, sizeof info);
  }
  return info;
}

TEST(DsoLoadWin32, SymbolsCallAndUnload) {
  const std::string file = real_path(ORU_SAMPLE_FILE);
  {
    loaded_sample sample;
    ASSERT_NE(sample.dso, nullptr);
    using add_fn = int (*)(int, int);
    auto add = reinterpret_cast<add_fn>(sample.symbol("sample_add"));
    auto* counter = static_cast<int*>(sample.symbol("sample_counter"));
    ASSERT_NE(add, nullptr);
    ASSERT_NE(counter, nullptr);
    EXPECT_EQ(*counter, 41);
    EXPECT_EQ(add(2, 3), 5);
    *counter = 51;
    EXPECT_EQ(add(2, 3), 15);

    char path[1024];
    ASSERT_EQ(oruDsoGetPath(sample.dso, path, sizeof path), ORU_OK);
    EXPECT_EQ(real_path(path), file);
    char tiny[4];
    EXPECT_EQ(oruDsoGetPath(sample.dso, tiny, sizeof tiny), ORU_E_BUFFER_TOO_SMALL);
    EXPECT_STREQ(tiny, "");

    oruModuleInfo listed{};
    ASSERT_TRUE(find_module(file, listed));
    MODULEINFO system = system_module_of(reinterpret_cast<const void*>(add));
    EXPECT_EQ(listed.base, system.lpBaseOfDll);
    EXPECT_EQ(listed.size, system.SizeOfImage);
  }
  oruModuleInfo gone{};
  EXPECT_FALSE(find_module(file, gone));
}

TEST(DsoLoadWin32, FailuresAndTheirTexts) {
  oruDso dso = reinterpret_cast<oruDso>(1);
  EXPECT_EQ(oruDsoLoad("no-such-directory\\no-such.dll", &dso), ORU_E_DSO_LOAD);
  EXPECT_EQ(dso, nullptr);
  EXPECT_STRNE(oruDsoGetErrorText(), "");

  // A file that is not an image.
  const std::string text = testing::TempDir() + "oru-not-a-dll.dll";
  std::ofstream(text) << "not a DLL\n";
  EXPECT_EQ(oruDsoLoad(text.c_str(), &dso), ORU_E_DSO_LOAD);
  EXPECT_STRNE(oruDsoGetErrorText(), "");
  std::remove(text.c_str());

  EXPECT_EQ(oruDsoLoad(nullptr, &dso), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruDsoLoad(ORU_SAMPLE_FILE, nullptr), ORU_E_INVALID_ARG);

  ASSERT_EQ(oruDsoLoad(ORU_SAMPLE_FILE, &dso), ORU_OK);
  void* address = reinterpret_cast<void*>(1);
  EXPECT_EQ(oruDsoGetSymbol(dso, "no_such_symbol", &address), ORU_E_SYMBOL);
  EXPECT_EQ(address, nullptr);
  EXPECT_STRNE(oruDsoGetErrorText(), "");
  EXPECT_EQ(oruDsoGetSymbol(dso, nullptr, &address), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruDsoUnload(dso), ORU_OK);
  EXPECT_EQ(oruDsoUnload(dso), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruDsoUnload(nullptr), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruDsoGetSymbol(dso, "sample_add", &address), ORU_E_INVALID_ARG);
}

TEST(DsoLoadWin32, TwoLoadsTwoHandles) {
  oruDso first = nullptr, second = nullptr;
  ASSERT_EQ(oruDsoLoad(ORU_SAMPLE_FILE, &first), ORU_OK);
  ASSERT_EQ(oruDsoLoad(ORU_SAMPLE_FILE, &second), ORU_OK);
  EXPECT_NE(first, second);
  const std::string file = real_path(ORU_SAMPLE_FILE);
  oruModuleInfo listed{};
  EXPECT_EQ(oruDsoUnload(first), ORU_OK);
  EXPECT_TRUE(find_module(file, listed));  // the second handle holds it
  EXPECT_EQ(oruDsoUnload(second), ORU_OK);
  EXPECT_FALSE(find_module(file, listed));
}

TEST(VersionResource, StringsAndNumbers) {
  const struct {
    int attribute;
    const char* value;
  } strings[] = {
      {ORU_VERSION_FILE_VERSION, "3.4.5.6"},
      {ORU_VERSION_PRODUCT_VERSION, "3.4"},
      {ORU_VERSION_COMPANY_NAME, "oru developers"},
      {ORU_VERSION_FILE_DESCRIPTION, "oru module test sample"},
      {ORU_VERSION_PRODUCT_NAME, "oru"},
      {ORU_VERSION_INTERNAL_NAME, "oru_module_sample"},
      {ORU_VERSION_ORIGINAL_FILENAME, "oru_module_sample.dll"},
  };
  for (const auto& s : strings) {
    char buffer[64];
    EXPECT_EQ(oruGetFileVersionString(ORU_SAMPLE_FILE, s.attribute, buffer, sizeof buffer), ORU_OK)
        << s.attribute;
    EXPECT_STREQ(buffer, s.value);
    const size_t exact = std::strlen(s.value) + 1;
    EXPECT_EQ(oruGetFileVersionString(ORU_SAMPLE_FILE, s.attribute, buffer, exact), ORU_OK);
    EXPECT_EQ(oruGetFileVersionString(ORU_SAMPLE_FILE, s.attribute, buffer, exact - 1),
              ORU_E_BUFFER_TOO_SMALL);
    EXPECT_STREQ(buffer, "");
  }
  oruVersionNumbers numbers{};
  ASSERT_EQ(oruGetFileVersionNumbers(ORU_SAMPLE_FILE, &numbers), ORU_OK);
  const uint16_t file[4] = {3, 4, 5, 6}, product[4] = {3, 4, 0, 0};
  EXPECT_EQ(std::memcmp(numbers.fileVersion, file, sizeof file), 0);
  EXPECT_EQ(std::memcmp(numbers.productVersion, product, sizeof product), 0);
}

TEST(VersionResource, FilesWithoutVersions) {
  char buffer[64];
  oruVersionNumbers numbers{};
  // This test program has no version resource.
  char self[MAX_PATH];
  ASSERT_GT(GetModuleFileNameA(nullptr, self, sizeof self), 0u);
  EXPECT_EQ(oruGetFileVersionString(self, ORU_VERSION_FILE_VERSION, buffer, sizeof buffer),
            ORU_E_NOT_FOUND);
  EXPECT_EQ(oruGetFileVersionNumbers(self, &numbers), ORU_E_NOT_FOUND);
  EXPECT_EQ(
      oruGetFileVersionString("no-such-file.dll", ORU_VERSION_FILE_VERSION, buffer, sizeof buffer),
      ORU_E_NOT_FOUND);
  const std::string text = testing::TempDir() + "oru-text.dll";
  std::ofstream(text) << "MZ but nothing more\n";
  EXPECT_EQ(oruGetFileVersionNumbers(text.c_str(), &numbers), ORU_E_EXEC_FORMAT);
  std::remove(text.c_str());
  EXPECT_EQ(oruGetFileVersionString(ORU_SAMPLE_FILE, 0, buffer, sizeof buffer), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruGetFileVersionString(ORU_SAMPLE_FILE, 8, buffer, sizeof buffer), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruGetFileVersionString(nullptr, 1, buffer, sizeof buffer), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruGetFileVersionNumbers(ORU_SAMPLE_FILE, nullptr), ORU_E_INVALID_ARG);
}

TEST(BacktraceWin32, ThreeNamedFramesInOrder) {
  loaded_sample sample;
  ASSERT_NE(sample.outer, nullptr);
  void* frames[64];
  size_t count = sample.outer(frames, 64);
  ASSERT_GE(count, 4u);
  const char* names[] = {"sample_inner", "sample_middle", "sample_outer"};
  for (int i = 0; i < 3; ++i) {
    oruSymbolInfo* info = nullptr;
    ASSERT_EQ(oruSymbolizeAddress(frames[i], &info), ORU_OK);
    ASSERT_NE(info->symbolName, nullptr) << i;
    EXPECT_STREQ(info->symbolName, names[i]);
    EXPECT_GT(info->symbolOffset, 0u);
    EXPECT_EQ(real_path(info->modulePath), real_path(ORU_SAMPLE_FILE));
    EXPECT_EQ(info->moduleBase, system_module_of(frames[i]).lpBaseOfDll);
    if (under_wine()) {
      EXPECT_NE(info->sourceFile, nullptr) << names[i];
    }
    if (info->sourceFile != nullptr) {
      EXPECT_EQ(base_name(info->sourceFile), "sample_lib.c");
      EXPECT_GT(info->line, 0u);
    }
    oruFree(info);
  }
  // The fourth frame is this test's own call.
  MODULEINFO self = system_module_of(reinterpret_cast<const void*>(&system_module_of));
  EXPECT_EQ(system_module_of(frames[3]).lpBaseOfDll, self.lpBaseOfDll);
}

TEST(BacktraceWin32, SkipAndCapacity) {
  void* all[64];
  size_t count = 0;
  ASSERT_EQ(oruCaptureBacktrace(0, all, 64, &count), ORU_OK);
  ASSERT_GE(count, 2u);
  void* some[1];
  size_t one = 0;
  EXPECT_EQ(oruCaptureBacktrace(1, some, 1, &one), ORU_S_OUTPUT_FULL);
  EXPECT_EQ(one, 1u);
  EXPECT_EQ(some[0], all[1]);  // the same caller's call site
  EXPECT_EQ(oruCaptureBacktrace(0, nullptr, 1, &one), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruCaptureBacktrace(0, all, 64, nullptr), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruCaptureBacktrace(0, nullptr, 0, &one), ORU_S_OUTPUT_FULL);
  EXPECT_EQ(one, 0u);
  oruSymbolInfo* info = reinterpret_cast<oruSymbolInfo*>(1);
  EXPECT_EQ(oruSymbolizeAddress(nullptr, &info), ORU_E_NOT_FOUND);
  EXPECT_EQ(info, nullptr);
  EXPECT_EQ(oruSymbolizeAddress(all[0], nullptr), ORU_E_INVALID_ARG);
}

TEST(ModuleListWin32, ExecutableFirstAndTheLibrary) {
  oruModuleInfo* list = nullptr;
  size_t count = 0;
  ASSERT_EQ(oruGetModuleList(&list, &count), ORU_OK);
  ASSERT_GE(count, 2u);
  char self[MAX_PATH];
  ASSERT_GT(GetModuleFileNameA(nullptr, self, sizeof self), 0u);
  EXPECT_EQ(real_path(list[0].path), real_path(self));
  EXPECT_EQ(list[0].base, static_cast<const void*>(GetModuleHandleA(nullptr)));
  // The library itself, where the system has it.
  MODULEINFO library = system_module_of(reinterpret_cast<const void*>(&oruGetModuleList));
  bool found = false;
  for (size_t i = 0; i < count; ++i) {
    if (list[i].base == library.lpBaseOfDll) {
      found = true;
      EXPECT_EQ(list[i].size, library.SizeOfImage);
    }
  }
  EXPECT_TRUE(found);
  oruFree(list);
  EXPECT_EQ(oruGetModuleList(nullptr, &count), ORU_E_INVALID_ARG);
}

}  // namespace
