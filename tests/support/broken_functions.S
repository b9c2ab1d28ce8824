// Functions that break the calling convention in one way each, and some that keep it, for the checked call's own tests.

#define FUNCTION(name)         \
  .p2align 4;                  \
  .globl name;                 \
  .type name, @function;       \
name:

  .text

FUNCTION(orvKeepsAll)
  movl $7, %eax
  movl $1, %ecx
  movl $2, %edx
  ret

FUNCTION(orvStackAtCall)  // the caller's stack pointer modulo 16, before the return address was pushed
  leal 4(%esp), %eax
  andl $15, %eax
  ret

FUNCTION(orvChangesEbx)
  incl %ebx
  ret

FUNCTION(orvChangesEsi)
  incl %esi
  ret

FUNCTION(orvChangesEdi)
  incl %edi
  ret

FUNCTION(orvChangesEbp)
  xorl %ebp, %ebp
  ret

FUNCTION(orvMovesStack)
  ret $4

FUNCTION(orvSetsDirectionFlag)
  std
  ret

FUNCTION(orvLeavesX87Value)
  fldz
  ret

FUNCTION(orvLeavesMmxState)
  pxor %mm0, %mm0
  ret

FUNCTION(orvChangesX87Rounding)
  subl $4, %esp
  fnstcw (%esp)
  orl $0xc00, (%esp)
  fldcw (%esp)
  addl $4, %esp
  ret

FUNCTION(orvChangesMxcsrRounding)
  subl $4, %esp
  stmxcsr (%esp)
  orl $0x6000, (%esp)
  ldmxcsr (%esp)
  addl $4, %esp
  ret

FUNCTION(orvFlushesDenormals)
  subl $4, %esp
  stmxcsr (%esp)
  orl $0x8040, (%esp)
  ldmxcsr (%esp)
  addl $4, %esp
  ret

FUNCTION(orvRaisesMxcsrStatus)
  subl $4, %esp
  stmxcsr (%esp)
  orl $0x3f, (%esp)
  ldmxcsr (%esp)
  addl $4, %esp
  xorl %eax, %eax
  ret

FUNCTION(orvDirtiesYmm0)
  vxorps %xmm0, %xmm0, %xmm0
  vcmpeqps %ymm0, %ymm0, %ymm0
  ret

FUNCTION(orvDirtiesYmm7)
  vxorps %xmm7, %xmm7, %xmm7
  vcmpeqps %ymm7, %ymm7, %ymm7
  ret

FUNCTION(orvCleansUp)
  vxorps %xmm3, %xmm3, %xmm3
  vcmpeqps %ymm3, %ymm3, %ymm3
  vzeroupper
  xorl %eax, %eax
  ret

FUNCTION(orvTraps)
  ud2

  .section .note.GNU-stack, "", @progbits
