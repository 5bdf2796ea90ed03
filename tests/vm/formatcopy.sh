#!/bin/bash
# Played inside the virtual machine by run.sh: the SEG Y and SEG D copies on two genuine drives. A SEG Y file to /dev/nst0,
# that tape sorted to /dev/nst1, and that back to a file; then SEG D field files to a tape and back, byte for byte; then
# both tapes into SEG Y and a dataset.
T2MB=${T2MB:-100} . /vmout/tape-up.sh 2>&1
. "$QUARLO_SOURCE/tests/vm/steps.sh"
mkdir segd back
python3 - <<'PYTHON'
import random, struct
random.seed(7)
samples = 2000
order = list(range(300))
random.shuffle(order)
def trace(n):
    head = bytearray(240)
    struct.pack_into(">i", head, 8, n // 20)
    struct.pack_into(">i", head, 12, n % 20)
    return bytes(head) + random.Random(n).randbytes(samples * 4)
binary = bytearray(400)
struct.pack_into(">h", binary, 16, 2000)
struct.pack_into(">h", binary, 20, samples)
struct.pack_into(">h", binary, 24, 1)
heads = b"\x40" * 3200 + bytes(binary)
open("in.sgy", "wb").write(heads + b"".join(trace(n) for n in order))
open("sorted-model.sgy", "wb").write(heads + b"".join(trace(n) for n in range(300)))

def bcd(number, digits):
    return bytes.fromhex(str(number).zfill(digits))
def field_file(number, channels):
    # One general header block, one channel set; 1 ms, 4 bytes a sample, the record length in units of 102.4 ms.
    head = bytearray(32)
    head[0:2] = bcd(number, 4)
    head[2:4] = bcd(8058, 4)
    head[10:16] = bytes([0x26, 0x01, 0x23, 0x11, 0x22, 0x33])
    head[22] = 16
    head[25:27] = bytes([0x80, 0x10])
    head[27] = head[28] = 1
    sets = bytearray(32)
    sets[0] = sets[1] = 1
    sets[8:10] = bcd(channels, 4)
    sets[10] = 0x10
    length = int(10 * 102.4 + 0.05) * 4
    traces = b""
    for channel in range(channels):
        th = bytearray(20)
        th[0:2] = bcd(number, 4)
        th[2] = th[3] = 1
        th[4:6] = bcd(channel + 1, 4)
        traces += bytes(th) + random.randbytes(length)
    return bytes(head) + bytes(sets) + traces
for number in (101, 102, 103):
    open("segd/f%d.segd" % number, "wb").write(field_file(number, 12))
PYTHON
touch back/field.sgd
export ST_BUFFER=128
sorting() { printf 'press copy.parameters\nwait window segy 5\npress segy.sort\npress segy.ok\n'; }
{
  printf 'wait window main 30\npress main.image-copy\nwait window copy 5\nselect copy.format "SEG Y"\n'
  copy in.sgy 0
  sorting
  copy 0 1
  sorting
  copy 1 out.sgy
  echo 'select copy.format "SEG D"'
  copy segd/f101.segd 0
  copy 0 back/field.sgd
  echo 'expect no-line console "*\\*\\*\\* *"'
} | play
cmp out.sgy sorted-model.sgy
rm back/field.sgd
for n in 1 2 3; do
  cmp "segd/f10$n.segd" back/field_0000$n.sgd
done
echo "SEG Y and SEG D copies: there, sorted and back, byte for byte"

# What a reformat takes from both tapes is what it takes from their files.
reformat() { "$QUARLO_BUILD/quarlo" --job reformat position=rewind "$@" >log || { cat log; exit 1; }; }
cat segd/f10?.segd >joined.segd
reformat to=segy from=segd input=0 output=segd-tape.sgy
reformat to=segy from=segd input=joined.segd output=segd-disk.sgy
reformat to=segy from=segy input=1 traces=20 output=segy-tape.sgy
reformat to=segy from=segy input=out.sgy output=segy-disk.sgy
for format in segd segy; do
  tail -c +3201 "$format-tape.sgy" >tape
  tail -c +3201 "$format-disk.sgy" | cmp tape -
done
reformat from=segd input=0 output=field.kyr
"$QUARLO_BUILD/kyrtool" check field.kyr
echo "Reformats from both tapes: the samples of their files"
