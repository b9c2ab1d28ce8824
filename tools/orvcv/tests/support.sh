# What the suites of the tool share. Sourced with the suite's arguments: the tool, the pixel printer, the photographs.
set -u
tool=$1
print_pixels=$2
photos=$3
failures=0

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1

fail() {
  printf 'FAILED: %s\n' "$*" >&2
  failures=$((failures + 1))
}

# gray FILE WIDTH HEIGHT SAMPLE...; colour likewise with three samples a pixel.
netpbm() {
  local magic=$1 file=$2 width=$3 height=$4 sample
  shift 4
  printf '%s %d %d 255\n' "$magic" "$width" "$height" >"$file"
  for sample in "$@"; do
    printf "\\x$(printf %x "$sample")" >>"$file"
  done
}
gray() { netpbm P5 "$@"; }
colour() { netpbm P6 "$@"; }

# succeeds TEXT ARGUMENT...: exit status 0, and the output or error output holds the text.
succeeds() {
  local text=$1 said
  shift
  said=$("$tool" "$@" 2>&1) || fail "orvcv $*: status $?: $said"
  [[ $said == *"$text"* ]] || fail "orvcv $*: '$text' is not in: $said"
}

# refused TEXT ARGUMENT...: exit status 2, nothing on standard output, the text in the message, no new file.
refused() {
  local text=$1 before said status
  shift
  before=$(find . | sort)
  said=$("$tool" "$@" 2>&1 >said.out)
  status=$?
  [[ $status == 2 ]] || fail "orvcv $*: status $status, not 2"
  [[ ! -s said.out ]] || fail "orvcv $*: printed results: $(cat said.out)"
  rm -f said.out
  [[ $said == *"$text"* ]] || fail "orvcv $*: '$text' is not in: $said"
  [[ $(find . | sort) == "$before" ]] || fail "orvcv $*: left a file"
}

# holds FILE PIXELS: the file holds "width height channels: samples".
holds() {
  local pixels
  pixels=$("$print_pixels" "$1") || fail "$1 is not readable"
  [[ $pixels == "$2" ]] || fail "$1: expected '$2', got '$pixels'"
}

finish() {
  [[ $failures == 0 ]] || exit 1
}
