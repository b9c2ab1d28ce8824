#!/usr/bin/env bash
# Builds the library against a core library, shows that the cache query is then an import and nothing else has changed,
# and that no result depends on what the query answers.
# usage: cache_query.sh SOURCE-DIRECTORY LIBRARY WORK-DIRECTORY BUILD-TYPE CMAKE C-COMPILER CXX-COMPILER [TEST-PROGRAM]
# LIBRARY has the query built in. TEST-PROGRAM is linked to it; its tests named Checksum compare results with records.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
source=$1 builtIn=$2 work=$3 buildType=$4 cmake=$5 CC=$6 CXX=$7 testProgram=${8:-}
export CC CXX
mkdir -p "$work"

# One core library per answer, all with the same recorded name.
answers=(zero:0:0 4KiB:0:4096 32KiB:0:32768 8MiB:0:8388608 failure:-1:0)
for answer in "${answers[@]}"; do
  IFS=: read -r name status bytes <<<"$answer"
  mkdir -p "$work/$name"
  "$CC" -m32 -O1 -shared -fPIC -DSTATUS="$status" -DBYTES="$bytes" -Wl,-soname,liborvcore.so "$here/core_stub.c" \
    -o "$work/$name/liborvcore.so"
done

"$cmake" -G Ninja -S "$source" -B "$work/build" -DCMAKE_TOOLCHAIN_FILE="$source/cmake/i386.cmake" \
  -DCMAKE_BUILD_TYPE="$buildType" -DORV_CORE_LIBRARY="$work/8MiB/liborvcore.so" -DORV_BUILD_TESTS=OFF \
  -DORV_BUILD_TOOLS=OFF >"$work/log" || { cat "$work/log"; exit 1; }
"$cmake" --build "$work/build" --parallel 2 >"$work/log" || { cat "$work/log"; exit 1; }
DESTDIR='' "$cmake" --install "$work/build" --prefix "$work/installed" >"$work/log" || { cat "$work/log"; exit 1; }
library=$(echo "$work"/installed/lib*/liborvcvg9.so)

"$here/audit.sh" imports "$library" "$here/allowed_imports.txt" liborvcore.so
"$here/audit.sh" exports "$library" "$source/src/frame/exports.inc"
"$here/audit.sh" sections "$library"

imports() { nm -D --undefined-only --format=posix "$1" | awk '{ sub(/@.*/, "", $1); print $1 }'; }

# The built-in query is what needs sysconf: a library that has it must have the import in its place.
imported=$(imports "$library")
if grep -qx sysconf <<<"$(imports "$builtIn")"; then
  grep -qx orvGetMaxCacheSizeB <<<"$imported" || { echo "FAILED: the query is not imported"; exit 1; }
  grep -q 'NEEDED.*\[liborvcore\.so\]' <<<"$(readelf -dW "$library")" || { echo "FAILED: liborvcore.so is not needed"; exit 1; }
  if grep -qx sysconf <<<"$imported"; then echo "FAILED: the built-in query is still there"; exit 1; fi
  echo "the cache query is imported from liborvcore.so"
else
  if grep -qx orvGetMaxCacheSizeB <<<"$imported"; then echo "FAILED: the query is imported, yet not used"; exit 1; fi
  echo "no function of the library asks for the cache size yet: there is nothing to import"
fi

for answer in "${answers[@]}"; do
  export LD_LIBRARY_PATH="$work/${answer%%:*}:$(dirname "$library")"
  sed -n 's/^ORV_EXPORT(\(.*\))$/\1/p' "$source/src/frame/exports.inc" | "$work/../load_library" "$library"
  if [ -n "$testProgram" ]; then
    grep -qF "$library" <<<"$(ldd "$testProgram")" || { echo "FAILED: the test program doesn't take $library"; exit 1; }
    echo "results when the query answers ${answer%%:*}:"
    "$testProgram" --gtest_brief=1 --gtest_filter='*.Checksum'
  fi
done
