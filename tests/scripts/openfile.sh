#!/usr/bin/env bash
# The program started from a menu, with a file: the file stands in its dialog, the program's own files in the user's data, and
# a second program in the same folder writes a log of its own. openfile.sh PROGRAM
set -eu
program=$1
dir=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null || true; rm -rf "$dir"' EXIT
cd "$dir"
export XDG_DATA_HOME=$dir/data
unset KYRHOME
files=$dir/data/quarlo/files
tools=$(dirname "$program")
head -c 96 /dev/zero >floats
"$tools/kyrtool" raw line.KYR floats 2 3 4 0.002
"$tools/tapetool" sample alone.tap

wait_for() {  # PATTERN FILE
  for _ in $(seq 100); do
    grep -qs -- "$1" "$2" && return
    sleep 0.1
  done
  echo "not said in $2: $1" >&2
  cat "$2" >&2
  exit 1
}
"$program" --from-menu line.KYR &
first=$!
wait_for '^Opened file line.KYR.$' "$files/console.txt"
"$program" --from-menu alone.tap &
second=$!
wait_for '^  \*\* Another Quarlo writes "console.txt" here. These lines go to "console-2.txt".$' "$files/console-2.txt"
wait_for "^cartridge = $dir/alone.tap$" data/quarlo/drives/opened.drive
kill $first $second
for program_number in $first $second; do
  status=0
  wait "$program_number" || status=$?
  [ $status -le 1 ]  # 1: stopped before its script was through
done
[ ! -e console.txt ]

status=0
"$program" floats 2>said || status=$?
grep -q '^quarlo: floats: no dialog is for files of this kind' said
[ $status = 2 ]

status=0
XDG_DATA_HOME=/dev/null "$program" alone.tap 2>said || status=$?
grep -q '^quarlo: alone.tap: a drive for it cannot be written to /dev/null/quarlo/drives' said
[ $status = 2 ]
