#include <oru/oru.h>
#include <stdio.h>

int main(void) {
  if (oruInitialize() != ORU_OK) return 1;
  if (oruASCIIToUpper('q') != 'Q') return 1;
  puts("consumer ok");
  return 0;
}
