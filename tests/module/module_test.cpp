// Loading, symbols, unloading and their failures; version attributes of the
// sample object against readelf(1); the module list against the loader's
// view in /proc/self/maps.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <thread>

#include "module_test_support.h"

namespace {

const std::string kSampleFile = real_path(ORU_SAMPLE_FILE);

TEST(DsoLoad, SymbolsCallAndUnload) {
  oruModuleInfo m{};
  {
    loaded_sample s;
    auto add = reinterpret_cast<int (*)(int, int)>(s.symbol("sample_add"));
    auto* counter = static_cast<int*>(s.symbol("sample_counter"));
    ASSERT_NE(add, nullptr);
    ASSERT_NE(counter, nullptr);
    EXPECT_EQ(*counter, 41);
    EXPECT_EQ(add(2, 3), 5);
    *counter = 42;  // the function sees the object's data through the same address
    EXPECT_EQ(add(2, 3), 6);
    ASSERT_TRUE(find_module(kSampleFile, m));
    char path[4096];
    ASSERT_EQ(oruDsoGetPath(s.dso, path, sizeof path), ORU_OK);
    EXPECT_EQ(real_path(path), kSampleFile);
    const size_t length = std::string(path).size();
    EXPECT_EQ(oruDsoGetPath(s.dso, path, length), ORU_E_BUFFER_TOO_SMALL);
    EXPECT_STREQ(path, "");
    EXPECT_EQ(oruDsoGetPath(s.dso, path, length + 1), ORU_OK);
    EXPECT_EQ(oruDsoGetPath(s.dso, path, 0), ORU_E_INVALID_ARG);
    EXPECT_EQ(oruDsoGetPath(s.dso, nullptr, 9), ORU_E_INVALID_ARG);
    EXPECT_EQ(oruDsoGetPath(nullptr, path, sizeof path), ORU_E_INVALID_ARG);
    EXPECT_GE(reinterpret_cast<uintptr_t>(add), reinterpret_cast<uintptr_t>(m.base));
    EXPECT_LT(reinterpret_cast<uintptr_t>(add), reinterpret_cast<uintptr_t>(m.base) + m.size);
  }
  EXPECT_FALSE(find_module(kSampleFile, m)) << "still mapped after the unload";
}

TEST(DsoLoad, TwoLoadsTwoHandles) {
  oruDso a = nullptr, b = nullptr;
  ASSERT_EQ(oruDsoLoad(ORU_SAMPLE_LINK, &a), ORU_OK);
  ASSERT_EQ(oruDsoLoad(ORU_SAMPLE_FILE, &b), ORU_OK);
  EXPECT_NE(a, b);
  EXPECT_EQ(oruDsoUnload(a), ORU_OK);
  oruModuleInfo m{};
  EXPECT_TRUE(find_module(kSampleFile, m)) << "the second handle still holds it";
  void* p = nullptr;
  EXPECT_EQ(oruDsoGetSymbol(b, "sample_add", &p), ORU_OK);
  EXPECT_NE(p, nullptr);
  EXPECT_EQ(oruDsoGetSymbol(a, "sample_add", &p), ORU_E_INVALID_ARG);
  EXPECT_EQ(p, nullptr);
  EXPECT_EQ(oruDsoUnload(b), ORU_OK);
  EXPECT_FALSE(find_module(kSampleFile, m));
  // Released handles stay invalid, also after new loads.
  oruDso c = nullptr;
  ASSERT_EQ(oruDsoLoad(ORU_SAMPLE_FILE, &c), ORU_OK);
  EXPECT_NE(c, a);
  EXPECT_NE(c, b);
  EXPECT_EQ(oruDsoUnload(b), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruDsoUnload(c), ORU_OK);
}

TEST(DsoLoad, FailuresAndTheirTexts) {
  std::string text_file = testing::TempDir() + "oru_module_not_an_object.so";
  std::ofstream(text_file) << "not an object\n";
  struct {
    std::string path;
    const char* expected_text;
  } const cases[] = {
      {"/nonexistent/libnothing.so", "No such file"},
      {text_file, "oru_module_not_an_object.so"},
      {"libcertainly_not_there_oru.so", "libcertainly_not_there_oru.so"},
  };
  for (const auto& c : cases) {
    oruDso dso = reinterpret_cast<oruDso>(1);
    EXPECT_EQ(oruDsoLoad(c.path.c_str(), &dso), ORU_E_DSO_LOAD) << c.path;
    EXPECT_EQ(dso, nullptr);
    EXPECT_NE(std::string(oruDsoGetErrorText()).find(c.expected_text), std::string::npos)
        << oruDsoGetErrorText();
  }
  std::remove(text_file.c_str());

  loaded_sample s;
  void* p = &p;
  EXPECT_EQ(oruDsoGetSymbol(s.dso, "sample_missing", &p), ORU_E_SYMBOL);
  EXPECT_EQ(p, nullptr);
  EXPECT_NE(std::string(oruDsoGetErrorText()).find("sample_missing"), std::string::npos);
  // Hidden names are not exported either.
  EXPECT_EQ(oruDsoGetSymbol(s.dso, "oruCaptureBacktrace_", &p), ORU_E_SYMBOL);

  // The text is the calling thread's own.
  std::string other = "unset";
  std::thread([&] { other = oruDsoGetErrorText(); }).join();
  EXPECT_EQ(other, "");

  oruDso unused = s.dso;
  EXPECT_EQ(oruDsoLoad(nullptr, &unused), ORU_E_INVALID_ARG);
  EXPECT_EQ(unused, nullptr);
  EXPECT_EQ(oruDsoLoad(ORU_SAMPLE_FILE, nullptr), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruDsoUnload(nullptr), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruDsoUnload(reinterpret_cast<oruDso>(~uintptr_t{0})), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruDsoGetSymbol(nullptr, "sample_add", &p), ORU_E_INVALID_ARG);
  ASSERT_EQ(oruDsoLoad(ORU_SAMPLE_FILE, &unused), ORU_OK);
  EXPECT_EQ(oruDsoGetSymbol(unused, nullptr, &p), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruDsoGetSymbol(unused, "sample_add", nullptr), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruDsoUnload(unused), ORU_OK);
  EXPECT_EQ(oruDsoUnload(unused), ORU_E_INVALID_ARG);
  EXPECT_STRNE(oruDsoGetErrorText(), "");
}

TEST(VersionAttributes, SonameAndVersionedFileName) {
  // readelf is the independent reader of the DT_SONAME.
  std::string dynamic = command_output(std::string(ORU_READELF) + " -d '" + kSampleFile + "'");
  size_t open = dynamic.find("Library soname: [");
  ASSERT_NE(open, std::string::npos) << dynamic;
  open += 17;
  const std::string soname = dynamic.substr(open, dynamic.find(']', open) - open);
  const std::string real = base_name(kSampleFile);
  ASSERT_EQ(real, soname + ".4.5");  // the build's naming: lib.so.3 -> lib.so.3.4.5

  struct {
    int attribute;
    oruResult result;
    std::string text;
  } const cases[] = {
      {ORU_VERSION_FILE_VERSION, ORU_OK, "3.4.5"},
      {ORU_VERSION_PRODUCT_VERSION, ORU_OK, "3"},
      {ORU_VERSION_INTERNAL_NAME, ORU_OK, soname},
      {ORU_VERSION_ORIGINAL_FILENAME, ORU_OK, real},
      {ORU_VERSION_COMPANY_NAME, ORU_E_NOT_FOUND, ""},
      {ORU_VERSION_FILE_DESCRIPTION, ORU_E_NOT_FOUND, ""},
      {ORU_VERSION_PRODUCT_NAME, ORU_E_NOT_FOUND, ""},
      {0, ORU_E_INVALID_ARG, ""},
      {8, ORU_E_INVALID_ARG, ""},
  };
  for (const char* path : {ORU_SAMPLE_LINK, ORU_SAMPLE_FILE}) {
    for (const auto& c : cases) {
      char buffer[256] = "x";
      EXPECT_EQ(oruGetFileVersionString(path, c.attribute, buffer, sizeof buffer), c.result)
          << path << " " << c.attribute;
      if (c.result == ORU_OK) {
        EXPECT_EQ(std::string(buffer), c.text);
      }
    }
  }
  char small[6];
  EXPECT_EQ(oruGetFileVersionString(ORU_SAMPLE_LINK, ORU_VERSION_FILE_VERSION, small, 5),
            ORU_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(oruGetFileVersionString(ORU_SAMPLE_LINK, ORU_VERSION_FILE_VERSION, small, 6), ORU_OK);
  EXPECT_EQ(oruGetFileVersionString(ORU_SAMPLE_LINK, ORU_VERSION_FILE_VERSION, small, 0),
            ORU_E_INVALID_ARG);

  oruVersionNumbers n{};
  ASSERT_EQ(oruGetFileVersionNumbers(ORU_SAMPLE_LINK, &n), ORU_OK);
  const uint16_t file[4] = {3, 4, 5, 0}, product[4] = {3, 0, 0, 0};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(n.fileVersion[i], file[i]);
    EXPECT_EQ(n.productVersion[i], product[i]);
  }
  EXPECT_EQ(oruGetFileVersionNumbers(ORU_SAMPLE_LINK, nullptr), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruGetFileVersionNumbers(nullptr, &n), ORU_E_INVALID_ARG);
}

TEST(VersionAttributes, FilesWithoutVersions) {
  char buffer[256];
  // The test program itself: an ELF file without SONAME or version.
  const std::string self = real_path("/proc/self/exe");
  EXPECT_EQ(oruGetFileVersionString(self.c_str(), ORU_VERSION_ORIGINAL_FILENAME, buffer, 256),
            ORU_OK);
  EXPECT_EQ(buffer, base_name(self));
  EXPECT_EQ(oruGetFileVersionString(self.c_str(), ORU_VERSION_INTERNAL_NAME, buffer, 256),
            ORU_E_NOT_FOUND);
  EXPECT_EQ(oruGetFileVersionString(self.c_str(), ORU_VERSION_FILE_VERSION, buffer, 256),
            ORU_E_NOT_FOUND);
  oruVersionNumbers n{};
  EXPECT_EQ(oruGetFileVersionNumbers(self.c_str(), &n), ORU_E_NOT_FOUND);

  std::string junk = testing::TempDir() + "oru_module_junk.so.1.2";
  for (const std::string& content : {std::string("plain text"),
                                     std::string("\x7f"
                                                 "ELF"),
                                     std::string("\x7f"
                                                 "ELF\x02\x01\x01") +
                                         std::string(80, '\xff')}) {
    std::ofstream(junk, std::ios::binary) << content;
    EXPECT_EQ(oruGetFileVersionString(junk.c_str(), ORU_VERSION_FILE_VERSION, buffer, 256),
              ORU_E_EXEC_FORMAT)
        << content.size();
    EXPECT_EQ(oruGetFileVersionNumbers(junk.c_str(), &n), ORU_E_EXEC_FORMAT);
  }
  std::remove(junk.c_str());
  EXPECT_EQ(oruGetFileVersionString("/nonexistent/x.so.1", 1, buffer, 256), ORU_E_NOT_FOUND);
  EXPECT_EQ(oruGetFileVersionString(nullptr, 1, buffer, 256), ORU_E_INVALID_ARG);
  EXPECT_EQ(oruGetFileVersionString(ORU_SAMPLE_LINK, 1, nullptr, 256), ORU_E_INVALID_ARG);
}

TEST(ModuleList, AgreesWithTheMappings) {
  loaded_sample s;
  oruModuleInfo* list = nullptr;
  size_t count = 0;
  ASSERT_EQ(oruGetModuleList(&list, &count), ORU_OK);
  ASSERT_GE(count, 3u);
  EXPECT_EQ(real_path(list[0].path), real_path("/proc/self/exe"));

  // Every file-backed module: its base is the start of a mapping of its
  // file, and its extent covers all of the file's mappings.
  std::ifstream maps("/proc/self/maps");
  std::string line;
  struct extent {
    uintptr_t low = UINTPTR_MAX, high = 0;
  };
  std::map<std::string, extent> files;
  while (std::getline(maps, line)) {
    unsigned long long low = 0, high = 0;
    char path[4096] = "";
    if (std::sscanf(line.c_str(), "%llx-%llx %*s %*s %*s %*s %4095s", &low, &high, path) == 3 &&
        path[0] == '/') {
      extent& e = files[real_path(path)];
      e.low = std::min<uintptr_t>(e.low, low);
      e.high = std::max<uintptr_t>(e.high, high);
    }
  }
  size_t checked = 0;
  for (size_t i = 0; i < count; ++i) {
    if (list[i].path[0] != '/') continue;
    auto it = files.find(real_path(list[i].path));
    ASSERT_NE(it, files.end()) << list[i].path;
    const uintptr_t base = reinterpret_cast<uintptr_t>(list[i].base);
    EXPECT_EQ(base & ~uintptr_t{4095}, it->second.low) << list[i].path;
    EXPECT_GT(list[i].size, 0u);
    EXPECT_GE((base + list[i].size + 4095) & ~uintptr_t{4095}, it->second.high) << list[i].path;
    ++checked;
  }
  EXPECT_GE(checked, 3u);
  oruFree(list);

  EXPECT_EQ(oruGetModuleList(nullptr, &count), ORU_E_INVALID_ARG);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(oruGetModuleList(&list, nullptr), ORU_E_INVALID_ARG);
  EXPECT_EQ(list, nullptr);
}

}  // namespace
