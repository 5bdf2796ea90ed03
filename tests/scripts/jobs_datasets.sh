#!/usr/bin/env bash
# The jobs on datasets, as the documents play them: tests/scripts/jobs_datasets.sh PROGRAM
set -eu
build=$(dirname "$(realpath "$1")")
scripts=$(dirname "$(realpath "$0")")
export PATH=$build:$PATH
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
cd "$dir"

mkdir line-1201
for name in a b; do kyrtool raw line-1201/$name.kyr <(head -c 48 /dev/urandom) 2 3 2 0.004; done
cp line-1201/*.kyr .
kyrtool kill b.kyr 1 2
"$scripts/documents.py" block docs/merge.md "quarlo --job" >commands
timeout 100 bash -eu commands >log
diff <(for name in a b; do kyrtool dump line-1201/$name.kyr; done | grep -v '[=a-z]') <(kyrtool dump line.kyr | grep -v '[=a-z]')
[ "$(kyrtool headers stack.kyr | grep -c trace-number)" = 11 ]
status=0
echo no >line-1201/c.kyr
timeout 60 quarlo --job merge folder=line-1201 output=new.kyr >log 2>error || status=$?
[ "$status" = 1 ] && grep -q 'omitted from merge' error
timeout 20 quarlo --job merge folder=line-1201 output=line-1201/a.kyr overwrite=yes >log 2>error || status=$?
[ "$status" = 1 ] && grep -q 'the merge cannot start' error

# Indexes and tables are read here without any of the program's code.
mkdir survey
PYTHONPATH=$scripts python3 -c 'import line; line.make("survey/line.sgy")'
cp line.kyr survey
kyrtool kill survey/line.kyr 1 2
"$scripts/documents.py" block docs/file-scan.md "quarlo --job" >commands
"$scripts/documents.py" block docs/format-idx.md "import struct" >read.py
timeout 100 bash -eu commands >log
sed "s#$dir#/data#" log | grep -A6 line.sgy: | diff - <("$scripts/documents.py" block docs/file-scan.md "File scan of")
python3 read.py 'survey\line.sgy.idx' | grep -x 'line.sgy segy-rev2.txt 2400 entries; CMP 1 100' >seen
python3 read.py 'survey\line.kyr.idx' | grep -x 'last: record 4 trace 3 CMP line 0 location 0 offset 0.0' >seen
"$scripts/documents.py" block docs/format-idx.md 00000000 | while read -r place bytes; do
  [ "$(xxd -s "0x$place" -l 16 -p 'survey\line.kyr.idx')" = "${bytes// /}" ]
done
! timeout 60 quarlo --job index input=survey/line.sgy table=traces.csv >log 2>error
grep -q '^quarlo: index: "traces.csv" exists; give overwrite=yes' error
PYTHONPATH=$scripts python3 - <<'CHECK'
import csv, line
traces = line.read("survey/line.sgy")[1]
rows = list(csv.DictReader(open("traces.csv", newline="")))
assert len(rows) == len(traces) == 2400
for place, (row, trace) in enumerate(zip(rows, traces)):
    assert row["state"] == "live" and int(row["byte"]) == line.HEADERS + place * line.TRACE, row
    assert int(row["cmp_location"]) == line.field(trace, 21) and int(row["offset"]) == line.field(trace, 37), row
CHECK
# Reports: those of the page, then each that there is.
"$scripts/documents.py" block docs/instrument-tests.md "# month.txt" >month.txt
kyrtool record month.kyr month.txt
"$scripts/documents.py" block docs/instrument-tests.md "quarlo --job" >commands
timeout 200 bash -eu commands >log
[ "$(grep -h ' failed: \|listed' log)" = "7 traces tested, 1 failed: 2
7 traces tested, 2 failed: 5, 8
7 traces tested, 1 failed: 5
6 dead traces listed" ]
grep -q 'FFT method' thd.txt && grep -q 'Input Noise' noise.txt && [ "$(wc -l <noise.csv)" = 8 ] && [ -s dead.txt ]
for report in ad-test crossfeed-test dc-offset-test dynamic-range-test gain-step-test impulse-test; do
  second=preset
  case $report in dynamic-range-test | gain-step-test) second=901 ;; esac
  file=902
  [ $report = ad-test ] && file=preset
  timeout 60 quarlo --job report report=$report input=month.kyr output=$report.txt file=$file second-file=$second >log
  grep -q 'End of' $report.txt
done
status=0
timeout 60 quarlo --job report report=noise-test input=month.kyr output=none.txt file=7 >log 2>error || status=$?
[ "$status" = 1 ] && grep -q 'Field file 7 not found' error && [ ! -e none.txt ]
echo "jobs_datasets: all as expected"
