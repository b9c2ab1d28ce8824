#!/usr/bin/env bash
# Audits of the built shared object. Each prints every fault that it finds and fails if there is one.
set -euo pipefail
export LC_ALL=C

usage() {
  cat <<'END'
usage: audit.sh exports LIBRARY LIST        the exported names are those of LIST, a file like exports.inc
       audit.sh prototypes HEADER LIST      the functions that HEADER declares are those of LIST
       audit.sh imports LIBRARY ALLOWED [LIBRARY-NAME]
                                            nothing is imported but the names in the file ALLOWED, and nothing is needed
                                            but the system library; with LIBRARY-NAME also orvGetMaxCacheSizeB from there
       audit.sh sections LIBRARY            no writable data, no start-up code, hardened layout
       audit.sh instructions LIBRARY        nothing beyond AVX, no fused multiply-add, no x87 arithmetic
       audit.sh stack LIBRARY               implementations align the stack themselves before they use it for vectors
       audit.sh entries LIBRARY LIST        every export is a bare jump through the next slot of one table
       audit.sh sizes LIBRARY               prints bytes of code and constants by symbol; never fails
The compiler is $CC, else cc.
END
}

faults=0
fault() {
  echo "fault: $*"
  faults=$((faults + 1))
}

# Names of a file of ORV_EXPORT(name) lines, in order.
listedNames() {
  "${CC:-cc}" -E -P -x c '-DORV_EXPORT(name)=@name' "$1" | grep -o '@ *[A-Za-z_0-9]*' | tr -d '@ '
}

# Names of the functions that a header declares with external linkage.
declaredNames() {
  "${CC:-cc}" -m32 -std=c99 -E -P -x c "$1" | tr '\n' ' ' | tr ';' '\n' |
    awk '$1 == "extern" && match($0, /orv[A-Za-z0-9_]*[ ]*\(/) { name = substr($0, RSTART, RLENGTH - 1); gsub(/ /, "", name); print name }'
}

sameNames() { # what-has-them names what-should-have-them names
  local name
  while read -r name; do
    fault "$name is in $1 and not in $3"
  done < <(comm -23 <(sort -u <<<"$2") <(sort -u <<<"$4") | grep .)
  while read -r name; do
    fault "$name is in $3 and not in $1"
  done < <(comm -13 <(sort -u <<<"$2") <(sort -u <<<"$4") | grep .)
  while read -r name; do
    fault "$name is in $3 twice"
  done < <(sort <<<"$4" | uniq -d)
}

auditExports() { # library list
  local exported listed
  exported=$(nm -D --defined-only --format=posix "$1" | awk '{ print $1 }')
  listed=$(listedNames "$2")
  sameNames "the library" "$exported" "the list" "$listed"
  while read -r name type rest; do
    [ "$type" = T ] || fault "$name is exported as '$type', not as code"
  done < <(nm -D --defined-only --format=posix "$1")
  echo "$(wc -l <<<"$listed") exports"
}

auditPrototypes() { # header list
  sameNames "the header" "$(declaredNames "$1")" "the list" "$(listedNames "$2")"
}

auditImports() { # library allowed [core library]
  local name allowed needed="libc.so.6 libm.so.6 ${3:-}"
  allowed=$(grep -v '^#' "$2")
  [ -z "${3:-}" ] || allowed+=$'\norvGetMaxCacheSizeB'
  while read -r name; do
    name=${name%%@*}
    grep -qxF -- "$name" <<<"$allowed" || fault "imports $name"
  done < <(nm -D --undefined-only --format=posix "$1" | awk '{ print $1 }')
  while read -r name; do
    [[ " $needed " = *" $name "* ]] || fault "needs $name"
  done < <(readelf -dW "$1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
}

auditSections() { # library
  local dynamic headers name type size flags
  dynamic=$(readelf -dW "$1")
  headers=$(readelf -lW "$1")
  for tag in INIT FINI INIT_ARRAY FINI_ARRAY PREINIT_ARRAY TEXTREL RPATH RUNPATH; do
    if grep -q "($tag)" <<<"$dynamic"; then fault "dynamic tag $tag"; fi
  done
  if grep -q 'FLAGS.*TEXTREL' <<<"$dynamic"; then fault "flag TEXTREL"; fi
  grep -q 'SONAME.*\[liborvcvg9\.so\]' <<<"$dynamic" || fault "the name recorded in the file is not liborvcvg9.so"
  grep -q 'FLAGS.*BIND_NOW\|FLAGS_1.*NOW' <<<"$dynamic" || fault "not bound at load time (BIND_NOW)"
  grep -q 'GNU_RELRO' <<<"$headers" || fault "no read-only relocations (GNU_RELRO)"
  grep -q 'GNU_STACK.* RW  *0x' <<<"$headers" || fault "executable stack"
  if grep -q 'LOAD.* RWE ' <<<"$headers"; then fault "a segment is both writable and executable"; fi
  if grep -q '^ *TLS ' <<<"$headers"; then fault "thread-local storage"; fi
  grep -q 'Class: *ELF32' <<<"$(readelf -hW "$1")" || fault "not a 32-bit file"

  # Writable once loaded: nothing but what the loader fills and then makes read-only.
  while read -r name type size flags; do
    [[ $flags = *W* && $((16#$size)) -gt 0 ]] || continue
    case $name in
      .dynamic | .got | .got.plt | .data.rel.ro) ;;
      *) fault "$((16#$size)) writable bytes in $name" ;;
    esac
  done < <(readelf -SW "$1" | sed -n 's/^ *\[ *[0-9]*\] //p' | awk '$1 ~ /^\./ { print $1, $2, $5, $7 }')
}

# One instruction a line, without addresses and symbols.
instructions() {
  objdump -d --no-show-raw-insn "$1" | sed -n 's/^ *[0-9a-f]*:\t//p' | sed 's/<.*>//; s/#.*//'
}

auditInstructions() { # library
  local line
  while read -r line; do
    fault "$line"
  done < <(instructions "$1" | awk '
    { op = $1 }
    op ~ /^(rep|repz|repnz|lock|data16|addr16|cs|ds|es|ss|notrack|bnd)$/ { op = $2 }
    function report(kind) { if (++seen[kind " " op] == 1) print kind ": " $0 }

    op ~ /^vf(n?m(add|sub)|maddsub|msubadd)/                         { report("fused multiply-add") }
    /%zmm|%k[0-7]|%[xy]mm(1[6-9]|2[0-9]|3[01])|\{/                   { report("AVX-512") }
    # tzcnt is what compilers make of "rep bsf", which older processors run as bsf.
    op ~ /^(lzcnt|andn|bextr|bls[ri]|blsmsk|bzhi|mulx|pdep|pext|rorx|s[ahr][lr]x)l?$/ { report("bit manipulation beyond AVX") }
    op ~ /^vcvt(ph2ps|ps2ph)$/                                       { report("half precision") }
    op ~ /^(vpbroadcast|vp?gather|vbroadcasti|vextracti|vinserti|vperm2i128|vpmaskmov|vps[lr][la]v|vpblendd)/ { report("AVX2") }
    op ~ /^vperm(d|q|ps|pd)$/                                        { report("AVX2") }
    op ~ /^vbroadcasts[sd]$/ && $2 ~ /^%xmm/                         { report("AVX2") }
    (op ~ /^vp/ || op ~ /^(vmpsadbw|vmovntdqa)$/) && /%ymm/ &&
      op !~ /^(vpermilp[sd]|vperm2f128|vptest)$/                     { report("256-bit integer") }
    op ~ /^f/ && op !~ /^(fld[slt]?|fld1|fldz|fst[slt]?|fstp[slt]?|fild(s|l|ll)?|fistp?(s|l|ll)?|fisttp(s|l|ll)?|fxch|fldcw|fn?stcw)$/ { report("x87 arithmetic") }
    op ~ /^f?emms$|^v?p.*%mm[0-7]/ || /%mm[0-7]/                     { report("64-bit vector registers") }
    op ~ /^(cpuid|xgetbv|rdtscp?|sysenter|syscall|int|hlt|ud2|int3)$/ { report("system instruction") }')
  local count
  count=$(instructions "$1" | wc -l)
  [ "$count" -gt 0 ] || fault "no instructions found"
  echo "$count instructions"
}

# Callers may align their stack to 4 bytes only. Implementations of exports take no vectors, so that what they keep
# aligned on the stack is there by their own doing. Functions further in may rely on that.
auditStack() { # library
  local name checked=0
  objdump -d --no-show-raw-insn "$1" | awk '
    function finish() { if (name != "") print name, (uses && !aligns ? "unaligned" : "fine") }
    /^[0-9a-f]+ <.*>:$/ { finish(); name = $2; gsub(/[<>:]/, "", name); uses = aligns = 0
                          if (name !~ /^_ZN3orv[0-9]+orv(i|s|cv)/) name = "" }
    name == ""          { next }
    /\tand[l]? +\$0xffffff[0-9a-f]+,%esp/ { aligns = 1 }
    /\tv?mov(ap[sd]|dqa|ntp[sd]|ntdqa?) / && /(\(%esp|-0x[0-9a-f]+\(%ebp)/ { uses = 1 }
    END                 { finish() }' >"$work/stack"
  while read -r name verdict; do
    checked=$((checked + 1))
    [ "$verdict" = fine ] || fault "$name keeps vectors on a stack that it has not aligned"
  done <"$work/stack"
  [ $checked -gt 0 ] || fault "no implementations found (is the library stripped?)"
  echo "$checked implementations"
}

auditEntries() { # library list
  local name size first second third target code thunk= slot next=
  nm -D --defined-only --format=posix "$1" | awk '{ print $1, $4 }' >"$work/sizes"
  # Per symbol: name, then its first three instructions, each as address=instruction with _ for blanks.
  objdump -d --no-show-raw-insn "$1" | awk '
    /^[0-9a-f]+ <.*>:$/ { if (name != "") print name code; name = $2; gsub(/[<>:]/, "", name); code = ""; count = 0; next }
    /^ *[0-9a-f]+:\t/   { sub(/<.*>/, ""); address = $1; sub(/:/, "", address); $1 = ""; gsub(/^ +| +$/, "")
                          gsub(/ /, "_"); if (++count <= 3) code = code " " address "=" $0 }
    END                 { print name code }' >"$work/code"

  while read -r name; do
    size=$(awk -v name="$name" '$1 == name { print $2 }' "$work/sizes")
    code=$(awk -v name="$name" '$1 == name { print $2, $3, $4 }' "$work/code")
    read -r first second third <<<"$code"
    if [[ ! ${first#*=} =~ ^call_([0-9a-f]+)$ ]]; then
      fault "$name begins with '${first#*=}', not with a call that finds its own address"
      continue
    fi
    target=${BASH_REMATCH[1]}
    if [[ ! ${second#*=} =~ ^jmp_\*(0x[0-9a-f]+)\(%ecx\)$ ]]; then
      fault "$name goes on with '${second#*=}', not with a jump through its slot"
      continue
    fi
    slot=$((16#${second%%=*} + BASH_REMATCH[1]))
    if [ -n "$third" ] && [ $((16#${first%%=*} + 16#$size)) -gt $((16#${third%%=*})) ]; then
      fault "$name has more than two instructions: '${third#*=}'"
    fi
    [ "${thunk:=$target}" = "$target" ] || fault "$name finds its address by other code than the first entry"
    [ "${next:=$slot}" = "$slot" ] || fault "$name doesn't use the slot after its predecessor's"
    next=$((slot + 4))
  done < <(listedNames "$2")

  if [ -n "$thunk" ]; then
    code=$(objdump -d --no-show-raw-insn --start-address=0x"$thunk" --stop-address=$((16#$thunk + 4)) "$1" |
      sed -n 's/^ *[0-9a-f]*:\t//p' | tr -s ' \n' ' ')
    [[ "$code" = "mov (%esp),%ecx ret "* ]] || fault "the call that finds the address runs '$code'"
  fi
}

command=${1:-}
shift || true
for tool in nm objdump readelf "${CC:-cc}"; do
  command -v "$tool" >/dev/null || { echo "audit: $tool is missing" >&2; exit 2; }
done
if [ -n "$command" ] && [[ $command != -* ]]; then
  for file in "${@:1:2}"; do
    [ -r "$file" ] || { echo "audit: can't read '$file'" >&2; exit 2; }
  done
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
case $command in
  exports) auditExports "$@" ;;
  prototypes) auditPrototypes "$@" ;;
  imports) auditImports "$@" ;;
  sections) auditSections "$@" ;;
  instructions) auditInstructions "$@" ;;
  stack) auditStack "$@" ;;
  entries) auditEntries "$@" ;;
  sizes) nm --print-size --size-sort --reverse-sort -C "$1" ;;
  -h | --help) usage ;;
  *) usage >&2; exit 2 ;;
esac
if [ $faults -gt 0 ]; then
  echo "audit $command: $faults faults"
  exit 1
fi
