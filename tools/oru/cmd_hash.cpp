// oru hash [-a ALGO] FILE...: checksums and digests in the md5sum format,
// and -c to verify such a list.  Input is streamed through the library's
// incremental interfaces, never read whole.
#include <oru/hash.h>

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <string>

#include "oru_tool.h"

extern const oru_command oru_cmd_hash;

namespace {

constexpr char kUsage[] =
    "Usage: oru hash [OPTION]... [FILE]...\n"
    "       oru hash -c LIST [OPTION]...\n"
    "Print or check checksums, one line per FILE in the format of md5sum(1):\n"
    "the value in lower-case hexadecimal, two spaces, the file name.\n"
    "With no FILE, or when FILE is -, read standard input.\n"
    "\n"
    "  -a, --algorithm=ALGO  crc16 (CRC-16/ARC), crc16-ccitt (CRC-16/CCITT-FALSE),\n"
    "                        crc16-xmodem, crc32, crc64 (CRC-64/XZ), murmur64\n"
    "                        (the library's 64-bit hash, seed 0) or md5 (default)\n"
    "  -c, --check=LIST      read checksum lines from LIST (- for standard input)\n"
    "                        and check the files they name: NAME: OK or\n"
    "                        NAME: FAILED for each\n"
    "  -o, --output=FILE     write to FILE instead of standard output\n"
    "      --help            show this help and exit\n"
    "\n"
    "Exit status: 0 on success, 1 if a file could not be read or a check\n"
    "failed, 2 on bad usage.\n";

// The state of one running checksum.
struct hasher {
  enum kind_t { crc, crc64, murmur, md5 } kind;
  uint32_t crc_type = 0;
  int hex_digits = 0;
  uint32_t crc_value = 0;
  uint64_t crc64_value = 0;
  oruMurmurHash64Context murmur_context{};
  oruMD5Context md5_context{};

  void start() {
    switch (kind) {
      case crc:
        crc_value = oruComputeCRC(crc_type, nullptr, 0);
        break;
      case crc64:
        crc64_value = oruComputeCRC64(nullptr, 0);
        break;
      case murmur:
        oruMurmurHash64Init(&murmur_context, 0);
        break;
      case md5:
        oruMD5Init(&md5_context);
        break;
    }
  }

  void update(const unsigned char* data, size_t length) {
    switch (kind) {
      case crc:
        crc_value = oruUpdateCRC(crc_type, crc_value, data, length);
        break;
      case crc64:
        crc64_value = oruUpdateCRC64(crc64_value, data, length);
        break;
      case murmur:
        oruMurmurHash64Update(&murmur_context, data, length);
        break;
      case md5:
        oruMD5Update(&md5_context, data, length);
        break;
    }
  }

  std::string finish() {
    char text[40];
    switch (kind) {
      case crc:
        std::snprintf(text, sizeof text, "%0*" PRIx32, hex_digits, crc_value);
        break;
      case crc64:
        std::snprintf(text, sizeof text, "%016" PRIx64, crc64_value);
        break;
      case murmur:
        std::snprintf(text, sizeof text, "%016" PRIx64, oruMurmurHash64Final(&murmur_context));
        break;
      case md5: {
        unsigned char digest[16];
        oruMD5Final(digest, &md5_context);
        for (int i = 0; i < 16; ++i) std::snprintf(text + 2 * i, 3, "%02x", digest[i]);
        break;
      }
    }
    return text;
  }
};

struct algorithm {
  const char* name;
  hasher::kind_t kind;
  uint32_t crc_type;
  int hex_digits;
};

constexpr algorithm kAlgorithms[] = {
    {"crc16", hasher::crc, ORU_CRC16_ARC, 4},
    {"crc16-ccitt", hasher::crc, ORU_CRC16_CCITT_FALSE, 4},
    {"crc16-xmodem", hasher::crc, ORU_CRC16_XMODEM, 4},
    {"crc32", hasher::crc, ORU_CRC32, 8},
    {"crc64", hasher::crc64, 0, 16},
    {"murmur64", hasher::murmur, 0, 16},
    {"md5", hasher::md5, 0, 32},
};

const algorithm* find_algorithm(const char* name) {
  for (const algorithm& a : kAlgorithms) {
    if (std::strcmp(a.name, name) == 0) return &a;
  }
  return nullptr;
}

// Checksums one file ("-" = standard input) into `value`.
oruResult hash_file(const algorithm& algo, const char* path, std::string& value) {
  hasher h{algo.kind, algo.crc_type, algo.hex_digits};
  h.start();
  const oruResult r =
      oru_read_chunks(path, [&](const unsigned char* data, size_t n) { h.update(data, n); });
  if (ORU_FAILED(r)) return r;
  value = h.finish();
  return ORU_OK;
}

// md5sum marks a name holding a backslash or a line break with a leading
// backslash and escapes those characters, so every entry stays one line.
std::string escape_name(const std::string& name, bool& escaped) {
  escaped = name.find_first_of("\\\n\r") != std::string::npos;
  if (!escaped) return name;
  std::string out;
  for (char c : name) {
    if (c == '\\') {
      out += "\\\\";
    } else if (c == '\n') {
      out += "\\n";
    } else if (c == '\r') {
      out += "\\r";
    } else {
      out += c;
    }
  }
  return out;
}

bool unescape_name(const std::string& text, std::string& name) {
  name.clear();
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      name += text[i];
      continue;
    }
    if (++i == text.size()) return false;
    switch (text[i]) {
      case '\\':
        name += '\\';
        break;
      case 'n':
        name += '\n';
        break;
      case 'r':
        name += '\r';
        break;
      default:
        return false;
    }
  }
  return true;
}

// One line of a checksum list: VALUE, a space, a space or '*' (binary mode
// marker of md5sum), NAME; a leading backslash marks an escaped name.
bool parse_check_line(const std::string& raw, int hex_digits, std::string& value,
                      std::string& name) {
  std::string line = raw;
  if (!line.empty() && line.back() == '\r') line.pop_back();
  bool escaped = false;
  if (!line.empty() && line[0] == '\\') {
    escaped = true;
    line.erase(0, 1);
  }
  const auto digits = static_cast<size_t>(hex_digits);
  if (line.size() < digits + 3 || line[digits] != ' ' ||
      (line[digits + 1] != ' ' && line[digits + 1] != '*')) {
    return false;
  }
  value.assign(line, 0, digits);
  for (char& c : value) {
    if (c >= 'A' && c <= 'F') c = static_cast<char>(c - 'A' + 'a');
    if (!((c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'))) return false;
  }
  const std::string rest = line.substr(digits + 2);
  if (rest.find('\0') != std::string::npos) return false;  // no file has that name
  if (!escaped) {
    name = rest;
    return true;
  }
  return unescape_name(rest, name);
}

// `complete` tells whether every line of the list was dealt with.
int check(const algorithm& algo, const char* list, FILE* out, bool& complete) {
  const char* cmd = oru_cmd_hash.name;
  int bad_lines = 0, good_lines = 0, mismatches = 0, unreadable = 0;
  const oruResult r = oru_read_lines(list, [&](const std::string& line, bool overlong) {
    std::string expected, name;
    if (overlong || !parse_check_line(line, algo.hex_digits, expected, name)) {
      ++bad_lines;
      return;
    }
    ++good_lines;
    bool escaped = false;
    const std::string shown = escape_name(name, escaped);
    std::string actual;
    const oruResult hr = hash_file(algo, name.c_str(), actual);
    if (ORU_FAILED(hr)) {
      ++unreadable;
      std::fflush(out);
      oru_fail(cmd, "cannot read '" + name + "'", hr);
      std::fprintf(out, "%s%s: FAILED open or read\n", escaped ? "\\" : "", shown.c_str());
    } else if (actual != expected) {
      ++mismatches;
      std::fprintf(out, "%s%s: FAILED\n", escaped ? "\\" : "", shown.c_str());
    } else {
      std::fprintf(out, "%s%s: OK\n", escaped ? "\\" : "", shown.c_str());
    }
  });
  std::fflush(out);
  const std::string list_name = std::strcmp(list, "-") == 0 ? "standard input" : list;
  if (ORU_FAILED(r)) return oru_fail(cmd, "cannot read '" + list_name + "'", r);
  complete = true;
  if (good_lines == 0) {
    return oru_fail(cmd,
                    "no properly formatted " + std::string(algo.name) + " checksum lines in '" +
                        list_name + "'",
                    ORU_E_CORRUPTED);
  }
  auto warn = [&](int count, const char* singular, const char* plural) {
    if (count > 0) {
      std::fprintf(stderr, "oru: %s: WARNING: %d %s\n", cmd, count, count == 1 ? singular : plural);
    }
  };
  warn(bad_lines, "line is improperly formatted", "lines are improperly formatted");
  warn(unreadable, "listed file could not be read", "listed files could not be read");
  warn(mismatches, "computed checksum did NOT match", "computed checksums did NOT match");
  return mismatches + unreadable > 0 ? ORU_EXIT_FAILURE : ORU_EXIT_OK;
}

int run(int argc, char** argv) {
  static constexpr oru_option kOptions[] = {
      {'a', "algorithm", true}, {'c', "check", true}, {'o', "output", true}, {0, nullptr, false}};
  oru_parsed_options opts;
  if (int status = oru_parse_options(oru_cmd_hash, argc, argv, kOptions, opts); status >= 0) {
    return status;
  }
  const char* cmd = oru_cmd_hash.name;
  const char* algo_name = opts.last('a') != nullptr ? opts.last('a') : "md5";
  const algorithm* algo = find_algorithm(algo_name);
  if (algo == nullptr) {
    return oru_usage_error(cmd, std::string("unknown algorithm '") + algo_name +
                                    "' (crc16, crc16-ccitt, crc16-xmodem, crc32, crc64, "
                                    "murmur64, md5)");
  }
  const char* list = opts.last('c');
  if (list != nullptr && !opts.operands.empty()) {
    return oru_usage_error(cmd, "--check takes the list as its value and no FILE operands");
  }

  oru_output out;
  if (!oru_open_output(cmd, opts, out)) return ORU_EXIT_FAILURE;
  if (list != nullptr) {
    // A check that found a mismatch is still a complete answer; a list that
    // could not be read is not.
    bool complete = false;
    const int status = check(*algo, list, out.stream(), complete);
    return oru_finish_output(cmd, out, status, complete);
  }

  if (opts.operands.empty()) opts.operands.push_back("-");
  int status = ORU_EXIT_OK;
  for (const char* path : opts.operands) {
    std::string value;
    const oruResult r = hash_file(*algo, path, value);
    if (ORU_FAILED(r)) {
      std::fflush(out.stream());
      status = oru_fail(cmd, std::string("cannot read '") + path + "'", r);
      continue;
    }
    bool escaped = false;
    const std::string shown = escape_name(path, escaped);
    std::fprintf(out.stream(), "%s%s  %s\n", escaped ? "\\" : "", value.c_str(), shown.c_str());
  }
  return oru_finish_output(cmd, out, status);
}

}  // namespace

extern const oru_command oru_cmd_hash = {
    "hash", "print or check CRC, MurmurHash64 and MD5 checksums of files", kUsage, run};
