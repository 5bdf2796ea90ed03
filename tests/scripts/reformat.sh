#!/usr/bin/env bash
# The script of docs/reformat.md, where the program was built and where it is installed: tests/scripts/reformat.sh PROGRAM
set -eu
program=$(realpath "$1")
build=$(dirname "$program")
scripts=$(dirname "$(realpath "$0")")
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
cd "$dir"
mkdir -p prefix/bin prefix/lib/quarlo
ln "$program" prefix/bin 2>/dev/null || cp "$program" prefix/bin
cp -r "$build/lib" prefix/lib/quarlo
"$scripts/documents.py" block docs/reformat.md "# line.txt" >reformat.qs
printf '# interval 0.004\n1 2 3\n4 5 6\n' >line.txt

# play PROGRAM MODULES
play() {
  rm -f line.kyr
  timeout 60 "$1" --script reformat.qs
  grep -qxF "Format modules are taken from $2." console.txt
  [ "$("$build/kyrtool" dump line.kyr | grep -c '^trace ')" = 2 ]
}
play "$program" "$build/lib"
play "$dir/prefix/bin/quarlo" "$dir/prefix/lib/quarlo/lib"

# Two SEG D field files in one become a dataset whose samples are volts; the check tells of what is cut off, and fails.
PYTHONPATH=$scripts python3 -c 'import field
whole = b"".join(b"".join(field.blocks(number)) for number in (7, 8))
open("line.segd", "wb").write(whole)
open("cut.segd", "wb").write(whole[:-1000])'
sed -e 's/^select reformat.input-format.*/select reformat.input-format "SEG D"/; s/line.txt/line.segd/; /^quit/d' reformat.qs >segd.qs
printf '%s\n' 'answer-file cut.segd' 'press reformat.input-disk' 'press reformat.check-input' \
  'wait text reformat.status "Failed" 60' 'quit' >>segd.qs
rm -f line.kyr console.txt
timeout 60 "$program" --headless --script segd.qs
for line in "SEG D revision 1.0, format 8058: 2 field files, at most 130 traces of 512 samples, 2 ms." "260 traces written." \
  "  *** $dir/cut.segd, byte 536872, field file 8: trace 130 of 130: it ends after 1068 of 2068 bytes." \
  "1 trace could not be read." "Field files from 7 to 8." "A run would make 2 records of at most 130 traces, 512 samples at 2 ms."; do
  grep -qxF "$line" console.txt || { echo "not said: $line" >&2; exit 1; }
done
[ "$("$build/kyrtool" dump line.kyr | grep -c '^trace ')" = 260 ]

# Modules of the user's own take the place of all others.
mkdir lib
cp "$build/lib/ioexample.so" lib
status=0
timeout 60 "$program" --script reformat.qs 2>error || status=$?
[ "$status" = 1 ] && grep -q "No valid output shared objects have been found." error
echo "reformat: all as expected"
