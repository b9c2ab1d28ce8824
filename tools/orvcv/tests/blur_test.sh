# Gaussian smoothing by value where it can be computed by hand, and the two engines against each other.
source "$(dirname "$0")/support.sh"

# Taps 0.1065, 0.7870, 0.1065.
gray spike.pgm 3 1 0 255 0
blur=(blur spike.pgm --sigma 0.5 --size 3 -o out.png)
succeeds '' "${blur[@]}"
holds out.png '3 1 1: 27 201 27'
succeeds '' "${blur[@]}" --border mirror
holds out.png '3 1 1: 54 201 54'
succeeds '' "${blur[@]}" --border constant:255
holds out.png '3 1 1: 97 212 97'
colour flat.ppm 2 1 7 100 250 7 100 250
succeeds '' blur flat.ppm --sigma 2 -o out.png
holds out.png '2 1 3: 7 100 250 7 100 250'

rm out.png
refused "option '--sigma' is missing" blur spike.pgm -o out.png
refused '--sigma: 0 is outside 0.1 to 100' blur spike.pgm --sigma 0 -o out.png
refused '--size takes odd numbers, not 4' blur spike.pgm --sigma 1 --size 4 -o out.png
refused '--size: 1 is outside 3 to 999' blur spike.pgm --sigma 1 --size 1 -o out.png
refused "'fast' is neither float nor fixed" blur spike.pgm --sigma 1 --engine fast -o out.png
refused "'wrap' is not replicate, mirror, or constant" blur spike.pgm --sigma 1 --border wrap -o out.png
refused "--border: 'x' is not a number" blur spike.pgm --sigma 1 --border constant:x -o out.png
refused '--border: 256 is outside 0 to 255' blur spike.pgm --sigma 1 --border constant:256 -o out.png

for photo in "$photos"/*.png "$photos"/*.jpg; do
  for border in replicate mirror constant:90; do
    succeeds '' blur "$photo" --sigma 2 --border $border --engine float -o float.png
    succeeds '' blur "$photo" --sigma 2 --border $border --engine fixed -o fixed.png
    ratio=$("$tool" compare float.png fixed.png | sed -n 's/^peak signal-to-noise ratio \([0-9]*\).*/\1/p')
    [[ ${ratio:-0} -ge 40 ]] || fail "the engines differ on $photo with $border: ${ratio:-no} dB"
  done
done

finish
