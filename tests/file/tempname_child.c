/* Prints the first temporary names of a fresh process, one a line: two
 * files and one directory in argv[1] with prefix "t" and suffix ".s". */
#include "oru/file.h"

#include <stdio.h>

int main(int argc, char** argv) {
  char name[4096];
  int i;
  if (argc != 2) return 2;
  for (i = 0; i < 2; ++i) {
    if (oruGetTempFileName(argv[1], "t", ".s", name, sizeof name) != ORU_OK) return 1;
    printf("%s\n", name);
  }
  if (oruGetTempDirName(argv[1], "t", NULL, name, sizeof name) != ORU_OK) return 1;
  printf("%s\n", name);
  return 0;
}
