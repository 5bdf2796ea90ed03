#!/bin/bash
# Played inside the virtual machine by run.sh: the image copy on two genuine drives. A tape-image file to /dev/nst0, that
# tape to /dev/nst1, both verified, the second tape back to a file; then a bad block, which must cost itself only.
T2MB=${T2MB:-100} . /vmout/tape-up.sh 2>&1
set -e
dir=$(mktemp -d)
cd "$dir"
mkdir shots
python3 - <<'PYTHON'
import random, struct
random.seed(7)
head = lambda length, mark: struct.pack("<iI", length, 0x1000001) + b"\xff" * 20 + struct.pack("<I", 0xF0F0F0F0 if mark else 0xFFFFFFFF)
block = lambda n: head(n, False) + random.randbytes(n)
files = [[3200, 400] + [6240] * 40, [1, 13, 32768, 60000, 65536, 131071, 262144], [80]]
image = b"1vlt" + bytes(28)
for f in files:
    image += b"".join(block(n) for n in f) + head(0, True)
open("in.tpf", "wb").write(image + head(0, True) * 2)
PYTHON
cat >script <<'SCRIPT'
wait window main 30
press main.image-copy
answer-file $DIR/in.tpf
press copy.input-disk
press copy.output-tape
wait window output-drive 10
expect rows output-drive.drives 2
select output-drive.drives 0
press output-drive.ok
wait text copy.status "Ready" 30
press copy.start
wait text copy.status "Complete" 120

press copy.input-tape
wait window input-drive 10
select input-drive.drives 0
press input-drive.ok
press copy.output-tape
wait window output-drive 10
select output-drive.drives 1
press output-drive.ok
wait text copy.status "Ready" 30
press copy.start
wait window input-continue 120
press input-continue.stop
wait text copy.status "Complete" 30

press copy.input-tape
wait window input-drive 10
select input-drive.drives 1
press input-drive.ok
answer-file $DIR/out.tpf
press copy.output-disk
wait text copy.status "Ready" 30
press copy.start
wait window input-continue 120
press input-continue.stop
wait text copy.status "Complete" 30
close copy

press main.verify
wait window verify 5
press verify.first-tape
wait window input-drive 10
select input-drive.drives 0
press input-drive.ok
press verify.second-tape
wait window input-drive 10
select input-drive.drives 1
press input-drive.ok
wait text verify.status "Ready" 30
press verify.start
wait window input-continue 120
press input-continue.stop
wait text verify.status "Complete" 30
expect line console "Byte comparison succeeded."
expect no-line console "*\\*\\*\\* *"
close verify

# A bad block in the middle of the first tape.
run "$HAND badblock T1 20"
press main.image-copy
press copy.input-tape
wait window input-drive 10
select input-drive.drives 0
press input-drive.ok
answer-file $DIR/bad.tpf
press copy.output-disk
wait text copy.status "Ready" 30
press copy.start
wait window input-continue 120
press input-continue.stop
wait text copy.status "Complete" 30
expect line console "  ** 1 block could not be read: tape 1 file 1 block 21."
quit
SCRIPT
cp "$QUARLO_SOURCE/tests/vm/hands.sh" hands.sh && chmod +x hands.sh
export DIR=$dir HAND=$dir/hands.sh ST_BUFFER=512
status=0
"$QUARLO_SOURCE/tests/with-display" "$QUARLO_BUILD/quarlo" --script script || status=$?
cat console.txt
[ "$status" = 0 ] || exit "$status"
python3 - <<'PYTHON'
import struct
def items(name):
    data, place, found = open(name, "rb").read(), 32, []
    while place < len(data):
        length, mark = struct.unpack_from("<i", data, place)[0], data[place + 28:place + 32] == b"\xf0\xf0\xf0\xf0"
        found.append(None if mark else data[place + 32:place + 32 + length])
        place += 32 + (0 if mark else length)
    return found
source, back, bad = items("in.tpf"), items("out.tpf"), items("bad.tpf")
assert back == source, "the tape came back changed"
lost = source[:20] + source[21:]
assert bad == lost, "more or less than one block was lost"
print("image copy: %d blocks and marks there and back; one bad block cost itself" % len(source))
PYTHON
