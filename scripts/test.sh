#!/usr/bin/env bash
# Installs what is missing, builds the library, and runs the whole test suite, as continuous integration does.
set -euo pipefail
cd "$(dirname "$0")/.."

usage() {
  cat <<'END'
usage: scripts/test.sh [--jobs N] [PRESET...]

Builds and runs every test with each preset: release and sanitize when none is named; debug and clang are the others.
Ends with one line per preset and fails if any test failed. Repeating it builds only what has changed.

  --jobs N  tests and compilations at a time (2)
END
}

jobs=2
presets=()
while [ $# -gt 0 ]; do
  case $1 in
    -h | --help) usage; exit 0 ;;
    --jobs) jobs=${2:?--jobs needs a number}; shift ;;
    -*) echo "test: unknown option '$1'" >&2; usage >&2; exit 2 ;;
    *) presets+=("$1") ;;
  esac
  shift
done
[ ${#presets[@]} -gt 0 ] || presets=(release sanitize)

# Through sudo the files belong to the one who asked.
giveBack() {
  if [ "$(id -u)" -eq 0 ] && [ -n "${SUDO_UID:-}" ] && [ -d build ]; then
    chown -R "$SUDO_UID:${SUDO_GID:-$SUDO_UID}" build
  fi
}
trap giveBack EXIT

scripts/bootstrap.sh build test

begin=$SECONDS
failed=0
summary=()
for preset in "${presets[@]}"; do
  start=$SECONDS
  echo
  echo "==== $preset"
  # A build directory that came from elsewhere with its tree is of no use here.
  cache=build/$preset/CMakeCache.txt
  fresh=()
  if [ -f "$cache" ] && ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "$cache"; then fresh=(--fresh); fi

  result=
  log=build/$preset/test.log
  cmake --preset "$preset" "${fresh[@]}" -DORV_BUILD_TESTS=ON -DORV_BUILD_TOOLS=ON || result="can't be configured"
  [ -n "$result" ] || cmake --build --preset "$preset" --parallel "$jobs" || result="doesn't build"
  if [ -z "$result" ]; then
    if ctest --preset "$preset" --parallel "$jobs" --timeout 900 2>&1 | tee "$log"; then
      result=$(grep -E '^[0-9]+% tests passed' "$log")
    else
      result="FAILED: $(grep -E '^[0-9]+% tests passed' "$log" || echo 'the tests did not run to their end')"
      failed=1
    fi
  else
    result="FAILED: $result"
    failed=1
  fi
  summary+=("$(printf '%-10s %s (%d s)' "$preset" "$result" $((SECONDS - start)))")
done

echo
echo "==== summary"
printf '%s\n' "${summary[@]}"
echo "$((SECONDS - begin)) s in all"
exit $failed
