// Reads the Unicode 4.1.0 character database for the tests, independently of
// the generator: the tests compute their expectations from these files.
#ifndef ORU_TESTS_UNICODE_UCD_FILES_H
#define ORU_TESTS_UNICODE_UCD_FILES_H

#include <cstdint>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace ucd {

// The database directory, ../shared/data/ucd-4.1.0 beside the source tree.
inline std::string dir() { return std::string(ORU_SOURCE_DIR) + "/../shared/data/ucd-4.1.0"; }

inline bool present() { return std::ifstream(dir() + "/UnicodeData.txt").good(); }

inline std::vector<std::string> split(const std::string& line, char sep) {
  std::vector<std::string> out;
  std::string field;
  std::istringstream in(line);
  while (std::getline(in, field, sep)) out.push_back(field);
  if (!line.empty() && line.back() == sep) out.emplace_back();
  return out;
}

inline std::string trim(const std::string& s) {
  const auto b = s.find_first_not_of(" \t");
  if (b == std::string::npos) return "";
  return s.substr(b, s.find_last_not_of(" \t") - b + 1);
}

// One line of UnicodeData.txt, or a First/Last pair as one range.
struct Entry {
  uint32_t first, last;
  std::vector<std::string> fields;
};

inline std::vector<Entry> unicode_data() {
  std::vector<Entry> out;
  std::ifstream in(dir() + "/UnicodeData.txt");
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty()) continue;
    auto f = split(line, ';');
    const uint32_t c = std::stoul(f[0], nullptr, 16);
    if (f[1].find(", Last>") != std::string::npos) {
      out.back().last = c;
    } else {
      out.push_back({c, c, std::move(f)});
    }
  }
  return out;
}

// An inclusive range of code points.
struct Range {
  uint32_t first, last;
};

// A "code(..code) ; value" file as value -> ranges.
inline std::map<std::string, std::vector<Range>> property_file(const std::string& name) {
  std::map<std::string, std::vector<Range>> out;
  std::ifstream in(dir() + "/" + name);
  std::string line;
  while (std::getline(in, line)) {
    line = trim(line.substr(0, line.find('#')));
    if (line.empty()) continue;
    auto f = split(line, ';');
    const std::string codes = trim(f[0]);
    const auto dots = codes.find("..");
    const uint32_t lo = std::stoul(codes.substr(0, dots), nullptr, 16);
    const uint32_t hi =
        dots == std::string::npos ? lo : std::stoul(codes.substr(dots + 2), nullptr, 16);
    out[trim(f[1])].push_back({lo, hi});
  }
  return out;
}

}  // namespace ucd

#endif  // ORU_TESTS_UNICODE_UCD_FILES_H
