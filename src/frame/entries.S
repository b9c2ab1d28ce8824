// Forwarding entries: each finds its slot of the table relative to its own address and jumps. %ecx is free at a call;
// arguments lie on the stack and stay where they are.


  .text
  .p2align 4
  .type loadReturnAddress, @function
loadReturnAddress:
  movl (%esp), %ecx
  ret
  .size loadReturnAddress, . - loadReturnAddress

  .hidden forwardTable
  .set slot, 0

#define ORV_EXPORT(name)                      \
  .p2align 4;                                 \
  .globl name;                                \
  .type name, @function;                      \
name:                                         \
  call loadReturnAddress;                     \
9:jmp *(forwardTable + slot - 9b)(%ecx);      \
  .size name, . - name;                       \
  .set slot, slot + 4;

#include "exports.inc"

  .section .note.GNU-stack, "", @progbits

