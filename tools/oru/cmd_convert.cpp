// oru convert -f FROM -t TO [FILE...]: iconv(1) with the library's
// semantics.  Each file is streamed through one codec in fixed-size chunks,
// so memory stays constant; a sequence split across two chunks is carried
// over, and the result equals oruConvertString on the whole file: malformed
// UTF-8 becomes "?", other invalid input stops the command.
#include <oru/text.h>

#include <cinttypes>
#include <cstdio>
#include <string>
#include <vector>

#include "oru_tool.h"

extern const oru_command oru_cmd_convert;

namespace {

constexpr char kUsage[] =
    "Usage: oru convert -f FROM -t TO [OPTION]... [FILE]...\n"
    "Convert text from the character set FROM to TO, like iconv(1) but with\n"
    "the library's rules: names are any registered name or alias; malformed\n"
    "UTF-8 input (and characters TO cannot encode, when FROM is UTF-8) becomes\n"
    "one \"?\" per bad sequence; other invalid input stops the conversion with\n"
    "the byte offset of the offending sequence.  Each FILE is converted on its\n"
    "own and the results are concatenated.  With no FILE, or when FILE is -,\n"
    "read standard input.\n"
    "\n"
    "  -f, --from-code=FROM  the input's character set\n"
    "  -t, --to-code=TO      the output's character set\n"
    "  -o, --output=FILE     write to FILE instead of standard output; FILE is\n"
    "                        left untouched when the conversion fails\n"
    "      --help            show this help and exit\n"
    "\n"
    "Exit status: 0 on success, 1 on invalid input or an unreadable file or an\n"
    "unsupported set, 2 on bad usage.\n";

bool is_continuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// One file's conversion, fed chunk by chunk.
class stream_converter {
 public:
  stream_converter(oruTextCodec codec, bool repair, FILE* out)
      : codec_(codec), repair_(repair), out_(out), buffer_(64 * 1024) {}

  // Converts `data`; `final` marks the end of the input.  Returns false after
  // a failure (see error() and error_offset()).
  bool feed(const char* data, size_t length, bool final) {
    if (failed_) return false;
    std::string work = carry_;
    work.append(data, length);
    const char* in = work.data();
    size_t left = work.size();
    skip_continuations(in, left);
    uint32_t flags = (first_ ? ORU_CONVERT_RESET : 0u) | (final ? ORU_CONVERT_FLUSH : 0u);
    first_ = false;
    for (;;) {
      oruResult r = step(&in, &left, flags);
      if (r == ORU_OK) break;
      if (r == ORU_E_ILLEGAL_SEQUENCE && repair_) {
        // One "?" for the bad lead byte and the continuation bytes after it,
        // which may reach into the next chunk.
        const char* mark = "?";
        size_t markLeft = 1;
        r = step(&mark, &markLeft, 0);
        if (r == ORU_OK) {
          ++in;
          --left;
          skipping_ = true;
          skip_continuations(in, left);
          flags = final ? ORU_CONVERT_FLUSH : 0u;
          continue;
        }
      }
      failed_ = true;
      error_ = r;
      error_offset_ = offset_ + static_cast<uint64_t>(in - work.data());
      return false;
    }
    offset_ += static_cast<uint64_t>(in - work.data());
    carry_.assign(in, left);  // an incomplete sequence at the chunk's end
    return true;
  }

  oruResult error() const { return error_; }
  uint64_t error_offset() const { return error_offset_; }

 private:
  void skip_continuations(const char*& in, size_t& left) {
    while (skipping_ && left > 0 && is_continuation(*in)) {
      ++in;
      --left;
    }
    if (left > 0) skipping_ = false;
  }

  // One codec call at a time into the buffer, written out as it fills.
  oruResult step(const char** in, size_t* left, uint32_t flags) {
    for (;;) {
      char* dst = buffer_.data();
      size_t room = buffer_.size();
      oruResult r = oruConvertText2(codec_, in, left, &dst, &room, flags);
      std::fwrite(buffer_.data(), 1, static_cast<size_t>(dst - buffer_.data()), out_);
      if (r != ORU_S_OUTPUT_FULL) return r;
      flags &= ~ORU_CONVERT_RESET;
    }
  }

  oruTextCodec codec_;
  bool repair_;
  FILE* out_;
  std::vector<char> buffer_;
  std::string carry_;
  bool first_ = true;
  bool skipping_ = false;
  bool failed_ = false;
  uint64_t offset_ = 0;  // input offset of carry_[0]
  oruResult error_ = ORU_OK;
  uint64_t error_offset_ = 0;
};

// Converting a set to itself copies, as oruConvertString does: up to the
// first NUL byte, zeros after it.
oruResult copy_file(const char* path, FILE* out) {
  bool zeros = false;
  return oru_read_chunks(path, [&](const unsigned char* data, size_t length) {
    std::string chunk(reinterpret_cast<const char*>(data), length);
    for (char& c : chunk) {
      if (zeros) c = '\0';
      if (c == '\0') zeros = true;
    }
    std::fwrite(chunk.data(), 1, chunk.size(), out);
  });
}

int run(int argc, char** argv) {
  static constexpr oru_option kOptions[] = {
      {'f', "from-code", true}, {'t', "to-code", true}, {'o', "output", true}, {0, nullptr, false}};
  oru_parsed_options opts;
  if (int status = oru_parse_options(oru_cmd_convert, argc, argv, kOptions, opts); status >= 0)
    return status;
  const char* cmd = oru_cmd_convert.name;
  const char* from = opts.last('f');
  const char* to = opts.last('t');
  if (from == nullptr || to == nullptr)
    return oru_usage_error(cmd, "-f FROM and -t TO are required");
  if (opts.operands.empty()) opts.operands.push_back("-");

  const bool copy = oruASCIIStrCaseCmp(from, to, -1) == 0;
  oruTextCodec codec = nullptr;
  if (!copy) {
    oruResult r = oruOpenTextCodec(from, to, &codec);
    if (ORU_FAILED(r)) {
      return oru_fail(cmd, std::string("cannot convert from '") + from + "' to '" + to + "'", r);
    }
  }
  const bool repair = oruASCIIStrCaseCmp(from, "UTF-8", -1) == 0;
  oru_output out;
  if (!oru_open_output(cmd, opts, out)) {
    if (codec) oruCloseTextCodec(codec);
    return ORU_EXIT_FAILURE;
  }
  int status = ORU_EXIT_OK;
  for (const char* path : opts.operands) {
    const std::string shown = std::string(path) == "-" ? "standard input" : path;
    oruResult r;
    if (copy) {
      r = copy_file(path, out.stream());
    } else {
      stream_converter conv(codec, repair, out.stream());
      r = oru_read_chunks(path, [&](const unsigned char* data, size_t length) {
        conv.feed(reinterpret_cast<const char*>(data), length, false);
      });
      if (ORU_SUCCEEDED(r) && !conv.feed("", 0, true)) {
        std::fflush(out.stream());
        char at[32];
        std::snprintf(at, sizeof at, "%" PRIu64, conv.error_offset());
        status = oru_fail(cmd, "cannot convert '" + shown + "' at byte offset " + at, conv.error());
        break;
      }
    }
    if (ORU_FAILED(r)) {
      std::fflush(out.stream());
      status = oru_fail(cmd, "cannot read '" + shown + "'", r);
      break;
    }
  }
  if (codec) oruCloseTextCodec(codec);
  return oru_finish_output(cmd, out, status);
}

}  // namespace

extern const oru_command oru_cmd_convert = {
    "convert", "convert text between character sets, repairing malformed UTF-8", kUsage, run};
