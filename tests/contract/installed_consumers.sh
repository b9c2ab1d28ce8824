#!/usr/bin/env bash
# Installs the build into an empty prefix, moves the prefix elsewhere, and builds and runs programs against it the way
# users do: by pkg-config, by find_package, and by opening the library at run time.
# usage: installed_consumers.sh BUILD-DIRECTORY LIBDIR LIST CMAKE C-COMPILER CXX-COMPILER
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$1 libdir=$2 list=$3 cmake=$4 CC=$5 CXX=$6
export CC CXX
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

DESTDIR='' "$cmake" --install "$build" --prefix "$work/first" >"$work/log" || { cat "$work/log"; exit 1; }
prefix="$work/a place"
mv "$work/first" "$prefix"
(cd "$prefix" && find . -type f -o -type l) | sort
for file in include/orvcv.h "$libdir/liborvcvg9.so" "$libdir/pkgconfig/orvcv.pc" "$libdir/cmake/orvcv/orvcvConfig.cmake"; do
  [ -f "$prefix/$file" ] || { echo "FAILED: $file is not installed"; exit 1; }
done
if grep -rlF -e "$build" -e "$work" "$prefix/$libdir/pkgconfig" "$prefix/$libdir/cmake" "$prefix/include"; then
  echo "FAILED: the files above name the build or the first prefix"
  exit 1
fi

# By pkg-config; eval, since its output is quoted for a shell.
export PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig"
flags=$(pkg-config --cflags --libs orvcv)
[ "$(pkg-config --modversion orvcv)" = "$(sed -n 's/.*PACKAGE_VERSION "\(.*\)".*/\1/p' "$prefix/$libdir/cmake/orvcv/orvcvConfigVersion.cmake" | head -n 1)" ]
eval "\"\$CC\" -m32 -std=c99 -Wall -Wextra -Wpedantic -Werror \"\$here/consumer/consumer.c\" $flags -o \"\$work/c\""
eval "\"\$CXX\" -m32 -std=c++11 -Wall -Wextra -Wpedantic -Werror \"\$here/consumer/consumer.cpp\" $flags -o \"\$work/cpp\""
eval "\"\$CC\" -m32 -std=c99 -Wall -Wextra -Werror $(pkg-config --cflags orvcv) \"\$here/consumer/load.c\" -ldl -o \"\$work/load\""
LD_LIBRARY_PATH="$prefix/$libdir" "$work/c"
LD_LIBRARY_PATH="$prefix/$libdir" "$work/cpp"
sed -n 's/^ORV_EXPORT(\(.*\))$/\1/p' "$list" | "$work/load" "$prefix/$libdir/liborvcvg9.so"

# By find_package, from a copy of the sources. The build tree's loader path is what the package says.
cp -r "$here/consumer" "$work/outside"
"$cmake" -G Ninja -S "$work/outside" -B "$work/outside/build" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_C_FLAGS=-m32 -DCMAKE_CXX_FLAGS=-m32 >"$work/log" || { cat "$work/log"; exit 1; }
"$cmake" --build "$work/outside/build" >"$work/log" || { cat "$work/log"; exit 1; }
"$work/outside/build/consumer_c"
"$work/outside/build/consumer_cpp"

# A 64-bit build must be told at configure time that the package is not for it.
if [ "$(echo __SIZEOF_POINTER__ | "$CC" -E -P -)" = 8 ]; then
  if "$cmake" -G Ninja -S "$work/outside" -B "$work/outside/build64" -DCMAKE_PREFIX_PATH="$prefix" >"$work/log" 2>&1; then
    echo "FAILED: a 64-bit build accepts the package"
    exit 1
  fi
  grep -i '32.\?bit' "$work/log" || { cat "$work/log"; echo "FAILED: no clear refusal of a 64-bit build"; exit 1; }
fi
echo "installed consumers: ok"
