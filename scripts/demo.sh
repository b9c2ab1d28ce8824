#!/usr/bin/env bash
# Builds the library and the tool, runs it on the bundled photographs, and leaves the pictures with a contact sheet
# under out/. Installs what is missing first.
set -euo pipefail
cd "$(dirname "$0")/.."

usage() {
  cat <<'END'
usage: scripts/demo.sh [--docs]

Leaves pictures and a contact sheet, index.html, under out/.

  --docs  also renews the pictures of the documentation, docs/images
END
}

renewDocs=no
for argument; do
  case $argument in
    -h | --help) usage; exit 0 ;;
    --docs) renewDocs=yes ;;
    *) echo "demo: unknown argument '$argument'" >&2; usage >&2; exit 2 ;;
  esac
done

# Through sudo the files belong to the one who asked.
giveBack() {
  if [ "$(id -u)" -eq 0 ] && [ -n "${SUDO_UID:-}" ]; then
    for directory in build out docs/images; do
      [ ! -d "$directory" ] || chown -R "$SUDO_UID:${SUDO_GID:-$SUDO_UID}" "$directory"
    done
  fi
}
trap giveBack EXIT

scripts/bootstrap.sh build

# A build directory that came from elsewhere with its tree is of no use here.
fresh=()
if [ -f build/release/CMakeCache.txt ] &&
  ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" build/release/CMakeCache.txt; then
  fresh=(--fresh)
fi
cmake --preset release "${fresh[@]}" -DORV_BUILD_TOOLS=ON
cmake --build --preset release --target orvcv_tool example_background_average
orvcv=build/release/bin/orvcv

rm -rf out
mkdir -p out/frames
sheet=out/index.html

escaped() { sed 's/&/\&amp;/g; s/</\&lt;/g; s/>/\&gt;/g'; }

# section TITLE TEXT
section() {
  printf '</div>\n<h2>%s</h2>\n<p>%s</p>\n<div class="cards">\n' "$1" "$2" >>$sheet
}

# photograph FILE CAPTION: shown as it is, from a copy beside the sheet.
photograph() {
  cp "$1" out/
  printf '<figure><img src="%s" alt=""><figcaption>%s</figcaption></figure>\n' "${1##*/}" "$2" >>$sheet
}

# show CAPTION ARGUMENT...: runs the tool. The card holds the picture it wrote, its command line, and what it printed.
show() {
  local caption=$1 picture='' previous='' argument said command
  shift
  for argument; do
    if [ "$previous" = -o ]; then picture=${argument#out/}; fi
    previous=$argument
  done
  command="orvcv $*"
  # Many frames are one pattern to the reader.
  command=$(sed 's|out/frames/frame00.pgm.*frame[0-9]*\.pgm|out/frames/frame*.pgm|' <<<"$command")
  printf '$ %s\n' "$command"
  said=$("$orvcv" "$@")
  [ -z "$said" ] || printf '%s\n' "$said"
  {
    if [ -n "$picture" ]; then printf '<figure><img src="%s" alt="">' "$picture"; else printf '<figure class="wide">'; fi
    printf '<figcaption>%s</figcaption><pre><b>%s</b>' "$caption" "$(escaped <<<"$command")"
    [ -z "$said" ] || printf '\n%s' "$(escaped <<<"$said")"
    printf '</pre></figure>\n'
  } >>$sheet
}

# disc FILE WIDTH HEIGHT RADIUS: a mask that selects a disc in the middle.
disc() {
  LC_ALL=C awk -v w="$2" -v h="$3" -v r="$4" 'BEGIN {
    printf "P5 %d %d 255\n", w, h
    for (y = 0; y < h; ++y)
      for (x = 0; x < w; ++x)
        printf "%c", ((x - w / 2) ^ 2 + (y - h / 2) ^ 2 < r * r) ? 255 : 0
  }' >"$1"
}

cat >$sheet <<'HTML'
<!DOCTYPE html>
<html lang="en">
<meta charset="utf-8">
<meta name="viewport" content="width=device-width">
<title>orvcv: contact sheet</title>
<style>
  body { font: 16px/1.5 system-ui, sans-serif; margin: 2rem auto; max-width: 76rem; padding: 0 1rem; color: #222; background: #fafafa; }
  h1, h2 { font-weight: 600; line-height: 1.2; } h2 { margin-top: 2.5rem; }
  .cards { display: grid; grid-template-columns: repeat(auto-fill, minmax(20rem, 1fr)); gap: 1.25rem; align-items: start; }
  figure { margin: 0; background: #fff; border: 1px solid #ddd; border-radius: 6px; overflow: hidden; }
  figure.wide { grid-column: 1 / -1; }
  img { display: block; width: 100%; background: #000; }
  figcaption { padding: .6rem .8rem; }
  pre { margin: 0; padding: .6rem .8rem; background: #f1f1ee; font-size: 12px; line-height: 1.4; white-space: pre-wrap; overflow-wrap: anywhere; }
  figure.wide pre { white-space: pre; overflow-x: auto; }
</style>
<h1>What the library does, in pictures</h1>
<p>Every picture was made by the command under it, from the photographs in <code>photos/</code>.</p>
<div class="cards">
HTML

section 'The library' 'Its version record, and the photographs that it works on.'
show 'What is installed' info
photograph photos/astronaut.png 'Portrait, 512 x 512 in colour'
photograph photos/camera.png 'Photographer, 512 x 512 in gray'
photograph photos/chelsea.png 'Cat, 451 x 300 in colour'
photograph photos/rocket.jpg 'Launch at night, 640 x 427 in colour'

section 'Averages and differences' 'Images folded into a single-precision accumulator, and compared sample by sample.'
show 'The average of two photographs is a double exposure' \
  average photos/astronaut.png photos/camera.png -o out/double-exposure.png
disc out/disc.pgm 512 512 200
show 'Under a mask only the selected pixels take part' \
  average photos/astronaut.png photos/camera.png --mask out/disc.pgm -o out/spotlight.png
show 'Their absolute difference' \
  diff photos/astronaut.png photos/camera.png -o out/difference.png

section 'Statistics' 'Means, deviations, extrema with their places, and norms; of an image, and of the difference of two.'
show 'A colour photograph, channel by channel' stats photos/chelsea.png
show 'The pixels that a mask selects' stats photos/camera.png --mask out/disc.pgm
show 'How far a photograph is from its average with another one' \
  compare photos/astronaut.png out/double-exposure.png

section 'Filters' 'Beyond the edges of a picture lie its edge pixels, its reflection, or a constant.'
show 'A Gaussian of four pixels' blur photos/astronaut.png --sigma 4 -o out/blur.png
show 'What a Gaussian takes away, three times as strong' diff photos/astronaut.png out/blur.png --gain 3 -o out/detail.png
show 'The edges of a colour photograph' gradient photos/astronaut.png --gain 1.5 -o out/gradient.png
show 'The second derivative; middle gray is zero' laplacian photos/camera.png -o out/laplacian.png
show 'The mean of 5 x 5 pixels' lowpass photos/chelsea.png --size 5 -o out/lowpass.png
show 'Any separable kernel: here relief, lit from the left' \
  filter photos/camera.png --row 1,1,0,-1,-1 --column 1,2,1 --divisor 8 --offset 128 -o out/relief.png

section 'What moves in front of a fixed camera' \
  '48 noisy frames of a disc that crosses a scene. Their average is the background; what differs from it moves.'
build/release/examples/background_average out/frames
frames=(out/frames/frame*.pgm)
last=${frames[-1]}
show 'The last frame' average "$last" -o out/frame.png
show 'The average of all frames: the disc and the noise fade' average "${frames[@]}" -o out/background.png
show 'A running average follows changes and forgets the past' average "${frames[@]}" --alpha 0.08 -o out/running.png
show 'The last frame differs from the average where the disc is' \
  diff "$last" out/background.png --gain 1.5 -o out/moving.png

printf '</div>\n</html>\n' >>$sheet

if [ $renewDocs = yes ]; then
  mkdir -p docs/images
  cp out/frame.png out/background.png out/moving.png docs/images/
fi

echo
echo "Done. The pictures are in $PWD/out; open $PWD/$sheet in a browser."
