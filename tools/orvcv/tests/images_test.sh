# Results checked by value on tiny images, and the photographs through every command.
source "$(dirname "$0")/support.sh"

gray a.pgm 3 2 0 10 20 30 40 255
gray b.pgm 3 2 5 10 10 0 255 0
colour c.ppm 2 1 1 2 3 250 251 252
colour d.ppm 2 1 3 2 1 0 255 252

succeeds '3 x 2 pixels, gray' info a.pgm
succeeds '2 x 1 pixels, colour' info c.ppm
succeeds 'orvCV AVX (g9)' info

succeeds 'mean difference 85.8333, largest 255' diff a.pgm b.pgm -o diff.png
holds diff.png '3 2 1: 5 0 10 30 215 255'
succeeds 'mean difference 85.8333' diff a.pgm b.pgm --gain 2.5 -o gain.png
holds gain.png '3 2 1: 12 0 25 75 255 255'
succeeds 'largest 250' diff c.ppm d.ppm -o diff.png
holds diff.png '2 1 3: 2 0 2 250 4 0'
gray e.pgm 2 1 2 250
succeeds 'largest 2' diff c.ppm e.pgm --output=mixed.png
holds mixed.png '2 1 3: 1 0 1 0 1 2'

succeeds '' average a.pgm b.pgm a.pgm -o mean.png
holds mean.png '3 2 1: 2 10 17 20 112 170'
succeeds '' average c.ppm d.ppm -o mean.png
holds mean.png '2 1 3: 2 2 2 125 253 252'
succeeds '' average a.pgm b.pgm a.pgm --alpha 0.25 -o running.png
holds running.png '3 2 1: 1 10 18 24 80 207'
gray mask.pgm 3 2 0 1 255 0 7 0
succeeds '' average a.pgm b.pgm --mask mask.pgm -o masked.png
holds masked.png '3 2 1: 0 10 15 0 148 0'
succeeds '' average a.pgm b.pgm --mask mask.pgm --alpha 0.5 -o masked.png
holds masked.png '3 2 1: 0 10 15 0 148 0'
gray pair.pgm 2 1 0 9
succeeds '' average c.ppm d.ppm --mask pair.pgm -o masked.png
holds masked.png '2 1 3: 0 0 0 125 253 252'
refused "cannot read '--time'" average -o one.png -- a.pgm --time

succeeds 'megapixels per second' average a.pgm --time -o one.png
holds one.png '3 2 1: 0 10 20 30 40 255'
[[ $(stat -c %a one.png) == $(printf %o $((0666 & ~$(umask)))) ]] || fail "rights of the output: $(stat -c %a one.png)"

count=0
for photo in "$photos"/*.png "$photos"/*.jpg; do
  succeeds 'pixels' info "$photo"
  succeeds 'mean difference 0.0000, largest 0' diff "$photo" "$photo" -o diff.png
  succeeds '' average "$photo" "$photo" "$photo" -o mean.png
  [[ $("$print_pixels" mean.png) == $("$print_pixels" "$photo") ]] || fail "the average of one photograph: $photo"
  count=$((count + 1))
done
[[ $count == 5 ]] || fail "expected 5 photographs, found $count"
succeeds 'mean difference' diff "$photos/camera.png" "$photos/astronaut.png" -o diff.png

finish
