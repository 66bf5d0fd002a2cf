// Message catalogs against GNU gettext.  Lookups: oruDGetText (the locale
// parameters choose the catalog) and oruDGetTextLC (explicit locale), a hit
// and a miss in a catalog of 1,000 messages, beside glibc's dcgettext on the
// msgfmt-compiled catalog of the same .po file.  The compiler: `oru catalog
// compile` against `msgfmt` on a 10,000-entry .po file, each run as a whole
// command and timed by its CPU time (user + system).
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <libintl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "l10n/oru_catalog_writer.h"
#include "oru/l10n.h"

extern char** environ;

namespace {

std::string po_text(int count) {
  std::ostringstream po;
  po << "msgid \"\"\nmsgstr \"\"\n\"Content-Type: text/plain; charset=UTF-8\\n\"\n\n";
  for (int i = 0; i < count; ++i) {
    if (i % 10 == 0) po << "msgctxt \"menu\"\n";
    po << "msgid \"Message number " << i << " of the user interface\"\n"
       << "msgstr \"Meldung Nummer " << i
       << " der Benutzeroberfl\xC3\xA4"
          "che\"\n\n";
  }
  return po.str();
}

// A directory with both catalogs of 1,000 messages and the 10,000-entry
// .po file, removed at the end of the process.
class fixture {
 public:
  fixture() {
    dir_ = (std::filesystem::temp_directory_path() /
            ("oru-bench-catalog-" + std::to_string(::getpid())))
               .string();
    std::string small = po_text(1000);
    std::filesystem::create_directories(dir_ + "/de_DE.UTF-8/LC_MESSAGES");
    std::filesystem::create_directories(dir_ + "/de_DE/LC_MESSAGES");
    std::ofstream(dir_ + "/small.po") << small;
    std::ofstream(dir_ + "/large.po") << po_text(10000);
    std::string catalog, error;
    oru_catalog_compile(small.data(), small.size(), "small.po", {}, catalog, error);
    std::ofstream(dir_ + "/de_DE.UTF-8/LC_MESSAGES/bench.mo", std::ios::binary) << catalog;
    std::string cmd =
        "msgfmt -o '" + dir_ + "/de_DE/LC_MESSAGES/gnubench.mo' '" + dir_ + "/small.po'";
    gnuReady_ = std::system(cmd.c_str()) == 0;
  }
  ~fixture() {
    std::error_code ec;
    std::filesystem::remove_all(dir_, ec);
  }
  const std::string& dir() const { return dir_; }
  bool gnu_ready() const { return gnuReady_; }

 private:
  std::string dir_;
  bool gnuReady_ = false;
};

const fixture& files() {
  static const fixture f;
  return f;
}

const char* const kHit = "Message number 517 of the user interface";
const char* const kMiss = "Message number 5170 of the user interface";

void setup_oru() {
  oruSetLocaleParam(ORU_LP_LANGUAGE, "de");
  oruSetLocaleParam(ORU_LP_TERRITORY, "DE");
  oruSetLocaleParam(ORU_LP_APP_CHARSET, "UTF-8");
  oruBindTextDomain("bench", files().dir().c_str());
}

void BM_OruDGetText(benchmark::State& state, const char* msgid) {
  setup_oru();
  if ((oruDGetText("bench", msgid) == msgid) == (msgid == kHit)) state.SkipWithError("setup");
  for (auto _ : state) benchmark::DoNotOptimize(oruDGetText("bench", msgid));
}

void BM_OruDGetTextLC(benchmark::State& state, const char* msgid) {
  setup_oru();
  if ((oruDGetTextLC("bench", "de_DE", msgid) == msgid) == (msgid == kHit))
    state.SkipWithError("setup");
  for (auto _ : state) benchmark::DoNotOptimize(oruDGetTextLC("bench", "de_DE", msgid));
}

// glibc: a non-"C" locale (C.UTF-8 is always there) and LANGUAGE choose
// DIR/de_DE/LC_MESSAGES/gnubench.mo.
void BM_Dcgettext(benchmark::State& state, const char* msgid) {
  if (!files().gnu_ready()) {
    state.SkipWithError("msgfmt (GNU gettext) is not installed");
    return;
  }
  std::setlocale(LC_ALL, "C.UTF-8");
  ::setenv("LANGUAGE", "de_DE", 1);
  bindtextdomain("gnubench", files().dir().c_str());
  if ((dcgettext("gnubench", msgid, LC_MESSAGES) == msgid) == (msgid == kHit))
    state.SkipWithError("dcgettext does not find the catalog");
  for (auto _ : state) benchmark::DoNotOptimize(dcgettext("gnubench", msgid, LC_MESSAGES));
}

BENCHMARK_CAPTURE(BM_OruDGetText, hit, kHit);
BENCHMARK_CAPTURE(BM_OruDGetTextLC, hit, kHit);
BENCHMARK_CAPTURE(BM_Dcgettext, hit, kHit);
BENCHMARK_CAPTURE(BM_OruDGetText, miss, kMiss);
BENCHMARK_CAPTURE(BM_OruDGetTextLC, miss, kMiss);
BENCHMARK_CAPTURE(BM_Dcgettext, miss, kMiss);

double seconds(const timeval& t) { return static_cast<double>(t.tv_sec) + t.tv_usec * 1e-6; }

// Runs a command with its output thrown away; returns its CPU time, or a
// negative number when it failed.
double run(std::vector<std::string> words) {
  std::vector<char*> argv;
  for (std::string& w : words) argv.push_back(w.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  pid_t pid = 0;
  int spawned = ::posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (spawned != 0) return -1;
  int status = 0;
  rusage usage{};
  while (::wait4(pid, &status, 0, &usage) < 0) {
  }
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return -1;
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void compile_command(benchmark::State& state, std::vector<std::string> words) {
  words.push_back(files().dir() + "/large.po");
  for (auto _ : state) {
    double cpu = run(words);
    if (cpu < 0) {
      state.SkipWithError(("failed: " + words[0]).c_str());
      break;
    }
    state.SetIterationTime(cpu);
  }
}

void BM_OruCatalogCompile(benchmark::State& state) {
  compile_command(state, {ORU_TOOL_PATH, "catalog", "compile", "-o", files().dir() + "/o.mo"});
}
void BM_Msgfmt(benchmark::State& state) {
  compile_command(state, {"msgfmt", "-o", files().dir() + "/g.mo"});
}
BENCHMARK(BM_OruCatalogCompile)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Msgfmt)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
