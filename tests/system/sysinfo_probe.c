/* Prints the program name and path as the library reports them. */
#include <stdio.h>

#include "oru/system.h"

int main(void) {
  const char* path = oruGetProgramPath();
  printf("name %s\npath %s\n", oruGetProgramName(), path != NULL ? path : "(null)");
  return 0;
}
