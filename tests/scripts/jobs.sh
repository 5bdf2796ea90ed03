#!/usr/bin/env bash
# The ready-made jobs on virtual drives: tests/scripts/jobs.sh PROGRAM
# Each with its defaults, then what they refuse, what they lose, what they ask, and how they are stopped. The jobs of SEG Y and
# SEG D are played by jobs_segy.sh and jobs_segd.sh.
set -eu
program=$(realpath "$1")
export PATH="$(dirname "$program"):$PATH"
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
cd "$dir"
export QUARLO_VIRTUAL_DRIVES="$dir/drives" XDG_DATA_HOME="$dir/data"

load() {  # fresh cartridges: the sample in the first and third drive, a blank one in the second
  rm -rf drives
  tapetool make-drive drives left right third
  rm drives/left.tap
  tapetool sample drives/left.tap
  cp drives/left.tap drives/third.tap
}
says() {  # STATUS TEXT ARGUMENT ...: how a job ends, and what it says
  local wanted=$1 text=$2 status=0
  shift 2
  quarlo "$@" >out 2>err </dev/null || status=$?
  [ "$status" = "$wanted" ] && grep -qF -- "$text" out err && return
  echo "status $status, not $wanted, or no \"$text\": $*"
  cat out err
  return 1
}

# Each with its defaults: the copies of a copy are the tape.
load
says 0 '3 files copied.' --job tape-to-disk input=0 output=a.tpf
says 0 'Copy ended at' --job disk-to-tape input=a.tpf output='*right'
tapetool compare drives/left.tap drives/right.tap | grep -q '^equal'
says 0 'Byte comparison succeeded.' --job verify first=0 second=a.tpf
says 0 'Byte comparison succeeded.' --job verify first=a.tpf second=1
load
says 0 '294 blocks copied.' --job tape-to-tape input=0 output=1,2
tapetool compare drives/left.tap drives/third.tap | grep -q '^equal'

# Nothing that is there is lost, and wrong use is told before anything is opened.
says 1 'tape-to-disk: "a.tpf" exists; give overwrite=yes to replace it' --job tape-to-disk input=0 output=a.tpf
cmp -s a.tpf <(cat a.tpf) && [ -s a.tpf ]
says 0 '3 files copied.' --job tape-to-disk input=0 output=a.tpf overwrite=yes
says 1 'there is no file "none.tpf"' --job disk-to-tape input=none.tpf output=1
says 1 'it has no row 7 (it has "  0:0   VIRTUAL left"' --job tape-to-disk input=7 output=b.tpf
says 2 'there is no job "tape"; there are disk-to-tape' --job tape
says 2 'output=FILE is missing: the file to write' --job tape-to-disk input=0
says 2 'there is no variable "inptu"; there are input, output' --job tape-to-disk inptu=0 output=b.tpf
says 2 'overwrite=maybe: it must be no or yes' --job tape-to-disk input=0 output=b.tpf overwrite=maybe
says 2 'input is given twice' --job tape-to-disk input=0 input=1 output=b.tpf
says 2 'no --job beside "--show"' --show
says 2 'input=x.tap: it must be a drive' --job tape-to-disk input=x.tap output=b.tpf
says 2 'unknown option "yes"' --job tape-to-disk yes
says 1 'next-tape=ask asks at the terminal' --job tape-to-disk input=0 output=b.tpf next-tape=ask
[ ! -e b.tpf ]

# What could not be read, though the job went on to its end; a tape that differs; a read that succeeds when tried again.
tapetool badblock drives/left.tap 5
says 1 'could not be read: tape 1 file 1 block 6.' --job tape-to-disk input=0 output=bad.tpf
grep -q '^quarlo: tape-to-disk: .*checks.qs.*1 block could not be read' err
says 1 'Byte comparison failed at byte 4 on block number 6.' --job verify first=a.tpf second=bad.tpf
load
QUARLO_TAPE_FAULT=read:7:EIO says 0 'retrying' --job tape-to-disk input=0 output=tried.tpf
cmp a.tpf tried.tpf

# Further tapes: from another drive, from the drive's magazine, from a person's hands.
says 0 '2 tapes copied.' --job tape-to-disk input=0 output=two.tpf next-tape=2
echo 'magazine = third.tap' >>drives/left.drive
says 0 '2 tapes copied.' --job tape-to-disk input=0 output=magazine.tpf next-tape=next
cmp two.tpf magazine.tpf
load
says 0 'Unload "VIRTUAL left".' --job tape-to-disk input=0 output=unloaded.tpf input-end=unload
tapetool eject drives/right.drive
says 1 'next-tape=2,1: the next tape (1) cannot be opened' --job tape-to-disk input=0 output=part.tpf next-tape=2,1

# A person at the terminal, who puts the tape in only at the second try; the bar is drawn in the terminal's last line.
load
python3 - <<'CHECK'
import os, pty, subprocess, select
master, slave = pty.openpty()
job = subprocess.Popen("quarlo --job tape-to-disk input=0 output=asked.tpf next-tape=ask".split(), stdin=slave, stdout=slave,
                       env={**os.environ, "QUARLO_TAPE_FAULT": "read:1+:slow=2"})
os.close(slave)
told, at = "", 0
def hear(text):
    global told, at
    while text not in told[at:]:
        assert select.select([master], [], [], 60)[0], told
        told += os.read(master, 4096).decode()
    at = told.index(text, at) + len(text)
hear("or type stop:")
os.write(master, b"\n")
hear("is not ready")
hear("or type stop:")
subprocess.run("tapetool insert drives/left.drive drives/third.tap", shell=True, check=True)
os.write(master, b"\n")
hear("Begin input tape 2")
hear("or type stop:")
os.write(master, b"stop\n")
hear("2 tapes copied.")
assert job.wait(60) == 0, told
assert "Bytes copied: " in told and "\r\033[K" in told, told
CHECK
cmp two.tpf asked.tpf

# Stopped in the middle: the copy is closed as by its stop button, and a second signal does no harm.
load
QUARLO_TAPE_FAULT=read:1+:slow=20 env --default-signal=INT quarlo --job tape-to-disk input=0 output=cut.tpf >out 2>err </dev/null &
job=$!
for _ in $(seq 200); do grep -q '^Bytes copied: ' out && break; sleep 0.1; done
kill -INT $job
kill -INT $job 2>/dev/null || true
status=0
wait $job || status=$?
[ "$status" = 1 ] || { cat out err; exit 1; }
grep -q 'Copy aborted by user' out && grep -q 'Copy ended at' out || { cat out; exit 1; }
grep -qx 'quarlo: tape-to-disk: stopped before its end' err || { cat err; exit 1; }
says 0 'Copy ended at' --job disk-to-tape input=cut.tpf output=1

# A job of the user's own, which takes the place of the program's: a tape that stands behind its first file.
mkdir -p data/quarlo/jobs
jobs=$(dirname "$program")/share/quarlo/jobs
sed '/copy.qs/i menu skip-files\npress skip-files.ok' "$jobs/tape-to-disk.qs" >data/quarlo/jobs/tape-to-disk.qs
quarlo --jobs | grep -A 2 '^tape-to-disk: ' | grep -qF "($dir/data/quarlo/jobs/tape-to-disk.qs)"
load
says 1 'give position=rewind' --job tape-to-disk input=0 output=p1.tpf
if grep 'Copy started' out; then exit 1; fi
says 0 '2 files copied.' --job tape-to-disk input=0 output=p2.tpf position=go-on
says 0 '3 files copied.' --job tape-to-disk input=0 output=p3.tpf position=rewind
echo '#: titel x' >data/quarlo/jobs/broken.qs
says 1 "$dir/data/quarlo/jobs/broken.qs:1: the head" --jobs
says 2 "$dir/data/quarlo/jobs/broken.qs:1: the head" --job broken
echo "jobs: all as expected"
