/* Parses its arguments with getopt("ab:") and prints what it got, so that a
 * test can tell which getopt the program is bound to: the library's (BSD,
 * stops at the first operand) or the C library's (permutes).
 *
 *   PROBE_DIRECT    linked with liboru itself
 *   PROBE_INDIRECT  linked with a helper library that links liboru
 *   PROBE_DLOPEN    linked with the C library only; loads liboru by dlopen
 *
 * Before parsing, each probe asks liboru for the program name (through the
 * helper or dlsym in the last two), proving the library is in the process. */
/* glibc maps getopt to its POSIX-only variant in strict POSIX mode. */
#define _GNU_SOURCE
#include <stdio.h>
#include <unistd.h>

#if defined(PROBE_DIRECT)
#include "oru/system.h"
static const char* program_name(void) { return oruGetProgramName(); }
#elif defined(PROBE_INDIRECT)
const char* getopt_helper_program_name(void);
static const char* program_name(void) { return getopt_helper_program_name(); }
#elif defined(PROBE_DLOPEN)
#include <dlfcn.h>
static const char* program_name(void) {
  void* library = dlopen(ORU_LIBRARY_PATH, RTLD_NOW | RTLD_GLOBAL);
  const char* (*get)(void);
  if (library == NULL) return NULL;
  *(void**)(&get) = dlsym(library, "oruGetProgramName");
  return get != NULL ? get() : NULL;
}
#else
#error "define PROBE_DIRECT, PROBE_INDIRECT or PROBE_DLOPEN"
#endif

int main(int argc, char** argv) {
  const char* name = program_name();
  int c, i;
  if (name == NULL) return 3;
  printf("name %s\n", name);
  while ((c = getopt(argc, argv, "ab:")) != -1) {
    if (c == 'b') {
      printf("opt b %s\n", optarg);
    } else {
      printf("opt %c\n", c);
    }
  }
  printf("optind %d\n", optind);
  for (i = 1; i < argc; ++i) printf("argv %s\n", argv[i]);
  return 0;
}
