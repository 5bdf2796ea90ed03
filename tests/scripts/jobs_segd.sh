#!/usr/bin/env bash
# The job that splits a SEG D tape, then a copy of its files with both lists set in the real dialogs:
# tests/scripts/jobs_segd.sh PROGRAM
set -eu
program=$(realpath "$1")
here=$(cd "$(dirname "$0")" && pwd)
export PATH="$(dirname "$program"):$PATH" PYTHONPATH="$here" PYTHONDONTWRITEBYTECODE=1
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
mkdir "$dir/home" "$dir/drives" "$dir/line-1201" "$dir/lists" "$dir/kept"
export KYRHOME="$dir/home" QUARLO_VIRTUAL_DRIVES="$dir/drives"
cd "$dir"

python3 -c 'import field; field.cartridge("drives/field.tap", (101, 102, 1203))'
printf 'vendor = ACME\nmodel = REEL 100\nid = 4\ncartridge = field.tap\n' >drives/field.drive

quarlo --job segd-to-files input=0 output=line-1201 >out
grep -q '^SEG D copy ended at' out
! quarlo --job segd-to-files input=0 output=line-1201 >out 2>err
! QUARLO_TAPE_FAULT=read:9+:EIO quarlo --job segd-to-files input=0 output=lists >out 2>>err
grep -q 'could not be read' err
rm lists/*
grep -qF 'has files field_*.sgd; give overwrite=yes' err
python3 - <<'CHECK'
import field, glob
names = sorted(glob.glob("line-1201/*.sgd"))
assert names == ["line-1201/field_00101.sgd", "line-1201/field_00102.sgd", "line-1201/field_01203.sgd"], names
for name, number in zip(names, (101, 102, 1203)):
    with open(name, "rb") as file:
        assert file.read() == b"".join(field.blocks(number)), name
CHECK
# The tape's samples are those of its field files, read from disk.
bash -c "$("$here/documents.py" block docs/reformat.md 'quarlo --job')" >out
cat line-1201/*.sgd >joined.segd
quarlo --job reformat from=segd input=joined.segd output=disk.kyr auxiliary=yes pad=yes >out
[ "$(kyrtool headers line.kyr | md5sum)" = "$(kyrtool headers disk.kyr | md5sum)" ]
quarlo --job reformat from=segd input=joined.segd to=segy output=disk.sgy >out
quarlo --job reformat from=segd input=0 to=segy output=tape.sgy position=rewind >out
cmp <(tail -c +3201 disk.sgy) <(tail -c +3201 tape.sgy)
grep -q '^Field File:    101  -   130 traces$' line-1201/SegdCopy.txt

# Both lists are those of docs/segd-copy.md: 101 is dropped, and 1203 by a line more; traces 12 and 100 to 120 are zeroed.
{
  python3 "$here/documents.py" block docs/segd-copy.md 101
  printf '\r\n1000 - 2000000000\r\n'
} >lists/files.txt
python3 "$here/documents.py" block docs/segd-copy.md 18 >lists/traces.txt
cat >lists.qs <<'SCRIPT'
wait window main 10
press main.image-copy
wait window copy 5
select copy.format "SEG D"
press copy.parameters
wait window segd 5
press segd.log-file
wait window file-box 5
expect text file-box.name "SegdCopy.txt"
press file-box.cancel
type segd.output-name "kept"
press segd.limit
press segd.limit-list
wait window segd-files 5
press segd-files.exclusion
answer-file $DIR/lists/files.txt
press segd-files.choose-file
wait text segd-files.path "*/files.txt" 5
press segd-files.ok
press segd.zero-traces
press segd.zero-list
wait window segd-zero 5
answer-file $DIR/lists/traces.txt
press segd-zero.choose-file
wait text segd-zero.path "*/traces.txt" 5
type segd-zero.byte 5
select segd-zero.type "2 byte integer"
press segd-zero.ok
expect like segd.limit-path "*/files.txt"
expect like segd.zero-path "*/traces.txt"
press segd.ok
answer-file $DIR/line-1201/field_00101.sgd
press copy.input-disk
run "touch $DIR/kept/any.sgd"
answer-file $DIR/kept/any.sgd
press copy.output-disk
wait enabled copy.start 5
run "rm $DIR/kept/any.sgd"
press copy.start
wait console "SEG D copy ended at *" 60
expect text copy.status "Complete"
expect no-line console "*\\*\\*\\* *"
quit
SCRIPT
DIR=$dir "$program" --script lists.qs
python3 - <<'CHECK'
import field, glob
assert glob.glob("kept/*") == ["kept/kept_00002.sgd"], glob.glob("kept/*")
wanted = field.blocks(102)
for channel in [12] + list(range(100, 121)):
    wanted[channel] = wanted[channel][:20] + bytes(field.SAMPLE_BYTES)
with open("kept/kept_00002.sgd", "rb") as file:
    assert file.read() == b"".join(wanted), "other traces are zero than those listed"
CHECK
echo "jobs_segd: all as expected"
