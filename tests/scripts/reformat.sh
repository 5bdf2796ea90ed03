#!/usr/bin/env bash
# The commands of docs/reformat.md and the check of an input, where the program was built and where it is installed as
# docs/installing.md has it:
# tests/scripts/reformat.sh PROGRAM
set -eu
program=$(realpath "$1")
build=$(dirname "$program")
scripts=$(dirname "$(realpath "$0")")
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
cd "$dir"
cmake --install "$build" --prefix prefix >log
cp "$scripts/../../docs/examples"/*reformat.qs "$scripts/../../docs/examples/tape-to-dataset.qs" .
"$scripts/documents.py" block docs/reformat.md "quarlo --headless" >commands
printf '# interval 0.004\n1 2 3\n4 5 6\n' >line.txt
PYTHONPATH=$scripts python3 -c 'import field
whole = b"".join(b"".join(field.blocks(number)) for number in (7, 8))
open("line.segd", "wb").write(whole)
open("cut.segd", "wb").write(whole[:-1000])'

mkdir drives
"$build/tapetool" make-drive drives one
export QUARLO_VIRTUAL_DRIVES=drives

# play PROGRAM MODULES: two SEG D field files in one and on a tape, two lines of a text
play() {
  rm -f line.* text.kyr tape.kyr
  cp given/* .
  PYTHONPATH=$scripts python3 -c 'import field; field.cartridge("drives/one.tap", (7, 8))'
  PATH=$(dirname "$1"):$PATH timeout 100 bash -eu commands
  grep -qxF "Format modules are taken from $2." console.txt
  [ "$("$build/kyrtool" dump line.kyr | grep -c '^trace ')" = 260 ]
  [ "$("$build/kyrtool" dump tape.kyr)" = "$("$build/kyrtool" dump line.kyr)" ]
  [ "$("$build/kyrtool" dump text.kyr | grep -c '^trace ')" = 2 ]
  [ "$(stat -c %s line.sgy)" = $((3600 + 260 * (240 + 4 * 512))) ]
}
mkdir given
mv line.* given
play "$program" "$build/lib"
play "$dir/prefix/bin/quarlo" "$dir/prefix/lib/quarlo/lib"
if PATH=$build:$PATH timeout 60 bash -c "$(head -1 commands)" 2>error; then
  echo "line.kyr was overwritten" >&2
  exit 1
fi

# The check tells of what is cut off, and fails.
cat >check.qs <<'SCRIPT'
wait window main 10
press main.reformat
wait window reformat 5
select reformat.input-format "SEG D"
answer-file cut.segd
press reformat.input-disk
press reformat.check-input
wait text reformat.status "Failed" 60
quit
SCRIPT
timeout 60 "$program" --script check.qs
for line in "SEG D revision 1.0, format 8058: 2 field files, at most 130 traces of 512 samples, 2 ms." \
  "  *** $dir/cut.segd, byte 536872, field file 8: trace 130 of 130: it ends after 1068 of 2068 bytes." \
  "1 trace could not be read." "Field files from 7 to 8." "A run would make 2 records of at most 130 traces, 512 samples at 2 ms."; do
  grep -qxF "$line" console.txt || { echo "not said: $line" >&2; exit 1; }
done

# Modules of the user's own take the place of all others.
mkdir lib
cp "$build/lib/ioexample.so" lib
status=0
PATH=$build:$PATH timeout 60 bash -c "$(grep Text commands)" 2>error || status=$?
[ "$status" = 1 ] && grep -q "No valid output shared objects have been found." error
echo "reformat: all as expected"
