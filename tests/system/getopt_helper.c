/* A library that links liboru, for a program that does not. */
#include "oru/system.h"

__attribute__((visibility("default"))) const char* getopt_helper_program_name(void);

const char* getopt_helper_program_name(void) { return oruGetProgramName(); }
