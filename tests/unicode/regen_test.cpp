// The committed tables are what the generator makes of the character
// database.  Skipped, visibly, without the database or a Python interpreter.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "ucd_files.h"

namespace {

std::string read_file(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

TEST(UnicodeTables, RegeneratedTablesMatchCommittedOnes) {
  if (!ucd::present()) GTEST_SKIP() << "Unicode 4.1.0 data not found in " << ucd::dir();
  const std::string python = ORU_PYTHON;
  if (python.empty()) GTEST_SKIP() << "no Python 3 interpreter was found at configure time";

  const std::filesystem::path out = std::filesystem::path(ORU_BINARY_DIR) / "regenerated";
  std::filesystem::remove_all(out);
  const std::string command = "\"" + python + "\" \"" + ORU_SOURCE_DIR +
                              "/data/unicode/gen_unicode_tables.py\" --out \"" + out.string() +
                              "\" > \"" + out.string() + ".log\" 2>&1";
  ASSERT_EQ(std::system(command.c_str()), 0) << command;

  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(out)) {
    const auto committed =
        std::filesystem::path(ORU_SOURCE_DIR) / "src/unicode" / entry.path().filename();
    EXPECT_TRUE(read_file(entry.path()) == read_file(committed))
        << committed << " differs from the generator's output " << entry.path();
    ++files;
  }
  EXPECT_GT(files, 0);
}

}  // namespace
