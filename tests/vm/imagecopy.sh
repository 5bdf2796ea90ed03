#!/bin/bash
# Played inside the virtual machine by run.sh: the image copy on two genuine drives. A tape-image file to /dev/nst0, that
# tape to /dev/nst1, both verified, the second tape back to a file; then a bad block, which must cost itself only.
T2MB=${T2MB:-100} . /vmout/tape-up.sh 2>&1
. "$QUARLO_SOURCE/tests/vm/steps.sh"
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
cp "$QUARLO_SOURCE/tests/vm/hands.sh" hands.sh && chmod +x hands.sh
export ST_BUFFER=512
{
  printf 'wait window main 30\npress main.image-copy\n'
  copy in.tpf 0
  copy 0 1
  copy 1 out.tpf
  printf 'close copy\npress main.verify\nwait window verify 5\n'
  choose_drive verify.first-tape input 0
  choose_drive verify.second-tape input 1
  printf 'wait text verify.status "Ready" 30\npress verify.start\n'
  no_further_tape
  cat <<'SCRIPT'
wait text verify.status "Complete" 30
expect line console "Byte comparison succeeded."
expect no-line console "*\\*\\*\\* *"
close verify

# A bad block in the middle of the first tape.
run "$DIR/hands.sh badblock T1 20"
press main.image-copy
SCRIPT
  copy 0 bad.tpf
  echo 'expect line console "  ** 1 block could not be read: tape 1 file 1 block 21."'
} | play
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
