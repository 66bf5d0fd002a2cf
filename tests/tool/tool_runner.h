// Runs a program as a subprocess with given standard input and collects its
// exit status, standard output and standard error separately.
#ifndef ORU_TESTS_TOOL_TOOL_RUNNER_H
#define ORU_TESTS_TOOL_TOOL_RUNNER_H

#include <string>
#include <vector>

struct run_result {
  int status = -1;  // exit status; -1 when the program did not exit normally
  std::string out;
  std::string err;
};

// Runs `program` (looked up in PATH) with `args`, in the working directory
// `dir`, feeding `input` on standard input.
run_result run_program(const std::string& program, const std::vector<std::string>& args,
                       const std::string& dir, const std::string& input = "");

// Runs the built `oru` tool.
run_result run_oru(const std::vector<std::string>& args, const std::string& dir,
                   const std::string& input = "");

// A fresh empty directory for one test, removed by the destructor.
class scratch_dir {
 public:
  scratch_dir();
  ~scratch_dir();
  scratch_dir(const scratch_dir&) = delete;
  scratch_dir& operator=(const scratch_dir&) = delete;
  const std::string& path() const { return path_; }
  // Writes a file below the directory and returns its name.
  std::string write(const std::string& name, const std::string& content) const;
  std::string read(const std::string& name) const;
  bool exists(const std::string& name) const;
  // The names of the entries of the directory, sorted.
  std::vector<std::string> list() const;

 private:
  std::string path_;
};

#endif  // ORU_TESTS_TOOL_TOOL_RUNNER_H
