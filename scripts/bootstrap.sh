#!/usr/bin/env bash
# Installs what the build and the tests need and this machine lacks.
set -euo pipefail

usage() {
  cat <<'END'
usage: scripts/bootstrap.sh [--check] [build] [test] [bench]

Installs what is missing on a Debian or Ubuntu machine, and nothing else. Without a section: build and test.

  build    32-bit GCC, CMake, Ninja, image file headers: the library, the command line tool, the examples
  test     GoogleTest sources, pkg-config: the test suite
  bench    32-bit Google Benchmark, for which the package architecture i386 is added
  --check  install nothing; list what is missing and exit with 1 if anything is

Works as root and, for other users, through sudo. Touches no network when nothing is missing.
END
}

checkOnly=no
sections=()
for argument; do
  case $argument in
    -h | --help) usage; exit 0 ;;
    --check) checkOnly=yes ;;
    build | test | bench) sections+=("$argument") ;;
    *) echo "bootstrap: unknown argument '$argument'" >&2; usage >&2; exit 2 ;;
  esac
done
[ ${#sections[@]} -gt 0 ] || sections=(build test)

# Where packages go that can't be installed, and what tells that the benchmark library is there.
unpacked=$(cd "$(dirname "$0")/.." && pwd)/build/packages
benchmarkConfig=/usr/lib/i386-linux-gnu/cmake/benchmark/benchmarkConfig.cmake

links32Bit() {
  echo '#include <string>
        int main(int argc, char** argv) { return static_cast<int>(std::string(argv[argc - 1]).size() == 0); }' |
    c++ -m32 "$@" -x c++ - -o /dev/null
}

haveCommands() {
  local name
  for name; do
    command -v "$name" || return 1
  done
}

# Each requirement is looked for by what it is used for, so that a tool from elsewhere than a package counts as well.
isPresent() {
  case $1 in
    g++) haveCommands c++ cc objdump readelf nm ;;
    g++-multilib) links32Bit && links32Bit -fsanitize=address,undefined ;;
    cmake) haveCommands cmake ctest ;;
    ninja-build) haveCommands ninja ;;
    libstb-dev) [ -f /usr/include/stb/stb_image.h ] && [ -f /usr/include/stb/stb_image_write.h ] ;;
    googletest) [ -f /usr/src/googletest/googletest/include/gtest/gtest.h ] ;;
    pkg-config) haveCommands pkg-config ;;
    libbenchmark-dev:i386) [ -f "$benchmarkConfig" ] || [ -f "$unpacked$benchmarkConfig" ] ;;
  esac >/dev/null 2>&1
}

packagesOf() {
  case $1 in
    build) echo g++ g++-multilib cmake ninja-build libstb-dev ;;
    test) echo googletest pkg-config ;;
    bench) echo libbenchmark-dev:i386 ;;
  esac
}

missing=()
for section in "${sections[@]}"; do
  for package in $(packagesOf "$section"); do
    isPresent "$package" || missing+=("$package")
  done
done

if [ ${#missing[@]} -eq 0 ]; then
  echo "bootstrap: nothing to install (${sections[*]})"
  exit 0
fi
echo "bootstrap: missing: ${missing[*]}"
[ $checkOnly = no ] || exit 1

if ! command -v apt-get >/dev/null; then
  echo "bootstrap: there is no apt-get here; install the equivalents of these Debian packages: ${missing[*]}" >&2
  exit 1
fi
asRoot=()
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null; then
    echo "bootstrap: run as root, or install sudo: apt-get install ${missing[*]}" >&2
    exit 1
  fi
  asRoot=(sudo)
fi

install() {
  "${asRoot[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends "$@"
}

# The i386 packages must match the version of those installed for the machine's own architecture. Where the mirror
# can't serve such a set for the moment, the library's own files do, beside the build.
unpackBenchmark() {
  local package
  mkdir -p "$unpacked"
  for package in libbenchmark-dev:i386 libbenchmark1debian:i386; do
    (cd "$unpacked" && apt-get download -q "$package")
  done
  for package in "$unpacked"/*.deb; do
    dpkg-deb --extract "$package" "$unpacked"
  done
}

if [[ " ${missing[*]} " = *:i386* ]] && ! grep -qx i386 <<<"$(dpkg --print-foreign-architectures)" &&
  [ "$(dpkg --print-architecture)" != i386 ]; then
  echo "bootstrap: adding the package architecture i386"
  "${asRoot[@]}" dpkg --add-architecture i386
fi
# A package index that can't be refreshed is no reason to stop: the install says itself what it can't get.
"${asRoot[@]}" apt-get update -q || echo "bootstrap: going on with the package index as it is" >&2
echo "bootstrap: installing: ${missing[*]}"
if ! install "${missing[@]}"; then
  [ "${missing[*]}" = libbenchmark-dev:i386 ] || exit 1
  echo "bootstrap: $missing can't be installed; unpacking its files under $unpacked"
  unpackBenchmark
fi

for package in "${missing[@]}"; do
  if ! isPresent "$package"; then
    echo "bootstrap: $package is installed, yet what it is needed for doesn't work" >&2
    exit 1
  fi
done
echo "bootstrap: installed ${missing[*]}"
