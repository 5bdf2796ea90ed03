#!/bin/bash
# tapetool from the outside: drives, cartridges, comparisons and their exit status.  tapetool.sh PROGRAM
set -e
tool=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
fails() { if "$@" > out 2> err; then echo "should fail: $*"; exit 1; fi; }
says() { grep -qF -- "$1" "$2" || { echo "no \"$1\" in:"; cat "$2"; exit 1; }; }

"$tool" make-drive tapes one two
says "id = 1" tapes/two.drive
fails "$tool" make-drive tapes one
"$tool" sample tapes/s.tap
"$tool" list tapes/s.tap > out
says "file 3: 146 blocks, 326160 bytes" out
"$tool" insert tapes/one.drive tapes/s.tap
says "cartridge = $folder/tapes/s.tap" tapes/one.drive
fails "$tool" insert tapes/one.drive tapes/none.tap
"$tool" eject tapes/one.drive
cp tapes/s.tap tapes/c.tap
"$tool" compare tapes/s.tap tapes/c.tap
printf '\0\0\0\0' >> tapes/c.tap
fails "$tool" compare tapes/s.tap tapes/c.tap
says "equal but for the closing marks: 2 against 3" out
"$tool" badblock tapes/c.tap 5
fails "$tool" compare tapes/s.tap tapes/c.tap
says "number 5: a block of 2240 bytes against an unreadable block" out
fails "$tool" badblock tapes/c.tap 50
head -c 100 tapes/s.tap > tapes/cut.tap
fails "$tool" list tapes/cut.tap
says "damaged at byte 0" err
fails "$tool" sample tapes/s.tap
if "$tool" list tapes/s.tap > /dev/full 2> err; then echo "a full device is no failure"; exit 1; fi
says "tapetool: standard output: No space left on device" err
fails "$tool"
