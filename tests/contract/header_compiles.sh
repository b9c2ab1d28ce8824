#!/usr/bin/env bash
# The public header compiles by itself, and included twice, in every language version, without a warning, with every
# compiler on this machine.
# usage: header_compiles.sh INCLUDE-DIRECTORY C-COMPILER CXX-COMPILER
set -euo pipefail
include=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

echo '#include <orvcv.h>' >"$work/once.c"
printf '#include <orvcv.h>\n#include <orvcv.h>\nOrvSize twice(void);\nOrvSize twice(void) { OrvSize size = {1, 2}; return size; }\n' >"$work/twice.c"
cp "$work/once.c" "$work/once.cpp"
printf '#include <orvcv.h>\n#include <orvcv.h>\nOrvSize twice();\nOrvSize twice() { return OrvSize{1, 2}; }\n' >"$work/twice.cpp"
warnings=(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wundef -Werror)

failures=0
compiled=0
compiles() { # compiler language standards...
  local standard source
  for standard in "${@:3}"; do
    for source in "$work/once.$2" "$work/twice.$2"; do
      if "$1" -m32 "-std=$standard" "${warnings[@]}" -I "$include" -c "$source" -o "$work/object.o"; then
        compiled=$((compiled + 1))
      else
        echo "FAILED: $1 -std=$standard $(basename "$source")"
        failures=$((failures + 1))
      fi
    done
  done
}

while read -r compiler; do
  compiles "$compiler" c c99 gnu99 c11 c17
done < <(printf '%s\n' "$2" $(command -v gcc clang) | sort -u)
while read -r compiler; do
  compiles "$compiler" cpp c++11 c++14 c++17 c++20
done < <(printf '%s\n' "$3" $(command -v g++ clang++) | sort -u)

echo "$compiled compilations, $failures failures"
[ $failures -eq 0 ] && [ $compiled -ge 16 ]
