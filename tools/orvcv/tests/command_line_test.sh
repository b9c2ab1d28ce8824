# Help, version, and every way to call the tool wrongly.
source "$(dirname "$0")/support.sh"

commands=$("$tool" --help | sed -n 's/^  \([a-z]*\)  *[A-Z].*/\1/p')
[[ $commands == *info* && $commands == *diff* && $commands == *average* ]] || fail "commands in the help: $commands"

succeeds 'Usage: orvcv COMMAND' --help
succeeds 'Usage: orvcv COMMAND' help
succeeds 'library 2018.0.3' --version
for command in $commands; do
  succeeds "Usage: orvcv $command" "$command" --help
  succeeds '--time' "$command" -h
done

gray a.pgm 3 2 0 10 20 30 40 255
gray b.pgm 3 2 5 10 10 0 255 0
gray wide.pgm 4 1 1 2 3 4
printf 'hello' >text.png
head -c 200 "$photos/camera.png" >cut.png
touch empty.png
mkdir directory.png

refused 'Usage: orvcv COMMAND'
refused "unknown command 'dif', did you mean 'diff'?" dif a.pgm b.pgm -o out.png
refused "unknown command 'entirely-else'" entirely-else
refused "unknown option '--outptu', did you mean '--output'?" diff a.pgm b.pgm --outptu out.png
refused "unknown option '-z'" diff a.pgm b.pgm -z out.png
refused "'-o' needs a value" diff a.pgm b.pgm -o
refused "option '--time' takes no value" diff a.pgm b.pgm -o out.png --time=3
refused "option '--output' is given twice" diff a.pgm b.pgm -o out.png --output other.png
refused "option '--output' is missing" diff a.pgm b.pgm
refused 'expected A B, got 1 file name' diff a.pgm -o out.png
refused 'got 0 file names' average -o out.png
refused "does not end in .png" diff a.pgm b.pgm -o out.jpg
refused "cannot read 'none.png': No such file or directory" diff a.pgm none.png -o out.png
refused "cannot read 'directory.png': Is a directory" diff a.pgm directory.png -o out.png
refused "'text.png' is not a PNG, JPEG or PNM image" diff text.png a.pgm -o out.png
refused "'empty.png' is not a PNG, JPEG or PNM image" info empty.png
refused "'cut.png' is damaged" average cut.png -o out.png
refused "sizes differ: 'a.pgm' is 3x2, 'wide.pgm' is 4x1" diff a.pgm wide.pgm -o out.png
refused "sizes differ: the mask 'wide.pgm' is 4x1" average a.pgm b.pgm --mask wide.pgm -o out.png
refused "--alpha: '0.5x' is not a number" average a.pgm b.pgm --alpha 0.5x -o out.png
refused "--alpha: 'nan' is not a number" average a.pgm b.pgm --alpha nan -o out.png
refused '--alpha: 1.5 is outside 0 to 1' average a.pgm b.pgm --alpha=1.5 -o out.png
refused '--gain: -3 is outside 1 to 255' diff a.pgm b.pgm --gain -3 -o out.png
refused "cannot write 'none/out.png': No such file or directory" diff a.pgm b.pgm -o none/out.png
refused "cannot write 'directory.png'" diff a.pgm b.pgm -o directory.png

# A failed run leaves an older result alone.
"$tool" diff a.pgm b.pgm -o kept.png >/dev/null
before=$(cksum kept.png)
refused 'sizes differ' diff a.pgm wide.pgm -o kept.png
[[ $(cksum kept.png) == "$before" ]] || fail 'a failed run changed the output file'

# Results that can't be printed are an error too.
"$tool" info >/dev/full 2>message && fail 'a full standard output went unnoticed'
grep -q 'cannot write the results' message || fail "a full standard output: $(cat message)"

finish
