# The other filters by value on tiny images, and on the photographs.
source "$(dirname "$0")/support.sh"

gray row.pgm 3 1 0 100 0
gray column.pgm 1 3 0 100 0
colour colour.ppm 3 1 0 10 20 100 10 20 0 10 20
gray middle.pgm 3 3 0 0 0 0 90 0 0 0 0
gray step.pgm 4 1 0 0 255 255

succeeds '' filter row.pgm --row 1,2,1 --divisor 4 -o out.png
holds out.png '3 1 1: 25 50 25'
succeeds '' filter colour.ppm --row 1,2,1 --divisor 4 -o out.png
holds out.png '3 1 3: 25 10 20 50 10 20 25 10 20'
succeeds '' filter column.pgm --column 1,2,1 --divisor 4 -o out.png
holds out.png '1 3 1: 25 50 25'
succeeds '' filter row.pgm --row=-1,0,1 --offset 128 -o out.png
holds out.png '3 1 1: 228 128 28'
succeeds '' filter row.pgm --row -1,0,1 --offset 128 --border mirror -o out.png
holds out.png '3 1 1: 128 128 128'
succeeds '' filter row.pgm --row -1,0,1 --offset 128 --border constant:10 -o out.png
holds out.png '3 1 1: 218 128 38'

succeeds '' laplacian middle.pgm --gain 0.1 --border constant -o out.png
holds out.png '3 3 1: 146 128 146 128 56 128 146 128 146'
succeeds '' lowpass middle.pgm --border constant:0 -o out.png
holds out.png '3 3 1: 10 10 10 10 10 10 10 10 10'
succeeds '' lowpass colour.ppm --size 5 --border mirror -o out.png
holds out.png '3 1 3: 39 9 19 59 9 19 39 9 19'
succeeds '' gradient step.pgm -o out.png
holds out.png '4 1 1: 0 255 255 0'
succeeds '' gradient step.pgm --norm l1 --gain 0.1 -o out.png
holds out.png '4 1 1: 0 76 76 0'

rm out.png
refused "--row: '' is not a number" filter row.pgm --row 1,,1 -o out.png
refused "--column: 'x' is not a number" filter row.pgm --column x -o out.png
refused '--divisor must not be 0' filter row.pgm --divisor 0 -o out.png
refused '--size: 4 is neither 3 nor 5' lowpass row.pgm --size 4 -o out.png
refused "'l3' is neither max, l1 nor l2" gradient row.pgm --norm l3 -o out.png

for photo in "$photos"/*.png "$photos"/*.jpg; do
  for border in replicate mirror constant:90; do
    for command in 'filter --row 1,4,6,4,1 --column 1,4,6,4,1 --divisor 256' laplacian 'laplacian --size 5' lowpass \
      'lowpass --size 5' gradient 'gradient --size 5 --norm l2'; do
      succeeds '' $command "$photo" --border $border -o out.png
    done
  done
done

finish
