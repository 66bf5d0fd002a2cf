// The .po parser and the catalog writer.
#include "oru_catalog_writer.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <unordered_set>

#include "oru/core.h"
#include "oru/text.h"
#include "oru_catalog_format.h"

namespace {

// Reads .po text line by line, keeping the state of the entry being built.
class po_parser {
 public:
  po_parser(const char* text, size_t length, const std::string& fileName,
            std::vector<oru_po_entry>& entries)
      : text_(text), end_(text + length), file_(fileName), entries_(entries) {}

  bool run(std::string& error);

 private:
  enum class field { none, context, msgid, plural, msgstr };

  bool fail(const std::string& what) {
    error_ = file_ + ":" + std::to_string(line_) + ": " + what;
    return false;
  }
  bool finish_entry();
  bool keyword_line(const char* p, const char* end);
  bool append_string(const char* p, const char* end, std::string& out);
  std::string* target();

  const char* text_;
  const char* end_;
  std::string file_;
  std::vector<oru_po_entry>& entries_;
  std::unordered_set<std::string> keys_;
  std::string error_;
  int line_ = 0;
  oru_po_entry entry_;
  bool fuzzyPending_ = false;
  bool obsolete_ = false;  // the entry being read is a #~ one
  field last_ = field::none;
};

bool is_space(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v'; }

const char* skip_space(const char* p, const char* end) {
  while (p < end && is_space(*p)) ++p;
  return p;
}

int hex_value(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Parses one quoted string starting at p (which must be '"') and appends
// its bytes; nothing but blanks may follow it on the line.
bool po_parser::append_string(const char* p, const char* end, std::string& out) {
  if (p == end || *p != '"') return fail("expected a quoted string");
  ++p;
  for (;;) {
    if (p == end) return fail("unterminated string");
    char c = *p++;
    if (c == '"') break;
    if (c != '\\') {
      out.push_back(c);
      continue;
    }
    if (p == end) return fail("unterminated string");
    char e = *p++;
    switch (e) {
      case 'n':
        out.push_back('\n');
        break;
      case 't':
        out.push_back('\t');
        break;
      case 'r':
        out.push_back('\r');
        break;
      case 'a':
        out.push_back('\a');
        break;
      case 'b':
        out.push_back('\b');
        break;
      case 'f':
        out.push_back('\f');
        break;
      case 'v':
        out.push_back('\v');
        break;
      case '\\':
      case '"':
      case '\'':
      case '?':
        out.push_back(e);
        break;
      case 'x': {
        unsigned value = 0;
        int digits = 0;
        while (p < end && hex_value(*p) >= 0) {
          value = value * 16 + static_cast<unsigned>(hex_value(*p++));
          if (++digits > 2 && value > 0xFF) return fail("hex escape out of range");
        }
        if (digits == 0) return fail("invalid escape sequence \\x without digits");
        out.push_back(static_cast<char>(value));
        break;
      }
      default:
        if (e >= '0' && e <= '7') {
          unsigned value = static_cast<unsigned>(e - '0');
          for (int i = 0; i < 2 && p < end && *p >= '0' && *p <= '7'; ++i) {
            value = value * 8 + static_cast<unsigned>(*p++ - '0');
          }
          if (value > 0xFF) return fail("octal escape out of range");
          out.push_back(static_cast<char>(value));
          break;
        }
        return fail(std::string("invalid escape sequence \\") + e);
    }
  }
  p = skip_space(p, end);
  if (p != end) return fail("unexpected text after the string");
  return true;
}

std::string* po_parser::target() {
  switch (last_) {
    case field::context:
      return &entry_.context;
    case field::msgid:
      return &entry_.msgid;
    case field::plural:
      return &entry_.msgidPlural;
    case field::msgstr:
      return &entry_.msgstr.back();
    default:
      return nullptr;
  }
}

bool po_parser::finish_entry() {
  if (last_ == field::none) return true;
  if (last_ != field::msgstr) return fail("entry without msgstr");
  if (entry_.plural && entry_.msgstr.size() < 1) return fail("plural entry without msgstr[0]");
  if (!obsolete_) {
    if (!keys_.insert(entry_.key()).second) {
      line_ = entry_.line;
      return fail(entry_.hasContext ? "duplicate message definition in this context"
                                    : "duplicate message definition");
    }
    entries_.push_back(std::move(entry_));
  }
  entry_ = oru_po_entry{};
  last_ = field::none;
  obsolete_ = false;
  return true;
}

bool po_parser::keyword_line(const char* p, const char* end) {
  const char* word = p;
  while (p < end &&
         (std::isalnum(static_cast<unsigned char>(*p)) || *p == '_' || *p == '[' || *p == ']')) {
    ++p;
  }
  std::string keyword(word, p);
  p = skip_space(p, end);
  if (keyword == "msgctxt" || keyword == "msgid") {
    bool startsEntry = keyword == "msgctxt" || last_ != field::context;
    if (startsEntry && !finish_entry()) return false;
    if (keyword == "msgctxt") {
      entry_.hasContext = true;
      last_ = field::context;
    } else {
      last_ = field::msgid;
      entry_.line = line_;
    }
    if (startsEntry) {
      entry_.fuzzy = fuzzyPending_;
      fuzzyPending_ = false;
    }
    return append_string(p, end, keyword == "msgctxt" ? entry_.context : entry_.msgid);
  }
  if (keyword == "msgid_plural") {
    if (last_ != field::msgid) return fail("msgid_plural without a msgid before it");
    entry_.plural = true;
    last_ = field::plural;
    return append_string(p, end, entry_.msgidPlural);
  }
  if (keyword == "msgstr") {
    if (last_ != field::msgid) {
      return fail(entry_.plural ? "plural entry needs msgstr[N]" : "msgstr without a msgid");
    }
    entry_.msgstrLine = line_;
    entry_.msgstr.emplace_back();
    last_ = field::msgstr;
    return append_string(p, end, entry_.msgstr.back());
  }
  if (keyword.rfind("msgstr[", 0) == 0 && keyword.back() == ']' && keyword.size() > 8) {
    std::string digits = keyword.substr(7, keyword.size() - 8);
    if (digits.size() > 4 || !std::all_of(digits.begin(), digits.end(), ::isdigit)) {
      return fail("bad plural index in " + keyword);
    }
    size_t index = std::stoul(digits);
    if (!entry_.plural || (last_ != field::plural && last_ != field::msgstr)) {
      return fail("msgstr[N] without msgid_plural");
    }
    if (index != entry_.msgstr.size()) return fail("plural forms not numbered 0, 1, 2, ...");
    if (index == 0) entry_.msgstrLine = line_;
    entry_.msgstr.emplace_back();
    last_ = field::msgstr;
    return append_string(p, end, entry_.msgstr.back());
  }
  return fail(keyword.empty() ? "syntax error" : "unknown keyword " + keyword);
}

bool po_parser::run(std::string& error) {
  const char* p = text_;
  // A byte-order mark at the start is not part of the text.
  if (end_ - p >= 3 && std::memcmp(p, "\xEF\xBB\xBF", 3) == 0) p += 3;
  bool ok = true;
  while (ok && p < end_) {
    const char* eol = static_cast<const char*>(std::memchr(p, '\n', static_cast<size_t>(end_ - p)));
    if (eol == nullptr) eol = end_;
    ++line_;
    const char* s = skip_space(p, eol);
    if (s == eol) {
      // Blank line: no meaning of its own.
    } else if (*s == '#') {
      if (s + 1 < eol && s[1] == '~') {
        // Obsolete entry: parsed like any other, then dropped.
        const char* rest = skip_space(s + 2, eol);
        if (rest != eol && *rest == '"') {
          std::string* t = obsolete_ ? target() : nullptr;
          ok = t == nullptr ? fail("string without a keyword") : append_string(rest, eol, *t);
        } else if (rest != eol && *rest != '|' && *rest != '#') {
          // Finishing the entry before (if any) is keyword_line's job.
          ok = keyword_line(rest, eol);
          obsolete_ = true;
        }
      } else if (s + 1 < eol && s[1] == ',') {
        if (last_ == field::msgstr && !(ok = finish_entry())) break;
        // Flags: a comma-separated list; only "fuzzy" matters here.
        std::string flags(s + 2, eol);
        size_t at = 0;
        while (at < flags.size()) {
          size_t comma = flags.find(',', at);
          if (comma == std::string::npos) comma = flags.size();
          size_t b = at, e = comma;
          while (b < e && is_space(flags[b])) ++b;
          while (e > b && is_space(flags[e - 1])) --e;
          if (flags.compare(b, e - b, "fuzzy") == 0) fuzzyPending_ = true;
          at = comma + 1;
        }
      }
      // Every other comment (translator, extracted, reference, previous)
      // carries nothing the catalog keeps.
    } else if (*s == '"') {
      std::string* t = target();
      if (t == nullptr || obsolete_) {
        ok = fail("string without a keyword");
      } else {
        ok = append_string(s, eol, *t);
      }
    } else {
      if (obsolete_ && !(ok = finish_entry())) break;
      ok = keyword_line(s, eol);
    }
    p = eol == end_ ? eol : eol + 1;
  }
  if (ok) {
    ++line_;
    ok = finish_entry();
  }
  if (!ok) error = error_;
  return ok;
}

// The charset named in a header's Content-Type, or "" when none.
std::string header_charset(const std::string& header) {
  size_t at = header.find("charset=");
  if (at == std::string::npos) return "";
  at += 8;
  size_t end = at;
  while (end < header.size() && !is_space(header[end]) && header[end] != '\n' &&
         header[end] != ';') {
    ++end;
  }
  return header.substr(at, end - at);
}

bool same_name(const std::string& a, const std::string& b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) ==
                  std::tolower(static_cast<unsigned char>(y));
         });
}

bool valid_utf8(const std::string& s) {
  size_t i = 0, n = s.size();
  while (i < n) {
    unsigned char c = static_cast<unsigned char>(s[i]);
    if (c < 0x80) {
      ++i;
      continue;
    }
    int extra = c >= 0xC2 && c <= 0xDF   ? 1
                : c >= 0xE0 && c <= 0xEF ? 2
                : c >= 0xF0 && c <= 0xF4 ? 3
                                         : -1;
    if (extra < 0 || i + static_cast<size_t>(extra) >= n) return false;
    uint32_t cp = c & (0x3Fu >> extra);
    for (int k = 1; k <= extra; ++k) {
      unsigned char d = static_cast<unsigned char>(s[i + static_cast<size_t>(k)]);
      if ((d & 0xC0) != 0x80) return false;
      cp = (cp << 6) | (d & 0x3Fu);
    }
    if ((extra == 2 && (cp < 0x800 || (cp >= 0xD800 && cp < 0xE000))) ||
        (extra == 3 && (cp < 0x10000 || cp > 0x10FFFF))) {
      return false;
    }
    i += static_cast<size_t>(extra) + 1;
  }
  return true;
}

bool convert(const std::string& in, const std::string& from, const std::string& to,
             std::string& out) {
  char* buffer = nullptr;
  size_t length = 0;
  if (oruConvertString(in.data(), in.size(), from.c_str(), to.c_str(), nullptr, &length, nullptr,
                       &buffer) != ORU_OK) {
    return false;
  }
  out.assign(buffer, length);
  oruFree(buffer);
  return true;
}

// Converts a translation; fails when it is malformed in its own set or
// cannot be represented in the target (the converter repairs such text
// from UTF-8 with "?", which the way back then reveals).
bool convert_checked(const std::string& in, const std::string& from, const std::string& to,
                     bool fromUtf8, std::string& out) {
  if (fromUtf8 && !valid_utf8(in)) return false;
  if (same_name(from, to)) {
    out = in;
    return true;
  }
  if (!convert(in, from, to, out)) return false;
  if (!fromUtf8) return true;
  std::string back;
  return convert(out, to, from, back) && back == in;
}

bool known_charset(const std::string& name) {
  char* buffer = nullptr;
  if (oruConvertString("", 0, name.c_str(), "UTF-8", nullptr, nullptr, nullptr, &buffer) !=
      ORU_OK) {
    return false;
  }
  oruFree(buffer);
  return true;
}

// The registry's name for a header's charset.  GNU tools also write code
// pages as CPnnn, which the registry knows as windows-nnnn or IBMnnn.
std::string resolve_charset(const std::string& name) {
  if (known_charset(name)) return name;
  if (name.size() > 2 && (name[0] == 'C' || name[0] == 'c') && (name[1] == 'P' || name[1] == 'p') &&
      std::all_of(name.begin() + 2, name.end(), ::isdigit)) {
    std::string digits = name.substr(2);
    for (const std::string& candidate : {"windows-" + digits, "IBM" + digits}) {
      if (known_charset(candidate)) return candidate;
    }
  }
  return "";
}

}  // namespace

bool oru_po_parse(const char* text, size_t length, const std::string& fileName,
                  std::vector<oru_po_entry>& entries, std::string& error) {
  po_parser parser(text, length, fileName, entries);
  return parser.run(error);
}

std::string oru_catalog_build(const std::vector<std::pair<std::string, std::string>>& pairs) {
  uint32_t slots = 0;
  if (!pairs.empty()) {
    slots = 1;
    while (slots < 2 * pairs.size()) slots <<= 1;
  }
  size_t size = ORU_CATALOG_HEADER_SIZE + 4 * size_t{slots};
  for (const auto& [key, value] : pairs) size += key.size() + value.size() + 2;
  size += 2;
  // An empty catalog is padded to the smallest size a loader accepts.
  if (size < ORU_CATALOG_MIN_SIZE) size = ORU_CATALOG_MIN_SIZE;
  std::string out(size, '\0');
  auto put32 = [&out](size_t at, uint32_t v) {
    out[at] = static_cast<char>(v >> 24);
    out[at + 1] = static_cast<char>(v >> 16);
    out[at + 2] = static_cast<char>(v >> 8);
    out[at + 3] = static_cast<char>(v);
  };
  put32(0, ORU_CATALOG_MAGIC);
  // Version 0, reserved 0 (already zero).
  put32(8, static_cast<uint32_t>(size));
  put32(12, slots);
  std::vector<uint32_t> table(slots, 0);
  size_t at = ORU_CATALOG_HEADER_SIZE + 4 * size_t{slots};
  for (const auto& [key, value] : pairs) {
    uint32_t i = oru_catalog_hash(key.c_str()) & (slots - 1);
    while (table[i] != 0) i = (i + 1) & (slots - 1);
    table[i] = static_cast<uint32_t>(at);
    std::memcpy(&out[at], key.data(), key.size());
    at += key.size() + 1;
    std::memcpy(&out[at], value.data(), value.size());
    at += value.size() + 1;
  }
  for (uint32_t i = 0; i < slots; ++i) put32(ORU_CATALOG_HEADER_SIZE + 4 * size_t{i}, table[i]);
  return out;
}

bool oru_catalog_compile(const char* text, size_t length, const std::string& fileName,
                         const oru_catalog_compile_options& options, std::string& catalog,
                         std::string& error) {
  std::vector<oru_po_entry> entries;
  if (!oru_po_parse(text, length, fileName, entries, error)) return false;
  std::string from = "UTF-8";
  for (const oru_po_entry& e : entries) {
    if (!e.hasContext && e.msgid.empty()) {
      std::string named = header_charset(e.msgstr.front());
      if (!named.empty() && named != "CHARSET") {
        from = resolve_charset(named);
        if (from.empty()) {
          error = fileName + ":" + std::to_string(e.msgstrLine) + ": unknown charset " + named;
          return false;
        }
      }
    }
  }
  if (!known_charset(options.charset)) {
    error = fileName + ": unknown target charset " + options.charset;
    return false;
  }
  bool fromUtf8 = same_name(from, "UTF-8") || same_name(from, "utf8");
  if (fromUtf8) from = "UTF-8";
  std::vector<std::pair<std::string, std::string>> pairs;
  pairs.reserve(entries.size());
  for (const oru_po_entry& e : entries) {
    const std::string& translation = e.msgstr.front();
    if (translation.empty() || (e.fuzzy && !options.useFuzzy && e.key().size() != 0)) continue;
    std::string converted;
    if (!convert_checked(translation, from, options.charset, fromUtf8, converted)) {
      error = fileName + ":" + std::to_string(e.msgstrLine) +
              ": translation cannot be converted from " + from + " to " + options.charset;
      return false;
    }
    if (!e.hasContext && e.msgid.empty()) {
      // The header now describes the catalog's own character set.
      size_t at = converted.find("charset=");
      if (at != std::string::npos) {
        size_t end = at + 8;
        while (end < converted.size() && !is_space(converted[end]) && converted[end] != '\n' &&
               converted[end] != ';') {
          ++end;
        }
        converted.replace(at + 8, end - at - 8, options.charset);
      }
    }
    pairs.emplace_back(e.key(), std::move(converted));
  }
  std::sort(pairs.begin(), pairs.end());
  catalog = oru_catalog_build(pairs);
  return true;
}
