#!/usr/bin/env bash
# Tries the demonstration and the tests as a newcomer would meet them: in a minimal Debian 12 of their own.
set -euo pipefail
cd "$(dirname "$0")/.."

base=/tmp/deb12
root=/tmp/deb12-trial
mirror=http://deb.debian.org/debian
again=no
trials=()

usage() {
  cat <<END
usage: scripts/fresh-root.sh [--base DIRECTORY] [--root DIRECTORY] [--mirror URL] [--again] [COMMAND...]

Makes a minimal Debian 12 by debootstrap, copies this working tree into it without its builds, and runs the commands
there by chroot, each with its time: scripts/demo.sh and scripts/test.sh when none is named. Needs root and debootstrap.

  --base DIRECTORY  the untouched system, made once and kept ($base)
  --root DIRECTORY  the copy that is tried, made anew by each run and kept for a look ($root)
  --mirror URL      where packages come from ($mirror)
  --again           afterwards repeat all commands cut off from the network
END
}

while [ $# -gt 0 ]; do
  case $1 in
    -h | --help) usage; exit 0 ;;
    --base) base=${2:?}; shift ;;
    --root) root=${2:?}; shift ;;
    --mirror) mirror=${2:?}; shift ;;
    --again) again=yes ;;
    -*) echo "fresh-root: unknown option '$1'" >&2; usage >&2; exit 2 ;;
    *) trials+=("$1") ;;
  esac
  shift
done
[ ${#trials[@]} -gt 0 ] || trials=(scripts/demo.sh scripts/test.sh)

[ "$(id -u)" -eq 0 ] || { echo "fresh-root: run as root" >&2; exit 1; }
if [ ! -x "$base/bin/bash" ]; then
  command -v debootstrap >/dev/null || { echo "fresh-root: install debootstrap first" >&2; exit 1; }
  debootstrap --variant=minbase bookworm "$base" "$mirror"
fi

# Only a directory that this script made is ever removed.
mark=$root/etc/orvcv-trial
unmount() {
  local place
  for place in dev/pts dev/shm dev proc; do
    if mountpoint -q "$root/$place"; then umount "$root/$place"; fi
  done
}
if [ -e "$root" ]; then
  [ -f "$mark" ] || { echo "fresh-root: $root exists and is not from an earlier run" >&2; exit 1; }
  unmount
  rm -rf --one-file-system "$root"
fi
cp -a "$base" "$root"
touch "$mark"
cp -L /etc/resolv.conf "$root/etc/resolv.conf"
mkdir -p "$root/work/orvcv"
tar --exclude=./build --exclude=./out --exclude=./.git -cf - . | tar -C "$root/work/orvcv" -xf - --no-same-owner

trap unmount EXIT
mount --bind /proc "$root/proc"
mount --bind /dev "$root/dev"
mount --bind /dev/shm "$root/dev/shm"
mount --bind /dev/pts "$root/dev/pts"

report=()
failed=0
try() { # label command-prefix...
  local trial start outcome
  for trial in "${trials[@]}"; do
    echo "==== $trial ($1)"
    start=$SECONDS
    outcome=succeeded
    "${@:2}" chroot "$root" /usr/bin/env -i HOME=/root TERM=dumb \
      PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
      bash -c "cd /work/orvcv && $trial" || { outcome=FAILED; failed=1; }
    report+=("$(printf '%-40s %s after %d s' "$trial ($1)" "$outcome" $((SECONDS - start)))")
  done
}
try fresh
[ $again = no ] || try "again, without network" unshare --net

echo "==== in a minimal Debian 12"
printf '%s\n' "${report[@]}"
exit $failed
