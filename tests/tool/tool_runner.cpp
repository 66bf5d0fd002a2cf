// Subprocess runner and scratch directories for the tool tests.
#include "tool_runner.h"

#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

extern char** environ;

namespace {

std::string slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

void spit(const std::string& path, const std::string& content) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << content;
  if (!out) throw std::runtime_error("cannot write " + path);
}

void remove_tree(const std::string& path) {
  struct stat st {};
  if (::lstat(path.c_str(), &st) != 0) return;
  if (S_ISDIR(st.st_mode)) {
    ::chmod(path.c_str(), 0700);
    if (DIR* d = ::opendir(path.c_str())) {
      while (dirent* e = ::readdir(d)) {
        if (std::strcmp(e->d_name, ".") != 0 && std::strcmp(e->d_name, "..") != 0) {
          remove_tree(path + "/" + e->d_name);
        }
      }
      ::closedir(d);
    }
    ::rmdir(path.c_str());
  } else {
    ::unlink(path.c_str());
  }
}

}  // namespace

run_result run_program(const std::string& program, const std::vector<std::string>& args,
                       const std::string& dir, const std::string& input) {
  // Standard input, output and error go through files: no pipe can fill up
  // and block either side.
  char io_dir[] = "/tmp/oru-tool-io-XXXXXX";
  if (::mkdtemp(io_dir) == nullptr) throw std::runtime_error("mkdtemp");
  const std::string in_path = std::string(io_dir) + "/in";
  const std::string out_path = std::string(io_dir) + "/out";
  const std::string err_path = std::string(io_dir) + "/err";
  spit(in_path, input);

  std::vector<std::string> words{program};
  words.insert(words.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (std::string& w : words) argv.push_back(w.data());
  argv.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, in_path.c_str(), O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, out_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                   0600);
  posix_spawn_file_actions_addopen(&actions, 2, err_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                   0600);
  // posix_spawn has no portable chdir action; the child runs in `dir`
  // because the parent switches there around the spawn.
  char previous[4096];
  if (::getcwd(previous, sizeof previous) == nullptr) throw std::runtime_error("getcwd");
  if (::chdir(dir.c_str()) != 0) throw std::runtime_error("chdir " + dir);
  pid_t pid = 0;
  const int spawned =
      ::posix_spawnp(&pid, program.c_str(), &actions, nullptr, argv.data(), environ);
  if (::chdir(previous) != 0) throw std::runtime_error("chdir back");
  posix_spawn_file_actions_destroy(&actions);
  run_result result;
  if (spawned == 0) {
    int wstatus = 0;
    while (::waitpid(pid, &wstatus, 0) < 0) {
    }
    result.status = WIFEXITED(wstatus) ? WEXITSTATUS(wstatus) : -1;
    result.out = slurp(out_path);
    result.err = slurp(err_path);
  }
  remove_tree(io_dir);
  return result;
}

run_result run_oru(const std::vector<std::string>& args, const std::string& dir,
                   const std::string& input) {
  return run_program(ORU_TOOL_PATH, args, dir, input);
}

scratch_dir::scratch_dir() {
  char name[] = "/tmp/oru-tool-test-XXXXXX";
  if (::mkdtemp(name) == nullptr) throw std::runtime_error("mkdtemp");
  path_ = name;
}

scratch_dir::~scratch_dir() { remove_tree(path_); }

std::string scratch_dir::write(const std::string& name, const std::string& content) const {
  spit(path_ + "/" + name, content);
  return name;
}

std::string scratch_dir::read(const std::string& name) const { return slurp(path_ + "/" + name); }

bool scratch_dir::exists(const std::string& name) const {
  struct stat st {};
  return ::lstat((path_ + "/" + name).c_str(), &st) == 0;
}

std::vector<std::string> scratch_dir::list() const {
  std::vector<std::string> names;
  if (DIR* d = ::opendir(path_.c_str())) {
    while (dirent* e = ::readdir(d)) {
      if (std::strcmp(e->d_name, ".") != 0 && std::strcmp(e->d_name, "..") != 0) {
        names.push_back(e->d_name);
      }
    }
    ::closedir(d);
  }
  std::sort(names.begin(), names.end());
  return names;
}
