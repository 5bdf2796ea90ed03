#!/usr/bin/env bash
# The example scripts of the SEG Y copy, on a small line: tests/scripts/examples_segy.sh PROGRAM
# What they write is read here without any of the program's code.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
export PATH="$(dirname "$(realpath "$1")"):$PATH" PYTHONPATH="$here" PYTHONDONTWRITEBYTECODE=1
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
mkdir "$dir/home"
export KYRHOME="$dir/home"
cd "$dir"
cp "$here"/../../docs/examples/*.qs .
command_of() { sed -n 's/^#     //p' "$1"; }

python3 -c 'import line; line.make("line.sgy")'
printf '1003\r\n1010 - 1012\r\n\r\n1039' >inlines.txt
eval "$(command_of segy-copy.qs)"
python3 - <<'CHECK'
import line
head, traces = line.read("line.sgy")
wanted = [t for t in traces if line.field(t, 189) in (1003, 1010, 1011, 1012, 1039)]
assert len(wanted) == 300
assert line.read("part.sgy") == (head, wanted), "part.sgy is not what the list asks for"
CHECK
[ "$(sort -u RangeLimitLogFile.txt | tr '\n' ' ')" = "1003.0000 1010.0000 1011.0000 1012.0000 1039.0000 " ]

eval "$(command_of segy-sorted-split.qs | sed 's/PART_SIZE=2 /PART_SIZE=0.001 /')"
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
