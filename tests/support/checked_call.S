// uint32_t orvEnterChecked(function, words, count, residue): calls the function with `count` argument words, its stack
// pointer being `residue` modulo 16 at the call, between two looks at the machine's state. What it saw goes into
// orvCallRecord, whose layout is CallRecord of checked_call.cpp. Nothing that the function may have spoilt is relied upon:
// the record and the way back lie in thread-local storage.

#define RECORD(offset) %gs:orvCallRecord@ntpoff + offset
#define STACK_OF_CALLER RECORD(0)
#define STACK_BEFORE RECORD(4)
#define STACK_AFTER RECORD(8)
#define EBX_AFTER RECORD(12)
#define ESI_AFTER RECORD(16)
#define EDI_AFTER RECORD(20)
#define EBP_AFTER RECORD(24)
#define FLAGS_AFTER RECORD(28)
#define MXCSR_BEFORE RECORD(32)
#define MXCSR_AFTER RECORD(36)
#define X87_CONTROL_BEFORE RECORD(40)
#define X87_ENVIRONMENT_AFTER RECORD(44)
#define UPPER_HALVES_AFTER RECORD(72)
#define RECORD_SIZE 88

  .section .tbss, "awT", @nobits
  .p2align 4
  .globl orvCallRecord
  .type orvCallRecord, @object
  .size orvCallRecord, RECORD_SIZE
orvCallRecord:
  .zero RECORD_SIZE

  .text
  .globl orvEnterChecked
  .type orvEnterChecked, @function
orvEnterChecked:
  pushl %ebp
  pushl %ebx
  pushl %esi
  pushl %edi
  movl %esp, STACK_OF_CALLER
  movl 20(%esp), %eax
  movl 24(%esp), %esi
  movl 28(%esp), %ecx
  movl 32(%esp), %edx

  leal 0(,%ecx,4), %ebx
  subl %ebx, %esp
  andl $-16, %esp
  leal -16(%esp,%edx), %esp
  movl %esp, %edi
  cld
  rep movsl
  movl %esp, STACK_BEFORE

  stmxcsr MXCSR_BEFORE
  fnstcw X87_CONTROL_BEFORE
  vzeroupper
  movl $0xb0b1b2b3, %ebx
  movl $0x51525354, %esi
  movl $0xd1d2d3d4, %edi
  movl $0xe5e6e7e8, %ebp
  movl $0xc1c2c3c4, %ecx
  movl $0xa1a2a3a4, %edx
  call *%eax

  movl %esp, STACK_AFTER
  movl STACK_OF_CALLER, %esp
  pushfl
  cld
  movl %ebx, EBX_AFTER
  movl %esi, ESI_AFTER
  movl %edi, EDI_AFTER
  movl %ebp, EBP_AFTER
  popl %ecx
  movl %ecx, FLAGS_AFTER
  stmxcsr MXCSR_AFTER
  fnstenv X87_ENVIRONMENT_AFTER
  fninit
  fldcw X87_CONTROL_BEFORE
  ldmxcsr MXCSR_BEFORE

  vextractf128 $1, %ymm0, %xmm0
  vextractf128 $1, %ymm1, %xmm1
  vextractf128 $1, %ymm2, %xmm2
  vextractf128 $1, %ymm3, %xmm3
  vextractf128 $1, %ymm4, %xmm4
  vextractf128 $1, %ymm5, %xmm5
  vextractf128 $1, %ymm6, %xmm6
  vextractf128 $1, %ymm7, %xmm7
  vorps %xmm1, %xmm0, %xmm0
  vorps %xmm3, %xmm2, %xmm2
  vorps %xmm5, %xmm4, %xmm4
  vorps %xmm7, %xmm6, %xmm6
  vorps %xmm2, %xmm0, %xmm0
  vorps %xmm6, %xmm4, %xmm4
  vorps %xmm4, %xmm0, %xmm0
  vmovups %xmm0, UPPER_HALVES_AFTER
  vzeroupper

  popl %edi
  popl %esi
  popl %ebx
  popl %ebp
  ret
  .size orvEnterChecked, . - orvEnterChecked

  .section .note.GNU-stack, "", @progbits
