// oru normalize -f FORM [-e ENCODING] [FILE...]: Unicode normalization of
// text files, streamed.  A piece is cut before an ASCII character: ASCII
// characters are starters that decompose to nothing else and never join a
// composition with what precedes them, so no rule reaches across such a cut.
#include <oru/unicode.h>

#include <cstring>
#include <string>
#include <vector>

#include "oru_text_stream.h"
#include "oru_tool.h"

extern const oru_command oru_cmd_normalize;

namespace {

constexpr char kUsage[] =
    "Usage: oru normalize -f FORM [OPTION]... [FILE]...\n"
    "Write each FILE (standard input when none, or for -) in Unicode\n"
    "normalization form FORM (Unicode 4.1.0), in the same encoding.\n"
    "\n"
    "  -f, --form=FORM      nfc, nfd, nfkc or nfkd\n"
    "  -e, --encoding=ENC   utf-8 (default), utf-16le or utf-16be\n"
    "  -o, --output=FILE    write to FILE instead of standard output\n"
    "      --help           show this help and exit\n"
    "\n"
    "Ill-formed input becomes U+FFFD.  Input is processed in pieces cut before\n"
    "ASCII characters, so memory stays bounded and the output equals the\n"
    "normalization of the whole text.\n"
    "Exit status: 0 on success, 1 if a FILE cannot be read, 2 on bad usage.\n";

constexpr size_t kLimit = 4 * ORU_CHUNK_SIZE;

template <typename Unit>
size_t last_ascii_cut(const Unit* s, size_t n) {
  for (size_t i = n; i-- > 0;) {
    if (static_cast<uint32_t>(static_cast<std::make_unsigned_t<Unit>>(s[i])) < 0x80) return i;
  }
  return 0;
}

int run(int argc, char** argv) {
  static constexpr oru_option kOptions[] = {
      {'f', "form", true}, {'e', "encoding", true}, {'o', "output", true}, {0, nullptr, false}};
  oru_parsed_options opts;
  if (int status = oru_parse_options(oru_cmd_normalize, argc, argv, kOptions, opts); status >= 0) {
    return status;
  }
  const char* cmd = oru_cmd_normalize.name;
  const char* form_name = opts.last('f');
  if (!form_name) return oru_usage_error(cmd, "a form is required (-f nfc|nfd|nfkc|nfkd)");
  static const char* const kForms[] = {"nfd", "nfkd", "nfc", "nfkc"};
  uint32_t form = 4;
  for (uint32_t k = 0; k < 4; ++k) {
    if (std::strcmp(form_name, kForms[k]) == 0) form = k;
  }
  if (form == 4) {
    return oru_usage_error(cmd,
                           std::string("unknown form '") + form_name + "' (nfc, nfd, nfkc, nfkd)");
  }
  int utf16 = 0;  // 0 UTF-8, 1 little endian, 2 big endian
  if (const char* name = opts.last('e')) {
    if (std::strcmp(name, "utf-16le") == 0) {
      utf16 = 1;
    } else if (std::strcmp(name, "utf-16be") == 0) {
      utf16 = 2;
    } else if (std::strcmp(name, "utf-8") != 0) {
      return oru_usage_error(
          cmd, std::string("unknown encoding '") + name + "' (utf-8, utf-16le, utf-16be)");
    }
  }
  oru_output out;
  if (!oru_open_output(cmd, opts, out)) return ORU_EXIT_FAILURE;
  if (opts.operands.empty()) opts.operands.push_back("-");
  int status = ORU_EXIT_OK;
  for (const char* path : opts.operands) {
    oruResult r;
    if (utf16) {
      auto transform = [form](const uint16_t* s, size_t n, std::vector<uint16_t>& o) {
        uint32_t len = 0;
        uint16_t* t = oruUTF16Normalize(s, static_cast<uint32_t>(n), form, &len);
        o.insert(o.end(), t, t + len);
        oruFree(t);
      };
      oru_text_stream<uint16_t, decltype(&last_ascii_cut<uint16_t>), decltype(transform)> stream(
          out.stream(), utf16 == 2, &last_ascii_cut<uint16_t>, transform, kLimit);
      r = oru_read_chunks(path, [&](const unsigned char* d, size_t n) { stream.consume(d, n); });
      stream.finish();
    } else {
      auto transform = [form](const char* s, size_t n, std::vector<char>& o) {
        uint32_t len = 0;
        char* t = oruUTF8Normalize(s, static_cast<int32_t>(n), form, &len);
        if (t) o.insert(o.end(), t, t + len);
        oruFree(t);
      };
      oru_text_stream<char, decltype(&last_ascii_cut<char>), decltype(transform)> stream(
          out.stream(), false, &last_ascii_cut<char>, transform, kLimit);
      r = oru_read_chunks(path, [&](const unsigned char* d, size_t n) { stream.consume(d, n); });
      stream.finish();
    }
    if (ORU_FAILED(r)) {
      std::fflush(out.stream());
      status = oru_fail(cmd, std::string("cannot read '") + path + "'", r);
    }
  }
  return oru_finish_output(cmd, out, status);
}

}  // namespace

extern const oru_command oru_cmd_normalize = {
    "normalize", "write text in Unicode normalization form NFC, NFD, NFKC or NFKD", kUsage, run};
