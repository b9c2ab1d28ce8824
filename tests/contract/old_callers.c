/*
 * A caller from before 16-byte stack alignment: calls arrive with the stack pointer at 4, 8 and 12 modulo 16 as well as
 * 0, and the functions that keep vectors on their stack still work.
 */
#include <orvcv.h>
#include <stdio.h>
#include <string.h>

enum { width = 67, height = 3, samples = width * height };

/* Calls function with the argument words pushed, so that the stack pointer is `residue` modulo 16 at the call. */
int callAtResidue(unsigned residue, void (*function)(void), const void* words, unsigned count);
__asm__(
    ".text\n"
    ".globl callAtResidue\n"
    ".type callAtResidue, @function\n"
    "callAtResidue:\n"
    "  pushl %ebp\n"
    "  movl %esp, %ebp\n"
    "  pushl %esi\n"
    "  pushl %edi\n"
    "  movl 20(%ebp), %ecx\n" /* count */
    "  leal 0(,%ecx,4), %eax\n"
    "  subl %eax, %esp\n"
    "  andl $-16, %esp\n"
    "  subl $16, %esp\n"
    "  addl 8(%ebp), %esp\n" /* residue */
    "  movl 16(%ebp), %esi\n"
    "  movl %esp, %edi\n"
    "  rep movsl\n"
    "  call *12(%ebp)\n"
    "  leal -8(%ebp), %esp\n"
    "  popl %edi\n"
    "  popl %esi\n"
    "  popl %ebp\n"
    "  ret\n"
    ".size callAtResidue, . - callAtResidue\n");

unsigned stackResidue(void);
__asm__(
    ".globl stackResidue\n"
    ".type stackResidue, @function\n"
    "stackResidue:\n"
    "  leal 4(%esp), %eax\n"
    "  andl $15, %eax\n"
    "  ret\n"
    ".size stackResidue, . - stackResidue\n"
    ".section .note.GNU-stack, \"\", @progbits\n");

static uint8_t bytes[2][samples];
static float sum[samples], expectedSum[samples];
static uint8_t difference[samples], expectedDifference[samples];

static int check(unsigned residue) {
  /* Structures by value lie on the stack word by word. */
  const struct {
    const uint8_t* src;
    int srcStep;
    float* srcDst;
    int srcDstStep;
    OrvSize roi;
  } addWords = {bytes[0], width, sum, width * 4, {width, height}};
  const struct {
    const uint8_t* src1;
    int src1Step;
    const uint8_t* src2;
    int src2Step;
    uint8_t* dst;
    int dstStep;
    OrvSize roi;
  } differenceWords = {bytes[0], width, bytes[1], width, difference, width, {width, height}};

  if (callAtResidue(residue, (void (*)(void))stackResidue, NULL, 0) != (int)residue) {
    printf("the call doesn't arrive with the stack at %u\n", residue);
    return 1;
  }
  memset(sum, 0, sizeof sum);
  memset(difference, 0, sizeof difference);
  if (callAtResidue(residue, (void (*)(void))orviAdd_8u32f_C1IR, &addWords, sizeof addWords / 4) != orvStsOk ||
      memcmp(sum, expectedSum, sizeof sum) != 0) {
    printf("wrong sum with the stack at %u\n", residue);
    return 1;
  }
  if (callAtResidue(residue, (void (*)(void))orviAbsDiff_8u_C1R, &differenceWords, sizeof differenceWords / 4) !=
          orvStsOk ||
      memcmp(difference, expectedDifference, sizeof difference) != 0) {
    printf("wrong difference with the stack at %u\n", residue);
    return 1;
  }
  return 0;
}

int main(void) {
  unsigned residue;
  int i, failures = 0;
  for (i = 0; i < samples; ++i) {
    bytes[0][i] = (uint8_t)(i * 37);
    bytes[1][i] = (uint8_t)(i * 101 + 5);
    expectedSum[i] = (float)bytes[0][i];
    expectedDifference[i] =
        (uint8_t)(bytes[0][i] > bytes[1][i] ? bytes[0][i] - bytes[1][i] : bytes[1][i] - bytes[0][i]);
  }
  for (residue = 0; residue < 16; residue += 4) failures += check(residue);
  return failures;
}
