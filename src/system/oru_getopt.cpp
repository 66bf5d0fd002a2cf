// getopt with the classic BSD semantics: no permutation, the scan stops at
// the first operand, "--" or a lone "-".  Exported under the plain names;
// the state is process-wide and unguarded, like the C library's.

#include "oru/system.h"

#include <cstdio>
#include <cstring>

extern "C" {

ORU_API char* optarg = nullptr;
ORU_API int optind = 1;
ORU_API int opterr = 1;
ORU_API int optopt = 0;

}  // extern "C"

namespace {

char kEmpty[] = "";

// The scan position inside the current argument; empty between arguments.
const char* oruOptPlace = kEmpty;
// Restarts the scan at optind; kept for parity with the BSD parser, never
// set through the interface.
int oruOptReset = 0;

void complain(const char* format, int option) {
  std::fprintf(stderr, format, oruGetProgramName(), option);
}

}  // namespace

extern "C" {

// Declared as the header declares it (noexcept beside glibc's declaration).
#if defined(__GLIBC__)
#define ORU_GETOPT_NOEXCEPT noexcept
#else
#define ORU_GETOPT_NOEXCEPT
#endif

ORU_API int getopt(int argc, char* const argv[], const char* optstring) ORU_GETOPT_NOEXCEPT {
  if (argv == nullptr || optstring == nullptr) return -1;
  if (oruOptReset != 0 || *oruOptPlace == '\0') {
    oruOptReset = 0;
    if (optind < 0 || optind >= argc || argv[optind] == nullptr || argv[optind][0] != '-') {
      oruOptPlace = kEmpty;
      return -1;
    }
    oruOptPlace = argv[optind];
    // "-" keeps its '-' as the option character; "--..." ends the options.
    if (oruOptPlace[1] != '\0' && *++oruOptPlace == '-') {
      ++optind;
      oruOptPlace = kEmpty;
      return -1;
    }
  }
  // Unsigned, so that no option byte can look like -1.
  optopt = static_cast<unsigned char>(*oruOptPlace++);
  // A finished argument leaves the position empty rather than pointing at
  // its terminator: the same to the parser, but no pointer into the
  // caller's argv outlives the argument.
  const bool atEnd = *oruOptPlace == '\0';
  if (atEnd) oruOptPlace = kEmpty;
  const char* letter = optopt == ':' ? nullptr : std::strchr(optstring, optopt);
  if (letter == nullptr) {
    // A lone "-" that is not an option ends the scan and stays in place.
    // Inside a cluster ("-a-b") it ends the scan too, and like every end
    // it leaves the position empty: a new scan (optind = 1, perhaps another
    // argv) must not go on inside this argument.
    if (optopt == '-') {
      oruOptPlace = kEmpty;
      return -1;
    }
    if (atEnd) ++optind;
    if (opterr != 0 && optstring[0] != ':') complain("%s: illegal option -- %c\n", optopt);
    return '?';
  }
  if (letter[1] != ':') {
    optarg = nullptr;
    if (atEnd) ++optind;
    return optopt;
  }
  if (!atEnd) {
    optarg = const_cast<char*>(oruOptPlace);
  } else if (++optind >= argc) {
    oruOptPlace = kEmpty;
    if (optstring[0] == ':') return ':';
    if (opterr != 0) complain("%s: option requires an argument -- %c\n", optopt);
    return '?';
  } else {
    optarg = argv[optind];
  }
  oruOptPlace = kEmpty;
  ++optind;
  return optopt;
}

}  // extern "C"
