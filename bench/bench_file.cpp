// Directory listing, positional 4 KiB reads and absolute paths, side by side
// with the system calls they wrap.  The scratch files live under
// ORU_BENCH_DIR, else /dev/shm when it exists, else the temporary directory,
// and are removed at exit.

#include "oru/file.h"

#include <benchmark/benchmark.h>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace {

struct Scratch {
  std::filesystem::path root;
  std::filesystem::path listing;  // 10,000 empty files
  std::filesystem::path data;     // 16 MiB
  static constexpr size_t kDataSize = size_t{16} << 20;

  Scratch() {
    const char* base = std::getenv("ORU_BENCH_DIR");
    std::filesystem::path parent = base != nullptr ? base
                                   : std::filesystem::is_directory("/dev/shm")
                                       ? "/dev/shm"
                                       : std::filesystem::temp_directory_path();
    std::string pattern = (parent / "oru_bench_file_XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) std::abort();
    root = pattern;
    listing = root / "listing";
    std::filesystem::create_directory(listing);
    for (int i = 0; i < 10000; ++i) {
      std::string name = (listing / ("entry_" + std::to_string(i))).string();
      int fd = open(name.c_str(), O_WRONLY | O_CREAT, 0644);
      if (fd >= 0) close(fd);
    }
    data = root / "data";
    int fd = open(data.c_str(), O_WRONLY | O_CREAT, 0644);
    std::vector<char> block(1 << 20, 'x');
    for (size_t done = 0; done < kDataSize; done += block.size()) {
      if (write(fd, block.data(), block.size()) != static_cast<ssize_t>(block.size())) {
        std::abort();
      }
    }
    close(fd);
  }
  ~Scratch() {
    std::error_code ignored;
    std::filesystem::remove_all(root, ignored);
  }
};

Scratch& scratch() {
  static Scratch instance;
  return instance;
}

void BM_OruReadDir(benchmark::State& state) {
  std::string path = scratch().listing.string();
  char name[256];
  for (auto _ : state) {
    oruDir dir = nullptr;
    if (oruOpenDir(path.c_str(), &dir) != ORU_OK) std::abort();
    int count = 0;
    while (oruReadDir(dir, name, sizeof name) == ORU_OK) ++count;
    oruCloseDir(dir);
    benchmark::DoNotOptimize(count);
  }
  state.SetItemsProcessed(state.iterations() * 10000);
}

// The same work by hand: names copied out, "." and ".." skipped.
void BM_SystemReaddir(benchmark::State& state) {
  std::string path = scratch().listing.string();
  char name[256];
  for (auto _ : state) {
    DIR* dir = opendir(path.c_str());
    if (dir == nullptr) std::abort();
    int count = 0;
    while (struct dirent* entry = readdir(dir)) {
      size_t length = std::strlen(entry->d_name);
      if (length >= sizeof name) continue;
      std::memcpy(name, entry->d_name, length + 1);
      if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) continue;
      ++count;
    }
    closedir(dir);
    benchmark::DoNotOptimize(count);
  }
  state.SetItemsProcessed(state.iterations() * 10000);
}

constexpr size_t kBlock = 4096;
constexpr size_t kBlocks = Scratch::kDataSize / kBlock;

// Blocks in a scattered but fixed order.
uint64_t block_offset(size_t i) { return (i * 7919 % kBlocks) * kBlock; }

void BM_OruSeekAndRead4K(benchmark::State& state) {
  oruFile file = nullptr;
  if (oruOpenFile(scratch().data.c_str(), ORU_OPEN_READ, &file) != ORU_OK) std::abort();
  char buffer[kBlock];
  size_t i = 0;
  for (auto _ : state) {
    size_t n = 0;
    oruSeekAndRead(file, block_offset(i++), buffer, kBlock, &n);
    benchmark::DoNotOptimize(n);
  }
  oruClose(file);
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kBlock));
}

void BM_SystemPread4K(benchmark::State& state) {
  int fd = open(scratch().data.c_str(), O_RDONLY | O_CLOEXEC);
  char buffer[kBlock];
  size_t i = 0;
  for (auto _ : state) {
    ssize_t n = pread(fd, buffer, kBlock, static_cast<off_t>(block_offset(i++)));
    benchmark::DoNotOptimize(n);
  }
  close(fd);
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kBlock));
}

// Not the same work: oruGetAbsolutePath is lexical (plus the current
// directory), realpath walks the file system.  Shown for context.
std::string long_relative_path() {
  std::string path;
  for (int i = 0; i < 20; ++i) path += "dir" + std::to_string(i) + "/./sub/../";
  return path + "file.txt";
}

void BM_OruGetAbsolutePath(benchmark::State& state) {
  std::string path = long_relative_path();
  char out[PATH_MAX];
  for (auto _ : state) {
    oruResult result = oruGetAbsolutePath(path.c_str(), out, sizeof out);
    benchmark::DoNotOptimize(result);
  }
}

void BM_SystemRealpath(benchmark::State& state) {
  std::filesystem::path deep = scratch().root;
  for (int i = 0; i < 20; ++i) deep /= "dir" + std::to_string(i);
  std::filesystem::create_directories(deep / "sub");
  std::string path = (deep / "sub" / ".." / ".").string();
  char out[PATH_MAX];
  for (auto _ : state) {
    char* result = realpath(path.c_str(), out);
    benchmark::DoNotOptimize(result);
  }
}

BENCHMARK(BM_OruReadDir);
BENCHMARK(BM_SystemReaddir);
BENCHMARK(BM_OruSeekAndRead4K);
BENCHMARK(BM_SystemPread4K);
BENCHMARK(BM_OruGetAbsolutePath);
BENCHMARK(BM_SystemRealpath);

}  // namespace
