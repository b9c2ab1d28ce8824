#!/usr/bin/env bash
# Shows that each audit catches what it is for: small shared objects with one deliberate fault each.
# usage: CC=compiler audit_selftest.sh
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

failures=0
hardened=(-m32 -O1 -shared -fPIC -mavx -nostartfiles -Wl,-soname,liborvcvg9.so -Wl,-z,relro,-z,now,-z,noexecstack)

build() { # output source-text extra-flags...
  local output=$1
  printf '%s\n' "$2" >"$output.c"
  "${CC:-cc}" "${hardened[@]}" "$output.c" "${@:3}" -o "$output"
}

accepts() { # what audit arguments...
  if ! "$here/audit.sh" "${@:2}" >report 2>&1; then
    echo "FAILED: $1 is refused:"; cat report
    failures=$((failures + 1))
  else
    echo "ok: $1 is accepted"
  fi
}

catches() { # expected-text what audit arguments...
  if "$here/audit.sh" "${@:3}" >report 2>&1; then
    echo "FAILED: $2 is not noticed"
    failures=$((failures + 1))
  elif ! grep -qF -- "$1" report; then
    echo "FAILED: $2 is refused for another reason:"; cat report
    failures=$((failures + 1))
  else
    echo "ok: $2: $(grep -F -- "$1" report | head -n 1)"
  fi
}

# Exports and prototypes.
printf 'ORV_EXPORT(orvFirst)\nORV_EXPORT(orvSecond)\n' >list
both='int orvFirst(void) { return 1; } int orvSecond(void) { return 2; }'
build good.so "$both"
build surplus.so "$both int helper(void) { return 3; }"
build lacking.so 'int orvFirst(void) { return 1; }'
build data.so 'int orvFirst(void) { return 1; } const int orvSecond = 2;'
accepts "a library with the listed names" exports good.so list
catches "helper is in the library" "a surplus export" exports surplus.so list
catches "orvSecond is in the list" "a lacking export" exports lacking.so list
catches "not as code" "exported data" exports data.so list
(cat list; echo 'ORV_EXPORT(orvFirst)') >twice
catches "orvFirst is in the list twice" "a name listed twice" exports good.so twice
printf 'extern int orvFirst(void);\nextern\nint orvSecond (int a,\n  int b);\n' >good.h
printf 'extern int orvFirst(void);\nextern int orvThird(void);\n' >bad.h
accepts "a header with the listed names" prototypes good.h list
catches "orvThird is in the header" "a surplus prototype" prototypes bad.h list
catches "orvSecond is in the list" "a lacking prototype" prototypes bad.h list

# Imports.
printf '# comment\nmemcpy\n' >allowed
build core.so 'int orvGetMaxCacheSizeB(int* bytes) { *bytes = 1; return 0; }' -Wl,-soname,liborvcore.so
build prints.so 'int puts(const char*); int f(void) { return puts("x"); }'
build copies.so 'void* memcpy(void*, const void*, __SIZE_TYPE__); void f(char* a, char* b, int n) { memcpy(a, b, n); }'
build asks.so 'int orvGetMaxCacheSizeB(int*); int f(int* a) { return orvGetMaxCacheSizeB(a) + 1; }' ./core.so
accepts "an allowed import" imports copies.so allowed
catches "imports puts" "a forbidden import" imports prints.so allowed
catches "imports orvGetMaxCacheSizeB" "the cache query where it should be built in" imports asks.so allowed
catches "needs liborvcore.so" "the core library where it should not be needed" imports asks.so allowed
accepts "the cache query where it should be imported" imports asks.so allowed liborvcore.so

# Sections and layout.
accepts "a plain library" sections good.so
build init.so "$both" -Wl,-init,orvFirst
build fini.so "$both" -Wl,-fini,orvFirst
build constructor.so "$both __attribute__((constructor)) static void start(void) { __asm__ volatile(\"nop\"); }"
build writable.so "$both static volatile int state = 7; int next(void) { return state++; }"
build zeroed.so "$both static volatile int state; int next(void) { return state++; }"
build threadLocal.so "$both static __thread volatile int state; int next(void) { return state++; }"
build relocated.so 'extern int other; int f(void) { return other; }' -fno-pic -Wl,-z,notext
build lazy.so "$both" -Wl,-z,lazy
build unprotected.so "$both" -Wl,-z,norelro
build stack.so "$both" -Wl,-z,execstack
build renamed.so "$both" -Wl,-soname,libother.so
build path.so "$both" -Wl,-rpath,/somewhere
catches "INIT" "an init function" sections init.so
catches "FINI" "a fini function" sections fini.so
catches "INIT_ARRAY" "a constructor" sections constructor.so
catches "writable bytes in .data" "initialised data" sections writable.so
catches "writable bytes in .bss" "zeroed data" sections zeroed.so
catches "thread-local" "thread-local data" sections threadLocal.so
catches "TEXTREL" "a text relocation" sections relocated.so
catches "BIND_NOW" "lazy binding" sections lazy.so
catches "GNU_RELRO" "writable relocations" sections unprotected.so
catches "executable stack" "an executable stack" sections stack.so
catches "liborvcvg9.so" "another recorded name" sections renamed.so
catches "PATH" "a recorded search path" sections path.so

# Instructions: assembled one by one.
assembled() { # output instruction
  build "$1" "__asm__(\".text\\n.globl f\\nf: $2\\nret\\n.section .note.GNU-stack,\\\"\\\",@progbits\\n\");"
}
while IFS='|' read -r expected instruction; do
  assembled probe.so "$instruction"
  catches "$expected" "$instruction" instructions probe.so
done <<'END'
fused multiply-add|vfmadd231ps %ymm0, %ymm1, %ymm2
fused multiply-add|vfnmsub132sd %xmm0, %xmm1, %xmm2
fused multiply-add|vfmaddsub213ps %xmm0, %xmm1, %xmm2
256-bit integer|vpaddd %ymm0, %ymm1, %ymm2
256-bit integer|vpxor %ymm0, %ymm1, %ymm2
256-bit integer|vpmovzxbw %xmm0, %ymm2
256-bit integer|vpmovmskb %ymm0, %eax
AVX2|vpbroadcastb %xmm0, %xmm1
AVX2|vpgatherdd %xmm0, (%eax,%xmm1,4), %xmm2
AVX2|vgatherdps %ymm0, (%eax,%ymm1,4), %ymm2
AVX2|vextracti128 $1, %ymm0, %xmm1
AVX2|vinserti128 $1, %xmm0, %ymm1, %ymm2
AVX2|vperm2i128 $1, %ymm0, %ymm1, %ymm2
AVX2|vpermq $1, %ymm0, %ymm1
AVX2|vbroadcastss %xmm0, %ymm1
AVX2|vpsllvd %xmm0, %xmm1, %xmm2
AVX2|vpblendd $1, %xmm0, %xmm1, %xmm2
AVX-512|vaddps %zmm0, %zmm1, %zmm2
AVX-512|vaddps %ymm0, %ymm1, %ymm2{%k1}
bit manipulation|lzcnt %eax, %ebx
bit manipulation|shlx %eax, %ebx, %ecx
half precision|vcvtph2ps %xmm0, %ymm1
x87 arithmetic|fadds (%eax)
x87 arithmetic|fmulp
x87 arithmetic|fsqrt
x87 arithmetic|fsin
x87 arithmetic|fucomip
64-bit vector registers|paddb %mm0, %mm1
system instruction|cpuid
system instruction|int $0x80
END
while read -r instruction; do
  assembled probe.so "$instruction"
  accepts "$instruction" instructions probe.so
done <<'END'
vaddps %ymm0, %ymm1, %ymm2
vpaddd %xmm0, %xmm1, %xmm2
vpermilps $1, %ymm0, %ymm1
vperm2f128 $1, %ymm0, %ymm1, %ymm2
vptest %ymm0, %ymm1
vbroadcastss (%eax), %ymm1
vmaskmovps (%eax), %ymm0, %ymm1
rep bsf %eax, %ebx
rep movsb
flds (%eax)
fstps (%eax)
fildll (%eax)
fistpll (%eax)
fldcw (%eax)
END

# Vectors on the stack.
implementation() { # output instructions
  build "$1" "__asm__(\".text\\n.type _ZN3orv5orviFEv, @function\\n_ZN3orv5orviFEv: $2\\nret\\n.section .note.GNU-stack,\\\"\\\",@progbits\\n\");"
}
implementation spills.so 'sub $16, %esp\nvmovaps %xmm0, (%esp)\nadd $16, %esp'
catches "_ZN3orv5orviFEv keeps vectors" "a spill to an unaligned stack" stack spills.so
implementation frame.so 'vmovdqa %xmm0, -0x18(%ebp)'
catches "_ZN3orv5orviFEv keeps vectors" "a spill to an unaligned frame" stack frame.so
implementation aligns.so 'and $0xffffffe0, %esp\nvmovaps %ymm0, (%esp)'
accepts "a spill to a stack that was aligned" stack aligns.so
implementation unaligned.so 'vmovups %xmm0, (%esp)'
accepts "an unaligned spill" stack unaligned.so

# Forwarding entries: two good ones, then one part replaced.
entries() { # output address-finder first-entry second-entry
  printf '%s\n' ".text" "finder: $2" ".globl orvFirst" ".type orvFirst, @function" "orvFirst: $3" \
    ".size orvFirst, . - orvFirst" ".p2align 4" ".globl orvSecond" ".type orvSecond, @function" "orvSecond: $4" \
    ".size orvSecond, . - orvSecond" '.section .data.rel.ro, "aw"' "table: .long finder, finder" \
    '.section .note.GNU-stack, "", @progbits' >"$1.s"
  "${CC:-cc}" "${hardened[@]}" "$1.s" -o "$1"
}
finder=$'movl (%esp), %ecx\nret'
first=$'call finder\n1: jmp *(table - 1b)(%ecx)'
second=$'call finder\n1: jmp *(table + 4 - 1b)(%ecx)'
entries forwards.so "$finder" "$first" "$second"
accepts "entries that only forward" entries forwards.so list
entries pushes.so "$finder" "push %ebp"$'\n'"$first" "$second"
catches "orvFirst begins with" "an entry that pushes" entries pushes.so list
entries touches.so "$finder" $'call finder\n1: incl 4(%esp)\njmp *(table - 1b)(%ecx)' "$second"
catches "orvFirst goes on with" "an entry that changes an argument" entries touches.so list
entries longer.so "$finder" "$first" "$second"$'\nnop'
catches "orvSecond has more than two" "an entry of three instructions" entries longer.so list
entries repeated.so "$finder" "$first" "$first"
catches "orvSecond doesn't use the slot" "two entries with one slot" entries repeated.so list
entries writes.so $'movl (%esp), %ecx\nincl 8(%esp)\nret' "$first" "$second"
catches "the call that finds the address" "an address finder that does more" entries writes.so list
catches "orvFirst begins with" "an ordinary function" entries good.so list

[ $failures -eq 0 ] || { echo "$failures failures"; exit 1; }
