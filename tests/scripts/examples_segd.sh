#!/usr/bin/env bash
# The example script that splits a SEG D tape, then a copy of its files with both lists set in the real dialogs:
# tests/scripts/examples_segd.sh PROGRAM
set -eu
program=$(realpath "$1")
examples=$(cd "$(dirname "$0")/../../docs/examples" && pwd)
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
mkdir "$dir/home" "$dir/drives" "$dir/split" "$dir/lists" "$dir/kept"
export KYRHOME="$dir/home" QUARLO_VIRTUAL_DRIVES="$dir/drives"
cd "$dir"

cat >field.py <<'PYTHON'
import struct
SAMPLE_BYTES = 4 * 512   # 1.024 s at 2 ms
TRACES = 130

def bcd(number, size):
    return bytes.fromhex("%0*d" % (2 * size, number))

def header(number):
    one = bytearray(32)
    one[0:4] = bcd(number, 2) + bcd(8058, 2)
    one[10:17] = bcd(26, 1) + b"\x11\x23" + bcd(10, 1) + bcd(20, 1) + bcd(30, 1) + bcd(13, 1)
    one[22] = 32                      # base scan interval, sixteenths of a millisecond
    one[25:27] = b"\x80\x10"          # normal record, 01.0 units of 1.024 s
    one[27:29] = bcd(1, 1) + bcd(1, 1)
    two = bytearray(32)
    two[10] = 1                       # revision
    channels = bytearray(32)
    channels[0:2] = bcd(1, 1) + bcd(1, 1)
    channels[4:6] = struct.pack(">H", 512)
    channels[8:10] = bcd(TRACES, 2)
    channels[10] = 0x10
    return bytes(one + two + channels)

def trace(number, channel):
    head = bcd(number, 2) + bcd(1, 1) + bcd(1, 1) + bcd(channel, 2) + bytes(14)
    return head + struct.pack(">512f", *(number + channel / 256 + i for i in range(512)))

def blocks(number):
    return [header(number)] + [trace(number, channel) for channel in range(1, TRACES + 1)]

def cartridge(path, files):
    label = b"   1SD1.0   1FIXED     65536".ljust(128)
    with open(path, "wb") as out:
        for block in [label] + [block for number in files for block in blocks(number) + [b""]] + [b""]:
            length = struct.pack("<I", len(block))
            out.write(length + block + length if block else length)
PYTHON
python3 -c 'import field; field.cartridge("drives/field.tap", (101, 102, 1203))'
printf 'vendor = ACME\nmodel = REEL 100\nid = 4\ncartridge = field.tap\n' >drives/field.drive

OUTPUT="$dir/split" "$program" --script "$examples/segd-split-tape.qs"
python3 - <<'CHECK'
import field, glob
names = sorted(glob.glob("split/*.sgd"))
assert names == ["split/field_00101.sgd", "split/field_00102.sgd", "split/field_01203.sgd"], names
for name, number in zip(names, (101, 102, 1203)):
    with open(name, "rb") as file:
        assert file.read() == b"".join(field.blocks(number)), name
CHECK
grep -q '^Field File:    101  -   130 traces$' split/SegdCopy.txt

# Field files 102 and 1203 dropped; traces 12 and 100 to 120 zeroed, as docs/segd-copy.md writes them.
printf '102\r\n1000 - 2000000000\r\n' >lists/files.txt
printf '18\n256 - 288\n' >lists/traces.txt
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
answer-file $DIR/split/field_00101.sgd
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
assert glob.glob("kept/*") == ["kept/kept_00001.sgd"], glob.glob("kept/*")
wanted = field.blocks(101)
for channel in [12] + list(range(100, 121)):
    wanted[channel] = wanted[channel][:20] + bytes(field.SAMPLE_BYTES)
with open("kept/kept_00001.sgd", "rb") as file:
    assert file.read() == b"".join(wanted), "other traces are zero than those listed"
CHECK
echo "examples_segd: all as expected"
