#!/usr/bin/env bash
# The jobs of SEG Y, on a small line: tests/scripts/jobs_segy.sh PROGRAM
# What they write is read here without any of the program's code.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
export PATH="$(dirname "$(realpath "$1")"):$PATH" PYTHONPATH="$here" PYTHONDONTWRITEBYTECODE=1
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
mkdir "$dir/home"
export KYRHOME="$dir/home"
cd "$dir"

python3 -c 'import line; line.make("line.sgy")'
printf '1003\r\n1010 - 1012\r\n\r\n1039' >inlines.txt
quarlo --job segy-copy input=line.sgy list=inlines.txt output=part.sgy >out
grep -q '^SEG Y copy ended at' out
[ "$(sort -u RangeLimitLogFile.txt | tr '\n' ' ')" = "1003.0000 1010.0000 1011.0000 1012.0000 1039.0000 " ]
quarlo --job segy-copy input=line.sgy output=all.sgy >out && cmp line.sgy all.sgy
mkdir lines
cp line.sgy lines/a.sgy
cp line.sgy lines/b.sgy
quarlo --job segy-copy input=lines/a.sgy inputs=joined output=joined.sgy >out
[ $(($(stat -c %s joined.sgy) - 3600)) = $((2 * ($(stat -c %s line.sgy) - 3600))) ]
printf '4\n1010 0\n1020 0\n1020 9999\n1010 9999\n' >corners.txt
quarlo --job segy-copy input=line.sgy polygon=corners.txt secondary-byte=21 listed=dropped output=outside.sgy >out
python3 - <<'CHECK'
import line
head, traces = line.read("line.sgy")
wanted = [t for t in traces if line.field(t, 189) in (1003, 1010, 1011, 1012, 1039)]
assert len(wanted) == 300
assert line.read("part.sgy") == (head, wanted), "part.sgy is not what the list asks for"
wanted = [t for t in traces if not 1010 <= line.field(t, 189) <= 1020]
assert line.read("outside.sgy") == (head, wanted), "outside.sgy is not what the polygon leaves"
CHECK

quarlo --job segy-sort-split input=line.sgy output=sorted.sgy volumes=cdp.sgy part-size=0.001 >out
! quarlo --job segy-sort-split input=line.sgy output=new.sgy volumes=cdp.sgy >out 2>err
grep -q '^quarlo: segy-sort-split: "cdp.sgy" exists; give overwrite=yes' err
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

# From a tape comes what comes from the file.
mkdir drives
tapetool make-drive drives one >out
export QUARLO_VIRTUAL_DRIVES=drives
quarlo --job segy-copy input=line.sgy output=0 >out
quarlo --job reformat input=line.sgy output=disk.sgy to=segy >out
quarlo --job reformat input=0 output=tape.sgy to=segy traces=3000 position=rewind >out
cmp <(tail -c +3201 disk.sgy) <(tail -c +3201 tape.sgy)
quarlo --job reformat input=0 output=tape.kyr traces=3000 files=one position=rewind >out
[ "$(kyrtool dump tape.kyr | grep -c '^trace ')" = 2400 ]
! quarlo --job reformat input=0 output=few.kyr traces=2399 position=rewind >out 2>err
grep -qF 'has more than 2399 traces: raise "Traces a record at most".' err
[ ! -e sorted.sgy.tmp ] && [ ! -e SegyCopy.idx ] || { echo "temporary files were left"; exit 1; }
echo "jobs_segy: all as expected"
