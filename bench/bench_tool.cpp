// The `oru hash` command on a 256 MiB file, side by side with md5sum(1) and
// with a plain read loop over the same file (the I/O floor), both in this
// process and as a command (dd).  Each iteration runs one whole command; the
// file stays in the page cache, so the numbers compare the programs rather
// than the disk.  The time counted is CPU time (user + system), which stays
// meaningful on a machine shared with other work; the wall time is reported
// beside it.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <stdexcept>
#include <string>
#include <vector>

extern char** environ;

namespace {

constexpr size_t kFileSize = size_t{256} << 20;

// The input file, written once per process and removed at its end.
class input_file {
 public:
  input_file() {
    const char* tmp = std::getenv("TMPDIR");
    path_ = std::string(tmp != nullptr && *tmp != '\0' ? tmp : "/tmp") + "/oru-bench-tool-" +
            std::to_string(::getpid()) + ".bin";
    std::FILE* f = std::fopen(path_.c_str(), "wb");
    if (f == nullptr) throw std::runtime_error("cannot create " + path_);
    std::vector<uint64_t> block(1 << 17);
    uint64_t x = 0x9E3779B97F4A7C15ull;
    for (size_t written = 0; written < kFileSize; written += block.size() * 8) {
      for (uint64_t& w : block) {  // xorshift64: cheap, incompressible bytes
        x ^= x << 13;
        x ^= x >> 7;
        x ^= x << 17;
        w = x;
      }
      std::fwrite(block.data(), 8, block.size(), f);
    }
    std::fclose(f);
  }
  ~input_file() { std::remove(path_.c_str()); }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

const std::string& input() {
  static const input_file file;
  return file.path();
}

double seconds(const timeval& t) { return static_cast<double>(t.tv_sec) + t.tv_usec * 1e-6; }

double now() {
  timespec t{};
  ::clock_gettime(CLOCK_MONOTONIC, &t);
  return static_cast<double>(t.tv_sec) + t.tv_nsec * 1e-9;
}

// Runs a program with its standard output thrown away and adds its CPU time
// (user + system) to *cpu; true on exit 0.
bool run(std::vector<std::string> words, double* cpu) {
  std::vector<char*> argv;
  for (std::string& w : words) argv.push_back(w.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  pid_t pid = 0;
  const int spawned = ::posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (spawned != 0) return false;
  int status = 0;
  rusage usage{};
  while (::wait4(pid, &status, 0, &usage) < 0) {
  }
  *cpu += seconds(usage.ru_utime) + seconds(usage.ru_stime);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Runs the command `words` followed by the input file (prefixed by
// `file_prefix`, e.g. "if=" for dd).
void command(benchmark::State& state, std::vector<std::string> words,
             const std::string& file_prefix = "") {
  words.push_back(file_prefix + input());
  double cpu = 0;
  run(words, &cpu);  // warm the page cache
  double wall = 0;
  for (auto _ : state) {
    cpu = 0;
    const double start = now();
    if (!run(words, &cpu)) state.SkipWithError(("failed: " + words[0]).c_str());
    wall += now() - start;
    state.SetIterationTime(cpu);
  }
  state.counters["wall_ms"] =
      benchmark::Counter(wall * 1000 / static_cast<double>(state.iterations()));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kFileSize));
}

void BM_OruHashMd5(benchmark::State& state) {
  command(state, {ORU_TOOL_PATH, "hash", "-a", "md5"});
}
void BM_Md5sum(benchmark::State& state) { command(state, {"md5sum"}); }
void BM_OruHashCrc32(benchmark::State& state) {
  command(state, {ORU_TOOL_PATH, "hash", "-a", "crc32"});
}

// The I/O floor as a command: dd(1) reading in the tool's chunk size.
void BM_DdReadLoop(benchmark::State& state) {
  command(state, {"dd", "of=/dev/null", "bs=128K", "status=none"}, "if=");
}

// The I/O floor: read the file in the tool's chunk size into a page-aligned
// buffer and do nothing else.
void BM_ReadLoop(benchmark::State& state) {
  alignas(4096) static unsigned char buffer_space[128 * 1024];
  unsigned char* const buffer = buffer_space;
  input();
  double wall = 0;
  for (auto _ : state) {
    rusage before{}, after{};
    ::getrusage(RUSAGE_SELF, &before);
    const double start = now();
    const int fd = ::open(input().c_str(), O_RDONLY);
    size_t total = 0;
    for (ssize_t n; (n = ::read(fd, buffer, 128 * 1024)) > 0;) total += static_cast<size_t>(n);
    ::close(fd);
    benchmark::DoNotOptimize(total);
    wall += now() - start;
    ::getrusage(RUSAGE_SELF, &after);
    state.SetIterationTime(seconds(after.ru_utime) + seconds(after.ru_stime) -
                           seconds(before.ru_utime) - seconds(before.ru_stime));
  }
  state.counters["wall_ms"] =
      benchmark::Counter(wall * 1000 / static_cast<double>(state.iterations()));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kFileSize));
}

BENCHMARK(BM_OruHashMd5)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Md5sum)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OruHashCrc32)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DdReadLoop)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadLoop)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
