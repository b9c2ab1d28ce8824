/*
 * Opens the library at run time, finds every name given, calls one function, closes the library, and does so again.
 * usage: load LIBRARY < names
 */
#include <dlfcn.h>
#include <orvcv.h>
#include <stdio.h>
#include <string.h>

typedef OrvStatus (*AbsDiff)(const uint8_t*, int, const uint8_t*, int, uint8_t*, int, OrvSize);

static int failed(const char* what) {
  fprintf(stderr, "%s\n", what);
  return 1;
}

static int differenceOf9And5(void* library) {
  uint8_t nine = 9, five = 5, difference = 0;
  OrvSize size = {1, 1};
  AbsDiff absDiff;
  void* symbol = dlsym(library, "orviAbsDiff_8u_C1R");
  memcpy(&absDiff, &symbol, sizeof absDiff);
  return absDiff(&nine, 1, &five, 1, &difference, 1, size) == orvStsOk ? difference : -1;
}

int main(int argc, char** argv) {
  char name[256];
  int found = 0, round;
  void* library = argc == 2 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : NULL;
  if (library == NULL)
    return failed(argc == 2 ? dlerror() : "usage: load LIBRARY < names");
  while (scanf("%255s", name) == 1) {
    if (dlsym(library, name) == NULL)
      return failed(dlerror());
    ++found;
  }
  if (found == 0)
    return failed("no names given");
  for (round = 0; round < 3; ++round) {
    if (differenceOf9And5(library) != 4)
      return failed("the difference of 9 and 5 is not 4");
    if (dlclose(library) != 0 || (library = dlopen(argv[1], RTLD_LAZY | RTLD_LOCAL)) == NULL)
      return failed(dlerror());
  }
  printf("opened at run time: %d names found\n", found);
  return 0;
}
