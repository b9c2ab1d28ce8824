/* A program outside the source tree, in plain C, against the installed library. */
#include <orvcv.h>
#include <stdio.h>
#include <string.h>

int main(void) {
  const uint8_t before[] = {10, 200, 0, 77, 3, 255};
  const uint8_t after[] = {13, 100, 255, 77, 3, 0};
  const uint8_t expected[] = {3, 100, 255, 0, 0, 255};
  uint8_t difference[6] = {0};
  OrvSize size = {3, 2};

  const OrvLibraryVersion* version = orvcvGetLibVersion();
  if (version->major != 2018 || strcmp(version->name, "orvCV AVX (g9)") != 0)
    return 1;
  if (orviAbsDiff_8u_C1R(before, 3, after, 3, difference, 3, size) != orvStsOk)
    return 2;
  if (memcmp(difference, expected, sizeof expected) != 0)
    return 3;
  if (orviAbsDiff_8u_C1R(before, 2, after, 3, difference, 3, size) != orvStsBadStep)
    return 4;
  printf("C program: %s\n", version->version);
  return 0;
}
