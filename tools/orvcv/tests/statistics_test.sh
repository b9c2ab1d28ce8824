# Statistics and comparisons, by value on tiny images, and on the photographs.
source "$(dirname "$0")/support.sh"

gray a.pgm 3 2 0 10 20 30 40 250
gray b.pgm 3 2 3 10 20 30 36 250
gray mask.pgm 3 2 0 1 0 0 9 0
gray nothing.pgm 3 2 0 0 0 0 0 0
gray black.pgm 3 2 0 0 0 0 0 0
colour c.ppm 2 1 1 2 3 5 2 255
colour d.ppm 2 1 1 2 3 5 4 255

# Single spaces, so that columns may move.
succeeds_squeezed() {
  local text=$1 said
  shift
  said=$("$tool" "$@" | tr -s ' ') || fail "orvcv $* failed"
  [[ $said == *"$text"* ]] || fail "orvcv $*: '$text' is not in: $said"
}

succeeds 'a.pgm: 3x2, 6 pixels selected' stats a.pgm
succeeds_squeezed '1 58.333 86.683 0 at (0, 0) 250 at (2, 1) L1 350 L2 255.930 Inf 250' stats a.pgm
succeeds '2 pixels selected' stats a.pgm --mask mask.pgm
succeeds_squeezed '1 25.000 15.000 10 at (1, 0) 40 at (1, 1) L1 50 L2 41.231 Inf 40' stats a.pgm --mask mask.pgm
succeeds_squeezed '3 129.000 126.000 3 at (0, 0) 255 at (1, 0) L1 258 L2 255.018 Inf 255' stats c.ppm
[[ $("$tool" stats c.ppm | wc -l) == 5 ]] || fail 'one line a channel'
[[ $("$tool" stats c.ppm --channel 2 | wc -l) == 3 ]] || fail 'one line for one channel'
succeeds_squeezed '2 2.000 0.000' stats c.ppm --channel 2
refused '--channel: 4 is outside 1 to 3' stats c.ppm --channel 4
refused '--channel: 2 is outside 1 to 1' stats a.pgm --channel 2
refused '--channel takes whole numbers' stats c.ppm --channel 1.5
refused 'the mask selects no pixel' stats a.pgm --mask nothing.pgm

succeeds 'equal where the mask selects' compare a.pgm a.pgm
succeeds 'absolute: L1 7  L2 5.000  Inf 4   relative: L1 0.020057' compare a.pgm b.pgm
succeeds 'peak signal-to-noise ratio 41.933 dB' compare a.pgm b.pgm
succeeds 'absolute: L1 4  L2 4.000  Inf 4' compare a.pgm b.pgm --mask mask.pgm
succeeds 'relative: L1 undefined' compare black.pgm black.pgm
succeeds 'relative: L1 inf' compare a.pgm black.pgm
succeeds 'channel 2  absolute: L1 2' compare c.ppm d.ppm
succeeds 'peak signal-to-noise ratio 49.892 dB' compare c.ppm d.ppm
refused 'the mask selects no pixel' compare a.pgm b.pgm --mask nothing.pgm
refused 'sizes differ' compare a.pgm c.ppm

for photo in "$photos"/*.png "$photos"/*.jpg; do
  succeeds 'deviation' stats "$photo"
  succeeds 'equal where the mask selects' compare "$photo" "$photo"
done

finish
