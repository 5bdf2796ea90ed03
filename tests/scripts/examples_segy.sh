#!/usr/bin/env bash
# The example scripts of the SEG Y copy, on a small line: tests/scripts/examples_segy.sh PROGRAM
# What they write is read here without any of the program's code.
set -eu
program=$(realpath "$1")
examples=$(cd "$(dirname "$0")/../../docs/examples" && pwd)
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
mkdir "$dir/home"
export KYRHOME="$dir/home"
cd "$dir"

cat >line.py <<'PYTHON'
import random, struct, sys
HEADERS = 3600
TRACE = 240 + 4 * 250

def make(path):
    """40 in-lines of 60 traces; CDPs 1 to 100 with 24 offsets each, shuffled; every trace has samples of its own."""
    order = list(range(2400))
    random.Random(7).shuffle(order)
    with open(path, "wb") as out:
        binary = bytearray(400)
        struct.pack_into(">HHHHH", binary, 16, 2000, 0, 250, 0, 1)
        out.write(b"\x40" * 3200 + binary)
        for place, serial in enumerate(order):
            header = bytearray(240)
            struct.pack_into(">i", header, 20, serial // 24 + 1)
            struct.pack_into(">i", header, 36, 50 * (serial % 24) - 600)
            struct.pack_into(">i", header, 188, 1000 + place // 60)
            out.write(header + struct.pack(">250I", *(serial * 1000 + i for i in range(250))))

def read(path):
    with open(path, "rb") as file:
        data = file.read()
    assert (len(data) - HEADERS) % TRACE == 0, path + " ends within a trace"
    return data[:HEADERS], [data[i:i + TRACE] for i in range(HEADERS, len(data), TRACE)]

def field(trace, byte):
    return struct.unpack_from(">i", trace, byte - 1)[0]
PYTHON

python3 -c 'import line; line.make("line.sgy")'
printf '1003\r\n1010 - 1012\r\n\r\n1039' >inlines.txt
INPUT=$dir/line.sgy LIST=$dir/inlines.txt OUTPUT=$dir/part.sgy "$program" --script "$examples/segy-copy.qs"
python3 - <<'CHECK'
import line
head, traces = line.read("line.sgy")
wanted = [t for t in traces if line.field(t, 189) in (1003, 1010, 1011, 1012, 1039)]
assert len(wanted) == 300
assert line.read("part.sgy") == (head, wanted), "part.sgy is not what the list asks for"
CHECK
[ "$(sort -u RangeLimitLogFile.txt | tr '\n' ' ')" = "1003.0000 1010.0000 1011.0000 1012.0000 1039.0000 " ]

export INPUT=$dir/line.sgy SORTED=$dir/sorted.sgy VOLUMES=$dir/cdp.sgy PART_SIZE=0.001
"$program" --script "$examples/segy-sorted-split.qs"
python3 - <<'CHECK'
import glob, line
head, traces = line.read("line.sgy")
wanted = sorted(traces, key=lambda t: (line.field(t, 21), line.field(t, 37)))
assert line.read("sorted.sgy") == (head, wanted), "sorted.sgy is not in order"
volumes = sorted(glob.glob("cdp*.sgy"))
assert volumes == ["cdp.sgy", "cdp001.sgy", "cdp002.sgy"], volumes
together, last = [], 0
for name in volumes:
    first, part = line.read(name)
    assert first == head, name + " has other headers"
    assert line.field(part[0], 21) != last, name + " begins within a CDP"
    # Full at 0.001 GB and closed at the next CDP: at most its 24 traces more.
    size = line.HEADERS + len(part) * line.TRACE
    assert name == volumes[-1] or 1073741.824 <= size < 1073741.824 + 24 * line.TRACE, (name, size)
    last = line.field(part[-1], 21)
    together += part
assert together == wanted, "the volumes do not hold the sorted traces"
CHECK
[ ! -e sorted.sgy.tmp ] && [ ! -e SegyCopy.idx ] || { echo "temporary files were left"; exit 1; }
echo "examples_segy: all as expected"
