// oru validate [-e ENCODING] FILE...: is a file well-formed Unicode text?
// Files are streamed in chunks; a character cut by a chunk boundary is
// carried over to the next chunk, so memory stays bounded.
#include <oru/unicode.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "oru_tool.h"

extern const oru_command oru_cmd_validate;

namespace {

constexpr char kUsage[] =
    "Usage: oru validate [OPTION]... [FILE]...\n"
    "Check that each FILE is well-formed Unicode text in which every character\n"
    "is a valid scalar value (no surrogates, no noncharacters such as U+FFFE\n"
    "or U+FDD0, nothing above U+10FFFF, no overlong UTF-8).\n"
    "With no FILE, or when FILE is -, read standard input.\n"
    "\n"
    "  -e, --encoding=ENC  utf-8 (default), utf-16le or utf-16be\n"
    "  -o, --output=FILE   write to FILE instead of standard output\n"
    "      --help          show this help and exit\n"
    "\n"
    "Output, one line per FILE:\n"
    "  FILE: valid\n"
    "  FILE: invalid at byte OFFSET, line LINE (N invalid sequences)\n"
    "OFFSET counts from 0, LINE from 1 (line feeds before OFFSET plus one).  An\n"
    "invalid sequence is a unit that starts no valid character, together with\n"
    "the continuation bytes (UTF-8) that follow it, or an incomplete character\n"
    "at the end of the file.\n"
    "Exit status: 0 if every FILE is valid, 1 if one is invalid or cannot be\n"
    "read, 2 on bad usage.\n";

enum class encoding { utf8, utf16le, utf16be };

// What a scan found so far.
struct findings {
  uint64_t offset = 0;       // bytes consumed before the current chunk
  uint64_t lines = 0;        // line feeds before the first error (or so far)
  uint64_t first_error = 0;  // byte offset of the first invalid sequence
  uint64_t errors = 0;

  void error_at(uint64_t at) {
    if (errors++ == 0) first_error = at;
  }
};

// UTF-8: `pending` holds the start of a character cut by the chunk end.
class utf8_scan {
 public:
  void consume(const unsigned char* data, size_t n, findings& f) {
    staged_.assign(pending_.begin(), pending_.end());
    staged_.insert(staged_.end(), data, data + n);
    const uint64_t base = f.offset - pending_.size();
    pending_.clear();
    const char* s = reinterpret_cast<const char*>(staged_.data());
    const size_t m = staged_.size();
    size_t pos = 0;
    while (pos < m) {
      if (skipping_) {
        while (pos < m && (staged_[pos] & 0xC0) == 0x80) ++pos;
        if (pos == m) break;
        skipping_ = false;
      }
      const char* err = nullptr;
      const int32_t len = static_cast<int32_t>(m - pos);
      if (oruUTF8Validate(s + pos, len, &err)) {
        count_lines(f, pos, m);
        pos = m;
        break;
      }
      const size_t bad = static_cast<size_t>(err - s);
      if (cut_by_end(bad, m)) {
        count_lines(f, pos, bad);
        pending_.assign(staged_.begin() + static_cast<ptrdiff_t>(bad), staged_.end());
        break;
      }
      count_lines(f, pos, bad);
      f.error_at(base + bad);
      pos = bad + 1;
      skipping_ = true;
    }
    f.offset += n;
  }

  void finish(findings& f) {
    if (!pending_.empty()) f.error_at(f.offset - pending_.size());
  }

 private:
  // A lead byte near the end whose character may be completed by the next
  // chunk: every byte after it is a continuation byte, and fewer than the
  // lead announces.
  bool cut_by_end(size_t at, size_t m) const {
    const unsigned lead = staged_[at];
    const size_t need = lead >= 0xF0 && lead <= 0xF4  ? 4
                        : lead >= 0xE0 && lead < 0xF0 ? 3
                        : lead >= 0xC2 && lead < 0xE0 ? 2
                                                      : 0;
    if (need == 0 || m - at >= need) return false;
    for (size_t i = at + 1; i < m; ++i) {
      if ((staged_[i] & 0xC0) != 0x80) return false;
    }
    return true;
  }

  void count_lines(findings& f, size_t from, size_t to) const {
    if (f.errors == 0) {
      f.lines +=
          static_cast<uint64_t>(std::count(staged_.begin() + static_cast<ptrdiff_t>(from),
                                           staged_.begin() + static_cast<ptrdiff_t>(to), '\n'));
    }
  }

  std::vector<unsigned char> pending_, staged_;
  bool skipping_ = false;
};

// UTF-16: `odd` holds a byte of a unit cut by the chunk end, `pending` a
// high surrogate waiting for its partner.
class utf16_scan {
 public:
  explicit utf16_scan(bool big_endian) : big_endian_(big_endian) {}

  void consume(const unsigned char* data, size_t n, findings& f) {
    units_.clear();
    if (have_pending_) units_.push_back(pending_);
    const uint64_t base = f.offset - (have_odd_ ? 1 : 0) - (have_pending_ ? 2 : 0);
    have_pending_ = false;
    size_t i = 0;
    if (have_odd_ && n > 0) {
      units_.push_back(unit(odd_, data[0]));
      have_odd_ = false;
      i = 1;
    }
    for (; i + 1 < n; i += 2) units_.push_back(unit(data[i], data[i + 1]));
    if (i < n) {
      odd_ = data[i];
      have_odd_ = true;
    }
    const uint32_t m = static_cast<uint32_t>(units_.size());
    uint32_t pos = 0;
    while (pos < m) {
      const uint16_t* err = nullptr;
      if (oruUTF16Validate(units_.data() + pos, m - pos, &err)) {
        count_lines(f, pos, m);
        break;
      }
      const uint32_t bad = static_cast<uint32_t>(err - units_.data());
      count_lines(f, pos, bad);
      if (bad == m - 1 && (units_[bad] & 0xFC00) == 0xD800) {
        pending_ = units_[bad];
        have_pending_ = true;
        break;
      }
      f.error_at(base + 2 * uint64_t{bad});
      // A noncharacter written as a pair is one sequence.
      const bool pair =
          (units_[bad] & 0xFC00) == 0xD800 && bad + 1 < m && (units_[bad + 1] & 0xFC00) == 0xDC00;
      pos = bad + (pair ? 2 : 1);
    }
    f.offset += n;
  }

  void finish(findings& f) {
    if (have_pending_) f.error_at(f.offset - 2 - (have_odd_ ? 1 : 0));
    if (have_odd_) f.error_at(f.offset - 1);
  }

 private:
  uint16_t unit(unsigned char a, unsigned char b) const {
    return static_cast<uint16_t>(big_endian_ ? (a << 8 | b) : (b << 8 | a));
  }

  void count_lines(findings& f, uint32_t from, uint32_t to) const {
    if (f.errors == 0) {
      f.lines += static_cast<uint64_t>(
          std::count(units_.begin() + from, units_.begin() + to, uint16_t{0x0A}));
    }
  }

  bool big_endian_;
  std::vector<uint16_t> units_;
  unsigned char odd_ = 0;
  bool have_odd_ = false;
  uint16_t pending_ = 0;
  bool have_pending_ = false;
};

template <typename Scan>
oruResult scan_file(const char* path, Scan& scan, findings& f) {
  const oruResult r =
      oru_read_chunks(path, [&](const unsigned char* data, size_t n) { scan.consume(data, n, f); });
  if (ORU_SUCCEEDED(r)) scan.finish(f);
  return r;
}

int run(int argc, char** argv) {
  static constexpr oru_option kOptions[] = {
      {'e', "encoding", true}, {'o', "output", true}, {0, nullptr, false}};
  oru_parsed_options opts;
  if (int status = oru_parse_options(oru_cmd_validate, argc, argv, kOptions, opts); status >= 0) {
    return status;
  }
  const char* cmd = oru_cmd_validate.name;
  encoding enc = encoding::utf8;
  if (const char* name = opts.last('e')) {
    if (std::strcmp(name, "utf-8") == 0) {
      enc = encoding::utf8;
    } else if (std::strcmp(name, "utf-16le") == 0) {
      enc = encoding::utf16le;
    } else if (std::strcmp(name, "utf-16be") == 0) {
      enc = encoding::utf16be;
    } else {
      return oru_usage_error(
          cmd, std::string("unknown encoding '") + name + "' (utf-8, utf-16le, utf-16be)");
    }
  }
  oru_output out;
  if (!oru_open_output(cmd, opts, out)) return ORU_EXIT_FAILURE;
  if (opts.operands.empty()) opts.operands.push_back("-");
  int status = ORU_EXIT_OK;
  for (const char* path : opts.operands) {
    findings f;
    oruResult r;
    if (enc == encoding::utf8) {
      utf8_scan scan;
      r = scan_file(path, scan, f);
    } else {
      utf16_scan scan(enc == encoding::utf16be);
      r = scan_file(path, scan, f);
    }
    if (ORU_FAILED(r)) {
      std::fflush(out.stream());
      status = oru_fail(cmd, std::string("cannot read '") + path + "'", r);
      continue;
    }
    if (f.errors == 0) {
      std::fprintf(out.stream(), "%s: valid\n", path);
      continue;
    }
    std::fprintf(out.stream(),
                 "%s: invalid at byte %" PRIu64 ", line %" PRIu64 " (%" PRIu64
                 " invalid sequence%s)\n",
                 path, f.first_error, f.lines + 1, f.errors, f.errors == 1 ? "" : "s");
    status = ORU_EXIT_FAILURE;
  }
  // Invalid files are a complete answer; unreadable ones are reported too.
  return oru_finish_output(cmd, out, status, true);
}

}  // namespace

extern const oru_command oru_cmd_validate = {
    "validate", "check that files are well-formed UTF-8 or UTF-16", kUsage, run};
