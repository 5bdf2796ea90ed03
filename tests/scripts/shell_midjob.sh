#!/usr/bin/env bash
# What may be asked for in the middle of a job: tests/scripts/shell_midjob.sh PROGRAM
# The tape is left alone, the close box of the progress dialog stops the job, the dialog and the program wait for its end.
set -eu
program=$(realpath "$1")
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
shots=${QUARLO_SHOTS:-$dir}
mkdir -p "$shots" "$dir/drives" "$dir/work"
export SHOTS="$shots" KYRHOME="$dir/work" QUARLO_VIRTUAL_DRIVES="$dir/drives" OUT="$dir/work"

# 2000 blocks of 1024 bytes, each read in 10 ms: a job of 20 seconds at least.
{
  head -c 1024 /dev/zero | tr '\0' 'x' >"$dir/block"
  for _ in $(seq 2000); do
    printf '\000\004\000\000'
    cat "$dir/block"
    printf '\000\004\000\000'
  done
  printf '\000\000\000\000\000\000\000\000'
} >"$dir/drives/long.tap"
printf 'vendor = ACME\nmodel = REEL 100\nid = 4\ncartridge = long.tap\n' >"$dir/drives/long.drive"
printf 'vendor = ACME\nmodel = REEL 200\nid = 5\n' >"$dir/drives/other.drive"
export QUARLO_TAPE_FAULT="read:1+:slow=10"

choose_and_start() {
  cat <<SCRIPT
press main.image-copy
wait window copy 5
press copy.input-tape
select input-drive.drives 0
press input-drive.ok
answer-file \$OUT/$1.tpf
press copy.output-disk
wait enabled copy.start 5
press copy.start
wait window progress 10
wait text progress.second-value "?*" 10
sleep 1
SCRIPT
}

{
  echo 'wait window main 10'
  choose_and_start first
  cat <<'SCRIPT'
expect title progress "Unformatted Copy Progress"
expect text progress.first-label "Bytes copied:"
expect hidden progress.meter
screenshot progress "$SHOTS/progress.png"
mark console
menu rewind
wait console "A job is running. Stop it or wait for its end first." 5
menu tape-control
wait window tape-control 5
mark console
press tape-control.skip-blocks
wait console "A job is running. Stop it or wait for its end first." 5
press main.verify
wait window verify 5
press verify.first-tape
expect text verify.status "A job is running. Stop it or wait for its end first."
expect no-window note-box
close verify
expect window progress
close progress
wait no-window progress 20
wait console "*Copy aborted by user at*" 20
wait console "Copy ended at*" 20
wait text copy.status "Complete" 20
close tape-control

# The dialog closed in mid-job goes when the job has ended.
close copy
wait no-window copy 10
SCRIPT
  choose_and_start second
  cat <<'SCRIPT'
mark console
close copy
wait no-window copy 20
wait console "Copy ended at*" 20
SCRIPT
  # The program, too, which asks once.
  choose_and_start third
  cat <<'SCRIPT'
menu quit
wait window ask-box 5
screenshot ask-box "$SHOTS/quit.png"
press ask-box.second
wait no-window ask-box 5
expect window progress
close task
wait window ask-box 5
press ask-box.first
SCRIPT
} >"$dir/script"
"$program" --script "$dir/script"
grep -q 'Copy ended at' "$dir/work/console.txt"

# The display goes in mid-job: the job ends as ever, then the program, which says so.
{ echo 'wait window main 10'; choose_and_start fourth; echo 'wait window never 60'; } >"$dir/lost"
lost=0
"$(dirname "$0")/../with-display" bash -c '
  "$0" --script "$1" & job=$!
  for _ in $(seq 200); do [ "$(stat -c %s "$OUT/fourth.tpf" 2>/dev/null || echo 0)" -gt 32 ] && break; sleep 0.1; done
  pkill -KILL -P $PPID Xvfb
  for _ in $(seq 200); do kill -0 $job 2>/dev/null || break; sleep 0.1; done
  wait $job' "$program" "$dir/lost" 2>"$dir/lost.txt" || lost=$?
[ "$lost" = 1 ] && grep -q 'connection to the display is lost' "$dir/lost.txt" || { cat "$dir/lost.txt"; exit 1; }
tail -n 3 "$dir/work/console.txt" | grep -q 'Copy ended at'

# Each was closed in good order: a file header, whole blocks, the closing marks.
for name in first second third fourth; do
  python3 - "$dir/work/$name.tpf" <<'CHECK'
import struct, sys
data = open(sys.argv[1], 'rb').read()
assert data[:4] == b'1vlt'
place, blocks, marks = 32, 0, 0
while place < len(data):
    length, marker = struct.unpack_from('<i', data, place)[0], struct.unpack_from('<I', data, place + 28)[0]
    place += 32 + length
    marks = marks + 1 if marker == 0xF0F0F0F0 else 0
    blocks += marker != 0xF0F0F0F0
assert place == len(data) and blocks > 0 and marks == 2, (place, len(data), blocks, marks)
CHECK
done
echo "shell_midjob: all as expected"
