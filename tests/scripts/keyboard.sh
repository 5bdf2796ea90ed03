#!/usr/bin/env bash
# The tour of the windows with a keyboard alone: tests/scripts/keyboard.sh PROGRAM
# "keys" and "file", which answers a file box, are typed by xdotool into whatever has the keyboard; "slow" while the program
# follows. All else only looks.
set -eu
program=$(realpath "$1")
here=$(cd "$(dirname "$0")" && pwd)
PATH=$(dirname "$program"):$PATH
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
cd "$dir"
tapetool make-drive drives left right
rm drives/left.tap
tapetool sample drives/left.tap
export PYTHONPATH=$here PYTHONDONTWRITEBYTECODE=1
python3 -c 'import line; line.make("line.sgy")'
seq 1003 1010 >inlines.txt
mkdir line-1201
for name in a b; do kyrtool raw line-1201/$name.kyr <(head -c 48 /dev/urandom) 2 3 2 0.004; done
kyrtool kill line-1201/b.kyr 1 2
export QUARLO_VIRTUAL_DRIVES=drives

sed 's/^file \(.*\)/wait window file-box 5\ntext \1\nkeys Return\nwait no-window file-box 5/' <<'SCRIPT' |
wait window main 20
sleep 0.3

# A tape to a file: the drive by an arrow, a box by the space bar, the start by Return.
keys alt+c
wait window copy 5
keys alt+i
wait window input-drive 5
keys Down
expect like input-drive.drives "*left"
keys Tab space
expect checked input-drive.no-rewind
keys space Return
wait no-window input-drive 5
keys alt+f
file copy.tpf
wait text copy.status "Ready" 5
keys alt+e
wait window error-options 5
keys Escape
wait no-window error-options 5
keys alt+s
wait window input-continue 60
keys Escape
wait text copy.status "Complete" 10

# A part of a SEG Y file, chosen by a list: list by arrows, radio buttons, option lists.
keys alt+r Down
expect text copy.format "SEG Y"
keys alt+d
file line.sgy
keys alt+f
file part.sgy
keys alt+p
wait window segy 5
keys alt+m Tab space alt+g
wait window segy-list 5
keys alt+l
file inlines.txt
keys alt+p ctrl+a
text 189
keys Tab space Down Up Return
expect like segy-list.path "*inlines.txt"
keys ctrl+Return
wait no-window segy-list 5
keys ctrl+Return
wait no-window segy 5
keys alt+s
wait text copy.status "Complete" 20
keys alt+c
wait no-window copy 5
expect file part.sgy exists

# Both copies of the tape against each other.
keys alt+v
wait window verify 5
keys alt+f
wait window input-drive 5
keys Down Return
wait no-window input-drive 5
keys alt+e
file copy.tpf
wait text verify.status "Ready" 5
keys alt+t
wait window input-continue 60
keys Escape
wait text verify.status "Complete" 60
keys alt+c
wait no-window verify 5

# Bytes of a dataset, and a report on it.
keys alt+f
wait window file-dump 5
keys alt+o
file line-1201/b.kyr
keys ctrl+Return
wait window file-dump-window 5
keys alt+p Down
expect text file-dump.reports "A/D Converter Test"
keys Up
expect text file-dump.reports "Trace Kills Report"
keys alt+t
wait window kills-report 5
keys alt+g Tab space space ctrl+Return
wait text kills-report.status "*listed" 10
keys alt+c
wait no-window kills-report 5
keys alt+c
wait no-window file-dump 5

# Two datasets in one.
keys alt+m
wait window merge 5
keys alt+d
wait window dir-box 5
keys Return
wait no-window dir-box 5
expect rows merge.inputs 2
keys alt+o
file both.kyr
keys alt+f Tab Down
wait text merge.status "Ready" 5
keys ctrl+Return
wait text merge.status "Complete" 10
keys alt+c
wait no-window merge 5

# The menus: by F10 and arrows, by letters, by their short cuts; then the end.
slow F10 Down Down Return
wait no-window console 5
sleep 0.5
keys ctrl+l
wait window console 5
slow F10 h a
wait window about 5
sleep 0.5
keys Return
wait no-window about 5
keys ctrl+t
wait window tape-control 5
slow ctrl+m F6 shift+F6 shift+F6 F10 Escape shift+F6 alt+c
wait no-window tape-control 5
sleep 0.5
keys ctrl+q
sleep 20
SCRIPT
  sed 's/^keys \(.*\)/sleep 0.1\nrun "xdotool key --delay 30 \1"/; s/^slow \(.*\)/run "xdotool key --delay 300 \1 \&"/; s/^text \(.*\)/run "xdotool type --delay 5 \1"/' >tour.qs
# The keys end the program, so the script cannot come to its own end.
status=0
timeout 250 "$program" --script tour.qs 2>error || status=$?
[ "$status" = 1 ] && [ "$(cat error)" = "script tour.qs:$(wc -l <tour.qs): the program ended before this statement" ] ||
  { cat error; exit 1; }
! grep -F '**' console.txt
[ -s line-1201/both.kyr ]
python3 -c '
import line
kept = [line.field(trace, 189) for trace in line.read("part.sgy")[1]]
assert len(kept) == 8 * 60 and set(kept) == set(range(1003, 1011)), kept'
