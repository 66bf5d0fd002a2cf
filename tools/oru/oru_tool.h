// The command record of the `oru` tool and the helpers every command shares:
// error reporting, option parsing, streamed input and safely replaced output.
//
// The tool is a client of the shared library like any other: it includes
// only the public headers <oru/...>.
#ifndef ORU_TOOLS_ORU_TOOL_H
#define ORU_TOOLS_ORU_TOOL_H

#include <oru/core.h>

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

// One subcommand.  argv[0] is the command name; `usage` is the whole text
// printed by `oru COMMAND --help` and `oru help COMMAND`.
struct oru_command {
  const char* name;
  const char* summary;  // one line for `oru help`
  const char* usage;
  int (*run)(int argc, char** argv);
};

// The table of commands, ending in a null entry (commands.cpp).
extern const oru_command* const oru_commands[];
const oru_command* oru_find_command(const char* name);

// Exit statuses.
constexpr int ORU_EXIT_OK = 0;
constexpr int ORU_EXIT_FAILURE = 1;
constexpr int ORU_EXIT_USAGE = 2;

// Writes "oru: COMMAND: WHAT: <text of code>" to standard error and returns
// ORU_EXIT_FAILURE.
int oru_fail(const char* command, const std::string& what, oruResult code);

// Writes "oru: COMMAND: MESSAGE" and a one-line hint to --help to standard
// error and returns ORU_EXIT_USAGE.
int oru_usage_error(const char* command, const std::string& message);

// GNU-style options: short options, each with a long form; bundled short
// flags (-ab), attached or separate values (-oFILE, -o FILE, --output=FILE,
// --output FILE), unambiguous long prefixes, "--" ends the options, and
// operands may come between options.  "-" and negative numbers (-5) are
// operands.  --help is understood by every command.
struct oru_option {
  char short_name;
  const char* long_name;
  bool has_value;
};

struct oru_parsed_options {
  struct entry {
    char name;
    const char* value;  // null for a flag
  };
  std::vector<entry> options;  // in command-line order
  std::vector<const char*> operands;
  // Options and operands together in command-line order; operands have the
  // name '\0'.
  std::vector<entry> in_order;

  void add_option(char name, const char* value) {
    options.push_back({name, value});
    in_order.push_back({name, value});
  }
  void add_operand(const char* operand) {
    operands.push_back(operand);
    in_order.push_back({'\0', operand});
  }

  // The last value given for option `name`, or null.
  const char* last(char name) const;
  bool has(char name) const;
};

// Parses argv[1..argc-1] of `command` against `options` (terminated by an
// entry with short_name 0).  Returns -1 when the command should go on;
// otherwise the exit status the command must return at once: 0 after
// printing the usage for --help, 2 after a usage error.
int oru_parse_options(const oru_command& command, int argc, char** argv, const oru_option* options,
                      oru_parsed_options& parsed);

// Input is read in chunks of this size, so memory stays bounded whatever
// the size of the input.
constexpr size_t ORU_CHUNK_SIZE = 128 * 1024;

// Calls sink(data, length) for consecutive chunks of the file `path` ("-"
// meaning standard input) until its end.  Returns ORU_OK or the translated
// error of opening or reading.
class oru_chunk_sink {
 public:
  virtual void consume(const unsigned char* data, size_t length) = 0;

 protected:
  ~oru_chunk_sink() = default;
};
oruResult oru_read_chunks(const char* path, oru_chunk_sink& sink);

// Convenience form with a callable.
template <typename F>
oruResult oru_read_chunks(const char* path, F&& f) {
  struct adapter final : oru_chunk_sink {
    F& fn;
    explicit adapter(F& g) : fn(g) {}
    void consume(const unsigned char* data, size_t length) override { fn(data, length); }
  } a(f);
  return oru_read_chunks(path, static_cast<oru_chunk_sink&>(a));
}

// Lines longer than this are not kept: a binary file given as a text
// input must not make the tool hold all of it in memory.
constexpr size_t ORU_MAX_LINE = 64 * 1024;

// Reads a text file ("-" = standard input) line by line, without the line
// ends, calling on_line(line, overlong) for each.  An overlong line (more
// than ORU_MAX_LINE bytes) is delivered empty with overlong = true.
template <typename F>
oruResult oru_read_lines(const char* path, F&& on_line) {
  std::string pending;
  bool overlong = false;
  oruResult r = oru_read_chunks(path, [&](const unsigned char* data, size_t length) {
    for (size_t i = 0; i < length; ++i) {
      if (data[i] == '\n') {
        on_line(pending, overlong);
        pending.clear();
        overlong = false;
      } else if (pending.size() < ORU_MAX_LINE && !overlong) {
        pending.push_back(static_cast<char>(data[i]));
      } else {
        pending.clear();
        overlong = true;
      }
    }
  });
  if (ORU_SUCCEEDED(r) && (!pending.empty() || overlong)) on_line(pending, overlong);
  return r;
}

// The output of a command: standard output, or with -o FILE a temporary
// file beside FILE that replaces FILE only when commit() succeeds.  If the
// command fails (or never commits) the temporary file is removed, so no
// partial output file is ever left behind.
class oru_output {
 public:
  oru_output() = default;
  oru_output(const oru_output&) = delete;
  oru_output& operator=(const oru_output&) = delete;
  ~oru_output();

  // Null or "-" selects standard output.
  oruResult open(const char* path);
  FILE* stream() const { return stream_; }
  // Flushes and, for a file, renames the temporary file over the target.
  oruResult commit();
  // Throws a file's output away (standard output is only flushed).
  void abandon();

 private:
  void discard();
  FILE* stream_ = nullptr;
  std::string target_;
  std::string temporary_;
};

// Opens the output named by -o (or standard output) for `command`, writing
// the failure report itself; returns false on failure.
bool oru_open_output(const char* command, const oru_parsed_options& parsed, oru_output& out);

// Ends the output with exit status `status` of the command.  Output that
// is complete (by default: status 0) is committed, reporting a failure to
// do so; incomplete output to a file is thrown away.  Returns `status`, or
// ORU_EXIT_FAILURE when committing failed.
int oru_finish_output(const char* command, oru_output& out, int status, bool complete);
inline int oru_finish_output(const char* command, oru_output& out, int status) {
  return oru_finish_output(command, out, status, status == ORU_EXIT_OK);
}

#endif  // ORU_TOOLS_ORU_TOOL_H
