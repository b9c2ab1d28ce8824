#!/usr/bin/env bash
# Installs what the benchmarks need, builds them, runs them, and writes docs/performance.md.
set -euo pipefail
cd "$(dirname "$0")/.."

usage() {
  cat <<'END'
usage: scripts/bench.sh [ARGUMENT...]

Without arguments: runs every benchmark and writes docs/performance.md. With arguments: passes them to the benchmark
program, and writes no file; for instance --benchmark_filter=AbsDiff.
END
}

case ${1:-} in
  -h | --help) usage; exit 0 ;;
esac

scripts/bootstrap.sh build bench

fresh=()
if [ -f build/bench/CMakeCache.txt ] &&
  ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" build/bench/CMakeCache.txt; then
  fresh=(--fresh)
fi
location=
for prefix in "" "$PWD/build/packages"; do
  candidate=$prefix/usr/lib/i386-linux-gnu/cmake/benchmark
  if [ -z "$location" ] && [ -f "$candidate/benchmarkConfig.cmake" ]; then location=$candidate; fi
done
cmake --preset bench "${fresh[@]}" -Dbenchmark_DIR="$location"
cmake --build --preset bench --target orvcv_bench

if [ $# -gt 0 ]; then
  build/bench/bench/orvcv_bench "$@"
else
  build/bench/bench/orvcv_bench --table docs/performance.md
fi

# Through sudo the files belong to the one who asked.
if [ "$(id -u)" -eq 0 ] && [ -n "${SUDO_UID:-}" ]; then
  chown -R "$SUDO_UID:${SUDO_GID:-$SUDO_UID}" build docs
fi
