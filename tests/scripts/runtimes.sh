#!/usr/bin/env bash
# The same scripts on the screen and without one: tests/scripts/runtimes.sh PROGRAM
# What they print, the consoles, and every file they leave must be the same, dates and durations aside.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
export PATH="$(dirname "$(realpath "$1")"):$PATH" PYTHONPATH="$here" PYTHONDONTWRITEBYTECODE=1
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT

cat >"$dir/copies.qs" <<'SCRIPT'
wait window main 10
press main.image-copy
press copy.input-tape
wait window input-drive 5
select input-drive.drives 0
dump-windows
key input-drive Return
answer-file tape.tpf
press copy.output-disk
press copy.parameters
type unformatted.eof-count "3"
key unformatted Tab
dump-windows
key unformatted Escape
answer input-continue.stop
press copy.start
wait console "Copy ended at *" 60
expect text copy.status "Complete"

# And back, onto a cartridge that is not empty: the box asks first.
press copy.input-disk
dump-windows
type file-box.folder "$PWD"
press file-box.ok
select file-box.files "tape.tpf"
press file-box.ok
press copy.output-tape
select output-drive.drives 1
press output-drive.ok
mark
press copy.start
wait console "Copy ended at *" 60
dump-windows
close copy

press main.verify
press verify.first-tape
select input-drive.drives "  0:0 *"
press input-drive.ok
answer-file tape.tpf
press verify.second-disk
answer input-continue.stop
press verify.start
wait console "Verify ended at *" 60
dump-windows
close verify

press main.tape-dump
press tape-dump.select-drive
select input-drive.drives 1
press input-drive.ok
press tape-dump.dump
wait line tape-dump-window "*" 10
type tape-dump.skip-blocks 2
press tape-dump.skip-forward
select tape-dump.format "EBCDIC"
press tape-dump.redump
dump-windows
copy-lines tape-dump-window tape-dump.txt
close tape-dump

answer-file tape.tpf
press main.file-dump
press file-dump.open-file
type file-dump.go-to-byte 300
press file-dump.move-to-byte
press file-dump.read
key file-dump Alt+m
dump-windows
copy-lines console lines.txt
menu quit
SCRIPT

# play NAME SCRIPT-OPTION JOB-OPTION: everything that is left stands in NAME, with what was printed.
play() {
  local name=$1
  mkdir "$dir/work" && cd "$dir/work"
  python3 -c 'import line; line.make("line.sgy")'
  printf '1003\n1010 - 1012\n' >inlines.txt
  tapetool make-drive drives one two
  rm drives/*.tap
  tapetool sample drives/one.tap
  tapetool sample drives/two.tap
  export QUARLO_VIRTUAL_DRIVES=drives
  for run in "$2 --script $dir/copies.qs" "$3 --job segy-copy input=line.sgy list=inlines.txt output=part.sgy" \
    "$3 --job segy-sort-split input=line.sgy output=sorted.sgy volumes=cdp.sgy part-size=0.001"; do
    quarlo $run >>printed 2>&1 || { cat printed; exit 1; }
    cat console.txt >>consoles.txt
  done
  sed -i '/^Traces input: /d' printed  # how far a slow machine had come
  sed -i -E 's/[A-Z][a-z]{2} [A-Z][a-z]{2} +[0-9]+ [0-9:]{8} [0-9]{4}|[0-9]{4}(-[0-9]{2}){2} [0-9]{2}:[0-9]{2}/DATE/g' printed ./*.txt
  cd "$dir" && mv work "$name"
}

play screen "" --show
play headless --headless ""
diff -r "$dir/screen" "$dir/headless"
[ "$(ls "$dir/screen" | wc -l)" -gt 9 ]

# Where no display can be opened a script is played all the same; hands need one.
unset QUARLO_VIRTUAL_DRIVES
echo 'wait window main 10' >empty.qs
said=$(DISPLAY=':4711' quarlo --script empty.qs 2>&1)
[ "$said" = $'quarlo: cannot open the display ":4711"\nquarlo: going on without a screen' ] || { echo "$said"; exit 1; }
status=0
DISPLAY='' quarlo 2>/dev/null || status=$?
[ "$status" = 1 ]
echo "runtimes: all as expected"
